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
 *   output element has been written; the two column movers are exceptions, and say so. After a warning all of them
 *   have, some with a substitute value that the warning announces. Where success or a warning comes with nothing written
 *   (empty image regions, resize without memory, unknown filter types and a few more), the function says so, and the page
 *   on statuses lists all cases.
 * - Order of checks. Pointers first (qvrErrNullPointer), then the tag of a state object (qvrErrBadContext), then
 *   lengths (qvrErrBadSize below 1; an empty array is an error), then the other arguments in the order a function
 *   states. A function that departs from this says so.
 * - Lengths count elements, steps between image rows count bytes; both are 32-bit signed.
 * - Alignment. Any address works for every array, also one byte off the element's alignment. 64-byte aligned arrays
 *   (Morven_qvrsMalloc_8u) are the fastest.
 * - Aliasing. A destination may be the very same array as a source where both have one element type. Other overlap is
 *   not supported.
 * - Reading and writing stop at the stated lengths: no element beyond is touched.
 * - Floating point. Results follow the caller's MXCSR (rounding, flush to zero, denormals are zero, masks) unless a
 *   function states another rule. A denormal that counts as zero has a zero's result and status. Inexact, underflow and
 *   denormal may be raised freely; invalid, divide by zero and overflow only where the stated formula raises them for an
 *   element. The control bits are as before after every call, and errno is never touched. There are no fused operations
 *   where a formula shows two.
 * - Threads. Any function may run in several threads at once on separate data. Functions that use threads of their
 *   own say so; they use two at most unless they tell otherwise, and never more than the OpenMP runtime allowed when
 *   the library was loaded.
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

#define MORVENQVR_VERSION_MAJOR 1 /**< changes with the binary interface, as the soname does */
#define MORVENQVR_VERSION_MINOR 1 /**< changes with additions */
#define MORVENQVR_VERSION_PATCH 0 /**< changes with corrections */

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
    qvrWarnNoAntialiasing = 46        /**< the antialiasing flag was ignored; Morven_qvriResize_* write nothing then */
};

/**
 * The name of a status, such as "qvrErrBadSize".
 * @param status a result of any function
 * @return a constant string; "unknown status" for a number that is none
 */
static inline const char* qvrStatusName(qvrStatus status)
{
    switch (status) {
    case qvrOk:
        return "qvrOk";
    case qvrErrBadArgument:
        return "qvrErrBadArgument";
    case qvrErrBadSize:
        return "qvrErrBadSize";
    case qvrErrBadSelector:
        return "qvrErrBadSelector";
    case qvrErrNullPointer:
        return "qvrErrNullPointer";
    case qvrErrNoMemory:
        return "qvrErrNoMemory";
    case qvrErrDivByZero:
        return "qvrErrDivByZero";
    case qvrErrBadBitSize:
        return "qvrErrBadBitSize";
    case qvrErrBadStep:
        return "qvrErrBadStep";
    case qvrErrFFTOrder:
        return "qvrErrFFTOrder";
    case qvrErrFFTFlag:
        return "qvrErrFFTFlag";
    case qvrErrBadContext:
        return "qvrErrBadContext";
    case qvrErrBadInterpolation:
        return "qvrErrBadInterpolation";
    case qvrErrBadFactor:
        return "qvrErrBadFactor";
    case qvrErrBadOrder:
        return "qvrErrBadOrder";
    case qvrErrBadTapsLen:
        return "qvrErrBadTapsLen";
    case qvrErrBadMultiRatePhase:
        return "qvrErrBadMultiRatePhase";
    case qvrErrBadMultiRateFactor:
        return "qvrErrBadMultiRateFactor";
    case qvrErrBadSamplePhase:
        return "qvrErrBadSamplePhase";
    case qvrErrBadSampleFactor:
        return "qvrErrBadSampleFactor";
    case qvrErrBadShift:
        return "qvrErrBadShift";
    case qvrErrBadWindowLength:
        return "qvrErrBadWindowLength";
    case qvrErrBadOffset:
        return "qvrErrBadOffset";
    case qvrErrBadColumns:
        return "qvrErrBadColumns";
    case qvrErrTonePhase:
        return "qvrErrTonePhase";
    case qvrErrToneFrequency:
        return "qvrErrToneFrequency";
    case qvrErrToneMagnitude:
        return "qvrErrToneMagnitude";
    case qvrErrBadChannels:
        return "qvrErrBadChannels";
    case qvrErrBadCount:
        return "qvrErrBadCount";
    case qvrErrMatrixStride:
        return "qvrErrMatrixStride";
    case qvrErrSingularMatrix:
        return "qvrErrSingularMatrix";
    case qvrErrBadFilterOrder:
        return "qvrErrBadFilterOrder";
    case qvrErrBadCutoff:
        return "qvrErrBadCutoff";
    case qvrErrBadRipple:
        return "qvrErrBadRipple";
    case qvrWarnNothingToDo:
        return "qvrWarnNothingToDo";
    case qvrWarnNegativeInput:
        return "qvrWarnNegativeInput";
    case qvrWarnEvenMask:
        return "qvrWarnEvenMask";
    case qvrWarnDivByZero:
        return "qvrWarnDivByZero";
    case qvrWarnLnZeroArg:
        return "qvrWarnLnZeroArg";
    case qvrWarnLnNegArg:
        return "qvrWarnLnNegArg";
    case qvrWarnOverflow:
        return "qvrWarnOverflow";
    case qvrWarnUnderflow:
        return "qvrWarnUnderflow";
    case qvrWarnSingularity:
        return "qvrWarnSingularity";
    case qvrWarnDomain:
        return "qvrWarnDomain";
    case qvrWarnForeignProcessor:
        return "qvrWarnForeignProcessor";
    case qvrWarnUnknownProcessorType:
        return "qvrWarnUnknownProcessorType";
    case qvrWarnRoiOutside:
        return "qvrWarnRoiOutside";
    case qvrWarnNoProcessorId:
        return "qvrWarnNoProcessorId";
    case qvrWarnCacheUnknown:
        return "qvrWarnCacheUnknown";
    case qvrWarnNoAntialiasing:
        return "qvrWarnNoAntialiasing";
    default:
        return "unknown status";
    }
}

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

/**
 * pDst[i] = pSrc1[i] + pSrc2[i]
 * @param pSrc1 first source, `len` elements
 * @param pSrc2 second source, `len` elements
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAdd_32f(const qvr32f* pSrc1, const qvr32f* pSrc2, qvr32f* pDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] + pSrc[i]
 * @param pSrc source, `len` elements
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAdd_32f_I(const qvr32f* pSrc, qvr32f* pSrcDst, int len);

/**
 * pDst[i] = pSrc2[i] - pSrc1[i]: the first array is subtracted from the second.
 * @param pSrc1 what is subtracted, `len` elements
 * @param pSrc2 what it is subtracted from, `len` elements
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSub_32f(const qvr32f* pSrc1, const qvr32f* pSrc2, qvr32f* pDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] - pSrc[i]
 * @param pSrc source, `len` elements
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSub_32f_I(const qvr32f* pSrc, qvr32f* pSrcDst, int len);

/**
 * pDst[i] = pSrc1[i] * pSrc2[i]
 * @param pSrc1 first source, `len` elements
 * @param pSrc2 second source, `len` elements
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMul_32f(const qvr32f* pSrc1, const qvr32f* pSrc2, qvr32f* pDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] * pSrc[i]
 * @param pSrc source, `len` elements
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMul_32f_I(const qvr32f* pSrc, qvr32f* pSrcDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] * pSrc[i]
 * @param pSrc source, `len` elements
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMul_64f_I(const qvr64f* pSrc, qvr64f* pSrcDst, int len);

/**
 * Complex product: with a + ib from pSrc1 and c + id from pSrc2, (ac - bd) + i(ad + bc).
 *
 * Four products and two sums, each rounded; infinities and NaN take what the formula gives.
 * @param pSrc1 factors, `len` complex elements
 * @param pSrc2 factors, `len` complex elements
 * @param pDst products; may be pSrc1 or pSrc2
 * @param len complex elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMul_64fc(const qvr64fc* pSrc1, const qvr64fc* pSrc2, qvr64fc* pDst, int len);

/**
 * pDst[i] = pSrc2[i] / pSrc1[i]: the first array holds the divisors.
 *
 * A zero divisor of either sign gives +infinity for a positive dividend, -infinity for a negative one, and the NaN
 * 0xFFC00000 for a zero or a NaN.
 *
 * Uses two threads from 4096 elements on, on processors with SSSE3.
 * @param pSrc1 divisors, `len` elements
 * @param pSrc2 dividends, `len` elements
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1; qvrWarnDivByZero if any divisor was zero
 */
qvrStatus Morven_qvrsDiv_32f(const qvr32f* pSrc1, const qvr32f* pSrc2, qvr32f* pDst, int len);

/**
 * pDst[i] = pSrc[i] + val. With `val` equal to 0 the array is copied bit for bit.
 * @param pSrc source, `len` elements
 * @param val the constant
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAddC_32f(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] + val. With `val` equal to 0 nothing is touched: -0.0 stays -0.0.
 * @param val the constant
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAddC_32f_I(qvr32f val, qvr32f* pSrcDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] + val. With `val` equal to 0 nothing is touched: -0.0 stays -0.0.
 * @param val the constant
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAddC_64f_I(qvr64f val, qvr64f* pSrcDst, int len);

/**
 * pDst[i] = pSrc[i] - val. With `val` equal to 0 the array is copied bit for bit.
 * @param pSrc source, `len` elements
 * @param val the constant
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSubC_32f(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] - val. With `val` equal to 0 nothing is touched.
 * @param val the constant
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSubC_32f_I(qvr32f val, qvr32f* pSrcDst, int len);

/**
 * pDst[i] = val - pSrc[i]
 * @param pSrc source, `len` elements
 * @param val the constant
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSubCRev_32f(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len);

/**
 * pDst[i] = pSrc[i] * val. With `val` equal to 1 the array is copied; with `val` equal to 0 of either sign every
 * element becomes +0, also where the source is NaN or infinite.
 * @param pSrc source, `len` elements
 * @param val the constant
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMulC_32f(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] * val. With `val` equal to 1 nothing is touched; with `val` equal to 0 all becomes +0.
 * @param val the constant
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMulC_32f_I(qvr32f val, qvr32f* pSrcDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] * val. With `val` equal to 1 nothing is touched; with `val` equal to 0 all becomes +0.
 * @param val the constant
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMulC_64f_I(qvr64f val, qvr64f* pSrcDst, int len);

/**
 * pDst[i] = pSrc[i] * (1.0f / val): a product with the rounded reciprocal, which can differ from the quotient in the
 * last bit. The rules of Morven_qvrsMulC_32f for factors 1 and 0 apply to the reciprocal: an infinite `val` gives +0
 * everywhere.
 * @param pSrc source, `len` elements
 * @param val the constant
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1; qvrErrDivByZero if `val` is zero, with nothing written
 */
qvrStatus Morven_qvrsDivC_32f(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len);

/**
 * The same as Morven_qvrsDivC_32f in place.
 * @param val the constant
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1; qvrErrDivByZero if `val` is zero, with nothing written
 */
qvrStatus Morven_qvrsDivC_32f_I(qvr32f val, qvr32f* pSrcDst, int len);

/**
 * pDst[i] = val / pSrc[i]
 *
 * A zero element gives +infinity for positive `val`, -infinity for negative `val`, and the NaN 0xFFC00000 for `val`
 * zero or NaN. A zero `val` of either sign counts as +0.
 *
 * Uses two threads from 4096 elements on, on processors with SSSE3.
 * @param pSrc source, `len` elements
 * @param val the constant
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1; qvrWarnDivByZero if any element was zero
 */
qvrStatus Morven_qvrsDivCRev_32f(const qvr32f* pSrc, qvr32f val, qvr32f* pDst, int len);

/**
 * The same as Morven_qvrsDivCRev_32f in place.
 * @param val the constant
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1; qvrWarnDivByZero if any element was zero
 */
qvrStatus Morven_qvrsDivCRev_32f_I(qvr32f val, qvr32f* pSrcDst, int len);

/**
 * pDst[i] = |pSrc[i]|: clears the sign bit, of a NaN too.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAbs_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * pSrcDst[i] = |pSrcDst[i]|: clears the sign bit, of a NaN too.
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAbs_32f_I(qvr32f* pSrcDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] * pSrcDst[i]
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSqr_32f_I(qvr32f* pSrcDst, int len);

/**
 * Square root, correctly rounded. -0.0 stays; an element that is negative or NaN gives the NaN 0xFFC00000.
 *
 * Uses two threads from 4096 elements on, on processors with SSSE3.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1; qvrWarnNegativeInput if any element was negative or NaN
 */
qvrStatus Morven_qvrsSqrt_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * pDst[i] = the least integer not below pSrc[i]. A zero result keeps the sign of its element; infinities stay, a NaN
 * stays a NaN.
 *
 * The length is checked before the pointers. All exceptions are masked during the call; after it a caller whose
 * exceptions are all masked finds the flags other than precision clear, any other caller its MXCSR as it was. Pending
 * x87 exceptions are cleared.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrBadSize for `len` below 1; qvrErrNullPointer
 */
qvrStatus Morven_qvrsCeil_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * pDst[i] = the greatest integer not above pSrc[i]; otherwise as Morven_qvrsCeil_32f.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrBadSize for `len` below 1; qvrErrNullPointer
 */
qvrStatus Morven_qvrsFloor_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * pSrcDst[i] = pSrc[i] < pSrcDst[i] ? pSrc[i] : pSrcDst[i]; so a NaN on either side and equal zeros leave pSrcDst.
 * @param pSrc source, `len` elements
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMinEvery_32f_I(const qvr32f* pSrc, qvr32f* pSrcDst, int len);

/**
 * pSrcDst[i] = pSrc[i] > pSrcDst[i] ? pSrc[i] : pSrcDst[i]; so a NaN on either side and equal zeros leave pSrcDst.
 * @param pSrc source, `len` elements
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMaxEvery_32f_I(const qvr32f* pSrc, qvr32f* pSrcDst, int len);

/** @} */

/**
 * @defgroup fills Fills and copies
 *
 * Statuses: qvrErrNullPointer, then qvrErrBadSize. Fills and copies far larger than the caches bypass them where the
 * processor tells its cache size.
 * @{
 */

/**
 * pDst[i] = val
 * @param val what every element becomes
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSet_8u(qvr8u val, qvr8u* pDst, int len);

/**
 * pDst[i] = val
 * @param val what every element becomes
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSet_32s(qvr32s val, qvr32s* pDst, int len);

/**
 * pDst[i] = val, bit for bit: a NaN keeps its payload.
 * @param val what every element becomes
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSet_32f(qvr32f val, qvr32f* pDst, int len);

/**
 * pDst[i] = +0
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsZero_32f(qvr32f* pDst, int len);

/**
 * pDst[i] = +0
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsZero_64f(qvr64f* pDst, int len);

/**
 * pDst[i] = pSrc[i], bit for bit.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsCopy_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * pDst[i] = pSrc[i], bit for bit.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsCopy_64f(const qvr64f* pSrc, qvr64f* pDst, int len);

/** @} */

/**
 * @defgroup conversion Element conversions
 *
 * Statuses: qvrErrNullPointer, then qvrErrBadSize for `len` below 1. Source and destination are separate arrays unless
 * they have one element type.
 * @{
 */

/**
 * 16-bit integer to single, exact.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsConvert_16s32f(const qvr16s* pSrc, qvr32f* pDst, int len);

/**
 * Single to double, exact.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsConvert_32f64f(const qvr32f* pSrc, qvr64f* pDst, int len);

/**
 * Double to single. Values beyond the largest single, infinities too, become plus or minus that; a NaN stays a NaN.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsConvert_64f32f(const qvr64f* pSrc, qvr32f* pDst, int len);

/**
 * 32-bit integer to 16-bit integer with saturation.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsConvert_32s16s(const qvr32s* pSrc, qvr16s* pDst, int len);

/**
 * 16-bit integer to double, times 2 to the power of -scaleFactor.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @param scaleFactor any value; it acts as if clamped to -1008..1022
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsConvert_16s64f_Sfs(const qvr16s* pSrc, qvr64f* pDst, int len, int scaleFactor);

/**
 * Single to 16-bit integer: times 2 to the power of -scaleFactor, clamped to -32768..32767, rounded.
 *
 * The factor is a single: it is 0 for a scaleFactor above 149 and infinite below -127. What a NaN becomes is undefined.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @param rndMode qvrRoundTowardZero, qvrRoundNearest, or qvrRoundHalfAway, which any other value means too
 * @param scaleFactor any value
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsConvert_32f16s_Sfs(const qvr32f* pSrc, qvr16s* pDst, int len, int rndMode, int scaleFactor);

/**
 * Double to 16-bit integer, as Morven_qvrsConvert_32f16s_Sfs; scaleFactor acts as if clamped to -1008..1022.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @param rndMode qvrRoundTowardZero, qvrRoundNearest, or qvrRoundHalfAway, which any other value means too
 * @param scaleFactor any value
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsConvert_64f16s_Sfs(const qvr64f* pSrc, qvr16s* pDst, int len, int rndMode, int scaleFactor);

/**
 * pDst[i] = (pSrc[i] - vSub) * (1.0f / vDiv), with the rounded reciprocal.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @param vSub what is subtracted first
 * @param vDiv the divisor
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1; qvrErrDivByZero if the magnitude of `vDiv` is below the
 *     smallest normal single, 1.1754944e-38f
 */
