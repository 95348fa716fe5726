// The overloads of morvenqvr.hpp with statuses that must be looked at: made by scripts/cpp_overloads.py, not by hand.
#ifndef MORVENQVR_CHECKED_HPP
#define MORVENQVR_CHECKED_HPP

#include "morvenqvr.hpp"

namespace qvr::checked {

/** Morven_qvrsAdd_32f */
[[nodiscard]] inline qvrStatus add(In<qvr32f> pSrc1, In<qvr32f> pSrc2, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc1.size(), pSrc2.size()))
        return qvrErrBadSize;
    return Morven_qvrsAdd_32f(pSrc1.data(), pSrc2.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsAdd_32f_I */
[[nodiscard]] inline qvrStatus add(In<qvr32f> pSrc, Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsAdd_32f_I(pSrc.data(), pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsSub_32f */
[[nodiscard]] inline qvrStatus sub(In<qvr32f> pSrc1, In<qvr32f> pSrc2, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc1.size(), pSrc2.size()))
        return qvrErrBadSize;
    return Morven_qvrsSub_32f(pSrc1.data(), pSrc2.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsSub_32f_I */
[[nodiscard]] inline qvrStatus sub(In<qvr32f> pSrc, Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsSub_32f_I(pSrc.data(), pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsMul_32f */
[[nodiscard]] inline qvrStatus mul(In<qvr32f> pSrc1, In<qvr32f> pSrc2, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc1.size(), pSrc2.size()))
        return qvrErrBadSize;
    return Morven_qvrsMul_32f(pSrc1.data(), pSrc2.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsMul_32f_I */
[[nodiscard]] inline qvrStatus mul(In<qvr32f> pSrc, Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMul_32f_I(pSrc.data(), pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsMul_64f_I */
[[nodiscard]] inline qvrStatus mul(In<qvr64f> pSrc, Out<qvr64f> pSrcDst)
{
    if (!detail::same(pSrcDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMul_64f_I(pSrc.data(), pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsMul_64fc */
[[nodiscard]] inline qvrStatus mul(In<qvr64fc> pSrc1, In<qvr64fc> pSrc2, Out<qvr64fc> pDst)
{
    if (!detail::same(pDst.size(), pSrc1.size(), pSrc2.size()))
        return qvrErrBadSize;
    return Morven_qvrsMul_64fc(pSrc1.data(), pSrc2.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsDiv_32f */
[[nodiscard]] inline qvrStatus div(In<qvr32f> pSrc1, In<qvr32f> pSrc2, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc1.size(), pSrc2.size()))
        return qvrErrBadSize;
    return Morven_qvrsDiv_32f(pSrc1.data(), pSrc2.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsAddC_32f */
[[nodiscard]] inline qvrStatus addC(In<qvr32f> pSrc, qvr32f val, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsAddC_32f(pSrc.data(), val, pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsAddC_32f_I */
[[nodiscard]] inline qvrStatus addC(qvr32f val, Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsAddC_32f_I(val, pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsAddC_64f_I */
[[nodiscard]] inline qvrStatus addC(qvr64f val, Out<qvr64f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsAddC_64f_I(val, pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsSubC_32f */
[[nodiscard]] inline qvrStatus subC(In<qvr32f> pSrc, qvr32f val, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsSubC_32f(pSrc.data(), val, pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsSubC_32f_I */
[[nodiscard]] inline qvrStatus subC(qvr32f val, Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsSubC_32f_I(val, pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsSubCRev_32f */
[[nodiscard]] inline qvrStatus subCRev(In<qvr32f> pSrc, qvr32f val, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsSubCRev_32f(pSrc.data(), val, pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsMulC_32f */
[[nodiscard]] inline qvrStatus mulC(In<qvr32f> pSrc, qvr32f val, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMulC_32f(pSrc.data(), val, pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsMulC_32f_I */
[[nodiscard]] inline qvrStatus mulC(qvr32f val, Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsMulC_32f_I(val, pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsMulC_64f_I */
[[nodiscard]] inline qvrStatus mulC(qvr64f val, Out<qvr64f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsMulC_64f_I(val, pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsDivC_32f */
[[nodiscard]] inline qvrStatus divC(In<qvr32f> pSrc, qvr32f val, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsDivC_32f(pSrc.data(), val, pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsDivC_32f_I */
[[nodiscard]] inline qvrStatus divC(qvr32f val, Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsDivC_32f_I(val, pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsDivCRev_32f */
[[nodiscard]] inline qvrStatus divCRev(In<qvr32f> pSrc, qvr32f val, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsDivCRev_32f(pSrc.data(), val, pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsDivCRev_32f_I */
[[nodiscard]] inline qvrStatus divCRev(qvr32f val, Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsDivCRev_32f_I(val, pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsAbs_32f */
[[nodiscard]] inline qvrStatus abs(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsAbs_32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsAbs_32f_I */
[[nodiscard]] inline qvrStatus abs(Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsAbs_32f_I(pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsSqr_32f_I */
[[nodiscard]] inline qvrStatus sqr(Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsSqr_32f_I(pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsSqrt_32f */
[[nodiscard]] inline qvrStatus sqrt(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsSqrt_32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsCeil_32f */
[[nodiscard]] inline qvrStatus ceil(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsCeil_32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsFloor_32f */
[[nodiscard]] inline qvrStatus floor(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsFloor_32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsMinEvery_32f_I */
[[nodiscard]] inline qvrStatus minEvery(In<qvr32f> pSrc, Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMinEvery_32f_I(pSrc.data(), pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsMaxEvery_32f_I */
[[nodiscard]] inline qvrStatus maxEvery(In<qvr32f> pSrc, Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMaxEvery_32f_I(pSrc.data(), pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsSet_8u */
[[nodiscard]] inline qvrStatus set(qvr8u val, Out<qvr8u> pDst)
{
    if (!detail::same(pDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsSet_8u(val, pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsSet_32s */
[[nodiscard]] inline qvrStatus set(qvr32s val, Out<qvr32s> pDst)
{
    if (!detail::same(pDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsSet_32s(val, pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsSet_32f */
[[nodiscard]] inline qvrStatus set(qvr32f val, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsSet_32f(val, pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsZero_32f */
[[nodiscard]] inline qvrStatus zero(Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsZero_32f(pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsZero_64f */
[[nodiscard]] inline qvrStatus zero(Out<qvr64f> pDst)
{
    if (!detail::same(pDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsZero_64f(pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsCopy_32f */
[[nodiscard]] inline qvrStatus copy(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsCopy_32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsCopy_64f */
[[nodiscard]] inline qvrStatus copy(In<qvr64f> pSrc, Out<qvr64f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsCopy_64f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsConvert_16s32f */
[[nodiscard]] inline qvrStatus convert(In<qvr16s> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsConvert_16s32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsConvert_32f64f */
[[nodiscard]] inline qvrStatus convert(In<qvr32f> pSrc, Out<qvr64f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsConvert_32f64f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsConvert_64f32f */
[[nodiscard]] inline qvrStatus convert(In<qvr64f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsConvert_64f32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsConvert_32s16s */
[[nodiscard]] inline qvrStatus convert(In<qvr32s> pSrc, Out<qvr16s> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsConvert_32s16s(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsConvert_16s64f_Sfs */
[[nodiscard]] inline qvrStatus convert(In<qvr16s> pSrc, Out<qvr64f> pDst, int scaleFactor)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsConvert_16s64f_Sfs(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()), scaleFactor);
}

/** Morven_qvrsConvert_32f16s_Sfs */
[[nodiscard]] inline qvrStatus convert(In<qvr32f> pSrc, Out<qvr16s> pDst, int rndMode, int scaleFactor)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsConvert_32f16s_Sfs(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()), rndMode, scaleFactor);
}

/** Morven_qvrsConvert_64f16s_Sfs */
[[nodiscard]] inline qvrStatus convert(In<qvr64f> pSrc, Out<qvr16s> pDst, int rndMode, int scaleFactor)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsConvert_64f16s_Sfs(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()), rndMode, scaleFactor);
}

/** Morven_qvrsNormalize_32f */
[[nodiscard]] inline qvrStatus normalize(In<qvr32f> pSrc, Out<qvr32f> pDst, qvr32f vSub, qvr32f vDiv)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsNormalize_32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()), vSub, vDiv);
}

/** Morven_qvrsNormalize_64f */
[[nodiscard]] inline qvrStatus normalize(In<qvr64f> pSrc, Out<qvr64f> pDst, qvr64f vSub, qvr64f vDiv)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsNormalize_64f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()), vSub, vDiv);
}

/** Morven_qvrsSplitScaled_16s32f_D2L */
[[nodiscard]] inline qvrStatus splitScaled(In<qvr16s> pSrc, std::span<qvr32f*> ppDst, int chanLen)
{
    if (!(detail::same(ppDst.size()) && detail::holds(pSrc, detail::length(ppDst.size()) * chanLen)))
        return qvrErrBadSize;
    return Morven_qvrsSplitScaled_16s32f_D2L(pSrc.data(), ppDst.data(), static_cast<int>(ppDst.size()), chanLen);
}

/** Morven_qvrsAdd_16s_Sfs */
[[nodiscard]] inline qvrStatus add(In<qvr16s> pSrc1, In<qvr16s> pSrc2, Out<qvr16s> pDst, int scaleFactor)
{
    if (!detail::same(pDst.size(), pSrc1.size(), pSrc2.size()))
        return qvrErrBadSize;
    return Morven_qvrsAdd_16s_Sfs(pSrc1.data(), pSrc2.data(), pDst.data(), static_cast<int>(pDst.size()), scaleFactor);
}

/** Morven_qvrsAdd_16u_ISfs */
[[nodiscard]] inline qvrStatus add(In<qvr16u> pSrc, Out<qvr16u> pSrcDst, int scaleFactor)
{
    if (!detail::same(pSrcDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsAdd_16u_ISfs(pSrc.data(), pSrcDst.data(), static_cast<int>(pSrcDst.size()), scaleFactor);
}

/** Morven_qvrsAddC_16u_ISfs */
[[nodiscard]] inline qvrStatus addC(qvr16u val, Out<qvr16u> pSrcDst, int scaleFactor)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsAddC_16u_ISfs(val, pSrcDst.data(), static_cast<int>(pSrcDst.size()), scaleFactor);
}

/** Morven_qvrsSubC_16u_ISfs */
[[nodiscard]] inline qvrStatus subC(qvr16u val, Out<qvr16u> pSrcDst, int scaleFactor)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsSubC_16u_ISfs(val, pSrcDst.data(), static_cast<int>(pSrcDst.size()), scaleFactor);
}

/** Morven_qvrsAdd_16s_I */
[[nodiscard]] inline qvrStatus add(In<qvr16s> pSrc, Out<qvr16s> pSrcDst)
{
    if (!detail::same(pSrcDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsAdd_16s_I(pSrc.data(), pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsSubC_16s_I */
[[nodiscard]] inline qvrStatus subC(qvr16s val, Out<qvr16s> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsSubC_16s_I(val, pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsMulC_16s_I */
[[nodiscard]] inline qvrStatus mulC(qvr16s val, Out<qvr16s> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsMulC_16s_I(val, pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsAbs_32s_I */
[[nodiscard]] inline qvrStatus abs(Out<qvr32s> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsAbs_32s_I(pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsSum_16s32s_Sfs */
[[nodiscard]] inline qvrStatus sum(In<qvr16s> pSrc, qvr32s& pSum, int scaleFactor)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsSum_16s32s_Sfs(pSrc.data(), static_cast<int>(pSrc.size()), &pSum, scaleFactor);
}

/** Morven_qvrsMean_16s_Sfs */
[[nodiscard]] inline qvrStatus mean(In<qvr16s> pSrc, qvr16s& pMean, int scaleFactor)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMean_16s_Sfs(pSrc.data(), static_cast<int>(pSrc.size()), &pMean, scaleFactor);
}

/** Morven_qvrsMean_32s_Sfs */
[[nodiscard]] inline qvrStatus mean(In<qvr32s> pSrc, qvr32s& pMean, int scaleFactor)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMean_32s_Sfs(pSrc.data(), static_cast<int>(pSrc.size()), &pMean, scaleFactor);
}

/** Morven_qvrsMean_32f */
[[nodiscard]] inline qvrStatus mean(In<qvr32f> pSrc, qvr32f& pMean)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMean_32f(pSrc.data(), static_cast<int>(pSrc.size()), &pMean);
}

/** Morven_qvrsMean_64f */
[[nodiscard]] inline qvrStatus mean(In<qvr64f> pSrc, qvr64f& pMean)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMean_64f(pSrc.data(), static_cast<int>(pSrc.size()), &pMean);
}

/** Morven_qvrsStdDev_32f */
[[nodiscard]] inline qvrStatus stdDev(In<qvr32f> pSrc, qvr32f& pStdDev)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsStdDev_32f(pSrc.data(), static_cast<int>(pSrc.size()), &pStdDev);
}

/** Morven_qvrsMin_16s */
[[nodiscard]] inline qvrStatus min(In<qvr16s> pSrc, qvr16s& pResult)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMin_16s(pSrc.data(), static_cast<int>(pSrc.size()), &pResult);
}

/** Morven_qvrsMax_16s */
[[nodiscard]] inline qvrStatus max(In<qvr16s> pSrc, qvr16s& pResult)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMax_16s(pSrc.data(), static_cast<int>(pSrc.size()), &pResult);
}

/** Morven_qvrsMin_32f */
[[nodiscard]] inline qvrStatus min(In<qvr32f> pSrc, qvr32f& pResult)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMin_32f(pSrc.data(), static_cast<int>(pSrc.size()), &pResult);
}

/** Morven_qvrsMax_32f */
[[nodiscard]] inline qvrStatus max(In<qvr32f> pSrc, qvr32f& pResult)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMax_32f(pSrc.data(), static_cast<int>(pSrc.size()), &pResult);
}

/** Morven_qvrsMax_64f */
[[nodiscard]] inline qvrStatus max(In<qvr64f> pSrc, qvr64f& pResult)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMax_64f(pSrc.data(), static_cast<int>(pSrc.size()), &pResult);
}

/** Morven_qvrsMinMax_16s */
[[nodiscard]] inline qvrStatus minMax(In<qvr16s> pSrc, qvr16s& pMin, qvr16s& pMax)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMinMax_16s(pSrc.data(), static_cast<int>(pSrc.size()), &pMin, &pMax);
}

/** Morven_qvrsMinMax_16u */
[[nodiscard]] inline qvrStatus minMax(In<qvr16u> pSrc, qvr16u& pMin, qvr16u& pMax)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMinMax_16u(pSrc.data(), static_cast<int>(pSrc.size()), &pMin, &pMax);
}

/** Morven_qvrsMinMax_32f */
[[nodiscard]] inline qvrStatus minMax(In<qvr32f> pSrc, qvr32f& pMin, qvr32f& pMax)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMinMax_32f(pSrc.data(), static_cast<int>(pSrc.size()), &pMin, &pMax);
}

/** Morven_qvrsMinIndx_32f */
[[nodiscard]] inline qvrStatus minIndx(In<qvr32f> pSrc, qvr32f& pResult, qvr32s& pIndx)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMinIndx_32f(pSrc.data(), static_cast<int>(pSrc.size()), &pResult, &pIndx);
}

/** Morven_qvrsMaxIndx_32f */
[[nodiscard]] inline qvrStatus maxIndx(In<qvr32f> pSrc, qvr32f& pResult, qvr32s& pIndx)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMaxIndx_32f(pSrc.data(), static_cast<int>(pSrc.size()), &pResult, &pIndx);
}

/** Morven_qvrsSumWindow_16s32f */
[[nodiscard]] inline qvrStatus sumWindow(In<qvr16s> pSrc, Out<qvr32f> pDst, int maskSize)
{
    if (!(detail::holds(pSrc, detail::length(pDst.size()) + maskSize - 1) && detail::same(pDst.size())))
        return qvrErrBadSize;
    return Morven_qvrsSumWindow_16s32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()), maskSize);
}

/** Morven_qvrsAndC_16u */
[[nodiscard]] inline qvrStatus andC(In<qvr16u> pSrc, qvr16u val, Out<qvr16u> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsAndC_16u(pSrc.data(), val, pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsAndC_16u_I */
[[nodiscard]] inline qvrStatus andC(qvr16u val, Out<qvr16u> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsAndC_16u_I(val, pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsOr_16u_I */
[[nodiscard]] inline qvrStatus bitOr(In<qvr16u> pSrc, Out<qvr16u> pSrcDst)
{
    if (!detail::same(pSrcDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsOr_16u_I(pSrc.data(), pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsLShiftC_16u */
[[nodiscard]] inline qvrStatus lShiftC(In<qvr16u> pSrc, int val, Out<qvr16u> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsLShiftC_16u(pSrc.data(), val, pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsLShiftC_16u_I */
[[nodiscard]] inline qvrStatus lShiftC(int val, Out<qvr16u> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsLShiftC_16u_I(val, pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsRShiftC_16u_I */
[[nodiscard]] inline qvrStatus rShiftC(int val, Out<qvr16u> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsRShiftC_16u_I(val, pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsThreshold_32f_I */
[[nodiscard]] inline qvrStatus threshold(Out<qvr32f> pSrcDst, qvr32f level, int relOp)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsThreshold_32f_I(pSrcDst.data(), static_cast<int>(pSrcDst.size()), level, relOp);
}

/** Morven_qvrsThreshold_GTVal_32f */
[[nodiscard]] inline qvrStatus thresholdGTVal(In<qvr32f> pSrc, Out<qvr32f> pDst, qvr32f level, qvr32f value)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsThreshold_GTVal_32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()), level, value);
}

/** Morven_qvrsThreshold_GTVal_32f_I */
[[nodiscard]] inline qvrStatus thresholdGTVal(Out<qvr32f> pSrcDst, qvr32f level, qvr32f value)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsThreshold_GTVal_32f_I(pSrcDst.data(), static_cast<int>(pSrcDst.size()), level, value);
}

/** Morven_qvrsThreshold_LTVal_32f */
[[nodiscard]] inline qvrStatus thresholdLTVal(In<qvr32f> pSrc, Out<qvr32f> pDst, qvr32f level, qvr32f value)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsThreshold_LTVal_32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()), level, value);
}

/** Morven_qvrsThreshold_LTVal_32f_I */
[[nodiscard]] inline qvrStatus thresholdLTVal(Out<qvr32f> pSrcDst, qvr32f level, qvr32f value)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsThreshold_LTVal_32f_I(pSrcDst.data(), static_cast<int>(pSrcDst.size()), level, value);
}

/** Morven_qvrsReplaceC_16u */
[[nodiscard]] inline qvrStatus replaceC(In<qvr16u> pSrc, Out<qvr16u> pDst, qvr16u oldVal, qvr16u newVal)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsReplaceC_16u(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()), oldVal, newVal);
}

/** Morven_qvrsFind_8u */
[[nodiscard]] inline qvrStatus find(In<qvr8u> pSrc, In<qvr8u> pFind, qvr32s& pIndex)
{
    if (!(detail::same(pSrc.size()) && detail::same(pFind.size())))
        return qvrErrBadSize;
    return Morven_qvrsFind_8u(pSrc.data(), static_cast<int>(pSrc.size()), pFind.data(), static_cast<int>(pFind.size()),
                              &pIndex);
}

/** Morven_qvrsFind_16u */
[[nodiscard]] inline qvrStatus find(In<qvr16u> pSrc, In<qvr16u> pFind, qvr32s& pIndex)
{
    if (!(detail::same(pSrc.size()) && detail::same(pFind.size())))
        return qvrErrBadSize;
    return Morven_qvrsFind_16u(pSrc.data(), static_cast<int>(pSrc.size()), pFind.data(), static_cast<int>(pFind.size()),
                               &pIndex);
}

/** Morven_qvrsSortAscend_32f_I */
[[nodiscard]] inline qvrStatus sortAscend(Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsSortAscend_32f_I(pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsSortAscend_64f_I */
[[nodiscard]] inline qvrStatus sortAscend(Out<qvr64f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsSortAscend_64f_I(pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsSignChangeRate_Count0_32f */
[[nodiscard]] inline qvrStatus signChangeRateCount0(In<qvr32f> pSrc, qvr32f& pResult)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsSignChangeRate_Count0_32f(pSrc.data(), static_cast<int>(pSrc.size()), &pResult);
}

/** Morven_qvrsZeroCrossing_32f */
[[nodiscard]] inline qvrStatus zeroCrossing(In<qvr32f> pSrc, qvr32f& pResult, int zcType)
{
    if (!detail::same(pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsZeroCrossing_32f(pSrc.data(), static_cast<int>(pSrc.size()), &pResult, zcType);
}

/** Morven_qvrsCompensateOffset_32f */
[[nodiscard]] inline qvrStatus compensateOffset(In<qvr32f> pSrc, Out<qvr32f> pDst, qvr32f& pLast, qvr32f prevValue,
                                                qvr32f factor)
{
    if (!detail::holds(pSrc, detail::length(pDst.size()) + 1))
        return qvrErrBadSize;
    return Morven_qvrsCompensateOffset_32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()), &pLast, prevValue,
                                           factor);
}

/** Morven_qvrsCompensateOffset_32f_I */
[[nodiscard]] inline qvrStatus compensateOffset(Out<qvr32f> pSrcDst, qvr32f& pLast, qvr32f prevValue, qvr32f factor)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsCompensateOffset_32f_I(pSrcDst.data(), static_cast<int>(pSrcDst.size()), &pLast, prevValue,
                                             factor);
}

/** Morven_qvrsFindPeaks_32f8u */
[[nodiscard]] inline qvrStatus findPeaks(In<qvr32f> pSrc, Out<qvr8u> pDstPeaks, int searchSize, int movingAvgSize)
{
    if (!detail::same(pDstPeaks.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsFindPeaks_32f8u(pSrc.data(), pDstPeaks.data(), static_cast<int>(pDstPeaks.size()), searchSize,
                                      movingAvgSize);
}

/** Morven_qvrsCopyColumn_Indirect_16s_D2 */
[[nodiscard]] inline qvrStatus copyColumnIndirect(In<qvr16s> pSrc, int srcCols, int srcStride, Out<qvr16s> pDst,
                                                  In<qvr32s> pIndex, int dstStride, int rows)
{
    if (!(detail::same(pIndex.size()) && detail::holds(pSrc, (rows - int64_t{1}) * srcStride + srcCols) &&
          detail::holds(pDst, (rows - int64_t{1}) * dstStride + detail::length(pIndex.size()))))
        return qvrErrBadSize;
    return Morven_qvrsCopyColumn_Indirect_16s_D2(pSrc.data(), srcCols, srcStride, pDst.data(), pIndex.data(),
                                                 static_cast<int>(pIndex.size()), dstStride, rows);
}

/** Morven_qvrsCopyColumn_Indirect_16s_D2L */
[[nodiscard]] inline qvrStatus copyColumnIndirect(std::span<const qvr16s*> ppSrc, int srcCols, std::span<qvr16s*> ppDst,
                                                  In<qvr32s> pIndex)
{
    if (!(detail::same(pIndex.size()) && detail::same(ppSrc.size(), ppDst.size())))
        return qvrErrBadSize;
    return Morven_qvrsCopyColumn_Indirect_16s_D2L(ppSrc.data(), srcCols, ppDst.data(), pIndex.data(),
                                                  static_cast<int>(pIndex.size()), static_cast<int>(ppSrc.size()));
}

/** Morven_qvrsFFTFwd_RToCCS_32f */
[[nodiscard]] inline qvrStatus fftFwd(In<qvr32f> pSrc, Out<qvr32f> pDst, const FFTSpec_R_32f& pSpec,
                                      Out<qvr8u> pBuffer = {})
{
    if (!(detail::holds(pSrc, pSpec.length()) && detail::holds(pDst, pSpec.spectrum()) &&
          (pBuffer.empty() || detail::holds(pBuffer, pSpec.buffer(4)))))
        return qvrErrBadSize;
    return Morven_qvrsFFTFwd_RToCCS_32f(pSrc.data(), pDst.data(), pSpec.get(), pBuffer.data());
}

/** Morven_qvrsFFTFwd_RToCCS_64f */
[[nodiscard]] inline qvrStatus fftFwd(In<qvr64f> pSrc, Out<qvr64f> pDst, const FFTSpec_R_64f& pSpec,
                                      Out<qvr8u> pBuffer = {})
{
    if (!(detail::holds(pSrc, pSpec.length()) && detail::holds(pDst, pSpec.spectrum()) &&
          (pBuffer.empty() || detail::holds(pBuffer, pSpec.buffer(8)))))
        return qvrErrBadSize;
    return Morven_qvrsFFTFwd_RToCCS_64f(pSrc.data(), pDst.data(), pSpec.get(), pBuffer.data());
}

/** Morven_qvrsFFTInv_CCSToR_32f */
[[nodiscard]] inline qvrStatus fftInv(In<qvr32f> pSrc, Out<qvr32f> pDst, const FFTSpec_R_32f& pSpec,
                                      Out<qvr8u> pBuffer = {})
{
    if (!(detail::holds(pSrc, pSpec.spectrum()) && detail::holds(pDst, pSpec.length()) &&
          (pBuffer.empty() || detail::holds(pBuffer, pSpec.buffer(4)))))
        return qvrErrBadSize;
    return Morven_qvrsFFTInv_CCSToR_32f(pSrc.data(), pDst.data(), pSpec.get(), pBuffer.data());
}

/** Morven_qvrsFFTInv_CCSToR_64f */
[[nodiscard]] inline qvrStatus fftInv(In<qvr64f> pSrc, Out<qvr64f> pDst, const FFTSpec_R_64f& pSpec,
                                      Out<qvr8u> pBuffer = {})
{
    if (!(detail::holds(pSrc, pSpec.spectrum()) && detail::holds(pDst, pSpec.length()) &&
          (pBuffer.empty() || detail::holds(pBuffer, pSpec.buffer(8)))))
        return qvrErrBadSize;
    return Morven_qvrsFFTInv_CCSToR_64f(pSrc.data(), pDst.data(), pSpec.get(), pBuffer.data());
}

/** Morven_qvrsFFTFwd_RToCCS_16s_Sfs */
[[nodiscard]] inline qvrStatus fftFwd(In<qvr16s> pSrc, Out<qvr16s> pDst, const FFTSpec_R_16s& pSpec, int scaleFactor,
                                      Out<qvr8u> pBuffer = {})
{
    if (!(detail::holds(pSrc, pSpec.length()) && detail::holds(pDst, pSpec.spectrum()) &&
          (pBuffer.empty() || detail::holds(pBuffer, pSpec.buffer(2)))))
        return qvrErrBadSize;
    return Morven_qvrsFFTFwd_RToCCS_16s_Sfs(pSrc.data(), pDst.data(), pSpec.get(), scaleFactor, pBuffer.data());
}

/** Morven_qvrsHilbert_32f32fc */
[[nodiscard]] inline qvrStatus hilbert(In<qvr32f> pSrc, Out<qvr32fc> pDst, HilbertState_32f32fc& pState)
{
    if (!(detail::holds(pSrc, pState.length()) && detail::holds(pDst, pState.length())))
        return qvrErrBadSize;
    return Morven_qvrsHilbert_32f32fc(pSrc.data(), pDst.data(), pState.get());
}

/** Morven_qvrsConv_32f */
[[nodiscard]] inline qvrStatus conv(In<qvr32f> pSrc1, In<qvr32f> pSrc2, Out<qvr32f> pDst)
{
    if (!(detail::same(pSrc1.size()) && detail::same(pSrc2.size()) &&
          detail::holds(pDst, detail::length(pSrc1.size()) + detail::length(pSrc2.size()) - 1)))
        return qvrErrBadSize;
    return Morven_qvrsConv_32f(pSrc1.data(), static_cast<int>(pSrc1.size()), pSrc2.data(),
                               static_cast<int>(pSrc2.size()), pDst.data());
}

/** Morven_qvrsConvBiased_32f */
[[nodiscard]] inline qvrStatus convBiased(In<qvr32f> pSrc1, In<qvr32f> pSrc2, Out<qvr32f> pDst, int bias)
{
    if (!(detail::same(pSrc1.size()) && detail::same(pSrc2.size()) && detail::same(pDst.size())))
        return qvrErrBadSize;
    return Morven_qvrsConvBiased_32f(pSrc1.data(), static_cast<int>(pSrc1.size()), pSrc2.data() + bias,
                                     static_cast<int>(pSrc2.size()), pDst.data(), static_cast<int>(pDst.size()), bias);
}

/** Morven_qvrsConvCyclic8x8_32f */
[[nodiscard]] inline qvrStatus convCyclic8x8(std::span<const qvr32f, 8> pX, std::span<const qvr32f, 8> pH,
                                             std::span<qvr32f, 8> pY)
{
    return Morven_qvrsConvCyclic8x8_32f(pX.data(), pH.data(), pY.data());
}

/** Morven_qvrsCrossCorr_32f */
[[nodiscard]] inline qvrStatus crossCorr(In<qvr32f> pSrc1, In<qvr32f> pSrc2, Out<qvr32f> pDst, int lowLag)
{
    if (!(detail::same(pSrc1.size()) && detail::same(pSrc2.size()) && detail::same(pDst.size())))
        return qvrErrBadSize;
    return Morven_qvrsCrossCorr_32f(pSrc1.data(), static_cast<int>(pSrc1.size()), pSrc2.data(),
                                    static_cast<int>(pSrc2.size()), pDst.data(), static_cast<int>(pDst.size()), lowLag);
}

/** Morven_qvrsAutoCorr_32f */
[[nodiscard]] inline qvrStatus autoCorr(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!(detail::same(pSrc.size()) && detail::same(pDst.size())))
        return qvrErrBadSize;
    return Morven_qvrsAutoCorr_32f(pSrc.data(), static_cast<int>(pSrc.size()), pDst.data(),
                                   static_cast<int>(pDst.size()));
}

/** Morven_qvrsWTFwd_32f */
[[nodiscard]] inline qvrStatus wtFwd(In<qvr32f> pSrc, Out<qvr32f> pDstLow, Out<qvr32f> pDstHigh, WTFwdState_32f& pState)
{
    if (!(detail::same(pDstLow.size(), pDstHigh.size()) && detail::holds(pSrc, 2 * detail::length(pDstLow.size()))))
        return qvrErrBadSize;
    return Morven_qvrsWTFwd_32f(pSrc.data(), pDstLow.data(), pDstHigh.data(), static_cast<int>(pDstLow.size()),
                                pState.get());
}

/** Morven_qvrsWTFwdSetDlyLine_32f */
[[nodiscard]] inline qvrStatus wtFwdSetDlyLine(WTFwdState_32f& pState, In<qvr32f> pDlyLow, In<qvr32f> pDlyHigh)
{
    if (!(detail::holds(pDlyLow, pState.delayLow()) && detail::holds(pDlyHigh, pState.delayHigh())))
        return qvrErrBadSize;
    return Morven_qvrsWTFwdSetDlyLine_32f(pState.get(), detail::place(pDlyLow), detail::place(pDlyHigh));
}

/** Morven_qvrsWTFwdGetDlyLine_32f */
[[nodiscard]] inline qvrStatus wtFwdGetDlyLine(WTFwdState_32f& pState, Out<qvr32f> pDlyLow, Out<qvr32f> pDlyHigh)
{
    if (!(detail::holds(pDlyLow, pState.delayLow()) && detail::holds(pDlyHigh, pState.delayHigh())))
        return qvrErrBadSize;
    return Morven_qvrsWTFwdGetDlyLine_32f(pState.get(), detail::place(pDlyLow), detail::place(pDlyHigh));
}

/** Morven_qvrsWTInv_32f */
[[nodiscard]] inline qvrStatus wtInv(In<qvr32f> pSrcLow, In<qvr32f> pSrcHigh, Out<qvr32f> pDst, WTInvState_32f& pState)
{
    if (!(detail::same(pSrcLow.size(), pSrcHigh.size()) && detail::holds(pDst, 2 * detail::length(pSrcLow.size()))))
        return qvrErrBadSize;
    return Morven_qvrsWTInv_32f(pSrcLow.data(), pSrcHigh.data(), static_cast<int>(pSrcLow.size()), pDst.data(),
                                pState.get());
}

/** Morven_qvrsWTInvSetDlyLine_32f */
[[nodiscard]] inline qvrStatus wtInvSetDlyLine(WTInvState_32f& pState, In<qvr32f> pDlyLow, In<qvr32f> pDlyHigh)
{
    if (!(detail::holds(pDlyLow, pState.delayLow()) && detail::holds(pDlyHigh, pState.delayHigh())))
        return qvrErrBadSize;
    return Morven_qvrsWTInvSetDlyLine_32f(pState.get(), detail::place(pDlyLow), detail::place(pDlyHigh));
}

/** Morven_qvrsWTInvGetDlyLine_32f */
[[nodiscard]] inline qvrStatus wtInvGetDlyLine(WTInvState_32f& pState, Out<qvr32f> pDlyLow, Out<qvr32f> pDlyHigh)
{
    if (!(detail::holds(pDlyLow, pState.delayLow()) && detail::holds(pDlyHigh, pState.delayHigh())))
        return qvrErrBadSize;
    return Morven_qvrsWTInvGetDlyLine_32f(pState.get(), detail::place(pDlyLow), detail::place(pDlyHigh));
}

/** Morven_qvrsWinBartlett_32f_I */
[[nodiscard]] inline qvrStatus winBartlett(Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsWinBartlett_32f_I(pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsWinHann_32f_I */
[[nodiscard]] inline qvrStatus winHann(Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsWinHann_32f_I(pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsWinHamming_32f_I */
[[nodiscard]] inline qvrStatus winHamming(Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsWinHamming_32f_I(pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsWinHamming_16s_I */
[[nodiscard]] inline qvrStatus winHamming(Out<qvr16s> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsWinHamming_16s_I(pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsWinBlackmanStd_32f_I */
[[nodiscard]] inline qvrStatus winBlackmanStd(Out<qvr32f> pSrcDst)
{
    if (!detail::same(pSrcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsWinBlackmanStd_32f_I(pSrcDst.data(), static_cast<int>(pSrcDst.size()));
}

/** Morven_qvrsIIR_64f */
[[nodiscard]] inline qvrStatus iir(In<qvr64f> src, Out<qvr64f> dst, IIRState_64f& state)
{
    if (!detail::same(dst.size(), src.size()))
        return qvrErrBadSize;
    return Morven_qvrsIIR_64f(src.data(), dst.data(), static_cast<int>(dst.size()), state.get());
}

/** Morven_qvrsIIRGenLowpass_64f */
[[nodiscard]] inline qvrStatus iirGenLowpass(int order, Out<qvr64f> taps, int filterType, qvr64f rFreq, qvr64f rippleDb)
{
    if (!((order < 1 || order > 12 || detail::holds(taps, 2 * (int64_t{order} + 1)))))
        return qvrErrBadSize;
    return Morven_qvrsIIRGenLowpass_64f(order, taps.data(), filterType, rFreq, rippleDb);
}

/** Morven_qvrsIIRGenHighpass_64f */
[[nodiscard]] inline qvrStatus iirGenHighpass(int order, Out<qvr64f> taps, int filterType, qvr64f rFreq,
                                              qvr64f rippleDb)
{
    if (!((order < 1 || order > 12 || detail::holds(taps, 2 * (int64_t{order} + 1)))))
        return qvrErrBadSize;
    return Morven_qvrsIIRGenHighpass_64f(order, taps.data(), filterType, rFreq, rippleDb);
}

/** Morven_qvrsFIR_32f */
[[nodiscard]] inline qvrStatus fir(In<qvr32f> src, Out<qvr32f> dst, FIRState_32f& state)
{
    if (!detail::same(dst.size(), src.size()))
        return qvrErrBadSize;
    return Morven_qvrsFIR_32f(src.data(), dst.data(), static_cast<int>(dst.size()), state.get());
}

/** Morven_qvrsFIR_64f */
[[nodiscard]] inline qvrStatus fir(In<qvr64f> src, Out<qvr64f> dst, FIRState_64f& state)
{
    if (!detail::same(dst.size(), src.size()))
        return qvrErrBadSize;
    return Morven_qvrsFIR_64f(src.data(), dst.data(), static_cast<int>(dst.size()), state.get());
}

/** Morven_qvrsFIR64f_32f */
[[nodiscard]] inline qvrStatus fir(In<qvr32f> src, Out<qvr32f> dst, FIRState64f_32f& state)
{
    if (!detail::same(dst.size(), src.size()))
        return qvrErrBadSize;
    return Morven_qvrsFIR64f_32f(src.data(), dst.data(), static_cast<int>(dst.size()), state.get());
}

/** Morven_qvrsFIR64f_16s_Sfs */
[[nodiscard]] inline qvrStatus fir(In<qvr16s> src, Out<qvr16s> dst, FIRState64f_16s& state, int scaleFactor)
{
    if (!detail::same(dst.size(), src.size()))
        return qvrErrBadSize;
    return Morven_qvrsFIR64f_16s_Sfs(src.data(), dst.data(), static_cast<int>(dst.size()), state.get(), scaleFactor);
}

/** Morven_qvrsFIRGetTaps_32f */
[[nodiscard]] inline qvrStatus firGetTaps(const FIRState_32f& state, Out<qvr32f> taps)
{
    if (!detail::holds(taps, detail::length(state.taps())))
        return qvrErrBadSize;
    return Morven_qvrsFIRGetTaps_32f(state.get(), taps.data());
}

/** Morven_qvrsFIRGetDlyLine_32f */
[[nodiscard]] inline qvrStatus firGetDlyLine(const FIRState_32f& state, Out<qvr32f> dlyLine)
{
    if (!detail::holds(dlyLine, detail::length(state.taps())))
        return qvrErrBadSize;
    return Morven_qvrsFIRGetDlyLine_32f(state.get(), dlyLine.data());
}

/** Morven_qvrsFIRGetDlyLine_64f */
[[nodiscard]] inline qvrStatus firGetDlyLine(const FIRState_64f& state, Out<qvr64f> dlyLine)
{
    if (!detail::holds(dlyLine, detail::length(state.taps())))
        return qvrErrBadSize;
    return Morven_qvrsFIRGetDlyLine_64f(state.get(), dlyLine.data());
}

/** Morven_qvrsFIRGetDlyLine64f_32f */
[[nodiscard]] inline qvrStatus firGetDlyLine(const FIRState64f_32f& state, Out<qvr32f> dlyLine)
{
    if (!detail::holds(dlyLine, detail::length(state.taps())))
        return qvrErrBadSize;
    return Morven_qvrsFIRGetDlyLine64f_32f(state.get(), dlyLine.data());
}

/** Morven_qvrsFIRSetDlyLine_32f */
[[nodiscard]] inline qvrStatus firSetDlyLine(FIRState_32f& state, In<qvr32f> dlyLine)
{
    if (!((dlyLine.empty() || detail::holds(dlyLine, detail::length(state.taps())))))
        return qvrErrBadSize;
    return Morven_qvrsFIRSetDlyLine_32f(state.get(), dlyLine.data());
}

/** Morven_qvrsFIRSetDlyLine_64f */
[[nodiscard]] inline qvrStatus firSetDlyLine(FIRState_64f& state, In<qvr64f> dlyLine)
{
    if (!((dlyLine.empty() || detail::holds(dlyLine, detail::length(state.taps())))))
        return qvrErrBadSize;
    return Morven_qvrsFIRSetDlyLine_64f(state.get(), dlyLine.data());
}

/** Morven_qvrsFIRSetDlyLine64f_32f */
[[nodiscard]] inline qvrStatus firSetDlyLine(FIRState64f_32f& state, In<qvr32f> dlyLine)
{
    if (!((dlyLine.empty() || detail::holds(dlyLine, detail::length(state.taps())))))
        return qvrErrBadSize;
    return Morven_qvrsFIRSetDlyLine64f_32f(state.get(), dlyLine.data());
}

/** Morven_qvrsFIRMR32f_Direct_16s_Sfs */
[[nodiscard]] inline qvrStatus firmrDirect(In<qvr16s> src, Out<qvr16s> dst, int numIters, In<qvr32f> taps, int upFactor,
                                           int upPhase, int downFactor, int downPhase, Out<qvr16s> dlyLine,
                                           int scaleFactor)
{
    if (!(detail::same(taps.size()) && detail::holds(src, int64_t{numIters} * downFactor) &&
          detail::holds(dst, int64_t{numIters} * upFactor) &&
          detail::holds(dlyLine, detail::groups(detail::length(taps.size()), upFactor))))
        return qvrErrBadSize;
    return Morven_qvrsFIRMR32f_Direct_16s_Sfs(src.data(), dst.data(), numIters, taps.data(),
                                              static_cast<int>(taps.size()), upFactor, upPhase, downFactor, downPhase,
                                              dlyLine.data(), scaleFactor);
}

/** Morven_qvrsFIRMR64f_Direct_32f */
[[nodiscard]] inline qvrStatus firmrDirect(In<qvr32f> src, Out<qvr32f> dst, int numIters, In<qvr64f> taps, int upFactor,
                                           int upPhase, int downFactor, int downPhase, Out<qvr32f> dlyLine)
{
    if (!(detail::same(taps.size()) && detail::holds(src, int64_t{numIters} * downFactor) &&
          detail::holds(dst, int64_t{numIters} * upFactor) &&
          detail::holds(dlyLine, detail::groups(detail::length(taps.size()), upFactor))))
        return qvrErrBadSize;
    return Morven_qvrsFIRMR64f_Direct_32f(src.data(), dst.data(), numIters, taps.data(), static_cast<int>(taps.size()),
                                          upFactor, upPhase, downFactor, downPhase, dlyLine.data());
}

/** Morven_qvrsFIRMR64f_Direct_32f_I */
[[nodiscard]] inline qvrStatus firmrDirect(Out<qvr32f> srcDst, int numIters, In<qvr64f> taps, int upFactor, int upPhase,
                                           int downFactor, int downPhase, Out<qvr32f> dlyLine)
{
    if (!(detail::same(taps.size()) && detail::holds(srcDst, int64_t{numIters} * downFactor) &&
          detail::holds(srcDst, int64_t{numIters} * upFactor) &&
          detail::holds(dlyLine, detail::groups(detail::length(taps.size()), upFactor))))
        return qvrErrBadSize;
    return Morven_qvrsFIRMR64f_Direct_32f_I(srcDst.data(), numIters, taps.data(), static_cast<int>(taps.size()),
                                            upFactor, upPhase, downFactor, downPhase, dlyLine.data());
}

/** Morven_qvrsFIRGenLowpass_64f */
[[nodiscard]] inline qvrStatus firGenLowpass(Out<qvr64f> taps, int windowType, int normalize, qvr64f rFreq)
{
    if (!detail::same(taps.size()))
        return qvrErrBadSize;
    return Morven_qvrsFIRGenLowpass_64f(taps.data(), static_cast<int>(taps.size()), windowType, normalize, rFreq);
}

/** Morven_qvrsFIRGenHighpass_64f */
[[nodiscard]] inline qvrStatus firGenHighpass(Out<qvr64f> taps, int windowType, int normalize, qvr64f rFreq)
{
    if (!detail::same(taps.size()))
        return qvrErrBadSize;
    return Morven_qvrsFIRGenHighpass_64f(taps.data(), static_cast<int>(taps.size()), windowType, normalize, rFreq);
}

/** Morven_qvrsFIRGenBandpass_64f */
[[nodiscard]] inline qvrStatus firGenBandpass(Out<qvr64f> taps, int windowType, int normalize, qvr64f rLowFreq,
                                              qvr64f rHighFreq)
{
    if (!detail::same(taps.size()))
        return qvrErrBadSize;
    return Morven_qvrsFIRGenBandpass_64f(taps.data(), static_cast<int>(taps.size()), windowType, normalize, rLowFreq,
                                         rHighFreq);
}

/** Morven_qvrsFIRGenBandstop_64f */
[[nodiscard]] inline qvrStatus firGenBandstop(Out<qvr64f> taps, int windowType, int normalize, qvr64f rLowFreq,
                                              qvr64f rHighFreq)
{
    if (!detail::same(taps.size()))
        return qvrErrBadSize;
    return Morven_qvrsFIRGenBandstop_64f(taps.data(), static_cast<int>(taps.size()), windowType, normalize, rLowFreq,
                                         rHighFreq);
}

/** Morven_qvrsFilterMedian_32f_I */
[[nodiscard]] inline qvrStatus filterMedian(Out<qvr32f> srcDst, int maskSize)
{
    if (!detail::same(srcDst.size()))
        return qvrErrBadSize;
    return Morven_qvrsFilterMedian_32f_I(srcDst.data(), static_cast<int>(srcDst.size()), maskSize);
}

/** Morven_qvrsSampleUp_32f */
[[nodiscard]] inline qvrStatus sampleUp(In<qvr32f> src, Out<qvr32f> dst, int& dstLen, int factor, int& phase)
{
    if (!(detail::same(src.size()) && detail::holds(dst, detail::length(src.size()) * factor)))
        return qvrErrBadSize;
    return Morven_qvrsSampleUp_32f(src.data(), static_cast<int>(src.size()), dst.data(), &dstLen, factor, &phase);
}

/** Morven_qvrsSampleDown_32f */
[[nodiscard]] inline qvrStatus sampleDown(In<qvr32f> src, Out<qvr32f> dst, int& dstLen, int factor, int& phase)
{
    if (!(detail::same(src.size()) && detail::holds(dst, detail::groups(detail::length(src.size()) - phase, factor))))
        return qvrErrBadSize;
    return Morven_qvrsSampleDown_32f(src.data(), static_cast<int>(src.size()), dst.data(), &dstLen, factor, &phase);
}

/** Morven_qvrsSampleDown_16s */
[[nodiscard]] inline qvrStatus sampleDown(In<qvr16s> src, Out<qvr16s> dst, int& dstLen, int factor, int& phase)
{
    if (!(detail::same(src.size()) && detail::holds(dst, detail::groups(detail::length(src.size()) - phase, factor))))
        return qvrErrBadSize;
    return Morven_qvrsSampleDown_16s(src.data(), static_cast<int>(src.size()), dst.data(), &dstLen, factor, &phase);
}

/** Morven_qvriResizeGetBufSize */
[[nodiscard]] inline qvrStatus resizeGetBufSize(qvriRect srcRoi, qvriRect dstRoi, int nChannel, int interpolation,
                                                int& sizeOut)
{
    return Morven_qvriResizeGetBufSize(srcRoi, dstRoi, nChannel, interpolation, &sizeOut);
}

/** Morven_qvriResizeGetBufSize_64f */
[[nodiscard]] inline qvrStatus resizeGetBufSize64f(qvriRect srcRoi, qvriRect dstRoi, int nChannel, int interpolation,
                                                   int& sizeOut)
{
    return Morven_qvriResizeGetBufSize_64f(srcRoi, dstRoi, nChannel, interpolation, &sizeOut);
}

/** Morven_qvriResizeSqrPixel_8u_C1R */
[[nodiscard]] inline qvrStatus resizeSqrPixel(Image<const qvr8u> src, qvriRect srcRoi, Image<qvr8u> dst,
                                              qvriRect dstRoi, double xFactor, double yFactor, double xShift,
                                              double yShift, int interpolation, Out<qvr8u> buffer)
{
    if (!(src.complete() && dst.complete() &&
          detail::writesWithin(dst.size(), dstRoi, srcRoi, xFactor, yFactor, xShift, yShift, interpolation) &&
          detail::bufferServes(buffer, srcRoi, dstRoi, 1, interpolation, Morven_qvriResizeGetBufSize)))
        return qvrErrBadSize;
    return Morven_qvriResizeSqrPixel_8u_C1R(src.data(), src.size(), src.step(), srcRoi, dst.data(), dst.step(), dstRoi,
                                            xFactor, yFactor, xShift, yShift, interpolation, buffer.data());
}

/** Morven_qvriResizeSqrPixel_8u_C4R */
[[nodiscard]] inline qvrStatus resizeSqrPixel(Image<const qvr8u, 4> src, qvriRect srcRoi, Image<qvr8u, 4> dst,
                                              qvriRect dstRoi, double xFactor, double yFactor, double xShift,
                                              double yShift, int interpolation, Out<qvr8u> buffer)
{
    if (!(src.complete() && dst.complete() &&
          detail::writesWithin(dst.size(), dstRoi, srcRoi, xFactor, yFactor, xShift, yShift, interpolation) &&
          detail::bufferServes(buffer, srcRoi, dstRoi, 4, interpolation, Morven_qvriResizeGetBufSize)))
        return qvrErrBadSize;
    return Morven_qvriResizeSqrPixel_8u_C4R(src.data(), src.size(), src.step(), srcRoi, dst.data(), dst.step(), dstRoi,
                                            xFactor, yFactor, xShift, yShift, interpolation, buffer.data());
}

/** Morven_qvriResizeSqrPixel_32f_C1R */
[[nodiscard]] inline qvrStatus resizeSqrPixel(Image<const qvr32f> src, qvriRect srcRoi, Image<qvr32f> dst,
                                              qvriRect dstRoi, double xFactor, double yFactor, double xShift,
                                              double yShift, int interpolation, Out<qvr8u> buffer)
{
    if (!(src.complete() && dst.complete() &&
          detail::writesWithin(dst.size(), dstRoi, srcRoi, xFactor, yFactor, xShift, yShift, interpolation) &&
          detail::bufferServes(buffer, srcRoi, dstRoi, 1, interpolation, Morven_qvriResizeGetBufSize)))
        return qvrErrBadSize;
    return Morven_qvriResizeSqrPixel_32f_C1R(src.data(), src.size(), src.step(), srcRoi, dst.data(), dst.step(), dstRoi,
                                             xFactor, yFactor, xShift, yShift, interpolation, buffer.data());
}

/** Morven_qvriResizeSqrPixel_64f_C1R */
[[nodiscard]] inline qvrStatus resizeSqrPixel(Image<const qvr64f> src, qvriRect srcRoi, Image<qvr64f> dst,
                                              qvriRect dstRoi, double xFactor, double yFactor, double xShift,
                                              double yShift, int interpolation, Out<qvr8u> buffer)
{
    if (!(src.complete() && dst.complete() &&
          detail::writesWithin(dst.size(), dstRoi, srcRoi, xFactor, yFactor, xShift, yShift, interpolation) &&
          detail::bufferServes(buffer, srcRoi, dstRoi, 1, interpolation, Morven_qvriResizeGetBufSize_64f)))
        return qvrErrBadSize;
    return Morven_qvriResizeSqrPixel_64f_C1R(src.data(), src.size(), src.step(), srcRoi, dst.data(), dst.step(), dstRoi,
                                             xFactor, yFactor, xShift, yShift, interpolation, buffer.data());
}

/** Morven_qvriResize_8u_C1R */
[[nodiscard]] inline qvrStatus resize(Image<const qvr8u> src, qvriRect srcRoi, Image<qvr8u> dst, qvriSize dstRoiSize,
                                      double xFactor, double yFactor, int interpolation)
{
    if (!(src.complete() && dst.complete() &&
          detail::writesWithin(dst.size(), {srcRoi.x, srcRoi.y, dstRoiSize.width, dstRoiSize.height}, srcRoi, xFactor, yFactor, 0, 0, interpolation)))
        return qvrErrBadSize;
    return Morven_qvriResize_8u_C1R(src.data(), src.size(), src.step(), srcRoi, dst.data(), dst.step(), dstRoiSize,
                                    xFactor, yFactor, interpolation);
}

/** Morven_qvriResize_8u_C4R */
[[nodiscard]] inline qvrStatus resize(Image<const qvr8u, 4> src, qvriRect srcRoi, Image<qvr8u, 4> dst,
                                      qvriSize dstRoiSize, double xFactor, double yFactor, int interpolation)
{
    if (!(src.complete() && dst.complete() &&
          detail::writesWithin(dst.size(), {srcRoi.x, srcRoi.y, dstRoiSize.width, dstRoiSize.height}, srcRoi, xFactor, yFactor, 0, 0, interpolation)))
        return qvrErrBadSize;
    return Morven_qvriResize_8u_C4R(src.data(), src.size(), src.step(), srcRoi, dst.data(), dst.step(), dstRoiSize,
                                    xFactor, yFactor, interpolation);
}

/** Morven_qvriResize_32f_C1R */
[[nodiscard]] inline qvrStatus resize(Image<const qvr32f> src, qvriRect srcRoi, Image<qvr32f> dst, qvriSize dstRoiSize,
                                      double xFactor, double yFactor, int interpolation)
{
    if (!(src.complete() && dst.complete() &&
          detail::writesWithin(dst.size(), {srcRoi.x, srcRoi.y, dstRoiSize.width, dstRoiSize.height}, srcRoi, xFactor, yFactor, 0, 0, interpolation)))
        return qvrErrBadSize;
    return Morven_qvriResize_32f_C1R(src.data(), src.size(), src.step(), srcRoi, dst.data(), dst.step(), dstRoiSize,
                                     xFactor, yFactor, interpolation);
}

/** Morven_qvriAddC_8u_C1IRSfs */
[[nodiscard]] inline qvrStatus addC(qvr8u value, Image<qvr8u> srcDst, int scaleFactor)
{
    if (!srcDst.complete())
        return qvrErrBadSize;
    return Morven_qvriAddC_8u_C1IRSfs(value, srcDst.data(), srcDst.step(), srcDst.size(), scaleFactor);
}

/** Morven_qvriAddC_16u_C1IRSfs */
[[nodiscard]] inline qvrStatus addC(qvr16u value, Image<qvr16u> srcDst, int scaleFactor)
{
    if (!srcDst.complete())
        return qvrErrBadSize;
    return Morven_qvriAddC_16u_C1IRSfs(value, srcDst.data(), srcDst.step(), srcDst.size(), scaleFactor);
}

/** Morven_qvriSet_16u_C1R */
[[nodiscard]] inline qvrStatus set(qvr16u value, Image<qvr16u> dst)
{
    if (!dst.complete())
        return qvrErrBadSize;
    return Morven_qvriSet_16u_C1R(value, dst.data(), dst.step(), dst.size());
}

/** Morven_qvriCopy_16u_C1MR */
[[nodiscard]] inline qvrStatus copy(Image<const qvr16u> src, Image<qvr16u> dst, Image<const qvr8u> mask)
{
    if (!(src.complete() && dst.complete() && mask.complete() && detail::sameSize(src, dst) &&
          detail::sameSize(src, mask)))
        return qvrErrBadSize;
    return Morven_qvriCopy_16u_C1MR(src.data(), src.step(), dst.data(), dst.step(), src.size(), mask.data(),
                                    mask.step());
}

/** Morven_qvriConvert_8u16u_C1R */
[[nodiscard]] inline qvrStatus convert(Image<const qvr8u> src, Image<qvr16u> dst)
{
    if (!(src.complete() && dst.complete() && detail::sameSize(src, dst)))
        return qvrErrBadSize;
    return Morven_qvriConvert_8u16u_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size());
}

/** Morven_qvriConvert_8u16s_C1R */
[[nodiscard]] inline qvrStatus convert(Image<const qvr8u> src, Image<qvr16s> dst)
{
    if (!(src.complete() && dst.complete() && detail::sameSize(src, dst)))
        return qvrErrBadSize;
    return Morven_qvriConvert_8u16s_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size());
}

/** Morven_qvriLUTPalette_8u_C1R */
[[nodiscard]] inline qvrStatus lutPalette(Image<const qvr8u> src, Image<qvr8u> dst, In<qvr8u> table, int nBitSize)
{
    if (!(src.complete() && dst.complete() && detail::sameSize(src, dst) &&
          (nBitSize < 1 || nBitSize > 16 || detail::holds(table, int64_t{1} << nBitSize))))
        return qvrErrBadSize;
    return Morven_qvriLUTPalette_8u_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size(), table.data(),
                                        nBitSize);
}

/** Morven_qvriLUTPalette_8u32u_C1R */
[[nodiscard]] inline qvrStatus lutPalette(Image<const qvr8u> src, Image<qvr32u> dst, In<qvr32u> table, int nBitSize)
{
    if (!(src.complete() && dst.complete() && detail::sameSize(src, dst) &&
          (nBitSize < 1 || nBitSize > 16 || detail::holds(table, int64_t{1} << nBitSize))))
        return qvrErrBadSize;
    return Morven_qvriLUTPalette_8u32u_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size(), table.data(),
                                           nBitSize);
}

/** Morven_qvriLUTPalette_16u8u_C1R */
[[nodiscard]] inline qvrStatus lutPalette(Image<const qvr16u> src, Image<qvr8u> dst, In<qvr8u> table, int nBitSize)
{
    if (!(src.complete() && dst.complete() && detail::sameSize(src, dst) &&
          (nBitSize < 1 || nBitSize > 16 || detail::holds(table, int64_t{1} << nBitSize))))
        return qvrErrBadSize;
    return Morven_qvriLUTPalette_16u8u_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size(), table.data(),
                                           nBitSize);
}

/** Morven_qvriLUTPalette_16u32u_C1R */
[[nodiscard]] inline qvrStatus lutPalette(Image<const qvr16u> src, Image<qvr32u> dst, In<qvr32u> table, int nBitSize)
{
    if (!(src.complete() && dst.complete() && detail::sameSize(src, dst) &&
          (nBitSize < 1 || nBitSize > 16 || detail::holds(table, int64_t{1} << nBitSize))))
        return qvrErrBadSize;
    return Morven_qvriLUTPalette_16u32u_C1R(src.data(), src.step(), dst.data(), dst.step(), src.size(), table.data(),
                                            nBitSize);
}

/** Morven_qvriBlockMinMax_16s_C1R */
[[nodiscard]] inline qvrStatus blockMinMax(Image<const qvr16s> src, Image<qvr16s> blockMin, Image<qvr16s> blockMax,
                                           qvriSize blockSize, qvr16s& globalMin, qvr16s& globalMax)
{
    if (!(src.complete() && blockMin.complete() && blockMax.complete() && detail::blocksFit(src, blockMin, blockSize) &&
          detail::blocksFit(src, blockMax, blockSize)))
        return qvrErrBadSize;
    return Morven_qvriBlockMinMax_16s_C1R(src.data(), src.step(), src.size(), blockMin.data(), blockMin.step(),
                                          blockMax.data(), blockMax.step(), blockSize, &globalMin, &globalMax);
}

/** Morven_qvriSplitRow_TIFF_16u8u_C1 */
[[nodiscard]] inline qvrStatus splitRowTIFF(In<qvr8u> src, std::span<qvr8u*, 2> dstPlanes)
{
    if (!detail::same(src.size()))
        return qvrErrBadSize;
    return Morven_qvriSplitRow_TIFF_16u8u_C1(src.data(), dstPlanes.data(), detail::half(src));
}

/** Morven_qvriJoinRow_TIFF_8u16u_C1 */
[[nodiscard]] inline qvrStatus joinRowTIFF(std::span<qvr8u*, 2> srcPlanes, Out<qvr8u> dst)
{
    if (!detail::same(dst.size()))
        return qvrErrBadSize;
    return Morven_qvriJoinRow_TIFF_8u16u_C1(srcPlanes.data(), dst.data(), detail::half(dst));
}

/** Morven_qvrsSin_32f_A11 */
[[nodiscard]] inline qvrStatus sinA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsSin_32f_A11(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsCos_32f_A11 */
[[nodiscard]] inline qvrStatus cosA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsCos_32f_A11(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsTan_32f_A11 */
[[nodiscard]] inline qvrStatus tanA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsTan_32f_A11(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsAsin_32f_A11 */
[[nodiscard]] inline qvrStatus asinA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsAsin_32f_A11(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsAcos_32f_A11 */
[[nodiscard]] inline qvrStatus acosA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsAcos_32f_A11(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsAtan_32f_A11 */
[[nodiscard]] inline qvrStatus atanA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsAtan_32f_A11(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsAtan2_32f_A11 */
[[nodiscard]] inline qvrStatus atan2A11(In<qvr32f> pSrcY, In<qvr32f> pSrcX, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrcY.size(), pSrcX.size()))
        return qvrErrBadSize;
    return Morven_qvrsAtan2_32f_A11(pSrcY.data(), pSrcX.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsSinh_32f_A11 */
[[nodiscard]] inline qvrStatus sinhA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsSinh_32f_A11(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsCosh_32f_A11 */
[[nodiscard]] inline qvrStatus coshA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsCosh_32f_A11(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsTanh_32f_A11 */
[[nodiscard]] inline qvrStatus tanhA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsTanh_32f_A11(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsExp_32f_A11 */
[[nodiscard]] inline qvrStatus expA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsExp_32f_A11(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsLn_32f_A11 */
[[nodiscard]] inline qvrStatus lnA11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsLn_32f_A11(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsLog10_32f_A11 */
[[nodiscard]] inline qvrStatus log10A11(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsLog10_32f_A11(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsLog10_32f_A21 */
[[nodiscard]] inline qvrStatus log10A21(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsLog10_32f_A21(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsPow_32f_A11 */
[[nodiscard]] inline qvrStatus powA11(In<qvr32f> pSrcX, In<qvr32f> pSrcY, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrcX.size(), pSrcY.size()))
        return qvrErrBadSize;
    return Morven_qvrsPow_32f_A11(pSrcX.data(), pSrcY.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsPow_32f_A24 */
[[nodiscard]] inline qvrStatus powA24(In<qvr32f> pSrcX, In<qvr32f> pSrcY, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrcX.size(), pSrcY.size()))
        return qvrErrBadSize;
    return Morven_qvrsPow_32f_A24(pSrcX.data(), pSrcY.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsPowx_32f_A11 */
[[nodiscard]] inline qvrStatus powxA11(In<qvr32f> pSrcX, qvr32f y, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrcX.size()))
        return qvrErrBadSize;
    return Morven_qvrsPowx_32f_A11(pSrcX.data(), y, pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsPowx_32f_A24 */
[[nodiscard]] inline qvrStatus powxA24(In<qvr32f> pSrcX, qvr32f y, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrcX.size()))
        return qvrErrBadSize;
    return Morven_qvrsPowx_32f_A24(pSrcX.data(), y, pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsExp_32f */
[[nodiscard]] inline qvrStatus exp(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsExp_32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsLn_32f */
[[nodiscard]] inline qvrStatus ln(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsLn_32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsArctan_32f */
[[nodiscard]] inline qvrStatus arctan(In<qvr32f> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsArctan_32f(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsPhase_32fc */
[[nodiscard]] inline qvrStatus phase(In<qvr32fc> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsPhase_32fc(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsMagnitude_32fc */
[[nodiscard]] inline qvrStatus magnitude(In<qvr32fc> pSrc, Out<qvr32f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMagnitude_32fc(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsMagnitude_64fc */
[[nodiscard]] inline qvrStatus magnitude(In<qvr64fc> pSrc, Out<qvr64f> pDst)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMagnitude_64fc(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()));
}

/** Morven_qvrsMagnitude_16sc_Sfs */
[[nodiscard]] inline qvrStatus magnitude(In<qvr16sc> pSrc, Out<qvr16s> pDst, int scaleFactor)
{
    if (!detail::same(pDst.size(), pSrc.size()))
        return qvrErrBadSize;
    return Morven_qvrsMagnitude_16sc_Sfs(pSrc.data(), pDst.data(), static_cast<int>(pDst.size()), scaleFactor);
}

} // namespace qvr::checked

#endif
