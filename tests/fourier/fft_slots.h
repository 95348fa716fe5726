// The transforms of one precision on every slot: exported functions by their tables, internal forms by their names.
#pragma once

#include "fourier/real/plan_record.h"
#include "fourier/slot_tables.h"
#include "support/guarded.h"
#include "support/slots.h"
#include "support/values.h"

#define QVR_EACH_SLOT(X) X(mx) X(m7) X(u8) X(n8) X(y8) X(e9) X(l9)

#define QVR_DECLARE(slot, tag, T)                                                                                      \
    extern "C" qvrStatus slot##_ownqvrsFFTGetSize_R_##tag(int, int, int, int32_t*, int32_t*, int32_t*);                \
    extern "C" qvrStatus slot##_ownqvrsFFTInit_R_##tag(qvrsFFTSpec_R_##tag**, int, int, int, uint8_t*, uint8_t*);      \
    extern "C" qvrStatus slot##_ownqvrsFFTGetBufSize_R_##tag(const qvrsFFTSpec_R_##tag*, int32_t*);                    \
    extern "C" qvrStatus slot##_ownqvrsFFTFwd_RToPacked_##tag(const T*, T*, const qvrsFFTSpec_R_##tag*, uint8_t*);     \
    extern "C" qvrStatus slot##_ownqvrsFFTInv_PackedToR_##tag(const T*, T*, const qvrsFFTSpec_R_##tag*, uint8_t*);     \
    extern "C" qvrStatus slot##_ownqvrsFFTFwd_RToTailPacked_##tag(const T*, T*, const qvrsFFTSpec_R_##tag*, uint8_t*); \
    extern "C" qvrStatus slot##_ownqvrsFFTInv_TailPackedToR_##tag(const T*, T*, const qvrsFFTSpec_R_##tag*, uint8_t*); \
    extern "C" qvrStatus slot##_ownqvrsMulPacked_##tag##_I(const T*, T*, int);                                         \
    extern "C" qvrStatus slot##_ownqvrsMulTailPackedConj_##tag##_I(const T*, T*, int);
#define QVR_DECLARE_32F(slot) QVR_DECLARE(slot, 32f, float)
#define QVR_DECLARE_64F(slot) QVR_DECLARE(slot, 64f, double)
QVR_EACH_SLOT(QVR_DECLARE_32F)
QVR_EACH_SLOT(QVR_DECLARE_64F)

namespace fft {

template<class T> struct Functions;

#define QVR_TABLE(name, tag)                                                                                           \
    {mx_##name##tag, m7_##name##tag, u8_##name##tag, n8_##name##tag, y8_##name##tag, e9_##name##tag, l9_##name##tag}
#define QVR_FUNCTIONS(tag, T)                                                                                          \
    template<> struct Functions<T> {                                                                                   \
        using Spec = qvrsFFTSpec_R_##tag;                                                                              \
        using Transform = qvrStatus (*)(const T*, T*, const Spec*, uint8_t*);                                          \
        static constexpr auto& init = qvrTable_qvrsFFTInitAlloc_R_##tag;                                               \
        static constexpr auto& free = qvrTable_qvrsFFTFree_R_##tag;                                                    \
        static constexpr auto& forward = qvrTable_qvrsFFTFwd_RToCCS_##tag;                                             \
        static constexpr auto& inverse = qvrTable_qvrsFFTInv_CCSToR_##tag;                                             \
        static constexpr decltype(&mx_ownqvrsFFTGetSize_R_##tag) getSize[7] = QVR_TABLE(ownqvrsFFTGetSize_R_, tag);    \
        static constexpr decltype(&mx_ownqvrsFFTInit_R_##tag) initIn[7] = QVR_TABLE(ownqvrsFFTInit_R_, tag);           \
        static constexpr decltype(&mx_ownqvrsFFTGetBufSize_R_##tag) bufSize[7] =                                       \
            QVR_TABLE(ownqvrsFFTGetBufSize_R_, tag);                                                                   \
        static constexpr Transform toPacked[7] = QVR_TABLE(ownqvrsFFTFwd_RToPacked_, tag);                             \
        static constexpr Transform fromPacked[7] = QVR_TABLE(ownqvrsFFTInv_PackedToR_, tag);                           \
        static constexpr Transform toTailPacked[7] = QVR_TABLE(ownqvrsFFTFwd_RToTailPacked_, tag);                     \
        static constexpr Transform fromTailPacked[7] = QVR_TABLE(ownqvrsFFTInv_TailPackedToR_, tag);                   \
        static constexpr decltype(&mx_ownqvrsMulPacked_##tag##_I) mulPacked[7] =                                       \
            QVR_TABLE(ownqvrsMulPacked_, tag##_I);                                                                     \
        static constexpr decltype(&mx_ownqvrsMulPacked_##tag##_I) mulTailPackedConj[7] =                               \
            QVR_TABLE(ownqvrsMulTailPackedConj_, tag##_I);                                                             \
    };
QVR_FUNCTIONS(32f, float)
QVR_FUNCTIONS(64f, double)

// An object of a slot for as long as this lives.
template<class T> class Object {
public:
    using F = Functions<T>;
    Object(int slot, int order, int flag, int hint = 0) : slot_(slot)
    {
        status_ = F::init[slot](&spec_, order, flag, hint);
        EXPECT_EQ(status_, qvrOk) << "order " << order;
    }
    ~Object()
    {
        if (spec_)
            EXPECT_EQ(F::free[slot_](spec_), qvrOk);
    }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;
    operator const typename F::Spec *() const { return spec_; }
    typename F::Spec* get() const { return spec_; }
    size_t bufferSize() const
    {
        int32_t size = -1;
        EXPECT_EQ(F::bufSize[slot_](spec_, &size), qvrOk);
        return static_cast<size_t>(size);
    }

private:
    int slot_;
    qvrStatus status_;
    typename F::Spec* spec_ = nullptr;
};

// The plan of an object, to which the pointer behind its prescribed fields leads; null where there is none:
// straight-line kernels, first generation.
template<class T> const FftPlan* planOf(int slot, const Object<T>& object)
{
    const size_t pointers = sizeof(T) == 8 || slot == 2 || slot == 4 ? 40 : 32;
    const FftPlan* plan;
    memcpy(&plan, reinterpret_cast<const char*>(object.get()) + pointers + 13 * sizeof(void*), sizeof plan);
    return plan;
}

// Every slot that this processor runs.
template<class Body> void eachSlot(Body&& body)
{
    for (int slot = 0; slot < slots::kCount; slot++) {
        if (!slots::canRun(slot))
            continue;
        SCOPED_TRACE(std::string("slot ") + slots::kNames[slot]);
        body(slot);
        if (testing::Test::HasFatalFailure())
            return;
    }
}

inline constexpr int kThreadedSlots[] = {2, 4};

} // namespace fft