qvrStatus Morven_qvrsNormalize_32f(const qvr32f* pSrc, qvr32f* pDst, int len, qvr32f vSub, qvr32f vDiv);

/**
 * pDst[i] = (pSrc[i] - vSub) * (1.0 / vDiv), with the rounded reciprocal.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @param vSub what is subtracted first
 * @param vDiv the divisor
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1; qvrErrDivByZero if the magnitude of `vDiv` is below the
 *     smallest normal double, 2.2250738585072014e-308
 */
qvrStatus Morven_qvrsNormalize_64f(const qvr64f* pSrc, qvr64f* pDst, int len, qvr64f vSub, qvr64f vDiv);

/**
 * Splits samples that are interleaved by channel into one row of floats per channel, mapped symmetrically on -1..1:
 * ppDst[c][i] = pSrc[c + i * nChannels] * (2 / 65535) + 1 / 65535, product and sum each rounded to single. The middle of
 * the range lies between two samples, so that silence, 0, becomes 1.5259e-5.
 *
 * Checks in order: pSrc, the two counts, ppDst, every row pointer.
 * @param pSrc nChannels * chanLen samples
 * @param ppDst nChannels pointers to rows of chanLen floats, which do not overlap
 * @param nChannels channels, at least 1
 * @param chanLen samples in each channel, at least 1
 * @return qvrErrNullPointer for pSrc; qvrErrBadSize for a count below 1; qvrErrNullPointer for ppDst or a row, with
 *     nothing written
 */
qvrStatus Morven_qvrsSplitScaled_16s32f_D2L(const qvr16s* pSrc, qvr32f** ppDst, int nChannels, int chanLen);

/** @} */

/**
 * @defgroup fixedpoint Fixed-point arithmetic
 *
 * Element-wise on 16-bit and 32-bit integers; every result saturates, none wraps. Statuses: qvrErrNullPointer, then
 * qvrErrBadSize for `len` below 1; there is no other.
 *
 * Scale factor. In the `_Sfs` forms the exact value is divided by 2 to the power of `scaleFactor`, rounded half to even
 * and saturated to the element type: 3 with a factor of 1 gives 2, as does 5. A negative factor multiplies. Every int
 * is a valid factor: one that leaves no bit gives zeros, a large negative one drives whatever is not zero to a limit.
 * @{
 */

/**
 * pDst[i] = (pSrc1[i] + pSrc2[i]) / 2^scaleFactor; all zero above a factor of 16.
 * @param pSrc1 first source, `len` elements
 * @param pSrc2 second source, `len` elements
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @param scaleFactor any value; the result is divided by 2 to its power
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAdd_16s_Sfs(const qvr16s* pSrc1, const qvr16s* pSrc2, qvr16s* pDst, int len, int scaleFactor);

/**
 * pSrcDst[i] = (pSrcDst[i] + pSrc[i]) / 2^scaleFactor; all zero above a factor of 17.
 * @param pSrc source, `len` elements
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @param scaleFactor any value; the result is divided by 2 to its power
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAdd_16u_ISfs(const qvr16u* pSrc, qvr16u* pSrcDst, int len, int scaleFactor);

/**
 * pSrcDst[i] = (pSrcDst[i] + val) / 2^scaleFactor; all zero above a factor of 17.
 * @param val the constant
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @param scaleFactor any value; the result is divided by 2 to its power
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAddC_16u_ISfs(qvr16u val, qvr16u* pSrcDst, int len, int scaleFactor);

/**
 * pSrcDst[i] = max(pSrcDst[i] - val, 0) / 2^scaleFactor; all zero above a factor of 16.
 * @param val the constant
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @param scaleFactor any value; the result is divided by 2 to its power
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSubC_16u_ISfs(qvr16u val, qvr16u* pSrcDst, int len, int scaleFactor);

/**
 * pSrcDst[i] = pSrcDst[i] + pSrc[i], saturated.
 * @param pSrc source, `len` elements
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAdd_16s_I(const qvr16s* pSrc, qvr16s* pSrcDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] - val, saturated.
 * @param val the constant
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSubC_16s_I(qvr16s val, qvr16s* pSrcDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] * val, saturated: an integer product, with no shift.
 * @param val the constant
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMulC_16s_I(qvr16s val, qvr16s* pSrcDst, int len);

/**
 * pSrcDst[i] = |pSrcDst[i]|; -2147483648 gives 2147483647.
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAbs_32s_I(qvr32s* pSrcDst, int len);

/** @} */

/**
 * @defgroup reductions Reductions and statistics
 *
 * An array folded into one value, which is written through a pointer, or into the sums of a sliding window. Statuses:
 * qvrErrNullPointer, then qvrErrBadSize for `len` below 1.
 *
 * Sums of floats are accumulated in double. On processors with no more than SSE2 a mean adds x[4k] and x[4k+2] into one
 * partial sum, x[4k+1] and x[4k+3] into a second, takes the second plus the first, and adds what remains one by one;
 * elsewhere there are more partial sums, so the last bits of a sum can depend on the processor. Integer sums are exact.
 *
 * Extremes follow the plain loop that starts from element 0 and replaces only by what is strictly larger (smaller): a
 * NaN at place 0 is the result, at any other place it is ignored; of zeros with both signs the first one counts.
 * @{
 */

/**
 * Sum of 16-bit integers, scaled.
 *
 * The exact sum is divided by 2 to the power of `scaleFactor`, rounded half to even and saturated to 32 bits; a
 * negative factor multiplies. A factor above 48 gives 0.
 * @param pSrc source, `len` elements
 * @param len elements, at least 1
 * @param pSum receives the sum
 * @param scaleFactor any value; the result is divided by 2 to its power
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSum_16s32s_Sfs(const qvr16s* pSrc, int len, qvr32s* pSum, int scaleFactor);

/**
 * Mean of 16-bit integers, scaled.
 *
 * The exact sum over `len`, in double, times 2 to the power of -scaleFactor, clamped to -32768..32767 and rounded by
 * the caller's MXCSR. The factor is 0 for a `scaleFactor` of 1023 and above and infinite for -1024 and below; a mean of
 * zero stays zero.
 * @param pSrc source, `len` elements
 * @param len elements, at least 1
 * @param pMean receives the mean
 * @param scaleFactor any value; the result is divided by 2 to its power
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMean_16s_Sfs(const qvr16s* pSrc, int len, qvr16s* pMean, int scaleFactor);

/**
 * Mean of 32-bit integers, scaled; in integers throughout and rounded half to even at each step.
 *
 * - scaleFactor 0: the rounded mean.
 * - 1..31: the rounded mean, divided by 2 to the power of the factor and rounded again; above 31: 0.
 * - -31..-1: where the sum fits 32 bits it is multiplied first, then divided by `len` and rounded; where it does not,
 *   the rounded mean is multiplied. Saturated to 32 bits.
 * - below -31: 2147483647 for a positive rounded mean, -2147483648 for a negative one, 0 for zero.
 * @param pSrc source, `len` elements
 * @param len elements, at least 1
 * @param pMean receives the mean
 * @param scaleFactor any value; the result is divided by 2 to its power
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMean_32s_Sfs(const qvr32s* pSrc, int len, qvr32s* pMean, int scaleFactor);

/**
 * Mean: the sum in double over `len`, rounded once to single.
 * @param pSrc source, `len` elements
 * @param len elements, at least 1
 * @param pMean receives the mean
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMean_32f(const qvr32f* pSrc, int len, qvr32f* pMean);

/**
 * Mean: the sum over `len`.
 * @param pSrc source, `len` elements
 * @param len elements, at least 1
 * @param pMean receives the mean
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMean_64f(const qvr64f* pSrc, int len, qvr64f* pMean);

/**
 * Sample standard deviation, by one pass in double: with n = len, s1 the sum of x, s2 the sum of x * x and
 * v = s2 * n - s1 * s1, the result is sqrt(v / ((n - 1) * n)) rounded to single, or 0 where v is not above 0 (a NaN
 * among the elements gives 0). A deviation far below the mean suffers from the cancellation in v: subtract the mean
 * first where that matters.
 * @param pSrc source, `len` elements
 * @param len elements, at least 2
 * @param pStdDev receives the deviation
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 2
 */
qvrStatus Morven_qvrsStdDev_32f(const qvr32f* pSrc, int len, qvr32f* pStdDev);

/**
 * The smallest element.
 * @param pSrc source, `len` elements
 * @param len elements, at least 1
 * @param pResult receives the element
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMin_16s(const qvr16s* pSrc, int len, qvr16s* pResult);

/**
 * The largest element.
 * @param pSrc source, `len` elements
 * @param len elements, at least 1
 * @param pResult receives the element
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMax_16s(const qvr16s* pSrc, int len, qvr16s* pResult);

/**
 * The smallest element.
 * @param pSrc source, `len` elements
 * @param len elements, at least 1
 * @param pResult receives the element
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMin_32f(const qvr32f* pSrc, int len, qvr32f* pResult);

/**
 * The largest element.
 * @param pSrc source, `len` elements
 * @param len elements, at least 1
 * @param pResult receives the element
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMax_32f(const qvr32f* pSrc, int len, qvr32f* pResult);

/**
 * The largest element.
 * @param pSrc source, `len` elements
 * @param len elements, at least 1
 * @param pResult receives the element
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMax_64f(const qvr64f* pSrc, int len, qvr64f* pResult);

/**
 * The smallest and the largest element, in one pass.
 * @param pSrc source, `len` elements
 * @param len elements, at least 1
 * @param pMin receives the smallest element
 * @param pMax receives the largest element
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMinMax_16s(const qvr16s* pSrc, int len, qvr16s* pMin, qvr16s* pMax);

/**
 * The smallest and the largest element, in one pass.
 * @param pSrc source, `len` elements
 * @param len elements, at least 1
 * @param pMin receives the smallest element
 * @param pMax receives the largest element
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMinMax_16u(const qvr16u* pSrc, int len, qvr16u* pMin, qvr16u* pMax);

/**
 * The smallest and the largest element, in one pass.
 * @param pSrc source, `len` elements
 * @param len elements, at least 1
 * @param pMin receives the smallest element
 * @param pMax receives the largest element
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMinMax_32f(const qvr32f* pSrc, int len, qvr32f* pMin, qvr32f* pMax);

/**
 * The smallest element and the first place where it stands.
 * @param pSrc the array
 * @param len elements, at least 1
 * @param pResult its value
 * @param pIndx its index, 0 where element 0 is a NaN; a null pointer is no error: only the value is found then
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMinIndx_32f(const qvr32f* pSrc, int len, qvr32f* pResult, qvr32s* pIndx);

/**
 * The largest element and the first place where it stands, as Morven_qvrsMinIndx_32f.
 * @param pSrc the array
 * @param len elements, at least 1
 * @param pResult its value
 * @param pIndx its index, 0 where element 0 is a NaN; a null pointer is no error: only the value is found then
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMaxIndx_32f(const qvr32f* pSrc, int len, qvr32f* pResult, qvr32s* pIndx);

/**
 * Sums over a sliding window: pDst[i] is the sum of pSrc[i] to pSrc[i + maskSize - 1].
 *
 * The sum is a running one in single precision: from output to output, w + (pSrc[i + maskSize] - pSrc[i]), with the
 * difference taken in integers. While sums stay within 2^24 everything is exact; beyond, rounding errors of one update
 * stay in all later outputs. The first window is summed in single precision too, with partial sums by the width of the
 * processor's vectors.
 * @param pSrc len + maskSize - 1 elements
 * @param pDst `len` sums
 * @param len outputs, at least 1
 * @param maskSize elements in a window
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1; qvrErrBadWindowLength for `maskSize` below 1
 */
qvrStatus Morven_qvrsSumWindow_16s32f(const qvr16s* pSrc, qvr32f* pDst, int len, int maskSize);

/** @} */

/**
 * @defgroup logic Logic, shifts, thresholds, replacement and search
 *
 * Statuses, unless said otherwise: qvrErrNullPointer, then qvrErrBadSize for `len` below 1.
 * @{
 */

/** Which side Morven_qvrsThreshold_32f_I limits. */
enum {
    qvrCmpLess = 0,   /**< what is less than the level is raised to it */
    qvrCmpGreater = 4 /**< what is greater than the level is lowered to it */
};

/**
 * pDst[i] = pSrc[i] & val
 * @param pSrc source, `len` elements
 * @param val the mask
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAndC_16u(const qvr16u* pSrc, qvr16u val, qvr16u* pDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] & val
 * @param val the mask
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAndC_16u_I(qvr16u val, qvr16u* pSrcDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] | pSrc[i]
 * @param pSrc source, `len` elements
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsOr_16u_I(const qvr16u* pSrc, qvr16u* pSrcDst, int len);

/**
 * pDst[i] = pSrc[i] << val, kept to 16 bits; a count of 16 or more gives zeros.
 * @param pSrc source, `len` elements
 * @param val bits to shift by, not negative
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1; qvrErrBadShift for a negative `val`
 */
qvrStatus Morven_qvrsLShiftC_16u(const qvr16u* pSrc, int val, qvr16u* pDst, int len);

/**
 * The same as Morven_qvrsLShiftC_16u in place.
 * @param val bits to shift by, not negative
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1; qvrErrBadShift for a negative `val`
 */
qvrStatus Morven_qvrsLShiftC_16u_I(int val, qvr16u* pSrcDst, int len);

/**
 * pSrcDst[i] = pSrcDst[i] >> val, zeros shifted in; counts and statuses as Morven_qvrsLShiftC_16u.
 * @param val bits to shift by, not negative
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1; qvrErrBadShift for a negative `val`
 */
qvrStatus Morven_qvrsRShiftC_16u_I(int val, qvr16u* pSrcDst, int len);

/**
 * Limits from one side: `level > x ? level : x` for qvrCmpLess, `level < x ? level : x` for qvrCmpGreater. A NaN
 * element stays; a NaN level changes nothing.
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @param level the limit
 * @param relOp qvrCmpLess or qvrCmpGreater
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1; qvrErrBadArgument for any other `relOp`
 */
qvrStatus Morven_qvrsThreshold_32f_I(qvr32f* pSrcDst, int len, qvr32f level, int relOp);

/**
 * pDst[i] = level >= pSrc[i] ? pSrc[i] : value. A NaN element is replaced; a NaN level replaces everything. The
 * in-place form does neither.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @param level the level
 * @param value what replaces an element beyond the level
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsThreshold_GTVal_32f(const qvr32f* pSrc, qvr32f* pDst, int len, qvr32f level, qvr32f value);

/**
 * pSrcDst[i] = pSrcDst[i] > level ? value : pSrcDst[i]. A NaN element stays; a NaN level changes nothing.
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @param level the level
 * @param value what replaces an element beyond the level
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsThreshold_GTVal_32f_I(qvr32f* pSrcDst, int len, qvr32f level, qvr32f value);

/**
 * pDst[i] = pSrc[i] >= level ? pSrc[i] : value. A NaN element is replaced; a NaN level replaces everything. The
 * in-place form does neither.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements; may be the source
 * @param len elements, at least 1
 * @param level the level
 * @param value what replaces an element beyond the level
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsThreshold_LTVal_32f(const qvr32f* pSrc, qvr32f* pDst, int len, qvr32f level, qvr32f value);

/**
 * pSrcDst[i] = level > pSrcDst[i] ? value : pSrcDst[i]. A NaN element stays; a NaN level changes nothing.
 * @param pSrcDst `len` elements, replaced by the results
 * @param len elements, at least 1
 * @param level the level
 * @param value what replaces an element beyond the level
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsThreshold_LTVal_32f_I(qvr32f* pSrcDst, int len, qvr32f level, qvr32f value);

/**
 * pDst[i] = pSrc[i] == oldVal ? newVal : pSrc[i]
 *
 * A `len` of 0 is no error here: qvrOk, and nothing is written.
 * @param pSrc source, `len` elements
 * @param pDst destination, `len` elements; may be the source
 * @param len elements; none is no error
 * @param oldVal the value that is replaced
 * @param newVal the value that replaces it
 * @return qvrErrNullPointer, then qvrErrBadCount for a negative `len`
 */
qvrStatus Morven_qvrsReplaceC_16u(const qvr16u* pSrc, qvr16u* pDst, int len, qvr16u oldVal, qvr16u newVal);

/**
 * The first place where a sequence stands in an array.
 * @param pSrc the array; it may be empty
 * @param len its elements, 0 or more
 * @param pFind the sequence; an empty one is found nowhere
 * @param lenFind its elements, 0 or more
 * @param pIndex the lowest k with pSrc[k + i] == pFind[i] for all i, or -1; left alone after an error
 * @return qvrErrNullPointer, then qvrErrBadCount for a negative `len` or `lenFind`; a sequence not found is qvrOk
 */
