#include "library.h"

#include <dlfcn.h>
#include <elf.h>
#include <limits.h>
#include <link.h>
#include <stdlib.h>
#include <string.h>

#include "frame/slots.h"

namespace tools {
namespace {

// Where a 32-bit displacement at `field` leads from the end of its instruction.
const uint8_t* target(const uint8_t* field)
{
    int32_t displacement;
    memcpy(&displacement, field, sizeof displacement);
    return field + sizeof displacement + displacement;
}

struct Search {
    const void* inside;
    std::string id;
};

int readNotes(dl_phdr_info* info, size_t, void* search)
{
    Search& s = *static_cast<Search*>(search);
    const uintptr_t at = reinterpret_cast<uintptr_t>(s.inside);
    bool here = false;
    for (int i = 0; i < info->dlpi_phnum; i++) {
        const ElfW(Phdr)& p = info->dlpi_phdr[i];
        here = here || (p.p_type == PT_LOAD && at - (info->dlpi_addr + p.p_vaddr) < p.p_memsz);
    }
    for (int i = 0; here && i < info->dlpi_phnum; i++) {
        const ElfW(Phdr)& p = info->dlpi_phdr[i];
        if (p.p_type != PT_NOTE)
            continue;
        const uint8_t* note = reinterpret_cast<const uint8_t*>(info->dlpi_addr + p.p_vaddr);
        const uint8_t* const end = note + p.p_memsz;
        while (note + sizeof(ElfW(Nhdr)) <= end) {
            ElfW(Nhdr) head;
            memcpy(&head, note, sizeof head);
            const uint8_t* name = note + sizeof head;
            const uint8_t* content = name + (head.n_namesz + 3 & ~3u);
            if (head.n_type == NT_GNU_BUILD_ID && head.n_namesz == 4 && memcmp(name, "GNU", 4) == 0)
                for (unsigned k = 0; k < head.n_descsz; k++) {
                    s.id += "0123456789abcdef"[content[k] >> 4];
                    s.id += "0123456789abcdef"[content[k] & 15];
                }
            note = content + (head.n_descsz + 3 & ~3u);
        }
    }
    return here;
}

} // namespace

Library::Library(const char* path)
{
    handle_ = dlopen(path != nullptr ? path : "libmorvenqvr.so.1", RTLD_NOW | RTLD_LOCAL);
    if (handle_ == nullptr)
        error_ = "the shared object cannot be loaded: " + std::string(dlerror());
    else
        function("qvrsAdd_32f");
}

void* Library::function(const char* name)
{
    void* f = handle_ != nullptr ? dlsym(handle_, ("Morven_" + std::string(name)).c_str()) : nullptr;
    if (f == nullptr && handle_ != nullptr)
        error_ = "the shared object has no function Morven_" + std::string(name) +
                 ", so it is older than this program or another library";
    return f;
}

int Library::slot() const
{
    // An exported function is one jump to its dispatcher, which begins with: movslq index(%rip), %rax.
    const auto* code = handle_ != nullptr ? static_cast<const uint8_t*>(dlsym(handle_, "Morven_qvrsAdd_32f")) : nullptr;
    if (code == nullptr)
        return -1;
    const uint8_t* dispatcher = code[0] == 0xEB   ? code + 2 + static_cast<int8_t>(code[1])
                                : code[0] == 0xE9 ? target(code + 1)
                                                  : nullptr;
    if (dispatcher == nullptr || memcmp(dispatcher, "\x48\x63\x05", 3) != 0)
        return -1;
    int32_t index;
    memcpy(&index, target(dispatcher + 3), sizeof index);
    return index >= 0 && index < qvrSlotCount ? index : -1;
}

std::string Library::path() const
{
    Dl_info info;
    char resolved[PATH_MAX];
    void* code = handle_ != nullptr ? dlsym(handle_, "Morven_qvrsAdd_32f") : nullptr;
    if (code == nullptr || dladdr(code, &info) == 0)
        return {};
    return realpath(info.dli_fname, resolved) != nullptr ? resolved : info.dli_fname;
}

std::string Library::version() const
{
    const std::string file = path();
    const size_t at = file.rfind(".so.");
    return at != std::string::npos ? file.substr(at + 4) : std::string();
}

std::string Library::buildId() const
{
    Search s = {handle_ != nullptr ? dlsym(handle_, "Morven_qvrsAdd_32f") : nullptr, {}};
    if (s.inside != nullptr)
        dl_iterate_phdr(readNotes, &s);
    return s.id;
}

} // namespace tools
