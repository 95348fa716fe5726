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

// The methods. A separable one weighs the pixels within `radius` of a position by their distance; singles have a form
// of their own where the weight is looked up. `lowPass` is what is stretched when reducing with antialiasing.
typedef struct {
    int32_t selector;
    int32_t radius;  // 0: not separable
    int32_t smaller; // takes its place where the source has fewer than 2 radius rows or columns; 0: none
    double (*single)(double distance);
    double (*wide)(double distance);
    double (*lowPass)(double distance);
} qvrResizeMethod;
// Null: there is no such method.
QVR_HIDDEN const qvrResizeMethod* qvrMethodOf(int32_t selector);

// One horizontal band: y holds its rows.
typedef struct {
    const char* src; // pixel 0,0
    char* dst;
    int64_t srcStep, dstStep;
    qvrResizeAxis x, y;
    const qvrResizeMethod* method;
    int32_t lowPass;
    char* buffer;
    int64_t bufferBytes;
} qvrResizeBand;

typedef struct {
    qvrResizeBand band;                // all rows
    double xMinF, xMaxF, yMinF, yMaxF; // the clipped extent of the destination in continuous coordinates
    int32_t flags;
} qvrResizePlan;

// All checks behind the null pointers, and the plan but for the band's memory. A warning other than 0 means that there
// is nothing to do.
QVR_HIDDEN qvrStatus qvrMakeResizePlan(qvriSize srcSize, const qvriRect* srcRoi, const qvriRect* dstRoi, double xFactor,
                                       double yFactor, double xShift, double yShift, int32_t interpolation,
                                       qvrResizePlan* plan);

// The work buffer of one thread, by the size rule, for element type 8u and 32f (elementBytes 4) or 64f (8). An overflow
// gives qvrErrBadSize and *size 0; a valid size may come with qvrWarnNoAntialiasing.
QVR_HIDDEN qvrStatus qvrResizeThreadBytes(const qvriRect* src, const qvriRect* dst, int channels, int32_t interpolation,
                                          int elementBytes, int32_t* size);

// The query: checks, then the size for as many threads as there can be.
QVR_HIDDEN qvrStatus qvrResizeBufferBytes(const qvriRect* src, const qvriRect* dst, int channels, int32_t interpolation,
                                          int elementBytes, int* sizeOut);

// Number of threads that a buffer of less than 2 GiB and the budget allow.
QVR_HIDDEN int32_t qvrResizeThreads(int32_t threadBytes);

// The pixels round the produced block that the source covers in part.
QVR_HIDDEN void qvrResizeEdges(const qvrResizePlan* plan, int pixel);

// How far ahead of what is written lines are asked for, in bytes; 0: not at all. So are those of large destinations
// whose rows are long or follow each other: a store waits for its line where it is beyond the second cache.
QVR_HIDDEN int64_t qvrAheadOf(const qvrResizeBand* band, int64_t pixelBytes);

// The source pixels under the centres of `count` destination pixels from d on, clamped into the image.
QVR_HIDDEN void qvrNearestOf(const qvrResizeAxis* axis, int64_t d, int64_t count, int32_t* pixels);
// The number of positions, up to `most`, after which all of the axis' positions are `pixels` further on; 0: none.
QVR_HIDDEN int64_t qvrNearestPeriod(const qvrResizeAxis* axis, int64_t most, int64_t* pixels);

// A separable method on an axis. Without low pass each position has 2 radius taps. With it the weights are kernel(|j -
// centre| * scale) * scale for the taps j within `reach` of the centre, divided by their sum; where inv = pixels /
// period in small numbers, the lists repeat after `period` positions, that many pixels further on.
typedef struct {
    double inv, off, scale, reach;
    int64_t length;
    int64_t most; // no position has more taps
    int64_t period, pixels;
    double doubt; // how far the weights of lists that repeat may be from those of a place itself
    const qvrResizeMethod* method;
    int32_t lowPass, single; // single: fractions are singles; else only lists that are equal to the last bit repeat
} qvrFilter;
QVR_HIDDEN void qvrMakeFilter(const qvrResizeAxis* axis, const qvrResizeMethod* method, int lowPass, int single,
                              qvrFilter* filter);

// Without low pass: the first taps of `count` positions from d on, unclamped, and how far each lies behind its pixel.
QVR_HIDDEN void qvrPlacesOf(const qvrFilter* filter, int64_t d, int64_t count, int32_t* first, double* fraction);
QVR_HIDDEN void qvrPlaceWeights(const qvrFilter* filter, double fraction, double* weights);

// With low pass: `count` taps from pixel `first` on, unclamped. Those far outside the image are one at each end.
typedef struct {
    int64_t first, count;
    int64_t shift;                    // the centre is relative to this pixel
    int32_t foldsBefore, foldsBehind; // the ends stand for all beyond them
    double centre, sum;               // sum: of all weights, once it is known
} qvrTaps;
QVR_HIDDEN void qvrTapsOf(const qvrFilter* filter, int64_t d, qvrTaps* taps);
// Weights from .. from + count - 1 of the list.
QVR_HIDDEN void qvrWeightsOf(const qvrFilter* filter, qvrTaps* taps, int64_t from, int64_t count, double* weights);

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