qvrStatus Morven_qvrsFind_8u(const qvr8u* pSrc, int len, const qvr8u* pFind, int lenFind, qvr32s* pIndex);

/**
 * The same as Morven_qvrsFind_8u on 16-bit elements.
 * @param pSrc the array; it may be empty
 * @param len its elements, 0 or more
 * @param pFind the sequence; an empty one is found nowhere
 * @param lenFind its elements, 0 or more
 * @param pIndex the lowest k with pSrc[k + i] == pFind[i] for all i, or -1; left alone after an error
 * @return qvrErrNullPointer, then qvrErrBadCount for a negative `len` or `lenFind`; a sequence not found is qvrOk
 */
qvrStatus Morven_qvrsFind_16u(const qvr16u* pSrc, int len, const qvr16u* pFind, int lenFind, qvr32s* pIndex);

/** @} */

/**
 * @defgroup sorting Sorting
 *
 * In place, ascending, without other memory than a small stack, and not stable. Quicksort with the median of three: a
 * sequence made for the purpose takes time quadratic in its length. Statuses: qvrErrNullPointer, then qvrErrBadSize for
 * `len` below 1.
 *
 * Infinities sort as numbers. Zeros of both signs count as equal, and their order among themselves is no promise to
 * build on; neither is any order once there is a NaN, though all elements are still there then. Where NaN can occur and
 * the order matters, or where elements carry a payload, another sort serves better.
 * @{
 */

/**
 * Sorts singles.
 * @param pSrcDst `len` elements, sorted in place
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSortAscend_32f_I(qvr32f* pSrcDst, int len);

/**
 * Sorts doubles.
 * @param pSrcDst `len` elements, sorted in place
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSortAscend_64f_I(qvr64f* pSrcDst, int len);

/** @} */

/**
 * @defgroup waveform Waveform measures and column movers
 * @{
 */

/** What Morven_qvrsZeroCrossing_32f counts as a crossing between neighbours. */
enum {
    qvrZcProduct = 0, /**< their product, rounded to single, is below 0 */
    qvrZcSignBit = 1, /**< their sign bits differ, those of zeros and NaN too */
    qvrZcSignStep = 2 /**< half the step between their signs -1, 0, +1; a NaN has the sign 0 */
};

/**
 * Half the sum of the steps between the signs of neighbours: from + to - counts 1, to or from a zero 0.5.
 *
 * A zero of either sign has the sign 0, a NaN counts as positive. The sum is kept in single precision, so beyond 2^24
 * it no longer counts exactly.
 * @param pSrc the array; a single element gives 0
 * @param len elements, at least 1
 * @param pResult the rate
 * @return qvrErrNullPointer, then qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsSignChangeRate_Count0_32f(const qvr32f* pSrc, int len, qvr32f* pResult);

/**
 * Crossings of zero between neighbouring elements, by one of three definitions.
 * @param pSrc the array
 * @param len elements; fewer than two, a negative number too, give 0
 * @param pResult the count, exact as an integer and then converted (qvrZcSignStep: times 0.5)
 * @param zcType qvrZcProduct, qvrZcSignBit or qvrZcSignStep
 * @return in order: qvrErrNullPointer; qvrErrBadSize for a `len` of exactly 0; qvrErrBadSelector
 */
qvrStatus Morven_qvrsZeroCrossing_32f(const qvr32f* pSrc, int len, qvr32f* pResult, int zcType);

/**
 * Offset compensation: y = prevValue * factor for the first output, then y * factor + (pSrc[i] - pSrc[i - 1]); at the
 * end *pLast = pSrc[len].
 *
 * The in-place form is another recursion with other results.
 * @param pSrc len + 1 elements: the one behind the last is read, also for a `len` of 1
 * @param pDst `len` outputs; may be pSrc
 * @param len outputs, at least 1
 * @param pLast output alone
 * @param prevValue start of the recursion
 * @param factor its decay; every product and sum is rounded to single
 * @return qvrErrNullPointer, then qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsCompensateOffset_32f(const qvr32f* pSrc, qvr32f* pDst, int len, qvr32f* pLast, qvr32f prevValue,
                                          qvr32f factor);

/**
 * Offset compensation in place, with x the old elements and y the new ones: y[0] = prevValue * factor + (x[0] -
 * *pLast), then y[i] = (x[i] - y[i - 1]) + x[i - 1] * factor; at the end *pLast = x[len - 1].
 * @param pSrcDst `len` elements, replaced by the outputs
 * @param len elements, at least 1
 * @param pLast the sample before the first; receives the last one
 * @param prevValue start of the recursion
 * @param factor its decay; every product and sum is rounded to single
 * @return qvrErrNullPointer, then qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsCompensateOffset_32f_I(qvr32f* pSrcDst, int len, qvr32f* pLast, qvr32f prevValue, qvr32f factor);

/**
 * Judges its arguments and does nothing else: no element is read or written.
 * @param pSrc not read
 * @param pDstPeaks not written
 * @param len 1..65535
 * @param searchSize 1..127
 * @param movingAvgSize 1..127
 * @return in order: qvrErrNullPointer for `pSrc` or `pDstPeaks`; qvrErrBadCount for `len` outside 1..65535;
 *     qvrErrBadSize for `searchSize` or `movingAvgSize` outside 1..127; else qvrOk
 */
qvrStatus Morven_qvrsFindPeaks_32f8u(const qvr32f* pSrc, qvr8u* pDstPeaks, int len, int searchSize, int movingAvgSize);

/**
 * Gathers columns: pDst[r * dstStride + c] = pSrc[r * srcStride + pIndex[c]], row after row. Elements move as bits.
 *
 * An index outside 0..srcCols - 1 ends the call with qvrErrBadSize when its turn comes, in the first row: the columns
 * before it are then already written.
 * @param pSrc rows of `srcCols` elements, `srcStride` elements apart
 * @param srcCols columns of the source
 * @param srcStride elements from one source row to the next
 * @param pDst rows of `dstCols` elements, `dstStride` elements apart
 * @param pIndex `dstCols` source columns
 * @param dstCols columns of the destination
 * @param dstStride elements from one destination row to the next
 * @param rows rows of both
 * @return in order: qvrErrNullPointer; qvrErrBadSize for `srcCols`, `dstCols` or `rows` below 1; qvrErrBadColumns where
 *     there are more columns than the stride; qvrErrBadSize for an index
 */
qvrStatus Morven_qvrsCopyColumn_Indirect_16s_D2(const qvr16s* pSrc, int srcCols, int srcStride, qvr16s* pDst,
                                                const qvr32s* pIndex, int dstCols, int dstStride, int rows);

/**
 * Gathers columns between arrays of row pointers: ppDst[r][c] = ppSrc[r][pIndex[c]], row after row.
 *
 * The indices are not judged: each must lie within the source rows. A null row pointer ends the call with
 * qvrErrNullPointer when its turn comes; the rows before it are then already written.
 * @param ppSrc `rows` pointers to source rows
 * @param srcCols at least 1
 * @param ppDst `rows` pointers to rows of `dstCols` elements
 * @param pIndex `dstCols` source columns
 * @param dstCols columns of the destination
 * @param rows rows of both
 * @return qvrErrNullPointer, then qvrErrBadSize for a count below 1
 */
qvrStatus Morven_qvrsCopyColumn_Indirect_16s_D2L(const qvr16s** ppSrc, int srcCols, qvr16s** ppDst,
                                                 const qvr32s* pIndex, int dstCols, int rows);

/** @} */

/**
 * @defgroup fft Real FFT
 *
 * Transforms of N = 2^order real values to the half spectrum of N/2 + 1 bins and back:
 *
 *     forward   X[k] = sum over n of x[n] exp(-2 pi i k n / N),  k = 0 .. N/2
 *     inverse   the reverse without the factor 1/N: forward and inverse in a row give N x
 *
 * times the factor that the object's flag asks for. A specification object holds all that a length needs. It is
 * created once and then only read: one object serves any number of transforms, from several threads at once too, as
 * long as they do not share a work buffer.
 *
 * CCS layout, N + 2 values: the real and imaginary parts of X[0], X[1], .. X[N/2] in turn; the imaginary parts of
 * X[0] and X[N/2] are 0. A forward transform writes the zeros, an inverse one never reads those two places. At order
 * 0 the spectrum is two values, X[0] and 0, and no more.
 *
 * Work buffer. `pBuffer` may be null: a transform that needs work memory then allocates it for the call. Otherwise it
 * is used from its next 64-byte boundary on. With e the bytes of an element, a buffer of e * 2^order + 64 bytes, and
 * never less than 131136, serves every order; orders up to 6 need none.
 *
 * Aliasing: pSrc and pDst may be one array, which then has N + 2 elements.
 *
 * Threads: in the builds for SSSE3 and SSE4.1 processors, transforms of orders 14 to 18 (32f) and 13 to 17 (64f) run
 * on up to two threads. The result does not depend on their number.
 *
 * Accuracy: docs/fft-accuracy.md gives the measured error of each order.
 * @{
 */

/** What a transform multiplies by. */
enum {
    qvrFftDivFwdByN = 1,  /**< forward by 1/N */
    qvrFftDivInvByN = 2,  /**< inverse by 1/N */
    qvrFftDivBySqrtN = 4, /**< both by 1/sqrt(N); in 32f from the processor's estimate and one Newton step */
    qvrFftNoDiv = 8       /**< neither */
};

/** A wish of the caller; the floating-point transforms do not look at it. */
enum {
    qvrHintNone = 0,    /**< no wish */
    qvrHintFast = 1,    /**< speed before accuracy */
    qvrHintAccurate = 2 /**< accuracy before speed */
};

typedef struct qvrsFFTSpec_R_32f qvrsFFTSpec_R_32f; /**< prepared real transform, single precision */
typedef struct qvrsFFTSpec_R_64f qvrsFFTSpec_R_64f; /**< prepared real transform, double precision */

/**
 * Creates the specification object of a length.
 *
 * Checks in order: ppSpec null (qvrErrNullPointer), order outside 0..30 (qvrErrFFTOrder), flag (qvrErrFFTFlag), order
 * above the largest (qvrErrFFTOrder):
 *
 *     processor's level              32f   64f
 *     SSE2                            28    27
 *     SSSE3 with MOVBE, no SSE4.1     29    27
 *     all others                      29    28
 *
 * @param ppSpec receives the object; untouched after an error. Release it with Morven_qvrsFFTFree_R_32f.
 * @param order log2 of the length
 * @param flag qvrFftDivFwdByN, qvrFftDivInvByN, qvrFftDivBySqrtN or qvrFftNoDiv
 * @param hint any value
 * @return qvrErrNullPointer; qvrErrFFTOrder; qvrErrFFTFlag; qvrErrNoMemory if memory could not be had
 */
qvrStatus Morven_qvrsFFTInitAlloc_R_32f(qvrsFFTSpec_R_32f** ppSpec, int order, int flag, int hint);

/**
 * Creates the specification object of a length in double precision, as Morven_qvrsFFTInitAlloc_R_32f.
 * @param ppSpec receives the object; untouched after an error. Release it with Morven_qvrsFFTFree_R_64f.
 * @param order log2 of the length
 * @param flag qvrFftDivFwdByN, qvrFftDivInvByN, qvrFftDivBySqrtN or qvrFftNoDiv
 * @param hint any value
 * @return qvrErrNullPointer; qvrErrFFTOrder; qvrErrFFTFlag; qvrErrNoMemory if memory could not be had
 */
qvrStatus Morven_qvrsFFTInitAlloc_R_64f(qvrsFFTSpec_R_64f** ppSpec, int order, int flag, int hint);

/**
 * Releases an object of Morven_qvrsFFTInitAlloc_R_32f.
 * @param pSpec the object; not to be used afterwards
 * @return qvrErrNullPointer for null, qvrErrBadContext for anything but such an object
 */
qvrStatus Morven_qvrsFFTFree_R_32f(qvrsFFTSpec_R_32f* pSpec);

/**
 * Releases an object of Morven_qvrsFFTInitAlloc_R_64f.
 * @param pSpec the object; not to be used afterwards
 * @return qvrErrNullPointer for null, qvrErrBadContext for anything but such an object
 */
qvrStatus Morven_qvrsFFTFree_R_64f(qvrsFFTSpec_R_64f* pSpec);

/**
 * Real values to their half spectrum.
 *
 * Checks in order: pSpec null (qvrErrNullPointer), its kind (qvrErrBadContext), pSrc or pDst null (qvrErrNullPointer).
 * @param pSrc N values
 * @param pDst the spectrum, N + 2 values (2 at order 0)
 * @param pSpec the object
 * @param pBuffer work buffer or null
 * @return qvrErrNullPointer for pSpec; qvrErrBadContext for no such object; qvrErrNullPointer; qvrErrNoMemory if work
 *     memory could not be had, with nothing written
 */
qvrStatus Morven_qvrsFFTFwd_RToCCS_32f(const qvr32f* pSrc, qvr32f* pDst, const qvrsFFTSpec_R_32f* pSpec,
                                       qvr8u* pBuffer);

/**
 * Real values to their half spectrum in double precision, as Morven_qvrsFFTFwd_RToCCS_32f.
 * @param pSrc N values
 * @param pDst the spectrum, N + 2 values (2 at order 0)
 * @param pSpec the object
 * @param pBuffer work buffer or null
 * @return qvrErrNullPointer for pSpec; qvrErrBadContext for no such object; qvrErrNullPointer; qvrErrNoMemory if work
 *     memory could not be had, with nothing written
 */
qvrStatus Morven_qvrsFFTFwd_RToCCS_64f(const qvr64f* pSrc, qvr64f* pDst, const qvrsFFTSpec_R_64f* pSpec,
                                       qvr8u* pBuffer);

/**
 * Half spectrum to real values.
 *
 * Checks as in Morven_qvrsFFTFwd_RToCCS_32f.
 * @param pSrc the spectrum, N + 2 values, of which index 1 and N + 1 are not read
 * @param pDst N values; nothing behind them is written
 * @param pSpec the object
 * @param pBuffer work buffer or null
 * @return qvrErrNullPointer for pSpec; qvrErrBadContext for no such object; qvrErrNullPointer; qvrErrNoMemory if work
 *     memory could not be had, with nothing written
 */
qvrStatus Morven_qvrsFFTInv_CCSToR_32f(const qvr32f* pSrc, qvr32f* pDst, const qvrsFFTSpec_R_32f* pSpec,
                                       qvr8u* pBuffer);

/**
 * Half spectrum to real values in double precision, as Morven_qvrsFFTInv_CCSToR_32f.
 * @param pSrc the spectrum, N + 2 values, of which index 1 and N + 1 are not read
 * @param pDst N values; nothing behind them is written
 * @param pSpec the object
 * @param pBuffer work buffer or null
 * @return qvrErrNullPointer for pSpec; qvrErrBadContext for no such object; qvrErrNullPointer; qvrErrNoMemory if work
 *     memory could not be had, with nothing written
 */
qvrStatus Morven_qvrsFFTInv_CCSToR_64f(const qvr64f* pSrc, qvr64f* pDst, const qvrsFFTSpec_R_64f* pSpec,
                                       qvr8u* pBuffer);

/** @} */

/**
 * @defgroup fixedfft Fixed-point real FFT
 *
 * The forward transform of N = 2^order 16-bit samples to a 16-bit CCS spectrum of N + 2 values, laid out as in the real
 * FFT: Re X[0], 0, Re X[1], Im X[1], .. Re X[N/2], 0. The result is
 *
 *     X[k] * f * 2^-scaleFactor, rounded and saturated to -32768 .. 32767
 *
 * with f = 1 (qvrFftNoDiv, qvrFftDivInvByN), 1/N (qvrFftDivFwdByN) or 1/sqrt(N) (qvrFftDivBySqrtN). At order 0 there
 * are two values: the scaled sample, and 0.
 *
 * The object's method is fixed when it is created. Short orders (below 4; below 9 in the SSE2 build) with the hint
 * qvrHintNone or qvrHintFast run in integers with 14-bit twiddles, and round half up. All others go through the
 * transform in single precision and round to nearest, a tie to even.
 *
 * Work buffer. `pBuffer` may be null: the transform then allocates for the call. Otherwise it is used from its next
 * 64-byte boundary on, and 8 * N + 256 bytes, and never less than 4 * N + 131328, serve every object.
 * @{
 */

typedef struct qvrsFFTSpec_R_16s qvrsFFTSpec_R_16s; /**< prepared fixed-point transform */

/**
 * Creates the specification object of a length.
 *
 * Checks in order: ppSpec null (qvrErrNullPointer), order outside 0..30 (qvrErrFFTOrder), flag (qvrErrFFTFlag), order
 * above the largest of the transform in single precision (qvrErrFFTOrder).
 * @param ppSpec receives the object; untouched after an error. Release it with Morven_qvrsFFTFree_R_16s.
 * @param order log2 of the length
 * @param flag qvrFftDivFwdByN, qvrFftDivInvByN, qvrFftDivBySqrtN or qvrFftNoDiv
 * @param hint qvrHintAccurate asks for the transform in single precision at every order
 * @return qvrErrNullPointer; qvrErrFFTOrder; qvrErrFFTFlag; qvrErrNoMemory if memory could not be had, or a size would
 *     pass 2^31 - 1 bytes (from order 29 on)
 */
