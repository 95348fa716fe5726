/**
 * @file morvenqvr.hpp
 * C++20 over morvenqvr.h: overloads by element type over std::span, owning objects, errors as exceptions or as
 * statuses.
 *
 * Header-only: link with libmorvenqvr.so.1 as from C. Names are those of the C functions without prefix, types and
 * form: `Morven_qvrsAdd_32f` and its siblings are `qvr::add`, `Morven_qvrsFFTFwd_RToCCS_32f` is `qvr::fftFwd`.
 * Arguments keep their order and meaning; lengths are those of the spans, images are qvr::Image, states are the classes
 * below.
 *
 * - `qvr::add(a, b, sum)` throws qvr::Error for an error and returns 0 or the warning. Functions whose results are
 * single values return them: `float m = qvr::mean(samples)`.
 * - `qvr::checked::add(a, b, sum)` throws nothing, and its status must be looked at. Single values come by reference.
 * With exceptions switched off this form is the only one.
 *
 * Spans that belong together have one length; where the C function wants a length that follows from others, a longer
 * span will do. Anything else, and a length above 2^31 - 1, is qvrErrBadSize, and nothing is called. What the C
 * function checks is checked by it.
 */
#ifndef MORVENQVR_HPP
#define MORVENQVR_HPP

#include <climits>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "morvenqvr.h"

#if defined(__cpp_exceptions)
#include <new>
#include <stdexcept>
#include <string>
#else
#include <cstdlib>
#endif

namespace qvr {

/** Elements that are read. */
template<class T> using In = std::span<const T>;
/** Elements that are written, or read and written. */
template<class T> using Out = std::span<T>;

/** The name of a status, such as "qvrErrBadSize". */
[[nodiscard]] inline const char* statusName(qvrStatus status) noexcept
{
    return qvrStatusName(status);
}

#if defined(__cpp_exceptions)
/** What the throwing forms throw: a status below 0, its name and the function it came from. */
class Error : public std::runtime_error {
public:
    Error(qvrStatus status, const char* function)
        : std::runtime_error(std::string("qvr::") + function + ": " + statusName(status)), status_(status),
          function_(function)
    {
    }

