// WAV files through libsndfile.
#include "audio.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <sys/stat.h>

#include "cli.h"
#include "signal.h"

static uint32_t little32(const unsigned char* bytes)
{
    return bytes[0] | (uint32_t)bytes[1] << 8 | (uint32_t)bytes[2] << 16 | (uint32_t)bytes[3] << 24;
}

// libsndfile reads a file that was cut short as a shorter one. The size that the header promises tells them apart.
static void checkWhole(const char* path, FILE* stream, int64_t size)
{
    unsigned char head[12];
    // RF64 files keep the true sizes elsewhere.
    if (fread(head, 1, 12, stream) != 12 || memcmp(head, "RIFF", 4) != 0)
        return;
    int64_t position = 12;
    while (fseeko(stream, position, SEEK_SET) == 0 && fread(head, 1, 8, stream) == 8) {
        const int64_t promised = little32(head + 4);
        position += 8;
        if (memcmp(head, "data", 4) == 0) {
            // All ones: a program that could not seek back did not know the size.
            if (promised > size - position && promised != 0xFFFFFFFF)
                fail("'%s' is cut short: it holds %lld of %lld bytes of sound", path, (long long)(size - position),
                     (long long)promised);
            return;
        }
        position += promised + promised % 2;
    }
}

Audio audioOpen(const char* path)
{
    FILE* stream = fopen(path, "rb");
    if (stream == NULL)
        fail("cannot open '%s': %s", path, strerror(errno));
    struct stat status;
    if (fstat(fileno(stream), &status) != 0 || !S_ISREG(status.st_mode))
        fail("'%s' is not a regular file", path);
    if (status.st_size == 0)
        fail("'%s' is empty", path);
    SF_INFO info = {0};
    SNDFILE* file = sf_open(path, SFM_READ, &info);
    const int type = info.format & SF_FORMAT_TYPEMASK;
    if (file == NULL || (type != SF_FORMAT_WAV && type != SF_FORMAT_WAVEX && type != SF_FORMAT_RF64))
        fail("'%s' is not a WAV file that can be read", path);
    checkWhole(path, stream, status.st_size);
    fclose(stream);
    if (info.frames < 1)
        fail("'%s' holds no sound", path);
    const int wide = (info.format & SF_FORMAT_SUBMASK) != SF_FORMAT_PCM_16;
    return (Audio){.file = file,
                   .path = path,
                   .channels = info.channels,
                   .rate = info.samplerate,
                   .format = type | SF_FORMAT_PCM_16,
                   .frames = info.frames,
                   .room = wide ? 0 : -1};
}

void audioRead(Audio* audio, int16_t* samples, int frames)
{
    if (audio->room >= 0) {
        // Full scale is 1; what goes beyond is limited.
        const int64_t count = (int64_t)frames * audio->channels;
        if (count > audio->room) {
            Morven_qvrsFree(audio->wide);
            audio->wide = allocate((int64_t)sizeof(float) * count);
            audio->room = count;
        }
        if (sf_readf_float(audio->file, audio->wide, frames) != frames)
            fail("cannot read '%s' to its end: %s", audio->path, sf_strerror(audio->file));
        CHECK(Morven_qvrsConvert_32f16s_Sfs(audio->wide, samples, (int)count, qvrRoundNearest, -15));
        return;
    }
    if (sf_readf_short(audio->file, samples, frames) != frames)
        fail("cannot read '%s' to its end: %s", audio->path, sf_strerror(audio->file));
}

void audioRewind(Audio* audio)
{
    if (sf_seek(audio->file, 0, SEEK_SET) != 0)
        fail("cannot read '%s' a second time: %s", audio->path, sf_strerror(audio->file));
}

Audio audioCreate(const char* path, const Audio* like)
{
    struct stat source, target;
    if (stat(path, &target) == 0 && stat(like->path, &source) == 0 && source.st_dev == target.st_dev &&
        source.st_ino == target.st_ino)
        fail("'%s' would be written over itself", path);
    Audio audio = *like;
    audio.path = path;
    audio.wide = NULL;
    audio.room = -1;
    // A WAV header counts bytes in 32 bits.
    if (like->frames * like->channels > (INT64_C(1) << 31) - 4096)
        audio.format = SF_FORMAT_RF64 | SF_FORMAT_PCM_16;
    SF_INFO info = {.samplerate = audio.rate, .channels = audio.channels, .format = audio.format};
    audio.file = sf_open(path, SFM_WRITE, &info);
    if (audio.file == NULL)
        fail("cannot write '%s': %s", path, sf_strerror(NULL));
    return audio;
}

void audioWrite(Audio* audio, const int16_t* samples, int frames)
{
    if (sf_writef_short(audio->file, samples, frames) != frames)
        fail("cannot write '%s': %s", audio->path, sf_strerror(audio->file));
}

void audioClose(Audio* audio)
{
    Morven_qvrsFree(audio->wide);
    audio->wide = NULL;
    if (sf_close(audio->file) != 0)
        fail("cannot finish '%s'", audio->path);
}
