// Photographs of 8-bit pixels: grey or red, green, blue, alpha. PNG through libpng, JPEG through libjpeg; what a file
// is shows in its first bytes, what it shall be in its name. Whatever is wrong with a file ends the program with one
// line.
#ifndef EXAMPLES_PHOTO_H
#define EXAMPLES_PHOTO_H

#include <stdint.h>

typedef struct {
    int width, height, channels; // 1 or 4
    uint8_t* pixels;             // row by row from the top, without gaps
} Photo;

Photo photoMake(int width, int height, int channels);
Photo photoRead(const char* path);
void photoRelease(Photo* photo);

// .png, .jpg or .jpeg; a JPEG has no alpha.
void photoWrite(const Photo* photo, const char* path);

// 0 or 1, before any work is done: whether the name tells a format that can be written.
int photoCanWrite(const char* path);

#endif
