// Element-wise arithmetic, fills, conversions, reductions, logic, search, sorting, waveforms, columns.
#include <algorithm>

#include "trial.h"

#ifdef QVR_REFERENCE
#include "model/vector.h"
#endif

using namespace check;

QVR_USUAL(qvrsAdd_32f, {})
QVR_USUAL(qvrsAdd_32f_I, {})
QVR_USUAL(qvrsSub_32f, {})
QVR_USUAL(qvrsSub_32f_I, {})
QVR_USUAL(qvrsMul_32f, {})
QVR_USUAL(qvrsMul_32f_I, {})
QVR_USUAL(qvrsMul_64f_I, {})
QVR_USUAL(qvrsMul_64fc, {})
QVR_USUAL(qvrsDiv_32f, ({.low = -3, .high = 40}))
QVR_USUAL(qvrsAddC_32f, ({.scalars = {1.25}}))
QVR_USUAL(qvrsAddC_32f_I, ({.scalars = {1.25}}))
QVR_USUAL(qvrsAddC_64f_I, ({.scalars = {1.1}}))
QVR_USUAL(qvrsSubC_32f, ({.scalars = {1.3}}))
QVR_USUAL(qvrsSubC_32f_I, ({.scalars = {1.3}}))
QVR_USUAL(qvrsSubCRev_32f, ({.scalars = {1.3}}))
QVR_USUAL(qvrsMulC_32f, ({.scalars = {1.3}}))
QVR_USUAL(qvrsMulC_32f_I, ({.scalars = {1.3}}))
QVR_USUAL(qvrsMulC_64f_I, ({.scalars = {1.3}}))
QVR_USUAL(qvrsDivC_32f, ({.scalars = {3}}))
QVR_USUAL(qvrsDivC_32f_I, ({.scalars = {3}}))
QVR_USUAL(qvrsDivCRev_32f, ({.scalars = {3}}))
QVR_USUAL(qvrsDivCRev_32f_I, ({.scalars = {3}}))
QVR_USUAL(qvrsAbs_32f, {})
QVR_USUAL(qvrsAbs_32f_I, {})
QVR_USUAL(qvrsSqr_32f_I, {})
QVR_USUAL(qvrsSqrt_32f, ({.low = -1, .high = 50}))
QVR_USUAL(qvrsCeil_32f, {})
QVR_USUAL(qvrsFloor_32f, {})
QVR_USUAL(qvrsMinEvery_32f_I, {})
QVR_USUAL(qvrsMaxEvery_32f_I, {})

QVR_USUAL(qvrsSet_8u, ({.low = 0, .scalars = {77}}))
QVR_USUAL(qvrsSet_32s, ({.ints = {-7777777, kLength}}))
QVR_USUAL(qvrsSet_32f, ({.scalars = {7.5}}))
QVR_USUAL(qvrsZero_32f, {})
QVR_USUAL(qvrsZero_64f, {})
QVR_USUAL(qvrsCopy_32f, {})
QVR_USUAL(qvrsCopy_64f, {})

QVR_USUAL(qvrsConvert_16s32f, ({.low = -32768, .high = 32767}))
QVR_USUAL(qvrsConvert_32f64f, {})
QVR_USUAL(qvrsConvert_64f32f, {})
QVR_USUAL(qvrsConvert_32s16s, ({.low = -100000, .high = 100000}))
QVR_USUAL(qvrsConvert_16s64f_Sfs, ({.low = -32768, .high = 32767, .ints = {kLength, 3}}))
QVR_USUAL(qvrsConvert_32f16s_Sfs, ({.low = -70000, .high = 70000, .ints = {kLength, qvrRoundHalfAway, 1}}))
QVR_USUAL(qvrsConvert_64f16s_Sfs, ({.low = -20, .high = 20, .ints = {kLength, qvrRoundNearest, -2}}))
QVR_USUAL(qvrsNormalize_32f, ({.scalars = {1.5, 3}}))
QVR_USUAL(qvrsNormalize_64f, ({.scalars = {1.5, 3}}))
QVR_CASE(qvrsSplitScaled_16s32f_D2L)
{
    const auto f = QVR_FUNCTION(qvrsSplitScaled_16s32f_D2L);
    const auto samples = t.values<int16_t>(3 * 50, -32768, 32767);
    std::vector<float> rows[3] = {std::vector<float>(50), std::vector<float>(50), std::vector<float>(50)};
    float* pointers[3] = {rows[0].data(), rows[1].data(), rows[2].data()};
    t.status(f(samples.data(), pointers, 3, 50));
    for (const auto& row : rows)
        t.array("a row", row, kExact);
}

