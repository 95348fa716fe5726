#include "picture.h"

#include <errno.h>
#include <png.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "cli.h"

// Letters of five by seven pixels, a row to a byte, the left pixel in bit 4.
static const struct {
    char letter;
    uint8_t rows[7];
} kLetters[] = {
    {'0', {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E}}, {'1', {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E}},
    {'2', {0x0E, 0x11, 0x01, 0x02, 0x04, 0x08, 0x1F}}, {'3', {0x1F, 0x02, 0x04, 0x02, 0x01, 0x11, 0x0E}},
    {'4', {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02}}, {'5', {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E}},
    {'6', {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E}}, {'7', {0x1F, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08}},
    {'8', {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E}}, {'9', {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C}},
    {'.', {0x00, 0x00, 0x00, 0x00, 0x00, 0x0C, 0x0C}}, {'-', {0x00, 0x00, 0x00, 0x1F, 0x00, 0x00, 0x00}},
    {'H', {0x11, 0x11, 0x11, 0x1F, 0x11, 0x11, 0x11}}, {'z', {0x00, 0x00, 0x1F, 0x02, 0x04, 0x08, 0x1F}},
    {'k', {0x10, 0x10, 0x12, 0x14, 0x18, 0x14, 0x12}}, {'s', {0x00, 0x00, 0x0E, 0x10, 0x0E, 0x01, 0x1E}},
    {'d', {0x01, 0x01, 0x0D, 0x13, 0x11, 0x11, 0x0F}}, {'B', {0x1E, 0x11, 0x11, 0x1E, 0x11, 0x11, 0x1E}},
};
enum { kLetterCount = sizeof kLetters / sizeof kLetters[0], kAdvance = 6 };

Picture pictureMake(int width, int height, Colour background)
{
    Picture picture = {width, height, malloc(sizeof(Colour) * (size_t)width * (size_t)height)};
    if (picture.pixels == NULL)
        fail("out of memory");
    pictureFill(&picture, 0, 0, width, height, background);
    return picture;
}

void pictureRelease(Picture* picture)
{
    free(picture->pixels);
}

void pictureFill(Picture* picture, int x, int y, int width, int height, Colour colour)
{
    for (int row = y < 0 ? 0 : y; row < y + height && row < picture->height; row++)
        for (int column = x < 0 ? 0 : x; column < x + width && column < picture->width; column++)
            picture->pixels[(int64_t)row * picture->width + column] = colour;
}

void pictureFrame(Picture* picture, int x, int y, int width, int height, Colour colour)
{
    pictureFill(picture, x, y, width, 1, colour);
    pictureFill(picture, x, y + height - 1, width, 1, colour);
    pictureFill(picture, x, y, 1, height, colour);
    pictureFill(picture, x + width - 1, y, 1, height, colour);
}

void pictureText(Picture* picture, int x, int y, const char* text, Colour colour)
{
    for (; *text != '\0'; text++, x += kAdvance)
        for (int i = 0; i < kLetterCount; i++)
            if (kLetters[i].letter == *text)
                for (int bit = 0; bit < 35; bit++)
                    if (kLetters[i].rows[bit / 5] >> (4 - bit % 5) & 1)
                        pictureFill(picture, x + bit % 5, y + bit / 5, 1, 1, colour);
}

int pictureTextWidth(const char* text)
{
    return (int)strlen(text) * kAdvance - 1;
}

void pictureWrite(const Picture* picture, const char* path)
{
    png_image image = {.version = PNG_IMAGE_VERSION,
                       .width = (png_uint_32)picture->width,
                       .height = (png_uint_32)picture->height,
                       .format = PNG_FORMAT_RGB};
    FILE* file = fopen(path, "wb");
    if (file == NULL)
        fail("%s: %s", path, strerror(errno));
    if (!png_image_write_to_stdio(&image, file, 0, picture->pixels, 0, NULL))
        fail("%s: %s", path, image.message);
    if (fclose(file) != 0)
        fail("%s: %s", path, strerror(errno));
}