qvrStatus Morven_qvrsFFTInitAlloc_R_16s(qvrsFFTSpec_R_16s** ppSpec, int order, int flag, int hint);

/**
 * 16-bit samples to their half spectrum.
 *
 * Checks in order: pSpec null (qvrErrNullPointer), its kind (qvrErrBadContext), pSrc or pDst null (qvrErrNullPointer).
 * @param pSrc N samples
 * @param pDst the spectrum, N + 2 values (2 at order 0); may be pSrc
 * @param pSpec the object
 * @param scaleFactor any value; a negative one scales up
 * @param pBuffer work buffer or null
 * @return qvrErrNullPointer for pSpec; qvrErrBadContext for no such object; qvrErrNullPointer; qvrErrNoMemory if work
 *     memory could not be had, with nothing written
 */
qvrStatus Morven_qvrsFFTFwd_RToCCS_16s_Sfs(const qvr16s* pSrc, qvr16s* pDst, const qvrsFFTSpec_R_16s* pSpec,
                                           int scaleFactor, qvr8u* pBuffer);

/**
 * Releases an object of Morven_qvrsFFTInitAlloc_R_16s.
 * @param pSpec the object; not to be used afterwards
 * @return qvrErrNullPointer for null, qvrErrBadContext for anything but such an object
 */
qvrStatus Morven_qvrsFFTFree_R_16s(qvrsFFTSpec_R_16s* pSpec);

/** @} */

/**
 * @defgroup hilbert Hilbert transform
 *
 * The analytic signal of a real block of any length: the real part is the input, the imaginary part its Hilbert
 * transform, both up to rounding. It is made in the frequency domain, so the block counts as one period of a periodic
 * signal: positive frequencies are doubled, negative ones removed, the mean and (of an even length) the frequency of
 * half the sampling rate kept. Lengths 1 and 2 give the input with imaginary part 0.
 *
 * Any length below 2^26 works. Lengths whose prime factors are small are fastest; one with a prime factor above 75 costs
 * three to six times as much.
 *
 * A state is not changed by transforms: one state serves several threads at once.
 * @{
 */

typedef struct qvrsHilbertState_32f32fc qvrsHilbertState_32f32fc; /**< prepared Hilbert transform of one length */

/**
 * Creates the state of a block length.
 * @param ppState receives the state; untouched after an error. Release it with Morven_qvrsHilbertFree_32f32fc.
 * @param len samples in a block, at least 1
 * @param hint any value
 * @return in order: qvrErrNullPointer, qvrErrBadSize for a length below 1. Then qvrErrFFTOrder for a power of two of
 *     2^29 and more (2^28 in the SSE2 build), qvrErrBadSize for other lengths above 2^27 - 1 and for those from 2^26 on
 *     with a prime factor above 75, qvrErrNoMemory at once for lengths of small factors whose work memory would pass
 *     2^31 - 1 bytes, such as 2 * 5^11, and if the tables could not be had. Failure to get the few bytes of the state
 *     itself is not caught.
 */
qvrStatus Morven_qvrsHilbertInitAlloc_32f32fc(qvrsHilbertState_32f32fc** ppState, int len, int hint);

/**
 * The analytic signal of one block.
 * @param pSrc len samples
 * @param pDst len complex values; does not overlap pSrc
 * @param pState the state
 * @return in order: qvrErrNullPointer, qvrErrBadContext, qvrErrNoMemory if work memory could not be had; nothing is
 *     written then
 */
qvrStatus Morven_qvrsHilbert_32f32fc(const qvr32f* pSrc, qvr32fc* pDst, qvrsHilbertState_32f32fc* pState);

/**
 * Releases a state.
 * @param pState the state; not to be used afterwards
 * @return qvrErrNullPointer, qvrErrBadContext
 */
qvrStatus Morven_qvrsHilbertFree_32f32fc(qvrsHilbertState_32f32fc* pState);

/** @} */

/**
 * @defgroup convolution Convolution and correlation
 *
 * Sums of products of two signals at every shift, none of them normalised. Each function chooses by the sizes between
 * plain sums in single precision and products of spectra; a spectrum's rounding error follows the largest results, a
 * plain sum's the terms of each result. Infinities and NaNs stay with the results that they belong to in plain sums
 * only. pDst does not overlap the sources; the sources may be one array.
 *
 * Statuses in order, if nothing else is told: qvrErrNullPointer, qvrErrBadSize for a length below 1, qvrErrNoMemory
 * with nothing written.
 * @{
 */

/**
 * Linear convolution: pDst[n] = sum over k of pSrc1[k] * pSrc2[n - k], n = 0 .. len1 + len2 - 2.
 *
 * With S the shorter and L the longer length and D = len1 + len2 - 1 results, plain sums are taken if D < 512 or S < 64
 * (150 and 32 in the SSE2 build); each then adds its terms to 0 in the order of the shorter source. Else, from L = 3 S
 * on, the longer source goes through in blocks, which for L above 4096 run on all threads that the OpenMP runtime
 * allowed when the library was loaded, as far as there are blocks and memory for them; the result does not depend on
 * their number.
 * @param pSrc1 first signal
 * @param len1 its length, at least 1
 * @param pSrc2 second signal
 * @param len2 its length, at least 1
 * @param pDst len1 + len2 - 1 values
 * @return qvrErrNullPointer; qvrErrBadSize for a length below 1; qvrErrNoMemory with nothing written, and at once where
 *     spectra would take more than 2^31 - 1 bytes: from L = 3 S on if S is above 2^25, below that if D is above 2^27
 */
qvrStatus Morven_qvrsConv_32f(const qvr32f* pSrc1, int len1, const qvr32f* pSrc2, int len2, qvr32f* pDst);

/**
 * A stretch of a convolution: pDst[n] = sum for k = 0 .. len1 - 1 of pSrc1[k] * pSrc2[n - k], n = 0 .. dstLen - 1, by
 * plain sums.
 *
 * pSrc2 points `bias` elements into a buffer of len2 elements, so that pSrc2[-bias] is its first one; terms whose
 * element lies outside of that buffer are left out. A bias below 0 means a buffer that begins behind pSrc2. Where no
 * term is left out, and where len1 = len2 = dstLen with a bias of 0, the terms of a result go in groups of eight into
 * eight partial sums, but for a few small shapes.
 * @param pSrc1 taps
 * @param len1 number of taps, at least 1
 * @param pSrc2 element `bias` of the buffer
 * @param len2 elements in the buffer, at least 1
 * @param pDst dstLen values
 * @param dstLen number of results, at least 1
 * @param bias place of pSrc2 in its buffer
 * @return qvrErrNullPointer; qvrErrBadSize for a length below 1
 */
qvrStatus Morven_qvrsConvBiased_32f(const qvr32f* pSrc1, int len1, const qvr32f* pSrc2, int len2, qvr32f* pDst,
                                    int dstLen, int bias);

/**
 * Cyclic convolution of 8 by 8 values: pY[n] = sum for k = 0 .. 7 of pX[k] * pH[(n - k) mod 8], added in the order of
 * k. No argument is checked; the result is always qvrOk.
 * @param pX 8 values
 * @param pH 8 values
 * @param pY receives 8 values
 * @return qvrOk, always
 */
qvrStatus Morven_qvrsConvCyclic8x8_32f(const qvr32f* pX, const qvr32f* pH, qvr32f* pY);

/**
 * Cross-correlation: pDst[n] = sum over k of pSrc1[k] * pSrc2[k + lag], lag = lowLag + n, n = 0 .. dstLen - 1; zero for
 * lags outside 1 - len1 .. len2 - 1.
 *
 * Plain sums are taken while min(len1, len2) * results / max(len1, len2) stays below 384, where results are the lags
 * inside that range.
 * @param pSrc1 first signal
 * @param len1 its length, at least 1
 * @param pSrc2 second signal
 * @param len2 its length, at least 1
 * @param pDst dstLen values
 * @param dstLen number of lags, at least 1
 * @param lowLag first lag, any value
 * @return qvrErrNullPointer; qvrErrBadSize for a length below 1; qvrErrNoMemory with nothing written, and at once where
 *     spectra would take more than 2^31 - 1 bytes: with one length at least three times the other and the first lag
 *     near the overlap's begin if the shorter is above 2^25, otherwise if len1 + len2 - 1 is above 2^27
 */
qvrStatus Morven_qvrsCrossCorr_32f(const qvr32f* pSrc1, int len1, const qvr32f* pSrc2, int len2, qvr32f* pDst,
                                   int dstLen, int lowLag);

/**
 * Autocorrelation: pDst[n] = sum over k of pSrc[k] * pSrc[k + n], n = 0 .. dstLen - 1; zero from n = srcLen on.
 *
 * Plain sums are taken while min(srcLen, dstLen) stays below 856 (600 in the SSE2 build, 1200 in the AVX2 build).
 * @param pSrc the signal
 * @param srcLen its length, at least 1
 * @param pDst dstLen values
 * @param dstLen number of lags, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for a length below 1; qvrErrNoMemory with nothing written, and at once,
 *     where plain sums are not taken, for srcLen above 2^27
 */
qvrStatus Morven_qvrsAutoCorr_32f(const qvr32f* pSrc, int srcLen, qvr32f* pDst, int dstLen);

/** @} */

/**
 * @defgroup wavelet Wavelet transform
 *
 * One level of a two-channel filter bank on a running stream. The filters are the caller's. Both directions keep their
 * history from call to call, so that blocks of any size make the same stream as one long block, up to the last bit; a
 * new state has a history of zeros. A state is used by one thread at a time.
 *
 * Forward. Each channel, with its taps and offset, halves the rate: y[n] = sum over k of taps[k] * x[2n - offset - k].
 * An offset of -1 looks one sample ahead: it takes in the second sample of the pair too.
 *
 * Inverse. Each channel doubles the rate: with u[2n] = y[n] and u[2n + 1] = 0, x[t] = sum over k of
 * taps[k] * u[t - offset - k]; an offset of -1 acts as one of 1. The results of the low channel, rounded to single, and
 * of the high channel are added.
 *
 * Products are rounded to single precision, their sums are taken in double precision.
 *
 * Delay arrays hold the history of one channel, oldest value first: what the filter still looks at, then what waits in
 * the delay of the offset. Forward: lenTaps - 1 + max(offset, 0) values, of which lenTaps - 1 (with an offset of -1:
 * lenTaps - 2) are the filter's and, with an offset of -1, the last one is not used. Inverse: (lenTaps + offset - 1) /
 * 2 values, rounded down, the last offset / 2 of them those of the offset; with -1 the oldest one needed is left out.
 *
 * Statuses of all functions but creation, in order: qvrErrNullPointer for a null state, qvrErrBadContext for anything
 * but a state of that direction, qvrErrNullPointer for another null pointer, qvrErrBadSize for a length below 1.
 * @{
 */

typedef struct qvrsWTFwdState_32f qvrsWTFwdState_32f; /**< forward transform: two filters and their history */
typedef struct qvrsWTInvState_32f qvrsWTInvState_32f; /**< inverse transform: two filters and their history */

/**
 * Creates a forward state.
 *
 * Statuses in order: qvrErrNullPointer for ppState or pTapsLow, qvrErrBadSize for lenLow below 1, qvrErrNullPointer for
 * pTapsHigh, qvrErrBadSize for lenHigh below 1, qvrErrBadOffset for an offset below -1, qvrErrNoMemory.
 * @param ppState receives the state, null after qvrErrNoMemory; release it with Morven_qvrsWTFwdFree_32f
 * @param pTapsLow taps of the low channel
 * @param lenLow number of them, at least 1
 * @param offsLow delay of the low channel in samples, -1 or more
 * @param pTapsHigh taps of the high channel
 * @param lenHigh number of them, at least 1
 * @param offsHigh delay of the high channel in samples, -1 or more
 * @return qvrErrNullPointer for ppState or pTapsLow; qvrErrBadSize for lenLow; qvrErrNullPointer for pTapsHigh;
 *     qvrErrBadSize for lenHigh; qvrErrBadOffset; qvrErrNoMemory
 */
qvrStatus Morven_qvrsWTFwdInitAlloc_32f(qvrsWTFwdState_32f** ppState, const qvr32f* pTapsLow, int lenLow, int offsLow,
                                        const qvr32f* pTapsHigh, int lenHigh, int offsHigh);

/**
 * 2 * dstLen samples to dstLen values of each channel.
 * @param pSrc 2 * dstLen samples
 * @param pDstLow dstLen values of the low channel; no destination overlaps another array
 * @param pDstHigh dstLen values of the high channel
 * @param dstLen values of one channel, at least 1
 * @param pState the state, whose history moves on
 * @return qvrErrNullPointer for a null state; qvrErrBadContext for no state of this direction; qvrErrNullPointer;
 *     qvrErrBadSize for dstLen below 1
 */
qvrStatus Morven_qvrsWTFwd_32f(const qvr32f* pSrc, qvr32f* pDstLow, qvr32f* pDstHigh, int dstLen,
                               qvrsWTFwdState_32f* pState);

/**
 * Sets the history of both channels from their delay arrays.
 * @param pState the state
 * @param pDlyLow delay array of the low channel
 * @param pDlyHigh delay array of the high channel
 * @return qvrErrNullPointer for a null state; qvrErrBadContext for no state of this direction; qvrErrNullPointer
 */
qvrStatus Morven_qvrsWTFwdSetDlyLine_32f(qvrsWTFwdState_32f* pState, const qvr32f* pDlyLow, const qvr32f* pDlyHigh);

/**
 * Writes the history of both channels to their delay arrays.
 * @param pState the state
 * @param pDlyLow delay array of the low channel
 * @param pDlyHigh delay array of the high channel
 * @return qvrErrNullPointer for a null state; qvrErrBadContext for no state of this direction; qvrErrNullPointer
 */
qvrStatus Morven_qvrsWTFwdGetDlyLine_32f(qvrsWTFwdState_32f* pState, qvr32f* pDlyLow, qvr32f* pDlyHigh);

/**
 * Releases a forward state.
 * @param pState the state; not to be used afterwards
 * @return qvrErrNullPointer for a null state; qvrErrBadContext for no state of this direction; qvrErrNullPointer
 */
qvrStatus Morven_qvrsWTFwdFree_32f(qvrsWTFwdState_32f* pState);

/**
 * Creates an inverse state; arguments and statuses as in Morven_qvrsWTFwdInitAlloc_32f.
 * @param ppState receives the state, null after qvrErrNoMemory; release it with Morven_qvrsWTInvFree_32f
 * @param pTapsLow taps of the low channel
 * @param lenLow number of them, at least 1
 * @param offsLow delay of the low channel in samples, -1 or more
 * @param pTapsHigh taps of the high channel
 * @param lenHigh number of them, at least 1
 * @param offsHigh delay of the high channel in samples, -1 or more
 * @return qvrErrNullPointer for ppState or pTapsLow; qvrErrBadSize for lenLow; qvrErrNullPointer for pTapsHigh;
 *     qvrErrBadSize for lenHigh; qvrErrBadOffset; qvrErrNoMemory
 */
qvrStatus Morven_qvrsWTInvInitAlloc_32f(qvrsWTInvState_32f** ppState, const qvr32f* pTapsLow, int lenLow, int offsLow,
                                        const qvr32f* pTapsHigh, int lenHigh, int offsHigh);

/**
 * srcLen values of each channel to 2 * srcLen samples.
 * @param pSrcLow srcLen values of the low channel
 * @param pSrcHigh srcLen values of the high channel
 * @param srcLen values of one channel, at least 1
 * @param pDst 2 * srcLen samples; does not overlap a source
 * @param pState the state, whose history moves on
 * @return qvrErrNullPointer for a null state; qvrErrBadContext for no state of this direction; qvrErrNullPointer;
 *     qvrErrBadSize for srcLen below 1
 */
qvrStatus Morven_qvrsWTInv_32f(const qvr32f* pSrcLow, const qvr32f* pSrcHigh, int srcLen, qvr32f* pDst,
                               qvrsWTInvState_32f* pState);

/**
 * Sets the history of both channels from their delay arrays.
 * @param pState the state
 * @param pDlyLow delay array of the low channel
 * @param pDlyHigh delay array of the high channel
 * @return qvrErrNullPointer for a null state; qvrErrBadContext for no state of this direction; qvrErrNullPointer
 */
qvrStatus Morven_qvrsWTInvSetDlyLine_32f(qvrsWTInvState_32f* pState, const qvr32f* pDlyLow, const qvr32f* pDlyHigh);

/**
 * Writes the history of both channels to their delay arrays.
 * @param pState the state
 * @param pDlyLow delay array of the low channel
 * @param pDlyHigh delay array of the high channel
 * @return qvrErrNullPointer for a null state; qvrErrBadContext for no state of this direction; qvrErrNullPointer
 */
qvrStatus Morven_qvrsWTInvGetDlyLine_32f(qvrsWTInvState_32f* pState, qvr32f* pDlyLow, qvr32f* pDlyHigh);

