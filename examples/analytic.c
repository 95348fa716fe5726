// The envelope and the instantaneous frequency of a recording, from its analytic signal.
//
//   z = x + i H(x)                      the Hilbert transform H over the whole recording, whatever its length
//   envelope    |z|
//   frequency   (phase of z[t + 1] - phase of z[t]) * rate / 2 pi, turned into -rate/2 .. rate/2
//
// A picture column shows the largest envelope and the mean frequency of its samples, weighted by the square of the
// envelope: it follows what is loud, and stays empty where nothing is.
#include <getopt.h>
#include <math.h>
#include <stdio.h>

#include "common/cli.h"
#include "common/signal.h"

enum { kWidth = 1000, kHeight = 200, kLeft = 84, kRight = 24, kTop = 12, kGap = 24, kBottom = 44, kTick = 5 };

static const Colour kInk = {60, 60, 60}, kPaper = {255, 255, 255};

typedef struct {
    float *envelope, *frequency; // `count` values and one less
    int count, rate;
} Analytic;

static Analytic analyse(const Signal* signal)
{
    const int n = signal->count;
    Analytic a = {allocate((int64_t)n * 4), allocate((int64_t)n * 4), n, signal->rate};
    qvr32fc* z = allocate((int64_t)n * 8);
    qvrsHilbertState_32f32fc* state;
    CHECK(Morven_qvrsHilbertInitAlloc_32f32fc(&state, n, qvrHintNone));
    CHECK(Morven_qvrsHilbert_32f32fc(signal->samples, z, state));
    CHECK(Morven_qvrsHilbertFree_32f32fc(state));
    CHECK(Morven_qvrsMagnitude_32fc(z, a.envelope, n));
    float *phase = allocate((int64_t)n * 4), *turns = allocate((int64_t)n * 4);
    CHECK(Morven_qvrsPhase_32fc(z, phase, n));
    Morven_qvrsFree(z);
    if (n > 1) {
        const int steps = n - 1;
        // Differences in turns; those of more than half a turn are short of a whole one.
        CHECK(Morven_qvrsMulC_32f_I((float)(0.5 / M_PI), phase, n));
        for (int i = 0; i < steps; i++)
            a.frequency[i] = phase[i + 1] - phase[i];
        CHECK(Morven_qvrsCopy_32f(a.frequency, turns, steps));
        CHECK(Morven_qvrsAddC_32f_I(0.5f, turns, steps));
        CHECK(Morven_qvrsFloor_32f(turns, turns, steps));
        CHECK(Morven_qvrsSub_32f_I(turns, a.frequency, steps));
        CHECK(Morven_qvrsMulC_32f_I((float)signal->rate, a.frequency, steps));
    }
    Morven_qvrsFree(phase);
    Morven_qvrsFree(turns);
    return a;
}

// Mean frequency of the steps from..end - 1 by the square of the envelope, or a negative number where all is quiet.
static double meanFrequency(const Analytic* a, int from, int end, double floor2)
{
    double weight = 0, sum = 0;
    for (int i = from; i < end; i++) {
        const double w = (double)a->envelope[i] * a->envelope[i];
        weight += w;
        sum += w * a->frequency[i];
    }
    return weight > floor2 * (end - from) ? sum / weight : -1;
}

static void drawTicks(Picture* p, int top, int height, double most, const char* unit, const char* title)
{
    pictureTextUp(p, 4, top + height / 2, title, kInk);
    for (int i = 0; i <= 4; i++) {
        char text[32];
        const int y = top + height - 1 - i * (height - 1) / 4;
        pictureFill(p, kLeft - 1 - kTick, y, kTick, 1, kInk);
        snprintf(text, sizeof text, "%g%s", most * i / 4, unit);
        pictureText(p, kLeft - kTick - 4 - pictureTextWidth(text), y - 5, text, kInk);
    }
    pictureFrame(p, kLeft - 1, top - 1, kWidth + 2, height + 2, kInk);
}

// A curve through one value a column; negative values leave gaps.
static void drawCurve(Picture* p, int top, const double* values, double most, Colour colour)
{
    int before = -1;
    for (int x = 0; x < kWidth; x++) {
        if (values[x] < 0) {
            before = -1;
            continue;
        }
        const double share = values[x] < most ? values[x] / most : 1;
        const int y = top + kHeight - 1 - (int)lround(share * (kHeight - 1));
        const int first = before < 0 || before > y ? y : before, last = before > y ? before : y;
        pictureFill(p, kLeft + x, first, 1, last - first + 1, colour);
        before = y;
    }
}

