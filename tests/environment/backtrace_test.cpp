// A handler of a fault inside a function walks the stack to main: every function in the way has unwind tables.
#include <dlfcn.h>
#include <setjmp.h>
#include <signal.h>
#include <unwind.h>

#include <cstdint>

#include "elementary/slot_tables.h"
#include "filters/slot_tables.h"
#include "fourier/slot_tables.h"
#include "image/slot_tables.h"
#include "support/slots.h"
#include "vector/slot_tables.h"

namespace {

sigjmp_buf back;
// What the walk met: the function at the fault, and whether main stood above it.
volatile uintptr_t faultAt;
volatile bool reachedMain;

_Unwind_Reason_Code visit(_Unwind_Context* context, void*)
{
    Dl_info info;
    if (dladdr(reinterpret_cast<void*>(_Unwind_GetIP(context) - 1), &info) != 0 && info.dli_sname != nullptr)
        reachedMain = reachedMain || std::string(info.dli_sname) == "main";
    return _URC_NO_REASON;
}

void onFault(int, siginfo_t*, void* context)
{
    faultAt = static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP];
    _Unwind_Backtrace(visit, nullptr);
    siglongjmp(back, 1);
}

// Calls `function` with arguments that make it touch an address where nothing is; true if the walk reached main.
template<class F, class... Arguments> bool walks(F function, Arguments... arguments)
{
    struct sigaction action = {}, old;
    action.sa_sigaction = onFault;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGSEGV, &action, &old);
    reachedMain = false;
    faultAt = 0;
    if (sigsetjmp(back, 1) == 0)
        function(arguments...);
    sigaction(SIGSEGV, &old, nullptr);
    return faultAt != 0 && reachedMain;
}

template<class T> T* nowhere()
{
    return reinterpret_cast<T*>(uintptr_t{4096});
}

TEST(Backtrace, ReachesMainFromElementWiseKernels)
{
    float good[64] = {};
    slots::each(qvrTable_qvrsAdd_32f,
                [&](auto add, int) { EXPECT_TRUE(walks(add, good, nowhere<const float>(), good, 64)); });
    slots::each(qvrTable_qvrsSqrt_32f, [&](auto root, int) { EXPECT_TRUE(walks(root, good, nowhere<float>(), 64)); });
    slots::each(qvrTable_qvrsCeil_32f, [&](auto ceil, int) { EXPECT_TRUE(walks(ceil, good, nowhere<float>(), 64)); });
    slots::each(qvrTable_qvrsSin_32f_A11,
                [&](auto sine, int) { EXPECT_TRUE(walks(sine, nowhere<const float>(), good, 64)); });
    slots::each(qvrTable_qvrsMean_32f,
                [&](auto mean, int) { EXPECT_TRUE(walks(mean, nowhere<const float>(), 64, good)); });
    slots::each(qvrTable_qvrsSortAscend_32f_I, [&](auto sort, int) { EXPECT_TRUE(walks(sort, nowhere<float>(), 64)); });
}

TEST(Backtrace, ReachesMainFromTransforms)
{
    for (const int order : {3, 8, 12}) {
        SCOPED_TRACE(order);
        std::vector<float> spectrum((1 << order) + 2);
        slots::each(qvrTable_qvrsFFTFwd_RToCCS_32f, [&](auto forward, int slot) {
            qvrsFFTSpec_R_32f* spec = nullptr;
            ASSERT_EQ(qvrTable_qvrsFFTInitAlloc_R_32f[slot](&spec, order, qvrFftNoDiv, qvrHintNone), qvrOk);
            std::vector<qvr8u> buffer(131136);
            EXPECT_TRUE(walks(forward, nowhere<const float>(), spectrum.data(), spec, buffer.data()));
            qvrTable_qvrsFFTFree_R_32f[slot](spec);
        });
    }
    std::vector<float> sums(199);
    slots::each(qvrTable_qvrsConv_32f, [&](auto convolve, int) {
        EXPECT_TRUE(walks(convolve, nowhere<const float>(), 100, sums.data(), 100, sums.data()));
    });
}

TEST(Backtrace, ReachesMainFromFiltersAndImages)
{
    const std::vector<float> taps(16, 0.0625f);
    std::vector<float> samples(256);
    slots::each(qvrTable_qvrsFIR_32f, [&](auto filter, int slot) {
        qvrsFIRState_32f* state = nullptr;
        ASSERT_EQ(qvrTable_qvrsFIRInitAlloc_32f[slot](&state, taps.data(), 16, nullptr), qvrOk);
        EXPECT_TRUE(walks(filter, nowhere<const float>(), samples.data(), 256, state));
        qvrTable_qvrsFIRFree_32f[slot](state);
    });
    std::vector<qvr8u> pixels(64 * 64), buffer(1 << 20);
    slots::each(qvrTable_qvriResizeSqrPixel_8u_C1R, [&](auto resize, int) {
        EXPECT_TRUE(walks(resize, nowhere<const qvr8u>(), qvriSize{64, 64}, 64, qvriRect{0, 0, 64, 64}, pixels.data(),
                          64, qvriRect{0, 0, 32, 32}, 0.5, 0.5, 0.0, 0.0, +qvriInterCubic, buffer.data()));
    });
}

} // namespace
