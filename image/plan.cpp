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
double floorOf(double v)
{
    const double t = static_cast<double>(static_cast<int64_t>(v));
    return t > v ? t - 1 : t;
}
double ceilOf(double v)
{
    return -floorOf(-v);
}
double truncOf(double v)
{
    return static_cast<double>(static_cast<int64_t>(v));
}

bool validRects(qvriRect src, qvriRect dst)
{
    return src.x >= 0 && src.y >= 0 && src.width > 0 && src.height > 0 && dst.x >= 0 && dst.y >= 0 && dst.width > 0 &&
           dst.height > 0;
}

struct Extent {
    double minF, maxF, first, end;
};

// One axis of the destination: where the region lands, cut to the destination rectangle. False: there is nothing.
bool clip(int32_t srcLength, int32_t srcAt, int32_t srcCount, int32_t dstAt, int32_t dstCount, double factor,
          double shift, bool edges, Extent& e)
{
    const int32_t rest = srcLength - srcAt, count = rest < srcCount ? rest : srcCount;
    const double from = srcAt * factor + shift, to = (static_cast<double>(srcAt) + count) * factor + shift;
    if (isNan(from) || isNan(to))
        return false;
    const double low = dstAt, high = static_cast<double>(dstAt) + dstCount;
    e.minF = from > low ? from : low;
    e.maxF = to < high ? to : high;
    // Both ends are in the rectangle now, or there is nothing between them.
    if (!(e.minF <= high && e.maxF >= low))
        return false;
    e.first = edges ? ceilOf(e.minF - kWholeCover) : truncOf(e.minF + kStartRound);
    e.end = edges ? floorOf(e.maxF + kWholeCover) : truncOf(e.maxF + kEndRound);
    return e.first < e.end;
}

using Wide = __int128;

// To a multiple of a power of two.
Wide up(Wide value, int multiple)
{
    return (value + multiple - 1) & -static_cast<Wide>(multiple);
}

// Taps of the low-pass table: the radius grows with the reduction of the rectangles.
Wide lowPassTaps(int radius, int32_t src, int32_t dst)
{
    const double reach = static_cast<double>(src) / dst >= 1.0 ? static_cast<double>(radius) * src / dst : radius;
    const double whole = truncOf(reach);
    return 2 * static_cast<int64_t>(whole < reach ? whole + 1 : whole) + 2;
}

Wide plainBytes(const qvrResizeMethod* method, Wide dw, Wide dh, Wide sw, Wide nc, Wide e)
{
    const Wide index = 4 * (up(dw, 16) + up(dh, 16)); // row and column offsets
    const auto weights = [=](Wide d, int slack) { return up(2 * method->radius * d + slack, 32) + up(d, 32); };
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

Wide lowPassBytes(const qvrResizeMethod* method, qvriRect src, qvriRect dst, Wide nc, int elementBytes)
{
    const Wide dw = dst.width, dh = dst.height;
    const Wide lines = up(dw * src.height * nc, 16), line = up(dw * nc, 16);
    const Wide columns = up(lowPassTaps(method->radius, src.width, dst.width) * dw, 16);
    const Wide rows = up(dh * lowPassTaps(method->radius, src.height, dst.height), 16);
    return elementBytes == 4 ? 8 * lines + 4 * line + 8 * columns + 8 * rows
                             : 16 * lines + 8 * line + 12 * columns + 12 * rows;
}

// The selector's method and flags: qvrOk or qvrErrBadInterpolation.
qvrStatus checkInterpolation(int32_t interpolation)
{
    if (qvrMethodOf(interpolation & QVR_INTERPOLATION_METHOD) == nullptr)
        return qvrErrBadInterpolation;
    int flags = 0;
    for (int32_t flag : kFlags)
        flags += (interpolation & flag) != 0;
    return flags > 1 ? qvrErrBadInterpolation : qvrOk;
}

} // namespace

extern "C" {

qvrStatus qvrMakeResizePlan(qvriSize srcSize, qvriRect srcRoi, qvriRect dstRoi, double xFactor, double yFactor,
                            double xShift, double yShift, int32_t interpolation, qvrResizePlan* plan)
{
    if (srcSize.width <= 0 || srcSize.height <= 0 || !validRects(srcRoi, dstRoi))
        return qvrErrBadSize;
    if (0 >= xFactor || 0 >= yFactor)
        return qvrErrBadFactor;
    if (const qvrStatus status = checkInterpolation(interpolation))
        return status;
    const qvrResizeMethod* method = qvrMethodOf(interpolation & QVR_INTERPOLATION_METHOD);
    if (method->selector == qvriInterSuper && (xFactor > 1.0 || yFactor > 1.0))
        return qvrErrBadFactor;
    const int32_t least = srcSize.width < srcSize.height ? srcSize.width : srcSize.height;
    while (method->smaller != 0 && least < 2 * method->radius)
        method = qvrMethodOf(method->smaller);
    if (srcRoi.x >= srcSize.width || srcRoi.y >= srcSize.height)
        return qvrWarnRoiOutside;

    const bool edges = (interpolation & (qvriEdgeBlend | qvriEdgeFade)) != 0;
    Extent x, y;
    if (!clip(srcSize.width, srcRoi.x, srcRoi.width, dstRoi.x, dstRoi.width, xFactor, xShift, edges, x) ||
        !clip(srcSize.height, srcRoi.y, srcRoi.height, dstRoi.y, dstRoi.height, yFactor, yShift, edges, y))
        return qvrWarnNothingToDo;
    plan->x = {1.0 / xFactor, 0 - xShift / xFactor, static_cast<int64_t>(x.first),
               static_cast<int32_t>(x.end - x.first), srcSize.width};
    plan->y = {1.0 / yFactor, 0 - yShift / yFactor, static_cast<int64_t>(y.first),
               static_cast<int32_t>(y.end - y.first), srcSize.height};
    plan->xMinF = x.minF;
    plan->xMaxF = x.maxF;
    plan->yMinF = y.minF;
    plan->yMaxF = y.maxF;
    plan->method = method;
    plan->flags = interpolation & ~QVR_INTERPOLATION_METHOD;
    return qvrOk;
}

qvrStatus qvrResizeThreadBytes(qvriRect srcRoi, qvriRect dstRoi, int channels, int32_t interpolation, int elementBytes,
                               int32_t* size)
{
    const qvrResizeMethod* const method = qvrMethodOf(interpolation & QVR_INTERPOLATION_METHOD);
    const bool antialias = (interpolation & qvriAntialias) != 0, ignored = antialias && method->radius == 0;
    const Wide bytes = antialias && !ignored
                           ? lowPassBytes(method, srcRoi, dstRoi, channels, elementBytes)
                           : plainBytes(method, dstRoi.width, dstRoi.height, srcRoi.width, channels, elementBytes);
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

qvrStatus qvrResizeBufferBytes(qvriRect srcRoi, qvriRect dstRoi, int channels, int32_t interpolation, int elementBytes,
                               int* sizeOut)
{
    if (sizeOut == nullptr)
        return qvrErrNullPointer;
    if (!validRects(srcRoi, dstRoi))
        return qvrErrBadSize;
    if (channels != 1 && channels != 3 && channels != 4)
        return qvrErrBadChannels;
    if (const qvrStatus status = checkInterpolation(interpolation))
        return status;
    int32_t size;
    const qvrStatus status = qvrResizeThreadBytes(srcRoi, dstRoi, channels, interpolation, elementBytes, &size);
    const int32_t total = status < 0 ? 0 : size * qvrResizeThreads(size);
    __builtin_memcpy(sizeOut, &total, sizeof total);
    return status;
}

} // extern "C"
