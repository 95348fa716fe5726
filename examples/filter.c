// Filters a WAV file of any number of channels as a stream.
//
//   median   clicks are replaced by the median of the samples round them
//   filter   FIR taps designed here for a band in hertz, or a recursive filter of a kind, an order and a ripple
//   rate     up / down: the FIR runs at `up` times the rate on samples with zeros between, and keeps every down-th
//
// The file is read in blocks. States carry each stage from block to block, and stages whose rounding depends on the
// length of a run take fixed pieces, so the size of the blocks does not change a sample. One picture shows the
// magnitude response, and the mean spectra before and after.
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

enum { kMaxBlock = 1 << 20, kMaxTaps = 1 << 16, kMaxFactor = 1000, kMaxMask = 101, kMaxOrder = 12 };
enum { kPiece = 4096 }; // samples of a filter's run
enum { kSpectrumOrder = 12, kSpectrum = 1 << kSpectrumOrder };
enum { kWidth = 900, kHeight = 260, kLeft = 78, kRight = 24, kTop = 12, kGap = 54, kTick = 5 };

enum { kFir, kButterworth, kChebyshev, kKindCount };
static const char* const kKinds[kKindCount] = {"fir", "butterworth", "chebyshev"};
static const char* const kWindows[] = {"bartlett", "blackman", "hamming", "hann", "none"};
enum { kWindowCount = sizeof kWindows / sizeof kWindows[0] };

typedef struct {
    int kind, window, taps, order, block, up, down, mask;
    double ripple;
    double low, high; // the band in hertz; 0 for an edge that there is not
    int stop;         // the band is stopped
    const char *in, *out, *picture;
} Settings;

// ---- Design ---------------------------------------------------------------------------------------------------------

// y[n] = sum of b[k] x[n - k], less the sum of a[k] y[n - k] from k = 1 on; a[0] = 1.
typedef struct {
    double* b; // a recursive filter has a behind b
    int bCount, aCount;
    double rate; // at which it runs
} Filter;

static Filter designFir(const Settings* s, double rate)
{
    Filter f = {allocate((int64_t)sizeof(double) * s->taps), s->taps, 0, rate * s->up};
    const double low = s->low / f.rate, high = s->high / f.rate;
    if (s->stop)
        CHECK(Morven_qvrsFIRGenBandstop_64f(f.b, s->taps, s->window, 1, low, high));
    else if (s->low > 0 && s->high > 0)
        CHECK(Morven_qvrsFIRGenBandpass_64f(f.b, s->taps, s->window, 1, low, high));
    else if (s->high > 0)
        CHECK(Morven_qvrsFIRGenLowpass_64f(f.b, s->taps, s->window, 1, high));
    else
        CHECK(Morven_qvrsFIRGenHighpass_64f(f.b, s->taps, s->window, 1, low));
    // Zeros between the samples leave one part in `up` of the level.
    for (int k = 0; k < s->taps; k++)
        f.b[k] *= s->up;
    return f;
}

static Filter designIir(const Settings* s, double rate)
{
    const int n = s->order + 1, type = s->kind == kButterworth ? qvrIirButterworth : qvrIirChebyshev;
    Filter f = {allocate((int64_t)sizeof(double) * 2 * n), n, n, rate};
    if (s->high > 0)
        CHECK(Morven_qvrsIIRGenLowpass_64f(s->order, f.b, type, s->high / rate, s->ripple));
    else
        CHECK(Morven_qvrsIIRGenHighpass_64f(s->order, f.b, type, s->low / rate, s->ripple));
    return f;
}

static double polynomial(const double* c, int count, double angle)
{
    double re = 0, im = 0;
    for (int k = 0; k < count; k++) {
        re += c[k] * cos(angle * k);
        im -= c[k] * sin(angle * k);
    }
    return hypot(re, im);
}

// The gain at a frequency in hertz, for a signal that passes from the rate before to the rate behind.
static double gainAt(const Filter* f, double hertz, int up)
{
    const double angle = 2 * M_PI * hertz / f->rate, top = polynomial(f->b, f->bCount, angle) / up;
    return f->aCount > 0 ? top / polynomial(f->b + f->bCount, f->aCount, angle) : top;
}

