/**
 * @file morvenqvr.h
 * Signal- and image-processing primitives for x86-64 Linux.
 *
 * Link with libmorvenqvr.so.1 and call; there is nothing to initialise. At load the library picks the build of every
 * function that suits the processor, and keeps to it.
 *
 * @section rules Rules that hold for every function
 *
 * - Result. A qvrStatus: 0 is success, a negative value an error, a positive value a warning. After an error no
 *   output element has been written. After a warning all of them have, some with a substitute value that the warning
 *   announces.
 * - Order of checks. Pointers first (qvrErrNullPointer), then the tag of a state object (qvrErrBadContext), then
 *   lengths (qvrErrBadSize below 1; an empty array is an error), then the other arguments in the order a function
 *   states. A function that departs from this says so.
 * - Lengths count elements, steps between image rows count bytes; both are 32-bit signed.
 * - Alignment. Any address works for every array, also one byte off the element's alignment. 64-byte aligned arrays
 *   (Morven_qvrsMalloc_8u) are the fastest.
 * - Aliasing. A destination may be the very same array as a source where both have one element type. Other overlap is
 *   not supported.
 * - Reading and writing stop at the stated lengths: no element beyond is touched.
 * - Floating point. Results follow the caller's MXCSR (rounding, flush to zero, masks) unless a function states
 *   another rule. There are no fused operations where a formula shows two.
 * - Threads. Any function may run in several threads at once on separate data. Functions that use threads of their
 *   own say so; they use at most two, and never more than the OpenMP runtime allowed when the library was loaded.
 *
 * @section names How a name is built
 *
 * Morven_ + qvrs (signal) or qvri (image) + operation + element types + form. A `C` behind an operation says that one
 * operand is a constant, `CRev` that the constant is the first operand. Two element types run together are source and
 * destination. `_I`: in place. `_Sfs`: the result is divided by 2 to the power of the scale factor, rounded and
 * saturated. `_D2L`: an array of pointers to rows. `_C1R`, `_C4R`: image rectangles of 1 or 4 channels.
 */
