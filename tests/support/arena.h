// Arrays among signalling NaN: every second one ends at an unreadable page, and what surrounds it is checked.
#pragma once

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

class Arena {
public:
    static constexpr uint64_t kPattern = 0x7FF400007FA00001; // signalling as a double and, in its low half, as a float
    static constexpr size_t kPage = 4096, kAround = 256;

    // `bytes` bytes, `offset` bytes behind a boundary of 64, or that many before an unreadable page.
    char* place(size_t bytes, size_t offset)
    {
        if (used_ == regions_.size())
            regions_.push_back({});
        Region& r = regions_[used_++];
        const size_t wanted = (bytes + offset + 2 * kAround + kPage) / kPage * kPage;
        if (r.size < wanted) {
            if (r.base)
                munmap(r.base, r.size + kPage);
            void* base = mmap(nullptr, wanted + kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
            if (base == MAP_FAILED || mprotect(base, wanted, PROT_READ | PROT_WRITE) != 0)
                abort();
            r = {static_cast<char*>(base), wanted};
        }
        const bool atEnd = used_ % 2;
        r.at = atEnd ? r.size - bytes : kAround + offset;
        r.bytes = bytes;
        fill(r.base + r.at - kAround, kAround);
        fill(r.base + r.at + bytes, after(r));
        return r.base + r.at;
    }

    // Whether everything round the arrays since the last call is as it was; the arrays are given up.
    bool intact()
    {
        bool good = true;
        for (size_t i = 0; i < used_; i++) {
            const Region& r = regions_[i];
            good &= filled(r.base + r.at - kAround, kAround) && filled(r.base + r.at + r.bytes, after(r));
        }
        used_ = 0;
        return good;
    }

    static void fill(char* p, size_t bytes)
    {
        for (size_t i = 0; i < bytes; i++)
            p[i] = byteAt(p + i);
    }

private:
    struct Region {
        char* base = nullptr;
        size_t size = 0, at = 0, bytes = 0;
    };

    static size_t after(const Region& r)
    {
        const size_t rest = r.size - r.at - r.bytes;
        return rest < kAround ? rest : kAround;
    }
    // The pattern is laid by address, so aligned floats and doubles there are signalling.
    static char byteAt(const char* p) { return static_cast<char>(kPattern >> reinterpret_cast<uintptr_t>(p) % 8 * 8); }
    static bool filled(const char* p, size_t bytes)
    {
        for (size_t i = 0; i < bytes; i++)
            if (p[i] != byteAt(p + i))
                return false;
        return true;
    }

    std::vector<Region> regions_;
    size_t used_ = 0;
};