// ---- Mean spectrum --------------------------------------------------------------------------------------------------

// The mean power of frames of kSpectrum samples, Hann window, each half over the one before.
typedef struct {
    qvrsFFTSpec_R_32f* plan;
    float *samples, *frame, *level;
    qvr32fc* bins;
    uint8_t* work;
    double* power;
    int count;
    int64_t frames;
} Spectrum;

static Spectrum spectrumMake(void)
{
    Spectrum s = {0};
    CHECK(Morven_qvrsFFTInitAlloc_R_32f(&s.plan, kSpectrumOrder, qvrFftNoDiv, qvrHintNone));
    s.samples = allocate(sizeof(float) * kSpectrum);
    s.frame = allocate(sizeof(float) * kSpectrum);
    s.level = allocate(sizeof(float) * (kSpectrum / 2 + 1));
    s.bins = allocate(sizeof(qvr32fc) * (kSpectrum / 2 + 1));
    s.work = allocate(sizeof(float) * kSpectrum + 64);
    s.power = allocate(sizeof(double) * (kSpectrum / 2 + 1));
    memset(s.power, 0, sizeof(double) * (kSpectrum / 2 + 1));
    return s;
}

static void spectrumFrame(Spectrum* s)
{
    CHECK(Morven_qvrsCopy_32f(s->samples, s->frame, kSpectrum));
    CHECK(Morven_qvrsWinHann_32f_I(s->frame, kSpectrum));
    CHECK(Morven_qvrsFFTFwd_RToCCS_32f(s->frame, (float*)s->bins, s->plan, s->work));
    CHECK(Morven_qvrsMagnitude_32fc(s->bins, s->level, kSpectrum / 2 + 1));
    for (int k = 0; k <= kSpectrum / 2; k++)
        s->power[k] += (double)s->level[k] * s->level[k];
    s->frames++;
}

static void spectrumAdd(Spectrum* s, const float* x, int n)
{
    while (n > 0) {
        const int take = n < kSpectrum - s->count ? n : kSpectrum - s->count;
        memcpy(s->samples + s->count, x, sizeof(float) * (size_t)take);
        s->count += take;
        x += take;
        n -= take;
        if (s->count == kSpectrum) {
            spectrumFrame(s);
            memmove(s->samples, s->samples + kSpectrum / 2, sizeof(float) * kSpectrum / 2);
            s->count = kSpectrum / 2;
        }
    }
}

// A signal too short for one frame is filled with zeros.
static void spectrumEnd(Spectrum* s)
{
    if (s->frames > 0)
        return;
    memset(s->samples + s->count, 0, sizeof(float) * (size_t)(kSpectrum - s->count));
    spectrumFrame(s);
}

// Decibels of bin k; a sine of full scale is 0.
static double spectrumLevel(const Spectrum* s, int k)
{
    const double full = 32768.0 * kSpectrum / 4;
    return 10 * log10(s->power[k] / (double)s->frames / (full * full) + 1e-30);
}

static void spectrumRelease(Spectrum* s)
{
    Morven_qvrsFFTFree_R_32f(s->plan);
    Morven_qvrsFree(s->samples);
    Morven_qvrsFree(s->frame);
    Morven_qvrsFree(s->level);
    Morven_qvrsFree(s->bins);
    Morven_qvrsFree(s->work);
    Morven_qvrsFree(s->power);
}

// ---- Stages of a channel --------------------------------------------------------------------------------------------

typedef struct {
    const Settings* settings;
    const Filter* filter;
    qvrsFIRState64f_32f* fir;
    qvrsIIRState_64f* iir;
    float* past; // samples of a rate change
    // Median: up to mask / 2 samples that are through, then those that wait for their neighbours to the right.
    float* held;
    int heldCount, heldDone;
    // Filter: samples that do not fill a piece yet.
    float* waiting;
    int waitingCount;
    float* results;
    double* wide;
} Channel;

