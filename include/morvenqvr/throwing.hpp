// The overloads of morvenqvr.hpp with errors as exceptions: made by scripts/cpp_overloads.py, not by hand.
#ifndef MORVENQVR_THROWING_HPP
#define MORVENQVR_THROWING_HPP

#include "morvenqvr.hpp"

namespace qvr {

/** Morven_qvrsAdd_32f */
inline qvrStatus add(In<qvr32f> pSrc1, In<qvr32f> pSrc2, Out<qvr32f> pDst)
{
    return detail::raise(checked::add(pSrc1, pSrc2, pDst), "add");
}

/** Morven_qvrsAdd_32f_I */
inline qvrStatus add(In<qvr32f> pSrc, Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::add(pSrc, pSrcDst), "add");
}

/** Morven_qvrsSub_32f */
inline qvrStatus sub(In<qvr32f> pSrc1, In<qvr32f> pSrc2, Out<qvr32f> pDst)
{
    return detail::raise(checked::sub(pSrc1, pSrc2, pDst), "sub");
}

/** Morven_qvrsSub_32f_I */
inline qvrStatus sub(In<qvr32f> pSrc, Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::sub(pSrc, pSrcDst), "sub");
}

/** Morven_qvrsMul_32f */
inline qvrStatus mul(In<qvr32f> pSrc1, In<qvr32f> pSrc2, Out<qvr32f> pDst)
{
    return detail::raise(checked::mul(pSrc1, pSrc2, pDst), "mul");
}

/** Morven_qvrsMul_32f_I */
inline qvrStatus mul(In<qvr32f> pSrc, Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::mul(pSrc, pSrcDst), "mul");
}

/** Morven_qvrsMul_64f_I */
inline qvrStatus mul(In<qvr64f> pSrc, Out<qvr64f> pSrcDst)
{
    return detail::raise(checked::mul(pSrc, pSrcDst), "mul");
}

/** Morven_qvrsMul_64fc */
inline qvrStatus mul(In<qvr64fc> pSrc1, In<qvr64fc> pSrc2, Out<qvr64fc> pDst)
{
    return detail::raise(checked::mul(pSrc1, pSrc2, pDst), "mul");
}

/** Morven_qvrsDiv_32f */
inline qvrStatus div(In<qvr32f> pSrc1, In<qvr32f> pSrc2, Out<qvr32f> pDst)
{
    return detail::raise(checked::div(pSrc1, pSrc2, pDst), "div");
}

/** Morven_qvrsAddC_32f */
inline qvrStatus addC(In<qvr32f> pSrc, qvr32f val, Out<qvr32f> pDst)
{
    return detail::raise(checked::addC(pSrc, val, pDst), "addC");
}

/** Morven_qvrsAddC_32f_I */
inline qvrStatus addC(qvr32f val, Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::addC(val, pSrcDst), "addC");
}

/** Morven_qvrsAddC_64f_I */
inline qvrStatus addC(qvr64f val, Out<qvr64f> pSrcDst)
{
    return detail::raise(checked::addC(val, pSrcDst), "addC");
}

/** Morven_qvrsSubC_32f */
inline qvrStatus subC(In<qvr32f> pSrc, qvr32f val, Out<qvr32f> pDst)
{
    return detail::raise(checked::subC(pSrc, val, pDst), "subC");
}

/** Morven_qvrsSubC_32f_I */
inline qvrStatus subC(qvr32f val, Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::subC(val, pSrcDst), "subC");
}

/** Morven_qvrsSubCRev_32f */
inline qvrStatus subCRev(In<qvr32f> pSrc, qvr32f val, Out<qvr32f> pDst)
{
    return detail::raise(checked::subCRev(pSrc, val, pDst), "subCRev");
}

/** Morven_qvrsMulC_32f */
inline qvrStatus mulC(In<qvr32f> pSrc, qvr32f val, Out<qvr32f> pDst)
{
    return detail::raise(checked::mulC(pSrc, val, pDst), "mulC");
}

/** Morven_qvrsMulC_32f_I */
inline qvrStatus mulC(qvr32f val, Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::mulC(val, pSrcDst), "mulC");
}

/** Morven_qvrsMulC_64f_I */
inline qvrStatus mulC(qvr64f val, Out<qvr64f> pSrcDst)
{
    return detail::raise(checked::mulC(val, pSrcDst), "mulC");
}

/** Morven_qvrsDivC_32f */
inline qvrStatus divC(In<qvr32f> pSrc, qvr32f val, Out<qvr32f> pDst)
{
    return detail::raise(checked::divC(pSrc, val, pDst), "divC");
}

/** Morven_qvrsDivC_32f_I */
inline qvrStatus divC(qvr32f val, Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::divC(val, pSrcDst), "divC");
}

/** Morven_qvrsDivCRev_32f */
inline qvrStatus divCRev(In<qvr32f> pSrc, qvr32f val, Out<qvr32f> pDst)
{
    return detail::raise(checked::divCRev(pSrc, val, pDst), "divCRev");
}

/** Morven_qvrsDivCRev_32f_I */
inline qvrStatus divCRev(qvr32f val, Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::divCRev(val, pSrcDst), "divCRev");
}

/** Morven_qvrsAbs_32f */
inline qvrStatus abs(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::abs(pSrc, pDst), "abs");
}

/** Morven_qvrsAbs_32f_I */
inline qvrStatus abs(Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::abs(pSrcDst), "abs");
}

/** Morven_qvrsSqr_32f_I */
inline qvrStatus sqr(Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::sqr(pSrcDst), "sqr");
}

/** Morven_qvrsSqrt_32f */
inline qvrStatus sqrt(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::sqrt(pSrc, pDst), "sqrt");
}

/** Morven_qvrsCeil_32f */
inline qvrStatus ceil(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::ceil(pSrc, pDst), "ceil");
}

/** Morven_qvrsFloor_32f */
inline qvrStatus floor(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::floor(pSrc, pDst), "floor");
}

/** Morven_qvrsMinEvery_32f_I */
inline qvrStatus minEvery(In<qvr32f> pSrc, Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::minEvery(pSrc, pSrcDst), "minEvery");
}

/** Morven_qvrsMaxEvery_32f_I */
inline qvrStatus maxEvery(In<qvr32f> pSrc, Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::maxEvery(pSrc, pSrcDst), "maxEvery");
}