    [[nodiscard]] qvrStatus status() const noexcept { return status_; }
    /** The status's name, such as "qvrErrBadSize". */
    [[nodiscard]] const char* name() const noexcept { return statusName(status_); }
    /** The function's name in this header, without `qvr::`. */
    [[nodiscard]] const char* function() const noexcept { return function_; }

private:
    qvrStatus status_;
    const char* function_;
};
#endif

/** Memory on a 64-byte boundary for containers: `std::vector<float, qvr::Allocator<float>>`. */
template<class T> class Allocator {
public:
    using value_type = T;

    Allocator() noexcept = default;
    template<class U> Allocator(const Allocator<U>&) noexcept {}

    [[nodiscard]] T* allocate(size_t count)
    {
        static_assert(alignof(T) <= 64);
        void* block = count <= INT_MAX / sizeof(T)
                          ? Morven_qvrsMalloc_8u(static_cast<int>(count == 0 ? 1 : count * sizeof(T)))
                          : nullptr;
        if (block == nullptr)
#if defined(__cpp_exceptions)
            throw std::bad_alloc();
#else
            std::abort();
#endif
        return static_cast<T*>(block);
    }
    void deallocate(T* block, size_t) noexcept { Morven_qvrsFree(block); }

    template<class U> bool operator==(const Allocator<U>&) const noexcept { return true; }
};

/** A view of an image, rows from the top: its pixels, its size and the bytes from one row to the next. */
template<class T, int Channels = 1> class Image {
public:
    /** Rows that follow one another without a gap. */
    Image(std::span<T> pixels, qvriSize size) noexcept
        : Image(pixels, size, static_cast<int>(size.width * int64_t{Channels} * int64_t{sizeof(T)}))
    {
    }
    /** Rows whose starts lie `step` bytes apart. */
    Image(std::span<T> pixels, qvriSize size, int step) noexcept : pixels_(pixels), size_(size), step_(step) {}
    /** An image that is written can be read. */
    operator Image<const T, Channels>() const noexcept { return {pixels_, size_, step_}; }

    [[nodiscard]] T* data() const noexcept { return pixels_.data(); }
    [[nodiscard]] qvriSize size() const noexcept { return size_; }
    [[nodiscard]] int step() const noexcept { return step_; }
    /** Whether the pixels hold all rows. */
    [[nodiscard]] bool complete() const noexcept
    {
        if (size_.width < 1 || size_.height < 1)
            return true;
        const int64_t row = size_.width * int64_t{Channels} * int64_t{sizeof(T)};
        return (size_.height == 1 || step_ >= row) &&
               (size_.height - 1) * int64_t{step_} + row <= static_cast<int64_t>(pixels_.size_bytes());
    }

private:
    std::span<T> pixels_;
    qvriSize size_;
    int step_;
};

/** What the throwing forms of minMax return. */
template<class T> struct Extremes {
    T min, max;
};
/** What the throwing forms of minIndx and maxIndx return. */
template<class T> struct Extreme {
    T value;
    qvr32s index;
};

namespace detail {

// One length for all, within an int.
template<class... Size> constexpr bool same(size_t first, Size... others) noexcept
{
    return first <= INT_MAX && ((first == others) && ...);
}

// At least `wanted` elements.
template<class Span> constexpr bool holds(const Span& span, int64_t wanted) noexcept
{
    return wanted <= static_cast<int64_t>(span.size()) && span.size() <= INT_MAX;
}

constexpr int64_t length(size_t size) noexcept
{
    return static_cast<int64_t>(size);
}

// Samples of two bytes.
template<class Span> constexpr int half(const Span& span) noexcept
{
    return static_cast<int>(span.size() / 2);
}

template<class A, class B> constexpr bool sameSize(const A& a, const B& b) noexcept
{
    return a.size().width == b.size().width && a.size().height == b.size().height;
}

// Blocks of `size` that lie in `whole`; 0 where the size says nothing.
constexpr int64_t groups(int64_t whole, int64_t size) noexcept
{
    return size < 1 ? 0 : (whole + size - 1) / size;
}

template<class A, class B> constexpr bool blocksFit(const A& image, const B& blocks, qvriSize block) noexcept
{
    return groups(image.size().width, block.width) <= blocks.size().width &&
           groups(image.size().height, block.height) <= blocks.size().height;
}

// A pointer that is not null, for an array of no elements.
template<class T> T* place(std::span<T> span) noexcept
{
    static std::remove_const_t<T> nothing{};
    return span.data() != nullptr ? span.data() : &nothing;
}

// Whether what a resize writes lies in the image: the region and, where edges are treated, the pixels beside it. Those
// are written where the source's border lies inside the region by a fraction of a pixel that the rounding of borders
// ignores.
inline bool writesWithin(qvriSize image, qvriRect region, qvriRect source, double xFactor, double yFactor,
                         double xShift, double yShift, int selector) noexcept
{
    const bool edges = (selector & (qvriEdgeFade | qvriEdgeBlend)) != 0;
    const auto within = [edges](int64_t begin, int64_t extent, double from, double to, int64_t limit) {
        const int64_t end = begin + extent;
        const double before = from - static_cast<double>(begin), behind = static_cast<double>(end) - to;
        return begin - (edges && before > 0 && before < 1e-6) >= 0 &&
               end + (edges && behind > 0 && behind < 1e-6) <= limit;
    };
    if (region.x < 0 || region.y < 0 || region.width < 1 || region.height < 1)
        return true;
    return within(region.x, region.width, source.x * xFactor + xShift,
                  (static_cast<double>(source.x) + source.width) * xFactor + xShift, image.width) &&
           within(region.y, region.height, source.y * yFactor + yShift,
                  (static_cast<double>(source.y) + source.height) * yFactor + yShift, image.height);
}

// The work buffer of a resize is as long as the library asks for; what the query refuses, the call refuses.
inline bool bufferServes(std::span<qvr8u> buffer, qvriRect source, qvriRect region, int channels, int selector,
                         qvrStatus (*query)(qvriRect, qvriRect, int, int, int*)) noexcept
{
    int bytes = 0;
    return query(source, region, channels, selector, &bytes) < 0 || holds(buffer, bytes);
}

#if defined(__cpp_exceptions)
[[noreturn]] inline void fail(qvrStatus status, const char* function)
{
    throw Error(status, function);
}

inline qvrStatus raise(qvrStatus status, const char* function)
{
    if (status < 0) [[unlikely]]
        fail(status, function);
    return status;
}
#endif

// The one owner of an object of the library.
template<class T, qvrStatus (*release)(T*)> class Owner {
public:
    Owner() noexcept = default;
    Owner(Owner&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Owner& operator=(Owner&& other) noexcept
    {
        if (this != &other)
            take(std::exchange(other.object_, nullptr));
        return *this;
    }
    ~Owner() { reset(); }

    /** Whether there is an object. */
    explicit operator bool() const noexcept { return object_ != nullptr; }
    /** The object for calls of the C functions; it stays owned. */
    [[nodiscard]] T* get() const noexcept { return object_; }
    /** Releases the object. */
    void reset() noexcept { take(nullptr); }

protected:
    void take(T* object) noexcept
    {
        if (object_ != nullptr)
            release(object_);
        object_ = object;
    }

private:
    T* object_ = nullptr;
};

} // namespace detail

/** A prepared real transform: FFTSpec_R_32f, FFTSpec_R_64f, FFTSpec_R_16s. */
template<class T, auto create, auto release> class FFTSpec : public detail::Owner<T, release> {
public:
    FFTSpec() noexcept = default;
#if defined(__cpp_exceptions)
    /** For 2^order values; by default the inverse undoes the forward transform. */
    explicit FFTSpec(int order, int flag = qvrFftDivInvByN, int hint = qvrHintNone)
    {
        detail::raise(init(order, flag, hint), "FFTSpec");
    }
#endif
    /** Prepares anew; after an error the object is as it was. */
    [[nodiscard]] qvrStatus init(int order, int flag = qvrFftDivInvByN, int hint = qvrHintNone) noexcept
    {
        T* object = nullptr;
        const qvrStatus status = create(&object, order, flag, hint);
        if (status == qvrOk) {
            this->take(object);
            order_ = order;
        }
        return status;
    }

    /** N, the number of real values, and of the values of a spectrum: N + 2, or 2 for an N of 1; 0 without an object.
     */
    [[nodiscard]] int64_t length() const noexcept { return *this ? int64_t{1} << order_ : 0; }
    [[nodiscard]] int64_t spectrum() const noexcept { return length() > 1 ? length() + 2 : 2 * length(); }
    /** Bytes of a work buffer, of elements of `element` bytes; a transform without one allocates for itself. */
    [[nodiscard]] int64_t buffer(int64_t element) const noexcept
    {
        const int64_t bytes = element == 2 ? 4 * length() + 131328 : 131136;
        const int64_t wanted = element == 2 ? 8 * length() + 256 : element * length() + 64;
        return wanted < bytes ? bytes : wanted;
    }

private:
    int order_ = 0;
};
using FFTSpec_R_32f = FFTSpec<qvrsFFTSpec_R_32f, Morven_qvrsFFTInitAlloc_R_32f, Morven_qvrsFFTFree_R_32f>;
using FFTSpec_R_64f = FFTSpec<qvrsFFTSpec_R_64f, Morven_qvrsFFTInitAlloc_R_64f, Morven_qvrsFFTFree_R_64f>;
using FFTSpec_R_16s = FFTSpec<qvrsFFTSpec_R_16s, Morven_qvrsFFTInitAlloc_R_16s, Morven_qvrsFFTFree_R_16s>;

/** A prepared Hilbert transform of one length. */
class HilbertState_32f32fc : public detail::Owner<qvrsHilbertState_32f32fc, Morven_qvrsHilbertFree_32f32fc> {
public:
    HilbertState_32f32fc() noexcept = default;
#if defined(__cpp_exceptions)
    explicit HilbertState_32f32fc(int len, int hint = qvrHintNone)
    {
        detail::raise(init(len, hint), "HilbertState_32f32fc");
    }
#endif
    /** Prepares anew; after an error the object is as it was. */
    [[nodiscard]] qvrStatus init(int len, int hint = qvrHintNone) noexcept
    {
        qvrsHilbertState_32f32fc* object = nullptr;
        const qvrStatus status = Morven_qvrsHilbertInitAlloc_32f32fc(&object, len, hint);
        if (status == qvrOk) {
            take(object);
            length_ = len;
        }
        return status;
    }

