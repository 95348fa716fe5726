// Rows of fixed-point arithmetic, reductions, logic, sorting and waveform measures.
#include <math.h>

#include "bench/vector/rows.h"

#ifdef QVR_HAVE_LIBYUV
#include <libyuv/planar_functions.h>
#define LIBYUV(call) LIBC("libyuv", libyuv::call)
#else
#define LIBYUV(call)
#endif

using namespace bench;

namespace {

// ---- VOLK's kernels as the exports have them ------------------------------------------------------------------------

#ifdef QVR_HAVE_VOLK
void volkOr(const uint16_t* a, uint16_t* d, int n)
{
    auto* const words = reinterpret_cast<int32_t*>(d);
    volk_32i_x2_or_32i(words, words, reinterpret_cast<const int32_t*>(a), static_cast<unsigned>(n / 2));
    if (n % 2 != 0)
        d[n - 1] |= a[n - 1];
}
void volkMean(const float* a, int n, float* mean)
{
    volk_32f_accumulator_s32f(mean, a, static_cast<unsigned>(n));
    *mean /= static_cast<float>(n);
}
// VOLK divides by n, the sample's deviation by n - 1.
void volkDeviation(const float* a, int n, float* deviation)
{
    float mean;
    volk_32f_stddev_and_mean_32f_x2(deviation, &mean, a, static_cast<unsigned>(n));
    *deviation *= sqrtf(static_cast<float>(n) / static_cast<float>(n - 1));
}
template<class F> void volkPlace(F kernel, const float* a, int n, float* best, int32_t* place)
{
    uint32_t at;
    kernel(&at, a, static_cast<uint32_t>(n));
    *best = a[at];
    *place = static_cast<int32_t>(at);
}
#endif

// ---- Element by element ---------------------------------------------------------------------------------------------

constexpr const char* kFixed = "fixed-point arithmetic";
constexpr auto kBoth16 = binary<int16_t>();
constexpr auto kFrom16u = inPlaceFrom<uint16_t>(Data::samples, Data::samples);
constexpr auto kOwn16u = inPlace<uint16_t>(Data::samples);

VARIANT_ROW(qvrsAdd_16s_Sfs, "scale 0", kFixed, kBoth16, (a, b, d, n, 0))
VARIANT_ROW(qvrsAdd_16s_Sfs, "scale 4", kFixed, kBoth16, (a, b, d, n, 4))
VARIANT_ROW(qvrsAdd_16s_Sfs, "scale -3", kFixed, kBoth16, (a, b, d, n, -3))
VARIANT_ROW(qvrsAdd_16s_Sfs, "scale -20", kFixed, kBoth16, (a, b, d, n, -20))
VARIANT_ROW(qvrsAdd_16s_Sfs, "scale 1", kFixed, kBoth16, (a, b, d, n, 1))
VARIANT_ROW(qvrsAdd_16u_ISfs, "scale 0", kFixed, kFrom16u, (a, d, n, 0))
VARIANT_ROW(qvrsAdd_16u_ISfs, "scale 4", kFixed, kFrom16u, (a, d, n, 4))
VARIANT_ROW(qvrsAddC_16u_ISfs, "scale 0", kFixed, kOwn16u, (3, d, n, 0))
VARIANT_ROW(qvrsAddC_16u_ISfs, "scale 4", kFixed, kOwn16u, (3, d, n, 4))
VARIANT_ROW(qvrsSubC_16u_ISfs, "scale 0", kFixed, kOwn16u, (3, d, n, 0))
VARIANT_ROW(qvrsSubC_16u_ISfs, "scale 4", kFixed, kOwn16u, (3, d, n, 4))
ROW(qvrsAdd_16s_I, kFixed, inPlaceFrom<int16_t>(Data::samples, Data::samples), (a, d, n))
ROW(qvrsSubC_16s_I, kFixed, inPlace<int16_t>(Data::samples), (3, d, n))
ROW(qvrsMulC_16s_I, kFixed, inPlace<int16_t>(Data::samples), (-1, d, n))
ROW(qvrsAbs_32s_I, kFixed, inPlace<int32_t>(Data::samples), (d, n))

constexpr const char* kLogic = "logic and search";
ROW(qvrsAndC_16u, kLogic, (unary<uint16_t>(Data::samples)), (a, 0x5555, d, n))
ROW(qvrsAndC_16u_I, kLogic, kOwn16u, (0x5555, d, n))
ROW(qvrsOr_16u_I, kLogic, kFrom16u, (a, d, n), VOLK(volkOr(a, d, n)))
ROW(qvrsLShiftC_16u, kLogic, (unary<uint16_t>(Data::samples)), (a, 3, d, n),
    LIBYUV(ConvertToMSBPlane_16(a, n, d, n, n, 1, 16 - 3)))
ROW(qvrsLShiftC_16u_I, kLogic, kOwn16u, (3, d, n), LIBYUV(ConvertToMSBPlane_16(d, n, d, n, n, 1, 16 - 3)))
ROW(qvrsRShiftC_16u_I, kLogic, kOwn16u, (3, d, n), LIBYUV(ConvertToLSBPlane_16(d, n, d, n, n, 1, 16 - 3)))
ROW(qvrsReplaceC_16u, kLogic, (unary<uint16_t>(Data::samples)), (a, d, n, 7, 9))
ROW(qvrsThreshold_32f_I, kLogic, inPlace<float>(), (d, n, 0.5f, qvrCmpLess))
ROW(qvrsThreshold_GTVal_32f, kLogic, unary<float>(), (a, d, n, 0.5f, 1.0f))
ROW(qvrsThreshold_GTVal_32f_I, kLogic, inPlace<float>(), (d, n, 0.5f, 0.25f))
ROW(qvrsThreshold_LTVal_32f, kLogic, unary<float>(), (a, d, n, 0.5f, 1.0f))
ROW(qvrsThreshold_LTVal_32f_I, kLogic, inPlace<float>(), (d, n, 0.5f, 1.0f))

constexpr const char* kReductions = "reductions";
VARIANT_ROW(qvrsSumWindow_16s32f, "window 5", kReductions, (unary<int16_t, float>(Data::samples)), (a, d, n - 4, 5))

// ---- One result from an array ---------------------------------------------------------------------------------------

constexpr int kReductionLengths[] = {15, 256, 4096, 65536, 8 << 20};

// call(function, source, length, results, index); the results are two of the type R.
template<class T, class R, class F, class Call, class Peers>
bool reduction(const char* name, const char* variant, const char* group, F* exported, Call call, Peers peers)
{
    return addRow({name, variant, "vector", group, [=](const Sink& sink) {
                       for (const int n : kReductionLengths) {
                           if (n >= 1 << 20 && !sink.memory)
                               continue;
                           sink.add(std::to_string(n), [&](Case& c) {
                               c.elements = n;
                               c.work = {sizeof(T), 0};
                               const T* a = c.array<T>(n, Data::samples);
                               R* r = c.array<R>(2, Data::mixed, true);
                               int32_t* index = c.array<int32_t>(1, Data::mixed, true);
                               sameCall(c, name, exported, [=](auto* f) { call(f, a, n, r, index); });
                               peers(c, a, n, r, index);
                           });
                       }
                   }});
}

#define REDUCTION(name, variant, group, T, R, arguments, ...)                                                          \
    const bool QVR_ROW_NAME(__LINE__) = reduction<T, R>(                                                               \
        #name, variant, group, Morven_##name,                                                                          \
        [](auto* f, const T* a, int n, R* r, int32_t* index) {                                                         \
            (void)index;                                                                                               \
            f arguments;                                                                                               \
        },                                                                                                             \
        [](Case& c, const T* a, int n, R* r, int32_t* index) {                                                         \
            (void)c, (void)a, (void)n, (void)r, (void)index;                                                           \
            __VA_ARGS__                                                                                                \
        });
REDUCTION(qvrsSum_16s32s_Sfs, "", kReductions, int16_t, int32_t, (a, n, r, 2))
REDUCTION(qvrsMean_16s_Sfs, "", kReductions, int16_t, int16_t, (a, n, r, 0))
REDUCTION(qvrsMean_32s_Sfs, "", kReductions, int32_t, int32_t, (a, n, r, 0))
REDUCTION(qvrsMean_32f, "", kReductions, float, float, (a, n, r), VOLK(volkMean(a, n, r)))
REDUCTION(qvrsMean_64f, "", kReductions, double, double, (a, n, r))
REDUCTION(qvrsStdDev_32f, "", kReductions, float, float, (a, n, r), VOLK(volkDeviation(a, n, r)))
REDUCTION(qvrsMin_16s, "", kReductions, int16_t, int16_t, (a, n, r))
REDUCTION(qvrsMax_16s, "", kReductions, int16_t, int16_t, (a, n, r))
REDUCTION(qvrsMin_32f, "", kReductions, float, float, (a, n, r))
REDUCTION(qvrsMax_32f, "", kReductions, float, float, (a, n, r))
REDUCTION(qvrsMax_64f, "", kReductions, double, double, (a, n, r))
REDUCTION(qvrsMinMax_16s, "", kReductions, int16_t, int16_t, (a, n, r, r + 1))
REDUCTION(qvrsMinMax_16u, "", kReductions, uint16_t, uint16_t, (a, n, r, r + 1))
REDUCTION(qvrsMinMax_32f, "", kReductions, float, float, (a, n, r, r + 1))
REDUCTION(qvrsMinIndx_32f, "", kReductions, float, float, (a, n, r, index),
          VOLK(volkPlace(volk_32f_index_min_32u, a, n, r, index)))
REDUCTION(qvrsMaxIndx_32f, "", kReductions, float, float, (a, n, r, index),
          VOLK(volkPlace(volk_32f_index_max_32u, a, n, r, index)))

constexpr const char* kWaveform = "waveform measures";
REDUCTION(qvrsZeroCrossing_32f, "product", kWaveform, float, float, (a, n, r, qvrZcProduct))
REDUCTION(qvrsZeroCrossing_32f, "sign bit", kWaveform, float, float, (a, n, r, qvrZcSignBit))
REDUCTION(qvrsZeroCrossing_32f, "sign step", kWaveform, float, float, (a, n, r, qvrZcSignStep))
REDUCTION(qvrsSignChangeRate_Count0_32f, "", kWaveform, float, float, (a, n, r))

// ---- Search ---------------------------------------------------------------------------------------------------------

// A sequence of 32 equal elements and an odd one, in an array of the equal ones: every start looks like a match.
template<class T, class F> void search(const Sink& sink, const char* name, F* exported)
{
    for (const int n : {256, 4096, 65536})
        sink.add(std::to_string(n), [&](Case& c) {
            constexpr int length = 33;
            c.elements = n;
            c.work = {sizeof(T), 0};
            auto same = std::make_shared<std::vector<T>>(static_cast<size_t>(n), T(4));
            auto odd = std::make_shared<std::vector<T>>(static_cast<size_t>(length), T(4));
            odd->back() = 5;
            const T *const a = same->data(), *const sequence = odd->data();
            c.atEnd([same, odd] {});
            int32_t* index = c.array<int32_t>(1, Data::mixed, true);
            sameCall(c, name, exported, [=](auto* f) { f(a, n, sequence, length, index); });
        });
}
const bool find8 = addRow({"qvrsFind_8u", "worst case", "vector", kLogic,
                           [](const Sink& sink) { search<uint8_t>(sink, "qvrsFind_8u", Morven_qvrsFind_8u); }});
const bool find16 = addRow({"qvrsFind_16u", "worst case", "vector", kLogic,
                            [](const Sink& sink) { search<uint16_t>(sink, "qvrsFind_16u", Morven_qvrsFind_16u); }});

// ---- Sorting --------------------------------------------------------------------------------------------------------

enum class Order { random, ascending, descending, few };

// Many arrays in turn, since a branch predictor learns a few thousand elements by heart. The copy that brings
// the next array is part of the time, for ours and the peer.
template<class T, class F> void sorting(const Sink& sink, const char* name, F* exported, Order order)
{
    for (const int n : {9, 20, 100, 1000, 65536})
        sink.add(std::to_string(n), [&](Case& c) {
            const int copies = n > 1000 ? 4 : 65536 / n;
            c.elements = n;
            c.work = {sizeof(T), sizeof(T), true};
            auto arrays = std::make_shared<std::vector<T>>(static_cast<size_t>(n) * copies);
            uint32_t state = 1;
            for (int k = 0; k < n * copies; k++) {
                state = state * 1664525 + 1013904223;
                const int i = k % n;
                const T values[] = {static_cast<T>(state >> 8), static_cast<T>(i), static_cast<T>(n - i),
                                    static_cast<T>(state >> 30)};
                (*arrays)[static_cast<size_t>(k)] = values[static_cast<int>(order)];
            }
            auto at = std::make_shared<int>(0);
            T* d = c.array<T>(n, Data::mixed, false);
            const T* const all = arrays->data();
            int* const turn = at.get();
            c.atEnd([arrays, at] {});
            sameCall(c, name, exported, [=](auto* f) {
                *turn = (*turn + 1) % copies;
                memcpy(d, all + static_cast<size_t>(*turn) * n, sizeof(T) * n);
                f(d, n);
            });
#ifdef QVR_HAVE_HIGHWAY
            if (ownSlot())
                c.peer("vqsort", [=] {
                    *turn = (*turn + 1) % copies;
                    memcpy(d, all + static_cast<size_t>(*turn) * n, sizeof(T) * n);
                    sortByHighway(d, n);
                });
#endif
        });
}
#define SORTING(order, text)                                                                                           \
    const bool sort32##order =                                                                                         \
        addRow({"qvrsSortAscend_32f_I", text, "vector", "sorting", [](const Sink& sink) {                              \
                    sorting<float>(sink, "qvrsSortAscend_32f_I", Morven_qvrsSortAscend_32f_I, Order::order);           \
                }});                                                                                                   \
    const bool sort64##order =                                                                                         \
        addRow({"qvrsSortAscend_64f_I", text, "vector", "sorting", [](const Sink& sink) {                              \
                    sorting<double>(sink, "qvrsSortAscend_64f_I", Morven_qvrsSortAscend_64f_I, Order::order);          \
                }});
SORTING(random, "random")
SORTING(ascending, "ascending")
SORTING(descending, "descending")
SORTING(few, "four values")

// ---- Functions with one body ----------------------------------------------------------------------------------------

void offset(const Sink& sink)
{
    for (const int n : {256, 4096})
        sink.add(std::to_string(n), [&](Case& c) {
            c.elements = n;
            c.work = {4, 4};
            const float* a = c.array<float>(n + 1, Data::mixed);
            float* d = c.array<float>(n, Data::mixed, true);
            float* last = c.array<float>(1, Data::mixed, true);
            sameCall(c, "qvrsCompensateOffset_32f", Morven_qvrsCompensateOffset_32f,
                     [=](auto* f) { f(a, d, n, last, 0.5f, 0.9f); });
        });
}
void offsetInPlace(const Sink& sink)
{
    for (const int n : {256, 4096})
        sink.add(std::to_string(n), [&](Case& c) {
            c.elements = n;
            c.work = {4, 4, true};
            float* d = c.array<float>(n, Data::mixed, true);
            float* last = c.array<float>(1, Data::mixed);
            sameCall(c, "qvrsCompensateOffset_32f_I", Morven_qvrsCompensateOffset_32f_I,
                     [=](auto* f) { f(d, n, last, 0.5f, 0.9f); });
        });
}
void peaks(const Sink& sink)
{
    sink.add("a call", [&](Case& c) {
        c.elements = 1;
        const float* a = c.array<float>(1, Data::mixed);
        uint8_t* d = c.array<uint8_t>(1, Data::mixed, true);
        sameCall(c, "qvrsFindPeaks_32f8u", Morven_qvrsFindPeaks_32f8u, [=](auto* f) { f(a, d, 1, 1, 1); });
    });
}

// 32 of 64 columns, each from the other end.
constexpr int kSourceColumns = 64, kColumns = 32;

template<bool Pointers> void columns(const Sink& sink)
{
    for (const int rows : {4, 64})
        sink.add(std::to_string(rows) + " rows", [&](Case& c) {
            c.elements = rows * kColumns;
            c.work = {2, 2};
            const int16_t* a = c.array<int16_t>(rows * kSourceColumns, Data::samples);
            int16_t* d = c.array<int16_t>(rows * kColumns, Data::mixed, true);
            auto index = std::make_shared<std::vector<int32_t>>();
            for (int k = 0; k < kColumns; k++)
                index->push_back(kSourceColumns - 1 - k);
            const int32_t* const order = index->data();
            auto sources = std::make_shared<std::vector<const int16_t*>>();
            auto targets = std::make_shared<std::vector<int16_t*>>();
            for (int r = 0; r < rows; r++) {
                sources->push_back(a + r * kSourceColumns);
                targets->push_back(d + r * kColumns);
            }
            const int16_t** const from = sources->data();
            int16_t** const to = targets->data();
            c.atEnd([index, sources, targets] {});
            if constexpr (Pointers)
                sameCall(c, "qvrsCopyColumn_Indirect_16s_D2L", Morven_qvrsCopyColumn_Indirect_16s_D2L,
                         [=](auto* f) { f(from, kSourceColumns, to, order, kColumns, rows); });
            else
                sameCall(c, "qvrsCopyColumn_Indirect_16s_D2", Morven_qvrsCopyColumn_Indirect_16s_D2,
                         [=](auto* f) { f(a, kSourceColumns, kSourceColumns, d, order, kColumns, kColumns, rows); });
        });
}

const bool offsetRow = addRow({"qvrsCompensateOffset_32f", "", "vector", kWaveform, offset});
const bool offsetInPlaceRow = addRow({"qvrsCompensateOffset_32f_I", "", "vector", kWaveform, offsetInPlace});
const bool peaksRow = addRow({"qvrsFindPeaks_32f8u", "", "vector", kWaveform, peaks});
const bool columnsRow = addRow({"qvrsCopyColumn_Indirect_16s_D2", "", "vector", kWaveform, columns<false>});
const bool rowColumnsRow = addRow({"qvrsCopyColumn_Indirect_16s_D2L", "", "vector", kWaveform, columns<true>});

} // namespace
