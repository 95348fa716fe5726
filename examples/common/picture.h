// A picture of 8-bit colours with plain labels, written as PNG through libpng.
#ifndef EXAMPLES_PICTURE_H
#define EXAMPLES_PICTURE_H

#include <stdint.h>

typedef struct {
    uint8_t red, green, blue;
} Colour;

typedef struct {
    int width, height;
    Colour* pixels; // row by row from the top
} Picture;

Picture pictureMake(int width, int height, Colour background);
void pictureRelease(Picture* picture);

// A rectangle; what lies outside of the picture is left out.
void pictureFill(Picture* picture, int x, int y, int width, int height, Colour colour);
// Its outline of one pixel.
void pictureFrame(Picture* picture, int x, int y, int width, int height, Colour colour);

// About ten pixels high, drawn by cairo. (x, y) is the left end of its top; of the second form the middle. The third
// runs upward, with x at its left and y in its middle.
void pictureText(Picture* picture, int x, int y, const char* text, Colour colour);
void pictureTextCentred(Picture* picture, int x, int y, const char* text, Colour colour);
void pictureTextUp(Picture* picture, int x, int y, const char* text, Colour colour);
int pictureTextWidth(const char* text);

// Ends the program with one line if the file cannot be written.
void pictureWrite(const Picture* picture, const char* path);

#endif
