// One photograph through every method, on one sheet: reduced as a whole, plainly and antialiased, and a detail
// enlarged.
#include <getopt.h>
#include <stdio.h>
#include <string.h>

#include "common/cli.h"
#include "common/photo.h"
#include "common/resize.h"

enum { kCell = 200, kGap = 10 };

static void usage(void)
{
    printf("usage: contactsheet [--zoom N] [--out FILE] PHOTO\n"
           "\n"
           "A row for each method: the photograph reduced, the same antialiased, and its middle enlarged.\n"
           "\n"
           "  --zoom N    enlargement of the detail, 2 to 32 (default 6)\n"
           "  --out FILE  .png or .jpg (default contactsheet.png)\n"
           "  --help      this text\n");
}

// Copies `cell` to the sheet; both have four channels.
static void paste(const Photo* sheet, const Photo* cell, int x, int y)
{
    for (int row = 0; row < cell->height; row++)
        memcpy(sheet->pixels + ((size_t)(y + row) * sheet->width + x) * 4, cell->pixels + (size_t)row * cell->width * 4,
               (size_t)cell->width * 4);
}

// Grey photographs get the colours of the sheet through a palette of grey pixels.
static Photo asColour(Photo photo)
{
    if (photo.channels == 4)
        return photo;
    Photo colour = photoMake(photo.width, photo.height, 4);
    qvr32u palette[256];
    for (qvr32u i = 0; i < 256; i++)
        palette[i] = i | i << 8 | i << 16 | 0xFF000000u;
    const qvrStatus status =
        Morven_qvriLUTPalette_8u32u_C1R(photo.pixels, photo.width, (qvr32u*)(void*)colour.pixels, photo.width * 4,
                                        (qvriSize){photo.width, photo.height}, palette, 8);
    if (status != qvrOk)
        fail("palette: status %d", (int)status);
    photoRelease(&photo);
    return colour;
}

int main(int argc, char** argv)
{
    programName = "contactsheet";
    double zoom = 6;
    const char* out = "contactsheet.png";
    static const struct option options[] = {{"zoom", required_argument, NULL, 'z'},
                                            {"out", required_argument, NULL, 'o'},
                                            {"help", no_argument, NULL, 'h'},
                                            {NULL, 0, NULL, 0}};
    for (int option; (option = nextOption(argc, argv, options, usage)) != -1;) {
        switch (option) {
        case 'z':
            parseNumbers("--zoom", optarg, 1, &zoom, (const double[][2]){{2, 32}});
            break;
        case 'o':
            out = optarg;
            break;
        }
    }
    char** const files = operands(argc, argv, 1, "wants one photograph");
    if (!photoCanWrite(out))
        failUsage("%s: the name of the sheet must end in .png or .jpg", out);
    const Photo photo = asColour(photoRead(files[0]));
    if (photo.width <= kCell || photo.height <= kCell)
        fail("%s: %d by %d pixels are too few to reduce; more than %d each way are wanted", files[0], photo.width,
             photo.height, kCell);
    // The square in the middle, and its middle.
    const int side = photo.width < photo.height ? photo.width : photo.height, part = (int)(kCell / zoom);
    const qvriRect square = {(photo.width - side) / 2, (photo.height - side) / 2, side, side};
    const qvriRect detail = {(photo.width - part) / 2, (photo.height - part) / 2, part, part};

    Photo sheet = photoMake(3 * kCell + 4 * kGap, kMethodCount * (kCell + kGap) + kGap, 4);
    memset(sheet.pixels, 0xFF, (size_t)sheet.width * sheet.height * 4);
    Photo cell = photoMake(kCell, kCell, 4);
    printf("rows from the top; columns: reduced %d to %d, antialiased, enlarged %d to %d\n", side, kCell, part, kCell);
    for (int m = 0; m < kMethodCount; m++) {
        const int y = kGap + m * (kCell + kGap), selector = kMethods[m].selector;
        printf("  %d  %s\n", m + 1, kMethods[m].title);
        photoResize(&photo, square, &cell, selector);
        paste(&sheet, &cell, kGap, y);
        photoResize(&photo, square, &cell, selector | qvriAntialias);
        paste(&sheet, &cell, 2 * kGap + kCell, y);
        if (selector == qvriInterSuper)
            continue; // it only reduces
        photoResize(&photo, detail, &cell, selector);
        paste(&sheet, &cell, 3 * kGap + 2 * kCell, y);
    }
    photoWrite(&sheet, out);
    return 0;
}
