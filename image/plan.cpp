// Checks, clipping and the size rule of the resize functions.
#include "image/plan.h"

#include "frame/threads.h"

namespace {

constexpr int32_t kFlags[] = {qvriEdgeBlend, qvriEdgeFade, qvriAntialias};

// A border just short of a half goes to the lower pixel at the start of a range and to the upper one at its end.
constexpr double kStartRound = 0.4999999999, kEndRound = 0.5000000001;

// With an edge treatment only pixels that are covered to within this are produced.
constexpr double kWholeCover = 1e-10;

// Bytes that aligning the start of the buffer can cost.
constexpr int kBufferSlack = 16;

bool isNan(double v)
{
    return v != v;
}
// Values that reach these have been clipped to less than 2^33.
int64_t truncOf(double v)
{
    return static_cast<int64_t>(v);
}
int64_t floorOf(double v)
{
    const int64_t t = truncOf(v);
    return static_cast<double>(t) > v ? t - 1 : t;
}
int64_t ceilOf(double v)
{
    return -floorOf(-v);
}

bool validRects(const qvriRect* src, const qvriRect* dst)
{
    const auto valid = [](const qvriRect& r) { return r.x >= 0 && r.y >= 0 && r.width > 0 && r.height > 0; };
    return valid(*src) && valid(*dst);
}

// One axis of the destination: where the region lands, cut to the destination rectangle. False: there is nothing.
bool clip(int32_t length, int32_t srcAt, int32_t srcCount, int32_t dstAt, int32_t dstCount, double factor, double shift,
          bool edges, qvrResizeAxis* axis, double* minF, double* maxF)
{
    const int32_t rest = length - srcAt, count = rest < srcCount ? rest : srcCount;
    const double from = srcAt * factor + shift, to = (static_cast<double>(srcAt) + count) * factor + shift;
    if (isNan(from) || isNan(to))
        return false;
    const double low = dstAt, high = static_cast<double>(dstAt) + dstCount;
    const double least = from > low ? from : low, most = to < high ? to : high;
    *minF = least;
    *maxF = most;
    // Both ends are in the rectangle now, or there is nothing between them.
    if (!(least <= high && most >= low))
        return false;
    const int64_t first = edges ? ceilOf(least - kWholeCover) : truncOf(least + kStartRound);
    const int64_t end = edges ? floorOf(most + kWholeCover) : truncOf(most + kEndRound);
    axis->first = first;
    axis->count = static_cast<int32_t>(end - first);
    axis->length = length;
    return first < end;
}

using Wide = __int128;

// To a multiple of a power of two.
template<class N> N up(N value, int multiple)
{
    return (value + multiple - 1) & -static_cast<N>(multiple);
}

// Taps of the low-pass table: the radius grows with the reduction of the rectangles.
Wide lowPassTaps(int radius, int32_t src, int32_t dst)
{
    const double reach = static_cast<double>(src) / dst >= 1.0 ? static_cast<double>(radius) * src / dst : radius;
    return 2 * ceilOf(reach) + 2;
}

int64_t plainBytes(const qvrResizeMethod* method, int64_t dw, int64_t dh, int64_t sw, int64_t nc, int64_t e)
{
    const int64_t index = 4 * (up(dw, 16) + up(dh, 16)); // row and column offsets
    const auto weights = [=](int64_t d, int slack) { return up(2 * method->radius * d + slack, 32) + up(d, 32); };
    if (method->selector == qvriInterSuper)
        return 2 * e * nc * up(sw, 16);
    switch (method->radius) {
    case 0:
        return index;
    case 1:
        return index + e * (up(dw, 64) + up(dh, 64) + nc * up(2 * dw + 64, 64));
    case 2:
        return index + e * (weights(dw, 96) + weights(dh, 96) + nc * up(4 * dw + 192, 64));
    default:
        return index + e * (weights(dw, 160) + weights(dh, 160) + nc * up(6 * dw + 160, 32));
    }
}

Wide lowPassBytes(const qvrResizeMethod* method, const qvriRect& src, const qvriRect& dst, Wide nc, int elementBytes)
{
    const Wide dw = dst.width, dh = dst.height;
    const Wide lines = up(dw * src.height * nc, 16), line = up(dw * nc, 16);
    const Wide columns = up(lowPassTaps(method->radius, src.width, dst.width) * dw, 16);
    const Wide rows = up(dh * lowPassTaps(method->radius, src.height, dst.height), 16);
    return elementBytes == 4 ? 8 * lines + 4 * line + 8 * columns + 8 * rows
                             : 16 * lines + 8 * line + 12 * columns + 12 * rows;
}

// Null if selector or flags are none.
const qvrResizeMethod* checkedMethod(int32_t interpolation)
{
    int flags = 0;
    for (int32_t flag : kFlags)
        flags += (interpolation & flag) != 0;
    return flags > 1 ? nullptr : qvrMethodOf(interpolation & QVR_INTERPOLATION_METHOD);
}

} // namespace

