// Takes noise out of a recording by wavelets: several levels of a two-channel bank, soft thresholds on the high bands,
// and the way back.
//
//   bands      low and high of x at half the rate, then the same of the low band, and so on
//   noise      sigma = median |finest high band| / 0.6745, of white noise its standard deviation
//   threshold  v becomes 0 where |v| <= T, and moves towards 0 by T elsewhere; T = strength * sigma * sqrt(2 ln n)
//
// The bank is orthogonal with 8 taps. Each level delays its input by 7 samples, so a high band waits for what the
// levels below it take: D = 2 D' + 7 with D' the delay of the next level, and each array has that much room at its end.
#include <getopt.h>
#include <math.h>
#include <stdio.h>
#include <string.h>

#include "common/cli.h"
#include "common/signal.h"

enum { kTaps = 8, kMostLevels = 8 };
enum { kWidth = 1000, kChannelHeight = 160, kMargin = 8 };

// The low-pass filter of the orthogonal bank with four vanishing moments.
static const float kLow[kTaps] = {0.23037781330889653f,   0.71484657055291567f,  0.63088076792985889f,
                                  -0.027983769416859853f, -0.18703481171909309f, 0.030841381835560763f,
                                  0.032883011666885169f,  -0.010597401785069032f};

typedef struct {
    int levels;
    double strength;
} Settings;

// The other filters: high[k] = (-1)^k low[7 - k], and both reversed for the way back.
typedef struct {
    float high[kTaps], backLow[kTaps], backHigh[kTaps];
} Bank;
static Bank bankMake(void)
{
    Bank bank;
    for (int k = 0; k < kTaps; k++) {
        bank.high[k] = k % 2 == 0 ? kLow[kTaps - 1 - k] : -kLow[kTaps - 1 - k];
        bank.backLow[k] = kLow[kTaps - 1 - k];
    }
    for (int k = 0; k < kTaps; k++)
        bank.backHigh[k] = bank.high[kTaps - 1 - k];
    return bank;
}

// The level's delay in its own samples, `left` levels with it.
static int delayOf(int left)
{
    return left == 0 ? 0 : 2 * delayOf(left - 1) + kTaps - 1;
}

// v - clamp(v, -t, t).
static void softThreshold(float* v, float* work, int n, float t)
{
    CHECK(Morven_qvrsThreshold_GTVal_32f(v, work, n, t, t));
    CHECK(Morven_qvrsThreshold_LTVal_32f_I(work, n, -t, -t));
    CHECK(Morven_qvrsSub_32f_I(work, v, n));
}

// The middle of the magnitudes.
static float medianMagnitude(const float* v, float* work, int n)
{
    CHECK(Morven_qvrsAbs_32f(v, work, n));
    CHECK(Morven_qvrsSortAscend_32f_I(work, n));
    return work[n / 2];
}

typedef struct {
    const Bank* bank;
    float threshold; // below 0: not known yet, taken from the finest band
    double factor;   // thresholds are this many sigmas
    float sigma;
} Denoiser;

// n samples, an even number, through `left` levels and back; x comes back delayed by delayOf(left).
static void denoiseLevel(Denoiser* d, float* x, int n, int left)
{
    if (left == 0)
        return;
    const int half = n / 2, wait = delayOf(left - 1);
    float *low = allocate((int64_t)half * 4), *high = allocate((int64_t)half * 4), *work = allocate((int64_t)half * 4);
    qvrsWTFwdState_32f* there;
    CHECK(Morven_qvrsWTFwdInitAlloc_32f(&there, kLow, kTaps, 0, d->bank->high, kTaps, 0));
    CHECK(Morven_qvrsWTFwd_32f(x, low, high, half, there));
    CHECK(Morven_qvrsWTFwdFree_32f(there));
    if (d->threshold < 0) {
        d->sigma = medianMagnitude(high, work, half) / 0.6745f;
        d->threshold = (float)(d->factor * d->sigma);
    }
    softThreshold(high, work, half, d->threshold);
    denoiseLevel(d, low, half, left - 1);
    if (wait > 0) {
        memmove(high + wait, high, (size_t)(half - wait) * 4);
        CHECK(Morven_qvrsZero_32f(high, wait));
    }
    qvrsWTInvState_32f* back;
    CHECK(Morven_qvrsWTInvInitAlloc_32f(&back, d->bank->backLow, kTaps, 0, d->bank->backHigh, kTaps, 0));
    CHECK(Morven_qvrsWTInv_32f(low, high, half, x, back));
    CHECK(Morven_qvrsWTInvFree_32f(back));
    Morven_qvrsFree(low);
    Morven_qvrsFree(high);
    Morven_qvrsFree(work);
}

static Signal denoised(const Signal* in, const Settings* settings, float* sigma)
{
    const int delay = delayOf(settings->levels), unit = 1 << settings->levels;
    const int64_t padded = ((int64_t)in->count + delay + unit - 1) / unit * unit;
    if (padded > INT32_MAX / 4)
        fail("the recording is too long");
    const int n = (int)padded;
    float* x = allocate(padded * 4);
    CHECK(Morven_qvrsCopy_32f(in->samples, x, in->count));
    CHECK(Morven_qvrsZero_32f(x + in->count, n - in->count));
    const Bank bank = bankMake();
    // The median is that of the samples themselves, without the zeros behind them, as far as these are few.
    Denoiser d = {&bank, -1, settings->strength * sqrt(2 * log(in->count)), 0};
    denoiseLevel(&d, x, n, settings->levels);
    *sigma = d.sigma;
    Signal out = {allocate((int64_t)in->count * 4), in->count, in->rate};
    CHECK(Morven_qvrsCopy_32f(x + delay, out.samples, in->count));
    Morven_qvrsFree(x);
    return out;
}

