// The four general resize forms: checks, plan, bands over threads, edges.
#include "frame/region.h"
#include "frame/status.h"
#include "image/functions.h"
#include "image/kernels.h"

namespace {

// Below this many rows or columns a call stays on one thread.
constexpr int kThreadsFrom = 64;

void runBand(const qvrResizeBand& band, int pixel)
{
    if (band.y.count == 0)
        return;
    if (band.method->selector == qvriInterNearest)
        SLOT(ownResizeNearest)(&band, pixel);
    else if (band.method->selector == qvriInterSuper)
        SLOT(ownResizeSuper)(&band, pixel);
    else if (band.method->radius == 1 && !band.lowPass && pixel <= qvrPixel_8u_C4)
        SLOT(ownResizeLinear_8u)(&band, pixel);
    else
        SLOT(ownResizeTaps)(&band, pixel);
}

// The rectangles stay where the caller put them.
qvrStatus resize(const void* src, qvriSize srcSize, int srcStep, const qvriRect& srcRoi, void* dst, int dstStep,
                 const qvriRect& dstRoi, double xFactor, double yFactor, double xShift, double yShift,
                 int interpolation, qvr8u* buffer, int pixel)
{
    if (anyNull(src, dst, buffer))
        return qvrErrNullPointer;
    qvrResizePlan plan;
    if (const qvrStatus status =
            qvrMakeResizePlan(srcSize, &srcRoi, &dstRoi, xFactor, yFactor, xShift, yShift, interpolation, &plan))
        return status;
    int32_t threadBytes;
    const qvrStatus status = qvrResizeThreadBytes(&srcRoi, &dstRoi, pixel == qvrPixel_8u_C4 ? 4 : 1, interpolation,
                                                  pixel == qvrPixel_64f_C1 ? 8 : 4, &threadBytes);
    if (status < 0)
        return status;
    qvrResizeBand& whole = plan.band;
    whole.src = static_cast<const char*>(src);
    whole.dst = static_cast<char*>(dst);
    whole.srcStep = srcStep;
    whole.dstStep = dstStep;
    whole.buffer = reinterpret_cast<char*>(buffer);
    whole.bufferBytes = threadBytes;
    const bool small = whole.x.count < kThreadsFrom || whole.y.count < kThreadsFrom;
    const int threads = small ? 1 : qvrResizeThreads(threadBytes);
    if (threads <= 1) {
        runBand(whole, pixel);
    } else {
        parallelTeam(threads, [&](int t, int team) {
            qvrResizeBand band = whole;
            const int rows = whole.y.count / team;
            band.y.first += Index{t} * rows;
            band.y.count = t == team - 1 ? rows + whole.y.count % team : rows;
            band.bufferBytes = Index{threadBytes} * threads / team;
            band.buffer += t * band.bufferBytes;
            runBand(band, pixel);
        });
    }
    if (plan.flags & (qvriEdgeBlend | qvriEdgeFade))
        qvrResizeEdges(&plan, pixel);
    return status;
}

} // namespace

#define QVR_RESIZE(name, T, pixel)                                                                                     \
    extern "C" qvrStatus SLOT(name)(const T* src, qvriSize srcSize, int srcStep, qvriRect srcRoi, T* dst, int dstStep, \
                                    qvriRect dstRoi, double xFactor, double yFactor, double xShift, double yShift,     \
                                    int interpolation, qvr8u* buffer)                                                  \
    {                                                                                                                  \
        return resize(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, xFactor, yFactor, xShift, yShift,           \
                      interpolation, buffer, pixel);                                                                   \
    }
QVR_RESIZE(qvriResizeSqrPixel_8u_C1R, qvr8u, qvrPixel_8u_C1)
QVR_RESIZE(qvriResizeSqrPixel_8u_C4R, qvr8u, qvrPixel_8u_C4)
QVR_RESIZE(qvriResizeSqrPixel_32f_C1R, qvr32f, qvrPixel_32f_C1)
QVR_RESIZE(qvriResizeSqrPixel_64f_C1R, qvr64f, qvrPixel_64f_C1)
#undef QVR_RESIZE

extern "C" qvrStatus SLOT(qvriResizeGetBufSize)(qvriRect srcRoi, qvriRect dstRoi, int nChannel, int interpolation,
                                                int* sizeOut)
{
    return qvrResizeBufferBytes(&srcRoi, &dstRoi, nChannel, interpolation, 4, sizeOut);
}
extern "C" qvrStatus SLOT(qvriResizeGetBufSize_64f)(qvriRect srcRoi, qvriRect dstRoi, int nChannel, int interpolation,
                                                    int* sizeOut)
{
    return qvrResizeBufferBytes(&srcRoi, &dstRoi, nChannel, interpolation, 8, sizeOut);
}
