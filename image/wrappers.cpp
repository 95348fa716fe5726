// Resizing without a shift and with a work buffer of its own.
#include "frame/public.h"
#include "image/public.h"
#include "vector/plain.h"

namespace {

template<class T, class Resize>
qvrStatus resizeWith(Resize resize, int channels, const T* src, qvriSize srcSize, int srcStep, qvriRect srcRoi, T* dst,
                     int dstStep, qvriSize dstRoiSize, double xFactor, double yFactor, int interpolation)
{
    // The rectangle sits at the origin of the source's region.
    const qvriRect dstRoi = {srcRoi.x, srcRoi.y, dstRoiSize.width, dstRoiSize.height};
    int bytes = 0;
    if (const qvrStatus status = Morven_qvriResizeGetBufSize(srcRoi, dstRoi, channels, interpolation, &bytes))
        return status;
    qvr8u* const buffer = Morven_qvrsMalloc_8u(bytes);
    if (buffer == nullptr)
        return qvrOk;
    const qvrStatus status =
        resize(src, srcSize, srcStep, srcRoi, dst, dstStep, dstRoi, xFactor, yFactor, 0.0, 0.0, interpolation, buffer);
    Morven_qvrsFree(buffer);
    return status;
}

} // namespace

#define QVR_RESIZE(form, T, channels)                                                                                  \
    extern "C" QVR_EXPORTED qvrStatus Morven_qvriResize_##form(                                                        \
        const T* src, qvriSize srcSize, int srcStep, qvriRect srcRoi, T* dst, int dstStep, qvriSize dstRoiSize,        \
        double xFactor, double yFactor, int interpolation)                                                             \
    {                                                                                                                  \
        return resizeWith(Morven_qvriResizeSqrPixel_##form, channels, src, srcSize, srcStep, srcRoi, dst, dstStep,     \
                          dstRoiSize, xFactor, yFactor, interpolation);                                                \
    }
QVR_RESIZE(8u_C1R, qvr8u, 1)
QVR_RESIZE(8u_C4R, qvr8u, 4)
QVR_RESIZE(32f_C1R, qvr32f, 1)
#undef QVR_RESIZE