extern "C" {

qvrStatus qvrMakeResizePlan(qvriSize srcSize, const qvriRect* srcRoi, const qvriRect* dstRoi, double xFactor,
                            double yFactor, double xShift, double yShift, int32_t interpolation, qvrResizePlan* plan)
{
    if (srcSize.width <= 0 || srcSize.height <= 0 || !validRects(srcRoi, dstRoi))
        return qvrErrBadSize;
    if (0 >= xFactor || 0 >= yFactor)
        return qvrErrBadFactor;
    const qvrResizeMethod* method = checkedMethod(interpolation);
    if (method == nullptr)
        return qvrErrBadInterpolation;
    if (method->selector == qvriInterSuper && (xFactor > 1.0 || yFactor > 1.0))
        return qvrErrBadFactor;
    const int32_t least = srcSize.width < srcSize.height ? srcSize.width : srcSize.height;
    while (method->smaller != 0 && least < 2 * method->radius)
        method = qvrMethodOf(method->smaller);
    if (srcRoi->x >= srcSize.width || srcRoi->y >= srcSize.height)
        return qvrWarnRoiOutside;

    plan->flags = interpolation & ~QVR_INTERPOLATION_METHOD;
    plan->band.method = method;
    plan->band.lowPass = (plan->flags & qvriAntialias) != 0;
    const bool edges = (plan->flags & (qvriEdgeBlend | qvriEdgeFade)) != 0;
    qvrResizeAxis &x = plan->band.x, &y = plan->band.y;
    if (!clip(srcSize.width, srcRoi->x, srcRoi->width, dstRoi->x, dstRoi->width, xFactor, xShift, edges, &x,
              &plan->xMinF, &plan->xMaxF) ||
        !clip(srcSize.height, srcRoi->y, srcRoi->height, dstRoi->y, dstRoi->height, yFactor, yShift, edges, &y,
              &plan->yMinF, &plan->yMaxF))
        return qvrWarnNothingToDo;
    x.inv = 1.0 / xFactor;
    x.off = 0 - xShift / xFactor;
    y.inv = 1.0 / yFactor;
    y.off = 0 - yShift / yFactor;
    return qvrOk;
}

qvrStatus qvrResizeThreadBytes(const qvriRect* src, const qvriRect* dst, int channels, int32_t interpolation,
                               int elementBytes, int32_t* size)
{
    const qvrResizeMethod* const method = qvrMethodOf(interpolation & QVR_INTERPOLATION_METHOD);
    const bool antialias = (interpolation & qvriAntialias) != 0, ignored = antialias && method->radius == 0;
    const Wide bytes = antialias && !ignored
                           ? lowPassBytes(method, *src, *dst, channels, elementBytes)
                           : plainBytes(method, dst->width, dst->height, src->width, channels, elementBytes);
    // With the slack the size is an int32, too.
    if (bytes + kBufferSlack > INT32_MAX) {
        *size = 0;
        return qvrErrBadSize;
    }
    *size = static_cast<int32_t>(bytes) + kBufferSlack;
    return ignored ? qvrWarnNoAntialiasing : qvrOk;
}

int32_t qvrResizeThreads(int32_t threadBytes)
{
    const int32_t most = INT32_MAX / threadBytes, budget = qvrNumThreadsValue();
    return most < budget ? most : budget;
}

qvrStatus qvrResizeBufferBytes(const qvriRect* src, const qvriRect* dst, int channels, int32_t interpolation,
                               int elementBytes, int* sizeOut)
{
    if (sizeOut == nullptr)
        return qvrErrNullPointer;
    if (!validRects(src, dst))
        return qvrErrBadSize;
    if (channels != 1 && channels != 3 && channels != 4)
        return qvrErrBadChannels;
    if (checkedMethod(interpolation) == nullptr)
        return qvrErrBadInterpolation;
    int32_t size;
    const qvrStatus status = qvrResizeThreadBytes(src, dst, channels, interpolation, elementBytes, &size);
    const int32_t total = status < 0 ? 0 : size * qvrResizeThreads(size);
    __builtin_memcpy(sizeOut, &total, sizeof total);
    return status;
}

int64_t qvrAheadOf(const qvrResizeBand* b, int64_t pixelBytes)
{
    constexpr int64_t kLarge = 1 << 20, kLong = 4096, kLine = 64, kAhead = 1024;
    const int64_t row = b->x.count * pixelBytes;
    return b->dstStep * b->y.count >= kLarge && (row >= kLong || b->dstStep - row < kLine) ? kAhead : 0;
}

} // extern "C"
