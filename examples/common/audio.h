// 16-bit WAV files through libsndfile. Whatever is wrong with a file ends the program with one line.
#ifndef EXAMPLES_AUDIO_H
#define EXAMPLES_AUDIO_H

#include <sndfile.h>
#include <stdint.h>

typedef struct {
    SNDFILE* file;
    const char* path;
    int channels, rate, format;
    int64_t frames; // samples of each channel
} Audio;

// Opens a WAV file of 16-bit samples that is whole and not empty.
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