static Channel channelMake(const Settings* s, const Filter* f)
{
    Channel c = {.settings = s, .filter = f};
    const int64_t most = (int64_t)s->block + kPiece + s->down + 2 * s->mask;
    c.held = allocate((int64_t)sizeof(float) * 2 * most);
    c.waiting = allocate((int64_t)sizeof(float) * most);
    c.results = allocate((int64_t)sizeof(float) * (most / s->down + 1) * s->up);
    c.wide = allocate((int64_t)sizeof(double) * kPiece);
    if (s->kind != kFir) {
        CHECK(Morven_qvrsIIRInitAlloc_64f(&c.iir, f->b, s->order, NULL));
    } else if (s->up == 1 && s->down == 1) {
        CHECK(Morven_qvrsFIRInitAlloc64f_32f(&c.fir, f->b, s->taps, NULL));
    } else {
        const int length = (s->taps + s->up - 1) / s->up;
        c.past = allocate((int64_t)sizeof(float) * length);
        CHECK(Morven_qvrsZero_32f(c.past, length));
    }
    return c;
}

static void channelRelease(Channel* c)
{
    if (c->fir != NULL)
        CHECK(Morven_qvrsFIRFree64f_32f(c->fir));
    if (c->iir != NULL)
        CHECK(Morven_qvrsIIRFree_64f(c->iir));
    Morven_qvrsFree(c->past);
    Morven_qvrsFree(c->held);
    Morven_qvrsFree(c->waiting);
    Morven_qvrsFree(c->results);
    Morven_qvrsFree(c->wide);
}

// Adds `count` samples; those that the median is through with are appended to `waiting`.
static void runMedian(Channel* c, const float* x, int count, int last)
{
    const int half = c->settings->mask / 2;
    memcpy(c->held + c->heldCount, x, sizeof(float) * (size_t)count);
    c->heldCount += count;
    const int ready = c->heldCount - c->heldDone - (last ? 0 : half);
    if (ready <= 0)
        return;
    // A copy is filtered: as neighbours the samples stay what they were. Only the ends of the file are ends here, for
    // every sample that goes out has all its neighbours beside it.
    float* copy = c->held + c->heldCount;
    memcpy(copy, c->held, sizeof(float) * (size_t)c->heldCount);
    if (half > 0)
        CHECK(Morven_qvrsFilterMedian_32f_I(copy, c->heldCount, c->settings->mask));
    memcpy(c->waiting + c->waitingCount, copy + c->heldDone, sizeof(float) * (size_t)ready);
    c->waitingCount += ready;
    c->heldDone += ready;
    const int drop = c->heldDone > half ? c->heldDone - half : 0;
    c->heldCount -= drop;
    c->heldDone -= drop;
    memmove(c->held, c->held + drop, sizeof(float) * (size_t)c->heldCount);
}

static void filterPiece(Channel* c, const float* x, float* y, int n)
{
    if (c->fir != NULL) {
        CHECK(Morven_qvrsFIR64f_32f(x, y, n, c->fir));
        return;
    }
    CHECK(Morven_qvrsConvert_32f64f(x, c->wide, n));
    CHECK(Morven_qvrsIIR_64f(c->wide, c->wide, n, c->iir));
    CHECK(Morven_qvrsConvert_64f32f(c->wide, y, n));
}

// Filters what makes whole pieces, at the end of the file everything; returns the number of results.
static int runFilter(Channel* c, int last)
{
    const Settings* s = c->settings;
    int used, made;
    if (c->past != NULL) {
        while (last && c->waitingCount % s->down != 0)
            c->waiting[c->waitingCount++] = 0;
        const int iterations = c->waitingCount / s->down;
        used = iterations * s->down;
        made = iterations * s->up;
        if (iterations > 0)
            CHECK(Morven_qvrsFIRMR64f_Direct_32f(c->waiting, c->results, iterations, c->filter->b, s->taps, s->up, 0,
                                                 s->down, 0, c->past));
    } else {
        used = made = last ? c->waitingCount : c->waitingCount / kPiece * kPiece;
        for (int at = 0; at < used; at += kPiece)
            filterPiece(c, c->waiting + at, c->results + at, used - at < kPiece ? used - at : kPiece);
    }
    c->waitingCount -= used;
    memmove(c->waiting, c->waiting + used, sizeof(float) * (size_t)c->waitingCount);
    return made;
}

