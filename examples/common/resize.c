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

void photoResize(const Photo* from, qvriRect region, const Photo* to, int interpolation)
{
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
}
