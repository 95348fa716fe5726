// Few levels or a colour ramp: a photograph through a palette, and the range of its brightness by blocks.
#include <getopt.h>
#include <stdio.h>
#include <string.h>

#include "common/cli.h"
#include "common/photo.h"
#include "morvenqvr.h"

enum { kBlock = 16 };

static void usage(void)
{
    printf("usage: posterise [--levels N] [--ramp] IN OUT\n"
           "\n"
           "Brings a PNG or JPEG image down to a few levels in each channel.\n"
           "\n"
           "  --levels N  2 to 256 levels (default 4)\n"
           "  --ramp      brightness as a ramp of colours from dark blue to yellow\n"
           "  --help      this text\n");
}

static void need(qvrStatus status, const char* what)
{
    if (status != qvrOk)
        fail("%s: status %d", what, (int)status);
}

static qvr8u level(int value, int levels)
{
    const int step = value * levels / 256;
    return (qvr8u)((step * 255 + (levels - 1) / 2) / (levels - 1));
}

// Brightness of a colour image, by the weights of red, green and blue in video.
static Photo greyOf(const Photo* photo)
{
    Photo grey = photoMake(photo->width, photo->height, 1);
    const size_t count = (size_t)photo->width * photo->height;
    for (size_t i = 0; i < count; i++) {
        const uint8_t* p = photo->pixels + i * (size_t)photo->channels;
        grey.pixels[i] = photo->channels == 1 ? p[0] : (uint8_t)((77 * p[0] + 150 * p[1] + 29 * p[2] + 128) >> 8);
    }
    return grey;
}

// The range of brightness over the image and, on average, within a block.
static void printRange(const Photo* grey)
{
    const qvriSize size = {grey->width, grey->height};
    const int across = (size.width + kBlock - 1) / kBlock, down = (size.height + kBlock - 1) / kBlock;
    qvr16s* wide = (qvr16s*)(void*)photoMake(size.width * 2, size.height, 1).pixels;
    qvr16s* low = (qvr16s*)(void*)photoMake(across * 2, down, 1).pixels;
    qvr16s* high = (qvr16s*)(void*)photoMake(across * 2, down, 1).pixels;
    qvr16s least, most;
    need(Morven_qvriConvert_8u16s_C1R(grey->pixels, size.width, wide, size.width * 2, size), "widening");
    need(Morven_qvriBlockMinMax_16s_C1R(wide, size.width * 2, size, low, across * 2, high, across * 2,
                                        (qvriSize){kBlock, kBlock}, &least, &most),
         "extremes");
    double sum = 0;
    for (int i = 0; i < across * down; i++)
        sum += high[i] - low[i];
    printf("brightness %d to %d, %.1f within blocks of %d by %d\n", least, most, sum / (across * down), kBlock, kBlock);
    Morven_qvrsFree(wide);
    Morven_qvrsFree(low);
    Morven_qvrsFree(high);
}

int main(int argc, char** argv)
{
    programName = "posterise";
    double levels = 4;
    int ramp = 0;
    static const struct option options[] = {{"levels", required_argument, NULL, 'l'},
                                            {"ramp", no_argument, NULL, 'r'},
                                            {"help", no_argument, NULL, 'h'},
                                            {NULL, 0, NULL, 0}};
    for (int option; (option = nextOption(argc, argv, options, usage)) != -1;) {
        switch (option) {
        case 'l':
            parseNumbers("--levels", optarg, 1, &levels, (const double[][2]){{2, 256}});
            break;
        case 'r':
            ramp = 1;
            break;
        }
    }
    char** const files = operands(argc, argv, 2, "wants two files, IN and OUT");
    if (!photoCanWrite(files[1]))
        failUsage("%s: the name of the result must end in .png or .jpg", files[1]);
    Photo photo = photoRead(files[0]), grey = greyOf(&photo), out;
    printRange(&grey);
    if (ramp) {
        qvr32u palette[256];
        for (int i = 0; i < 256; i++) {
            const qvr32u v = level(i, (int)levels);
            palette[i] = v | v * 9 / 10 << 8 | (96 - v * 3 / 8) << 16 | 0xFF000000u;
        }
        out = photoMake(photo.width, photo.height, 4);
        need(Morven_qvriLUTPalette_8u32u_C1R(grey.pixels, grey.width, (qvr32u*)(void*)out.pixels, out.width * 4,
                                             (qvriSize){grey.width, grey.height}, palette, 8),
             "palette");
    } else {
        // All channels are bytes of one long row; alpha comes back afterwards.
        qvr8u palette[256];
        for (int i = 0; i < 256; i++)
            palette[i] = level(i, (int)levels);
        out = photoMake(photo.width, photo.height, photo.channels);
        const int row = photo.width * photo.channels;
        need(
            Morven_qvriLUTPalette_8u_C1R(photo.pixels, row, out.pixels, row, (qvriSize){row, photo.height}, palette, 8),
            "palette");
        for (size_t i = 3; photo.channels == 4 && i < (size_t)row * photo.height; i += 4)
            out.pixels[i] = photo.pixels[i];
    }
    photoWrite(&out, files[1]);
    photoRelease(&photo);
    photoRelease(&grey);
    photoRelease(&out);
    return 0;
}
