// libyuv: planes of bytes and pixels of four. Its bilinear weights have seven bits, its boxes whole pixels.
#include "bench/image/peers.h"

#ifdef QVR_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace bench {

void yuvPeer(const ResizeJob& job, std::vector<ResizePeer>& peers)
{
#ifdef QVR_HAVE_LIBYUV
    if (job.isFloat || (job.method & qvriAntialias))
        return;
    libyuv::FilterMode filter;
    if (job.method == qvriInterNearest)
        filter = libyuv::kFilterNone;
    else if (job.method == qvriInterLinear)
        filter = libyuv::kFilterBilinear;
    else if (job.method == qvriInterSuper)
        filter = libyuv::kFilterBox;
    else
        return;
    // Its box of four channels reads two by two pixels at the most, at 5:1 one: no mean of an area beyond a half.
    if (filter == libyuv::kFilterBox && job.channels == 4 &&
        (job.src.width > 2 * job.dst.width || job.src.height > 2 * job.dst.height))
        return;
    const ResizeJob j = job;
    peers.push_back({"libyuv",
                     [=] {
                         const auto* src = static_cast<const uint8_t*>(j.src.pixels);
                         auto* dst = static_cast<uint8_t*>(j.dst.pixels);
                         const auto scale = j.channels == 1 ? &libyuv::ScalePlane : nullptr;
                         if (scale)
                             scale(src, j.rowBytes(j.src.width), j.src.width, j.src.height, dst,
                                   j.rowBytes(j.dst.width), j.dst.width, j.dst.height, filter);
                         else
                             libyuv::ARGBScale(src, j.rowBytes(j.src.width), j.src.width, j.src.height, dst,
                                               j.rowBytes(j.dst.width), j.dst.width, j.dst.height, filter);
                     },
                     [] {}, -1});
#else
    (void)job, (void)peers;
#endif
}

} // namespace bench