/** Morven_qvrsSet_8u */
inline qvrStatus set(qvr8u val, Out<qvr8u> pDst)
{
    return detail::raise(checked::set(val, pDst), "set");
}

/** Morven_qvrsSet_32s */
inline qvrStatus set(qvr32s val, Out<qvr32s> pDst)
{
    return detail::raise(checked::set(val, pDst), "set");
}

/** Morven_qvrsSet_32f */
inline qvrStatus set(qvr32f val, Out<qvr32f> pDst)
{
    return detail::raise(checked::set(val, pDst), "set");
}

/** Morven_qvrsZero_32f */
inline qvrStatus zero(Out<qvr32f> pDst)
{
    return detail::raise(checked::zero(pDst), "zero");
}

/** Morven_qvrsZero_64f */
inline qvrStatus zero(Out<qvr64f> pDst)
{
    return detail::raise(checked::zero(pDst), "zero");
}

/** Morven_qvrsCopy_32f */
inline qvrStatus copy(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::copy(pSrc, pDst), "copy");
}

/** Morven_qvrsCopy_64f */
inline qvrStatus copy(In<qvr64f> pSrc, Out<qvr64f> pDst)
{
    return detail::raise(checked::copy(pSrc, pDst), "copy");
}

/** Morven_qvrsConvert_16s32f */
inline qvrStatus convert(In<qvr16s> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::convert(pSrc, pDst), "convert");
}

/** Morven_qvrsConvert_32f64f */
inline qvrStatus convert(In<qvr32f> pSrc, Out<qvr64f> pDst)
{
    return detail::raise(checked::convert(pSrc, pDst), "convert");
}

/** Morven_qvrsConvert_64f32f */
inline qvrStatus convert(In<qvr64f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::convert(pSrc, pDst), "convert");
}

/** Morven_qvrsConvert_32s16s */
inline qvrStatus convert(In<qvr32s> pSrc, Out<qvr16s> pDst)
{
    return detail::raise(checked::convert(pSrc, pDst), "convert");
}

/** Morven_qvrsConvert_16s64f_Sfs */
inline qvrStatus convert(In<qvr16s> pSrc, Out<qvr64f> pDst, int scaleFactor)
{
    return detail::raise(checked::convert(pSrc, pDst, scaleFactor), "convert");
}

/** Morven_qvrsConvert_32f16s_Sfs */
inline qvrStatus convert(In<qvr32f> pSrc, Out<qvr16s> pDst, int rndMode, int scaleFactor)
{
    return detail::raise(checked::convert(pSrc, pDst, rndMode, scaleFactor), "convert");
}

/** Morven_qvrsConvert_64f16s_Sfs */
inline qvrStatus convert(In<qvr64f> pSrc, Out<qvr16s> pDst, int rndMode, int scaleFactor)
{
    return detail::raise(checked::convert(pSrc, pDst, rndMode, scaleFactor), "convert");
}

/** Morven_qvrsNormalize_32f */
inline qvrStatus normalize(In<qvr32f> pSrc, Out<qvr32f> pDst, qvr32f vSub, qvr32f vDiv)
{
    return detail::raise(checked::normalize(pSrc, pDst, vSub, vDiv), "normalize");
}

/** Morven_qvrsNormalize_64f */
inline qvrStatus normalize(In<qvr64f> pSrc, Out<qvr64f> pDst, qvr64f vSub, qvr64f vDiv)
{
    return detail::raise(checked::normalize(pSrc, pDst, vSub, vDiv), "normalize");
}

/** Morven_qvrsSplitScaled_16s32f_D2L */
inline qvrStatus splitScaled(In<qvr16s> pSrc, std::span<qvr32f*> ppDst, int chanLen)
{
    return detail::raise(checked::splitScaled(pSrc, ppDst, chanLen), "splitScaled");
}

/** Morven_qvrsAdd_16s_Sfs */
inline qvrStatus add(In<qvr16s> pSrc1, In<qvr16s> pSrc2, Out<qvr16s> pDst, int scaleFactor)
{
    return detail::raise(checked::add(pSrc1, pSrc2, pDst, scaleFactor), "add");
}

/** Morven_qvrsAdd_16u_ISfs */
inline qvrStatus add(In<qvr16u> pSrc, Out<qvr16u> pSrcDst, int scaleFactor)
{
    return detail::raise(checked::add(pSrc, pSrcDst, scaleFactor), "add");
}

/** Morven_qvrsAddC_16u_ISfs */
inline qvrStatus addC(qvr16u val, Out<qvr16u> pSrcDst, int scaleFactor)
{
    return detail::raise(checked::addC(val, pSrcDst, scaleFactor), "addC");
}

/** Morven_qvrsSubC_16u_ISfs */
inline qvrStatus subC(qvr16u val, Out<qvr16u> pSrcDst, int scaleFactor)
{
    return detail::raise(checked::subC(val, pSrcDst, scaleFactor), "subC");
}

/** Morven_qvrsAdd_16s_I */
inline qvrStatus add(In<qvr16s> pSrc, Out<qvr16s> pSrcDst)
{
    return detail::raise(checked::add(pSrc, pSrcDst), "add");
}

/** Morven_qvrsSubC_16s_I */
inline qvrStatus subC(qvr16s val, Out<qvr16s> pSrcDst)
{
    return detail::raise(checked::subC(val, pSrcDst), "subC");
}

/** Morven_qvrsMulC_16s_I */
inline qvrStatus mulC(qvr16s val, Out<qvr16s> pSrcDst)
{
    return detail::raise(checked::mulC(val, pSrcDst), "mulC");
}

/** Morven_qvrsAbs_32s_I */
inline qvrStatus abs(Out<qvr32s> pSrcDst)
{
    return detail::raise(checked::abs(pSrcDst), "abs");
}

/** Morven_qvrsSum_16s32s_Sfs */
[[nodiscard]] inline qvr32s sum(In<qvr16s> pSrc, int scaleFactor)
{
    qvr32s result{};
    detail::raise(checked::sum(pSrc, result, scaleFactor), "sum");
    return result;
}

/** Morven_qvrsMean_16s_Sfs */
[[nodiscard]] inline qvr16s mean(In<qvr16s> pSrc, int scaleFactor)
{
    qvr16s result{};
    detail::raise(checked::mean(pSrc, result, scaleFactor), "mean");
    return result;
}