/**
 * Releases an inverse state.
 * @param pState the state; not to be used afterwards
 * @return qvrErrNullPointer for a null state; qvrErrBadContext for no state of this direction; qvrErrNullPointer
 */
qvrStatus Morven_qvrsWTInvFree_32f(qvrsWTInvState_32f* pState);

/** @} */

/**
 * @defgroup windows Windows
 *
 * In-place multiplication of a signal by a symmetric window of its own length L. With t = 2 pi / (L - 1), the weights
 * for k = 0 .. from either end:
 *
 *     Bartlett     2k / (L - 1)
 *     Hann         0.5 - 0.5 cos(k t)
 *     Hamming      0.54 - 0.46 cos(k t)
 *     BlackmanStd  0.42 - 0.5 cos(k t) + 0.08 cos(2 k t)
 *
 * The weights come from recurrences in double precision; Bartlett's in single precision, except in the SSE2 build.
 * The middle element of an odd length keeps its value bit for bit, whatever it is. Bartlett sets both ends to +0, at
 * length 3 Hann and BlackmanStd do so too; at other lengths their ends are multiplied by a weight of about zero.
 *
 * All functions return qvrErrNullPointer for null and then qvrErrBadSize for `len` below 3.
 * @{
 */

/**
 * Triangle; both ends become +0. Above SSE2 the recurrence in single precision loses with the length: 7e-4 of the weight
 * at a million samples.
 * @param pSrcDst the signal, `len` samples, multiplied in place
 * @param len samples, at least 3
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 3
 */
qvrStatus Morven_qvrsWinBartlett_32f_I(qvr32f* pSrcDst, int len);

/**
 * Hann window, also called raised cosine.
 * @param pSrcDst the signal, `len` samples, multiplied in place
 * @param len samples, at least 3
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 3
 */
qvrStatus Morven_qvrsWinHann_32f_I(qvr32f* pSrcDst, int len);

/**
 * Hamming window; the ends keep 0.08 of their value.
 * @param pSrcDst the signal, `len` samples, multiplied in place
 * @param len samples, at least 3
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 3
 */
qvrStatus Morven_qvrsWinHamming_32f_I(qvr32f* pSrcDst, int len);

/**
 * Hamming window on 16-bit samples. The two ends are truncated toward zero; the others are rounded to nearest by the
 * caller's MXCSR, except in the SSE2 build, which truncates them all.
 * @param pSrcDst the signal, `len` samples, multiplied in place
 * @param len samples, at least 3
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 3
 */
qvrStatus Morven_qvrsWinHamming_16s_I(qvr16s* pSrcDst, int len);

/**
 * Blackman window with the alpha of -0.16. The window of the same name in FIR design is another: its alpha depends on the
 * length.
 * @param pSrcDst the signal, `len` samples, multiplied in place
 * @param len samples, at least 3
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 3
 */
qvrStatus Morven_qvrsWinBlackmanStd_32f_I(qvr32f* pSrcDst, int len);

/** @} */

/**
 * @defgroup iir Recursive (IIR) filters
 *
 * A filter of order L with taps b[0..L] and a[0..L]:
 * y[n] = (sum of b[k] x[n - k] for k = 0..L, minus the sum of a[k] y[n - k] for k = 1..L) / a[0].
 *
 * A state belongs to the caller from creation to release, keeps the delay line from run to run, so that consecutive
 * runs filter one continuous signal, and is used by one thread at a time. A fresh state is the way to start anew.
 * @{
 */

/** A recursive filter with its delay line. */
typedef struct qvrsIIRState_64f qvrsIIRState_64f;

/** Filter types of the design functions. */
enum {
    qvrIirButterworth = 0, /**< flat in the pass band */
    qvrIirChebyshev = 1    /**< Chebyshev type I: ripple in the pass band, steeper beyond it */
};

/**
 * Creates a recursive filter of any order.
 * @param statePtr receives the state; release it with Morven_qvrsIIRFree_64f
 * @param taps 2 * (order + 1) doubles: b[0] .. b[order], then a[0] .. a[order]; all are divided by a[0]
 * @param order L, at least 1
 * @param dlyLine L doubles, null for zeros: the start of the delay line in the transposed form. Element k is what past
 *     samples owe the output k samples on, the sum for j = k + 1 .. L of (b[j] x[k - j] - a[j] y[k - j]) / a[0], with
 *     x[-1] and y[-1] the newest past sample and output; it is not a list of past samples
 * @return qvrErrNullPointer for null taps or statePtr; qvrErrBadOrder for an order below 1; qvrErrNoMemory, also when
 *     the state would pass 2^31 - 1 bytes; qvrErrDivByZero if a[0] is zero, in which case nothing stays allocated and
 *     *statePtr is not to be used
 */
qvrStatus Morven_qvrsIIRInitAlloc_64f(qvrsIIRState_64f** statePtr, const qvr64f* taps, int order,
                                      const qvr64f* dlyLine);

/**
 * Filters numIters samples.
 *
 * Runs of 24 and of more than 4 * order samples use a block form on processors with SSE3, in chunks of up to 1024. It
 * agrees with the sample-by-sample form up to rounding, and its error stays within a few times that form's, poles close
 * to the circle or not. Instability is not detected.
 * @param src samples
 * @param dst results; may be src
 * @param numIters samples, at least 1
 * @param state the filter, whose delay line is carried on
 * @return qvrErrNullPointer, qvrErrBadSize, then qvrErrBadContext for an object that is no recursive filter
 */
qvrStatus Morven_qvrsIIR_64f(const qvr64f* src, qvr64f* dst, int numIters, qvrsIIRState_64f* state);

/**
 * Releases a recursive filter.
 * @param state the filter; not to be used afterwards
 * @return qvrErrNullPointer, qvrErrBadContext
 */
qvrStatus Morven_qvrsIIRFree_64f(qvrsIIRState_64f* state);

/**
 * Designs a low-pass filter in the taps layout of Morven_qvrsIIRInitAlloc_64f, with a[0] = 1.
 * @param order 1..12
 * @param taps receives 2 * (order + 1) doubles
 * @param filterType qvrIirButterworth or qvrIirChebyshev; with any other value the function returns qvrOk and writes
 *     nothing
 * @param rFreq cut-off as a fraction of the sampling rate, in (0, 0.5): 3 dB down for Butterworth, the end of the
 *     ripple for Chebyshev
 * @param rippleDb pass-band ripple in decibels, in (0, 29]; Chebyshev only
 * @return in order: qvrErrNullPointer, qvrErrBadCutoff, qvrErrBadFilterOrder, qvrErrBadRipple
 */
qvrStatus Morven_qvrsIIRGenLowpass_64f(int order, qvr64f* taps, int filterType, qvr64f rFreq, qvr64f rippleDb);

/**
 * Designs a high-pass filter; otherwise as Morven_qvrsIIRGenLowpass_64f.
 * @param order 1..12
 * @param taps receives 2 * (order + 1) doubles
 * @param filterType qvrIirButterworth or qvrIirChebyshev; with any other value the function returns qvrOk and writes
 *     nothing
 * @param rFreq cut-off as a fraction of the sampling rate, in (0, 0.5): 3 dB down for Butterworth, the end of the
 *     ripple for Chebyshev
 * @param rippleDb pass-band ripple in decibels, in (0, 29]; Chebyshev only
 * @return in order: qvrErrNullPointer, qvrErrBadCutoff, qvrErrBadFilterOrder, qvrErrBadRipple
 */
qvrStatus Morven_qvrsIIRGenHighpass_64f(int order, qvr64f* taps, int filterType, qvr64f rFreq, qvr64f rippleDb);

/** @} */

/**
 * @defgroup fir FIR filters
 *
 * y[n] = sum of taps[k] x[n - k] for k = 0 .. tapsLen - 1.
 *
 * A state belongs to the caller from creation to release, keeps its own copy of the taps and the newest samples, so that
 * consecutive runs filter one continuous signal, and is used by one thread at a time. There are four kinds, by the type
 * of the taps, in which all sums are made, and of the samples: 32f and 32f, 64f and 64f, 64f and 32f, 64f and 16s.
 *
 * Long filters. From 64 taps on a state also has a transform plan (with 64f taps from 32 on, on processors without
 * SSSE3), and long runs go by overlap-save through blocks of 2 to 4 times tapsLen. Both paths give the same samples up
 * to rounding and leave the same delay line. Out of place, and for 64f taps with 32f or 16s samples in place too, runs of
 * 512 samples and more go through the transform. In place in one type a run is cut into chunks of 4096 samples, 4224 on
 * processors with AVX, and a chunk goes through the transform if 512 samples or more follow it.
 *
 * Rounding. The order of the additions in a sum is not fixed, and products may be fused with additions. On one
 * processor with SSE3 the direct path gives the same bits however a signal is cut into runs. A NaN or an infinity enters
 * the outputs whose sums it belongs to; on the transform path it enters all outputs of its block.
 *
 * Threads. From 1601 samples on a run may use as many threads as the OpenMP runtime allowed when the library was loaded:
 * on the transform path always, on the direct path but for the 32f form on processors with AVX. A state is made for the
 * number of threads at its creation, or for as many as 2^31 - 1 bytes hold. On processors without SSE3 the last bits of
 * direct results depend on the number of threads and on the addresses of the arrays.
 * @{
 */

/** A FIR filter with 32f taps for 32f samples. */
typedef struct qvrsFIRState_32f qvrsFIRState_32f;
/** A FIR filter with 64f taps for 64f samples. */
typedef struct qvrsFIRState_64f qvrsFIRState_64f;
/** A FIR filter with 64f taps for 32f samples. */
typedef struct qvrsFIRState64f_32f qvrsFIRState64f_32f;
/** A FIR filter with 64f taps for 16s samples. */
typedef struct qvrsFIRState64f_16s qvrsFIRState64f_16s;

/**
 * Creates a FIR filter.
 * @param statePtr receives the state; release it with Morven_qvrsFIRFree_32f
 * @param taps tapsLen taps, which are copied
 * @param tapsLen number of taps, at least 1
 * @param dlyLine tapsLen past samples, the newest first: dlyLine[k] is x[-1 - k]; the last one influences no output.
 *     Null for zeros
 * @return qvrErrNullPointer for null statePtr or taps; qvrErrBadTapsLen; qvrErrNoMemory, also when the state would pass
 *     2^31 - 1 bytes; here qvrErrNullPointer too when the transform plan cannot be had. After an error nothing stays
 *     allocated, and *statePtr is not to be used
 */
qvrStatus Morven_qvrsFIRInitAlloc_32f(qvrsFIRState_32f** statePtr, const qvr32f* taps, int tapsLen,
                                      const qvr32f* dlyLine);

/**
 * Creates a FIR filter, as Morven_qvrsFIRInitAlloc_32f; qvrErrNullPointer stands for null arguments alone.
 * @param statePtr receives the state; release it with Morven_qvrsFIRFree_64f
 * @param taps tapsLen taps, which are copied
 * @param tapsLen number of taps, at least 1
 * @param dlyLine tapsLen past samples, the newest first: dlyLine[k] is x[-1 - k]; the last one influences no output.
 *     Null for zeros
 * @return qvrErrNullPointer for null statePtr or taps; qvrErrBadTapsLen; qvrErrNoMemory, also when the state would pass
 *     2^31 - 1 bytes. After an error nothing stays allocated, and *statePtr is not to be used
 */
qvrStatus Morven_qvrsFIRInitAlloc_64f(qvrsFIRState_64f** statePtr, const qvr64f* taps, int tapsLen,
                                      const qvr64f* dlyLine);

/**
 * Creates a FIR filter, as Morven_qvrsFIRInitAlloc_64f.
 * @param statePtr receives the state; release it with Morven_qvrsFIRFree_64f
 * @param taps tapsLen taps, which are copied
 * @param tapsLen number of taps, at least 1
 * @param dlyLine tapsLen past samples, the newest first: dlyLine[k] is x[-1 - k]; the last one influences no output.
 *     Null for zeros
 * @return qvrErrNullPointer for null statePtr or taps; qvrErrBadTapsLen; qvrErrNoMemory, also when the state would pass
 *     2^31 - 1 bytes. After an error nothing stays allocated, and *statePtr is not to be used
 */
qvrStatus Morven_qvrsFIRInitAlloc64f_32f(qvrsFIRState64f_32f** statePtr, const qvr64f* taps, int tapsLen,
                                         const qvr32f* dlyLine);

/**
 * Creates a FIR filter, as Morven_qvrsFIRInitAlloc_64f.
 * @param statePtr receives the state; release it with Morven_qvrsFIRFree_64f
 * @param taps tapsLen taps, which are copied
 * @param tapsLen number of taps, at least 1
 * @param dlyLine tapsLen past samples, the newest first: dlyLine[k] is x[-1 - k]; the last one influences no output.
 *     Null for zeros
 * @return qvrErrNullPointer for null statePtr or taps; qvrErrBadTapsLen; qvrErrNoMemory, also when the state would pass
 *     2^31 - 1 bytes. After an error nothing stays allocated, and *statePtr is not to be used
 */
qvrStatus Morven_qvrsFIRInitAlloc64f_16s(qvrsFIRState64f_16s** statePtr, const qvr64f* taps, int tapsLen,
                                         const qvr16s* dlyLine);

/**
 * Releases a FIR filter.
 * @param state the filter; not to be used afterwards
 * @return qvrErrNullPointer; qvrErrBadContext for an object of another kind
 */
qvrStatus Morven_qvrsFIRFree_32f(qvrsFIRState_32f* state);

/**
 * Releases a FIR filter, as Morven_qvrsFIRFree_32f.
 * @param state the filter; not to be used afterwards
 * @return qvrErrNullPointer; qvrErrBadContext for an object of another kind
 */
qvrStatus Morven_qvrsFIRFree_64f(qvrsFIRState_64f* state);

/**
 * Releases a FIR filter, as Morven_qvrsFIRFree_32f.
 * @param state the filter; not to be used afterwards
 * @return qvrErrNullPointer; qvrErrBadContext for an object of another kind
 */
qvrStatus Morven_qvrsFIRFree64f_32f(qvrsFIRState64f_32f* state);

/**
 * Releases a FIR filter, as Morven_qvrsFIRFree_32f.
 * @param state the filter; not to be used afterwards
 * @return qvrErrNullPointer; qvrErrBadContext for an object of another kind
 */
qvrStatus Morven_qvrsFIRFree64f_16s(qvrsFIRState64f_16s* state);

/**
 * Filters numIters samples.
 * @param src samples
 * @param dst results; may be src
 * @param numIters samples, at least 1
 * @param state the filter, whose delay line is carried on
 * @return qvrErrNullPointer, qvrErrBadSize, then qvrErrBadContext for an object of another kind; with none of them has
 *     the state changed
 */
qvrStatus Morven_qvrsFIR_32f(const qvr32f* src, qvr32f* dst, int numIters, qvrsFIRState_32f* state);

/**
 * Filters numIters samples, as Morven_qvrsFIR_32f.
 * @param src samples
 * @param dst results; may be src
 * @param numIters samples, at least 1
 * @param state the filter, whose delay line is carried on
 * @return qvrErrNullPointer, qvrErrBadSize, then qvrErrBadContext for an object of another kind; with none of them has
 *     the state changed
 */
qvrStatus Morven_qvrsFIR_64f(const qvr64f* src, qvr64f* dst, int numIters, qvrsFIRState_64f* state);

/**
 * Filters numIters samples, as Morven_qvrsFIR_32f. Results beyond the range of a float become the largest one.
 * @param src samples
 * @param dst results; may be src
 * @param numIters samples, at least 1
 * @param state the filter, whose delay line is carried on
 * @return qvrErrNullPointer, qvrErrBadSize, then qvrErrBadContext for an object of another kind; with none of them has
 *     the state changed
 */
qvrStatus Morven_qvrsFIR64f_32f(const qvr32f* src, qvr32f* dst, int numIters, qvrsFIRState64f_32f* state);

/**
 * Filters numIters samples, as Morven_qvrsFIR_32f.
 *
 * A sum is multiplied by 2 to the power of -scaleFactor, saturated to 16 bits and rounded half away from zero, by adding
 * 0.5 or -0.5 and dropping the fraction. A NaN gives 0.
 * @param src samples
 * @param dst results; may be src
 * @param numIters samples, at least 1
 * @param state the filter, whose delay line is carried on
 * @param scaleFactor its magnitude counts modulo 128
 * @return qvrErrNullPointer, qvrErrBadSize, then qvrErrBadContext for an object of another kind; with none of them has
 *     the state changed
 */
qvrStatus Morven_qvrsFIR64f_16s_Sfs(const qvr16s* src, qvr16s* dst, int numIters, qvrsFIRState64f_16s* state,
                                    int scaleFactor);

/**
 * Writes the filter's tapsLen taps in their original order.
 * @param state the filter
 * @param taps receives tapsLen taps
 * @return qvrErrNullPointer, qvrErrBadContext
 */
qvrStatus Morven_qvrsFIRGetTaps_32f(const qvrsFIRState_32f* state, qvr32f* taps);

