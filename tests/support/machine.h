// A machine made of table entries: what CPUID and XGETBV answer.
#pragma once

#include <cstring>
#include <map>
#include <utility>

#include "frame/processor.h"
#include "frame/threads.h"

// While one of these lives the library sees this machine, with nothing asked of it yet. Everything that the library
// knew before comes back afterwards.
class Machine {
public:
    struct Regs {
        uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
    };

    Machine() : savedAccess_(qvrProcessor), saved_(State::take())
    {
        current() = this;
        qvrProcessor = {[] { return current()->available ? 1 : 0; }, answer, [] { return current()->xgetbv0; }};
        forget();
        vendor("GenuineIntel");
        leaf(0).eax = 7;
        leaf(0x80000000).eax = 0x80000008;
    }
    ~Machine()
    {
        qvrProcessor = savedAccess_;
        saved_.give();
        current() = nullptr;
    }
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    // Index, mask, memo and cache answer as before any code of the library has run.
    void forget()
    {
        State{}.give();
        qvrNumThreads = saved_.threads;
    }
    void vendor(const char name[13])
    {
        memcpy(&leaf(0).ebx, name, 4);
        memcpy(&leaf(0).edx, name + 4, 4);
        memcpy(&leaf(0).ecx, name + 8, 4);
    }
    Regs& leaf(uint32_t number, uint32_t sub = 0) { return leaves[{number, sub}]; }

    bool available = true;
    uint64_t xgetbv0 = 7;
    std::map<std::pair<uint32_t, uint32_t>, Regs> leaves;
    std::map<uint32_t, int> reads; // how often each leaf was read

private:
    struct State {
        int32_t index = 0;
        uint64_t mask = 7, detected = 0;
        int32_t valid = 0, cacheStatus = 1, cacheSize = 0, descriptorStatus = 1, descriptorSize = 0, threads = 1;
        static State take()
        {
            return {qvrCpuIndex,  qvrFeatureMask,           qvrDetectedFeatures,    qvrDetectedValid, qvrCacheStatus,
                    qvrCacheSize, qvrDescriptorCacheStatus, qvrDescriptorCacheSize, qvrNumThreads};
        }
        void give() const
        {
            qvrCpuIndex = index;
            qvrFeatureMask = mask;
            qvrDetectedFeatures = detected;
            qvrDetectedValid = valid;
            qvrCacheStatus = cacheStatus;
            qvrCacheSize = cacheSize;
            qvrDescriptorCacheStatus = descriptorStatus;
            qvrDescriptorCacheSize = descriptorSize;
            qvrNumThreads = threads;
        }
    };
    static Machine*& current()
    {
        static Machine* machine = nullptr;
        return machine;
    }
    static void answer(uint32_t number, uint32_t sub, uint32_t regs[4])
    {
        current()->reads[number]++;
        const Regs& r = current()->leaf(number, sub);
        regs[0] = r.eax;
        regs[1] = r.ebx;
        regs[2] = r.ecx;
        regs[3] = r.edx;
    }

    qvrProcessorAccess savedAccess_;
    State saved_;
};
