// Finds a sound in a recording, wherever and however loud it is in there, and marks its places on the envelope.
//
//   c[t] = sum of sound[k] recording[t + k]           cross-correlation
//   similarity[t] = c[t] / sqrt(sum of sound[k]^2 * sum of recording[t + k]^2), 1 for a scaled copy
//
// The best place is taken, its surroundings are cleared, and so on while the similarity is above a threshold.
#include <getopt.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "common/cli.h"
#include "common/signal.h"

enum { kWidth = 1000, kHeight = 220, kLane = 70, kMargin = 8, kMostFound = 50 };

typedef struct {
    int at;
    float similarity;
} Found;

static int byTime(const void* a, const void* b)
{
    return ((const Found*)a)->at - ((const Found*)b)->at;
}

// The similarity at every place where the whole sound fits.
static float* similarities(const Signal* sound, const Signal* recording, int places)
{
    float* c = allocate((int64_t)places * 4);
    CHECK(Morven_qvrsCrossCorr_32f(sound->samples, sound->count, recording->samples, recording->count, c, places, 0));
    double energy = 0, window = 0;
    for (int k = 0; k < sound->count; k++) {
        energy += (double)sound->samples[k] * sound->samples[k];
        window += (double)recording->samples[k] * recording->samples[k];
    }
    if (energy == 0)
        fail("the sound is silent");
    // Where the recording is this much quieter than the sound, nothing is told apart.
    const double least = 1e-5 * energy;
    for (int t = 0; t < places; t++) {
        c[t] = window > least ? (float)(c[t] / sqrt(energy * window)) : 0;
        const double gone = recording->samples[t];
        const double come = t + sound->count < recording->count ? recording->samples[t + sound->count] : 0;
        window += come * come - gone * gone;
    }
    return c;
}

static int findAll(float* similarity, int places, int length, double threshold, Found* found)
{
    float* work = allocate((int64_t)places * 4);
    CHECK(Morven_qvrsCopy_32f(similarity, work, places));
    int count = 0;
    while (count < kMostFound) {
        float best;
        int at;
        CHECK(Morven_qvrsMaxIndx_32f(work, places, &best, &at));
        if (best < threshold)
            break;
        found[count++] = (Found){at, best};
        const int from = at > length / 2 ? at - length / 2 : 0;
        const int end = at + length / 2 + 1 < places ? at + length / 2 + 1 : places;
        CHECK(Morven_qvrsZero_32f(work + from, end - from));
    }
    Morven_qvrsFree(work);
    qsort(found, (size_t)count, sizeof *found, byTime);
    return count;
}

// ---- The picture ----------------------------------------------------------------------------------------------------

// The envelope with a frame round each place, and below it the similarity over time.
static void draw(const char* path, const Signal* sound, const Signal* recording, const float* similarity, int places,
                 const Found* found, int count)
{
    static const Colour paper = {255, 255, 255}, ink = {60, 60, 60}, mark = {200, 30, 30}, ground = {255, 235, 225},
                        curve = {110, 110, 110};
    Picture p = pictureMake(kWidth, kHeight + kLane, paper);
    const Field field = {0, kMargin + 12, kWidth, kHeight - kMargin - 24};
    const double scale = (double)kWidth / recording->count;
    for (int i = 0; i < count; i++)
        pictureFill(&p, (int)(found[i].at * scale), field.top, (int)ceil(sound->count * scale), field.height, ground);
    envelopeDraw(&p, field, recording->samples, recording->count);
    for (int x = 0; x < kWidth; x++) {
        const int from = (int)(x / scale), next = (int)((x + 1) / scale);
        if (from >= places)
            break;
        float best;
        const int length = next > from ? next - from : 1;
        CHECK(Morven_qvrsMax_32f(similarity + from, from + length < places ? length : places - from, &best));
        const int height = best > 0 ? (int)lroundf(best * (kLane - 2 * kMargin)) : 0;
        pictureFill(&p, x, kHeight + kLane - kMargin - height, 1, height, curve);
    }
    for (int i = 0; i < count; i++) {
        char text[32];
        const int x = (int)(found[i].at * scale), width = (int)ceil(sound->count * scale);
        pictureFrame(&p, x, field.top, width, field.height, mark);
        snprintf(text, sizeof text, "%.3f s", (double)found[i].at / recording->rate);
        const int left = x + pictureTextWidth(text) < kWidth ? x : kWidth - pictureTextWidth(text);
        pictureText(&p, left, 4, text, mark);
    }
    pictureFill(&p, 0, kHeight + kLane - kMargin, kWidth, 1, ink);
    pictureWrite(&p, path);
    pictureRelease(&p);
}

