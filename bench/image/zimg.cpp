// zimg: one plane of bytes or singles. It stretches its filters whenever it reduces.
#include "bench/image/peers.h"

#ifdef QVR_HAVE_ZIMG
#include <zimg.h>
#endif

namespace bench {

void zimgPeer(const ResizeJob& job, std::vector<ResizePeer>& peers)
{
#ifdef QVR_HAVE_ZIMG
    const int method = job.method & ~qvriAntialias;
    const bool stretched = (job.method & qvriAntialias) != 0;
    if (job.channels != 1 || method == qvriInterSuper || (method != qvriInterNearest && !job.enlarges() && !stretched))
        return;
    // It wants rows on the boundaries of its vectors.
    const int boundary = job.isFloat ? 64 : 32;
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
    peers.push_back({"zimg",
                     [=] { zimg_filter_graph_process(graph, &src, &dst, scratch, nullptr, nullptr, nullptr, nullptr); },
                     [=] {
                         zimg_filter_graph_free(graph);
                         free(scratch);
                     },
                     stretched ? -1.0 : 2.0});
#else
    (void)job, (void)peers;
#endif
}

} // namespace bench
