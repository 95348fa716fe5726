// Arrays beyond the second cache, whose lines are asked for ahead: the results of their pieces, and nothing read or
// written behind the end.
#include "elementary/each_call.h"
#include "elementary/slot_tables.h"
#include "support/guarded.h"
#include "support/slots.h"
#include "support/values.h"

namespace {

constexpr int kLong = (1 << 17) + 53, kPiece = 1021;

// `call(source, destination, n)`; `parts` floats make one element of the source.
template<class D, class Call> void checkLong(const std::vector<float>& values, int parts, Call&& call)
{
    Guarded in(size_t(kLong) * parts * sizeof(float)), out(size_t(kLong) * sizeof(D));
    float* const src = in.atEnd<float>(size_t(kLong) * parts * sizeof(float));
    memcpy(src, values.data(), size_t(kLong) * parts * sizeof(float));
    D* const dst = out.atEnd<D>(size_t(kLong) * sizeof(D));
    const qvrStatus status = call(src, dst, kLong);
    EXPECT_TRUE(out.intact());
    std::vector<D> want(kLong);
    qvrStatus first = qvrOk;
    for (int i = 0; i < kLong; i += kPiece) {
        const qvrStatus s = call(src + size_t(i) * parts, &want[size_t(i)], std::min(kPiece, kLong - i));
        first = first == qvrOk ? s : first;
    }
    EXPECT_EQ(status, first);
    int wrong = 0;
    for (int i = 0; i < kLong; i++)
        wrong += !sameValue(dst[i], want[size_t(i)]);
    EXPECT_EQ(wrong, 0);
}

// Without special ones: how a block with one is computed depends on its place.
std::vector<float> values(int parts)
{
    return randomValues<float>(size_t(kLong) * parts, 5, 0.01, 1);
}

TEST(ElementaryLong, PiecesOfTaggedFunctions)
{
    const std::vector<float> v = values(1);
    eachCall([&](const Invoke& run) { checkLong<float>(v, 1, run); });
}

TEST(ElementaryLong, PiecesOfUntaggedFunctions)
{
    const std::vector<float> v = values(1), pairs = values(2), wide = values(4);
    for (auto* table : {qvrTable_qvrsExp_32f, qvrTable_qvrsLn_32f, qvrTable_qvrsArctan_32f})
        for (int slot = 0; slot < slots::kCount; slot++)
            if (slots::canRun(slot))
                checkLong<float>(v, 1, table[slot]);
    slots::each(qvrTable_qvrsPhase_32fc, [&](auto f, int) {
        checkLong<float>(pairs, 2,
                         [&](const float* x, float* y, int n) { return f(reinterpret_cast<const qvr32fc*>(x), y, n); });
    });
    slots::each(qvrTable_qvrsMagnitude_64fc, [&](auto f, int) {
        checkLong<double>(
            wide, 4, [&](const float* x, double* y, int n) { return f(reinterpret_cast<const qvr64fc*>(x), y, n); });
    });
    slots::each(qvrTable_qvrsMagnitude_16sc_Sfs, [&](auto f, int) {
        checkLong<int16_t>(
            v, 1, [&](const float* x, int16_t* y, int n) { return f(reinterpret_cast<const qvr16sc*>(x), y, n, 1); });
    });
}

} // namespace