/**
 * Writes the delay line, tapsLen past samples with the newest first.
 * @param state the filter
 * @param dlyLine receives tapsLen samples
 * @return qvrErrNullPointer, then qvrErrBadContext for an object of another kind
 */
qvrStatus Morven_qvrsFIRGetDlyLine_32f(const qvrsFIRState_32f* state, qvr32f* dlyLine);

/**
 * Writes the delay line, as Morven_qvrsFIRGetDlyLine_32f.
 * @param state the filter
 * @param dlyLine receives tapsLen samples
 * @return qvrErrNullPointer, then qvrErrBadContext for an object of another kind
 */
qvrStatus Morven_qvrsFIRGetDlyLine_64f(const qvrsFIRState_64f* state, qvr64f* dlyLine);

/**
 * Writes the delay line, as Morven_qvrsFIRGetDlyLine_32f.
 * @param state the filter
 * @param dlyLine receives tapsLen samples
 * @return qvrErrNullPointer, then qvrErrBadContext for an object of another kind
 */
qvrStatus Morven_qvrsFIRGetDlyLine64f_32f(const qvrsFIRState64f_32f* state, qvr32f* dlyLine);

/**
 * Replaces the delay line, as after creation.
 * @param state the filter
 * @param dlyLine tapsLen past samples with the newest first, or null for zeros
 * @return qvrErrNullPointer for a null state, then qvrErrBadContext for an object of another kind
 */
qvrStatus Morven_qvrsFIRSetDlyLine_32f(qvrsFIRState_32f* state, const qvr32f* dlyLine);

/**
 * Replaces the delay line, as Morven_qvrsFIRSetDlyLine_32f.
 * @param state the filter
 * @param dlyLine tapsLen past samples with the newest first, or null for zeros
 * @return qvrErrNullPointer for a null state, then qvrErrBadContext for an object of another kind
 */
qvrStatus Morven_qvrsFIRSetDlyLine_64f(qvrsFIRState_64f* state, const qvr64f* dlyLine);

/**
 * Replaces the delay line, as Morven_qvrsFIRSetDlyLine_32f.
 * @param state the filter
 * @param dlyLine tapsLen past samples with the newest first, or null for zeros
 * @return qvrErrNullPointer for a null state, then qvrErrBadContext for an object of another kind
 */
qvrStatus Morven_qvrsFIRSetDlyLine64f_32f(qvrsFIRState64f_32f* state, const qvr32f* dlyLine);

/** @} */

/**
 * @defgroup firmr Multi-rate FIR in one call
 *
 * Filters and changes the sample rate by upFactor / downFactor without a state. Time runs on a grid on which an input
 * sample enters every upFactor steps, the first at step upPhase, and an output falls every downFactor steps, the first at
 * step downPhase. An output at a step whose newest sample is number k and entered q steps before is the sum of
 * taps[q + m * upFactor] x[k - m] for m from 0 on, as long as there are taps. With a stream of taps for the high rate
 * that is: stuff upFactor - 1 zeros behind each sample, filter, keep every downFactor-th.
 *
 * - src holds numIters * downFactor samples, dst takes numIters * upFactor; they do not overlap.
 * - dlyLine holds the past samples, the newest first, x[-1 - m] in dlyLine[m], and after the call those of its end;
 *   tapsLen / upFactor of them, rounded up. The same phases continue a signal in the next call.
 * - Statuses in order: qvrErrNullPointer for src or dst; qvrErrBadSize for numIters below 1; qvrErrNullPointer for taps;
 *   qvrErrBadTapsLen for tapsLen below 1; qvrErrBadMultiRateFactor for a factor below 1; qvrErrBadMultiRatePhase for a
 *   phase outside 0 .. factor - 1; qvrErrNullPointer for dlyLine. After an error neither dst nor dlyLine has changed.
 * - The caller's thread does all the work.
 * @{
 */

/**
 * Multi-rate FIR of 16-bit samples with 32f taps; sums are 32f.
 *
 * A sum of eight terms and more adds terms 8i to 8i + 3 into the four lanes of one accumulator and terms 8i + 4 to
 * 8i + 7 into those of another, adds the two, lanes 2 and 3 to 0 and 1, lane 1 to 0, and then the remaining terms one by
 * one. It is multiplied by 2 to the power of -scaleFactor in 32f, saturated to 16 bits and rounded half away from zero,
 * by adding 0.5 or -0.5 in 64f and dropping the fraction. A NaN gives 0.
 * @param src numIters * downFactor samples
 * @param dst numIters * upFactor outputs; does not overlap src
 * @param numIters iterations, at least 1: each takes downFactor samples and gives upFactor outputs
 * @param taps taps for the high rate
 * @param tapsLen number of taps, at least 1
 * @param upFactor at least 1
 * @param upPhase 0..upFactor - 1: the step of the first sample
 * @param downFactor at least 1
 * @param downPhase 0..downFactor - 1: the step of the first output
 * @param dlyLine ceil(tapsLen / upFactor) past samples, the newest first; receives those of the call's end
 * @param scaleFactor its magnitude counts modulo 128; 127 gives a factor of 0, -127 one of 2 to the power of 127
 * @return qvrErrNullPointer for src or dst; qvrErrBadSize for numIters; qvrErrNullPointer for taps; qvrErrBadTapsLen;
 *     qvrErrBadMultiRateFactor; qvrErrBadMultiRatePhase; qvrErrNullPointer for dlyLine
 */
qvrStatus Morven_qvrsFIRMR32f_Direct_16s_Sfs(const qvr16s* src, qvr16s* dst, int numIters, const qvr32f* taps,
                                             int tapsLen, int upFactor, int upPhase, int downFactor, int downPhase,
                                             qvr16s* dlyLine, int scaleFactor);

/**
 * Multi-rate FIR of 32f samples with 64f taps. Sums are 64f, with products fused on processors with AVX2 and FMA; beyond
 * the range of a float they become the largest one.
 * @param src numIters * downFactor samples
 * @param dst numIters * upFactor outputs; does not overlap src
 * @param numIters iterations, at least 1: each takes downFactor samples and gives upFactor outputs
 * @param taps taps for the high rate
 * @param tapsLen number of taps, at least 1
 * @param upFactor at least 1
 * @param upPhase 0..upFactor - 1: the step of the first sample
 * @param downFactor at least 1
 * @param downPhase 0..downFactor - 1: the step of the first output
 * @param dlyLine ceil(tapsLen / upFactor) past samples, the newest first; receives those of the call's end
 * @return qvrErrNullPointer for src or dst; qvrErrBadSize for numIters; qvrErrNullPointer for taps; qvrErrBadTapsLen;
 *     qvrErrBadMultiRateFactor; qvrErrBadMultiRatePhase; qvrErrNullPointer for dlyLine
 */
qvrStatus Morven_qvrsFIRMR64f_Direct_32f(const qvr32f* src, qvr32f* dst, int numIters, const qvr64f* taps, int tapsLen,
                                         int upFactor, int upPhase, int downFactor, int downPhase, qvr32f* dlyLine);

/**
 * Multi-rate FIR in place: the outputs begin where the samples did, and may be more or fewer.
 * @param srcDst numIters * downFactor samples, with room for numIters * upFactor outputs
 * @param numIters iterations, at least 1: each takes downFactor samples and gives upFactor outputs
 * @param taps taps for the high rate
 * @param tapsLen number of taps, at least 1
 * @param upFactor at least 1
 * @param upPhase 0..upFactor - 1: the step of the first sample
 * @param downFactor at least 1
 * @param downPhase 0..downFactor - 1: the step of the first output
 * @param dlyLine ceil(tapsLen / upFactor) past samples, the newest first; receives those of the call's end
 * @return qvrErrNullPointer for src or dst; qvrErrBadSize for numIters; qvrErrNullPointer for taps; qvrErrBadTapsLen;
 *     qvrErrBadMultiRateFactor; qvrErrBadMultiRatePhase; qvrErrNullPointer for dlyLine; qvrErrNoMemory when a copy of
 *     the samples cannot be had
 */
qvrStatus Morven_qvrsFIRMR64f_Direct_32f_I(qvr32f* srcDst, int numIters, const qvr64f* taps, int tapsLen, int upFactor,
                                           int upPhase, int downFactor, int downPhase, qvr32f* dlyLine);

/** @} */

/**
 * @defgroup firgen FIR design
 *
 * Windowed-sinc taps. Frequencies are fractions of the sampling rate. Taps are symmetric, so that the delay is
 * (tapsLen - 1) / 2 samples at all frequencies; those of the high-pass with an even tapsLen are antisymmetric.
 *
 * - taps receives tapsLen doubles; at least 5.
 * - windowType is one of the selectors below; with any other value no window is applied, and that is no error.
 * - normalize: 0 leaves the gain as the formulas give it; any other value scales it to 1 at the reference frequency,
 *   which is 0 for low-pass and band-stop, 0.5 for high-pass, and the middle of the band for band-pass.
 * - Statuses in order: qvrErrNullPointer for taps; qvrErrBadSize for tapsLen below 5, for a frequency that is not
 *   between 0 and 0.5, and for edges that do not rise; qvrErrNullPointer also if work memory cannot be had.
 * @{
 */

/** Windows of the design functions, with W = 2 pi i / (tapsLen - 1). */
enum {
    qvrFirBartlett = 0, /**< rises from 0 to the centre in equal steps */
    qvrFirBlackman = 1, /**< (a + 1) / 2 - 0.5 cos W - (a / 2) cos 2W, a = -(0.5 / cos(pi / (tapsLen - 1)))^2 */
    qvrFirHamming = 2,  /**< 0.54 - 0.46 cos W */
    qvrFirHann = 3      /**< 0.5 - 0.5 cos W */
};

/**
 * Low-pass up to rFreq.
 * @param taps receives tapsLen taps
 * @param tapsLen number of taps, at least 5
 * @param windowType qvrFirBartlett, qvrFirBlackman, qvrFirHamming or qvrFirHann; any other value applies no window
 * @param normalize 0: gain as the formulas give it; otherwise 1 at the reference frequency
 * @param rFreq cut-off as a fraction of the sampling rate, in (0, 0.5)
 * @return qvrErrNullPointer for taps; qvrErrBadSize for tapsLen, for a frequency and for edges that do not rise;
 *     qvrErrNullPointer if work memory cannot be had
 */
qvrStatus Morven_qvrsFIRGenLowpass_64f(qvr64f* taps, int tapsLen, int windowType, int normalize, qvr64f rFreq);

/**
 * High-pass from rFreq on.
 * @param taps receives tapsLen taps
 * @param tapsLen number of taps, at least 5
 * @param windowType qvrFirBartlett, qvrFirBlackman, qvrFirHamming or qvrFirHann; any other value applies no window
 * @param normalize 0: gain as the formulas give it; otherwise 1 at the reference frequency
 * @param rFreq cut-off as a fraction of the sampling rate, in (0, 0.5)
 * @return qvrErrNullPointer for taps; qvrErrBadSize for tapsLen, for a frequency and for edges that do not rise;
 *     qvrErrNullPointer if work memory cannot be had
 */
qvrStatus Morven_qvrsFIRGenHighpass_64f(qvr64f* taps, int tapsLen, int windowType, int normalize, qvr64f rFreq);

/**
 * Band-pass from rLowFreq to rHighFreq, of which the first is the lower.
 * @param taps receives tapsLen taps
 * @param tapsLen number of taps, at least 5
 * @param windowType qvrFirBartlett, qvrFirBlackman, qvrFirHamming or qvrFirHann; any other value applies no window
 * @param normalize 0: gain as the formulas give it; otherwise 1 at the reference frequency
 * @param rLowFreq lower edge as a fraction of the sampling rate, in (0, 0.5)
 * @param rHighFreq upper edge, above rLowFreq and below 0.5
 * @return qvrErrNullPointer for taps; qvrErrBadSize for tapsLen, for a frequency and for edges that do not rise;
 *     qvrErrNullPointer if work memory cannot be had
 */
qvrStatus Morven_qvrsFIRGenBandpass_64f(qvr64f* taps, int tapsLen, int windowType, int normalize, qvr64f rLowFreq,
                                        qvr64f rHighFreq);

/**
 * Band-stop between rLowFreq and rHighFreq, of which the first is the lower.
 * @param taps receives tapsLen taps
 * @param tapsLen number of taps, at least 5
 * @param windowType qvrFirBartlett, qvrFirBlackman, qvrFirHamming or qvrFirHann; any other value applies no window
 * @param normalize 0: gain as the formulas give it; otherwise 1 at the reference frequency
 * @param rLowFreq lower edge as a fraction of the sampling rate, in (0, 0.5)
 * @param rHighFreq upper edge, above rLowFreq and below 0.5
 * @return qvrErrNullPointer for taps; qvrErrBadSize for tapsLen, for a frequency and for edges that do not rise;
 *     qvrErrNullPointer if work memory cannot be had
 */
qvrStatus Morven_qvrsFIRGenBandstop_64f(qvr64f* taps, int tapsLen, int windowType, int normalize, qvr64f rLowFreq,
                                        qvr64f rHighFreq);

/** @} */

/**
 * @defgroup median Median filter
 * @{
 */

/**
 * Replaces each sample but the first and the last by the median of the window of maskSize samples round it, taken from
 * the input. Where a window reaches over an end it takes the end's sample for each missing one.
 *
 * Work grows with maskSize for each sample; masks of 3 and 5 have forms of their own. What a NaN in a window gives is
 * not defined.
 * @param srcDst the signal, filtered in place; unchanged if it has fewer than 3 samples or the mask is 1
 * @param len samples, at least 1
 * @param maskSize window length, at least 1; an even one is reduced by one
 * @return qvrErrNullPointer, qvrErrBadSize; qvrErrNoMemory for masks above 5 with the signal unchanged; qvrWarnEvenMask
 *     for an even mask
 */
qvrStatus Morven_qvrsFilterMedian_32f_I(qvr32f* srcDst, int len, int maskSize);

/** @} */

/**
 * @defgroup samplerate Sample-rate change by integer factors
 *
 * Zero stuffing and dropping of samples, without any filter. Source and destination do not overlap.
 *
 * Statuses in order: qvrErrNullPointer, qvrErrBadSize for srcLen below 1, qvrErrBadSampleFactor for a factor below 1,
 * qvrErrBadSamplePhase for a phase outside 0 .. factor - 1. After an error neither *dstLen nor *phase has changed.
 * @{
 */

/**
 * dst[i * factor + *phase] = src[i], and zero everywhere else in srcLen * factor outputs.
 * @param src samples
 * @param srcLen input samples, at least 1
 * @param dst srcLen * factor outputs
 * @param dstLen receives srcLen * factor
 * @param factor rate factor, at least 1
 * @param phase place of the sample in its group; it is not changed
 * @return qvrErrNullPointer; qvrErrBadSize for srcLen; qvrErrBadSampleFactor; qvrErrBadSamplePhase; qvrErrBadSize if
 *     srcLen * factor passes 2^31 - 1
 */
qvrStatus Morven_qvrsSampleUp_32f(const qvr32f* src, int srcLen, qvr32f* dst, int* dstLen, int factor, int* phase);

/**
 * Keeps src[*phase], src[*phase + factor], ...
 * @param src samples
 * @param srcLen input samples, at least 1
 * @param dst the samples kept: (srcLen + factor - 1 - *phase) / factor of them, rounded down
 * @param dstLen receives their number, which may be 0
 * @param factor rate factor, at least 1
 * @param phase place of the first sample to keep; receives the place of the next one in the samples that follow, so
 *     that consecutive calls continue one signal
 * @return qvrErrNullPointer; qvrErrBadSize for srcLen; qvrErrBadSampleFactor; qvrErrBadSamplePhase
 */
qvrStatus Morven_qvrsSampleDown_32f(const qvr32f* src, int srcLen, qvr32f* dst, int* dstLen, int factor, int* phase);

/**
 * Keeps every factor-th of 16-bit samples, as Morven_qvrsSampleDown_32f.
 * @param src samples
 * @param srcLen input samples, at least 1
 * @param dst the samples kept: (srcLen + factor - 1 - *phase) / factor of them, rounded down
 * @param dstLen receives their number, which may be 0
 * @param factor rate factor, at least 1
 * @param phase place of the first sample to keep; receives the place of the next one in the samples that follow, so
 *     that consecutive calls continue one signal
 * @return qvrErrNullPointer; qvrErrBadSize for srcLen; qvrErrBadSampleFactor; qvrErrBadSamplePhase
 */
qvrStatus Morven_qvrsSampleDown_16s(const qvr16s* src, int srcLen, qvr16s* dst, int* dstLen, int factor, int* phase);

/** @} */

