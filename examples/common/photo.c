#include "photo.h"

#include <errno.h>
#include <png.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>

#include <jpeglib.h>

#include "cli.h"
#include "morvenqvr.h"

enum { kMostPixels = 1 << 28, kJpegQuality = 92 };

Photo photoMake(int width, int height, int channels)
{
    const int64_t bytes = (int64_t)width * height * channels;
    Photo photo = {width, height, channels, NULL};
    if (width < 1 || height < 1 || (int64_t)width * height > kMostPixels || bytes > INT32_MAX)
        fail("an image of %d by %d pixels is too large", width, height);
    photo.pixels = Morven_qvrsMalloc_8u((int)bytes);
    if (photo.pixels == NULL)
        fail("no memory for %lld bytes", (long long)bytes);
    return photo;
}

void photoRelease(Photo* photo)
{
    Morven_qvrsFree(photo->pixels);
    photo->pixels = NULL;
}

static FILE* openFile(const char* path, const char* mode)
{
    FILE* const file = fopen(path, mode);
    if (file == NULL)
        fail("%s: %s", path, strerror(errno));
    return file;
}

static Photo readPng(FILE* file, const char* path)
{
    png_image image = {.version = PNG_IMAGE_VERSION};
    if (!png_image_begin_read_from_stdio(&image, file))
        fail("%s: %s", path, image.message);
    const int grey = (image.format & (PNG_FORMAT_FLAG_COLOR | PNG_FORMAT_FLAG_ALPHA)) == 0;
    image.format = grey ? PNG_FORMAT_GRAY : PNG_FORMAT_RGBA;
    if ((int64_t)image.width * image.height > kMostPixels)
        fail("%s: too large", path);
    Photo photo = photoMake((int)image.width, (int)image.height, grey ? 1 : 4);
    if (!png_image_finish_read(&image, NULL, photo.pixels, 0, NULL))
        fail("%s: %s", path, image.message);
    return photo;
}

// The file that libjpeg works on, for its messages.
static const char* jpegPath;

static void jpegFailed(j_common_ptr codec)
{
    char text[JMSG_LENGTH_MAX];
    codec->err->format_message(codec, text);
    fail("%s: %s", jpegPath, text);
}

static void jpegErrors(struct jpeg_error_mgr* errors, const char* path)
{
    jpeg_std_error(errors);
    errors->error_exit = jpegFailed;
    jpegPath = path;
}

static Photo readJpeg(FILE* file, const char* path)
{
    struct jpeg_decompress_struct codec;
    struct jpeg_error_mgr errors;
    jpegErrors(&errors, path);
    codec.err = &errors;
    jpeg_create_decompress(&codec);
    jpeg_stdio_src(&codec, file);
    jpeg_read_header(&codec, TRUE);
    const int grey = codec.jpeg_color_space == JCS_GRAYSCALE;
    codec.out_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_RGBA;
    jpeg_start_decompress(&codec);
    Photo photo = photoMake((int)codec.output_width, (int)codec.output_height, grey ? 1 : 4);
    while (codec.output_scanline < codec.output_height) {
        JSAMPROW row = photo.pixels + (size_t)codec.output_scanline * photo.width * photo.channels;
        jpeg_read_scanlines(&codec, &row, 1);
    }
    jpeg_finish_decompress(&codec);
    jpeg_destroy_decompress(&codec);
    return photo;
}

Photo photoRead(const char* path)
{
    FILE* const file = openFile(path, "rb");
    unsigned char start[4] = {0};
    const size_t got = fread(start, 1, sizeof start, file);
    rewind(file);
    Photo photo = {0};
    if (got == 4 && start[0] == 0x89 && memcmp(start + 1, "PNG", 3) == 0)
        photo = readPng(file, path);
    else if (got == 4 && start[0] == 0xFF && start[1] == 0xD8)
        photo = readJpeg(file, path);
    else
        fail("%s: neither PNG nor JPEG", path);
    fclose(file);
    return photo;
}

static int endsWith(const char* path, const char* end)
{
    const size_t n = strlen(path), m = strlen(end);
    return n > m && strcasecmp(path + n - m, end) == 0;
}

int photoCanWrite(const char* path)
{
    return endsWith(path, ".png") || endsWith(path, ".jpg") || endsWith(path, ".jpeg");
}

static void writeJpeg(const Photo* photo, FILE* file, const char* path)
{
    struct jpeg_compress_struct codec;
    struct jpeg_error_mgr errors;
    jpegErrors(&errors, path);
    codec.err = &errors;
    jpeg_create_compress(&codec);
    jpeg_stdio_dest(&codec, file);
    codec.image_width = (JDIMENSION)photo->width;
    codec.image_height = (JDIMENSION)photo->height;
    codec.input_components = photo->channels;
    codec.in_color_space = photo->channels == 1 ? JCS_GRAYSCALE : JCS_EXT_RGBX;
    jpeg_set_defaults(&codec);
    jpeg_set_quality(&codec, kJpegQuality, TRUE);
    jpeg_start_compress(&codec, TRUE);
    while (codec.next_scanline < codec.image_height) {
        JSAMPROW row = photo->pixels + (size_t)codec.next_scanline * photo->width * photo->channels;
        jpeg_write_scanlines(&codec, &row, 1);
    }
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
}

void photoWrite(const Photo* photo, const char* path)
{
    FILE* const file = openFile(path, "wb");
    if (endsWith(path, ".png")) {
        png_image image = {.version = PNG_IMAGE_VERSION,
                           .width = (png_uint_32)photo->width,
                           .height = (png_uint_32)photo->height,
                           .format = photo->channels == 1 ? PNG_FORMAT_GRAY : PNG_FORMAT_RGBA};
        if (!png_image_write_to_stdio(&image, file, 0, photo->pixels, 0, NULL))
            fail("%s: %s", path, image.message);
    } else {
        writeJpeg(photo, file, path);
    }
    if (fclose(file) != 0)
        fail("%s: %s", path, strerror(errno));
}
