#include "signal.h"

#include <math.h>
#include <stdlib.h>

#include "cli.h"

enum { kMostSamples = 1 << 28 }; // so that a signal of singles stays below 2^31 bytes

void check(qvrStatus status, const char* call)
{
    if (status != qvrOk)
        fail("%s returned status %d", call, (int)status);
}

void* allocate(int64_t bytes)
{
    void* block = bytes <= INT32_MAX ? Morven_qvrsMalloc_8u((int)bytes) : NULL;
    if (block == NULL)
        fail("no memory for %lld bytes", (long long)bytes);
    return block;
}

Signal signalRead(Audio* audio)
{
    if (audio->frames * audio->channels > kMostSamples)
        fail("%s: more than %d samples", audio->path, kMostSamples);
    const int n = (int)audio->frames, channels = audio->channels;
    int16_t* raw = allocate(audio->frames * channels * 2);
    audioRead(audio, raw, n);
    float** rows = allocate(channels * (int64_t)sizeof *rows);
    for (int c = 0; c < channels; c++)
        rows[c] = allocate((int64_t)n * 4);
    CHECK(Morven_qvrsSplitScaled_16s32f_D2L(raw, rows, channels, n));
    Morven_qvrsFree(raw);
    for (int c = 1; c < channels; c++) {
        CHECK(Morven_qvrsAdd_32f_I(rows[c], rows[0], n));
        Morven_qvrsFree(rows[c]);
    }
    // The split puts -32768 at -1 and 32767 at 1, so silence at 1/65535.
    CHECK(Morven_qvrsMulC_32f_I(1.0f / (float)channels, rows[0], n));
    CHECK(Morven_qvrsSubC_32f_I(1.0f / 65535, rows[0], n));
    const Signal signal = {rows[0], n, audio->rate};
    Morven_qvrsFree(rows);
    return signal;
}

void signalFree(Signal* signal)
{
    Morven_qvrsFree(signal->samples);
    signal->samples = NULL;
}

void signalWrite(const Signal* signal, const char* path, const Audio* like)
{
    Audio form = *like;
    form.channels = 1;
    form.rate = signal->rate;
    form.frames = signal->count;
    Audio out = audioCreate(path, &form);
    float* scaled = allocate((int64_t)signal->count * 4);
    int16_t* raw = allocate((int64_t)signal->count * 2);
    CHECK(Morven_qvrsMulC_32f(signal->samples, 32767.5f, scaled, signal->count));
    CHECK(Morven_qvrsConvert_32f16s_Sfs(scaled, raw, signal->count, qvrRoundNearest, 0));
    audioWrite(&out, raw, signal->count);
    audioClose(&out);
    Morven_qvrsFree(scaled);
    Morven_qvrsFree(raw);
}

// The rows from the first to the last, both included.
static void fillColumn(Picture* p, int x, int first, int last, Colour colour)
{
    pictureFill(p, x, first, 1, last - first + 1, colour);
}

void envelopeDraw(Picture* picture, Field field, const float* samples, int count)
{
    static const Colour range = {140, 175, 220}, core = {30, 80, 160};
    const int half = field.height / 2, middle = field.top + half;
    for (int column = 0; column < field.width; column++) {
        const int from = (int)((int64_t)column * count / field.width);
        const int next = (int)((int64_t)(column + 1) * count / field.width);
        const int length = next > from ? next - from : 1;
        float low, high, mean = samples[from], deviation = 0;
        CHECK(Morven_qvrsMinMax_32f(samples + from, length, &low, &high));
        if (length > 1) {
            CHECK(Morven_qvrsMean_32f(samples + from, length, &mean));
            CHECK(Morven_qvrsStdDev_32f(samples + from, length, &deviation));
        }
        fillColumn(picture, field.left + column, middle - (int)lroundf(high * half), middle - (int)lroundf(low * half),
                   range);
        fillColumn(picture, field.left + column, middle - (int)lroundf((mean + deviation) * half),
                   middle - (int)lroundf((mean - deviation) * half), core);
    }
}
