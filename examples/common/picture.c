#include "picture.h"

#include <cairo.h>
#include <errno.h>
#include <math.h>
#include <png.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "cli.h"

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

// ---- Text -----------------------------------------------------------------------------------------------------------

enum { kTextHeight = 14, kBaseline = 10, kFontSize = 11 };

static cairo_t* penOn(cairo_surface_t* surface)
{
    cairo_t* const pen = cairo_create(surface);
    cairo_select_font_face(pen, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(pen, kFontSize);
    return pen;
}

int pictureTextWidth(const char* text)
{
    cairo_surface_t* const surface = cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1);
    cairo_t* const pen = penOn(surface);
    cairo_text_extents_t extents;
    cairo_text_extents(pen, text, &extents);
    cairo_destroy(pen);
    cairo_surface_destroy(surface);
    return (int)ceil(extents.x_advance);
}

static uint8_t mixed(uint8_t from, uint8_t to, int part)
{
    return (uint8_t)((from * (255 - part) + to * part + 127) / 255);
}

// How much of each pixel the letters cover; (x, y) of the text to places on the picture.
static void drawText(Picture* picture, int x, int y, const char* text, Colour colour, int upward)
{
    const int width = pictureTextWidth(text) + 2;
    cairo_surface_t* const surface = cairo_image_surface_create(CAIRO_FORMAT_A8, width, kTextHeight);
    cairo_t* const pen = penOn(surface);
    cairo_move_to(pen, 1, kBaseline);
    cairo_show_text(pen, text);
    cairo_destroy(pen);
    cairo_surface_flush(surface);
    const unsigned char* const cover = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    for (int row = 0; row < kTextHeight; row++)
        for (int column = 0; column < width; column++) {
            const int px = upward ? x + row : x + column, py = upward ? y - column : y + row;
            if (px < 0 || py < 0 || px >= picture->width || py >= picture->height)
                continue;
            const int part = cover[row * stride + column];
            Colour* const p = &picture->pixels[(int64_t)py * picture->width + px];
            *p = (Colour){mixed(p->red, colour.red, part), mixed(p->green, colour.green, part),
                          mixed(p->blue, colour.blue, part)};
        }
    cairo_surface_destroy(surface);
}

void pictureText(Picture* picture, int x, int y, const char* text, Colour colour)
{
    drawText(picture, x, y, text, colour, 0);
}

void pictureTextCentred(Picture* picture, int x, int y, const char* text, Colour colour)
{
    drawText(picture, x - pictureTextWidth(text) / 2, y, text, colour, 0);
}

void pictureTextUp(Picture* picture, int x, int y, const char* text, Colour colour)
{
    drawText(picture, x, y + pictureTextWidth(text) / 2, text, colour, 1);
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
