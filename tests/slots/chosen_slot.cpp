// What the load hook chose on this processor, against the slot that QVR_EXPECTED_SLOT names; then calls through the
// dispatchers with results that are known exactly, so that an instruction above the processor's level is met here.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "frame/processor.h"
#include "frame/threads.h"
#include "morvenqvr.h"
#include "vector/slot_tables.h"

namespace {

constexpr const char* kSlots[] = {
#define QVR_SLOT(prefix, ...) #prefix,
#include "frame/slots.def"
};

// The features that a slot leaves in the mask, of those that the processor has.
constexpr uint64_t kKept[] = {
#define QVR_SLOT(prefix, shared, chosen, kept, ...) kept,
#include "frame/slots.def"
};

int failures = 0;

void expect(bool good, const char* what)
{
    if (!good) {
        std::printf("failed: %s\n", what);
        failures++;
    }
}

void checkChoice(const char* expected)
{
    std::printf("slot %s, mask %#llx, features %#llx\n", kSlots[qvrCpuIndex],
                static_cast<unsigned long long>(qvrFeatureMask), static_cast<unsigned long long>(qvrDetectedFeatures));
    expect(std::strcmp(kSlots[qvrCpuIndex], expected) == 0, "the slot that suits this processor");
    expect(qvrLoadDone == 1 && qvrDetectedValid == 1, "the load hook has run");
    expect(qvrFeatureMask == (qvrDetectedFeatures & kKept[qvrCpuIndex]), "the mask of the slot");
    expect(qvrNumThreads >= 1, "a thread budget");
}

// Small whole numbers: every operation below is exact on them, whatever its order.
void checkArithmetic(int len)
{
    std::vector<float> a(len), b(len), sum(len), quotient(len);
    std::vector<int16_t> shorts(len);
    for (int i = 0; i < len; i++) {
        a[i] = static_cast<float>(i % 97 - 40);
        b[i] = static_cast<float>(1 << i % 7);
    }
    bool status = Morven_qvrsAdd_32f(a.data(), b.data(), sum.data(), len) == qvrOk;
    status &= Morven_qvrsMulC_32f_I(4.0f, sum.data(), len) == qvrOk;
    status &= Morven_qvrsDiv_32f(b.data(), sum.data(), quotient.data(), len) == qvrOk;
    status &= Morven_qvrsConvert_32f16s_Sfs(sum.data(), shorts.data(), len, qvrRoundNearest, 1) == qvrOk;
    bool values = true;
    for (int i = 0; i < len; i++) {
        const float want = (a[i] + b[i]) * 4;
        values &= sum[i] == want && quotient[i] == want / b[i];
        values &= shorts[i] == static_cast<int16_t>(want / 2);
    }
    for (float& x : a)
        x = x * x;
    status &= Morven_qvrsSqrt_32f(a.data(), a.data(), len) == qvrOk;
    for (int i = 0; i < len; i++)
        values &= a[i] == std::fabs(static_cast<float>(i % 97 - 40));
    for (int i = 0; i < len; i++)
        a[i] = static_cast<float>(i - 5) + 0.25f;
    status &= Morven_qvrsFloor_32f(a.data(), sum.data(), len) == qvrOk;
    status &= Morven_qvrsCeil_32f(a.data(), quotient.data(), len) == qvrOk;
    for (int i = 0; i < len; i++)
        values &= sum[i] == static_cast<float>(i - 5) && quotient[i] == static_cast<float>(i - 4);
    status &= Morven_qvrsZero_32f(sum.data(), len) == qvrOk;
    for (int i = 0; i < len; i++)
        values &= sum[i] == 0;
    expect(status, "status of the arithmetic");
    expect(values, "results of the arithmetic");
}

void checkComplexAndSplit(int len)
{
    std::vector<qvr64fc> a(len), b(len), product(len);
    for (int i = 0; i < len; i++) {
        a[i] = {static_cast<double>(i), 2.0};
        b[i] = {3.0, static_cast<double>(-i)};
    }
    bool good = Morven_qvrsMul_64fc(a.data(), b.data(), product.data(), len) == qvrOk;
    for (int i = 0; i < len; i++)
        good &= product[i].re == 3.0 * i + 2.0 * i && product[i].im == 6.0 - static_cast<double>(i) * i;
    expect(good, "complex products");

    std::vector<int16_t> stereo(2 * len);
    std::vector<float> left(len), right(len);
    for (int i = 0; i < 2 * len; i++)
        stereo[i] = static_cast<int16_t>(i % 2 != 0 ? -32768 : 32767);
    float* rows[2] = {left.data(), right.data()};
    good = Morven_qvrsSplitScaled_16s32f_D2L(stereo.data(), rows, 2, len) == qvrOk;
    for (int i = 0; i < len; i++)
        good &= std::fabs(left[i] - 1) < 1e-6f && std::fabs(right[i] + 1) < 1e-6f;
    expect(good, "rows of a split");
}

} // namespace

int main()
{
    const char* expected = std::getenv("QVR_EXPECTED_SLOT");
    if (expected == nullptr) {
        std::printf("QVR_EXPECTED_SLOT names no slot\n");
        return 2;
    }
    checkChoice(expected);
    for (const int len : {1, 3, 7, 15, 33, 64, 1000, 5000}) {
        checkArithmetic(len);
        checkComplexAndSplit(len);
    }
    std::printf("%d failures\n", failures);
    return failures == 0 ? 0 : 1;
}
