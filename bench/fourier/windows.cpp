// Rows of the windows beside plain loops that compute the same weights: one that calls the cosine for each pair, and
// one that turns a double-precision rotation. Each run starts from a fresh copy of the signal.
#include <string.h>

#include <cmath>

#include "bench/bench.h"
#include "bench/peers.h"

using namespace bench;

namespace {

constexpr int kLengths[] = {64, 512, 4096, 65536};
constexpr double kTurn = 6.283185307179586;

double hann(double c)
{
    return 0.5 - 0.5 * c;
}
double hamming(double c)
{
    return 0.54 - 0.46 * c;
}
double blackman(double c)
{
    return 0.42 - 0.5 * c + 0.08 * (2 * c * c - 1);
}

template<double (*Weight)(double), class T> void byCosine(T* p, int n)
{
    const double t = kTurn / (n - 1);
    for (int k = 0; k < n / 2; k++) {
        const double w = Weight(std::cos(k * t));
        p[k] = static_cast<T>(p[k] * w);
        p[n - 1 - k] = static_cast<T>(p[n - 1 - k] * w);
    }
}
template<double (*Weight)(double), class T> void byRotation(T* p, int n)
{
    const double t = kTurn / (n - 1), c = std::cos(t), s = std::sin(t);
    double x = 1, y = 0;
    for (int k = 0; k < n / 2; k++) {
        const double w = Weight(x), next = c * x - s * y;
        y = y * c + x * s;
        x = next;
        p[k] = static_cast<T>(p[k] * w);
        p[n - 1 - k] = static_cast<T>(p[n - 1 - k] * w);
    }
}
void triangle(float* p, int n)
{
    const float step = 2.0f / static_cast<float>(n - 1);
    for (int k = 0; k < n / 2; k++) {
        const float w = static_cast<float>(k) * step;
        p[k] *= w;
        p[n - 1 - k] *= w;
    }
}

template<class T> using Window = qvrStatus (*)(T*, int);
template<class T> using Loop = void (*)(T*, int);

template<class T>
std::function<void(const Sink&)> windowRow(Window<T> window, Loop<T> first, const char* firstName, Loop<T> second)
{
    return [=](const Sink& sink) {
        for (const int n : kLengths)
            sink.add(std::to_string(n), [=](Case& c) {
                c.elements = n;
                c.tolerance = 1e-4;
                const T* signal = c.array<T>(n, Data::samples);
                T* p = c.array<T>(n, Data::mixed, true);
                const size_t bytes = static_cast<size_t>(n) * sizeof(T);
                c.ours([=] {
                    memcpy(p, signal, bytes);
                    window(p, n);
                });
                c.peer(firstName, [=] {
                    memcpy(p, signal, bytes);
                    first(p, n);
                });
                if (second != nullptr)
                    c.peer("rotation loop", [=] {
                        memcpy(p, signal, bytes);
                        second(p, n);
                    });
            });
    };
}

constexpr const char *kFamily = "fourier", *kGroup = "windows";

#define COSINE_WINDOW(name, T, weight)                                                                                 \
    const bool row##name =                                                                                             \
        addRow({#name, "", kFamily, kGroup,                                                                            \
                windowRow<T>(Morven_##name, byCosine<weight, T>, "cosine loop", byRotation<weight, T>)});
COSINE_WINDOW(qvrsWinHann_32f_I, float, hann)
COSINE_WINDOW(qvrsWinHamming_32f_I, float, hamming)
COSINE_WINDOW(qvrsWinHamming_16s_I, qvr16s, hamming)
COSINE_WINDOW(qvrsWinBlackmanStd_32f_I, float, blackman)
const bool bartlettRow = addRow({"qvrsWinBartlett_32f_I", "", kFamily, kGroup,
                                 windowRow<float>(Morven_qvrsWinBartlett_32f_I, triangle, "plain loop", nullptr)});

} // namespace
