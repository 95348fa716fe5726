// What the driver of the separable methods and the row kernels of a slot share.
//
// A source row is filtered to a line, one element for each column and channel; an output row is the weighted sum of the
// lines of its taps.
#ifndef QVR_IMAGE_SEPARABLE_H
#define QVR_IMAGE_SEPARABLE_H

#include "image/plan.h"

// The columns of a band, or as many as the work buffer holds at a time.
typedef struct {
    int64_t width, length; // columns; pixels of a source row
    int64_t channels;
    double inv;
    // Column x + lists has the weights of x, `pixels` further on.
    int64_t lists, pixels;
    int64_t most, stride;   // taps of a column; elements of a list
    int32_t *first, *count; // pixel of a column's first tap, which may lie outside; taps of a list
    int64_t from, to;       // what `prepare` makes of them: columns inside the image
    void* extra;            // and more
    void* weights;          // plain, one channel: by tap, then by column; else list by list
    int32_t* finite;        // set by a kernel that knows its lines to be finite
    double magnitude;       // the largest sum of magnitudes of a list
    double error;           // the largest of what is behind lists of bytes
    // Bytes. Behind a list, a zero and how far sums of bytes with the weights of a column's own place may be from those
    // with the list, which repeats; the former made by qvrMakeOwnList when they are asked for. A count of 0: not yet.
    int32_t *ownFirst, *ownCount;
    double* own;             // null: there is no difference
    const qvrFilter* filter; // of places themselves
    int64_t at;              // the place of column 0
    int64_t marks;           // bytes of a line before the kernels' marks, one for every eight elements
} qvrColumns;

// The weights of an output row's own place, made when they are asked for.
typedef struct {
    const qvrFilter* filter;
    int64_t at, first, count; // the place; of the row's taps
    int32_t made, differs;    // already; from those that repeat
    double weight[512];
} qvrOwnRow;

typedef struct {
    int64_t count;
    const char** line;   // the lines of the taps
    const char** source; // of up to 512
    double* weight;
    float* single;
    int32_t finite; // a line times nothing is nothing
    int32_t apart;  // the taps are different rows
    int64_t ahead;  // bytes to what will be written soon, to be asked for; 0: nothing
    float guard;    // how far a sum of singles may be from the prescribed one
    qvrOwnRow* own;
    // Floats: the next output row, if it is formed with this one; its taps begin at line `lag`.
    char* next;
    int64_t lag, nextCount;
    double* nextWeight;
} qvrRowTaps;

// Weights of columns: a fraction or all taps in the type of the lines, or the low pass.
enum { qvrWeights_plain, qvrWeights_double };

typedef struct qvrRowKernels {
    int32_t elementBytes, channels, lineBytes, weights;
    int32_t wide, fused, parts; // of sums: in double, with fused steps, in so many parts along a row
    int32_t together;           // rows that are filtered at a time
    int64_t (*extraBytes)(const qvrColumns* columns); // may be null
    void (*prepare)(qvrColumns* columns);             // may be null
    void (*filter)(const qvrColumns* columns, const char* const* rows, char* const* lines, int64_t count);
    void (*blend)(const qvrColumns* columns, const qvrRowTaps* rows, char* dst);
    // Adds n taps of one column from pixel `from` on, the first of an even number, to its parts: for each of them a
    // lane for every channel of every row that may be together; low pass only.
    void (*addTaps)(const qvrColumns* columns, const char* const* rows, int64_t count, int64_t from, int64_t n,
                    const double* weights, double* parts);
    const struct qvrRowKernels* prescribed; // for lists that are too long for these kernels
} qvrRowKernels;

#ifdef __cplusplus
extern "C" {
#endif
QVR_HIDDEN void qvrMakeOwnList(const qvrColumns* columns, int64_t x);
QVR_HIDDEN void qvrMakeOwnRow(qvrOwnRow* row);
QVR_HIDDEN void qvrResizeSeparable(const qvrResizeBand* band, const qvrRowKernels* kernels);
#ifdef __cplusplus
}
#endif

#endif
