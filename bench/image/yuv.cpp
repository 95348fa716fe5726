// libyuv: planes of bytes and pixels of four. Its bilinear weights have seven bits, its boxes whole pixels.
#include "bench/image/peers.h"
#include "bench/peers.h"

#ifdef QVR_HAVE_LIBYUV
#include <libyuv.h>
#endif

namespace bench {

#ifdef QVR_HAVE_LIBYUV
namespace {

// Holds libyuv to the level of the slot in force, once, where that is not what the machine chooses.
bool hold()
{
    using namespace libyuv;
    constexpr int sse2 = kCpuInitialized | kCpuHasX86 | kCpuHasSSE2, ssse3 = sse2 | kCpuHasSSSE3,
                  sse41 = ssse3 | kCpuHasSSE41;
    constexpr int flags[] = {sse2, sse2, ssse3, ssse3, sse41, sse41 | kCpuHasSSE42 | kCpuHasAVX};
    if (!ownSlot())
        MaskCpuFlags(flags[qvrCpuIndex]);
    return true;
}

} // namespace
#endif

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
    static const bool held = hold();
    (void)held;
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
