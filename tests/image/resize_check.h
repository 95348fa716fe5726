// One resize call on images between unreadable pages, every byte of the destination compared with the model.
#pragma once

#include "image/slot_tables.h"
#include "model/resize.h"
#include "support/guarded.h"
#include "support/slots.h"
#include "support/values.h"

namespace resize_check {

using namespace resize_model;

template<class T> auto bufferSize(qvriRect src, qvriRect dst, int channels, int interpolation, int* size)
{
    return (std::is_same_v<T, double> ? Morven_qvriResizeGetBufSize_64f
                                      : Morven_qvriResizeGetBufSize)(src, dst, channels, interpolation, size);
}

struct Placing {
    int srcGap = 5, dstGap = 7; // elements between the end of a row and the next
    bool upsideDown = false;    // negative steps
    size_t bufferBack = 0;      // distance of the work buffer's end from the unreadable page
    size_t offset = 0;          // of the images from element alignment
    bool exact = false;         // all sums are exact: results must be, too
    bool inFront = false;       // the images begin at an unreadable page, and do not end at one
};

inline std::string describe(const Job& j)
{
    return (testing::Message() << "interpolation 0x" << std::hex << j.interpolation << std::dec << " source "
                               << j.srcSize.width << "x" << j.srcSize.height << " region " << j.srcRoi.x << ","
                               << j.srcRoi.y << " " << j.srcRoi.width << "x" << j.srcRoi.height << " into "
                               << j.dstRoi.x << "," << j.dstRoi.y << " " << j.dstRoi.width << "x" << j.dstRoi.height
                               << " factors " << j.xFactor << "," << j.yFactor << " shifts " << j.xShift << ","
                               << j.yShift)
        .GetString();
}

// An image in guarded memory whose last byte is the last one before the unreadable page, or first the first behind it.
template<class T> struct Image {
    char* first; // pixel 0, 0
    int step;
    int width, height, channels;
    T at(int x, int y, int c) const
    {
        T v;
        memcpy(static_cast<void*>(&v), place(x, y, c), sizeof v);
        return v;
    }
    char* place(int x, int y, int c) const
    {
        return first + int64_t{y} * step + (int64_t{x} * channels + c) * int64_t(sizeof(T));
    }
    T* data() const { return reinterpret_cast<T*>(first); }
};

template<class T> Image<T> makeImage(Guarded& memory, int width, int height, int channels, int gap, const Placing& p)
{
    const int row = width * channels * int(sizeof(T)), step = row + gap * int(sizeof(T)) + int(p.offset);
    const size_t bytes = size_t(step) * size_t(height - 1) + size_t(row);
    char* base = p.inFront ? memory.atFront<char>(bytes, p.offset) : memory.atEnd<char>(bytes, p.offset);
    if (p.upsideDown)
        return {base + int64_t{height - 1} * step, -step, width, height, channels};
    return {base, step, width, height, channels};
}

template<class T> std::vector<T> sourceValues(size_t n, uint32_t seed, bool integers)
{
    std::vector<T> v = randomValues<T>(n, seed, -100, 300);
    if (integers)
        for (T& x : v)
            x = T(std::floor(double(x)));
    return v;
}

template<class T> T rounded(double v)
{
    if constexpr (std::is_same_v<T, uint8_t>)
        return T(std::clamp(int(std::floor(v + 0.5000001)), 0, 255));
    else
        return T(v);
}

// Whether `got` is what `v` may be rounded to.
template<class T> bool acceptable(T got, const Value& v, bool exact)
{
    const T want = rounded<T>(v.value);
    if (got == want)
        return true;
    if (exact)
        return false;
    if constexpr (std::is_same_v<T, uint8_t>) {
        const double boundary = (double(got) + double(want)) / 2;
        return std::abs(got - want) == 1 && std::abs(v.value - boundary) < 1e-3;
    } else {
        // Roundings of sums, and in double those of the weights, which the model forms in the same way but for their
        // order.
        const double bound = std::is_same_v<T, double> ? 1024 * 0x1p-53 : 64 * 0x1p-24;
        return std::abs(double(got) - v.value) <= bound * v.magnitude;
    }
}

// The fixed parts of a call, ready to be run on every slot.
template<class T, int NC> struct Call {
    Job job;
    Placing placing;
    Image<T> src, dst;
    std::vector<T> before; // of the destination
    int size = 0;

    Call(const Job& j, const Placing& p) : job(j), placing(p)
    {
        const int w = j.srcSize.width, h = j.srcSize.height;
        Guarded& in = pooledGuarded(0, (size_t(w) * NC + 64) * sizeof(T) * size_t(h) + 256);
        src = makeImage<T>(in, w, h, NC, p.srcGap, p);
        const std::vector<T> values = sourceValues<T>(size_t(w) * h * NC, uint32_t(w * 31 + h), p.exact);
        for (int y = 0; y < h; y++)
            memcpy(src.place(0, y, 0), static_cast<const void*>(&values[size_t(y) * w * NC]), sizeof(T) * w * NC);
        // One pixel more on each side than the region, for the edges.
        const int dw = j.dstRoi.x + j.dstRoi.width + 1, dh = j.dstRoi.y + j.dstRoi.height + 1;
        Guarded& out = pooledGuarded(1, (size_t(dw) * NC + 64) * sizeof(T) * size_t(dh) + 256);
        dst = makeImage<T>(out, dw, dh, NC, p.dstGap, p);
        before = sourceValues<T>(size_t(dw) * dh * NC, uint32_t(dw + 7), false);
    }

    template<class F> qvrStatus run(F resize)
    {
        Guarded& out = pooledGuarded(1, (size_t(dst.width) * NC + 64) * sizeof(T) * size_t(dst.height) + 256);
        dst = makeImage<T>(out, dst.width, dst.height, NC, placing.dstGap, placing);
        for (int y = 0; y < dst.height; y++)
            memcpy(dst.place(0, y, 0), static_cast<const void*>(&before[size_t(y) * dst.width * NC]),
                   sizeof(T) * dst.width * NC);
        const qvrStatus query = bufferSize<T>(job.srcRoi, job.dstRoi, NC, job.interpolation, &size);
        EXPECT_GE(query, 0);
        Guarded& work = pooledGuarded(2, size_t(size) + 64);
        qvr8u* buffer = work.atEnd<qvr8u>(size_t(size), placing.bufferBack);
        memset(buffer, 0xFF, size_t(size)); // no numbers
        const qvrStatus status = resize(src.data(), job.srcSize, src.step, job.srcRoi, dst.data(), dst.step, job.dstRoi,
                                        job.xFactor, job.yFactor, job.xShift, job.yShift, job.interpolation, buffer);
        EXPECT_TRUE(work.intact()) << "work buffer";
        EXPECT_TRUE(out.intact()) << "destination";
        // What lies between the rows.
        for (int y = 0; y + 1 < dst.height; y++) {
            const char* gap = dst.step > 0 ? dst.place(dst.width, y, 0) : dst.place(dst.width, y + 1, 0);
            for (int i = 0; i < placing.dstGap * int(sizeof(T)); i++)
                if (static_cast<unsigned char>(gap[i]) != Guarded::kPoison) {
                    ADD_FAILURE() << "written behind row " << y;
                    return status;
                }
        }
        return status;
    }
};

template<class T> struct Expected {
    Value value;
    int exactByte;
};

// Runs the job on all slots and compares.
template<class T, int NC, class Table> void checkJob(const Table& table, const Job& j, const Placing& p = {})
{
    SCOPED_TRACE(describe(j));
    Call<T, NC> call(j, p);
    std::vector<std::vector<Expected<T>>> want(call.before.size());
    const auto index = [&](int64_t x, int64_t y, int c) { return (size_t(y) * call.dst.width + size_t(x)) * NC + c; };
    const qvrStatus status = produce<T>(
        j, NC, [&](int x, int y, int c) { return call.src.at(x, y, c); },
        [&](int64_t x, int64_t y, int c, Value v, int exactByte) { want[index(x, y, c)].push_back({v, exactByte}); });
    slots::each(table, [&](auto resize, int) {
        EXPECT_EQ(call.run(resize), status);
        std::vector<T> got(call.before.size());
        std::vector<bool> done(got.size());
        for (int y = 0; y < call.dst.height; y++)
            for (int x = 0; x < call.dst.width; x++)
                for (int c = 0; c < NC; c++)
                    got[index(x, y, c)] = call.dst.at(x, y, c);
        int failures = 0;
        for (size_t i = 0; i < got.size() && failures < 3; i++) {
            if (want[i].empty())
                continue;
            done[i] = true;
            const auto& e = want[i][0];
            if (e.exactByte >= 0 ? double(got[i]) != e.exactByte : !acceptable(got[i], e.value, p.exact)) {
                failures++;
                ADD_FAILURE() << "x " << i / NC % call.dst.width << " y " << i / NC / call.dst.width << " channel "
                              << i % NC << ": got " << +got[i] << ", want " << e.value.value << " (" << e.exactByte
                              << ")";
            }
        }
        if (j.edges() && status >= 0 && status != qvrWarnNothingToDo && status != qvrWarnRoiOutside)
            treatEdges(j, [&](int64_t x, int64_t y, int64_t ix, int64_t iy, double cover) {
                for (int c = 0; c < NC; c++) {
                    using A = std::conditional_t<std::is_same_v<T, double>, double, float>;
                    const size_t at = index(x, y, c);
                    const A a = A(cover), old = A(call.before[at]), inner = A(got[index(ix, iy, c)]);
                    const A out = j.interpolation & qvriEdgeBlend ? old + a * (inner - old) : a * inner;
                    done[at] = true;
                    EXPECT_EQ(got[at], rounded<T>(double(out))) << "edge x " << x << " y " << y;
                }
            });
        for (size_t i = 0; i < got.size() && failures < 3; i++)
            if (!done[i] && !sameValue(got[i], call.before[i])) {
                failures++;
                ADD_FAILURE() << "written at x " << i / NC % call.dst.width << " y " << i / NC / call.dst.width;
            }
    });
}

// The form for a pixel type.
template<class T, int NC> const auto& tableOf()
{
    if constexpr (std::is_same_v<T, double>)
        return qvrTable_qvriResizeSqrPixel_64f_C1R;
    else if constexpr (std::is_same_v<T, float>)
        return qvrTable_qvriResizeSqrPixel_32f_C1R;
    else if constexpr (NC == 4)
        return qvrTable_qvriResizeSqrPixel_8u_C4R;
    else
        return qvrTable_qvriResizeSqrPixel_8u_C1R;
}

template<class T, int NC> void checkForm(const Job& j, const Placing& p = {})
{
    checkJob<T, NC>(tableOf<T, NC>(), j, p);
}
inline void checkAllForms(const Job& j, const Placing& p = {})
{
    checkForm<uint8_t, 1>(j, p);
    checkForm<uint8_t, 4>(j, p);
    checkForm<float, 1>(j, p);
    checkForm<double, 1>(j, p);
}

// The whole of a source into a destination of the size that the factors give.
inline Job wholeImage(int w, int h, double xFactor, double yFactor, int interpolation)
{
    const int dw = std::max(1, int(std::lround(w * xFactor))), dh = std::max(1, int(std::lround(h * yFactor)));
    return {{w, h}, {0, 0, w, h}, {0, 0, dw, dh}, xFactor, yFactor, 0, 0, interpolation};
}

} // namespace resize_check
