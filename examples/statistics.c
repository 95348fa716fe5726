// Statistics of a recording: levels, the peak and its place, zero crossings and loudness frame by frame, the longest
// silences; printed as a table and drawn as an envelope.
//
// Every number comes from a whole-array function: one call for a channel or a frame, none for a sample.
#include <getopt.h>
#include <math.h>
#include <stdio.h>

#include "common/audio.h"
#include "common/cli.h"
#include "common/picture.h"
#include "common/signal.h"
#include "morvenqvr.h"

enum { kFrameMilliseconds = 20, kWidth = 1000, kChannelHeight = 160, kMargin = 8 };

static const int64_t kMostFrames = 1 << 28; // so that a channel of singles stays within 2^31 bytes

static double decibels(double level)
{
    return level > 0 ? 20 * log10(level) : -INFINITY;
}

// The frames of one channel.
typedef struct {
    int count, length; // frames, and samples in each
    float* crossings;  // per second
    float* level;      // standard deviation
    qvr8u* quiet;      // 1 where the frame stays below the threshold
} Frames;

static Frames framesOf(const float* x, int n, int rate, float threshold)
{
    Frames f = {.length = rate * kFrameMilliseconds / 1000};
    f.length = f.length < 2 ? 2 : f.length > n ? n : f.length;
    f.count = n / f.length;
    f.crossings = allocate((int64_t)f.count * 4);
    f.level = allocate((int64_t)f.count * 4);
    f.quiet = allocate(f.count);
    for (int i = 0; i < f.count; i++) {
        const float* frame = x + (int64_t)i * f.length;
        float low, high;
        // The step to the next frame belongs to this one.
        const int pairs = (int64_t)(i + 1) * f.length < n ? f.length : f.length - 1;
        CHECK(Morven_qvrsZeroCrossing_32f(frame, pairs + 1, &f.crossings[i], qvrZcSignBit));
        CHECK(Morven_qvrsMinMax_32f(frame, f.length, &low, &high));
        f.level[i] = 0;
        if (f.length > 1)
            CHECK(Morven_qvrsStdDev_32f(frame, f.length, &f.level[i]));
        f.quiet[i] = -low < threshold && high < threshold;
    }
    CHECK(Morven_qvrsMulC_32f_I((float)rate / (float)f.length, f.crossings, f.count));
    return f;
}

static void framesFree(Frames* f)
{
    Morven_qvrsFree(f->crossings);
    Morven_qvrsFree(f->level);
    Morven_qvrsFree(f->quiet);
}

// Prints the silences of at least `least` frames: a run of that many quiet ones is searched, then its end.
static void printSilences(const Frames* f, int rate, int least)
{
    qvr8u* run = allocate(least);
    CHECK(Morven_qvrsSet_8u(1, run, least));
    const qvr8u loud = 0;
    const double frame = (double)f->length / rate;
    int found = 0;
    double total = 0;
    for (int at = 0; at < f->count;) {
        qvr32s start, end;
        CHECK(Morven_qvrsFind_8u(f->quiet + at, f->count - at, run, least, &start));
        if (start < 0)
            break;
        start += at;
        CHECK(Morven_qvrsFind_8u(f->quiet + start, f->count - start, &loud, 1, &end));
        end = end < 0 ? f->count : start + end;
        if (found++ < 5)
            printf("  silence            %8.2f s to %.2f s\n", start * frame, end * frame);
        total += (end - start) * frame;
        at = end;
    }
    if (found > 5)
        printf("  and %d silences more\n", found - 5);
    printf("  silent             %8.2f s in %d piece%s\n", total, found, found == 1 ? "" : "s");
    Morven_qvrsFree(run);
}

