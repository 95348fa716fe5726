// Every export, with random arguments in every slot, under every floating-point environment: nothing traps, no flag is
// raised that ordinary numbers do not raise, control bits, x87 state and errno are as before, and nothing outside the
// arrays is read or written. What is not an argument holds signalling NaN: work buffers, the library's own memory, the
// bytes round each array.
#include <cerrno>
#include <csetjmp>
#include <csignal>
#include <set>
#include <string>

#include "calls/random_bytes.h"
#include "calls/shapes.h"
#include "frame/allocator.h"
#include "support/arena.h"
#include "support/budget.h"
#include "support/environment.h"
#include "support/slots.h"

namespace {

using namespace environment;

constexpr unsigned kErrors = kInvalid | kDivide | kOverflow;

struct Export {
    const char* name;
    void (*call)(calls::Input&);
};
const Export kExports[] = {
#define QVR_SHARED(name) {#name, [](calls::Input& in) { calls::Shape<calls::name>::call(&Morven_##name, in); }},
#define QVR_OWN(name) QVR_SHARED(name)
#define QVR_PLAIN(name) QVR_SHARED(name)
#include "frame/exports.def"
};

// A signal brings a call back here. One thread alone may run it then.
sigjmp_buf landing;
void onSignal(int signal)
{
    siglongjmp(landing, signal);
}
class CaughtSignals {
public:
    CaughtSignals()
    {
        struct sigaction action = {};
        action.sa_handler = onSignal;
        action.sa_flags = SA_NODEFER;
        for (size_t i = 0; i < std::size(kSignals); i++)
            sigaction(kSignals[i], &action, &saved_[i]);
    }
    ~CaughtSignals()
    {
        for (size_t i = 0; i < std::size(kSignals); i++)
            sigaction(kSignals[i], &saved_[i], nullptr);
    }

private:
    static constexpr int kSignals[] = {SIGFPE, SIGSEGV, SIGBUS, SIGILL, SIGTRAP};
    struct sigaction saved_[std::size(kSignals)];
};

// The library's memory comes full of signalling NaN.
class PoisonedHeap {
public:
    PoisonedHeap() : saved_(qvrAllocator)
    {
        qvrAllocator.malloc = [](size_t size) -> void* {
            char* const p = static_cast<char*>(malloc(size));
            if (p)
                Arena::fill(p, size);
            return p;
        };
    }
    ~PoisonedHeap() { qvrAllocator = saved_; }

private:
    qvrAllocatorSlots saved_;
};

bool isInPlace(const std::string& name)
{
    return name.ends_with("_I") || name.ends_with("_ISfs");
}

uint16_t x87Control()
{
    uint16_t word;
    __asm__ volatile("fnstcw %0" : "=m"(word));
    return word;
}

std::vector<uint8_t> randomBytes(uint32_t seed)
{
    std::vector<uint8_t> bytes(6000);
    uint64_t random = seed;
    calls::fillRandom(bytes.data(), bytes.size(), random);
    return bytes;
}

Arena arena;

// What is wrong with one call, or nothing.
std::string faultOf(const Export& e, uint32_t seed, calls::Data data, unsigned word)
{
    const std::vector<uint8_t> bytes = randomBytes(seed);
    const uint16_t control = x87Control();
    const volatile bool ordinary = data == calls::Data::ordinary;
    calls::Input in(bytes.data(), bytes.size(), data, [](size_t n, size_t offset) { return arena.place(n, offset); });
    in.inPlace = isInPlace(e.name);
    std::string fault;
    unsigned after;
    {
        const Environment environment(word);
        if (const int signal = sigsetjmp(landing, 1)) {
            const Environment quiet(kMasked);
            arena.intact();
            return std::string("signal ") + strsignal(signal);
        }
        errno = 77;
        e.call(in);
        after = environment.word();
    }
    if ((after ^ word) & ~kAllFlags)
        fault += " control bits";
    if (ordinary && (after & kErrors))
        fault += std::string(after & kInvalid ? " invalid" : "") + (after & kDivide ? " divide" : "") +
                 (after & kOverflow ? " overflow" : "");
    if (errno != 77)
        fault += " errno";
    if (x87Control() != control)
        fault += " x87";
    if (!arena.intact())
        fault += " written outside";
    return fault;
}

// The first fault of each export in each slot.
void checkAll(calls::Data data, const std::vector<unsigned>& words, int calls, int budget)
{
    const Budget threads(budget);
    const PoisonedHeap heap;
    const CaughtSignals signals;
    const int32_t chosen = qvrCpuIndex;
    const char* const only = getenv("QVR_ONLY");
    uint32_t seed = 1;
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        qvrCpuIndex = slot;
        for (const Export& e : kExports) {
            if (only && !strstr(e.name, only))
                continue;
            std::set<std::string> seen;
            for (unsigned word : words)
                for (int i = 0; i < calls; i++) {
                    seed++;
                    const std::string fault = faultOf(e, seed, data, word);
                    if (!fault.empty() && seen.insert(fault).second)
                        ADD_FAILURE() << e.name << " " << slots::kNames[slot] << ":" << fault << " under " << std::hex
                                      << word << std::dec << ", seed " << seed;
                }
        }
    }
    qvrCpuIndex = chosen;
}

std::vector<unsigned> allModes()
{
    std::vector<unsigned> words;
    for (unsigned rounding : {kNearest, kDown, kUp, kZero})
        for (unsigned denormals : {0u, kFlush, kDenormalsAreZero, kFlush | kDenormalsAreZero})
            words.push_back(kMasked | rounding | denormals);
    return words;
}

TEST(EveryExport, OrdinaryNumbersTrapNowhere)
{
    checkAll(calls::Data::ordinary, {kMasked & ~(kErrors << 7)}, 60, 1);
}

TEST(EveryExport, OrdinaryNumbersRaiseNoFlag)
{
    checkAll(calls::Data::ordinary, {kMasked}, 40, 2);
    checkAll(calls::Data::ordinary, allModes(), 4, 2);
}

TEST(EveryExport, HostileNumbersUnderEveryMode)
{
    checkAll(calls::Data::hostile, allModes(), 6, 1);
}

} // namespace
