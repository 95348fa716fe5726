// Scales a photograph: PNG or JPEG in, PNG or JPEG out, by any method, whole or in part.
#include <getopt.h>
#include <math.h>
#include <stdio.h>
#include <string.h>

#include "common/cli.h"
#include "common/photo.h"
#include "common/resize.h"

static void usage(void)
{
    printf(
        "usage: scale [options] IN OUT\n"
        "\n"
        "Scales a PNG or JPEG image; OUT is a .png or .jpg file.\n"
        "\n"
        "  --factor F       scales both directions by F (default 0.5)\n"
        "  --size W,H       the size of the result; 0 for one of them keeps the shape\n"
        "  --region X,Y,W,H only this part of the image\n"
        "  --method NAME    nearest, linear, cubic, bspline, catmull-rom, b05c03, lanczos or super (default lanczos)\n"
        "  --antialias      weights as wide as the reduction, against moire\n"
        "  --help           this text\n");
}

int main(int argc, char** argv)
{
    programName = "scale";
    enum { kMost = 65535 };
    double factor = 0.5, size[2] = {0, 0}, part[4] = {0, 0, 0, 0};
    const Method* method = methodNamed("lanczos");
    int antialias = 0;
    static const struct option options[] = {{"factor", required_argument, NULL, 'f'},
                                            {"size", required_argument, NULL, 's'},
                                            {"region", required_argument, NULL, 'r'},
                                            {"method", required_argument, NULL, 'm'},
                                            {"antialias", no_argument, NULL, 'a'},
                                            {"help", no_argument, NULL, 'h'},
                                            {NULL, 0, NULL, 0}};
    for (int option; (option = nextOption(argc, argv, options, usage)) != -1;) {
        switch (option) {
        case 'f':
            parseNumbers("--factor", optarg, 1, &factor, (const double[][2]){{1e-4, 1e4}});
            break;
        case 's':
            parseNumbers("--size", optarg, 2, size, (const double[][2]){{0, kMost}, {0, kMost}});
            break;
        case 'r':
            parseNumbers("--region", optarg, 4, part,
                         (const double[][2]){{0, kMost}, {0, kMost}, {1, kMost}, {1, kMost}});
            break;
        case 'm':
            method = methodNamed(optarg);
            break;
        case 'a':
            antialias = qvriAntialias;
            break;
        }
    }
    char** const files = operands(argc, argv, 2, "wants two files, IN and OUT");
    const char *in = files[0], *out = files[1];
    if (!photoCanWrite(out))
        failUsage("%s: the name of the result must end in .png or .jpg", out);

    Photo from = photoRead(in);
    qvriRect region = {(int)part[0], (int)part[1], (int)part[2], (int)part[3]};
    if (region.width == 0)
        region = (qvriRect){0, 0, from.width, from.height};
    if (region.x + region.width > from.width || region.y + region.height > from.height)
        failUsage("the region reaches beyond the image of %d by %d pixels", from.width, from.height);
    double width = (int)size[0], height = (int)size[1];
    if (width == 0 && height == 0) {
        width = region.width * factor;
        height = region.height * factor;
    } else if (width == 0) {
        width = height * region.width / region.height;
    } else if (height == 0) {
        height = width * region.height / region.width;
    }
    width = fmax(1, round(width));
    height = fmax(1, round(height));
    if (width > kMost || height > kMost)
        failUsage("a result of %.0f by %.0f pixels is too large", width, height);
    Photo to = photoMake((int)width, (int)height, from.channels);
    const double start = seconds();
    photoResize(&from, region, &to, method->selector | antialias);
    const double took = seconds() - start;
    photoWrite(&to, out);
    printf("%s: %d x %d, %s%s, %.2f ms\n", out, to.width, to.height, method->title, antialias ? ", antialiased" : "",
           took * 1e3);
    photoRelease(&from);
    photoRelease(&to);
    return 0;
}
