// What the programs share round the library: statuses and memory, files as arrays of floats, envelopes.
#ifndef EXAMPLES_SIGNAL_H
#define EXAMPLES_SIGNAL_H

#include <morvenqvr.h>
#include <stdint.h>

#include "audio.h"
#include "picture.h"

// Ends the program with one line unless the call went well.
void check(qvrStatus status, const char* call);
#define CHECK(call) check(call, #call)

// Aligned memory; to be released with Morven_qvrsFree. Ends the program if there is none.
void* allocate(int64_t bytes);

// A whole file as one signal in -1..1, the mean of its channels. Ends the program if it is too long to hold.
typedef struct {
    float* samples;
    int count, rate;
} Signal;
Signal signalRead(Audio* audio);
void signalFree(Signal* signal);

// Writes a signal as 16-bit samples, one channel, in the form of `like`.
void signalWrite(const Signal* signal, const char* path, const Audio* like);

// The envelope over a field of the picture: for each column the range of its samples, and inside of it their standard
// deviation round the mean. 1 is at the top, -1 at the bottom.
typedef struct {
    int left, top, width, height;
} Field;
void envelopeDraw(Picture* picture, Field field, const float* samples, int count);

#endif