// ---- The file -------------------------------------------------------------------------------------------------------

typedef struct {
    Spectrum before, after;
    int64_t written;
    double busy;
} Report;

// Adds the mean of all channels to a spectrum.
static void addMean(Spectrum* s, float* const* rows, int channels, int n, float* mean)
{
    if (n == 0)
        return;
    CHECK(Morven_qvrsCopy_32f(rows[0], mean, n));
    for (int c = 1; c < channels; c++)
        CHECK(Morven_qvrsAdd_32f_I(rows[c], mean, n));
    CHECK(Morven_qvrsMulC_32f_I(1.0f / (float)channels, mean, n));
    spectrumAdd(s, mean, n);
}

static void filterFile(Audio* in, Audio* out, const Settings* s, const Filter* f, Report* report)
{
    const int channels = in->channels;
    const int64_t most = ((int64_t)s->block + kPiece + s->down + 2 * s->mask) / s->down * s->up + s->up;
    const int64_t longest = most > s->block ? most : s->block;
    int16_t* samples = allocate((int64_t)sizeof(int16_t) * longest * channels);
    int16_t* row16 = allocate((int64_t)sizeof(int16_t) * longest);
    float* mean = allocate((int64_t)sizeof(float) * longest);
    float** rows = allocate((int64_t)sizeof(float*) * channels);
    float** results = allocate((int64_t)sizeof(float*) * channels);
    Channel* stages = allocate((int64_t)sizeof(Channel) * channels);
    for (int c = 0; c < channels; c++) {
        rows[c] = allocate((int64_t)sizeof(float) * s->block);
        stages[c] = channelMake(s, f);
        results[c] = stages[c].results;
    }
    // Of a rate change as many outputs as the samples last, though the last iteration may go beyond.
    const int64_t total = (in->frames * s->up + s->down - 1) / s->down;
    Progress progress = progressStart("filtering", in->frames);
    for (int64_t at = 0; at < in->frames; at += s->block) {
        const int frames = (int)(in->frames - at < s->block ? in->frames - at : s->block);
        const int last = at + frames == in->frames;
        audioRead(in, samples, frames);
        const double began = seconds();
        int made = 0;
        for (int c = 0; c < channels; c++) {
            for (int i = 0; i < frames; i++)
                row16[i] = samples[(int64_t)i * channels + c];
            CHECK(Morven_qvrsConvert_16s32f(row16, rows[c], frames));
            runMedian(&stages[c], rows[c], frames, last);
            made = runFilter(&stages[c], last);
        }
        addMean(&report->before, rows, channels, frames, mean);
        addMean(&report->after, results, channels, made, mean);
        if (made > total - report->written)
            made = (int)(total - report->written);
        for (int c = 0; c < channels && made > 0; c++) {
            CHECK(Morven_qvrsConvert_32f16s_Sfs(results[c], row16, made, qvrRoundNearest, 0));
            for (int i = 0; i < made; i++)
                samples[(int64_t)i * channels + c] = row16[i];
        }
        report->busy += seconds() - began;
        if (made > 0)
            audioWrite(out, samples, made);
        report->written += made;
        progressShow(&progress, at + frames);
    }
    progressEnd(&progress);
    spectrumEnd(&report->before);
    spectrumEnd(&report->after);
    for (int c = 0; c < channels; c++) {
        channelRelease(&stages[c]);
        Morven_qvrsFree(rows[c]);
    }
    Morven_qvrsFree(stages);
    Morven_qvrsFree(results);
    Morven_qvrsFree(rows);
    Morven_qvrsFree(mean);
    Morven_qvrsFree(row16);
    Morven_qvrsFree(samples);
}

// ---- Picture --------------------------------------------------------------------------------------------------------

static const Colour kInk = {60, 60, 60}, kGrid = {225, 225, 225};

// A plot of decibels from `floor` to `ceiling` over 0 to `top` hertz.
typedef struct {
    Picture* picture;
    int y;
    double top, floor, ceiling;
    const char* title;
} Plot;

