// What a second thread does: the functions that fork, at the length from which they do and at 10 and 100 times that, on
// one thread and on two, with workers that still wait and with workers that sleep. Writes Markdown: qvr_threads.
//
// The runtime reads KMP_BLOCKTIME once, so this program runs itself again for sleeping workers.
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "bench/bench.h"
#include "frame/threads.h"

namespace {

using bench::now;

struct Work {
    const char* name;
    const char* size;
    std::function<void()> run;
};

float* floats(int64_t n)
{
    float* const p = reinterpret_cast<float*>(Morven_qvrsMalloc_8u(static_cast<int>(n * 4)));
    for (int64_t i = 0; i < n; i++)
        p[i] = 1 + static_cast<float>(i % 97) / 97;
    return p;
}

std::vector<Work> works()
{
    std::vector<Work> all;
    static char labels[64][32];
    int used = 0;
    const auto add = [&](const char* name, int64_t size, const char* unit, std::function<void()> run) {
        snprintf(labels[used], sizeof labels[used], "%lld%s", static_cast<long long>(size), unit);
        all.push_back({name, labels[used++], std::move(run)});
    };
    float *const a = floats(1 << 22), *const b = floats(1 << 22), *const d = floats(1 << 22);
    for (const int n : {4096, 40960, 409600}) {
        add("Div_32f", n, "", [=] { Morven_qvrsDiv_32f(a, b, d, n); });
        add("Sqrt_32f", n, "", [=] { Morven_qvrsSqrt_32f(a, d, n); });
    }
    for (const int n : {2048, 20480, 204800})
        add("Magnitude_32fc", n, "", [=] { Morven_qvrsMagnitude_32fc(reinterpret_cast<const qvr32fc*>(a), d, n); });
    static double taps[64];
    std::fill_n(taps, 64, 1.0 / 64);
    qvrsFIRState64f_32f* direct = nullptr;
    Morven_qvrsFIRInitAlloc64f_32f(&direct, taps, 48, nullptr);
    for (const int n : {1601, 16010, 160100})
        add("FIR64f_32f, 48 taps", n, "", [=] { Morven_qvrsFIR64f_32f(a, d, n, direct); });
    qvrsFIRState_32f* longer = nullptr;
    Morven_qvrsFIRInitAlloc_32f(&longer, b, 1000, nullptr);
    for (const int n : {1601, 16010, 160100})
        add("FIR_32f, 1000 taps", n, "", [=] { Morven_qvrsFIR_32f(a, d, n, longer); });
    for (const int n : {4097, 40970, 409700})
        add("Conv_32f by 500", n, "", [=] { Morven_qvrsConv_32f(a, n, b, 500, d); });
    for (const int side : {64, 200, 640}) {
        const qvriSize from = {2 * side, 2 * side};
        const qvriRect whole = {0, 0, 2 * side, 2 * side}, to = {0, 0, side, side};
        const int method = qvriInterLanczos + qvriAntialias;
        int bytes = 0;
        Morven_qvriResizeGetBufSize(whole, to, 1, method, &bytes);
        qvr8u* const buffer = Morven_qvrsMalloc_8u(bytes);
        add("Resize 8u by 1/2, Lanczos antialiased", side, " squared", [=] {
            Morven_qvriResizeSqrPixel_8u_C1R(reinterpret_cast<const qvr8u*>(a), from, 2 * side, whole,
                                             reinterpret_cast<qvr8u*>(d), side, to, 0.5, 0.5, 0, 0, method, buffer);
        });
    }
    return all;
}

// Microseconds of one call, the least of many. `pause`: workers have gone to sleep before each.
double timeOf(const Work& work, bool pause)
{
    double least = 1e9;
    const double until = now() + (pause ? 0.15 : 0.1);
    do {
        if (pause)
            usleep(2000);
        const double start = now();
        work.run();
        least = std::min(least, now() - start);
    } while (now() < until);
    return 1e6 * least;
}

} // namespace

int main(int argc, char** argv)
{
    const bool sleeping = argc > 1 && strcmp(argv[1], "sleeping") == 0;
    const int budget = qvrNumThreadsValue();
    const std::vector<Work> all = works();
    if (sleeping) { // of the outer run: the numbers alone
        for (const Work& work : all)
            printf("%.2f\n", timeOf(work, true));
        return 0;
    }
    if (budget < 2) {
        fprintf(stderr, "qvr_threads: one processor; nothing to show\n");
        return 3;
    }
    // The first fork makes the runtime's threads.
    const double start = now();
    all[0].run();
    const double first = 1e6 * (now() - start);
    qvrSetNumThreads(1);
    std::vector<double> one, two, woken;
    for (const Work& work : all)
        one.push_back(timeOf(work, false));
    qvrSetNumThreads(2);
    for (const Work& work : all)
        two.push_back(timeOf(work, false));
    setenv("KMP_BLOCKTIME", "0", 1);
    FILE* const child = popen((std::string(argv[0]) + " sleeping").c_str(), "r");
    double value;
    while (child != nullptr && fscanf(child, "%lf", &value) == 1)
        woken.push_back(value);
    if (child == nullptr || pclose(child) != 0 || woken.size() != all.size())
        return 1;
    printf("| function | size | one thread, us | two, workers waiting | two, workers asleep | gain "
           "|\n|---|---|---|---|---|---|\n");
    for (size_t i = 0; i < all.size(); i++)
        printf("| %s | %s | %.2f | %.2f | %.2f | %.2f |\n", all[i].name, all[i].size, one[i], two[i], woken[i],
               one[i] / two[i]);
    printf("\nThe first fork of a process, of a call that takes %.1f us on one thread: %.0f us.\n", one[0], first);
    return 0;
}