/** Morven_qvrsMean_32s_Sfs */
[[nodiscard]] inline qvr32s mean(In<qvr32s> pSrc, int scaleFactor)
{
    qvr32s result{};
    detail::raise(checked::mean(pSrc, result, scaleFactor), "mean");
    return result;
}

/** Morven_qvrsMean_32f */
[[nodiscard]] inline qvr32f mean(In<qvr32f> pSrc)
{
    qvr32f result{};
    detail::raise(checked::mean(pSrc, result), "mean");
    return result;
}

/** Morven_qvrsMean_64f */
[[nodiscard]] inline qvr64f mean(In<qvr64f> pSrc)
{
    qvr64f result{};
    detail::raise(checked::mean(pSrc, result), "mean");
    return result;
}

/** Morven_qvrsStdDev_32f */
[[nodiscard]] inline qvr32f stdDev(In<qvr32f> pSrc)
{
    qvr32f result{};
    detail::raise(checked::stdDev(pSrc, result), "stdDev");
    return result;
}

/** Morven_qvrsMin_16s */
[[nodiscard]] inline qvr16s min(In<qvr16s> pSrc)
{
    qvr16s result{};
    detail::raise(checked::min(pSrc, result), "min");
    return result;
}

/** Morven_qvrsMax_16s */
[[nodiscard]] inline qvr16s max(In<qvr16s> pSrc)
{
    qvr16s result{};
    detail::raise(checked::max(pSrc, result), "max");
    return result;
}

/** Morven_qvrsMin_32f */
[[nodiscard]] inline qvr32f min(In<qvr32f> pSrc)
{
    qvr32f result{};
    detail::raise(checked::min(pSrc, result), "min");
    return result;
}

/** Morven_qvrsMax_32f */
[[nodiscard]] inline qvr32f max(In<qvr32f> pSrc)
{
    qvr32f result{};
    detail::raise(checked::max(pSrc, result), "max");
    return result;
}

/** Morven_qvrsMax_64f */
[[nodiscard]] inline qvr64f max(In<qvr64f> pSrc)
{
    qvr64f result{};
    detail::raise(checked::max(pSrc, result), "max");
    return result;
}

/** Morven_qvrsMinMax_16s */
[[nodiscard]] inline Extremes<qvr16s> minMax(In<qvr16s> pSrc)
{
    Extremes<qvr16s> result{};
    detail::raise(checked::minMax(pSrc, result.min, result.max), "minMax");
    return result;
}

/** Morven_qvrsMinMax_16u */
[[nodiscard]] inline Extremes<qvr16u> minMax(In<qvr16u> pSrc)
{
    Extremes<qvr16u> result{};
    detail::raise(checked::minMax(pSrc, result.min, result.max), "minMax");
    return result;
}

/** Morven_qvrsMinMax_32f */
[[nodiscard]] inline Extremes<qvr32f> minMax(In<qvr32f> pSrc)
{
    Extremes<qvr32f> result{};
    detail::raise(checked::minMax(pSrc, result.min, result.max), "minMax");
    return result;
}

/** Morven_qvrsMinIndx_32f */
[[nodiscard]] inline Extreme<qvr32f> minIndx(In<qvr32f> pSrc)
{
    Extreme<qvr32f> result{};
    detail::raise(checked::minIndx(pSrc, result.value, result.index), "minIndx");
    return result;
}

/** Morven_qvrsMaxIndx_32f */
[[nodiscard]] inline Extreme<qvr32f> maxIndx(In<qvr32f> pSrc)
{
    Extreme<qvr32f> result{};
    detail::raise(checked::maxIndx(pSrc, result.value, result.index), "maxIndx");
    return result;
}

/** Morven_qvrsSumWindow_16s32f */
inline qvrStatus sumWindow(In<qvr16s> pSrc, Out<qvr32f> pDst, int maskSize)
{
    return detail::raise(checked::sumWindow(pSrc, pDst, maskSize), "sumWindow");
}

/** Morven_qvrsAndC_16u */
inline qvrStatus andC(In<qvr16u> pSrc, qvr16u val, Out<qvr16u> pDst)
{
    return detail::raise(checked::andC(pSrc, val, pDst), "andC");
}

/** Morven_qvrsAndC_16u_I */
inline qvrStatus andC(qvr16u val, Out<qvr16u> pSrcDst)
{
    return detail::raise(checked::andC(val, pSrcDst), "andC");
}

/** Morven_qvrsOr_16u_I */
inline qvrStatus bitOr(In<qvr16u> pSrc, Out<qvr16u> pSrcDst)
{
    return detail::raise(checked::bitOr(pSrc, pSrcDst), "bitOr");
}

/** Morven_qvrsLShiftC_16u */
inline qvrStatus lShiftC(In<qvr16u> pSrc, int val, Out<qvr16u> pDst)
{
    return detail::raise(checked::lShiftC(pSrc, val, pDst), "lShiftC");
}

/** Morven_qvrsLShiftC_16u_I */
inline qvrStatus lShiftC(int val, Out<qvr16u> pSrcDst)
{
    return detail::raise(checked::lShiftC(val, pSrcDst), "lShiftC");
}

/** Morven_qvrsRShiftC_16u_I */
inline qvrStatus rShiftC(int val, Out<qvr16u> pSrcDst)
{
    return detail::raise(checked::rShiftC(val, pSrcDst), "rShiftC");
}

/** Morven_qvrsThreshold_32f_I */
inline qvrStatus threshold(Out<qvr32f> pSrcDst, qvr32f level, int relOp)
{
    return detail::raise(checked::threshold(pSrcDst, level, relOp), "threshold");
}

/** Morven_qvrsThreshold_GTVal_32f */
inline qvrStatus thresholdGTVal(In<qvr32f> pSrc, Out<qvr32f> pDst, qvr32f level, qvr32f value)
{
    return detail::raise(checked::thresholdGTVal(pSrc, pDst, level, value), "thresholdGTVal");
}

/** Morven_qvrsThreshold_GTVal_32f_I */
inline qvrStatus thresholdGTVal(Out<qvr32f> pSrcDst, qvr32f level, qvr32f value)
{
    return detail::raise(checked::thresholdGTVal(pSrcDst, level, value), "thresholdGTVal");
}