static void drawPlot(const Plot* p)
{
    char text[32];
    const int kilo = p->top >= 2000;
    const double unit = kilo ? 1000 : 1, stepF = axisStep(p->top / unit, 10);
    for (double f = 0; f <= p->top / unit * (1 + 1e-9); f += stepF) {
        const int x = kLeft + (int)lround(f * unit / p->top * (kWidth - 1));
        pictureFill(p->picture, x, p->y, 1, kHeight, kGrid);
        axisLabel(text, sizeof text, f, stepF, kilo ? " kHz" : " Hz");
        pictureTextCentred(p->picture, x, p->y + kHeight + kTick + 2, text, kInk);
    }
    const double stepL = axisStep(p->ceiling - p->floor, 8);
    for (double l = p->floor; l <= p->ceiling + 1e-9; l += stepL) {
        const int y = p->y + (int)lround((p->ceiling - l) / (p->ceiling - p->floor) * (kHeight - 1));
        pictureFill(p->picture, kLeft, y, kWidth, 1, kGrid);
        axisLabel(text, sizeof text, l, stepL, " dB");
        pictureText(p->picture, kLeft - 6 - pictureTextWidth(text), y - 5, text, kInk);
    }
    pictureFrame(p->picture, kLeft - 1, p->y - 1, kWidth + 2, kHeight + 2, kInk);
    pictureTextUp(p->picture, 4, p->y + kHeight / 2, p->title, kInk);
    pictureTextCentred(p->picture, kLeft + kWidth / 2, p->y + kHeight + kTick + 17, "frequency", kInk);
}

// Column by column, each joined to the one before by a vertical stroke. A NaN leaves a gap.
static void drawCurve(const Plot* p, const double* level, Colour colour)
{
    int before = -1;
    for (int x = 0; x < kWidth; x++) {
        if (isnan(level[x])) {
            before = -1;
            continue;
        }
        const double l = fmin(fmax(level[x], p->floor), p->ceiling);
        const int y = p->y + (int)lround((p->ceiling - l) / (p->ceiling - p->floor) * (kHeight - 2));
        const int from = before < 0 || before > y ? y : before, to = before > y ? before : y;
        pictureFill(p->picture, kLeft + x, from, 1, to - from + 2, colour);
        before = y;
    }
}

// The loudest bin of each column, at the file's own rate.
static void curveOf(const Spectrum* s, double rate, double top, double* level)
{
    for (int x = 0; x < kWidth; x++) {
        const double per = top / kWidth / rate * kSpectrum;
        const int first = (int)(x * per), after = (int)((x + 1) * per) > first ? (int)((x + 1) * per) : first + 1;
        level[x] = first > kSpectrum / 2 ? NAN : -INFINITY;
        for (int k = first; k < after && k <= kSpectrum / 2; k++)
            level[x] = fmax(level[x], spectrumLevel(s, k));
    }
}

static void draw(const char* path, const Settings* s, const Filter* f, const Report* report, double rateIn,
                 double rateOut)
{
    const Colour blue = {20, 90, 190}, red = {200, 60, 40}, grey = {150, 150, 150};
    Picture picture = pictureMake(kLeft + kWidth + kRight, kTop + 2 * (kHeight + kGap), (Colour){255, 255, 255});
    double level[kWidth];
    const double top = (rateIn > rateOut ? rateIn : rateOut) / 2;
    const Plot response = {&picture, kTop, top, -100, 10, "gain"};
    drawPlot(&response);
    for (int x = 0; x < kWidth; x++)
        level[x] = 20 * log10(gainAt(f, (x + 0.5) / kWidth * top, s->up) + 1e-30);
    drawCurve(&response, level, blue);
    const Plot spectra = {&picture, kTop + kHeight + kGap, top, -140, 0, "mean level"};
    drawPlot(&spectra);
    curveOf(&report->before, rateIn, top, level);
    drawCurve(&spectra, level, grey);
    curveOf(&report->after, rateOut, top, level);
    drawCurve(&spectra, level, red);
    pictureText(&picture, kLeft + kWidth - 130, spectra.y + 8, "before", grey);
    pictureText(&picture, kLeft + kWidth - 60, spectra.y + 8, "after", red);
    pictureWrite(&picture, path);
    pictureRelease(&picture);
}

