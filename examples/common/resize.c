#include "resize.h"

#include <string.h>

#include "cli.h"

const Method kMethods[] = {
    {"nearest", "nearest neighbour", qvriInterNearest},
    {"linear", "bilinear", qvriInterLinear},
    {"cubic", "Lagrange cubic", qvriInterCubic},
    {"bspline", "cubic B-spline", qvriInterCubicBSpline},
    {"catmull-rom", "Catmull-Rom spline", qvriInterCubicCatmullRom},
    {"b05c03", "cubic with B = 0.5, C = 0.3", qvriInterCubicB05C03},
    {"lanczos", "Lanczos, three lobes", qvriInterLanczos},
    {"super", "supersampling", qvriInterSuper},
};
const int kMethodCount = sizeof kMethods / sizeof kMethods[0];

const Method* methodNamed(const char* name)
{
    for (int i = 0; i < kMethodCount; i++)
        if (strcmp(name, kMethods[i].name) == 0)
            return &kMethods[i];
    failUsage("there is no method '%s'", name);
}

// Colour is interpolated as much as it shows: times alpha before, over alpha after.
static void premultiply(uint8_t* rgba, int64_t pixels)
{
    for (int64_t i = 0; i < pixels; i++, rgba += 4)
        for (int c = 0; c < 3; c++)
            rgba[c] = (uint8_t)((rgba[c] * rgba[3] + 127) / 255);
}
static void unmultiply(uint8_t* rgba, int64_t pixels)
{
    for (int64_t i = 0; i < pixels; i++, rgba += 4)
        for (int c = 0; c < 3 && rgba[3] > 0; c++) {
            const int value = (rgba[c] * 255 + rgba[3] / 2) / rgba[3];
            rgba[c] = (uint8_t)(value < 255 ? value : 255);
        }
}
static int transparent(const Photo* photo)
{
    const int64_t bytes = photo->channels == 4 ? (int64_t)photo->width * photo->height * 4 : 0;
    for (int64_t i = 3; i < bytes; i += 4)
        if (photo->pixels[i] != 255)
            return 1;
    return 0;
}

void photoResize(const Photo* whole, qvriRect region, const Photo* to, int interpolation)
{
    Photo copy = *whole;
    const Photo* from = &copy;
    if ((interpolation & ~qvriAntialias) != qvriInterNearest && transparent(whole)) {
        copy = photoMake(whole->width, whole->height, 4);
        memcpy(copy.pixels, whole->pixels, (size_t)whole->width * (size_t)whole->height * 4);
        premultiply(copy.pixels, (int64_t)copy.width * copy.height);
    }
    const qvriRect target = {0, 0, to->width, to->height};
    const double x = (double)to->width / region.width, y = (double)to->height / region.height;
    int bytes;
    qvrStatus status = Morven_qvriResizeGetBufSize(region, target, from->channels, interpolation, &bytes);
    qvr8u* const buffer = status >= 0 ? Morven_qvrsMalloc_8u(bytes) : NULL;
    if (buffer == NULL)
        fail("no work buffer for %d by %d pixels (status %d)", to->width, to->height, (int)status);
    // The region's corner lands on the corner of the target.
    status = (from->channels == 1 ? Morven_qvriResizeSqrPixel_8u_C1R : Morven_qvriResizeSqrPixel_8u_C4R)(
        from->pixels, (qvriSize){from->width, from->height}, from->width * from->channels, region, to->pixels,
        to->width * to->channels, target, x, y, -region.x * x, -region.y * y, interpolation, buffer);
    Morven_qvrsFree(buffer);
    if (status == qvrErrBadFactor)
        failUsage("supersampling cannot enlarge");
    if (status != qvrOk && status != qvrWarnNoAntialiasing)
        fail("resize: status %d", (int)status);
    if (copy.pixels != whole->pixels) {
        unmultiply(to->pixels, (int64_t)to->width * to->height);
        photoRelease(&copy);
    }
}
