// stb_image_resize: bytes and singles of any channels. It stretches its filters whenever it reduces.
#include "bench/image/peers.h"
#include "bench/peers.h"

#ifdef QVR_HAVE_STB
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wunused-function"
#define STB_IMAGE_RESIZE_STATIC
#define STB_IMAGE_RESIZE_IMPLEMENTATION
#include <stb/stb_image_resize.h>
#pragma clang diagnostic pop
#endif

namespace bench {

void stbPeer(const ResizeJob& job, std::vector<ResizePeer>& peers)
{
#ifdef QVR_HAVE_STB
    if (!ownSlot()) // it is compiled for this one
        return;
    const int method = job.method & ~qvriAntialias;
    const bool stretched = (job.method & qvriAntialias) != 0;
    stbir_filter filter;
    if (method == qvriInterLinear)
        filter = STBIR_FILTER_TRIANGLE;
    else if (method == qvriInterCubicCatmullRom)
        filter = STBIR_FILTER_CATMULLROM;
    else if (method == qvriInterCubicBSpline)
        filter = STBIR_FILTER_CUBICBSPLINE;
    else if (method == qvriInterSuper)
        filter = STBIR_FILTER_BOX;
    else
        return;
    if (method != qvriInterSuper && !job.enlarges() && !stretched)
        return;
    const ResizeJob j = job;
    peers.push_back({"stb_image_resize",
                     [=] {
                         stbir_resize(j.src.pixels, j.src.width, j.src.height, j.rowBytes(j.src.width), j.dst.pixels,
                                      j.dst.width, j.dst.height, j.rowBytes(j.dst.width),
                                      j.isFloat ? STBIR_TYPE_FLOAT : STBIR_TYPE_UINT8, j.channels, -1, 0,
                                      STBIR_EDGE_CLAMP, STBIR_EDGE_CLAMP, filter, filter, STBIR_COLORSPACE_LINEAR,
                                      nullptr);
                     },
                     [] {}, stretched || method == qvriInterSuper ? -1.0 : 2.0});
#else
    (void)job, (void)peers;
#endif
}

} // namespace bench