// ---- Arguments ------------------------------------------------------------------------------------------------------

static void usage(void)
{
    printf("usage: filter [options] --out FILE.wav FILE.wav\n"
           "\n"
           "Filters a WAV file of any number of channels as a stream.\n"
           "\n"
           "  --pass LOW,HIGH     pass band in hertz; a LOW of 0 makes a low-pass, a HIGH of 0 a high-pass\n"
           "  --stop LOW,HIGH     stop band in hertz, of a FIR filter\n"
           "  --taps N            FIR taps, 5 to 65536 (default 255; of a rate change 64 for each step of the larger factor)\n"
           "  --window NAME       bartlett, blackman, hamming, hann or none (default blackman)\n"
           "  --kind NAME         fir, butterworth or chebyshev (default fir); the last two pass low or high\n"
           "  --order N           of a recursive filter, 1 to 12 (default 4)\n"
           "  --ripple dB         of a chebyshev filter, 0.01 to 29 (default 1)\n"
           "  --rate UP,DOWN      changes the sample rate by UP / DOWN, factors 1 to 1000; without --pass, the band is "
           "what\n"
           "                      both rates carry\n"
           "  --median N          removes clicks by a median of N samples before the filter, odd, 3 to 101\n"
           "  --block N           samples read at a time, 1 to 1048576 (default 4096); the result is the same for all\n"
           "  --picture FILE.png  magnitude response; mean spectra before (grey) and after (red)\n"
           "  --out FILE.wav      the result\n"
           "  --help              this text\n");
}

static int indexOf(const char* option, const char* text, const char* const* names, int count)
{
    for (int i = 0; i < count; i++)
        if (strcmp(text, names[i]) == 0)
            return i;
    failUsage("%s: %s is not known; --help tells more", option, text);
}

static int whole(const char* option, const char* text, double low, double high)
{
    double value;
    parseNumbers(option, text, 1, &value, (const double[][2]){{low, high}});
    if (value != floor(value))
        failUsage("%s: %s is not a whole number", option, text);
    return (int)value;
}

static void parseBand(const char* option, const char* text, Settings* s)
{
    double edges[2];
    parseNumbers(option, text, 2, edges, (const double[][2]){{0, 1e9}, {0, 1e9}});
    s->low = edges[0];
    s->high = edges[1];
    s->stop = strcmp(option, "--stop") == 0;
    if ((s->low == 0 && s->high == 0) || (s->stop && (s->low == 0 || s->high == 0)) ||
        (s->high > 0 && s->low >= s->high))
        failUsage("%s: %s is no band", option, text);
}

