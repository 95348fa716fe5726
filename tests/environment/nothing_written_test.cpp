// The cases of the page on statuses in which a status of 0 or above comes with nothing written, each provoked in every
// slot on an output full of a pattern, beside the same call without the cause.
#include "morvenqvr.h"
#include "support/allocation.h"
#include "support/slots.h"

namespace {

constexpr unsigned char kPattern = 0x5A;

struct Outputs {
    std::vector<unsigned char> bytes = std::vector<unsigned char>(4096, kPattern);
    template<class T> T* as() { return reinterpret_cast<T*>(bytes.data()); }
    bool written() const
    {
        return std::any_of(bytes.begin(), bytes.end(), [](unsigned char b) { return b != kPattern; });
    }
};

struct Case {
    const char* name;
    qvrStatus status;
    // The call with its cause, and without.
    std::function<qvrStatus(unsigned char* dst, bool cause)> call;
};

const std::vector<unsigned char> kSource(4096, 7);
template<class T> const T* source()
{
    return reinterpret_cast<const T*>(kSource.data());
}

std::vector<Case> cases()
{
    constexpr qvriSize image = {16, 16};
    constexpr qvriRect whole = {0, 0, 16, 16}, outside = {20, 20, 4, 4}, far = {1000, 1000, 8, 8};
    const auto resize = [=](unsigned char* dst, qvriRect from, qvriRect to, int method) {
        static std::vector<unsigned char> buffer(1 << 20);
        return Morven_qvriResizeSqrPixel_8u_C1R(source<qvr8u>(), image, 16, from, dst, 16, to, 1, 1, 0, 0, method,
                                                buffer.data());
    };
    const auto wrapped = [=](unsigned char* dst, int method) {
        return Morven_qvriResize_8u_C1R(source<qvr8u>(), image, 16, whole, dst, 16, image, 1, 1, method);
    };
    std::vector<Case> all = {
        {"ReplaceC of no elements", qvrOk,
         [](unsigned char* dst, bool cause) {
             return Morven_qvrsReplaceC_16u(source<qvr16u>(), reinterpret_cast<qvr16u*>(dst), cause ? 0 : 8, 1, 2);
         }},
        {"Median of two samples", qvrOk,
         [](unsigned char* dst, bool cause) -> qvrStatus {
             float* const x = reinterpret_cast<float*>(dst);
             if (cause)
                 return Morven_qvrsFilterMedian_32f_I(x, 2, 3);
             x[0] = 1, x[1] = 9, x[2] = 2;
             return Morven_qvrsFilterMedian_32f_I(x, 3, 3) == qvrOk && x[1] == 2 ? qvrOk : qvrErrBadSize;
         }},
        {"IIRGenLowpass of no known type", qvrOk,
         [](unsigned char* dst, bool cause) {
             return Morven_qvrsIIRGenLowpass_64f(2, reinterpret_cast<double*>(dst), cause ? 2 : 0, 0.1, 1);
         }},
        {"IIRGenHighpass of no known type", qvrOk,
         [](unsigned char* dst, bool cause) {
             return Morven_qvrsIIRGenHighpass_64f(2, reinterpret_cast<double*>(dst), cause ? -1 : 1, 0.1, 1);
         }},
        {"SampleDown that keeps nothing", qvrOk,
         [](unsigned char* dst, bool cause) {
             int count = 0, phase = cause ? 7 : 0;
             return Morven_qvrsSampleDown_32f(source<float>(), 4, reinterpret_cast<float*>(dst), &count, 8, &phase);
         }},
        {"AddC of 0 to an image", qvrOk,
         [](unsigned char* dst, bool cause) {
             return Morven_qvriAddC_8u_C1IRSfs(cause ? 0 : 3, dst, 16, {16, 16}, 0);
         }},
        {"ResizeSqrPixel from outside the image", qvrWarnRoiOutside,
         [=](unsigned char* dst, bool cause) { return resize(dst, cause ? outside : whole, whole, qvriInterLinear); }},
        {"ResizeSqrPixel to where nothing lands", qvrWarnNothingToDo,
         [=](unsigned char* dst, bool cause) { return resize(dst, whole, cause ? far : whole, qvriInterLinear); }},
        {"Resize without memory", qvrOk,
         [=](unsigned char* dst, bool cause) {
             const CountingAllocator allocator(cause ? CountingAllocator::kAll : CountingAllocator::kNever);
             return wrapped(dst, qvriInterLinear);
         }},
    };
    for (int method : {qvriInterNearest, qvriInterSuper})
        all.push_back({method == qvriInterSuper ? "Resize by super-sampling with the antialiasing flag"
                                                : "Resize by the nearest pixel with the antialiasing flag",
                       qvrWarnNoAntialiasing, [=](unsigned char* dst, bool cause) {
                           return wrapped(dst, cause ? method | int(qvriAntialias) : method);
                       }});
    return all;
}

TEST(Statuses, NothingWrittenWithoutAnError)
{
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        const int32_t chosen = qvrCpuIndex;
        qvrCpuIndex = slot;
        for (const Case& c : cases()) {
            SCOPED_TRACE(std::string(c.name) + ", slot " + slots::kNames[slot]);
            Outputs outputs;
            EXPECT_EQ(c.call(outputs.bytes.data(), true), c.status);
            EXPECT_FALSE(outputs.written());
            EXPECT_GE(c.call(outputs.bytes.data(), false), 0);
            EXPECT_TRUE(outputs.written());
        }
        qvrCpuIndex = chosen;
    }
}

// With the same flag the function that takes a buffer resizes.
TEST(Statuses, AntialiasingWarningAfterTheWork)
{
    std::vector<unsigned char> buffer(1 << 20);
    for (int method : {qvriInterNearest, qvriInterSuper}) {
        Outputs outputs;
        EXPECT_EQ(Morven_qvriResizeSqrPixel_8u_C1R(source<qvr8u>(), {16, 16}, 16, {0, 0, 16, 16}, outputs.bytes.data(),
                                                   16, {0, 0, 16, 16}, 1, 1, 0, 0, method | int(qvriAntialias),
                                                   buffer.data()),
                  qvrWarnNoAntialiasing);
        EXPECT_TRUE(outputs.written());
    }
}

} // namespace