static void draw(const char* path, const Signal* signal, const Analytic* a, double most, double quiet)
{
    static const Colour wave = {190, 205, 230}, envelope = {200, 30, 30}, frequency = {30, 80, 160};
    Picture p = pictureMake(kLeft + kWidth + kRight, kTop + 2 * kHeight + kGap + kBottom, kPaper);
    double high[kWidth], mean[kWidth];
    float loudest;
    CHECK(Morven_qvrsMax_32f(a->envelope, a->count, &loudest));
    const double scale = loudest > 0 ? loudest : 1;
    const double floor2 = pow(scale * pow(10, quiet / 20), 2);
    for (int x = 0; x < kWidth; x++) {
        const int from = (int)((int64_t)x * a->count / kWidth), next = (int)((int64_t)(x + 1) * a->count / kWidth);
        const int length = next > from ? next - from : 1;
        float largest, low, top;
        CHECK(Morven_qvrsMax_32f(a->envelope + from, length, &largest));
        CHECK(Morven_qvrsMinMax_32f(signal->samples + from, length, &low, &top));
        high[x] = largest;
        const float most2 = -low > top ? -low : top;
        const int height = (int)lround(most2 / scale * (kHeight - 1));
        pictureFill(&p, kLeft + x, kTop + kHeight - 1 - height, 1, height + 1, wave);
        const int end = from + length < a->count - 1 ? from + length : a->count - 1;
        mean[x] = end > from ? meanFrequency(a, from, end, floor2) : -1;
    }
    drawCurve(&p, kTop, high, scale, envelope);
    drawCurve(&p, kTop + kHeight + kGap, mean, most, frequency);
    drawTicks(&p, kTop, kHeight, round(scale * 1000) / 1000, "", "amplitude");
    drawTicks(&p, kTop + kHeight + kGap, kHeight, most, " Hz", "frequency");
    for (int i = 0; i <= 4; i++) {
        char text[32];
        snprintf(text, sizeof text, "%.2f s", (double)a->count / a->rate * i / 4);
        const int x = kLeft + i * (kWidth - 1) / 4, y = kTop + 2 * kHeight + kGap;
        pictureFill(&p, x, y + 1, 1, kTick, kInk);
        const int left = x - pictureTextWidth(text) / 2, most3 = p.width - pictureTextWidth(text) - 1;
        pictureText(&p, left < most3 ? left : most3, y + kTick + 5, text, kInk);
    }
    pictureTextCentred(&p, kLeft + kWidth / 2, kTop + 2 * kHeight + kGap + kTick + 20, "time", kInk);
    pictureText(&p, kLeft + kWidth - 130, kTop + 6, "signal", wave);
    pictureText(&p, kLeft + kWidth - 70, kTop + 6, "envelope", envelope);
    pictureWrite(&p, path);
    pictureRelease(&p);
}

static void usage(void)
{
    printf("usage: analytic [--most Hz] [--quiet dB] [--out FILE.png] FILE.wav\n"
           "\n"
           "Envelope and instantaneous frequency of a WAV file; its channels are averaged.\n"
           "\n"
           "  --most Hz        top of the frequency axis, 10 to 200000 (default a quarter of the sampling rate)\n"
           "  --quiet dB       no frequency is shown that far below the loudest place, -100 to 0 (default -30)\n"
           "  --out FILE.png   draws both over time\n"
           "  --help           this text\n");
}

int main(int argc, char** argv)
{
    programName = "analytic";
    double most = 0, quiet = -30;
    const char* out = NULL;
    static const struct option options[] = {{"most", required_argument, NULL, 'm'},
                                            {"quiet", required_argument, NULL, 'q'},
                                            {"out", required_argument, NULL, 'o'},
                                            {"help", no_argument, NULL, 'h'},
                                            {NULL, 0, NULL, 0}};
    for (int option; (option = nextOption(argc, argv, options, usage)) != -1;) {
        switch (option) {
        case 'm':
            parseNumbers("--most", optarg, 1, &most, (const double[][2]){{10, 200000}});
            break;
        case 'q':
            parseNumbers("--quiet", optarg, 1, &quiet, (const double[][2]){{-100, 0}});
            break;
        case 'o':
            out = optarg;
            break;
        }
    }
    char** const files = operands(argc, argv, 1, "one input file is needed");

    Audio in = audioOpen(files[0]);
    Signal signal = signalRead(&in);
    Analytic a = analyse(&signal);
    float loudest, mean;
    int at;
    CHECK(Morven_qvrsMaxIndx_32f(a.envelope, a.count, &loudest, &at));
    CHECK(Morven_qvrsMean_32f(a.envelope, a.count, &mean));
    printf("%s: %d samples in one transform\n", in.path, signal.count);
    printf("  envelope   mean %.3f, largest %.3f at %.4f s\n", (double)mean, (double)loudest, (double)at / in.rate);
    const double frequency = a.count > 1 ? meanFrequency(&a, 0, a.count - 1, 0) : -1;
    if (frequency >= 0)
        printf("  frequency  mean %.1f Hz\n", frequency);
    if (out != NULL)
        draw(out, &signal, &a, most > 0 ? most : in.rate / 4.0, quiet);
    Morven_qvrsFree(a.envelope);
    Morven_qvrsFree(a.frequency);
    signalFree(&signal);
    audioClose(&in);
    return 0;
}