static Settings parse(int argc, char** argv)
{
    Settings s = {.window = qvrFirBlackman, .order = 4, .block = 4096, .up = 1, .down = 1, .mask = 1, .ripple = 1};
    static const struct option options[] = {
        {"pass", required_argument, NULL, 'p'},    {"stop", required_argument, NULL, 's'},
        {"taps", required_argument, NULL, 't'},    {"window", required_argument, NULL, 'w'},
        {"kind", required_argument, NULL, 'k'},    {"order", required_argument, NULL, 'o'},
        {"ripple", required_argument, NULL, 'r'},  {"rate", required_argument, NULL, 'c'},
        {"median", required_argument, NULL, 'm'},  {"block", required_argument, NULL, 'b'},
        {"picture", required_argument, NULL, 'i'}, {"out", required_argument, NULL, 'f'},
        {"help", no_argument, NULL, 'h'},          {NULL, 0, NULL, 0}};
    double factors[2];
    for (int option; (option = nextOption(argc, argv, options, usage)) != -1;) {
        switch (option) {
        case 'p':
            parseBand("--pass", optarg, &s);
            break;
        case 's':
            parseBand("--stop", optarg, &s);
            break;
        case 't':
            s.taps = whole("--taps", optarg, 5, kMaxTaps);
            break;
        case 'w':
            s.window = indexOf("--window", optarg, kWindows, kWindowCount);
            break;
        case 'k':
            s.kind = indexOf("--kind", optarg, kKinds, kKindCount);
            break;
        case 'o':
            s.order = whole("--order", optarg, 1, kMaxOrder);
            break;
        case 'r':
            parseNumbers("--ripple", optarg, 1, &s.ripple, (const double[][2]){{0.01, 29}});
            break;
        case 'c':
            parseNumbers("--rate", optarg, 2, factors, (const double[][2]){{1, kMaxFactor}, {1, kMaxFactor}});
            s.up = (int)factors[0];
            s.down = (int)factors[1];
            if (s.up != factors[0] || s.down != factors[1])
                failUsage("--rate: %s are not whole numbers", optarg);
            break;
        case 'm':
            s.mask = whole("--median", optarg, 3, kMaxMask);
            if (s.mask % 2 == 0)
                failUsage("--median: %s is not odd", optarg);
            break;
        case 'b':
            s.block = whole("--block", optarg, 1, kMaxBlock);
            break;
        case 'i':
            s.picture = optarg;
            break;
        case 'f':
            s.out = optarg;
            break;
        }
    }
    s.in = operands(argc, argv, 1, "one input file is needed")[0];
    if (s.out == NULL)
        failUsage("--out is needed; --help tells more");
    if (s.kind != kFir && (s.stop || (s.low > 0 && s.high > 0)))
        failUsage("a %s filter passes low or high frequencies alone", kKinds[s.kind]);
    if (s.kind != kFir && (s.up != 1 || s.down != 1))
        failUsage("--rate needs a fir filter");
    if (s.low == 0 && s.high == 0 && s.up == 1 && s.down == 1)
        failUsage("--pass, --stop or --rate is needed; --help tells more");
    // The taps of a rate change run at the high rate, while the band that they cut off is a part of the lower one.
    if (s.taps == 0) {
        const int larger = s.up > s.down ? s.up : s.down, wanted = 64 * larger + 1;
        s.taps = larger == 1 ? 255 : wanted < kMaxTaps ? wanted : kMaxTaps - 1;
    }
    return s;
}

int main(int argc, char** argv)
{
    programName = "filter";
    Settings s = parse(argc, argv);
    Audio in = audioOpen(s.in);
    const double rate = in.rate, rateOut = rate * s.up / s.down, narrow = rateOut < rate ? rateOut : rate;
    if (s.low == 0 && s.high == 0)
        s.high = 0.45 * narrow;
    if (s.low >= narrow / 2 || s.high >= narrow / 2)
        failUsage("the band must end below %g Hz, half the sampling rate", narrow / 2);
    if (rateOut < 1 || rateOut > 1e9)
        failUsage("--rate: %g Hz is no sampling rate", rateOut);
    const Filter f = s.kind == kFir ? designFir(&s, rate) : designIir(&s, rate);
    Audio like = in;
    like.rate = (int)lround(rateOut);
    like.frames = (in.frames * s.up + s.down - 1) / s.down;
    Audio out = audioCreate(s.out, &like);
    Report report = {spectrumMake(), spectrumMake(), 0, 0};
    filterFile(&in, &out, &s, &f, &report);
    audioClose(&out);
    printf("%s: %lld frames, %d channel%s, %d Hz\n", in.path, (long long)in.frames, in.channels,
           in.channels == 1 ? "" : "s", in.rate);
    if (s.kind == kFir)
        printf("fir, %d taps, delay %g ms\n", s.taps, 500.0 * (s.taps - 1) / f.rate);
    else
        printf("%s, order %d\n", kKinds[s.kind], s.order);
    printf("wrote %s: %lld frames, %d Hz\n", s.out, (long long)report.written, like.rate);
    if (s.picture != NULL) {
        draw(s.picture, &s, &f, &report, rate, rateOut);
        printf("wrote %s\n", s.picture);
    }
    printf("%.1f million samples/s in the stages\n", (double)in.frames * in.channels / report.busy / 1e6);
    spectrumRelease(&report.before);
    spectrumRelease(&report.after);
    Morven_qvrsFree(f.b);
    audioClose(&in);
    return 0;
}