constexpr double k16s = 32767, k16u = 65535;
QVR_USUAL(qvrsAbs_32s_I, ({.low = -2147483648.0, .high = 2147483647.0}))
QVR_USUAL(qvrsAdd_16s_Sfs, ({.low = -k16s, .high = k16s, .ints = {kLength, 1}}))
QVR_USUAL(qvrsAdd_16s_I, ({.low = -k16s, .high = k16s}))
QVR_USUAL(qvrsAdd_16u_ISfs, ({.low = 0, .high = k16u, .ints = {kLength, 1}}))
QVR_USUAL(qvrsAddC_16u_ISfs, ({.low = 0, .high = k16u, .ints = {kLength, 2}, .scalars = {999}}))
QVR_USUAL(qvrsSubC_16u_ISfs, ({.low = 0, .high = k16u, .ints = {kLength, 2}, .scalars = {9999}}))
QVR_USUAL(qvrsMulC_16s_I, ({.low = -k16s, .high = k16s, .scalars = {-3}}))
QVR_USUAL(qvrsSubC_16s_I, ({.low = -k16s, .high = k16s, .scalars = {9999}}))

QVR_USUAL(qvrsMin_16s, ({.outputs = 1}))
QVR_USUAL(qvrsMax_16s, ({.outputs = 1}))
QVR_USUAL(qvrsMin_32f, ({.outputs = 1}))
QVR_USUAL(qvrsMax_32f, ({.outputs = 1}))
QVR_USUAL(qvrsMax_64f, ({.outputs = 1}))
QVR_USUAL(qvrsMinMax_16s, ({.outputs = 1}))
QVR_USUAL(qvrsMinMax_16u, ({.low = 0, .outputs = 1}))
QVR_USUAL(qvrsMinMax_32f, ({.outputs = 1}))
QVR_USUAL(qvrsMinIndx_32f, ({.outputs = 1}))
QVR_USUAL(qvrsMaxIndx_32f, ({.outputs = 1}))

QVR_USUAL(qvrsMean_32f, ({.tolerance = {1.2e-7, 1e-12}, .outputs = 1}))
QVR_USUAL(qvrsMean_64f, ({.tolerance = kSum64f, .outputs = 1}))
QVR_USUAL(qvrsMean_16s_Sfs, ({.low = -k16s, .high = k16s, .ints = {kLength, 1}, .outputs = 1}))
QVR_USUAL(qvrsMean_32s_Sfs, ({.low = -2e9, .high = 2e9, .ints = {kLength, 2}, .outputs = 1}))
QVR_USUAL(qvrsSum_16s32s_Sfs, ({.low = -k16s, .high = k16s, .ints = {kLength, 2}, .outputs = 1}))
QVR_USUAL(qvrsStdDev_32f, ({.tolerance = {2e-7, 1e-9}, .outputs = 1}))
QVR_USUAL(qvrsSumWindow_16s32f, ({.ints = {kLength, 5}}))