/** Morven_qvrsThreshold_LTVal_32f */
inline qvrStatus thresholdLTVal(In<qvr32f> pSrc, Out<qvr32f> pDst, qvr32f level, qvr32f value)
{
    return detail::raise(checked::thresholdLTVal(pSrc, pDst, level, value), "thresholdLTVal");
}

/** Morven_qvrsThreshold_LTVal_32f_I */
inline qvrStatus thresholdLTVal(Out<qvr32f> pSrcDst, qvr32f level, qvr32f value)
{
    return detail::raise(checked::thresholdLTVal(pSrcDst, level, value), "thresholdLTVal");
}

/** Morven_qvrsReplaceC_16u */
inline qvrStatus replaceC(In<qvr16u> pSrc, Out<qvr16u> pDst, qvr16u oldVal, qvr16u newVal)
{
    return detail::raise(checked::replaceC(pSrc, pDst, oldVal, newVal), "replaceC");
}

/** Morven_qvrsFind_8u */
[[nodiscard]] inline qvr32s find(In<qvr8u> pSrc, In<qvr8u> pFind)
{
    qvr32s result{};
    detail::raise(checked::find(pSrc, pFind, result), "find");
    return result;
}

/** Morven_qvrsFind_16u */
[[nodiscard]] inline qvr32s find(In<qvr16u> pSrc, In<qvr16u> pFind)
{
    qvr32s result{};
    detail::raise(checked::find(pSrc, pFind, result), "find");
    return result;
}

/** Morven_qvrsSortAscend_32f_I */
inline qvrStatus sortAscend(Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::sortAscend(pSrcDst), "sortAscend");
}

/** Morven_qvrsSortAscend_64f_I */
inline qvrStatus sortAscend(Out<qvr64f> pSrcDst)
{
    return detail::raise(checked::sortAscend(pSrcDst), "sortAscend");
}

/** Morven_qvrsSignChangeRate_Count0_32f */
[[nodiscard]] inline qvr32f signChangeRateCount0(In<qvr32f> pSrc)
{
    qvr32f result{};
    detail::raise(checked::signChangeRateCount0(pSrc, result), "signChangeRateCount0");
    return result;
}

/** Morven_qvrsZeroCrossing_32f */
[[nodiscard]] inline qvr32f zeroCrossing(In<qvr32f> pSrc, int zcType)
{
    qvr32f result{};
    detail::raise(checked::zeroCrossing(pSrc, result, zcType), "zeroCrossing");
    return result;
}

/** Morven_qvrsCompensateOffset_32f */
inline qvrStatus compensateOffset(In<qvr32f> pSrc, Out<qvr32f> pDst, qvr32f& pLast, qvr32f prevValue, qvr32f factor)
{
    return detail::raise(checked::compensateOffset(pSrc, pDst, pLast, prevValue, factor), "compensateOffset");
}

/** Morven_qvrsCompensateOffset_32f_I */
inline qvrStatus compensateOffset(Out<qvr32f> pSrcDst, qvr32f& pLast, qvr32f prevValue, qvr32f factor)
{
    return detail::raise(checked::compensateOffset(pSrcDst, pLast, prevValue, factor), "compensateOffset");
}

/** Morven_qvrsFindPeaks_32f8u */
inline qvrStatus findPeaks(In<qvr32f> pSrc, Out<qvr8u> pDstPeaks, int searchSize, int movingAvgSize)
{
    return detail::raise(checked::findPeaks(pSrc, pDstPeaks, searchSize, movingAvgSize), "findPeaks");
}

/** Morven_qvrsCopyColumn_Indirect_16s_D2 */
inline qvrStatus copyColumnIndirect(In<qvr16s> pSrc, int srcCols, int srcStride, Out<qvr16s> pDst, In<qvr32s> pIndex,
                                    int dstStride, int rows)
{
    return detail::raise(checked::copyColumnIndirect(pSrc, srcCols, srcStride, pDst, pIndex, dstStride,
                                                     rows), "copyColumnIndirect");
}

/** Morven_qvrsCopyColumn_Indirect_16s_D2L */
inline qvrStatus copyColumnIndirect(std::span<const qvr16s*> ppSrc, int srcCols, std::span<qvr16s*> ppDst,
                                    In<qvr32s> pIndex)
{
    return detail::raise(checked::copyColumnIndirect(ppSrc, srcCols, ppDst, pIndex), "copyColumnIndirect");
}

/** Morven_qvrsFFTFwd_RToCCS_32f */
inline qvrStatus fftFwd(In<qvr32f> pSrc, Out<qvr32f> pDst, const FFTSpec_R_32f& pSpec, Out<qvr8u> pBuffer = {})
{
    return detail::raise(checked::fftFwd(pSrc, pDst, pSpec, pBuffer), "fftFwd");
}

/** Morven_qvrsFFTFwd_RToCCS_64f */
inline qvrStatus fftFwd(In<qvr64f> pSrc, Out<qvr64f> pDst, const FFTSpec_R_64f& pSpec, Out<qvr8u> pBuffer = {})
{
    return detail::raise(checked::fftFwd(pSrc, pDst, pSpec, pBuffer), "fftFwd");
}

/** Morven_qvrsFFTInv_CCSToR_32f */
inline qvrStatus fftInv(In<qvr32f> pSrc, Out<qvr32f> pDst, const FFTSpec_R_32f& pSpec, Out<qvr8u> pBuffer = {})
{
    return detail::raise(checked::fftInv(pSrc, pDst, pSpec, pBuffer), "fftInv");
}

/** Morven_qvrsFFTInv_CCSToR_64f */
inline qvrStatus fftInv(In<qvr64f> pSrc, Out<qvr64f> pDst, const FFTSpec_R_64f& pSpec, Out<qvr8u> pBuffer = {})
{
    return detail::raise(checked::fftInv(pSrc, pDst, pSpec, pBuffer), "fftInv");
}

/** Morven_qvrsFFTFwd_RToCCS_16s_Sfs */
inline qvrStatus fftFwd(In<qvr16s> pSrc, Out<qvr16s> pDst, const FFTSpec_R_16s& pSpec, int scaleFactor,
                        Out<qvr8u> pBuffer = {})
{
    return detail::raise(checked::fftFwd(pSrc, pDst, pSpec, scaleFactor, pBuffer), "fftFwd");
}

