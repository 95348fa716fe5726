// The spectrogram of a WAV file as a PNG picture with axes.
//
//   frame f   samples f * hop .. f * hop + N - 1 of the mean of all channels, times a window w
//   level     20 log10(2 |X[k]| / sum of w): a sine of full scale is 0 dB
//
// The file is read once in steps of a hop. A picture column shows the loudest of the frames that fall on it, a picture
// row the loudest of its bins, so that nothing short or narrow is lost.
#include <getopt.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <morvenqvr.h>

#include "common/audio.h"
#include "common/axes.h"
#include "common/cli.h"
#include "common/picture.h"
#include "common/signal.h"

enum { kMinOrder = 6, kMaxOrder = 16 };
enum { kMaxWidth = 1200, kMinWidth = 480, kMaxHeight = 512 };
enum { kLeft = 78, kRight = 106, kTop = 12, kBottom = 44 }; // margins of the plot
enum { kBarWidth = 14, kTick = 5 };

typedef qvrStatus (*Window)(qvr32f*, int);
static const struct {
    const char* name;
    Window apply;
} kWindows[] = {{"hann", Morven_qvrsWinHann_32f_I},
                {"hamming", Morven_qvrsWinHamming_32f_I},
                {"blackman", Morven_qvrsWinBlackmanStd_32f_I},
                {"bartlett", Morven_qvrsWinBartlett_32f_I},
                {"none", NULL}};
enum { kWindowCount = sizeof kWindows / sizeof kWindows[0] };

typedef struct {
    int order, window;
    double overlap; // share of a frame that the next one repeats
    double range;   // decibels below full scale that are told apart
} Settings;

// One transform length with its arrays.
typedef struct {
    int length, bins;
    Window window;
    float toFullScale; // of a magnitude
    qvrsFFTSpec_R_32f* spec;
    float *frame, *magnitude;
    qvr32fc* spectrum;
    uint8_t* work;
} Analyser;

static Analyser analyserMake(const Settings* settings)
{
    Analyser a = {.length = 1 << settings->order, .window = kWindows[settings->window].apply};
    a.bins = a.length / 2 + 1;
    CHECK(Morven_qvrsFFTInitAlloc_R_32f(&a.spec, settings->order, qvrFftNoDiv, qvrHintNone));
    a.frame = allocate((int64_t)sizeof(float) * a.length);
    a.spectrum = allocate((int64_t)sizeof(qvr32fc) * a.bins);
    a.magnitude = allocate((int64_t)sizeof(float) * a.bins);
    const int64_t work = (int64_t)sizeof(float) * a.length + 64;
    a.work = allocate(work > 131136 ? work : 131136);
    CHECK(Morven_qvrsSet_32f(1.0f, a.frame, a.length));
    if (a.window != NULL)
        CHECK(a.window(a.frame, a.length));
    double sum = 0;
    for (int i = 0; i < a.length; i++)
        sum += a.frame[i];
    a.toFullScale = (float)(2 / sum);
    return a;
}

static void analyserRelease(Analyser* a)
{
    Morven_qvrsFFTFree_R_32f(a->spec);
    Morven_qvrsFree(a->frame);
    Morven_qvrsFree(a->spectrum);
    Morven_qvrsFree(a->magnitude);
    Morven_qvrsFree(a->work);
}

// The levels of one frame, raised into `peak` where they are larger.
static void analyserRun(Analyser* a, const float* samples, float* peak)
{
    CHECK(Morven_qvrsMulC_32f(samples, a->toFullScale, a->frame, a->length));
    if (a->window != NULL)
        CHECK(a->window(a->frame, a->length));
    CHECK(Morven_qvrsFFTFwd_RToCCS_32f(a->frame, (float*)a->spectrum, a->spec, a->work));
    CHECK(Morven_qvrsMagnitude_32fc(a->spectrum, a->magnitude, a->bins));
    CHECK(Morven_qvrsMaxEvery_32f_I(a->magnitude, peak, a->bins));
}

// Reads `frames` frames as the mean of their channels, -1 .. 1.
static void readMono(Audio* in, int16_t* samples, float* mono, int frames)
{
    audioRead(in, samples, frames);
    for (int i = 0; i < frames; i++) {
        int sum = 0;
        for (int c = 0; c < in->channels; c++)
            sum += samples[(int64_t)i * in->channels + c];
        mono[i] = (float)sum / (32768.0f * (float)in->channels);
    }
}

// Columns of `bins` levels each, in decibels; silence is -infinity.
typedef struct {
    int columns, bins;
    int64_t frames;
    float* level;
} Levels;