// White noise of a level in decibels below full scale, the same in every run.
static void addNoise(Signal* signal, double level)
{
    const double deviation = pow(10, level / 20);
    uint64_t state = 0x9E3779B97F4A7C15u;
    for (int i = 0; i < signal->count; i++) {
        // The sum of twelve uniform numbers has variance 1.
        double sum = -6;
        for (int k = 0; k < 12; k++) {
            state ^= state << 13;
            state ^= state >> 7;
            state ^= state << 17;
            sum += (double)(state >> 11) * 0x1p-53;
        }
        signal->samples[i] += (float)(deviation * sum);
    }
}

// Decibels of the signal over its difference to another.
static double ratio(const Signal* clean, const Signal* other)
{
    double power = 0, error = 0;
    for (int i = 0; i < clean->count; i++) {
        const double d = (double)other->samples[i] - clean->samples[i];
        power += (double)clean->samples[i] * clean->samples[i];
        error += d * d;
    }
    return 10 * log10(power / error);
}

static void usage(void)
{
    printf("usage: denoise [--levels N] [--strength S] [--noise dB] [--out PREFIX] FILE.wav\n"
           "\n"
           "Takes white noise out of a WAV file; its channels are averaged.\n"
           "\n"
           "  --levels N      levels of the wavelet transform, 1 to 8 (default 5)\n"
           "  --strength S    times the threshold that leaves no noise, 0.01 to 10 (default 0.5)\n"
           "  --noise dB      first adds noise of that level below full scale, -90 to 0, and tells what is gained\n"
           "  --out PREFIX    writes PREFIX-before.wav, PREFIX-after.wav and PREFIX.png with both envelopes\n"
           "                  (default denoised)\n"
           "  --help          this text\n");
}

int main(int argc, char** argv)
{
    programName = "denoise";
    Settings settings = {5, 0.5};
    double levels = 5, noise = 1;
    const char* out = "denoised";
    static const struct option options[] = {
        {"levels", required_argument, NULL, 'l'}, {"strength", required_argument, NULL, 's'},
        {"noise", required_argument, NULL, 'n'},  {"out", required_argument, NULL, 'o'},
        {"help", no_argument, NULL, 'h'},         {NULL, 0, NULL, 0}};
    for (int option; (option = nextOption(argc, argv, options, usage)) != -1;) {
        switch (option) {
        case 'l':
            parseNumbers("--levels", optarg, 1, &levels, (const double[][2]){{1, kMostLevels}});
            if (levels != floor(levels))
                failUsage("--levels: a whole number is needed");
            settings.levels = (int)levels;
            break;
        case 's':
            parseNumbers("--strength", optarg, 1, &settings.strength, (const double[][2]){{0.01, 10}});
            break;
        case 'n':
            parseNumbers("--noise", optarg, 1, &noise, (const double[][2]){{-90, 0}});
            break;
        case 'o':
            out = optarg;
            break;
        }
    }
    char** const files = operands(argc, argv, 1, "one input file is needed");

    Audio in = audioOpen(files[0]);
    Signal clean = signalRead(&in), before = {allocate((int64_t)clean.count * 4), clean.count, clean.rate};
    CHECK(Morven_qvrsCopy_32f(clean.samples, before.samples, clean.count));
    if (noise <= 0)
        addNoise(&before, noise);
    float sigma;
    Signal after = denoised(&before, &settings, &sigma);
    printf("%s: %.2f s, %d levels, noise of %.1f dB below full scale\n", in.path, (double)clean.count / clean.rate,
           settings.levels, sigma > 0 ? -20 * log10(sigma) : INFINITY);
    if (noise <= 0)
        printf("  signal over noise: %.1f dB before, %.1f dB after\n", ratio(&clean, &before), ratio(&clean, &after));

    char path[4096];
    const char* const names[] = {"before", "after"};
    const Signal* const signals[] = {&before, &after};
    Picture picture = pictureMake(kWidth, 2 * kChannelHeight, (Colour){255, 255, 255});
    for (int i = 0; i < 2; i++) {
        if (snprintf(path, sizeof path, "%s-%s.wav", out, names[i]) >= (int)sizeof path)
            fail("the name is too long");
        signalWrite(signals[i], path, &in);
        printf("  %s\n", path);
        envelopeDraw(&picture, (Field){0, i * kChannelHeight + kMargin, kWidth, kChannelHeight - 2 * kMargin},
                     signals[i]->samples, signals[i]->count);
    }
    snprintf(path, sizeof path, "%s.png", out);
    pictureWrite(&picture, path);
    printf("  %s\n", path);
    pictureRelease(&picture);
    signalFree(&clean);
    signalFree(&before);
    signalFree(&after);
    audioClose(&in);
    return 0;
}