/** Morven_qvrsHilbert_32f32fc */
inline qvrStatus hilbert(In<qvr32f> pSrc, Out<qvr32fc> pDst, HilbertState_32f32fc& pState)
{
    return detail::raise(checked::hilbert(pSrc, pDst, pState), "hilbert");
}

/** Morven_qvrsConv_32f */
inline qvrStatus conv(In<qvr32f> pSrc1, In<qvr32f> pSrc2, Out<qvr32f> pDst)
{
    return detail::raise(checked::conv(pSrc1, pSrc2, pDst), "conv");
}

/** Morven_qvrsConvBiased_32f */
inline qvrStatus convBiased(In<qvr32f> pSrc1, In<qvr32f> pSrc2, Out<qvr32f> pDst, int bias)
{
    return detail::raise(checked::convBiased(pSrc1, pSrc2, pDst, bias), "convBiased");
}

/** Morven_qvrsConvCyclic8x8_32f */
inline qvrStatus convCyclic8x8(std::span<const qvr32f, 8> pX, std::span<const qvr32f, 8> pH, std::span<qvr32f, 8> pY)
{
    return detail::raise(checked::convCyclic8x8(pX, pH, pY), "convCyclic8x8");
}

/** Morven_qvrsCrossCorr_32f */
inline qvrStatus crossCorr(In<qvr32f> pSrc1, In<qvr32f> pSrc2, Out<qvr32f> pDst, int lowLag)
{
    return detail::raise(checked::crossCorr(pSrc1, pSrc2, pDst, lowLag), "crossCorr");
}

/** Morven_qvrsAutoCorr_32f */
inline qvrStatus autoCorr(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::autoCorr(pSrc, pDst), "autoCorr");
}

/** Morven_qvrsWTFwd_32f */
inline qvrStatus wtFwd(In<qvr32f> pSrc, Out<qvr32f> pDstLow, Out<qvr32f> pDstHigh, WTFwdState_32f& pState)
{
    return detail::raise(checked::wtFwd(pSrc, pDstLow, pDstHigh, pState), "wtFwd");
}

/** Morven_qvrsWTFwdSetDlyLine_32f */
inline qvrStatus wtFwdSetDlyLine(WTFwdState_32f& pState, In<qvr32f> pDlyLow, In<qvr32f> pDlyHigh)
{
    return detail::raise(checked::wtFwdSetDlyLine(pState, pDlyLow, pDlyHigh), "wtFwdSetDlyLine");
}

/** Morven_qvrsWTFwdGetDlyLine_32f */
inline qvrStatus wtFwdGetDlyLine(WTFwdState_32f& pState, Out<qvr32f> pDlyLow, Out<qvr32f> pDlyHigh)
{
    return detail::raise(checked::wtFwdGetDlyLine(pState, pDlyLow, pDlyHigh), "wtFwdGetDlyLine");
}

/** Morven_qvrsWTInv_32f */
inline qvrStatus wtInv(In<qvr32f> pSrcLow, In<qvr32f> pSrcHigh, Out<qvr32f> pDst, WTInvState_32f& pState)
{
    return detail::raise(checked::wtInv(pSrcLow, pSrcHigh, pDst, pState), "wtInv");
}

/** Morven_qvrsWTInvSetDlyLine_32f */
inline qvrStatus wtInvSetDlyLine(WTInvState_32f& pState, In<qvr32f> pDlyLow, In<qvr32f> pDlyHigh)
{
    return detail::raise(checked::wtInvSetDlyLine(pState, pDlyLow, pDlyHigh), "wtInvSetDlyLine");
}

/** Morven_qvrsWTInvGetDlyLine_32f */
inline qvrStatus wtInvGetDlyLine(WTInvState_32f& pState, Out<qvr32f> pDlyLow, Out<qvr32f> pDlyHigh)
{
    return detail::raise(checked::wtInvGetDlyLine(pState, pDlyLow, pDlyHigh), "wtInvGetDlyLine");
}

/** Morven_qvrsWinBartlett_32f_I */
inline qvrStatus winBartlett(Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::winBartlett(pSrcDst), "winBartlett");
}

/** Morven_qvrsWinHann_32f_I */
inline qvrStatus winHann(Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::winHann(pSrcDst), "winHann");
}

/** Morven_qvrsWinHamming_32f_I */
inline qvrStatus winHamming(Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::winHamming(pSrcDst), "winHamming");
}

/** Morven_qvrsWinHamming_16s_I */
inline qvrStatus winHamming(Out<qvr16s> pSrcDst)
{
    return detail::raise(checked::winHamming(pSrcDst), "winHamming");
}

/** Morven_qvrsWinBlackmanStd_32f_I */
inline qvrStatus winBlackmanStd(Out<qvr32f> pSrcDst)
{
    return detail::raise(checked::winBlackmanStd(pSrcDst), "winBlackmanStd");
}

/** Morven_qvrsIIR_64f */
inline qvrStatus iir(In<qvr64f> src, Out<qvr64f> dst, IIRState_64f& state)
{
    return detail::raise(checked::iir(src, dst, state), "iir");
}

/** Morven_qvrsIIRGenLowpass_64f */
inline qvrStatus iirGenLowpass(int order, Out<qvr64f> taps, int filterType, qvr64f rFreq, qvr64f rippleDb)
{
    return detail::raise(checked::iirGenLowpass(order, taps, filterType, rFreq, rippleDb), "iirGenLowpass");
}

/** Morven_qvrsIIRGenHighpass_64f */
inline qvrStatus iirGenHighpass(int order, Out<qvr64f> taps, int filterType, qvr64f rFreq, qvr64f rippleDb)
{
    return detail::raise(checked::iirGenHighpass(order, taps, filterType, rFreq, rippleDb), "iirGenHighpass");
}

/** Morven_qvrsFIR_32f */
inline qvrStatus fir(In<qvr32f> src, Out<qvr32f> dst, FIRState_32f& state)
{
    return detail::raise(checked::fir(src, dst, state), "fir");
}

/** Morven_qvrsFIR_64f */
inline qvrStatus fir(In<qvr64f> src, Out<qvr64f> dst, FIRState_64f& state)
{
    return detail::raise(checked::fir(src, dst, state), "fir");
}

