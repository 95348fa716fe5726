// Rows of the resize functions beside image libraries: an enlargement and reductions, every method.
#include <string.h>

#include "bench/image/peers.h"
#include "bench/peers.h"

using namespace bench;

namespace {

struct Geometry {
    int fromWidth, fromHeight, toWidth, toHeight;
    std::string label() const
    {
        return std::to_string(fromWidth) + "x" + std::to_string(fromHeight) + " to " + std::to_string(toWidth) + "x" +
               std::to_string(toHeight);
    }
};
constexpr Geometry kUp = {640, 480, 1920, 1080}, kFrameUp = {1920, 1080, 3840, 2160}, kDown = {4000, 3000, 800, 600},
                   kOdd = {4000, 3000, 1504, 1128}, kSmallDown = {640, 480, 320, 240};
// A half, ratios of small numbers and others, a low picture, small pictures.
constexpr Geometry kReductions[] = {kSmallDown,
                                    kDown,
                                    kOdd,
                                    {1280, 720, 960, 540},
                                    {1280, 720, 800, 450},
                                    {1280, 720, 500, 281},
                                    {4000, 13, 2000, 7},
                                    {64, 48, 32, 24},
                                    {64, 48, 48, 36}};
constexpr Geometry kSmallUp = {64, 48, 128, 96}, kThreeQuarters = {1280, 720, 960, 540};

struct Method {
    const char* name;
    int selector;
};
constexpr Method kMethods[] = {{"nearest", qvriInterNearest},
                               {"linear", qvriInterLinear},
                               {"Lagrange cubic", qvriInterCubic},
                               {"B-spline", qvriInterCubicBSpline},
                               {"Catmull-Rom", qvriInterCubicCatmullRom},
                               {"cubic B=0.5 C=0.3", qvriInterCubicB05C03},
                               {"Lanczos", qvriInterLanczos}};

template<class T, int NC, class Resize>
void addCase(const Sink& sink, const Method& m, const Geometry& g, Resize resize)
{
    sink.add(std::string(m.name) + ((m.selector & qvriAntialias) ? " antialiased " : " ") + g.label(), [=](Case& c) {
        c.elements = double(g.toWidth) * g.toHeight;
        T* const src = c.array<T>(int64_t{g.fromWidth} * g.fromHeight * NC, Data::mixed);
        T* const dst = c.array<T>(int64_t{g.toWidth} * g.toHeight * NC, Data::mixed);
        c.work = {.read = double(sizeof(T)) * NC * g.fromWidth * g.fromHeight / c.elements,
                  .written = double(sizeof(T)) * NC};
        const qvriRect from = {0, 0, g.fromWidth, g.fromHeight}, to = {0, 0, g.toWidth, g.toHeight};
        const double fx = double(g.toWidth) / g.fromWidth, fy = double(g.toHeight) / g.fromHeight;
        int bytes = 0;
        (sizeof(T) == 8 ? Morven_qvriResizeGetBufSize_64f : Morven_qvriResizeGetBufSize)(from, to, NC, m.selector,
                                                                                         &bytes);
        qvr8u* const buffer = Morven_qvrsMalloc_8u(bytes);
        c.atEnd([=] { Morven_qvrsFree(buffer); });
        c.ours([=] {
            resize(src, {g.fromWidth, g.fromHeight}, g.fromWidth * NC * int(sizeof(T)), from, dst,
                   g.toWidth * NC * int(sizeof(T)), to, fx, fy, m.selector, buffer);
        });
        if (sizeof(T) == 8)
            return;
        std::vector<ResizePeer> peers;
        const ResizeJob job = {
            m.selector, sizeof(T) == 4, NC, {src, g.fromWidth, g.fromHeight}, {dst, g.toWidth, g.toHeight}};
        zimgPeer(job, peers);
        stbPeer(job, peers);
        vipsPeer(job, peers);
        yuvPeer(job, peers);
        for (const ResizePeer& p : peers) {
            c.peer(p.name.c_str(), p.run);
            c.atEnd(p.end);
        }
    });
}

template<class T, int NC, auto Export> void methods(const Sink& sink)
{
    const auto resize = [](const T* src, qvriSize size, int srcStep, qvriRect from, T* dst, int dstStep, qvriRect to,
                           double fx, double fy, int selector, qvr8u* buffer) {
        Export(src, size, srcStep, from, dst, dstStep, to, fx, fy, 0, 0, selector, buffer);
    };
    const auto add = [&](const Method& m, const Geometry& g) {
        if (sink.memory || g.fromWidth * g.fromHeight < 1000000)
            addCase<T, NC>(sink, m, g, resize);
    };
    for (const Method& m : kMethods) {
        for (const Geometry& g : {kUp, kDown, kSmallDown, kThreeQuarters, kSmallUp})
            add(m, g);
    }
    const auto eachCommon = [&](auto&& visit) {
        for (const Method& m : kMethods)
            if (m.selector == qvriInterLinear || m.selector == qvriInterCubicCatmullRom ||
                m.selector == qvriInterLanczos)
                visit(m);
    };
    eachCommon([&](const Method& m) { add(m, kFrameUp); });
    for (const Geometry& g : kReductions) {
        add({"super", qvriInterSuper}, g);
        if (g.toWidth != kOdd.toWidth)
            eachCommon([&](const Method& m) { add({m.name, m.selector | qvriAntialias}, g); });
    }
}

template<class T, int NC, auto Export> void wrapper(const Sink& sink)
{
    addCase<T, NC>(sink, {"linear", qvriInterLinear}, kUp,
                   [](const T* src, qvriSize size, int srcStep, qvriRect from, T* dst, int dstStep, qvriRect to,
                      double fx, double fy, int selector, qvr8u*) {
                       Export(src, size, srcStep, from, dst, dstStep, {to.width, to.height}, fx, fy, selector);
                   });
}

template<auto Export> void query(const Sink& sink)
{
    sink.add("Lanczos", [](Case& c) {
        c.elements = 1;
        c.ours([] {
            int bytes;
            Export({0, 0, 640, 480}, {0, 0, 1920, 1080}, 1, qvriInterLanczos, &bytes);
        });
    });
}

constexpr const char *kFamily = "image", *kGroup = "resize";

const bool registered[] = {
    addRow({"qvriResizeSqrPixel_8u_C1R", "", kFamily, kGroup, methods<uint8_t, 1, Morven_qvriResizeSqrPixel_8u_C1R>}),
    addRow({"qvriResizeSqrPixel_8u_C4R", "", kFamily, kGroup, methods<uint8_t, 4, Morven_qvriResizeSqrPixel_8u_C4R>}),
    addRow({"qvriResizeSqrPixel_32f_C1R", "", kFamily, kGroup, methods<float, 1, Morven_qvriResizeSqrPixel_32f_C1R>}),
    addRow({"qvriResizeSqrPixel_64f_C1R", "", kFamily, kGroup, methods<double, 1, Morven_qvriResizeSqrPixel_64f_C1R>}),
    addRow({"qvriResize_8u_C1R", "", kFamily, kGroup, wrapper<uint8_t, 1, Morven_qvriResize_8u_C1R>}),
    addRow({"qvriResize_8u_C4R", "", kFamily, kGroup, wrapper<uint8_t, 4, Morven_qvriResize_8u_C4R>}),
    addRow({"qvriResize_32f_C1R", "", kFamily, kGroup, wrapper<float, 1, Morven_qvriResize_32f_C1R>}),
    addRow({"qvriResizeGetBufSize", "", kFamily, kGroup, query<Morven_qvriResizeGetBufSize>}),
    addRow({"qvriResizeGetBufSize_64f", "", kFamily, kGroup, query<Morven_qvriResizeGetBufSize_64f>}),
};

} // namespace
