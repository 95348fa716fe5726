// An effect chain on a WAV file of any number of channels.
//
//   x = gain * sample, samples as floats in -1..1
//   s = x / sqrt(1 + x * x)                     soft clipping
//   y[n] = s[n] + feedback * y[n - delay]       echo
//   z = y * 32767 / max|y|                      normalisation
//
// The file is read twice in blocks, first for max|y|, then for the result, so memory does not grow with the file. z is
// rounded to 16 bits in the three ways of the library, one output file each.
#include <getopt.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <morvenqvr.h>

#include "common/audio.h"
#include "common/cli.h"
#include "common/signal.h"

// Frames at a time, a power of two. A row and its work rows stay in the first-level cache, and the rows are too short
// for the library to share them with a second thread, which does not pay at so little work.
enum { kBlock = 2048 };

static const struct {
    int mode;
    const char* name;
} kRoundings[] = {{qvrRoundTowardZero, "truncate"}, {qvrRoundNearest, "even"}, {qvrRoundHalfAway, "away"}};
enum { kRoundingCount = sizeof kRoundings / sizeof kRoundings[0] };

typedef struct {
    float gain;
    float feedback;
    int delay; // frames; 0: no echo
} Settings;

typedef struct {
    Settings settings;
    int channels;
    int16_t* samples; // one block as the file has it
    float** rows;     // one row per channel
    float** delayed;  // the last `delay` outputs of each channel, as a ring
    int ringPosition;
    float* work;
    float* peaks; // largest magnitude met at each place of a block
    int16_t* rounded;
    double busy; // seconds inside the chain
} Chain;

static float** allocateRows(int channels, int64_t length)
{
    float** rows = allocate(channels * (int64_t)sizeof *rows);
    for (int c = 0; c < channels; c++)
        rows[c] = allocate(length * (int64_t)sizeof(float));
    return rows;
}

static void releaseRows(float** rows, int channels)
{
    for (int c = 0; c < channels; c++)
        Morven_qvrsFree(rows[c]);
    Morven_qvrsFree(rows);
}

static Chain chainMake(Settings settings, int channels)
{
    Chain chain = {.settings = settings, .channels = channels};
    chain.samples = allocate((int64_t)kBlock * channels * (int64_t)sizeof(int16_t));
    chain.rows = allocateRows(channels, kBlock);
    if (settings.delay > 0)
        chain.delayed = allocateRows(channels, settings.delay);
    chain.work = allocate(kBlock * sizeof(float));
    chain.peaks = allocate(kBlock * sizeof(float));
    chain.rounded = allocate(kBlock * sizeof(int16_t));
    CHECK(Morven_qvrsZero_32f(chain.peaks, kBlock));
    return chain;
}

static void chainRelease(Chain* chain)
{
    Morven_qvrsFree(chain->samples);
    releaseRows(chain->rows, chain->channels);
    if (chain->delayed != NULL)
        releaseRows(chain->delayed, chain->channels);
    Morven_qvrsFree(chain->work);
    Morven_qvrsFree(chain->peaks);
    Morven_qvrsFree(chain->rounded);
}

static void chainRestart(Chain* chain)
{
    chain->ringPosition = 0;
    for (int c = 0; chain->delayed != NULL && c < chain->channels; c++)
        CHECK(Morven_qvrsZero_32f(chain->delayed[c], chain->settings.delay));
}

// row = row / sqrt(1 + row * row)
static void softClip(float* row, float* work, int frames)
{
    CHECK(Morven_qvrsCopy_32f(row, work, frames));
    CHECK(Morven_qvrsSqr_32f_I(work, frames));
    CHECK(Morven_qvrsAddC_32f_I(1.0f, work, frames));
    CHECK(Morven_qvrsSqrt_32f(work, work, frames));
    CHECK(Morven_qvrsDiv_32f(work, row, row, frames));
}