static void printChannel(int channel, const float* x, int n, int rate, const Frames* f, int least)
{
    float mean, deviation = 0, low, high, rateMean, quietest, loudest;
    qvr32s lowAt, highAt, loudestAt;
    CHECK(Morven_qvrsMean_32f(x, n, &mean));
    if (n > 1)
        CHECK(Morven_qvrsStdDev_32f(x, n, &deviation));
    CHECK(Morven_qvrsMinIndx_32f(x, n, &low, &lowAt));
    CHECK(Morven_qvrsMaxIndx_32f(x, n, &high, &highAt));
    CHECK(Morven_qvrsMean_32f(f->crossings, f->count, &rateMean));
    CHECK(Morven_qvrsMaxIndx_32f(f->level, f->count, &loudest, &loudestAt));
    // The median: levels in order, the one in the middle.
    float* sorted = allocate((int64_t)f->count * 4);
    CHECK(Morven_qvrsCopy_32f(f->level, sorted, f->count));
    CHECK(Morven_qvrsSortAscend_32f_I(sorted, f->count));
    quietest = sorted[0];
    const int peakIsHigh = high > -low;
    const float peak = peakIsHigh ? high : -low;
    printf("channel %d\n", channel + 1);
    printf("  mean               %+8.5f\n", (double)mean);
    printf("  level              %8.1f dB\n", decibels(deviation));
    printf("  peak               %8.1f dB at %.4f s\n", decibels(peak), (double)(peakIsHigh ? highAt : lowAt) / rate);
    printf("  frames             %8d of %d samples\n", f->count, f->length);
    printf("  loudest frame      %8.1f dB at %.2f s\n", decibels(loudest), (double)loudestAt * f->length / rate);
    printf("  median frame       %8.1f dB\n", decibels(sorted[f->count / 2]));
    printf("  quietest frame     %8.1f dB\n", decibels(quietest));
    printf("  zero crossings     %8.0f per second\n", (double)rateMean);
    printSilences(f, rate, least);
    Morven_qvrsFree(sorted);
}

// ---- The picture ----------------------------------------------------------------------------------------------------

// The envelope, with a grey ground where it is silent.
static void drawChannel(Picture* p, int channel, const float* x, int n, const Frames* f)
{
    static const Colour silent = {225, 225, 225};
    const int top = channel * kChannelHeight;
    for (int column = 0; column < p->width; column++) {
        const int from = (int)((int64_t)column * n / p->width);
        const int frame = from / f->length < f->count ? from / f->length : f->count - 1;
        if (f->quiet[frame])
            pictureFill(p, column, top + kMargin, 1, kChannelHeight - 2 * kMargin + 1, silent);
    }
    envelopeDraw(p, (Field){0, top + kMargin, p->width, kChannelHeight - 2 * kMargin}, x, n);
}

// ---- The program ----------------------------------------------------------------------------------------------------

static void usage(void)
{
    printf("usage: statistics [--silence dB,ms] [--out FILE.png] FILE.wav\n"
           "\n"
           "Levels, peak, zero crossings and silences of a WAV file, channel by channel.\n"
           "\n"
           "  --silence dB,ms  what stays below that level for at least that long is a silence, -90 to 0 dB and 20 to\n"
           "                   60000 ms (default -40,200)\n"
           "  --out FILE.png   draws the envelope: range and deviation over time, silences in grey\n"
           "  --help           this text\n");
}

int main(int argc, char** argv)
{
    programName = "statistics";
    double silence[2] = {-40, 200};
    const char* out = NULL;
    static const struct option options[] = {{"silence", required_argument, NULL, 's'},
                                            {"out", required_argument, NULL, 'o'},
                                            {"help", no_argument, NULL, 'h'},
                                            {NULL, 0, NULL, 0}};
    for (int option; (option = nextOption(argc, argv, options, usage)) != -1;) {
        switch (option) {
        case 's':
            parseNumbers("--silence", optarg, 2, silence, (const double[][2]){{-90, 0}, {20, 60000}});
            break;
        case 'o':
            out = optarg;
            break;
        }
    }
    char** const files = operands(argc, argv, 1, "one input file is needed");

    Audio in = audioOpen(files[0]);
    if (in.frames * in.channels > kMostFrames)
        fail("%s: more than %lld samples", in.path, (long long)kMostFrames);
    const int n = (int)in.frames;
    qvr16s* samples = allocate(in.frames * in.channels * 2);
    audioRead(&in, samples, n);
    qvr32f** rows = allocate(in.channels * (int64_t)sizeof *rows);
    for (int c = 0; c < in.channels; c++)
        rows[c] = allocate((int64_t)n * 4);
    CHECK(Morven_qvrsSplitScaled_16s32f_D2L(samples, rows, in.channels, n));
    Morven_qvrsFree(samples);

    Picture picture = pictureMake(kWidth, in.channels * kChannelHeight, (Colour){255, 255, 255});
    printf("%s: %.2f s, %d channel%s, %d Hz\n", in.path, (double)n / in.rate, in.channels, in.channels == 1 ? "" : "s",
           in.rate);
    for (int c = 0; c < in.channels; c++) {
        Frames f = framesOf(rows[c], n, in.rate, (float)pow(10, silence[0] / 20));
        printChannel(c, rows[c], n, in.rate, &f, (int)ceil(silence[1] / kFrameMilliseconds));
        drawChannel(&picture, c, rows[c], n, &f);
        framesFree(&f);
        Morven_qvrsFree(rows[c]);
    }
    if (out != NULL)
        pictureWrite(&picture, out);
    pictureRelease(&picture);
    Morven_qvrsFree(rows);
    audioClose(&in);
    return 0;
}