static Levels analyse(Audio* in, const Settings* settings)
{
    Analyser a = analyserMake(settings);
    const int hop = (int)fmax(1, lround(a.length * (1 - settings->overlap)));
    const int64_t frames = in->frames <= a.length ? 1 : (in->frames - a.length + hop - 1) / hop + 1;
    Levels levels = {.columns = frames > kMaxWidth ? kMaxWidth : (int)frames, .bins = a.bins, .frames = frames};
    levels.level = calloc((size_t)levels.columns * (size_t)levels.bins, sizeof(float));
    if (levels.level == NULL)
        fail("out of memory");

    float* samples = allocate((int64_t)sizeof(float) * a.length);
    int16_t* raw = allocate((int64_t)sizeof(int16_t) * a.length * in->channels);
    Progress progress = progressStart("analysing", in->frames);
    int64_t read = 0;
    for (int64_t f = 0; f < frames; f++) {
        // The last frames may run past the end: zeros there.
        const int keep = f == 0 ? 0 : a.length - hop;
        memmove(samples, samples + hop, sizeof(float) * (size_t)keep);
        const int64_t left = in->frames - read;
        const int want = a.length - keep, got = left < want ? (int)left : want;
        if (got > 0)
            readMono(in, raw, samples + keep, got);
        memset(samples + keep + got, 0, sizeof(float) * (size_t)(want - got));
        read += got;
        analyserRun(&a, samples, levels.level + f * levels.columns / frames * levels.bins);
        progressShow(&progress, read);
    }
    progressEnd(&progress);
    for (int column = 0; column < levels.columns; column++) {
        float* level = levels.level + (int64_t)column * levels.bins;
        CHECK(Morven_qvrsLog10_32f_A21(level, level, levels.bins));
        CHECK(Morven_qvrsMulC_32f_I(20.0f, level, levels.bins));
    }
    Morven_qvrsFree(samples);
    Morven_qvrsFree(raw);
    analyserRelease(&a);
    return levels;
}

// Black, violet, red, orange, pale yellow: brightness rises all the way, so the picture reads without colour too.
static Colour heat(double x)
{
    static const double stops[][3] = {{0, 0, 4}, {87, 16, 110}, {188, 55, 84}, {249, 142, 9}, {252, 255, 164}};
    const double at = fmin(fmax(x, 0), 1) * 4;
    const int i = at < 3 ? (int)at : 3;
    uint8_t c[3];
    for (int j = 0; j < 3; j++)
        c[j] = (uint8_t)lround(stops[i][j] + (at - i) * (stops[i + 1][j] - stops[i][j]));
    return (Colour){c[0], c[1], c[2]};
}

static void drawAxes(Picture* picture, int width, int height, double nyquist, double lasted, double range)
{
    const Colour ink = {60, 60, 60};
    char text[32];
    const int bottom = kTop + height, right = kLeft + width;
    pictureFrame(picture, kLeft - 1, kTop - 1, width + 2, height + 2, ink);

    const int kilo = nyquist >= 2000;
    const double unit = kilo ? 1000 : 1, top = nyquist / unit, stepF = axisStep(top, height / 40 > 2 ? height / 40 : 2);
    for (double f = 0; f <= top * (1 + 1e-9); f += stepF) {
        const int y = bottom - 1 - (int)lround(f / top * (height - 1));
        pictureFill(picture, kLeft - 1 - kTick, y, kTick, 1, ink);
        axisLabel(text, sizeof text, f, stepF, kilo ? " kHz" : " Hz");
        pictureText(picture, kLeft - kTick - 4 - pictureTextWidth(text), y - 5, text, ink);
    }
    const double stepT = axisStep(lasted, width / 90 > 2 ? width / 90 : 2);
    for (double t = 0; t <= lasted * (1 + 1e-9); t += stepT) {
        const int x = kLeft + (int)lround(t / lasted * (width - 1));
        pictureFill(picture, x, bottom + 1, 1, kTick, ink);
        axisLabel(text, sizeof text, t, stepT, " s");
        pictureTextCentred(picture, x, bottom + kTick + 3, text, ink);
    }
    pictureTextUp(picture, 4, kTop + height / 2, "frequency", ink);
    pictureTextCentred(picture, kLeft + width / 2, bottom + kTick + 19, "time", ink);
    const int bar = right + 14;
    pictureTextUp(picture, right + kRight - 14, kTop + height / 2, "level", ink);
    for (int y = 0; y < height; y++)
        pictureFill(picture, bar, kTop + y, kBarWidth, 1, heat(1 - (double)y / (height - 1)));
    pictureFrame(picture, bar - 1, kTop - 1, kBarWidth + 2, height + 2, ink);
    const double stepL = axisStep(range, height / 40 > 2 ? height / 40 : 2);
    for (double level = 0; level <= range * (1 + 1e-9); level += stepL) {
        const int y = kTop + (int)lround(level / range * (height - 1));
        pictureFill(picture, bar + kBarWidth + 1, y, kTick, 1, ink);
        axisLabel(text, sizeof text, level == 0 ? 0 : -level, stepL, " dB");
        pictureText(picture, bar + kBarWidth + kTick + 4, y - 5, text, ink);
    }
}