QVR_USUAL(qvrsAndC_16u, ({.low = 0, .high = k16u, .scalars = {0xF0F}}))
QVR_USUAL(qvrsAndC_16u_I, ({.low = 0, .high = k16u, .scalars = {0xF0F}}))
QVR_USUAL(qvrsOr_16u_I, ({.low = 0, .high = k16u}))
QVR_USUAL(qvrsLShiftC_16u, ({.low = 0, .high = k16u, .ints = {3, kLength}}))
QVR_USUAL(qvrsLShiftC_16u_I, ({.low = 0, .high = k16u, .ints = {5, kLength}}))
QVR_USUAL(qvrsRShiftC_16u_I, ({.low = 0, .high = k16u, .ints = {5, kLength}}))
QVR_USUAL(qvrsThreshold_32f_I, ({.ints = {kLength, qvrCmpGreater}, .scalars = {20}}))
QVR_USUAL(qvrsThreshold_GTVal_32f, ({.scalars = {20, 3}}))
QVR_USUAL(qvrsThreshold_GTVal_32f_I, ({.scalars = {20, 3}}))
QVR_USUAL(qvrsThreshold_LTVal_32f, ({.scalars = {20, 3}}))
QVR_USUAL(qvrsThreshold_LTVal_32f_I, ({.scalars = {20, 3}}))
QVR_USUAL(qvrsReplaceC_16u, ({.low = 0, .high = 5, .scalars = {3, 9}}))
QVR_USUAL(qvrsFind_8u, ({.low = 0, .high = 1, .ints = {kLength, 3}, .outputs = 1}))
QVR_USUAL(qvrsFind_16u, ({.low = 0, .high = 1, .ints = {kLength, 3}, .outputs = 1}))
QVR_USUAL(qvrsSortAscend_32f_I, {})
QVR_USUAL(qvrsSortAscend_64f_I, {})

QVR_USUAL(qvrsSignChangeRate_Count0_32f, ({.low = -3, .high = 3, .outputs = 1}))
QVR_USUAL(qvrsZeroCrossing_32f, ({.low = -3, .high = 3, .ints = {kLength, qvrZcProduct}, .outputs = 1}))
QVR_CASE(qvrsCompensateOffset_32f)
{
    const auto f = QVR_FUNCTION(qvrsCompensateOffset_32f);
    const auto in = t.values<float>(41, -10, 10);
    std::vector<float> out(40);
    float last = 0;
    t.status(f(in.data(), out.data(), 40, &last, 0.5f, 0.97f));
    t.array("the result", out, kExact);
    t.array("the last value", &last, 1, kExact);
}
QVR_CASE(qvrsCompensateOffset_32f_I)
{
    const auto f = QVR_FUNCTION(qvrsCompensateOffset_32f_I);
    auto data = t.values<float>(40, -10, 10);
    float last = 0.25f;
    t.status(f(data.data(), 40, &last, 0.5f, 0.97f));
    t.array("the result", data, {1e-4, 1e-4});
    t.array("the last value", &last, 1, kExact);
}
QVR_USUAL(qvrsFindPeaks_32f8u, ({.low = 0, .ints = {kLength, 3, 5}}))
QVR_CASE(qvrsCopyColumn_Indirect_16s_D2)
{
    const auto f = QVR_FUNCTION(qvrsCopyColumn_Indirect_16s_D2);
    const auto in = t.values<int16_t>(9 * 20, -k16s, k16s);
    auto out = t.values<int16_t>(9 * 30, -k16s, k16s);
    const auto index = t.values<int32_t>(25, 0, 16);
    t.status(f(in.data(), 17, 20, out.data(), index.data(), 25, 30, 9));
    t.array("the result", out, kExact);
}
QVR_CASE(qvrsCopyColumn_Indirect_16s_D2L)
{
    const auto f = QVR_FUNCTION(qvrsCopyColumn_Indirect_16s_D2L);
    const auto in = t.values<int16_t>(4 * 20, -k16s, k16s);
    std::vector<int16_t> out(4 * 30);
    const auto index = t.values<int32_t>(25, 0, 19);
    const int16_t* from[4];
    int16_t* to[4];
    for (int r = 0; r < 4; r++) {
        from[r] = in.data() + 20 * r;
        to[r] = out.data() + 30 * r;
    }
    t.status(f(from, 20, to, index.data(), 25, 4));
    t.array("the result", out, kExact);
}
