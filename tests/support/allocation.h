// The malloc and free slots of the library, counted and made to fail.
#pragma once

#include <cstdlib>
#include <set>

#include "frame/allocator.h"

// While one of these lives the library allocates through it. The n-th allocation (from 0) fails if failAt is n; every
// one fails if failAt is kAll. Blocks that the library does not release are in live().
class CountingAllocator {
public:
    static constexpr int kNever = -1, kAll = -2;

    explicit CountingAllocator(int failAt = kNever) : saved_(qvrAllocator)
    {
        state() = {};
        state().failAt = failAt;
        qvrAllocator.malloc = allocate;
        qvrAllocator.free = release;
    }
    ~CountingAllocator()
    {
        for (void* block : state().live)
            free(block);
        state().live.clear();
        qvrAllocator = saved_;
    }
    CountingAllocator(const CountingAllocator&) = delete;
    CountingAllocator& operator=(const CountingAllocator&) = delete;

    int allocations() const { return state().allocations; }
    size_t live() const { return state().live.size(); }
    size_t lastSize() const { return state().lastSize; }
    void* lastBlock() const { return state().lastBlock; }
    int badFrees() const { return state().badFrees; }

private:
    struct State {
        int failAt = kNever, allocations = 0, badFrees = 0;
        size_t lastSize = 0;
        void* lastBlock = nullptr;
        std::set<void*> live;
    };
    static State& state()
    {
        static State s;
        return s;
    }
    static void* allocate(size_t size)
    {
        State& s = state();
        const int n = s.allocations++;
        s.lastSize = size;
        if (s.failAt == kAll || s.failAt == n)
            return nullptr;
        void* block = malloc(size);
        s.lastBlock = block;
        s.live.insert(block);
        return block;
    }
    static void release(void* block)
    {
        State& s = state();
        if (s.live.erase(block) == 0)
            s.badFrees++;
        else
            free(block);
    }

    qvrAllocatorSlots saved_;
};

// Runs `attempt` with the first, the second, ... allocation failing, until one run meets no failure. attempt() returns
// whether it succeeded; after a failed run nothing may be left allocated. Returns the number of allocations of the
// run that succeeded.
template<class Attempt, class OnFailure> int failEachAllocation(Attempt&& attempt, OnFailure&& onFailure)
{
    for (int n = 0;; n++) {
        CountingAllocator allocator(n);
        const auto result = attempt();
        if (allocator.allocations() <= n)
            return n;
        onFailure(n, result, allocator);
    }
}