static void draw(const Levels* levels, double range, const Audio* in, const char* path)
{
    const int width = levels->columns < kMinWidth ? kMinWidth : levels->columns;
    const int height = levels->bins < kMaxHeight ? levels->bins : kMaxHeight;
    Picture picture = pictureMake(kLeft + width + kRight, kTop + height + kBottom, (Colour){255, 255, 255});
    for (int x = 0; x < width; x++) {
        const float* level = levels->level + (int64_t)x * levels->columns / width * levels->bins;
        for (int y = 0; y < height; y++) {
            float decibels = -INFINITY;
            for (int k = y * levels->bins / height; k < (y + 1) * levels->bins / height; k++)
                decibels = level[k] > decibels ? level[k] : decibels;
            pictureFill(&picture, kLeft + x, kTop + height - 1 - y, 1, 1, heat(1 + decibels / range));
        }
    }
    drawAxes(&picture, width, height, in->rate / 2.0, (double)in->frames / in->rate, range);
    pictureWrite(&picture, path);
    pictureRelease(&picture);
}

static void usage(void)
{
    printf("usage: spectrogram [--fft N] [--overlap percent] [--window NAME] [--range dB] [--out FILE.png] FILE.wav\n"
           "\n"
           "Draws the spectrogram of a WAV file; channels are averaged.\n"
           "\n"
           "  --fft N            samples in a frame, a power of two from 64 to 65536 (default 1024)\n"
           "  --overlap percent  how much of a frame the next one repeats, 0 to 95 (default 75)\n"
           "  --window NAME      hann, hamming, blackman, bartlett or none (default hann)\n"
           "  --range dB         from black to the brightest colour, which is a sine of full scale, 10 to 160\n"
           "                     (default 90)\n"
           "  --out FILE.png     the picture (default: the input's name in this folder)\n"
           "  --help             this text\n");
}

// The input's file name without folder and extension, with .png.
static char* defaultOutput(const char* path)
{
    const char* slash = strrchr(path, '/');
    const char* name = slash != NULL ? slash + 1 : path;
    const char* dot = strrchr(name, '.');
    const int length = dot != NULL && dot != name ? (int)(dot - name) : (int)strlen(name);
    char* out = malloc((size_t)length + 5);
    if (out == NULL)
        fail("out of memory");
    snprintf(out, (size_t)length + 5, "%.*s.png", length, name);
    return out;
}

int main(int argc, char** argv)
{
    programName = "spectrogram";
    Settings settings = {.order = 10};
    double length = 1024, overlap = 75, range = 90;
    char* out = NULL;
    static const struct option options[] = {{"fft", required_argument, NULL, 'f'},
                                            {"overlap", required_argument, NULL, 'l'},
                                            {"window", required_argument, NULL, 'w'},
                                            {"range", required_argument, NULL, 'r'},
                                            {"out", required_argument, NULL, 'o'},
                                            {"help", no_argument, NULL, 'h'},
                                            {NULL, 0, NULL, 0}};
    for (int option; (option = nextOption(argc, argv, options, usage)) != -1;) {
        switch (option) {
        case 'f':
            parseNumbers("--fft", optarg, 1, &length, (const double[][2]){{1 << kMinOrder, 1 << kMaxOrder}});
            for (settings.order = kMinOrder; settings.order < kMaxOrder && 1 << settings.order < length;)
                settings.order++;
            if (1 << settings.order != length)
                failUsage("--fft: %s is not a power of two", optarg);
            break;
        case 'l':
            parseNumbers("--overlap", optarg, 1, &overlap, (const double[][2]){{0, 95}});
            break;
        case 'w':
            for (settings.window = 0; settings.window < kWindowCount; settings.window++)
                if (strcmp(kWindows[settings.window].name, optarg) == 0)
                    break;
            if (settings.window == kWindowCount)
                failUsage("--window: %s is not hann, hamming, blackman, bartlett or none", optarg);
            break;
        case 'r':
            parseNumbers("--range", optarg, 1, &range, (const double[][2]){{10, 160}});
            break;
        case 'o':
            out = optarg;
            break;
        }
    }
    char** const files = operands(argc, argv, 1, "one input file is needed");
    settings.overlap = overlap / 100;

    Audio in = audioOpen(files[0]);
    char* own = out == NULL ? defaultOutput(in.path) : NULL;
    const char* path = out != NULL ? out : own;
    const double began = seconds();
    Levels levels = analyse(&in, &settings);
    const double analysed = seconds();
    draw(&levels, range, &in, path);
    printf("%s: %lld frames, %d channel%s, %d Hz\n", in.path, (long long)in.frames, in.channels,
           in.channels == 1 ? "" : "s", in.rate);
    printf("%lld transforms of %d samples in %.3f s with reading\n", (long long)levels.frames, 1 << settings.order,
           analysed - began);
    printf("wrote %s\n", path);
    free(levels.level);
    free(own);
    audioClose(&in);
    return 0;
}
