// Calls of the vector functions whose arrays are not all of the first int behind the last pointer.
#pragma once

#include "calls/shape.h"

namespace calls {

// Status and null pointers in one place: whatever is broken, the call must notice.
inline void expect(bool right)
{
    if (!right)
        __builtin_trap();
}

// Arrays may start at any byte, so elements move by bytes.
template<class T> void copyElements(T* to, const T* from, int n)
{
    memcpy(reinterpret_cast<char*>(to), reinterpret_cast<const char*>(from), static_cast<size_t>(n) * sizeof(T));
}
template<class T> bool sameElements(const T* a, const T* b, int n)
{
    return memcmp(reinterpret_cast<const char*>(a), reinterpret_cast<const char*>(b),
                  static_cast<size_t>(n) * sizeof(T)) == 0;
}

// f(source, length, results..., arguments...): results are single elements.
template<class T, class R, int Results, class F, class... More> void callReduction(F f, Input& in, More... more)
{
    const int len = in.length();
    const T* src = in.array<T>(len);
    R* result[2] = {in.array<R>(1), in.array<R>(1)};
    int n = len;
    bool bad = false;
    if (in.oneIn(20)) {
        bad = true;
        const int which = in.range(0, Results + 1);
        if (which == 0)
            src = nullptr;
        else if (which <= Results)
            result[which - 1] = nullptr;
        else
            n = in.oneIn(2) ? 0 : in.any<int>() | INT32_MIN;
    }
    qvrStatus status;
    if constexpr (Results == 2)
        status = f(src, n, result[0], result[1], more...);
    else
        status = f(src, n, result[0], more...);
    if (bad)
        expect(status < 0);
    else if (n > 1)
        expect(status == qvrOk);
}

#define QVR_REDUCTION(name, T, R, results, ...)                                                                        \
    template<> struct Shape<name> {                                                                                    \
        template<class F> static void call(F f, Input& in)                                                             \
        {                                                                                                              \
            callReduction<T, R, results>(f, in __VA_OPT__(, ) __VA_ARGS__);                                            \
        }                                                                                                              \
    };
QVR_REDUCTION(qvrsMax_16s, qvr16s, qvr16s, 1)
QVR_REDUCTION(qvrsMax_32f, qvr32f, qvr32f, 1)
QVR_REDUCTION(qvrsMax_64f, qvr64f, qvr64f, 1)
QVR_REDUCTION(qvrsMean_16s_Sfs, qvr16s, qvr16s, 1, in.any<int>())
QVR_REDUCTION(qvrsMean_32f, qvr32f, qvr32f, 1)
QVR_REDUCTION(qvrsMean_32s_Sfs, qvr32s, qvr32s, 1, in.any<int>())
QVR_REDUCTION(qvrsMean_64f, qvr64f, qvr64f, 1)
QVR_REDUCTION(qvrsMinMax_16s, qvr16s, qvr16s, 2)
QVR_REDUCTION(qvrsMinMax_16u, qvr16u, qvr16u, 2)
QVR_REDUCTION(qvrsMinMax_32f, qvr32f, qvr32f, 2)
QVR_REDUCTION(qvrsMin_16s, qvr16s, qvr16s, 1)
QVR_REDUCTION(qvrsMin_32f, qvr32f, qvr32f, 1)
QVR_REDUCTION(qvrsStdDev_32f, qvr32f, qvr32f, 1)
QVR_REDUCTION(qvrsSum_16s32s_Sfs, qvr16s, qvr32s, 1, in.any<int>())
QVR_REDUCTION(qvrsSignChangeRate_Count0_32f, qvr32f, qvr32f, 1)
#undef QVR_REDUCTION

template<class F> void callIndexed(F f, Input& in)
{
    const int len = in.length();
    const qvr32f* src = in.array<qvr32f>(len);
    qvr32s* index = in.oneIn(4) ? nullptr : in.array<qvr32s>(1);
    expect(f(src, len, in.array<qvr32f>(1), index) == qvrOk);
    if (index) {
        qvr32s at;
        copyElements(&at, index, 1);
        expect(at >= 0 && at < len);
    }
}
template<> struct Shape<qvrsMinIndx_32f> {
    template<class F> static void call(F f, Input& in) { callIndexed(f, in); }
};
template<> struct Shape<qvrsMaxIndx_32f> {
    template<class F> static void call(F f, Input& in) { callIndexed(f, in); }
};

template<> struct Shape<qvrsSumWindow_16s32f> {
    template<class F> static void call(F f, Input& in)
    {
        const int len = in.length(), mask = in.oneIn(10) ? in.any<int>() & INT32_MIN : in.length();
        const qvr16s* src = in.array<qvr16s>(int64_t{len} + (mask > 1 ? mask - 1 : 0));
        expect(f(src, in.array<qvr32f>(len), len, mask) == (mask < 1 ? qvrErrBadWindowLength : qvrOk));
    }
};

template<> struct Shape<qvrsZeroCrossing_32f> {
    template<class F> static void call(F f, Input& in)
    {
        const int len = in.length(), n = in.oneIn(20) ? in.any<int>() & INT32_MIN : len;
        const qvr32f* src = in.array<qvr32f>(len);
        const int type = in.oneIn(10) ? in.any<int>() : in.range(0, 2);
        const qvrStatus want = n == 0 ? qvrErrBadSize : type < 0 || type > 2 ? qvrErrBadSelector : qvrOk;
        expect(f(src, n, in.array<qvr32f>(1), type) == want);
    }
};

template<> struct Shape<qvrsReplaceC_16u> {
    template<class F> static void call(F f, Input& in)
    {
        const int len = in.length(), n = in.oneIn(20) ? in.any<int>() & INT32_MIN : len;
        const qvr16u* src = in.array<qvr16u>(len);
        qvr16u* dst = in.array<qvr16u>(len);
        expect(f(src, dst, n, in.any<qvr16u>(), in.any<qvr16u>()) == (n < 0 ? qvrErrBadCount : qvrOk));
    }
};

template<class T, class F> void callFind(F f, Input& in)
{
    const int len = in.oneIn(10) ? 0 : in.length(), lenFind = in.oneIn(3) ? in.length() : in.range(0, 6);
    const T* src = in.array<T>(len);
    const T* find = in.array<T>(lenFind);
    if (lenFind > 0 && lenFind <= len && in.oneIn(2))
        copyElements(const_cast<T*>(find), src + in.range(0, len - lenFind), lenFind);
    qvr32s* const index = in.array<qvr32s>(1);
    expect(f(src, len, find, lenFind, index) == qvrOk);
    qvr32s at;
    copyElements(&at, index, 1);
    expect(at == -1 || (at >= 0 && at <= len - lenFind && sameElements(src + at, find, lenFind)));
}
template<> struct Shape<qvrsFind_8u> {
    template<class F> static void call(F f, Input& in) { callFind<qvr8u>(f, in); }
};
template<> struct Shape<qvrsFind_16u> {
    template<class F> static void call(F f, Input& in) { callFind<qvr16u>(f, in); }
};

template<> struct Shape<qvrsCompensateOffset_32f> {
    template<class F> static void call(F f, Input& in)
    {
        const int len = in.length();
        const qvr32f* src = in.array<qvr32f>(int64_t{len} + 1);
        qvr32f* dst = in.oneIn(3) ? const_cast<qvr32f*>(src) : in.array<qvr32f>(len);
        expect(f(src, dst, len, in.array<qvr32f>(1), in.any<qvr32f>(), in.any<qvr32f>()) == qvrOk);
    }
};
template<> struct Shape<qvrsCompensateOffset_32f_I> {
    template<class F> static void call(F f, Input& in)
    {
        const int len = in.length();
        qvr32f* dst = in.array<qvr32f>(len);
        expect(f(dst, len, in.array<qvr32f>(1), in.any<qvr32f>(), in.any<qvr32f>()) == qvrOk);
    }
};

template<> struct Shape<qvrsFindPeaks_32f8u> {
    template<class F> static void call(F f, Input& in)
    {
        const qvr32f* src = in.array<qvr32f>(0);
        const int len = in.any<int>(), search = in.any<int>(), average = in.any<int>();
        f(src, in.array<qvr8u>(0), len, search, average);
    }
};

template<> struct Shape<qvrsCopyColumn_Indirect_16s_D2> {
    template<class F> static void call(F f, Input& in)
    {
        const int rows = in.range(1, 6), srcCols = in.range(1, 40), dstCols = in.range(1, 40);
        const int srcStride = srcCols + in.range(-1, 9), dstStride = dstCols + in.range(-1, 9);
        const qvr16s* src = in.array<qvr16s>(int64_t{rows} * (srcCols + 9));
        qvr16s* dst = in.array<qvr16s>(int64_t{rows} * (dstCols + 9));
        qvr32s* index = in.array<qvr32s>(dstCols);
        bool bad = false;
        for (int c = 0; c < dstCols; c++) {
            const qvr32s k = in.oneIn(200) ? in.any<qvr32s>() : in.range(0, srcCols - 1);
            bad |= k < 0 || k >= srcCols;
            copyElements(index + c, &k, 1);
        }
        const qvrStatus want = srcCols > srcStride || dstCols > dstStride ? qvrErrBadColumns
                               : bad                                      ? qvrErrBadSize
                                                                          : qvrOk;
        expect(f(src, srcCols, srcStride, dst, index, dstCols, dstStride, rows) == want);
    }
};
template<> struct Shape<qvrsCopyColumn_Indirect_16s_D2L> {
    template<class F> static void call(F f, Input& in)
    {
        const int rows = in.range(1, 6), srcCols = in.range(1, 40), dstCols = in.range(1, 40);
        std::vector<const qvr16s*> src;
        std::vector<qvr16s*> dst;
        bool null = false;
        for (int r = 0; r < rows; r++) {
            src.push_back(in.oneIn(40) ? nullptr : in.array<qvr16s>(srcCols));
            dst.push_back(in.oneIn(40) ? nullptr : in.array<qvr16s>(dstCols));
            null |= !src.back() || !dst.back();
        }
        qvr32s* index = in.array<qvr32s>(dstCols);
        for (int c = 0; c < dstCols; c++) {
            const qvr32s k = in.range(0, srcCols - 1);
            copyElements(index + c, &k, 1);
        }
        expect(f(src.data(), srcCols, dst.data(), index, dstCols, rows) == (null ? qvrErrNullPointer : qvrOk));
    }
};

} // namespace calls