#ifndef MORVENQVR_H
#define MORVENQVR_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup types Statuses, element types and records
 * @{
 */

/** Result of every function: 0 success, negative an error, positive a warning. */
typedef int32_t qvrStatus;

/** The values of qvrStatus. */
enum {
    qvrOk = 0,

    qvrErrBadArgument = -5,         /**< a relation selector is not known */
    qvrErrBadSize = -6,             /**< a length below 1, an empty rectangle, a size without meaning */
    qvrErrBadSelector = -7,         /**< a selector outside its list */
    qvrErrNullPointer = -8,         /**< a required pointer is null */
    qvrErrNoMemory = -9,            /**< memory for a state or a work buffer could not be had */
    qvrErrDivByZero = -10,          /**< a scalar divisor is zero, or smaller than the smallest normal number */
    qvrErrBadBitSize = -11,         /**< a bit depth outside 1..8 or 1..16 */
    qvrErrBadStep = -14,            /**< a row step below 1 or smaller than one row */
    qvrErrFFTOrder = -15,           /**< an FFT order out of range */
    qvrErrFFTFlag = -16,            /**< an FFT normalisation flag that is not one of the four */
    qvrErrBadContext = -17,         /**< a state object of another kind, or no state object */
    qvrErrBadInterpolation = -22,   /**< an interpolation selector or a flag combination that is not known */
    qvrErrBadFactor = -23,          /**< a resize factor that is not positive, or supersampling asked to enlarge */
    qvrErrBadOrder = -25,           /**< an IIR order below 1 */
    qvrErrBadTapsLen = -26,         /**< a FIR tap count below 1 */
    qvrErrBadMultiRatePhase = -28,  /**< a multi-rate phase outside 0 .. factor - 1 */
    qvrErrBadMultiRateFactor = -29, /**< a multi-rate factor below 1 */
    qvrErrBadSamplePhase = -30,     /**< a sample phase outside 0 .. factor - 1 */
    qvrErrBadSampleFactor = -31,    /**< a sample factor below 1 */
    qvrErrBadShift = -32,           /**< a negative shift count */
    qvrErrBadWindowLength = -33,    /**< a window length below 1 */
    qvrErrBadOffset = -35,          /**< a wavelet offset below -1 */
    qvrErrBadColumns = -37,         /**< more columns than the row stride */
    qvrErrTonePhase = -44,          /**< a phase outside [0, 2 pi) */
    qvrErrToneFrequency = -45,      /**< a relative frequency outside [0, 0.5) */
    qvrErrToneMagnitude = -46,      /**< a magnitude that is not positive */
    qvrErrBadChannels = -53,        /**< a channel count other than 1, 3 or 4 */
    qvrErrBadCount = -119,          /**< a negative count where zero is allowed, or a count above its limit */
    qvrErrMatrixStride = -182,      /**< a matrix stride below 1 or not a multiple of 8 */
    qvrErrSingularMatrix = -195,    /**< a pivot not above the double-precision epsilon */
    qvrErrBadFilterOrder = -206,    /**< a design order outside 1..12 */
    qvrErrBadCutoff = -208,         /**< a design frequency not between 0 and 0.5 */
    qvrErrBadRipple = -209,         /**< a ripple above 29 */

    qvrWarnNothingToDo = 1,           /**< the clipped rectangle is empty; output unchanged */
    qvrWarnNegativeInput = 3,         /**< a square root of a negative number or NaN; NaN there */
    qvrWarnEvenMask = 5,              /**< an even median mask was reduced by one */
    qvrWarnDivByZero = 6,             /**< a divisor element was zero; infinity or NaN there */
    qvrWarnLnZeroArg = 7,             /**< a logarithm of zero; -infinity there */
    qvrWarnLnNegArg = 8,              /**< a logarithm of a negative number; NaN there */
    qvrWarnOverflow = 12,             /**< an element overflowed; infinity there */
    qvrWarnUnderflow = 17,            /**< an element underflowed; zero or a denormal there */
    qvrWarnSingularity = 18,          /**< an element on a singularity; infinity there */
    qvrWarnDomain = 19,               /**< an element outside the function's domain; NaN there */
    qvrWarnForeignProcessor = 20,     /**< identification met another vendor */
    qvrWarnUnknownProcessorType = 21, /**< a processor type code is not known */
    qvrWarnRoiOutside = 29,           /**< the source rectangle lies outside the image; output unchanged */
    qvrWarnNoProcessorId = 36,        /**< identification is not available */
    qvrWarnCacheUnknown = 37,         /**< the cache size could not be determined */
    qvrWarnNoAntialiasing = 46        /**< the antialiasing flag was ignored */
};

typedef uint8_t qvr8u;   /**< unsigned 8-bit element */
typedef uint16_t qvr16u; /**< unsigned 16-bit element */
typedef int16_t qvr16s;  /**< signed 16-bit element */
typedef uint32_t qvr32u; /**< unsigned 32-bit element */
typedef int32_t qvr32s;  /**< signed 32-bit element */
typedef float qvr32f;    /**< IEEE-754 single */
typedef double qvr64f;   /**< IEEE-754 double */

/** Complex 16-bit integer. */
typedef struct {
    qvr16s re; /**< real part */
    qvr16s im; /**< imaginary part */
} qvr16sc;

/** Complex single. */
typedef struct {
    qvr32f re; /**< real part */
    qvr32f im; /**< imaginary part */
} qvr32fc;

/** Complex double. */
typedef struct {
    qvr64f re; /**< real part */
    qvr64f im; /**< imaginary part */
} qvr64fc;

/** Image size in pixels. */
typedef struct {
    int32_t width;  /**< pixels in a row */
    int32_t height; /**< rows */
} qvriSize;

/** Rectangle in pixels. */
typedef struct {
    int32_t x;      /**< left edge */
    int32_t y;      /**< top edge */
    int32_t width;  /**< pixels in a row */
    int32_t height; /**< rows */
} qvriRect;

/** Rounding of the conversions from floating point to 16 bits. Any other value means qvrRoundHalfAway. */
enum {
    qvrRoundTowardZero = 0, /**< truncate */
    qvrRoundNearest = 1,    /**< by the caller's MXCSR: half to even unless the caller changed it */
    qvrRoundHalfAway = 2    /**< to nearest, a tie away from zero */
};

/** @} */

/**
 * @defgroup memory Aligned memory
 * @{
 */

/**
 * Allocates memory on a 64-byte boundary.
 * @param len size in bytes; below 1 gives null
 * @return the block, its content undefined, or null if memory could not be had. Release it with Morven_qvrsFree.
 */
qvr8u* Morven_qvrsMalloc_8u(int len);

/**
 * Releases a block of Morven_qvrsMalloc_8u.
 * @param ptr the block; null does nothing. Any other pointer is undefined.
 */
void Morven_qvrsFree(void* ptr);

/** @} */

/**
 * @defgroup arithmetic Floating-point vector arithmetic
 *
 * Element-wise on whole arrays, each element on its own. All functions return qvrErrNullPointer for a null pointer and
 * then qvrErrBadSize for `len` below 1; what else they return is said at each. The in-place forms take the array that
 * is both read and written last.
 * @{
 */

/** pDst[i] = pSrc1[i] + pSrc2[i] */
qvrStatus Morven_qvrsAdd_32f(const qvr32f* pSrc1, const qvr32f* pSrc2, qvr32f* pDst, int len);

/** pSrcDst[i] = pSrcDst[i] + pSrc[i] */
qvrStatus Morven_qvrsAdd_32f_I(const qvr32f* pSrc, qvr32f* pSrcDst, int len);

/** pDst[i] = pSrc2[i] - pSrc1[i]: the first array is subtracted from the second. */
qvrStatus Morven_qvrsSub_32f(const qvr32f* pSrc1, const qvr32f* pSrc2, qvr32f* pDst, int len);

/** pSrcDst[i] = pSrcDst[i] - pSrc[i] */
qvrStatus Morven_qvrsSub_32f_I(const qvr32f* pSrc, qvr32f* pSrcDst, int len);

/** pDst[i] = pSrc1[i] * pSrc2[i] */
qvrStatus Morven_qvrsMul_32f(const qvr32f* pSrc1, const qvr32f* pSrc2, qvr32f* pDst, int len);

/** pSrcDst[i] = pSrcDst[i] * pSrc[i] */
qvrStatus Morven_qvrsMul_32f_I(const qvr32f* pSrc, qvr32f* pSrcDst, int len);

/** pSrcDst[i] = pSrcDst[i] * pSrc[i] */
qvrStatus Morven_qvrsMul_64f_I(const qvr64f* pSrc, qvr64f* pSrcDst, int len);

/**
 * Complex product: with a + ib from pSrc1 and c + id from pSrc2, (ac - bd) + i(ad + bc).
 *
 * Four products and two sums, each rounded; infinities and NaN take what the formula gives.
 * @param pSrc1, pSrc2 factors, `len` complex elements each
 * @param pDst products; may be pSrc1 or pSrc2
 * @param len complex elements, at least 1
 */
qvrStatus Morven_qvrsMul_64fc(const qvr64fc* pSrc1, const qvr64fc* pSrc2, qvr64fc* pDst, int len);

/**
 * pDst[i] = pSrc2[i] / pSrc1[i]: the first array holds the divisors.
 *
 * A zero divisor of either sign gives +infinity for a positive dividend, -infinity for a negative one, and the NaN
 * 0xFFC00000 for a zero or a NaN.
 *
 * Uses two threads from 4096 elements on, on processors with SSSE3.
 * @return qvrWarnDivByZero if any divisor was zero
 */
qvrStatus Morven_qvrsDiv_32f(const qvr32f* pSrc1, const qvr32f* pSrc2, qvr32f* pDst, int len);

/** pDst[i] = pSrc[i] + val. With `val` equal to 0 the array is copied bit for bit. */
qvrStatus Morven_qvrsAddC_32f(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len);

/** pSrcDst[i] = pSrcDst[i] + val. With `val` equal to 0 nothing is touched: -0.0 stays -0.0. */
qvrStatus Morven_qvrsAddC_32f_I(qvr32f val, qvr32f* pSrcDst, int len);

/** pSrcDst[i] = pSrcDst[i] + val. With `val` equal to 0 nothing is touched: -0.0 stays -0.0. */
qvrStatus Morven_qvrsAddC_64f_I(qvr64f val, qvr64f* pSrcDst, int len);

/** pDst[i] = pSrc[i] - val. With `val` equal to 0 the array is copied bit for bit. */
qvrStatus Morven_qvrsSubC_32f(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len);

/** pSrcDst[i] = pSrcDst[i] - val. With `val` equal to 0 nothing is touched. */
qvrStatus Morven_qvrsSubC_32f_I(qvr32f val, qvr32f* pSrcDst, int len);

/** pDst[i] = val - pSrc[i] */
qvrStatus Morven_qvrsSubCRev_32f(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len);

/**
 * pDst[i] = pSrc[i] * val. With `val` equal to 1 the array is copied; with `val` equal to 0 of either sign every
 * element becomes +0, also where the source is NaN or infinite.
 */
qvrStatus Morven_qvrsMulC_32f(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len);

/** pSrcDst[i] = pSrcDst[i] * val. With `val` equal to 1 nothing is touched; with `val` equal to 0 all becomes +0. */
qvrStatus Morven_qvrsMulC_32f_I(qvr32f val, qvr32f* pSrcDst, int len);

/** pSrcDst[i] = pSrcDst[i] * val. With `val` equal to 1 nothing is touched; with `val` equal to 0 all becomes +0. */
qvrStatus Morven_qvrsMulC_64f_I(qvr64f val, qvr64f* pSrcDst, int len);

/**
 * pDst[i] = pSrc[i] * (1.0f / val): a product with the rounded reciprocal, which can differ from the quotient in the
 * last bit. The rules of Morven_qvrsMulC_32f for factors 1 and 0 apply to the reciprocal: an infinite `val` gives +0
 * everywhere.
 * @return qvrErrDivByZero if `val` is zero; nothing is written then
 */
qvrStatus Morven_qvrsDivC_32f(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len);

/** The same as Morven_qvrsDivC_32f in place. */
qvrStatus Morven_qvrsDivC_32f_I(qvr32f val, qvr32f* pSrcDst, int len);

/**
 * pDst[i] = val / pSrc[i]
 *
 * A zero element gives +infinity for positive `val`, -infinity for negative `val`, and the NaN 0xFFC00000 for `val`
 * zero or NaN. A zero `val` of either sign counts as +0.
 *
 * Uses two threads from 4096 elements on, on processors with SSSE3.
 * @return qvrWarnDivByZero if any element was zero
 */
qvrStatus Morven_qvrsDivCRev_32f(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len);

/** The same as Morven_qvrsDivCRev_32f in place. */
qvrStatus Morven_qvrsDivCRev_32f_I(qvr32f val, qvr32f* pSrcDst, int len);

/** pDst[i] = |pSrc[i]|: clears the sign bit, of a NaN too. */
qvrStatus Morven_qvrsAbs_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/** pSrcDst[i] = |pSrcDst[i]|: clears the sign bit, of a NaN too. */
qvrStatus Morven_qvrsAbs_32f_I(qvr32f* pSrcDst, int len);

/** pSrcDst[i] = pSrcDst[i] * pSrcDst[i] */
qvrStatus Morven_qvrsSqr_32f_I(qvr32f* pSrcDst, int len);

/**
 * Square root, correctly rounded. -0.0 stays; an element that is negative or NaN gives the NaN 0xFFC00000.
 *
 * Uses two threads from 4096 elements on, on processors with SSSE3.
 * @return qvrWarnNegativeInput if any element was negative or NaN
 */
qvrStatus Morven_qvrsSqrt_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * pDst[i] = the least integer not below pSrc[i]. A zero result keeps the sign of its element; infinities stay, a NaN
 * stays a NaN.
 *
 * The length is checked before the pointers. All exceptions are masked during the call; after it a caller whose
 * exceptions are all masked finds the flags other than precision clear, any other caller its MXCSR as it was. Pending
 * x87 exceptions are cleared.
 */
qvrStatus Morven_qvrsCeil_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/** pDst[i] = the greatest integer not above pSrc[i]; otherwise as Morven_qvrsCeil_32f. */
qvrStatus Morven_qvrsFloor_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/** pSrcDst[i] = pSrc[i] < pSrcDst[i] ? pSrc[i] : pSrcDst[i]; so a NaN on either side and equal zeros leave pSrcDst. */
qvrStatus Morven_qvrsMinEvery_32f_I(const qvr32f* pSrc, qvr32f* pSrcDst, int len);

/** pSrcDst[i] = pSrc[i] > pSrcDst[i] ? pSrc[i] : pSrcDst[i]; so a NaN on either side and equal zeros leave pSrcDst. */
qvrStatus Morven_qvrsMaxEvery_32f_I(const qvr32f* pSrc, qvr32f* pSrcDst, int len);

/** @} */

/**
 * @defgroup fills Fills and copies
 *
 * Statuses: qvrErrNullPointer, then qvrErrBadSize. Fills and copies far larger than the caches bypass them where the
 * processor tells its cache size.
 * @{
 */

/** pDst[i] = val */
qvrStatus Morven_qvrsSet_8u(qvr8u val, qvr8u* pDst, int len);
/** pDst[i] = val */
qvrStatus Morven_qvrsSet_32s(qvr32s val, qvr32s* pDst, int len);
/** pDst[i] = val, bit for bit: a NaN keeps its payload. */
qvrStatus Morven_qvrsSet_32f(qvr32f val, qvr32f* pDst, int len);
/** pDst[i] = +0 */
qvrStatus Morven_qvrsZero_32f(qvr32f* pDst, int len);
/** pDst[i] = +0 */
qvrStatus Morven_qvrsZero_64f(qvr64f* pDst, int len);
/** pDst[i] = pSrc[i], bit for bit. */
qvrStatus Morven_qvrsCopy_32f(const qvr32f* pSrc, qvr32f* pDst, int len);
/** pDst[i] = pSrc[i], bit for bit. */
qvrStatus Morven_qvrsCopy_64f(const qvr64f* pSrc, qvr64f* pDst, int len);

/** @} */

/**
 * @defgroup conversion Element conversions
 *
 * Statuses: qvrErrNullPointer, then qvrErrBadSize for `len` below 1. Source and destination are separate arrays unless
 * they have one element type.
 * @{
 */

/** 16-bit integer to single, exact. */
qvrStatus Morven_qvrsConvert_16s32f(const qvr16s* pSrc, qvr32f* pDst, int len);

/** Single to double, exact. */
qvrStatus Morven_qvrsConvert_32f64f(const qvr32f* pSrc, qvr64f* pDst, int len);

/** Double to single. Values beyond the largest single, infinities too, become plus or minus that; a NaN stays a NaN. */
qvrStatus Morven_qvrsConvert_64f32f(const qvr64f* pSrc, qvr32f* pDst, int len);

/** 32-bit integer to 16-bit integer with saturation. */
qvrStatus Morven_qvrsConvert_32s16s(const qvr32s* pSrc, qvr16s* pDst, int len);

/**
 * 16-bit integer to double, times 2 to the power of -scaleFactor.
 * @param pSrc, pDst source and destination, `len` elements each
 * @param len elements, at least 1
 * @param scaleFactor any value; it acts as if clamped to -1008..1022
 */
qvrStatus Morven_qvrsConvert_16s64f_Sfs(const qvr16s* pSrc, qvr64f* pDst, int len, int scaleFactor);

/**
 * Single to 16-bit integer: times 2 to the power of -scaleFactor, clamped to -32768..32767, rounded.
 *
 * The factor is a single: it is 0 for a scaleFactor above 149 and infinite below -127. What a NaN becomes is undefined.
 * @param pSrc, pDst source and destination, `len` elements each
 * @param len elements, at least 1
 * @param rndMode qvrRoundTowardZero, qvrRoundNearest, or qvrRoundHalfAway, which any other value means too
 * @param scaleFactor any value
 */
qvrStatus Morven_qvrsConvert_32f16s_Sfs(const qvr32f* pSrc, qvr16s* pDst, int len, int rndMode, int scaleFactor);

/** Double to 16-bit integer, as Morven_qvrsConvert_32f16s_Sfs; scaleFactor acts as if clamped to -1008..1022. */
qvrStatus Morven_qvrsConvert_64f16s_Sfs(const qvr64f* pSrc, qvr16s* pDst, int len, int rndMode, int scaleFactor);

/**
 * pDst[i] = (pSrc[i] - vSub) * (1.0f / vDiv), with the rounded reciprocal.
 * @return qvrErrDivByZero if the magnitude of `vDiv` is below the smallest normal single, 1.1754944e-38f
 */
qvrStatus Morven_qvrsNormalize_32f(const qvr32f* pSrc, qvr32f* pDst, int len, qvr32f vSub, qvr32f vDiv);

/**
 * pDst[i] = (pSrc[i] - vSub) * (1.0 / vDiv), with the rounded reciprocal.
 * @return qvrErrDivByZero if the magnitude of `vDiv` is below the smallest normal double, 2.2250738585072014e-308
 */
qvrStatus Morven_qvrsNormalize_64f(const qvr64f* pSrc, qvr64f* pDst, int len, qvr64f vSub, qvr64f vDiv);

/**
 * Splits samples that are interleaved by channel into one row of floats per channel, mapped symmetrically on -1..1:
 * ppDst[c][i] = pSrc[c + i * nChannels] * (2 / 65535) + 1 / 65535, product and sum each rounded to single.
 *
 * Checks in order: pSrc, the two counts, ppDst, every row pointer.
 * @param pSrc nChannels * chanLen samples
 * @param ppDst nChannels pointers to rows of chanLen floats, which do not overlap
 * @param nChannels channels, at least 1
 * @param chanLen samples in each channel, at least 1
 */
qvrStatus Morven_qvrsSplitScaled_16s32f_D2L(const qvr16s* pSrc, qvr32f** ppDst, int nChannels, int chanLen);

/** @} */

/**
 * @defgroup elementary Elementary functions with an accuracy tag
 *
 * One function over a whole array of floats. The tag promises correct bits of the result: A11 eleven, A21 twenty-one,
 * A24 twenty-four, that is at most one unit in the last place. On processors below SSE3 every function works in double
 * and reaches A24 whatever its tag. docs/accuracy.md lists what each function reaches.
 *
 * - Checks: qvrErrNullPointer for a null pointer, then qvrErrBadSize for `len` below 1. On processors with AVX the length
 *   comes first.
 * - Warnings name elements that hold a substitute; the loop goes on, and the last element in error gives the status.
 * - Elements are processed in blocks. In a block with an element outside the range of the fast formula all elements take
 *   the slower path, which is at least as accurate, so the last bits of an element may depend on its neighbours.
 * - Environment: exceptions are masked during the call, so none traps. A caller with all exceptions masked finds the five
 *   flags other than precision cleared; any other caller finds MXCSR as it was. Pending x87 exceptions are cleared. The
 *   caller's rounding mode and flush modes hold inside, except that arguments are always reduced by the nearest integer.
 *   errno is not touched.
 * - A destination may be the very same array as a source.
 * @{
 */

/**
 * Sine, to 11 bits; next to multiples of pi the error is at most 2^-12.7 in absolute terms instead.
 *
 * Any finite argument is valid. A zero keeps its sign. A NaN gives a quiet NaN, an infinity the NaN 0xFFC00000.
 * @return qvrWarnDomain if an element was infinite
 */
qvrStatus Morven_qvrsSin_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/** Cosine, to 11 bits; next to its zeros, and otherwise, as Morven_qvrsSin_32f_A11. */
qvrStatus Morven_qvrsCos_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/** Tangent, to 11 bits everywhere. Special elements as in Morven_qvrsSin_32f_A11. */
qvrStatus Morven_qvrsTan_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Arc sine in [-pi/2, pi/2], to 11 bits. A NaN gives a quiet NaN, a magnitude above 1 the NaN 0xFFC00000.
 * @return qvrWarnDomain if the magnitude of an element was above 1
 */
qvrStatus Morven_qvrsAsin_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/** Arc cosine in [0, pi], to 11 bits. Special elements as in Morven_qvrsAsin_32f_A11. */
qvrStatus Morven_qvrsAcos_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/** Arc tangent in [-pi/2, pi/2], to 11 bits. Infinities give plus or minus pi/2. No warnings. */
qvrStatus Morven_qvrsAtan_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * The angle of the point (x, y) in [-pi, pi], to 11 bits. Zeros and infinities by their signs, as C's atan2f. No warnings.
 * @param pSrcY, pSrcX coordinates, `len` elements each
 * @param pDst angles; may be either source
 * @param len elements, at least 1
 */
qvrStatus Morven_qvrsAtan2_32f_A11(const qvr32f* pSrcY, const qvr32f* pSrcX, qvr32f* pDst, int len);

/**
 * Hyperbolic sine, to 11 bits, small arguments and signed zeros included. It stays finite up to a magnitude of 89.4159.
 * @return qvrWarnOverflow if a finite element gave an infinity
 */
qvrStatus Morven_qvrsSinh_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/** Hyperbolic cosine; range and warning as Morven_qvrsSinh_32f_A11. Infinities of both signs give +infinity. */
qvrStatus Morven_qvrsCosh_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/** Hyperbolic tangent, to 11 bits; for large magnitudes plus or minus 1. No warnings. */
qvrStatus Morven_qvrsTanh_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Exponential function. Above 88.7228 the result is +infinity; below -87.3365 it is a denormal and then zero. A NaN gives
 * a quiet NaN. No warnings.
 */
qvrStatus Morven_qvrsExp_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Natural logarithm, to 11 bits. A negative element gives the NaN 0x7FFC0000, a zero of either sign -infinity, +infinity
 * itself, a NaN its own bits.
 * @return qvrWarnDomain for a negative element, qvrWarnSingularity for a zero: the later of them
 */
qvrStatus Morven_qvrsLn_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Decimal logarithm, to 11 bits. A negative element gives the NaN 0xFFC00000, a zero of either sign -infinity, +infinity
 * itself, a NaN its own bits. No warnings.
 */
qvrStatus Morven_qvrsLog10_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/** Decimal logarithm, to 21 bits; otherwise as Morven_qvrsLog10_32f_A11. */
qvrStatus Morven_qvrsLog10_32f_A21(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * pDst[i] = pSrcX[i] to the power pSrcY[i], to 11 bits. Results below the normal floats are zero or the denormal.
 *
 * A power of 0 gives 1 and so does the base 1, whatever the other operand is; else a NaN operand is the result, the base
 * first. The base -1 with an infinite power gives 1. A negative base needs an integer power, else the result is the NaN
 * 0xFFC00000. A zero base with a negative power gives an infinity, of the base's sign if the power is odd. Infinite
 * operands as in C's powf. Overflow and underflow give infinity and zero without a warning.
 * @param pSrcX, pSrcY bases and powers, `len` elements each
 * @param pDst results; may be either source
 * @param len elements, at least 1
 * @return qvrWarnDomain for a negative base with a fractional power, and for a zero base with a negative one
 */
qvrStatus Morven_qvrsPow_32f_A11(const qvr32f* pSrcX, const qvr32f* pSrcY, qvr32f* pDst, int len);

/** The same to 24 bits, denormal results included. */
qvrStatus Morven_qvrsPow_32f_A24(const qvr32f* pSrcX, const qvr32f* pSrcY, qvr32f* pDst, int len);

/** pDst[i] = pSrcX[i] to the power y, by the rules of Morven_qvrsPow_32f_A11. */
qvrStatus Morven_qvrsPowx_32f_A11(const qvr32f* pSrcX, qvr32f y, qvr32f* pDst, int len);

/** The same to 24 bits, denormal results included. */
qvrStatus Morven_qvrsPowx_32f_A24(const qvr32f* pSrcX, qvr32f y, qvr32f* pDst, int len);

/** @} */

/**
 * @defgroup fast Fast elementary functions, magnitudes and phase
 *
 * All functions return qvrErrNullPointer for a null pointer and then qvrErrBadSize for `len` below 1. They follow the
 * caller's MXCSR and raise its flags; errno is not touched.
 * @{
 */

/**
 * Exponential function, within one unit in the last place of the scalar one. Overflow gives +infinity, underflow a denormal
 * or zero, a NaN a quiet NaN. No warnings.
 */
qvrStatus Morven_qvrsExp_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Natural logarithm, correctly rounded but for rare near-ties.
 *
 * An element with the sign bit set, -0 and NaN included, gives the NaN 0xFFC00000; +0 gives -infinity, +infinity itself, a
 * positive NaN a quiet NaN.
 * @return qvrWarnLnZeroArg or qvrWarnLnNegArg, by which of a +0 and an element with the sign bit set came first
 */
qvrStatus Morven_qvrsLn_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/** Arc tangent in [-pi/2, pi/2], within one unit in the last place of the scalar one. No warnings. */
qvrStatus Morven_qvrsArctan_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/** The angle of a complex number, atan2(im, re) in double and rounded to single; 0 where both parts are zero. */
qvrStatus Morven_qvrsPhase_32fc(const qvr32fc* pSrc, qvr32f* pDst, int len);

/**
 * sqrt(re * re + im * im) in single, each product and the sum rounded.
 *
 * Most elements take an approximate root with one Newton step, good to 22 bits: there a sum of squares below 1.1754944e-38
 * gives 0 and an infinite one a NaN. Elements ahead of the first 16-byte boundary of pDst, and those behind the last whole
 * group of eight, take the exact root.
 *
 * Uses two threads from 2048 elements on, on processors with SSSE3; each works on a half as if it were an array of its own.
 */
qvrStatus Morven_qvrsMagnitude_32fc(const qvr32fc* pSrc, qvr32f* pDst, int len);

/**
 * sqrt(re * re + im * im) in double, every operation rounded, without scaling against overflow.
 *
 * Uses two threads from 256 elements on, on processors with SSSE3 but no AVX.
 */
qvrStatus Morven_qvrsMagnitude_64fc(const qvr64fc* pSrc, qvr64f* pDst, int len);

/**
 * sqrt(re^2 + im^2) * 2^-scaleFactor, rounded to nearest, a tie to even, and saturated to 32767.
 *
 * From scaleFactor 17 on all results are 0; below -14 every element other than 0 gives 32767.
 *
 * Uses two threads from 2048 elements on, on processors with SSSE3.
 * @param pSrc, pDst source and destination, `len` elements each
 * @param len elements, at least 1
 * @param scaleFactor any value
 */
qvrStatus Morven_qvrsMagnitude_16sc_Sfs(const qvr16sc* pSrc, qvr16s* pDst, int len, int scaleFactor);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
