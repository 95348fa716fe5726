// Bytes for random calls: the engines of the standard library cost more than many of the calls.
#ifndef QVR_TESTS_CALLS_RANDOM_BYTES_H
#define QVR_TESTS_CALLS_RANDOM_BYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace calls {

// SplitMix64, eight bytes a step. The state goes on with the next array.
inline void fillRandom(uint8_t* bytes, size_t count, uint64_t& state)
{
    for (size_t i = 0; i < count; i += 8) {
        uint64_t z = state += 0x9E3779B97F4A7C15u;
        z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9u;
        z = (z ^ z >> 27) * 0x94D049BB133111EBu;
        z ^= z >> 31;
        memcpy(bytes + i, &z, count - i < 8 ? count - i : 8);
    }
}

} // namespace calls

#endif
