// What the resize functions share: the methods, the plan of a call, the geometry of an axis, the job of a band.
//
// A source point (sx, sy) lands on (sx xFactor + xShift, sy yFactor + yShift); destination pixel d covers [d, d + 1).
// So source coordinate = destination coordinate * inv + off, with inv = 1 / factor and off = -shift / factor.
//
// Everything about positions and weights is computed once, for the baseline, in double: coordinates have no fused
// operation and do not depend on the slot, nor on the band that a row falls into.
#ifndef QVR_IMAGE_PLAN_H
#define QVR_IMAGE_PLAN_H

#include <stdint.h>

#include "frame/processor.h"

// The method is in the low bits of the selector, behind the three flags.
#define QVR_INTERPOLATION_METHOD 0x1FFFFFFF

// Element types and channels of the exported forms.
enum { qvrPixel_8u_C1, qvrPixel_8u_C4, qvrPixel_32f_C1, qvrPixel_64f_C1 };

#ifdef __cplusplus
extern "C" {
#endif

typedef struct {
    double inv, off;
    int64_t first;  // first destination position
    int32_t count;  // positions
    int32_t length; // source pixels along the axis
} qvrResizeAxis;

typedef struct {
    qvrResizeAxis x, y;
    double xMinF, xMaxF, yMinF, yMaxF; // the clipped extent of the destination in continuous coordinates
    int32_t method, flags;
} qvrResizePlan;

// One horizontal band: y holds its rows.
typedef struct {
    const char* src; // pixel 0,0
    char* dst;
    int64_t srcStep, dstStep;
    qvrResizeAxis x, y;
    int32_t method;
    char* buffer;
    int64_t bufferBytes;
} qvrResizeBand;

// All checks behind the null pointers, and the plan. A warning other than 0 means that there is nothing to do.
QVR_HIDDEN qvrStatus qvrMakeResizePlan(qvriSize srcSize, qvriRect srcRoi, qvriRect dstRoi, double xFactor,
                                       double yFactor, double xShift, double yShift, int32_t interpolation,
                                       qvrResizePlan* plan);

// The work buffer of one thread, by the size rule, for element type 8u and 32f (elementBytes 4) or 64f (8). An overflow
// gives qvrErrBadSize and *size 0; a valid size may come with qvrWarnNoAntialiasing.
QVR_HIDDEN qvrStatus qvrResizeThreadBytes(qvriRect srcRoi, qvriRect dstRoi, int channels, int32_t interpolation,
                                          int elementBytes, int32_t* size);

// The query: checks, then the size for as many threads as there can be.
QVR_HIDDEN qvrStatus qvrResizeBufferBytes(qvriRect srcRoi, qvriRect dstRoi, int channels, int32_t interpolation,
                                          int elementBytes, int* sizeOut);

// Number of threads that a buffer of less than 2 GiB and the budget allow.
QVR_HIDDEN int32_t qvrResizeThreads(int32_t threadBytes);

// The source pixel under the centre of destination pixel d, clamped into the image.
QVR_HIDDEN int32_t qvrNearestIndex(const qvrResizeAxis* axis, int64_t d);

// Two, four or six taps by method. For position n of the axis, start[n] is the pixel of the first tap, unclamped but
// from one pixel round the image, and weights[n * perPosition + k * perTap] are the weights; of method 2 only the
// fraction is stored, as a single weight.
QVR_HIDDEN int32_t qvrTapCount(int32_t method);
QVR_HIDDEN void qvrFillTaps32(const qvrResizeAxis* axis, int32_t method, int32_t* start, float* weights,
                              int64_t perPosition, int64_t perTap);
QVR_HIDDEN void qvrFillTaps64(const qvrResizeAxis* axis, int32_t method, int32_t* start, double* weights,
                              int64_t perPosition, int64_t perTap);

// Low-pass weights of an axis: kernel(|j - centre| * scale) * scale for the taps j within `reach` of the centre. Where
// inv = pixels / period in small numbers, the lists repeat after `period` positions, that many pixels further on.
typedef struct {
    double inv, off, scale, reach;
    int64_t length;
    int64_t most; // no position has more taps
    int64_t period, pixels;
    int32_t method;
} qvrLowPass;
// The taps of a position: `count` from pixel `first` on, unclamped. Those far outside the image are one at each end.
typedef struct {
    int64_t first, count, shift; // the centre is relative to pixel `shift`
    double centre, before, behind;
} qvrLowPassTaps;
// exact: repeat only lists that are equal to the last bit of a double.
QVR_HIDDEN void qvrMakeLowPass(const qvrResizeAxis* axis, int32_t method, int exact, qvrLowPass* lowPass);
QVR_HIDDEN void qvrLowPassRange(const qvrLowPass* lowPass, int64_t d, qvrLowPassTaps* taps);
// Weights from .. from + count - 1 of the list. They have yet to be divided by the sum of all.
QVR_HIDDEN void qvrLowPassWeights(const qvrLowPass* lowPass, const qvrLowPassTaps* taps, int64_t from, int64_t count,
                                  double* weights);

// Supersampling along an axis: position d covers the source from d inv + off to (d + 1) inv + off. Where inv = p / q
// and off are multiples of 1 / q, all covers are whole numbers of that unit, p for each position; else q is 0.
typedef struct {
    double inv, off;
    int64_t length, p, q, at; // off = at / q
} qvrSuperAxis;
// Pixels first .. first + count - 1 of the image: `head` of the first one and `tail` of the last one, if that is
// another; the others count whole. What lies outside is added to the edge pixels.
typedef struct {
    int64_t first, count;
    double head, tail;
} qvrCover;
QVR_HIDDEN void qvrMakeSuper(const qvrResizeAxis* axis, qvrSuperAxis* super);
// In units of 1 / q if `whole`, else in pixels.
QVR_HIDDEN void qvrCoverOf(const qvrSuperAxis* super, int whole, int64_t d, qvrCover* cover);
// What all covers of a position add up to, in pixels.
QVR_HIDDEN double qvrCoverSum(const qvrSuperAxis* super);

#ifdef __cplusplus
}
#endif

#endif
