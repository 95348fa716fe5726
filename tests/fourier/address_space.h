// Floats at addresses that hold nothing: for calls that are refused before they touch their arrays.
#pragma once

#include <sys/mman.h>

#include <cstdlib>

class AddressSpace {
public:
    explicit AddressSpace(size_t floats) : bytes_(floats * 4)
    {
        void* p = mmap(nullptr, bytes_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (p == MAP_FAILED)
            abort();
        p_ = static_cast<float*>(p);
    }
    ~AddressSpace() { munmap(p_, bytes_); }
    AddressSpace(const AddressSpace&) = delete;
    AddressSpace& operator=(const AddressSpace&) = delete;
    float* floats() const { return p_; }

private:
    size_t bytes_;
    float* p_;
};
