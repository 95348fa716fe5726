// Arrays that end, or begin, at an unreadable page, with their surroundings poisoned and checked.
#pragma once

#include <sys/mman.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>

#include "support/slot_list.h"

// One mapping between two unreadable pages. place() gives an array inside; intact() tells whether everything outside of
// it still holds the poison.
class Guarded {
public:
    static constexpr size_t kPage = 4096;
    static constexpr unsigned char kPoison = 0xA5;

    explicit Guarded(size_t bytes) : size_((bytes + 2 * kPage - 1) / kPage * kPage)
    {
        void* base = mmap(nullptr, size_ + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (base == MAP_FAILED || mprotect(static_cast<char*>(base) + kPage, size_, PROT_READ | PROT_WRITE) != 0)
            abort();
        base_ = static_cast<unsigned char*>(base) + kPage;
        memset(base_, kPoison, size_);
    }
    ~Guarded() { munmap(base_ - kPage, size_ + 2 * kPage); }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    // `bytes` bytes that end `back` bytes before the unreadable page behind.
    template<class T> T* atEnd(size_t bytes, size_t back = 0) { return place<T>(size_ - back - bytes, bytes); }

    // `bytes` bytes that begin `ahead` bytes after the unreadable page in front.
    template<class T> T* atFront(size_t bytes, size_t ahead = 0) { return place<T>(ahead, bytes); }

    bool intact() const { return poisoned(0, at_) && poisoned(at_ + bytes_, size_); }

    // Whether the placed array itself still holds the poison: nothing was written.
    bool untouched() const { return poisoned(at_, at_ + bytes_); }

    size_t capacity() const { return size_; }

private:
    template<class T> T* place(size_t at, size_t bytes)
    {
        if (at + bytes > size_)
            abort();
        memset(base_ + at_, kPoison, bytes_);
        at_ = at;
        bytes_ = bytes;
        memset(base_ + at_, kPoison, bytes_);
        return reinterpret_cast<T*>(base_ + at);
    }

    bool poisoned(size_t from, size_t to) const
    {
        return from == to || (base_[from] == kPoison && memcmp(base_ + from, base_ + from + 1, to - from - 1) == 0);
    }

    size_t size_;
    unsigned char* base_;
    size_t at_ = 0, bytes_ = 0;
};

// A mapping kept from call to call, one for each `use` and power of two that holds `bytes`.
inline Guarded& pooledGuarded(size_t use, size_t bytes)
{
    static std::map<std::pair<size_t, size_t>, std::unique_ptr<Guarded>> pool;
    size_t size = Guarded::kPage;
    while (size < bytes)
        size *= 2;
    std::unique_ptr<Guarded>& entry = pool[{use, size}];
    if (!entry)
        entry = std::make_unique<Guarded>(size);
    return *entry;
}
