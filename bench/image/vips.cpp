// libvips on one thread, without its cache of operations. It stretches its filters whenever it reduces.
#include "bench/image/peers.h"
#include "bench/peers.h"

#ifdef QVR_HAVE_VIPS
#include <vips/vips.h>
#endif

namespace bench {

void vipsPeer(const ResizeJob& job, std::vector<ResizePeer>& peers)
{
#ifdef QVR_HAVE_VIPS
    static const bool started = [] {
        if (VIPS_INIT("qvr_bench"))
            return false;
        vips_concurrency_set(1);
        vips_cache_set_max(0);
        return true;
    }();
    const int method = job.method & ~qvriAntialias;
    const bool stretched = (job.method & qvriAntialias) != 0, enlarges = job.enlarges();
    const bool super = method == qvriInterSuper;
    const int block = job.src.width / job.dst.width;
    if (!started || !ownSlot() || (super && job.src.width != block * job.dst.width))
        return;
    if (!super && enlarges == stretched)
        return;
    VipsKernel kernel = VIPS_KERNEL_LINEAR;
    const char* interpolator = "bilinear";
    if (method == qvriInterCubicCatmullRom)
        kernel = VIPS_KERNEL_CUBIC, interpolator = "bicubic";
    else if (method == qvriInterLanczos && !enlarges)
        kernel = VIPS_KERNEL_LANCZOS3;
    else if (method == qvriInterNearest && enlarges)
        interpolator = "nearest";
    else if (method != qvriInterLinear && !super)
        return;
    const ResizeJob j = job;
    const std::string name = interpolator;
    const auto run = [=] {
        const size_t bytes = static_cast<size_t>(j.rowBytes(j.src.width)) * j.src.height;
        VipsImage *in = vips_image_new_from_memory(j.src.pixels, bytes, j.src.width, j.src.height, j.channels,
                                                   j.isFloat ? VIPS_FORMAT_FLOAT : VIPS_FORMAT_UCHAR),
                  *out = nullptr;
        const double x = double(j.dst.width) / j.src.width, y = double(j.dst.height) / j.src.height;
        if (super)
            vips_shrink(in, &out, block, block, nullptr);
        else if (!enlarges)
            vips_reduce(in, &out, 1 / x, 1 / y, "kernel", kernel, nullptr);
        else {
            VipsInterpolate* const i = vips_interpolate_new(name.c_str());
            vips_affine(in, &out, x, 0, 0, y, "interpolate", i, "idx", 0.0, "extend", VIPS_EXTEND_COPY, nullptr);
            g_object_unref(i);
        }
        size_t size = 0;
        void* const pixels = vips_image_write_to_memory(out, &size);
        g_free(pixels);
        g_object_unref(out);
        g_object_unref(in);
    };
    peers.push_back({"libvips", run, [] {}, -1});
#else
    (void)job, (void)peers;
#endif
}

} // namespace bench
