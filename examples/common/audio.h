// WAV files through libsndfile, as 16-bit samples. Whatever is wrong with a file ends the program with one line.
#ifndef EXAMPLES_AUDIO_H
#define EXAMPLES_AUDIO_H

#include <sndfile.h>
#include <stdint.h>

typedef struct {
    SNDFILE* file;
    const char* path;
    int channels, rate, format;
    int64_t frames; // samples of each channel
    float* wide;    // of a file of more than 16 bits: the samples read last
    int64_t room;   // floats in it
} Audio;

// Opens a WAV file that is whole and not empty. Samples of 24 bits and more and floats are rounded to 16 bits as they
// are read.
Audio audioOpen(const char* path);

// Reads the next `frames` frames, which the file has.
void audioRead(Audio* audio, int16_t* samples, int frames);

void audioRewind(Audio* audio);

// Creates a file in the form of `like`, of `frames` frames; refuses to write over `like`.
Audio audioCreate(const char* path, const Audio* like);

void audioWrite(Audio* audio, const int16_t* samples, int frames);

// Closes; an output that did not reach the disk ends the program.
void audioClose(Audio* audio);

#endif
