// zimg: one plane of bytes or singles. It stretches its filters whenever it reduces.
#include "bench/image/peers.h"
#include "bench/peers.h"

#ifdef QVR_HAVE_ZIMG
#include <zimg.h>
#endif

namespace bench {

#ifdef QVR_HAVE_ZIMG
namespace {

// What it may use for each slot.
struct Level {
    zimg_cpu_type_e cpu;
    const char* name;
};
constexpr Level kLevels[] = {{ZIMG_CPU_X86_SSE2, "zimg SSE2"},    {ZIMG_CPU_X86_SSE3, "zimg SSE3"},
                             {ZIMG_CPU_X86_SSSE3, "zimg SSSE3"},  {ZIMG_CPU_X86_SSSE3, "zimg SSSE3"},
                             {ZIMG_CPU_X86_SSE41, "zimg SSE4.1"}, {ZIMG_CPU_X86_AVX, "zimg AVX"},
                             {ZIMG_CPU_X86_AVX2, "zimg AVX2"}};
constexpr Level kAll = {ZIMG_CPU_AUTO_64B, "zimg"}; // by itself it leaves 64-byte vectors alone

void addLevel(const ResizeJob& job, const Level& level, std::vector<ResizePeer>& peers)
{
    const int method = job.method & ~qvriAntialias;
    const bool stretched = (job.method & qvriAntialias) != 0;
    if (job.channels != 1 || method == qvriInterSuper || (method != qvriInterNearest && !job.enlarges() && !stretched))
        return;
    // It wants rows on the boundaries of its vectors.
    const int boundary = job.isFloat || level.cpu == ZIMG_CPU_AUTO_64B ? 64 : 32;
    if (job.rowBytes(job.src.width) % boundary != 0 || job.rowBytes(job.dst.width) % boundary != 0)
        return;
    zimg_image_format from, to;
    zimg_graph_builder_params params;
    zimg_image_format_default(&from, ZIMG_API_VERSION);
    zimg_image_format_default(&to, ZIMG_API_VERSION);
    zimg_graph_builder_params_default(&params, ZIMG_API_VERSION);
    from.width = static_cast<unsigned>(job.src.width);
    from.height = static_cast<unsigned>(job.src.height);
    to.width = static_cast<unsigned>(job.dst.width);
    to.height = static_cast<unsigned>(job.dst.height);
    params.cpu_type = level.cpu;
    from.pixel_type = to.pixel_type = job.isFloat ? ZIMG_PIXEL_FLOAT : ZIMG_PIXEL_BYTE;
    from.pixel_range = to.pixel_range = ZIMG_RANGE_FULL;
    switch (method) {
    case qvriInterNearest:
        params.resample_filter = ZIMG_RESIZE_POINT;
        break;
    case qvriInterLinear:
        params.resample_filter = ZIMG_RESIZE_BILINEAR;
        break;
    case qvriInterLanczos:
        params.resample_filter = ZIMG_RESIZE_LANCZOS;
        params.filter_param_a = 3;
        break;
    case qvriInterCubicCatmullRom:
        params.resample_filter = ZIMG_RESIZE_BICUBIC;
        params.filter_param_a = 0;
        params.filter_param_b = 0.5;
        break;
    default:
        return;
    }
    zimg_filter_graph* const graph = zimg_filter_graph_build(&from, &to, &params);
    if (graph == nullptr)
        return;
    size_t bytes = 0;
    zimg_filter_graph_get_tmp_size(graph, &bytes);
    void* const scratch = aligned_alloc(64, (bytes + 63) / 64 * 64);
    zimg_image_buffer_const src = {};
    zimg_image_buffer dst = {};
    src.version = dst.version = ZIMG_API_VERSION;
    src.plane[0] = {job.src.pixels, job.rowBytes(job.src.width), ZIMG_BUFFER_MAX};
    dst.plane[0] = {job.dst.pixels, job.rowBytes(job.dst.width), ZIMG_BUFFER_MAX};
    peers.push_back({level.name,
                     [=] { zimg_filter_graph_process(graph, &src, &dst, scratch, nullptr, nullptr, nullptr, nullptr); },
                     [=] {
                         zimg_filter_graph_free(graph);
                         free(scratch);
                     },
                     stretched ? -1.0 : 2.0});
}

} // namespace
#endif

void zimgPeer(const ResizeJob& job, std::vector<ResizePeer>& peers)
{
#ifdef QVR_HAVE_ZIMG
    if (ownSlot())
        addLevel(job, kAll, peers);
    addLevel(job, kLevels[qvrCpuIndex], peers);
#else
    (void)job, (void)peers;
#endif
}

} // namespace bench