/** Morven_qvrsFIR64f_32f */
inline qvrStatus fir(In<qvr32f> src, Out<qvr32f> dst, FIRState64f_32f& state)
{
    return detail::raise(checked::fir(src, dst, state), "fir");
}

/** Morven_qvrsFIR64f_16s_Sfs */
inline qvrStatus fir(In<qvr16s> src, Out<qvr16s> dst, FIRState64f_16s& state, int scaleFactor)
{
    return detail::raise(checked::fir(src, dst, state, scaleFactor), "fir");
}

/** Morven_qvrsFIRGetTaps_32f */
inline qvrStatus firGetTaps(const FIRState_32f& state, Out<qvr32f> taps)
{
    return detail::raise(checked::firGetTaps(state, taps), "firGetTaps");
}

/** Morven_qvrsFIRGetDlyLine_32f */
inline qvrStatus firGetDlyLine(const FIRState_32f& state, Out<qvr32f> dlyLine)
{
    return detail::raise(checked::firGetDlyLine(state, dlyLine), "firGetDlyLine");
}

/** Morven_qvrsFIRGetDlyLine_64f */
inline qvrStatus firGetDlyLine(const FIRState_64f& state, Out<qvr64f> dlyLine)
{
    return detail::raise(checked::firGetDlyLine(state, dlyLine), "firGetDlyLine");
}

/** Morven_qvrsFIRGetDlyLine64f_32f */
inline qvrStatus firGetDlyLine(const FIRState64f_32f& state, Out<qvr32f> dlyLine)
{
    return detail::raise(checked::firGetDlyLine(state, dlyLine), "firGetDlyLine");
}

/** Morven_qvrsFIRSetDlyLine_32f */
inline qvrStatus firSetDlyLine(FIRState_32f& state, In<qvr32f> dlyLine)
{
    return detail::raise(checked::firSetDlyLine(state, dlyLine), "firSetDlyLine");
}

/** Morven_qvrsFIRSetDlyLine_64f */
inline qvrStatus firSetDlyLine(FIRState_64f& state, In<qvr64f> dlyLine)
{
    return detail::raise(checked::firSetDlyLine(state, dlyLine), "firSetDlyLine");
}

/** Morven_qvrsFIRSetDlyLine64f_32f */
inline qvrStatus firSetDlyLine(FIRState64f_32f& state, In<qvr32f> dlyLine)
{
    return detail::raise(checked::firSetDlyLine(state, dlyLine), "firSetDlyLine");
}

/** Morven_qvrsFIRMR32f_Direct_16s_Sfs */
inline qvrStatus firmrDirect(In<qvr16s> src, Out<qvr16s> dst, int numIters, In<qvr32f> taps, int upFactor, int upPhase,
                             int downFactor, int downPhase, Out<qvr16s> dlyLine, int scaleFactor)
{
    return detail::raise(checked::firmrDirect(src, dst, numIters, taps, upFactor, upPhase, downFactor, downPhase,
                                              dlyLine, scaleFactor), "firmrDirect");
}

/** Morven_qvrsFIRMR64f_Direct_32f */
inline qvrStatus firmrDirect(In<qvr32f> src, Out<qvr32f> dst, int numIters, In<qvr64f> taps, int upFactor, int upPhase,
                             int downFactor, int downPhase, Out<qvr32f> dlyLine)
{
    return detail::raise(checked::firmrDirect(src, dst, numIters, taps, upFactor, upPhase, downFactor, downPhase,
                                              dlyLine), "firmrDirect");
}

/** Morven_qvrsFIRMR64f_Direct_32f_I */
inline qvrStatus firmrDirect(Out<qvr32f> srcDst, int numIters, In<qvr64f> taps, int upFactor, int upPhase,
                             int downFactor, int downPhase, Out<qvr32f> dlyLine)
{
    return detail::raise(checked::firmrDirect(srcDst, numIters, taps, upFactor, upPhase, downFactor, downPhase,
                                              dlyLine), "firmrDirect");
}

/** Morven_qvrsFIRGenLowpass_64f */
inline qvrStatus firGenLowpass(Out<qvr64f> taps, int windowType, int normalize, qvr64f rFreq)
{
    return detail::raise(checked::firGenLowpass(taps, windowType, normalize, rFreq), "firGenLowpass");
}

/** Morven_qvrsFIRGenHighpass_64f */
inline qvrStatus firGenHighpass(Out<qvr64f> taps, int windowType, int normalize, qvr64f rFreq)
{
    return detail::raise(checked::firGenHighpass(taps, windowType, normalize, rFreq), "firGenHighpass");
}

/** Morven_qvrsFIRGenBandpass_64f */
inline qvrStatus firGenBandpass(Out<qvr64f> taps, int windowType, int normalize, qvr64f rLowFreq, qvr64f rHighFreq)
{
    return detail::raise(checked::firGenBandpass(taps, windowType, normalize, rLowFreq, rHighFreq), "firGenBandpass");
}

/** Morven_qvrsFIRGenBandstop_64f */
inline qvrStatus firGenBandstop(Out<qvr64f> taps, int windowType, int normalize, qvr64f rLowFreq, qvr64f rHighFreq)
{
    return detail::raise(checked::firGenBandstop(taps, windowType, normalize, rLowFreq, rHighFreq), "firGenBandstop");
}

/** Morven_qvrsFilterMedian_32f_I */
inline qvrStatus filterMedian(Out<qvr32f> srcDst, int maskSize)
{
    return detail::raise(checked::filterMedian(srcDst, maskSize), "filterMedian");
}

/** Morven_qvrsSampleUp_32f */
inline qvrStatus sampleUp(In<qvr32f> src, Out<qvr32f> dst, int& dstLen, int factor, int& phase)
{
    return detail::raise(checked::sampleUp(src, dst, dstLen, factor, phase), "sampleUp");
}

/** Morven_qvrsSampleDown_32f */
inline qvrStatus sampleDown(In<qvr32f> src, Out<qvr32f> dst, int& dstLen, int factor, int& phase)
{
    return detail::raise(checked::sampleDown(src, dst, dstLen, factor, phase), "sampleDown");
}

/** Morven_qvrsSampleDown_16s */
inline qvrStatus sampleDown(In<qvr16s> src, Out<qvr16s> dst, int& dstLen, int factor, int& phase)
{
    return detail::raise(checked::sampleDown(src, dst, dstLen, factor, phase), "sampleDown");
}