    /** Samples in a block. */
    [[nodiscard]] int64_t length() const noexcept { return *this ? length_ : 0; }

private:
    int64_t length_ = 0;
};

/** A FIR filter with its delay line: FIRState_32f, FIRState_64f, FIRState64f_32f, FIRState64f_16s. */
template<class T, class Tap, class Sample, auto create, auto release>
class FIRState : public detail::Owner<T, release> {
public:
    FIRState() noexcept = default;
#if defined(__cpp_exceptions)
    explicit FIRState(In<Tap> taps, In<Sample> dlyLine = {}) { detail::raise(init(taps, dlyLine), "FIRState"); }
#endif
    /** Makes the filter anew; after an error the object is as it was. An empty delay line stands for zeros. */
    [[nodiscard]] qvrStatus init(In<Tap> taps, In<Sample> dlyLine = {}) noexcept
    {
        if (!detail::same(taps.size(), dlyLine.empty() ? taps.size() : dlyLine.size()))
            return qvrErrBadSize;
        T* object = nullptr;
        const qvrStatus status = create(&object, taps.data(), static_cast<int>(taps.size()), dlyLine.data());
        if (status == qvrOk) {
            this->take(object);
            taps_ = taps.size();
        }
        return status;
    }

    /** Number of taps, and of the delay line's samples. */
    [[nodiscard]] size_t taps() const noexcept { return *this ? taps_ : 0; }

private:
    size_t taps_ = 0;
};
using FIRState_32f = FIRState<qvrsFIRState_32f, qvr32f, qvr32f, Morven_qvrsFIRInitAlloc_32f, Morven_qvrsFIRFree_32f>;
using FIRState_64f = FIRState<qvrsFIRState_64f, qvr64f, qvr64f, Morven_qvrsFIRInitAlloc_64f, Morven_qvrsFIRFree_64f>;
using FIRState64f_32f =
    FIRState<qvrsFIRState64f_32f, qvr64f, qvr32f, Morven_qvrsFIRInitAlloc64f_32f, Morven_qvrsFIRFree64f_32f>;
using FIRState64f_16s =
    FIRState<qvrsFIRState64f_16s, qvr64f, qvr16s, Morven_qvrsFIRInitAlloc64f_16s, Morven_qvrsFIRFree64f_16s>;

/** A recursive filter with its delay line. */
class IIRState_64f : public detail::Owner<qvrsIIRState_64f, Morven_qvrsIIRFree_64f> {
public:
    IIRState_64f() noexcept = default;
#if defined(__cpp_exceptions)
    explicit IIRState_64f(In<qvr64f> taps, In<qvr64f> dlyLine = {})
    {
        detail::raise(init(taps, dlyLine), "IIRState_64f");
    }
#endif
    /** Makes the filter anew from b[0..L], a[0..L]; after an error the object is as it was. */
    [[nodiscard]] qvrStatus init(In<qvr64f> taps, In<qvr64f> dlyLine = {}) noexcept
    {
        const size_t order = taps.size() / 2 - (taps.size() > 1);
        if (!detail::same(taps.size(), 2 * (order + 1)) || (!dlyLine.empty() && dlyLine.size() != order))
            return qvrErrBadSize;
        qvrsIIRState_64f* object = nullptr;
        const qvrStatus status =
            Morven_qvrsIIRInitAlloc_64f(&object, taps.data(), static_cast<int>(order), dlyLine.data());
        if (status == qvrOk)
            take(object);
        return status;
    }
};

/** A wavelet transform with its history: WTFwdState_32f, WTInvState_32f. */
template<class T, auto create, auto release, bool forward> class WTState : public detail::Owner<T, release> {
public:
    WTState() noexcept = default;
#if defined(__cpp_exceptions)
    WTState(In<qvr32f> tapsLow, int offsLow, In<qvr32f> tapsHigh, int offsHigh)
    {
        detail::raise(init(tapsLow, offsLow, tapsHigh, offsHigh), "WTState");
    }
#endif
    /** Prepares anew; after an error the object is as it was. */
    [[nodiscard]] qvrStatus init(In<qvr32f> tapsLow, int offsLow, In<qvr32f> tapsHigh, int offsHigh) noexcept
    {
        if (!detail::same(tapsLow.size()) || !detail::same(tapsHigh.size()))
            return qvrErrBadSize;
        T* object = nullptr;
        const qvrStatus status = create(&object, tapsLow.data(), static_cast<int>(tapsLow.size()), offsLow,
                                        tapsHigh.data(), static_cast<int>(tapsHigh.size()), offsHigh);
        if (status == qvrOk) {
            this->take(object);
            low_ = history(static_cast<int64_t>(tapsLow.size()), offsLow);
            high_ = history(static_cast<int64_t>(tapsHigh.size()), offsHigh);
        }
        return status;
    }

    /** Values in the delay arrays. */
    [[nodiscard]] int64_t delayLow() const noexcept { return *this ? low_ : 0; }
    [[nodiscard]] int64_t delayHigh() const noexcept { return *this ? high_ : 0; }

private:
    static int64_t history(int64_t taps, int64_t offset) noexcept
    {
        return forward ? taps - 1 + (offset > 0 ? offset : 0) : (taps + offset - 1) / 2;
    }

    int64_t low_ = 0, high_ = 0;
};
using WTFwdState_32f = WTState<qvrsWTFwdState_32f, Morven_qvrsWTFwdInitAlloc_32f, Morven_qvrsWTFwdFree_32f, true>;
using WTInvState_32f = WTState<qvrsWTInvState_32f, Morven_qvrsWTInvInitAlloc_32f, Morven_qvrsWTInvFree_32f, false>;

} // namespace qvr

#include "morvenqvr/checked.hpp"
#if defined(__cpp_exceptions)
#include "morvenqvr/throwing.hpp"
#endif

#endif
