// Rows of the fills and copies.
#include "bench/vector/rows.h"

using namespace bench;

namespace {

constexpr const char* kGroup = "fills";

ROW(qvrsSet_8u, kGroup, output<uint8_t>(), (200, d, n), LIBC("memset", memset(d, 200, static_cast<size_t>(n))))
ROW(qvrsSet_32s, kGroup, output<int32_t>(), (123456789, d, n))
ROW(qvrsSet_32f, kGroup, output<float>(), (0.75f, d, n))
ROW(qvrsZero_32f, kGroup, output<float>(), (d, n), LIBC("memset", memset(d, 0, 4 * static_cast<size_t>(n))))
ROW(qvrsZero_64f, kGroup, output<double>(), (d, n), LIBC("memset", memset(d, 0, 8 * static_cast<size_t>(n))))
ROW(qvrsCopy_32f, kGroup, unary<float>(), (a, d, n), LIBC("memcpy", memcpy(d, a, 4 * static_cast<size_t>(n))))
ROW(qvrsCopy_64f, kGroup, unary<double>(), (a, d, n), LIBC("memcpy", memcpy(d, a, 8 * static_cast<size_t>(n))))

} // namespace