/**
 * @defgroup resize Image resize
 *
 * Eight interpolation methods for images of 8-bit pixels with one or four channels, of singles and of doubles.
 *
 * @section resize-geometry Geometry
 * Images are rows of pixels whose starts lie `step` bytes apart; a step may be negative or larger than a row, and is
 * not checked. A source point (x, y) lands on (x * xFactor + xShift, y * yFactor + yShift); pixel i covers [i, i + 1).
 * Only the part of `srcRoi` that lies in the image is used, and only `dstRoi` is written, but for the edge treatments.
 * Without one, a destination pixel is produced if its centre lies within the region's image (a border exactly on a
 * centre includes the pixel); with one, if it is covered whole. Pixels of the source image outside `srcRoi` take part
 * as neighbours; what is outside the image repeats its edge pixels.
 *
 * @section resize-methods Methods
 * With pos = (d + 0.5) / factor - shift / factor - 0.5, i = floor(pos) and f = pos - i of a destination position d:
 * - qvriInterNearest: the pixel under the centre of the destination pixel.
 * - qvriInterLinear: two taps on each axis. 8-bit images use weights of 14 bits, one rounding to 16 bits along the row
 * and one to 8 bits across; where the image's border leaves only one row or column there is a single rounding.
 * - qvriInterCubic: the four-point Lagrange polynomial; qvriInterCubicBSpline, qvriInterCubicCatmullRom,
 *   qvriInterCubicB05C03: two-parameter cubics with B, C = 1, 0; 0, 0.5; 0.5, 0.3. Four taps on each axis.
 * - qvriInterLanczos: sinc(t) sinc(t / 3), six taps on each axis, from a table of hundredths with linear interpolation
 *   between entries. The weights are not normalised.
 * - qvriInterSuper: every output is the area-weighted mean of the source under it. Factors up to 1 only. Parts of a
 * pixel below 1e-7 are left out. Of bytes, where 1 / factor is a ratio p / q and shift / factor a multiple of 1 / q with
 * q up to 512 on both axes, it is the exact mean, halves rounded up; else it is formed in double. A constant stays
 * that constant.
 *
 * A source image below 6 pixels in either direction turns Lanczos into qvriInterCubic; one below 4 turns the cubics
 * into linear. Sums of 8-bit images are rounded to nearest, half up, and clamped to 0..255. Sums of 8-bit and 32-bit
 * images run in single, those of 64-bit images in double; means, and with qvriAntialias sums along rows, in double
 * throughout. A NaN passes through all sums. Bytes are the same on all processors but for the cubics and Lanczos without
 * qvriAntialias, where a byte may differ by one with fused multiply-add; singles and doubles may differ by a rounding
 * there. Edge flags apart, an output is the same bit for bit wherever it stands: tiles of `dstRoi` make the same image
 * as one call.
 *
 * @section resize-flags Flags
 * At most one of:
 * - qvriEdgeBlend: a border pixel that the region covers by the fraction a becomes old + a * (inner - old), with `old`
 * what the destination holds and `inner` the nearest produced pixel; a corner by the product of its two fractions.
 * - qvriEdgeFade: the same with a * inner.
 *   Both write one pixel round what is produced, also outside `dstRoi`. A fraction below 1e-10 is none.
 * - qvriAntialias: the weights are stretched by 1 / factor where an axis is reduced, and divided by their sum; taps
 * stand at whole source positions around (d + 0.5) / factor - shift / factor. Taps outside the image take its edge
 * pixel; those more than 4096 outside count as one tap, of the sum of their weights. Ignored, with the warning
 * qvrWarnNoAntialiasing, by qvriInterNearest and qvriInterSuper.
 *
 * @section resize-memory Work buffer and threads
 * The functions of the ResizeSqrPixel family allocate nothing: the caller gives a buffer of the size that
 * Morven_qvriResizeGetBufSize tells for the same rectangles and selector (Morven_qvriResizeGetBufSize_64f for 64f). Any
 * alignment will do. Two calls at a time need two buffers. From 64 by 64 produced pixels on, bands of rows are spread
 * over all threads that the OpenMP runtime allowed when the library was loaded; the result does not depend on their
 * number.
 * @{
 */

/** Interpolation methods and flags; a selector is one method, or one method + one flag. */
enum {
    qvriInterNearest = 1,         /**< nearest neighbour */
    qvriInterLinear = 2,          /**< bilinear */
    qvriInterCubic = 4,           /**< four-point Lagrange cubic */
    qvriInterCubicBSpline = 5,    /**< cubic B-spline: smooth, blurs */
    qvriInterCubicCatmullRom = 6, /**< Catmull-Rom spline */
    qvriInterCubicB05C03 = 7,     /**< cubic with B = 0.5, C = 0.3 */
    qvriInterSuper = 8,           /**< area-weighted supersampling, reduction only */
    qvriInterLanczos = 16,        /**< three-lobe Lanczos */

    qvriAntialias = 0x20000000,     /**< low-pass weights when reducing */
    qvriEdgeFade = 0x40000000,      /**< partly covered border pixels fade */
    qvriEdgeBlend = -0x7FFFFFFF - 1 /**< partly covered border pixels blend with the destination (bit 31) */
};

/**
 * Size of the work buffer for images of 8-bit pixels or singles.
 *
 * It covers every thread that a call can use.
 * @param srcRoi source rectangle of the resize call; origin not negative, width and height at least 1
 * @param dstRoi its destination rectangle, alike
 * @param nChannel channels: 1, 3 or 4; 3 is for the size alone, as no function resizes three
 * @param interpolation method and flags of the call
 * @param sizeOut receives the bytes; 0 if they would be 2^31 or more
 * @return qvrErrNullPointer; qvrErrBadSize for the rectangles; qvrErrBadChannels; qvrErrBadInterpolation; qvrErrBadSize
 *     if the size overflows; qvrWarnNoAntialiasing, with the size stored, where the call will ignore qvriAntialias
 */
qvrStatus Morven_qvriResizeGetBufSize(qvriRect srcRoi, qvriRect dstRoi, int nChannel, int interpolation, int* sizeOut);

/**
 * The same for images of doubles.
 * @param srcRoi source rectangle of the resize call; origin not negative, width and height at least 1
 * @param dstRoi its destination rectangle, alike
 * @param nChannel channels: 1, 3 or 4; 3 is for the size alone, as no function resizes three
 * @param interpolation method and flags of the call
 * @param sizeOut receives the bytes; 0 if they would be 2^31 or more
 * @return qvrErrNullPointer; qvrErrBadSize for the rectangles; qvrErrBadChannels; qvrErrBadInterpolation; qvrErrBadSize
 *     if the size overflows; qvrWarnNoAntialiasing, with the size stored, where the call will ignore qvriAntialias
 */
qvrStatus Morven_qvriResizeGetBufSize_64f(qvriRect srcRoi, qvriRect dstRoi, int nChannel, int interpolation,
                                          int* sizeOut);

/**
 * Resizes a region of an image of bytes.
 * @param src pixel 0, 0 of the source image, not of the region
 * @param srcSize size of the source image
 * @param srcStep bytes from one source row to the next
 * @param srcRoi region of the source to use
 * @param dst pixel 0, 0 of the destination image; must not overlap the source
 * @param dstStep bytes from one destination row to the next
 * @param dstRoi region of the destination that may be written
 * @param xFactor scale factor of the width, above 0; at most 1 for qvriInterSuper
 * @param yFactor scale factor of the height, in the same range
 * @param xShift shift to the right in destination pixels
 * @param yShift shift downward in destination pixels
 * @param interpolation method and flags
 * @param buffer work buffer
 * @return in this order: qvrErrNullPointer; qvrErrBadSize for a size below 1 or a negative origin; qvrErrBadFactor for
 *     a factor that is not above 0; qvrErrBadInterpolation; qvrErrBadFactor for qvriInterSuper; qvrWarnRoiOutside if
 *     the source region begins outside the image; qvrWarnNothingToDo if no destination pixel is covered; qvrErrBadSize
 *     if the buffer size overflows; qvrWarnNoAntialiasing
 */
qvrStatus Morven_qvriResizeSqrPixel_8u_C1R(const qvr8u* src, qvriSize srcSize, int srcStep, qvriRect srcRoi, qvr8u* dst,
                                           int dstStep, qvriRect dstRoi, double xFactor, double yFactor, double xShift,
                                           double yShift, int interpolation, qvr8u* buffer);

/**
 * The same for four interleaved channels, all treated alike.
 * @param src pixel 0, 0 of the source image, not of the region
 * @param srcSize size of the source image
 * @param srcStep bytes from one source row to the next
 * @param srcRoi region of the source to use
 * @param dst pixel 0, 0 of the destination image; must not overlap the source
 * @param dstStep bytes from one destination row to the next
 * @param dstRoi region of the destination that may be written
 * @param xFactor scale factor of the width, above 0; at most 1 for qvriInterSuper
 * @param yFactor scale factor of the height, in the same range
 * @param xShift shift to the right in destination pixels
 * @param yShift shift downward in destination pixels
 * @param interpolation method and flags
 * @param buffer work buffer
 * @return in this order: qvrErrNullPointer; qvrErrBadSize for a size below 1 or a negative origin; qvrErrBadFactor for
 *     a factor that is not above 0; qvrErrBadInterpolation; qvrErrBadFactor for qvriInterSuper; qvrWarnRoiOutside if
 *     the source region begins outside the image; qvrWarnNothingToDo if no destination pixel is covered; qvrErrBadSize
 *     if the buffer size overflows; qvrWarnNoAntialiasing
 */
qvrStatus Morven_qvriResizeSqrPixel_8u_C4R(const qvr8u* src, qvriSize srcSize, int srcStep, qvriRect srcRoi, qvr8u* dst,
                                           int dstStep, qvriRect dstRoi, double xFactor, double yFactor, double xShift,
                                           double yShift, int interpolation, qvr8u* buffer);

/**
 * The same for singles.
 * @param src pixel 0, 0 of the source image, not of the region
 * @param srcSize size of the source image
 * @param srcStep bytes from one source row to the next
 * @param srcRoi region of the source to use
 * @param dst pixel 0, 0 of the destination image; must not overlap the source
 * @param dstStep bytes from one destination row to the next
 * @param dstRoi region of the destination that may be written
 * @param xFactor scale factor of the width, above 0; at most 1 for qvriInterSuper
 * @param yFactor scale factor of the height, in the same range
 * @param xShift shift to the right in destination pixels
 * @param yShift shift downward in destination pixels
 * @param interpolation method and flags
 * @param buffer work buffer
 * @return in this order: qvrErrNullPointer; qvrErrBadSize for a size below 1 or a negative origin; qvrErrBadFactor for
 *     a factor that is not above 0; qvrErrBadInterpolation; qvrErrBadFactor for qvriInterSuper; qvrWarnRoiOutside if
 *     the source region begins outside the image; qvrWarnNothingToDo if no destination pixel is covered; qvrErrBadSize
 *     if the buffer size overflows; qvrWarnNoAntialiasing
 */
qvrStatus Morven_qvriResizeSqrPixel_32f_C1R(const qvr32f* src, qvriSize srcSize, int srcStep, qvriRect srcRoi,
                                            qvr32f* dst, int dstStep, qvriRect dstRoi, double xFactor, double yFactor,
                                            double xShift, double yShift, int interpolation, qvr8u* buffer);

/**
 * The same for doubles; the buffer's size comes from Morven_qvriResizeGetBufSize_64f.
 * @param src pixel 0, 0 of the source image, not of the region
 * @param srcSize size of the source image
 * @param srcStep bytes from one source row to the next
 * @param srcRoi region of the source to use
 * @param dst pixel 0, 0 of the destination image; must not overlap the source
 * @param dstStep bytes from one destination row to the next
 * @param dstRoi region of the destination that may be written
 * @param xFactor scale factor of the width, above 0; at most 1 for qvriInterSuper
 * @param yFactor scale factor of the height, in the same range
 * @param xShift shift to the right in destination pixels
 * @param yShift shift downward in destination pixels
 * @param interpolation method and flags
 * @param buffer work buffer
 * @return in this order: qvrErrNullPointer; qvrErrBadSize for a size below 1 or a negative origin; qvrErrBadFactor for
 *     a factor that is not above 0; qvrErrBadInterpolation; qvrErrBadFactor for qvriInterSuper; qvrWarnRoiOutside if
 *     the source region begins outside the image; qvrWarnNothingToDo if no destination pixel is covered; qvrErrBadSize
 *     if the buffer size overflows; qvrWarnNoAntialiasing
 */
qvrStatus Morven_qvriResizeSqrPixel_64f_C1R(const qvr64f* src, qvriSize srcSize, int srcStep, qvriRect srcRoi,
                                            qvr64f* dst, int dstStep, qvriRect dstRoi, double xFactor, double yFactor,
                                            double xShift, double yShift, int interpolation, qvr8u* buffer);

/**
 * Resizes a region of an image of bytes without a shift and with a work buffer of its own.
 *
 * The destination rectangle has its origin at that of the source region: with `srcRoi` at (10, 10) only destination
 * pixels from (10, 10) on are written. Otherwise as Morven_qvriResizeSqrPixel_8u_C1R, with the checks of
 * Morven_qvriResizeGetBufSize before its own.
 * @param src pixel 0, 0 of the source image, not of the region
 * @param srcSize size of the source image
 * @param srcStep bytes from one source row to the next
 * @param srcRoi region of the source to use
 * @param dst pixel 0, 0 of the destination image; must not overlap the source
 * @param dstStep bytes from one destination row to the next
 * @param dstRoiSize size of the destination rectangle
 * @param xFactor scale factor of the width
 * @param yFactor scale factor of the height
 * @param interpolation method and flags
 * @return as Morven_qvriResizeSqrPixel_8u_C1R. Any status other than 0 of the size query, qvrWarnNoAntialiasing
 *     included, is returned with nothing written. If no memory is to be had nothing is written either and the status is
 *     qvrOk.
 */
qvrStatus Morven_qvriResize_8u_C1R(const qvr8u* src, qvriSize srcSize, int srcStep, qvriRect srcRoi, qvr8u* dst,
                                   int dstStep, qvriSize dstRoiSize, double xFactor, double yFactor, int interpolation);

/**
 * The same for four interleaved channels.
 * @param src pixel 0, 0 of the source image, not of the region
 * @param srcSize size of the source image
 * @param srcStep bytes from one source row to the next
 * @param srcRoi region of the source to use
 * @param dst pixel 0, 0 of the destination image; must not overlap the source
 * @param dstStep bytes from one destination row to the next
 * @param dstRoiSize size of the destination rectangle
 * @param xFactor scale factor of the width
 * @param yFactor scale factor of the height
 * @param interpolation method and flags
 * @return as Morven_qvriResizeSqrPixel_8u_C1R. Any status other than 0 of the size query, qvrWarnNoAntialiasing
 *     included, is returned with nothing written. If no memory is to be had nothing is written either and the status is
 *     qvrOk.
 */
qvrStatus Morven_qvriResize_8u_C4R(const qvr8u* src, qvriSize srcSize, int srcStep, qvriRect srcRoi, qvr8u* dst,
                                   int dstStep, qvriSize dstRoiSize, double xFactor, double yFactor, int interpolation);

/**
 * The same for singles.
 * @param src pixel 0, 0 of the source image, not of the region
 * @param srcSize size of the source image
 * @param srcStep bytes from one source row to the next
 * @param srcRoi region of the source to use
 * @param dst pixel 0, 0 of the destination image; must not overlap the source
 * @param dstStep bytes from one destination row to the next
 * @param dstRoiSize size of the destination rectangle
 * @param xFactor scale factor of the width
 * @param yFactor scale factor of the height
 * @param interpolation method and flags
 * @return as Morven_qvriResizeSqrPixel_8u_C1R. Any status other than 0 of the size query, qvrWarnNoAntialiasing
 *     included, is returned with nothing written. If no memory is to be had nothing is written either and the status is
 *     qvrOk.
 */
qvrStatus Morven_qvriResize_32f_C1R(const qvr32f* src, qvriSize srcSize, int srcStep, qvriRect srcRoi, qvr32f* dst,
                                    int dstStep, qvriSize dstRoiSize, double xFactor, double yFactor,
                                    int interpolation);

/** @} */

/**
 * @defgroup points Image point operations
 *
 * Every pixel on its own. An image is its first pixel, the bytes from one row to the next and a size in pixels.
 * Statuses in order: qvrErrNullPointer, qvrErrBadSize for a width or height below 1, then what is said at each
 * function.
 * @{
 */

/**
 * Adds a constant in place and scales: (pixel + value) * 2^-scaleFactor, rounded to nearest, a tie to even, and
 * saturated to 0..255. Steps are not checked.
 *
 * Any scale factor works: from 10 on the image becomes 0; below -7 every sum other than 0 becomes 255. With `value` and
 * `scaleFactor` 0 nothing is written.
 *
 * Uses all threads of the library's budget on processors with SSE3; for `scaleFactor` from 1 on if width + height is at
 * least 256.
 * @param value the constant
 * @param srcDst the image, its first pixel
 * @param step bytes from one row to the next
 * @param roiSize size in pixels
 * @param scaleFactor any value: the sum is divided by 2 to its power
 * @return qvrErrNullPointer; qvrErrBadSize for a width or height below 1
 */
qvrStatus Morven_qvriAddC_8u_C1IRSfs(qvr8u value, qvr8u* srcDst, int step, qvriSize roiSize, int scaleFactor);