/** Morven_qvriResizeGetBufSize */
[[nodiscard]] inline int resizeGetBufSize(qvriRect srcRoi, qvriRect dstRoi, int nChannel, int interpolation)
{
    int result{};
    detail::raise(checked::resizeGetBufSize(srcRoi, dstRoi, nChannel, interpolation, result), "resizeGetBufSize");
    return result;
}

/** Morven_qvriResizeGetBufSize_64f */
[[nodiscard]] inline int resizeGetBufSize64f(qvriRect srcRoi, qvriRect dstRoi, int nChannel, int interpolation)
{
    int result{};
    detail::raise(checked::resizeGetBufSize64f(srcRoi, dstRoi, nChannel, interpolation, result), "resizeGetBufSize64f");
    return result;
}

/** Morven_qvriResizeSqrPixel_8u_C1R */
inline qvrStatus resizeSqrPixel(Image<const qvr8u> src, qvriRect srcRoi, Image<qvr8u> dst, qvriRect dstRoi,
                                double xFactor, double yFactor, double xShift, double yShift, int interpolation,
                                Out<qvr8u> buffer)
{
    return detail::raise(checked::resizeSqrPixel(src, srcRoi, dst, dstRoi, xFactor, yFactor, xShift, yShift,
                                                 interpolation, buffer), "resizeSqrPixel");
}

/** Morven_qvriResizeSqrPixel_8u_C4R */
inline qvrStatus resizeSqrPixel(Image<const qvr8u, 4> src, qvriRect srcRoi, Image<qvr8u, 4> dst, qvriRect dstRoi,
                                double xFactor, double yFactor, double xShift, double yShift, int interpolation,
                                Out<qvr8u> buffer)
{
    return detail::raise(checked::resizeSqrPixel(src, srcRoi, dst, dstRoi, xFactor, yFactor, xShift, yShift,
                                                 interpolation, buffer), "resizeSqrPixel");
}

/** Morven_qvriResizeSqrPixel_32f_C1R */
inline qvrStatus resizeSqrPixel(Image<const qvr32f> src, qvriRect srcRoi, Image<qvr32f> dst, qvriRect dstRoi,
                                double xFactor, double yFactor, double xShift, double yShift, int interpolation,
                                Out<qvr8u> buffer)
{
    return detail::raise(checked::resizeSqrPixel(src, srcRoi, dst, dstRoi, xFactor, yFactor, xShift, yShift,
                                                 interpolation, buffer), "resizeSqrPixel");
}

/** Morven_qvriResizeSqrPixel_64f_C1R */
inline qvrStatus resizeSqrPixel(Image<const qvr64f> src, qvriRect srcRoi, Image<qvr64f> dst, qvriRect dstRoi,
                                double xFactor, double yFactor, double xShift, double yShift, int interpolation,
                                Out<qvr8u> buffer)
{
    return detail::raise(checked::resizeSqrPixel(src, srcRoi, dst, dstRoi, xFactor, yFactor, xShift, yShift,
                                                 interpolation, buffer), "resizeSqrPixel");
}

/** Morven_qvriResize_8u_C1R */
inline qvrStatus resize(Image<const qvr8u> src, qvriRect srcRoi, Image<qvr8u> dst, qvriSize dstRoiSize, double xFactor,
                        double yFactor, int interpolation)
{
    return detail::raise(checked::resize(src, srcRoi, dst, dstRoiSize, xFactor, yFactor, interpolation), "resize");
}

/** Morven_qvriResize_8u_C4R */
inline qvrStatus resize(Image<const qvr8u, 4> src, qvriRect srcRoi, Image<qvr8u, 4> dst, qvriSize dstRoiSize,
                        double xFactor, double yFactor, int interpolation)
{
    return detail::raise(checked::resize(src, srcRoi, dst, dstRoiSize, xFactor, yFactor, interpolation), "resize");
}

/** Morven_qvriResize_32f_C1R */
inline qvrStatus resize(Image<const qvr32f> src, qvriRect srcRoi, Image<qvr32f> dst, qvriSize dstRoiSize,
                        double xFactor, double yFactor, int interpolation)
{
    return detail::raise(checked::resize(src, srcRoi, dst, dstRoiSize, xFactor, yFactor, interpolation), "resize");
}

/** Morven_qvriAddC_8u_C1IRSfs */
inline qvrStatus addC(qvr8u value, Image<qvr8u> srcDst, int scaleFactor)
{
    return detail::raise(checked::addC(value, srcDst, scaleFactor), "addC");
}

/** Morven_qvriAddC_16u_C1IRSfs */
inline qvrStatus addC(qvr16u value, Image<qvr16u> srcDst, int scaleFactor)
{
    return detail::raise(checked::addC(value, srcDst, scaleFactor), "addC");
}

/** Morven_qvriSet_16u_C1R */
inline qvrStatus set(qvr16u value, Image<qvr16u> dst)
{
    return detail::raise(checked::set(value, dst), "set");
}

/** Morven_qvriCopy_16u_C1MR */
inline qvrStatus copy(Image<const qvr16u> src, Image<qvr16u> dst, Image<const qvr8u> mask)
{
    return detail::raise(checked::copy(src, dst, mask), "copy");
}

/** Morven_qvriConvert_8u16u_C1R */
inline qvrStatus convert(Image<const qvr8u> src, Image<qvr16u> dst)
{
    return detail::raise(checked::convert(src, dst), "convert");
}

/** Morven_qvriConvert_8u16s_C1R */
inline qvrStatus convert(Image<const qvr8u> src, Image<qvr16s> dst)
{
    return detail::raise(checked::convert(src, dst), "convert");
}

/** Morven_qvriLUTPalette_8u_C1R */
inline qvrStatus lutPalette(Image<const qvr8u> src, Image<qvr8u> dst, In<qvr8u> table, int nBitSize)
{
    return detail::raise(checked::lutPalette(src, dst, table, nBitSize), "lutPalette");
}

/** Morven_qvriLUTPalette_8u32u_C1R */
inline qvrStatus lutPalette(Image<const qvr8u> src, Image<qvr32u> dst, In<qvr32u> table, int nBitSize)
{
    return detail::raise(checked::lutPalette(src, dst, table, nBitSize), "lutPalette");
}