// row += feedback * what went out `delay` frames ago, piece by piece up to the end of the ring.
static void echo(const Chain* chain, int channel, float* row, int frames)
{
    int position = chain->ringPosition;
    for (int done = 0; done < frames;) {
        const int room = chain->settings.delay - position;
        const int count = room < frames - done ? room : frames - done;
        float* past = chain->delayed[channel] + position;
        CHECK(Morven_qvrsMulC_32f(past, chain->settings.feedback, chain->work, count));
        CHECK(Morven_qvrsAdd_32f_I(chain->work, row + done, count));
        CHECK(Morven_qvrsCopy_32f(row + done, past, count));
        done += count;
        position = (position + count) % chain->settings.delay;
    }
}

// From the samples of a block to the rows, up to the echo.
static void chainRun(Chain* chain, int frames)
{
    CHECK(Morven_qvrsSplitScaled_16s32f_D2L(chain->samples, chain->rows, chain->channels, frames));
    for (int c = 0; c < chain->channels; c++) {
        float* row = chain->rows[c];
        // The split centres the 65536 codes on zero; without its half step silence is zero again.
        CHECK(Morven_qvrsSubC_32f_I(1.0f / 65535, row, frames));
        CHECK(Morven_qvrsMulC_32f_I(chain->settings.gain, row, frames));
        softClip(row, chain->work, frames);
        if (chain->settings.delay > 0)
            echo(chain, c, row, frames);
    }
    if (chain->settings.delay > 0)
        chain->ringPosition = (int)((chain->ringPosition + (int64_t)frames) % chain->settings.delay);
}

static void collectPeaks(Chain* chain, int frames)
{
    for (int c = 0; c < chain->channels; c++) {
        CHECK(Morven_qvrsAbs_32f(chain->rows[c], chain->work, frames));
        CHECK(Morven_qvrsMaxEvery_32f_I(chain->work, chain->peaks, frames));
    }
}

// The largest of the collected peaks: the upper half is folded on the lower one until one is left.
static float largestPeak(Chain* chain)
{
    for (int half = kBlock / 2; half > 0; half /= 2)
        CHECK(Morven_qvrsMaxEvery_32f_I(chain->peaks + half, chain->peaks, half));
    return chain->peaks[0];
}

// Rounds the rows and joins them to interleaved samples.
static void roundRows(Chain* chain, int frames, int mode)
{
    for (int c = 0; c < chain->channels; c++) {
        CHECK(Morven_qvrsConvert_32f16s_Sfs(chain->rows[c], chain->rounded, frames, mode, 0));
        int16_t* out = chain->samples + c;
        for (int i = 0; i < frames; i++)
            out[(int64_t)i * chain->channels] = chain->rounded[i];
    }
}

static int blockAt(int64_t position, int64_t frames)
{
    return (int)(frames - position < kBlock ? frames - position : kBlock);
}

static float findPeak(Chain* chain, Audio* in)
{
    Progress progress = progressStart("measuring", in->frames);
    for (int64_t at = 0; at < in->frames; at += kBlock) {
        const int frames = blockAt(at, in->frames);
        audioRead(in, chain->samples, frames);
        const double start = seconds();
        chainRun(chain, frames);
        collectPeaks(chain, frames);
        chain->busy += seconds() - start;
        progressShow(&progress, at + frames);
    }
    progressEnd(&progress);
    return largestPeak(chain);
}

static void writeResults(Chain* chain, Audio* in, Audio* outs, float peak)
{
    Progress progress = progressStart("writing", in->frames);
    for (int64_t at = 0; at < in->frames; at += kBlock) {
        const int frames = blockAt(at, in->frames);
        audioRead(in, chain->samples, frames);
        double start = seconds();
        chainRun(chain, frames);
        // Silence stays silence.
        for (int c = 0; c < chain->channels && peak > 0; c++)
            CHECK(Morven_qvrsNormalize_32f(chain->rows[c], chain->rows[c], frames, 0, peak / 32767));
        chain->busy += seconds() - start;
        for (int r = 0; r < kRoundingCount; r++) {
            start = seconds();
            roundRows(chain, frames, kRoundings[r].mode);
            chain->busy += seconds() - start;
            audioWrite(&outs[r], chain->samples, frames);
        }
        progressShow(&progress, at + frames);
    }
    progressEnd(&progress);
}

