// What the driver of the separable methods and the row kernels of a slot share.
//
// A source row is filtered to a line, one element for each column and channel; an output row is the weighted sum of the
// lines of its taps. The low pass of bytes goes the other way: lines are source rows as singles, they are summed first,
// then what they give along the row.
#ifndef QVR_IMAGE_SEPARABLE_H
#define QVR_IMAGE_SEPARABLE_H

#include "image/plan.h"

// Elements of a source row, as singles, that are worked on at a time, and what loads may reach beyond them.
enum { QVR_RESIZE_ROOM = 2048, QVR_RESIZE_PAST = 64 };

// The columns of a band, or as many as the work buffer holds at a time.
typedef struct {
    int64_t width, length; // columns; pixels of a source row
    int64_t channels;
    int64_t lineFirst, linePixels; // of sums: the pixels of a line
    // Column x + lists has the weights of x, `pixels` further on.
    int64_t lists, pixels;
    int64_t phases;         // of sums: columns are worked on by vectors of all that are x modulo `phases`; or 1
    int64_t most, stride;   // taps of a column; elements of a list
    int64_t chunk;          // of sums: columns whose pixels fit into the room
    int32_t planes;         // phases are worked on by vectors
    int32_t *first, *count; // pixel of a column's first tap, which may lie outside; taps of a list
    int64_t from, to;       // what `prepare` makes of them: columns inside the image
    void* extra;            // and more
    void* weights;          // plain, one channel: by tap, then by column; else list by list
    double magnitude;       // the largest sum of magnitudes of a list
} qvrColumns;

typedef struct {
    int64_t count;
    const char** line;     // the lines of the taps, or their source rows
    const char* source[2]; // the first two source rows
    double* weight;
    float* single;
    int32_t apart; // the taps are different rows
    float guard;   // how far a sum of singles may be from the prescribed one
} qvrRowTaps;

// Weights of columns: a fraction or all taps in the type of the lines, pairs of 14 bits, the low pass in double or
// single.
enum { qvrWeights_plain, qvrWeights_words, qvrWeights_double, qvrWeights_single };

typedef struct qvrRowKernels {
    int32_t elementBytes, channels, lineBytes, weights;
    int32_t wide, fused, parts;           // of sums: in double, with fused steps, in so many parts along a row
    int32_t together;                     // rows that are filtered at a time
    int32_t extraBytes;                   // for eight columns
    void (*prepare)(qvrColumns* columns); // may be null
    void (*filter)(const qvrColumns* columns, const char* const* rows, char* const* lines, int64_t count);
    void (*blend)(const qvrColumns* columns, const qvrRowTaps* rows, char* dst);
    // An output row that shows one source row; may be null.
    int (*direct)(const qvrColumns* columns, const qvrRowTaps* rows, char* dst);
    // Adds n taps of one column from pixel `from` on, the first of an even number, to its parts: for each of them a
    // lane for every channel of every row that may be together; low pass only.
    void (*addTaps)(const qvrColumns* columns, const char* const* rows, int64_t count, int64_t from, int64_t n,
                    const double* weights, double* parts);
    const struct qvrRowKernels* prescribed; // for lists that are too long for these kernels
} qvrRowKernels;

#ifdef __cplusplus
extern "C" {
#endif
QVR_HIDDEN void qvrResizeSeparable(const qvrResizeBand* band, const qvrRowKernels* kernels);
#ifdef __cplusplus
}
#endif

#endif
