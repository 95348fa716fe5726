// Rows of the point operations beside plain loops and image libraries.
#include <string.h>

#include "bench/bench.h"
#include "bench/peers.h"

#ifdef QVR_HAVE_LIBYUV
#include <libyuv.h>
#endif

using namespace bench;

namespace {

constexpr const char *kFamily = "image", *kGroup = "points";

struct Size {
    int width, height;
};
constexpr Size kSizes[] = {{64, 32}, {640, 480}, {4000, 3000}};

template<class Build> void overSizes(const Sink& sink, const std::string& what, Build build)
{
    for (const Size& s : kSizes)
        if (sink.memory || s.width < 4000)
            sink.add(what + std::to_string(s.width) + "x" + std::to_string(s.height), [&](Case& c) {
                c.elements = double(s.width) * s.height;
                build(c, s.width, s.height);
            });
}

// Ours and the plain loop of the export's name.
template<auto Export, class Call> void both(Case& c, const char* name, Call call)
{
    c.ours([=] { call(Export); });
    if (auto* const plain = reinterpret_cast<decltype(Export)>(findPlain(name)))
        c.peer("plain", [=] { call(plain); });
}

template<class T, auto Export> void addC(const Sink& sink, const char* name)
{
    // Each run moves the values; none depends on what they are.
    for (const int s : {0, 1, 3, -1})
        overSizes(sink, "factor " + std::to_string(s) + ", ", [=](Case& c, int w, int h) {
            c.work = {.read = sizeof(T), .written = sizeof(T), .inPlace = true};
            T* const p = c.array<T>(int64_t{w} * h, Data::mixed, true);
            both<Export>(c, name, [=](auto* f) { f(T(3), p, w * int(sizeof(T)), {w, h}, s); });
        });
}

void set(const Sink& sink)
{
    overSizes(sink, "", [](Case& c, int w, int h) {
        c.work = {.written = 2};
        uint16_t* const p = c.array<uint16_t>(int64_t{w} * h, Data::mixed, true);
        both<Morven_qvriSet_16u_C1R>(c, "qvriSet_16u_C1R", [=](auto* f) { f(0x1212, p, 2 * w, {w, h}); });
        c.peer("memset of bytes", [=] { memset(p, 0x12, size_t(w) * h * 2); });
    });
}

void copyMasked(const Sink& sink)
{
    for (const char* kind : {"all set", "mixed", "runs"})
        overSizes(sink, std::string(kind) + ", ", [=](Case& c, int w, int h) {
            c.work = {.read = 5, .written = 2};
            const int64_t n = int64_t{w} * h;
            const uint16_t* const src = c.array<uint16_t>(n, Data::mixed);
            uint16_t* const dst = c.array<uint16_t>(n, Data::mixed, true);
            uint8_t* const mask = c.array<uint8_t>(n, Data::mixed);
            for (int64_t i = 0; i < n; i++)
                mask[i] = kind[0] == 'a' ? 1 : kind[0] == 'm' ? mask[i] & 1 : (i / 100) & 1;
            both<Morven_qvriCopy_16u_C1MR>(c, "qvriCopy_16u_C1MR",
                                           [=](auto* f) { f(src, 2 * w, dst, 2 * w, {w, h}, mask, w); });
        });
}

template<class T, auto Export> void widen(const Sink& sink, const char* name)
{
    overSizes(sink, "", [=](Case& c, int w, int h) {
        c.work = {.read = 1, .written = 2};
        const uint8_t* const src = c.array<uint8_t>(int64_t{w} * h, Data::mixed);
        T* const dst = c.array<T>(int64_t{w} * h, Data::mixed, true);
        both<Export>(c, name, [=](auto* f) { f(src, w, dst, 2 * w, {w, h}); });
    });
}

template<class S, class T, auto Export> void palette(const Sink& sink, const char* name)
{
    for (const int bits : {4, 8, 12, 16})
        if (bits <= int(8 * sizeof(S)))
            overSizes(sink, std::to_string(bits) + " bits, ", [=](Case& c, int w, int h) {
                c.work = {.read = sizeof(S), .written = sizeof(T)};
                const S* const src = c.array<S>(int64_t{w} * h, Data::mixed);
                T* const dst = c.array<T>(int64_t{w} * h, Data::mixed, true);
                const T* const table = c.array<T>(int64_t{1} << bits, Data::mixed);
                both<Export>(c, name, [=](auto* f) {
                    f(src, w * int(sizeof(S)), dst, w * int(sizeof(T)), {w, h}, table, bits);
                });
            });
}

void blocks(const Sink& sink)
{
    for (const int block : {8, 16, 17, 64})
        overSizes(sink, "blocks of " + std::to_string(block) + ", ", [=](Case& c, int w, int h) {
            c.work = {.read = 2};
            const int nx = (w + block - 1) / block, ny = (h + block - 1) / block;
            const int16_t* const src = c.array<int16_t>(int64_t{w} * h, Data::mixed);
            int16_t* const low = c.array<int16_t>(int64_t{nx} * ny, Data::mixed, true);
            int16_t* const high = c.array<int16_t>(int64_t{nx} * ny, Data::mixed, true);
            int16_t* const all = c.array<int16_t>(2, Data::mixed, true);
            both<Morven_qvriBlockMinMax_16s_C1R>(c, "qvriBlockMinMax_16s_C1R", [=](auto* f) {
                f(src, 2 * w, {w, h}, low, 2 * nx, high, 2 * nx, {block, block}, all, all + 1);
            });
        });
}

constexpr int kRows[] = {100, 4096, 1 << 20};

void splitRow(const Sink& sink)
{
    for (const int n : kRows)
        sink.add(std::to_string(n), [=](Case& c) {
            c.elements = n;
            c.work = {.read = 2, .written = 2};
            const uint8_t* const src = c.array<uint8_t>(2 * int64_t{n}, Data::mixed);
            uint8_t* const high = c.array<uint8_t>(n, Data::mixed, true);
            uint8_t* const low = c.array<uint8_t>(n, Data::mixed, true);
            both<Morven_qvriSplitRow_TIFF_16u8u_C1>(c, "qvriSplitRow_TIFF_16u8u_C1", [=](auto* f) {
                uint8_t* planes[] = {high, low};
                f(src, planes, n);
            });
        });
}
void joinRow(const Sink& sink)
{
    for (const int n : kRows)
        sink.add(std::to_string(n), [=](Case& c) {
            c.elements = n;
            c.work = {.read = 2, .written = 2};
            uint8_t* const high = c.array<uint8_t>(n, Data::mixed);
            uint8_t* const low = c.array<uint8_t>(n, Data::mixed);
            uint8_t* const dst = c.array<uint8_t>(2 * int64_t{n}, Data::mixed, true);
            both<Morven_qvriJoinRow_TIFF_8u16u_C1>(c, "qvriJoinRow_TIFF_8u16u_C1", [=](auto* f) {
                uint8_t* planes[] = {high, low};
                f(planes, dst, n);
            });
#ifdef QVR_HAVE_LIBYUV
            if (ownSlot())
                c.peer("libyuv", [=] { libyuv::MergeUVPlane(low, n, high, n, dst, 2 * n, n, 1); });
#endif
        });
}

bool add(const char* name, void (*build)(const Sink&, const char*))
{
    return addRow({name, "", kFamily, kGroup, [=](const Sink& sink) { build(sink, name); }});
}
bool add(const char* name, void (*build)(const Sink&))
{
    return addRow({name, "", kFamily, kGroup, build});
}

const bool registered[] = {
    add("qvriAddC_8u_C1IRSfs", addC<uint8_t, Morven_qvriAddC_8u_C1IRSfs>),
    add("qvriAddC_16u_C1IRSfs", addC<uint16_t, Morven_qvriAddC_16u_C1IRSfs>),
    add("qvriSet_16u_C1R", set),
    add("qvriCopy_16u_C1MR", copyMasked),
    add("qvriConvert_8u16u_C1R", widen<uint16_t, Morven_qvriConvert_8u16u_C1R>),
    add("qvriConvert_8u16s_C1R", widen<int16_t, Morven_qvriConvert_8u16s_C1R>),
    add("qvriLUTPalette_8u_C1R", palette<uint8_t, uint8_t, Morven_qvriLUTPalette_8u_C1R>),
    add("qvriLUTPalette_8u32u_C1R", palette<uint8_t, uint32_t, Morven_qvriLUTPalette_8u32u_C1R>),
    add("qvriLUTPalette_16u8u_C1R", palette<uint16_t, uint8_t, Morven_qvriLUTPalette_16u8u_C1R>),
    add("qvriLUTPalette_16u32u_C1R", palette<uint16_t, uint32_t, Morven_qvriLUTPalette_16u32u_C1R>),
    add("qvriBlockMinMax_16s_C1R", blocks),
    add("qvriSplitRow_TIFF_16u8u_C1", splitRow),
    add("qvriJoinRow_TIFF_8u16u_C1", joinRow),
};

} // namespace
