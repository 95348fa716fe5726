// The lanes under a mask to the front of their vector, the others behind them, both in order.
#ifndef QVR_FRAME_COMPRESS_H
#define QVR_FRAME_COMPRESS_H

#include "frame/lookup.h"

namespace {

constexpr bool kHasCompress = kSsse3;

// The widest vector whose lanes one instruction can move by a table's row: all of an AVX2 register, 16 bytes below.
template<class T> using Compressible = Vec<T, (kAvx2 ? 32 : 16) / static_cast<int>(sizeof(T))>;

// Rows of bytes: for each mask over the lanes the 32-bit elements in their new order (in a wide vector), or their
// bytes.
template<int Masks, int Bytes> struct LaneOrders {
    uint8_t row[Masks][Bytes];
};
template<int LaneCount, int LaneBytes> constexpr auto laneOrders()
{
    constexpr bool wide = LaneCount * LaneBytes == 32;
    constexpr int parts = wide ? LaneBytes / 4 : LaneBytes;
    LaneOrders<1 << LaneCount, LaneCount * parts> orders{};
    for (int mask = 0; mask < 1 << LaneCount; mask++) {
        int at = 0;
        for (int taken = 1; taken >= 0; taken--)
            for (int lane = 0; lane < LaneCount; lane++)
                if ((mask >> lane & 1) == taken)
                    for (int part = 0; part < parts; part++)
                        orders.row[mask][at++] = static_cast<uint8_t>(lane * parts + part);
    }
    return orders;
}
template<class V> constexpr auto kLaneOrders = laneOrders<lanes<V>, static_cast<int>(sizeof(Elem<V>))>();

struct LaneCounts {
    uint8_t of[256];
    constexpr LaneCounts() : of{}
    {
        for (int mask = 1; mask < 256; mask++)
            of[mask] = static_cast<uint8_t>(of[mask >> 1] + (mask & 1));
    }
};
constexpr LaneCounts kLaneCounts;
// Bits of a mask over at most eight lanes.
QVR_INLINE int laneCount(int mask)
{
    return kLaneCounts.of[mask];
}

template<class V> QVR_INLINE V compress(V v, int mask)
{
    const uint8_t* const row = kLaneOrders<V>.row[mask];
    if constexpr (sizeof(V) == 32)
        return bitcast<V>(choose8(bitcast<Vec<float, 8>>(v), convert<int32_t>(load<Vec<uint8_t, 8>>(row))));
    else
        return bitcast<V>(shuffleBytes(bitcast<Vec<uint8_t, 16>>(v), load<Vec<uint8_t, 16>>(row)));
}

} // namespace

#endif
