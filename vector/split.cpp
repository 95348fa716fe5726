// Interleaved 16-bit samples to one row of floats per channel, mapped symmetrically on -1..1.
//
// Channels are taken in groups of four, whose samples of one frame are one 8-byte load; eight frames make a block
// that three rounds of interleaving turn into four runs of eight samples. One and two channels have loops of their
// own. Frames go in tiles, so that a tile's lines are still in the first cache when the next group needs them.
#include "vector/functions.h"
#include "vector/loops.h"

namespace {

constexpr float kScale = 0x1.0001p-15f; // 2 / 65535 in single precision
constexpr float kShift = 0x1.0001p-16f; // 1 / 65535

// Product and sum are two roundings.
template<class V> QVR_INLINE auto toUnit(V samples)
{
    return convert<float>(samples) * kScale + kShift;
}

void splitOne(const int16_t* src, float* dst, Index n)
{
    convertBlocks<2 * kLanes<float>>(src, dst, n, [](auto x) { return toUnit(x); });
}

QVR_INLINE float unitSample(const int16_t* src)
{
    return toUnit(load<Vec<int16_t, 1>>(src))[0];
}

// A frame is one 32-bit word: the first channel in its low half, the second in its high half.
void splitTwo(const int16_t* src, float* const dst[2], Index n)
{
    constexpr int N = 2 * kLanes<float>;
    using V = Vec<int32_t, N>;
    Index i = 0;
    for (; i + N <= n; i += N) {
        const V frames = load<V>(src + 2 * i);
        store(dst[0] + i, toUnit(bitcast<V>(bits(frames) << 16) >> 16));
        store(dst[1] + i, toUnit(frames >> 16));
    }
    for (; i < n; i++)
        for (int c = 0; c < 2; c++)
            store(dst[c] + i, Vec<float, 1>{unitSample(src + 2 * i + c)});
}

using Run = Vec<int16_t, 8>; // eight samples of one channel

// Frames 2 k and 2 k + 1 of four channels: a0 b0 a1 b1 ... with a, b the frames and 0..3 the channels.
QVR_INLINE Run framePair(const int16_t* p, Index stride)
{
    const Run a = padTo16(load<Vec<int16_t, 4>>(p)), b = padTo16(load<Vec<int16_t, 4>>(p + stride));
    return zipLo(a, b);
}

// Writes eight frames of `count` of the four channels that start at p. Four 16-bit samples are read for each frame.
QVR_INLINE void splitBlock(const int16_t* p, Index stride, float* const* dst, Index at, int count)
{
    using Quad = Vec<int32_t, 4>; // 32-bit lanes: two frames of one channel
    const Quad f01 = bitcast<Quad>(framePair(p, stride)), f23 = bitcast<Quad>(framePair(p + 2 * stride, stride));
    const Quad f45 = bitcast<Quad>(framePair(p + 4 * stride, stride));
    const Quad f67 = bitcast<Quad>(framePair(p + 6 * stride, stride));
    using Pair = Vec<int64_t, 2>; // 64-bit lanes: four frames of one channel
    const Pair c01first = bitcast<Pair>(zipLo(f01, f23)), c23first = bitcast<Pair>(zipHi(f01, f23));
    const Pair c01last = bitcast<Pair>(zipLo(f45, f67)), c23last = bitcast<Pair>(zipHi(f45, f67));
    store(dst[0] + at, toUnit(bitcast<Run>(zipLo(c01first, c01last))));
    if (count > 1)
        store(dst[1] + at, toUnit(bitcast<Run>(zipHi(c01first, c01last))));
    if (count > 2)
        store(dst[2] + at, toUnit(bitcast<Run>(zipLo(c23first, c23last))));
    if (count > 3)
        store(dst[3] + at, toUnit(bitcast<Run>(zipHi(c23first, c23last))));
}

// Frames `from` to `to` of the channels c .. c + 3. A group whose loads reach past the frame ends `slack` frames early
// when those are the last of the source; the rest goes sample by sample.
QVR_INLINE void splitGroup(const int16_t* src, float* const* dst, Index channels, Index c, Index from, Index to,
                           Index n)
{
    const int count = channels - c < 4 ? static_cast<int>(channels - c) : 4;
    const Index safe = count < 4 && to == n ? to - 1 : to; // the last frame's load would pass the end
    Index i = from;
    for (; i + 8 <= safe; i += 8)
        splitBlock(src + i * channels + c, channels, dst + c, i, count);
    for (; i < to; i++)
        for (int k = 0; k < count; k++)
            store(dst[c + k] + i, Vec<float, 1>{unitSample(src + i * channels + c + k)});
}

void splitMany(const int16_t* src, float* const* dst, Index channels, Index n)
{
    constexpr Index tileSamples = 8192; // half of the smallest first cache
    const Index perTile = tileSamples / channels & -8;
    const Index tile = perTile < 8 ? 8 : perTile;
    for (Index from = 0; from < n; from += tile) {
        const Index to = n - from < tile ? n : from + tile;
        Index c = 0;
        for (; c + 4 <= channels; c += 4)
            splitGroup(src, dst, channels, c, from, to, n);
        // The last group steps back over channels that are done already, rather than be narrow.
        if (c < channels)
            splitGroup(src, dst, channels, channels >= 4 ? channels - 4 : c, from, to, n);
    }
}

} // namespace

extern "C" qvrStatus SLOT(qvrsSplitScaled_16s32f_D2L)(const qvr16s* pSrc, qvr32f** ppDst, int nChannels, int chanLen)
{
    if (pSrc == nullptr)
        return qvrErrNullPointer;
    if (nChannels < 1 || chanLen < 1)
        return qvrErrBadSize;
    if (ppDst == nullptr)
        return qvrErrNullPointer;
    for (int c = 0; c < nChannels; c++)
        if (ppDst[c] == nullptr)
            return qvrErrNullPointer;
    if (nChannels == 1)
        splitOne(pSrc, ppDst[0], chanLen);
    else if (nChannels == 2)
        splitTwo(pSrc, ppDst, chanLen);
    else
        splitMany(pSrc, ppDst, nChannels, chanLen);
    return qvrOk;
}