static void usage(void)
{
    printf("usage: effects [--gain dB] [--echo ms,feedback] [--out PREFIX] FILE.wav\n"
           "\n"
           "Gain, soft clipping, echo and normalisation on a WAV file of any number of channels.\n"
           "\n"
           "  --gain dB           gain before the soft clipping, -60 to 60 (default 6)\n"
           "  --echo ms,feedback  delay of the echo, 0 (none) to 10000 ms, and its strength, -0.95 to 0.95\n"
           "                      (default 250,0.35)\n"
           "  --out PREFIX        writes PREFIX-truncate.wav, PREFIX-even.wav and PREFIX-away.wav, which differ in\n"
           "                      how the result is rounded to 16 bits (default: the input's name in this folder)\n"
           "  --help              this text\n");
}

// The input's file name without folder and extension, as the start of the outputs' names.
static char* defaultPrefix(const char* path)
{
    const char* slash = strrchr(path, '/');
    char* name = strdup(slash != NULL ? slash + 1 : path);
    char* dot = name != NULL ? strrchr(name, '.') : NULL;
    if (dot != NULL && dot != name)
        *dot = '\0';
    return name;
}

int main(int argc, char** argv)
{
    programName = "effects";
    double gainDecibels = 6, echoNumbers[2] = {250, 0.35};
    char* prefix = NULL;
    static const struct option options[] = {{"gain", required_argument, NULL, 'g'},
                                            {"echo", required_argument, NULL, 'e'},
                                            {"out", required_argument, NULL, 'o'},
                                            {"help", no_argument, NULL, 'h'},
                                            {NULL, 0, NULL, 0}};
    for (int option; (option = nextOption(argc, argv, options, usage)) != -1;) {
        switch (option) {
        case 'g':
            parseNumbers("--gain", optarg, 1, &gainDecibels, (const double[][2]){{-60, 60}});
            break;
        case 'e':
            parseNumbers("--echo", optarg, 2, echoNumbers, (const double[][2]){{0, 10000}, {-0.95, 0.95}});
            break;
        case 'o':
            prefix = optarg;
            break;
        }
    }
    char** const files = operands(argc, argv, 1, "one input file is needed");

    Audio in = audioOpen(files[0]);
    char* ownPrefix = prefix == NULL ? defaultPrefix(in.path) : NULL;
    const char* start = prefix != NULL ? prefix : ownPrefix;
    Chain chain = chainMake((Settings){.gain = (float)pow(10, gainDecibels / 20),
                                       .feedback = (float)echoNumbers[1],
                                       .delay = (int)lround(echoNumbers[0] * in.rate / 1000)},
                            in.channels);
    Audio outs[kRoundingCount];
    char* paths[kRoundingCount];
    for (int r = 0; r < kRoundingCount; r++) {
        const size_t size = strlen(start) + 32;
        paths[r] = allocate((int64_t)size);
        snprintf(paths[r], size, "%s-%s.wav", start, kRoundings[r].name);
        outs[r] = audioCreate(paths[r], &in);
    }

    const double began = seconds();
    chainRestart(&chain);
    const float peak = findPeak(&chain, &in);
    audioRewind(&in);
    chainRestart(&chain);
    writeResults(&chain, &in, outs, peak);
    for (int r = 0; r < kRoundingCount; r++)
        audioClose(&outs[r]);
    const double lasted = seconds() - began;

    const double samples = (double)in.frames * in.channels;
    printf("%s: %lld frames, %d channel%s, %d Hz\n", in.path, (long long)in.frames, in.channels,
           in.channels == 1 ? "" : "s", in.rate);
    printf("peak before normalisation %.4f\n", (double)peak);
    for (int r = 0; r < kRoundingCount; r++) {
        printf("wrote %s\n", paths[r]);
        Morven_qvrsFree(paths[r]);
    }
    printf("%.1f million samples/s in the chain, %.1f with reading and writing\n", samples / chain.busy / 1e6,
           samples / lasted / 1e6);
    audioClose(&in);
    chainRelease(&chain);
    free(ownPrefix);
    return 0;
}
