// Rows of convolution and correlation beside plain loops and FFTW. FFTW keeps its plans; the functions make their
// objects in each call. The unit of work is a result.
#include <fftw3.h>
#include <math.h>
#include <string.h>

#include <algorithm>

#include "bench/bench.h"
#include "bench/peers.h"

using namespace bench;

namespace {

constexpr const char *kFamily = "fourier", *kGroup = "convolution";

template<class F> F* plainOf(const char* name)
{
    return reinterpret_cast<F*>(findPlain(name));
}

// Plain loops join up to here; beyond they would only cost the time of the run.
constexpr double kPlainMost = 3e8;

// Convolution by FFTW with kept plans: blocks of n points that take n - shorter + 1 new values each, or one block.
struct Fftw {
    int n, bins;
    float *x, *y;
    fftwf_complex *p, *q;
    fftwf_plan there, thereY, back;

    explicit Fftw(int points) : n(points), bins(points / 2 + 1)
    {
        x = fftwf_alloc_real(static_cast<size_t>(n));
        y = fftwf_alloc_real(static_cast<size_t>(n));
        p = fftwf_alloc_complex(static_cast<size_t>(bins));
        q = fftwf_alloc_complex(static_cast<size_t>(bins));
        there = fftwf_plan_dft_r2c_1d(n, x, p, FFTW_MEASURE);
        thereY = fftwf_plan_dft_r2c_1d(n, y, q, FFTW_MEASURE);
        back = fftwf_plan_dft_c2r_1d(n, p, x, FFTW_MEASURE);
    }
    void release() const
    {
        fftwf_destroy_plan(there);
        fftwf_destroy_plan(thereY);
        fftwf_destroy_plan(back);
        fftwf_free(x);
        fftwf_free(y);
        fftwf_free(p);
        fftwf_free(q);
    }
    __attribute__((target("avx2,fma"))) void multiply(bool conjugate) const
    {
        const float scale = 1.0f / static_cast<float>(n), sign = conjugate ? -scale : scale;
        float* __restrict a = reinterpret_cast<float*>(p);
        const float* __restrict b = reinterpret_cast<float*>(q);
#pragma clang loop vectorize(enable)
        for (int k = 0; k < bins; k++) {
            const float re = b[2 * k] * scale, im = b[2 * k + 1] * sign, c = a[2 * k], d = a[2 * k + 1];
            a[2 * k] = c * re - d * im;
            a[2 * k + 1] = c * im + d * re;
        }
    }
    // The shorter source's spectrum, then block by block.
    void convolve(const float* longer, int L, const float* shorter, int S, float* dst) const
    {
        fill(y, shorter, S);
        fftwf_execute(thereY);
        const int step = n - S + 1, results = L + S - 1;
        for (int start = 0; start < results; start += step) {
            const int from = start - (S - 1), head = from < 0 ? -from : 0;
            memset(x, 0, sizeof(float) * static_cast<size_t>(head));
            const int count = std::max(0, std::min(L - from - head, n - head));
            memcpy(x + head, longer + from + head, sizeof(float) * static_cast<size_t>(count));
            memset(x + head + count, 0, sizeof(float) * static_cast<size_t>(n - head - count));
            fftwf_execute(there);
            multiply(false);
            fftwf_execute(back);
            memcpy(dst + start, x + S - 1, sizeof(float) * static_cast<size_t>(std::min(results - start, step)));
        }
    }
    // The sum of a[k] b[k + lag], lag = low .. low + count - 1.
    void correlate(const float* a, int n1, const float* b, int n2, float* dst, int count, int low) const
    {
        fill(y, a, n1);
        fill(x, b, n2);
        fftwf_execute(thereY);
        fftwf_execute(there);
        multiply(true);
        fftwf_execute(back);
        const int below = std::min(count, std::max(0, -low));
        memcpy(dst, x + n + low, sizeof(float) * static_cast<size_t>(below));
        memcpy(dst + below, x + low + below, sizeof(float) * static_cast<size_t>(count - below));
    }

private:
    void fill(float* to, const float* from, int count) const
    {
        memcpy(to, from, sizeof(float) * static_cast<size_t>(count));
        memset(to + count, 0, sizeof(float) * static_cast<size_t>(n - count));
    }
};

int powerFrom(int64_t least)
{
    int n = 2;
    while (n < least)
        n *= 2;
    return n;
}

std::string by(int a, int b)
{
    return std::to_string(a) + " by " + std::to_string(b);
}

// Multiply-adds of all terms, two operations to a fused one.
void countTerms(Case& c, double terms)
{
    c.work.unit = Unit::add32;
    c.work.operations = terms / c.elements;
}

void convolution(const Sink& sink)
{
    const std::pair<int, int> shapes[] = {
        {15, 4},       {100, 20},     {200, 200},     {450, 60},       {1000, 31},        {4096, 31},  {40000, 60},
        {512, 512},    {1000, 999},   {4096, 4096},   {30000, 30000},  {1000, 64},        {4096, 100}, {40000, 100},
        {40000, 1000}, {300000, 300}, {300000, 3000}, {1 << 20, 1000}, {1 << 20, 1 << 18}};
    for (const auto& [L, S] : shapes) {
        if (L > 500000 && !sink.memory)
            continue;
        sink.add(by(L, S), [=](Case& c) {
            const int results = L + S - 1;
            c.elements = results;
            c.work = {.read = 4, .written = 4};
            const bool direct = results < 512 || S < 64;
            if (direct)
                countTerms(c, static_cast<double>(L) * S);
            c.tolerance = 1e-5 * sqrt(static_cast<double>(L) * S) / 10 + 1e-5 * S;
            const float *a = c.array<float>(L, Data::mixed), *b = c.array<float>(S, Data::mixed);
            float* y = c.array<float>(results, Data::mixed, true);
            c.ours([=] { Morven_qvrsConv_32f(a, L, b, S, y); });
            if (static_cast<double>(L) * S < kPlainMost)
                if (auto* plain = plainOf<decltype(Morven_qvrsConv_32f)>("qvrsConv_32f"))
                    c.peer("plain", [=] { plain(a, L, b, S, y); });
            if (!ownSlot() || L < 64)
                return;
            // One transform, and the block sizes that may be best.
            if (L < 8 * S) {
                const Fftw once(powerFrom(2 * S + L - 2));
                c.atEnd([=] { once.release(); });
                c.peer("FFTW once", [=] { once.convolve(a, L, b, S, y); });
            }
            if (L >= 3 * S)
                for (const int times : {4, 8, 16}) {
                    const Fftw blocks(std::max(256, powerFrom(static_cast<int64_t>(times) * S)));
                    c.atEnd([=] { blocks.release(); });
                    c.peer(("FFTW blocks " + std::to_string(times)).c_str(), [=] { blocks.convolve(a, L, b, S, y); });
                }
        });
    }
}

void biased(const Sink& sink)
{
    const int shapes[][4] = {{45, 4, 41, 4},    {50, 11, 40, 10},    {56, 16, 40, 16},    {70, 31, 40, 30},
                             {110, 31, 80, 30}, {40, 40, 40, 0},     {60, 60, 60, 0},     {100, 20, 80, 19},
                             {100, 20, 119, 0}, {300, 100, 200, 50}, {2000, 64, 1900, 63}};
    for (const auto& shape : shapes) {
        const int n2 = shape[0], n1 = shape[1], n = shape[2], bias = shape[3];
        sink.add(by(n2, n1) + " to " + std::to_string(n) + ", bias " + std::to_string(bias), [=](Case& c) {
            c.elements = n;
            c.work = {.read = 4, .written = 4};
            countTerms(c, static_cast<double>(n) * n1 / (n1 == n2 ? 2 : 1));
            c.tolerance = 1e-4;
            const float *a = c.array<float>(n1, Data::mixed), *b = c.array<float>(n2, Data::mixed) + bias;
            float* y = c.array<float>(n, Data::mixed, true);
            c.ours([=] { Morven_qvrsConvBiased_32f(a, n1, b, n2, y, n, bias); });
            if (auto* plain = plainOf<decltype(Morven_qvrsConvBiased_32f)>("qvrsConvBiased_32f"))
                c.peer("plain", [=] { plain(a, n1, b, n2, y, n, bias); });
        });
    }
}

void cyclic(const Sink& sink)
{
    sink.add("8", [](Case& c) {
        c.elements = 8;
        const float *x = c.array<float>(8, Data::mixed), *h = c.array<float>(8, Data::mixed);
        float* y = c.array<float>(8, Data::mixed, true);
        c.ours([=] { Morven_qvrsConvCyclic8x8_32f(x, h, y); });
        if (auto* plain = plainOf<decltype(Morven_qvrsConvCyclic8x8_32f)>("qvrsConvCyclic8x8_32f"))
            c.peer("plain", [=] { plain(x, h, y); });
    });
}

void crossCorrelation(const Sink& sink)
{
    // Lengths, first lag, lags.
    const int shapes[][4] = {{100, 100, -99, 199},        {300, 300, -299, 599},         {64, 4000, 0, 3900},
                             {10000, 10000, 0, 1},        {10000, 10000, 0, 4},          {10000, 10000, -100, 201},
                             {1000, 1000, -999, 1999},    {4096, 4096, -4095, 8191},     {500, 40000, 0, 39500},
                             {40000, 500, -39500, 39500}, {30000, 30000, -29999, 59999}, {1000, 300000, 0, 299000}};
    for (const auto& shape : shapes) {
        const int n1 = shape[0], n2 = shape[1], low = shape[2], n = shape[3];
        sink.add(by(n1, n2) + ", " + std::to_string(n) + " lags", [=](Case& c) {
            c.elements = n;
            c.work = {.read = 4, .written = 4};
            const int shorter = std::min(n1, n2), longer = std::max(n1, n2);
            const double products = static_cast<double>(shorter) * n;
            if (products / longer < 384)
                countTerms(c, products);
            c.tolerance = 1e-5 * sqrt(static_cast<double>(n1) * n2) / 10 + 1e-5 * shorter;
            const float *a = c.array<float>(n1, Data::mixed), *b = c.array<float>(n2, Data::mixed);
            float* y = c.array<float>(n, Data::mixed, true);
            c.ours([=] { Morven_qvrsCrossCorr_32f(a, n1, b, n2, y, n, low); });
            if (products < kPlainMost)
                if (auto* plain = plainOf<decltype(Morven_qvrsCrossCorr_32f)>("qvrsCrossCorr_32f"))
                    c.peer("plain", [=] { plain(a, n1, b, n2, y, n, low); });
            if (!ownSlot() || n < 100)
                return;
            const Fftw once(powerFrom(static_cast<int64_t>(n1) + n2 - 1));
            c.atEnd([=] { once.release(); });
            c.peer("FFTW once", [=] { once.correlate(a, n1, b, n2, y, n, low); });
            if (longer >= 3 * shorter)
                for (const int times : {4, 8, 16}) {
                    // A convolution with the shorter source backwards, cut to the lags asked for.
                    const Fftw blocks(powerFrom(static_cast<int64_t>(times) * shorter));
                    std::vector<float>* all = new std::vector<float>(static_cast<size_t>(n1 + n2 - 1));
                    std::vector<float>* turned = new std::vector<float>(static_cast<size_t>(shorter));
                    c.atEnd([=] {
                        blocks.release();
                        delete all;
                        delete turned;
                    });
                    c.peer(("FFTW blocks " + std::to_string(times)).c_str(), [=] {
                        const float *s = n1 < n2 ? a : b, *l = n1 < n2 ? b : a;
                        std::reverse_copy(s, s + shorter, turned->begin());
                        blocks.convolve(l, longer, turned->data(), shorter, all->data());
                        const int first = low + n1 - 1;
                        if (n1 < n2)
                            memcpy(y, all->data() + first, sizeof(float) * static_cast<size_t>(n));
                        else
                            for (int i = 0; i < n; i++)
                                y[i] = (*all)[static_cast<size_t>(n1 + n2 - 2 - first - i)];
                    });
                }
        });
    }
}

void autoCorrelation(const Sink& sink)
{
    const int shapes[][2] = {{100, 100},   {1000, 30},   {1000, 1000}, {1199, 1199},
                             {10000, 100}, {4096, 4096}, {40000, 2000}};
    for (const auto& shape : shapes) {
        const int n1 = shape[0], n = shape[1];
        sink.add(std::to_string(n1) + " to " + std::to_string(n), [=](Case& c) {
            c.elements = n;
            c.work = {.read = 4, .written = 4};
            if (n < 1200)
                countTerms(c, (n1 - n / 2.0) * n);
            c.tolerance = 2e-5 * n1;
            const float* a = c.array<float>(n1, Data::mixed);
            float* y = c.array<float>(n, Data::mixed, true);
            c.ours([=] { Morven_qvrsAutoCorr_32f(a, n1, y, n); });
            if (auto* plain = plainOf<decltype(Morven_qvrsAutoCorr_32f)>("qvrsAutoCorr_32f"))
                c.peer("plain", [=] { plain(a, n1, y, n); });
            if (!ownSlot())
                return;
            const Fftw once(powerFrom(int64_t{2} * n1));
            c.atEnd([=] { once.release(); });
            c.peer("FFTW", [=] { once.correlate(a, n1, a, n1, y, n, 0); });
        });
    }
}

const bool registered[] = {
    addRow({"qvrsConv_32f", "", kFamily, kGroup, convolution}),
    addRow({"qvrsConvBiased_32f", "", kFamily, kGroup, biased}),
    addRow({"qvrsConvCyclic8x8_32f", "", kFamily, kGroup, cyclic}),
    addRow({"qvrsCrossCorr_32f", "", kFamily, kGroup, crossCorrelation}),
    addRow({"qvrsAutoCorr_32f", "", kFamily, kGroup, autoCorrelation}),
};

} // namespace