// ---- The program ----------------------------------------------------------------------------------------------------

static void usage(void)
{
    printf("usage: findsound [--cut s,s] [--least R] [--out FILE.png] SOUND.wav RECORDING.wav\n"
           "\n"
           "Finds a sound in a recording; both are WAV files of one sampling rate.\n"
           "\n"
           "  --cut s,s        only that piece of the sound, from and to in seconds\n"
           "  --least R        least similarity of a place, 0.01 to 1 (default 0.3)\n"
           "  --out FILE.png   draws the recording's envelope with the places marked, and the similarity below\n"
           "  --help           this text\n");
}

static Signal readFile(const char* path, Audio* audio)
{
    *audio = audioOpen(path);
    return signalRead(audio);
}

int main(int argc, char** argv)
{
    programName = "findsound";
    double cut[2] = {0, 1e9}, least = 0.3;
    const char* out = NULL;
    static const struct option options[] = {{"cut", required_argument, NULL, 'c'},
                                            {"least", required_argument, NULL, 'l'},
                                            {"out", required_argument, NULL, 'o'},
                                            {"help", no_argument, NULL, 'h'},
                                            {NULL, 0, NULL, 0}};
    for (int option; (option = nextOption(argc, argv, options, usage)) != -1;) {
        switch (option) {
        case 'c':
            parseNumbers("--cut", optarg, 2, cut, (const double[][2]){{0, 1e6}, {0, 1e6}});
            break;
        case 'l':
            parseNumbers("--least", optarg, 1, &least, (const double[][2]){{0.01, 1}});
            break;
        case 'o':
            out = optarg;
            break;
        }
    }
    char** const files = operands(argc, argv, 2, "a sound and a recording are needed");
    if (cut[0] >= cut[1])
        failUsage("--cut: the piece ends before it begins");

    Audio soundFile, recordingFile;
    Signal whole = readFile(files[0], &soundFile), recording = readFile(files[1], &recordingFile);
    if (whole.rate != recording.rate)
        fail("%s has %d samples per second, %s has %d", soundFile.path, whole.rate, recordingFile.path, recording.rate);
    const int first = (int)fmin(cut[0] * whole.rate, whole.count), end = (int)fmin(cut[1] * whole.rate, whole.count);
    if (first >= end)
        fail("%s: nothing of the sound is left", soundFile.path);
    const Signal sound = {whole.samples + first, end - first, whole.rate};
    if (sound.count > recording.count)
        fail("%s: the recording is shorter than the sound", recordingFile.path);

    const int places = recording.count - sound.count + 1;
    float* similarity = similarities(&sound, &recording, places);
    Found found[kMostFound];
    const int count = findAll(similarity, places, sound.count, least, found);
    printf("%s: %.2f s looked for in %.2f s, found %d time%s\n", soundFile.path, (double)sound.count / sound.rate,
           (double)recording.count / recording.rate, count, count == 1 ? "" : "s");
    for (int i = 0; i < count; i++)
        printf("  at %9.4f s, similarity %.2f\n", (double)found[i].at / recording.rate, (double)found[i].similarity);
    if (out != NULL)
        draw(out, &sound, &recording, similarity, places, found, count);

    Morven_qvrsFree(similarity);
    signalFree(&whole);
    signalFree(&recording);
    audioClose(&soundFile);
    audioClose(&recordingFile);
    return 0;
}