/**
 * The same for 16-bit pixels, saturated to 0..65535: zero from scaleFactor 18 on, full below -15. Uses no threads.
 * @param value the constant
 * @param srcDst the image, its first pixel
 * @param step bytes from one row to the next
 * @param roiSize size in pixels
 * @param scaleFactor any value: the sum is divided by 2 to its power
 * @return qvrErrNullPointer; qvrErrBadSize for a width or height below 1
 */
qvrStatus Morven_qvriAddC_16u_C1IRSfs(qvr16u value, qvr16u* srcDst, int step, qvriSize roiSize, int scaleFactor);

/**
 * Fills an image. Gaps between rows stay; steps are not checked. Images far larger than the caches bypass them.
 * @param value what every pixel becomes
 * @param dst the image, its first pixel
 * @param step bytes from one row to the next
 * @param roiSize size in pixels
 * @return qvrErrNullPointer; qvrErrBadSize for a width or height below 1
 */
qvrStatus Morven_qvriSet_16u_C1R(qvr16u value, qvr16u* dst, int step, qvriSize roiSize);

/**
 * Copies the pixels whose mask byte is not 0; the others stay. Steps are not checked.
 * @param src source, its first pixel
 * @param srcStep bytes from one source row to the next
 * @param dst destination, its first pixel
 * @param dstStep bytes from one destination row to the next
 * @param roiSize size of all three images
 * @param mask one byte for each pixel
 * @param maskStep bytes from one mask row to the next
 * @return qvrErrNullPointer; qvrErrBadSize for a width or height below 1
 */
qvrStatus Morven_qvriCopy_16u_C1MR(const qvr16u* src, int srcStep, qvr16u* dst, int dstStep, qvriSize roiSize,
                                   const qvr8u* mask, int maskStep);

/**
 * Widens bytes to 16 bits.
 * @param src source, its first pixel
 * @param srcStep bytes from one source row to the next
 * @param dst destination, its first pixel
 * @param dstStep bytes from one destination row to the next
 * @param roiSize size in pixels
 * @return qvrErrNullPointer; qvrErrBadSize for a width or height below 1; qvrErrBadStep for a step below 1
 */
qvrStatus Morven_qvriConvert_8u16u_C1R(const qvr8u* src, int srcStep, qvr16u* dst, int dstStep, qvriSize roiSize);

/**
 * The same to signed pixels.
 * @param src source, its first pixel
 * @param srcStep bytes from one source row to the next
 * @param dst destination, its first pixel
 * @param dstStep bytes from one destination row to the next
 * @param roiSize size in pixels
 * @return qvrErrNullPointer; qvrErrBadSize for a width or height below 1; qvrErrBadStep for a step below 1
 */
qvrStatus Morven_qvriConvert_8u16s_C1R(const qvr8u* src, int srcStep, qvr16s* dst, int dstStep, qvriSize roiSize);

/**
 * Looks pixels up in a palette: dst = table[src & (2^nBitSize - 1)].
 * @param src source, its first pixel
 * @param srcStep bytes from one source row to the next
 * @param dst destination, its first pixel
 * @param dstStep bytes from one destination row to the next
 * @param roiSize size of both
 * @param table 2^nBitSize entries
 * @param nBitSize bits of a pixel that count: 1..8, or 1..16 for pixels of 16 bits
 * @return qvrErrNullPointer; qvrErrBadSize for a width or height below 1; qvrErrBadBitSize; qvrErrBadStep for a step
 *     below the bytes of a row
 */
qvrStatus Morven_qvriLUTPalette_8u_C1R(const qvr8u* src, int srcStep, qvr8u* dst, int dstStep, qvriSize roiSize,
                                       const qvr8u* table, int nBitSize);

/**
 * The same to entries of 32 bits.
 * @param src source, its first pixel
 * @param srcStep bytes from one source row to the next
 * @param dst destination, its first pixel
 * @param dstStep bytes from one destination row to the next
 * @param roiSize size of both
 * @param table 2^nBitSize entries
 * @param nBitSize bits of a pixel that count: 1..8, or 1..16 for pixels of 16 bits
 * @return qvrErrNullPointer; qvrErrBadSize for a width or height below 1; qvrErrBadBitSize; qvrErrBadStep for a step
 *     below the bytes of a row
 */
qvrStatus Morven_qvriLUTPalette_8u32u_C1R(const qvr8u* src, int srcStep, qvr32u* dst, int dstStep, qvriSize roiSize,
                                          const qvr32u* table, int nBitSize);

/**
 * The same from pixels of 16 bits.
 * @param src source, its first pixel
 * @param srcStep bytes from one source row to the next
 * @param dst destination, its first pixel
 * @param dstStep bytes from one destination row to the next
 * @param roiSize size of both
 * @param table 2^nBitSize entries
 * @param nBitSize bits of a pixel that count: 1..8, or 1..16 for pixels of 16 bits
 * @return qvrErrNullPointer; qvrErrBadSize for a width or height below 1; qvrErrBadBitSize; qvrErrBadStep for a step
 *     below the bytes of a row
 */
qvrStatus Morven_qvriLUTPalette_16u8u_C1R(const qvr16u* src, int srcStep, qvr8u* dst, int dstStep, qvriSize roiSize,
                                          const qvr8u* table, int nBitSize);

/**
 * The same from pixels of 16 bits to entries of 32.
 * @param src source, its first pixel
 * @param srcStep bytes from one source row to the next
 * @param dst destination, its first pixel
 * @param dstStep bytes from one destination row to the next
 * @param roiSize size of both
 * @param table 2^nBitSize entries
 * @param nBitSize bits of a pixel that count: 1..8, or 1..16 for pixels of 16 bits
 * @return qvrErrNullPointer; qvrErrBadSize for a width or height below 1; qvrErrBadBitSize; qvrErrBadStep for a step
 *     below the bytes of a row
 */
qvrStatus Morven_qvriLUTPalette_16u32u_C1R(const qvr16u* src, int srcStep, qvr32u* dst, int dstStep, qvriSize roiSize,
                                           const qvr32u* table, int nBitSize);

/**
 * Minimum and maximum of each block of an image, and of all of it. Blocks are laid from the top left; those at the
 * right and bottom edges hold what is there.
 * @param src the image, its first pixel
 * @param srcStep bytes from one source row to the next
 * @param srcSize size of the image
 * @param blockMin receives the minimum of each block: ceil(width / blockSize.width) in a row, and ceil(height /
 *     blockSize.height) rows
 * @param blockMinStep bytes from one row of minima to the next
 * @param blockMax receives the maxima in the same way
 * @param blockMaxStep bytes from one row of maxima to the next
 * @param blockSize size of a block
 * @param globalMin receives the least pixel of the image
 * @param globalMax receives the largest pixel of the image
 * @return qvrErrNullPointer; qvrErrBadSize for a width or height below 1, of the image or of blocks; qvrErrBadStep for
 *     a source step below 2 * width or a block step below a row of blocks
 */
qvrStatus Morven_qvriBlockMinMax_16s_C1R(const qvr16s* src, int srcStep, qvriSize srcSize, qvr16s* blockMin,
                                         int blockMinStep, qvr16s* blockMax, int blockMaxStep, qvriSize blockSize,
                                         qvr16s* globalMin, qvr16s* globalMax);

/**
 * Splits 16-bit little-endian samples into a plane of high bytes and one of low bytes:
 * dstPlanes[0][i] = src[2i + 1], dstPlanes[1][i] = src[2i].
 * @param src 2 * len bytes
 * @param dstPlanes two planes of `len` bytes
 * @param len samples
 * @return qvrErrNullPointer for src or dstPlanes, qvrErrBadStep for `len` below 1, then qvrErrNullPointer for a plane
 */
qvrStatus Morven_qvriSplitRow_TIFF_16u8u_C1(const qvr8u* src, qvr8u** dstPlanes, int len);

/**
 * Joins what Morven_qvriSplitRow_TIFF_16u8u_C1 splits: dst[2i + 1] = srcPlanes[0][i], dst[2i] = srcPlanes[1][i].
 * @param srcPlanes two planes of `len` bytes
 * @param dst 2 * len bytes
 * @param len samples
 * @return qvrErrNullPointer for any of the four pointers, then qvrErrBadStep for `len` below 1
 */
qvrStatus Morven_qvriJoinRow_TIFF_8u16u_C1(qvr8u** srcPlanes, qvr8u* dst, int len);

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
 *   caller's rounding mode and flush modes hold inside, except that arguments are always reduced by the nearest integer,
 *   that a zero result has the sign that it has in rounding to nearest, and that an overflow is infinite in every mode.
 * - A destination may be the very same array as a source.
 * @{
 */

/**
 * Sine, to 11 bits; next to multiples of pi the error is at most 2^-12.68 in absolute terms instead.
 *
 * Any finite argument is valid. A zero keeps its sign. A NaN gives a quiet NaN, an infinity the NaN 0xFFC00000.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1; qvrWarnDomain if an element was infinite
 */
qvrStatus Morven_qvrsSin_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Cosine, to 11 bits; next to its zeros, and otherwise, as Morven_qvrsSin_32f_A11.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1; qvrWarnDomain if an element was infinite
 */
qvrStatus Morven_qvrsCos_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Tangent, to 11 bits everywhere. Special elements as in Morven_qvrsSin_32f_A11.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1; qvrWarnDomain if an element was infinite
 */
qvrStatus Morven_qvrsTan_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Arc sine in [-pi/2, pi/2], to 11 bits. A NaN gives a quiet NaN, a magnitude above 1 the NaN 0xFFC00000.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1; qvrWarnDomain if the magnitude of an element was above
 *     1
 */
qvrStatus Morven_qvrsAsin_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Arc cosine in [0, pi], to 11 bits. Special elements as in Morven_qvrsAsin_32f_A11.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1; qvrWarnDomain if the magnitude of an element was above
 *     1
 */
qvrStatus Morven_qvrsAcos_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Arc tangent in [-pi/2, pi/2], to 11 bits. Infinities give plus or minus pi/2. No warnings.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAtan_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * The angle of the point (x, y) in [-pi, pi], to 11 bits. Zeros and infinities by their signs, as C's atan2f. No warnings.
 * @param pSrcY y coordinates, `len` elements
 * @param pSrcX x coordinates, `len` elements
 * @param pDst angles; may be either source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsAtan2_32f_A11(const qvr32f* pSrcY, const qvr32f* pSrcX, qvr32f* pDst, int len);

/**
 * Hyperbolic sine, to 11 bits, small arguments and signed zeros included. It stays finite up to a magnitude of 89.4159.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1; qvrWarnOverflow if a finite element gave an infinity
 */
qvrStatus Morven_qvrsSinh_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Hyperbolic cosine; range and warning as Morven_qvrsSinh_32f_A11. Infinities of both signs give +infinity.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1; qvrWarnOverflow if a finite element gave an infinity
 */
qvrStatus Morven_qvrsCosh_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Hyperbolic tangent, to 11 bits; for large magnitudes plus or minus 1. No warnings.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsTanh_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Exponential function. Above 88.7228 the result is +infinity; below -87.3365 it is a denormal and then zero. A NaN gives
 * a quiet NaN. No warnings.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsExp_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Natural logarithm, to 11 bits. A negative element gives the NaN 0x7FFC0000, a zero of either sign -infinity, +infinity
 * itself, a NaN its own bits.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1; qvrWarnDomain for a negative element,
 *     qvrWarnSingularity for a zero: the later of them
 */
qvrStatus Morven_qvrsLn_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Decimal logarithm, to 11 bits. A negative element gives the NaN 0xFFC00000, a zero of either sign -infinity, +infinity
 * itself, a NaN its own bits. No warnings.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsLog10_32f_A11(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Decimal logarithm, to 21 bits; otherwise as Morven_qvrsLog10_32f_A11.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsLog10_32f_A21(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * pDst[i] = pSrcX[i] to the power pSrcY[i], to 11 bits. Results below the normal floats are zero or the denormal.
 *
 * A power of 0 gives 1 and so does the base 1, whatever the other operand is; else a NaN operand is the result, the base
 * first. The base -1 with an infinite power gives 1. A negative base needs an integer power, else the result is the NaN
 * 0xFFC00000. A zero base with a negative power gives an infinity, of the base's sign if the power is odd. Infinite
 * operands as in C's powf. Overflow and underflow give infinity and zero without a warning.
 * @param pSrcX bases, `len` elements
 * @param pSrcY powers, `len` elements
 * @param pDst results; may be either source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1; qvrWarnDomain for a negative base with a fractional
 *     power, and for a zero base with a negative one
 */
qvrStatus Morven_qvrsPow_32f_A11(const qvr32f* pSrcX, const qvr32f* pSrcY, qvr32f* pDst, int len);

/**
 * The same to 24 bits, denormal results included.
 * @param pSrcX bases, `len` elements
 * @param pSrcY powers, `len` elements
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1; qvrWarnDomain for a negative base with a fractional
 *     power, and for a zero base with a negative one
 */
qvrStatus Morven_qvrsPow_32f_A24(const qvr32f* pSrcX, const qvr32f* pSrcY, qvr32f* pDst, int len);

/**
 * pDst[i] = pSrcX[i] to the power y, by the rules of Morven_qvrsPow_32f_A11.
 * @param pSrcX bases, `len` elements
 * @param y the power
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1; qvrWarnDomain for a negative base with a fractional
 *     power, and for a zero base with a negative one
 */
qvrStatus Morven_qvrsPowx_32f_A11(const qvr32f* pSrcX, qvr32f y, qvr32f* pDst, int len);

/**
 * The same to 24 bits, denormal results included.
 * @param pSrcX bases, `len` elements
 * @param y the power
 * @param pDst results, `len` elements; may be a source
 * @param len elements, at least 1
 * @return qvrErrNullPointer and qvrErrBadSize for `len` below 1; qvrWarnDomain for a negative base with a fractional
 *     power, and for a zero base with a negative one
 */
qvrStatus Morven_qvrsPowx_32f_A24(const qvr32f* pSrcX, qvr32f y, qvr32f* pDst, int len);

/** @} */

/**
 * @defgroup fast Fast elementary functions, magnitudes and phase
 *
 * All functions return qvrErrNullPointer for a null pointer and then qvrErrBadSize for `len` below 1. They follow the
 * caller's MXCSR and raise its flags; an overflow is infinite in every rounding mode.
 * @{
 */

/**
 * Exponential function, within one unit in the last place of the scalar one. Overflow gives +infinity, underflow a denormal
 * or zero, a NaN a quiet NaN. No warnings.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsExp_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Natural logarithm, correctly rounded but for rare near-ties.
 *
 * An element with the sign bit set, -0 and NaN included, gives the NaN 0xFFC00000; +0 gives -infinity, +infinity itself, a
 * positive NaN a quiet NaN.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1; qvrWarnLnZeroArg or qvrWarnLnNegArg, by which of a +0 and
 *     an element with the sign bit set came first
 */
qvrStatus Morven_qvrsLn_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * Arc tangent in [-pi/2, pi/2], within two units in the last place of the scalar one. No warnings.
 * @param pSrc source, `len` elements
 * @param pDst results, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsArctan_32f(const qvr32f* pSrc, qvr32f* pDst, int len);

/**
 * The angle of a complex number, atan2(im, re) in double and rounded to single; 0 where both parts are zero.
 * @param pSrc source, `len` complex elements
 * @param pDst results, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsPhase_32fc(const qvr32fc* pSrc, qvr32f* pDst, int len);

/**
 * sqrt(re * re + im * im) in single, each product and the sum rounded.
 *
 * Most elements take an approximate root with one Newton step, good to 22 bits: there a sum of squares below 1.1754944e-38
 * gives 0 and an infinite one a NaN. Elements ahead of the first 16-byte boundary of pDst, and those behind the last whole
 * group of eight, take the exact root.
 *
 * Uses two threads from 2048 elements on, on processors with SSSE3; each works on a half as if it were an array of its own.
 * @param pSrc source, `len` complex elements
 * @param pDst results, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMagnitude_32fc(const qvr32fc* pSrc, qvr32f* pDst, int len);

/**
 * sqrt(re * re + im * im) in double, every operation rounded, without scaling against overflow.
 *
 * Uses two threads from 256 elements on, on processors with SSSE3 but no AVX.
 * @param pSrc source, `len` complex elements
 * @param pDst results, `len` elements
 * @param len elements, at least 1
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMagnitude_64fc(const qvr64fc* pSrc, qvr64f* pDst, int len);

/**
 * sqrt(re^2 + im^2) * 2^-scaleFactor, rounded to nearest, a tie to even, and saturated to 32767.
 *
 * From scaleFactor 17 on all results are 0; below -14 every element other than 0 gives 32767.
 *
 * Uses two threads from 2048 elements on, on processors with SSSE3.
 * @param pSrc source, `len` complex elements
 * @param pDst destination, `len` elements
 * @param len elements, at least 1
 * @param scaleFactor any value
 * @return qvrErrNullPointer; qvrErrBadSize for `len` below 1
 */
qvrStatus Morven_qvrsMagnitude_16sc_Sfs(const qvr16sc* pSrc, qvr16s* pDst, int len, int scaleFactor);

/** @} */

#ifdef __cplusplus
}
#endif

#endif