/** Morven_qvriLUTPalette_16u8u_C1R */
inline qvrStatus lutPalette(Image<const qvr16u> src, Image<qvr8u> dst, In<qvr8u> table, int nBitSize)
{
    return detail::raise(checked::lutPalette(src, dst, table, nBitSize), "lutPalette");
}

/** Morven_qvriLUTPalette_16u32u_C1R */
inline qvrStatus lutPalette(Image<const qvr16u> src, Image<qvr32u> dst, In<qvr32u> table, int nBitSize)
{
    return detail::raise(checked::lutPalette(src, dst, table, nBitSize), "lutPalette");
}

/** Morven_qvriBlockMinMax_16s_C1R */
inline qvrStatus blockMinMax(Image<const qvr16s> src, Image<qvr16s> blockMin, Image<qvr16s> blockMax,
                             qvriSize blockSize, qvr16s& globalMin, qvr16s& globalMax)
{
    return detail::raise(checked::blockMinMax(src, blockMin, blockMax, blockSize, globalMin, globalMax), "blockMinMax");
}

/** Morven_qvriSplitRow_TIFF_16u8u_C1 */
inline qvrStatus splitRowTIFF(In<qvr8u> src, std::span<qvr8u*, 2> dstPlanes)
{
    return detail::raise(checked::splitRowTIFF(src, dstPlanes), "splitRowTIFF");
}

/** Morven_qvriJoinRow_TIFF_8u16u_C1 */
inline qvrStatus joinRowTIFF(std::span<qvr8u*, 2> srcPlanes, Out<qvr8u> dst)
{
    return detail::raise(checked::joinRowTIFF(srcPlanes, dst), "joinRowTIFF");
}

/** Morven_qvrsSin_32f_A11 */
inline qvrStatus sinA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::sinA11(pSrc, pDst), "sinA11");
}

/** Morven_qvrsCos_32f_A11 */
inline qvrStatus cosA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::cosA11(pSrc, pDst), "cosA11");
}

/** Morven_qvrsTan_32f_A11 */
inline qvrStatus tanA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::tanA11(pSrc, pDst), "tanA11");
}

/** Morven_qvrsAsin_32f_A11 */
inline qvrStatus asinA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::asinA11(pSrc, pDst), "asinA11");
}

/** Morven_qvrsAcos_32f_A11 */
inline qvrStatus acosA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::acosA11(pSrc, pDst), "acosA11");
}

/** Morven_qvrsAtan_32f_A11 */
inline qvrStatus atanA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::atanA11(pSrc, pDst), "atanA11");
}

/** Morven_qvrsAtan2_32f_A11 */
inline qvrStatus atan2A11(In<qvr32f> pSrcY, In<qvr32f> pSrcX, Out<qvr32f> pDst)
{
    return detail::raise(checked::atan2A11(pSrcY, pSrcX, pDst), "atan2A11");
}

/** Morven_qvrsSinh_32f_A11 */
inline qvrStatus sinhA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::sinhA11(pSrc, pDst), "sinhA11");
}

/** Morven_qvrsCosh_32f_A11 */
inline qvrStatus coshA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::coshA11(pSrc, pDst), "coshA11");
}

/** Morven_qvrsTanh_32f_A11 */
inline qvrStatus tanhA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::tanhA11(pSrc, pDst), "tanhA11");
}

/** Morven_qvrsExp_32f_A11 */
inline qvrStatus expA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::expA11(pSrc, pDst), "expA11");
}

/** Morven_qvrsLn_32f_A11 */
inline qvrStatus lnA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::lnA11(pSrc, pDst), "lnA11");
}

/** Morven_qvrsLog10_32f_A11 */
inline qvrStatus log10A11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::log10A11(pSrc, pDst), "log10A11");
}

/** Morven_qvrsLog10_32f_A21 */
inline qvrStatus log10A21(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::log10A21(pSrc, pDst), "log10A21");
}

/** Morven_qvrsPow_32f_A11 */
inline qvrStatus powA11(In<qvr32f> pSrcX, In<qvr32f> pSrcY, Out<qvr32f> pDst)
{
    return detail::raise(checked::powA11(pSrcX, pSrcY, pDst), "powA11");
}

/** Morven_qvrsPow_32f_A24 */
inline qvrStatus powA24(In<qvr32f> pSrcX, In<qvr32f> pSrcY, Out<qvr32f> pDst)
{
    return detail::raise(checked::powA24(pSrcX, pSrcY, pDst), "powA24");
}

/** Morven_qvrsPowx_32f_A11 */
inline qvrStatus powxA11(In<qvr32f> pSrcX, qvr32f y, Out<qvr32f> pDst)
{
    return detail::raise(checked::powxA11(pSrcX, y, pDst), "powxA11");
}

/** Morven_qvrsPowx_32f_A24 */
inline qvrStatus powxA24(In<qvr32f> pSrcX, qvr32f y, Out<qvr32f> pDst)
{
    return detail::raise(checked::powxA24(pSrcX, y, pDst), "powxA24");
}

/** Morven_qvrsExp_32f */
inline qvrStatus exp(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::exp(pSrc, pDst), "exp");
}

/** Morven_qvrsLn_32f */
inline qvrStatus ln(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::ln(pSrc, pDst), "ln");
}

/** Morven_qvrsArctan_32f */
inline qvrStatus arctan(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::arctan(pSrc, pDst), "arctan");
}

/** Morven_qvrsPhase_32fc */
inline qvrStatus phase(In<qvr32fc> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::phase(pSrc, pDst), "phase");
}

/** Morven_qvrsMagnitude_32fc */
inline qvrStatus magnitude(In<qvr32fc> pSrc, Out<qvr32f> pDst)
{
    return detail::raise(checked::magnitude(pSrc, pDst), "magnitude");
}

/** Morven_qvrsMagnitude_64fc */
inline qvrStatus magnitude(In<qvr64fc> pSrc, Out<qvr64f> pDst)
{
    return detail::raise(checked::magnitude(pSrc, pDst), "magnitude");
}

/** Morven_qvrsMagnitude_16sc_Sfs */
inline qvrStatus magnitude(In<qvr16sc> pSrc, Out<qvr16s> pDst, int scaleFactor)
{
    return detail::raise(checked::magnitude(pSrc, pDst, scaleFactor), "magnitude");
}

} // namespace qvr

#endif
