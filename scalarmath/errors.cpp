// What happens when a scalar routine meets an error: the action programs of the error rows.
#include <errno.h>
#include <stdio.h>
#include <string.h>

#include "scalarmath/messages.h"

namespace {

constexpr int kErrnoValues[2] = {ERANGE, EDOM};
static_assert(ERANGE == 34 && EDOM == 33);

// A number of one of the three widths, as bits: sign, exponent and significand.
struct Format {
    size_t bytes;
    int exponentBits, significandBits; // the extended type shows its leading bit
};
constexpr Format kFormats[qvrmTypeCount] = {{8, 11, 52}, {10, 15, 64}, {16, 15, 112}};

using Word = unsigned __int128;

Word read(const void* at, const Format& f)
{
    Word w = 0;
    memcpy(&w, at, f.bytes);
    return w;
}
void write(void* at, Word w, const Format& f)
{
    memcpy(at, &w, f.bytes);
}
Word signBit(const Format& f)
{
    return Word{1} << (f.exponentBits + f.significandBits);
}
bool zeroSignificand(const void* at, const Format& f)
{
    return (read(at, f) & ((Word{1} << f.significandBits) - 1)) == 0;
}
bool isZero(const void* at, const Format& f)
{
    return (read(at, f) & ~signBit(f)) == 0;
}

Word constant(int result, const Format& f)
{
    const Word exponent = ((Word{1} << f.exponentBits) - 1) << f.significandBits;
    const Word leading = f.significandBits == 64 ? Word{1} << 63 : 0;
    const Word quiet = Word{1} << (f.significandBits == 64 ? 62 : f.significandBits - 1);
    switch (result) {
    case qvrmResultInfinity:
        return exponent | leading;
    case qvrmResultMinusInfinity:
        return exponent | leading | signBit(f);
    case qvrmResultNan:
        return exponent | leading | quiet;
    default:
        return 0;
    }
}

} // namespace

extern "C" {

const qvrmErrorRow* qvrmErrorRows;
int qvrmErrorRowCount;
int qvrmErrorMode;
int (*qvrmUserHook)(qvrmException*);

void qvrmMathError(void* result, const void* argument1, const void* argument2, int errorNumber)
{
    const int mode = qvrmErrorMode;
    if (mode < 0 || mode > 2 || errorNumber < 0 || errorNumber >= qvrmErrorRowCount)
        return;
    const qvrmErrorRow& row = qvrmErrorRows[errorNumber];
    const Format& f = kFormats[row.type];
    uint32_t program = row.program[mode];
    int extensions = 0;
    bool skip = false, negative = false;
    const void* operand = argument1;
    while (const uint32_t action = program & 15) {
        program >>= 4;
        if (skip) {
            skip = false;
            continue;
        }
        switch (action) {
        case qvrmActErrno:
            errno = kErrnoValues[row.errnoIndex];
            break;
        case qvrmActSkipIfZero:
            skip = zeroSignificand(argument1, f);
            break;
        case qvrmActConstant:
            write(result, constant(row.result, f) | (negative ? signBit(f) : 0), f);
            break;
        case qvrmActArgument:
            memcpy(result, argument1, f.bytes);
            break;
        case qvrmActSignOfArgument:
            operand = argument1;
            break;
        case qvrmActSignOfResult:
            operand = result;
            break;
        case qvrmActSign:
            negative |= (read(operand, f) & signBit(f)) != 0;
            break;
        case qvrmActExtendIfZero:
            if (!isZero(argument1, f))
                return;
            [[fallthrough]];
        case qvrmActExtend:
        case qvrmActExtendLast:
            if (extensions == 4)
                return;
            program = row.extension[extensions++] & 0xFFF;
            break;
        case qvrmActPrint:
            qvrmPrintError(row.message, qvrmNames[row.name], qvrmSuffixes[row.type], qvrmKindWords[row.kind]);
            break;
        case qvrmActHook:
            if (qvrmUserHook) {
                qvrmException exception = {row.kind, {}, argument1, argument2, result};
                snprintf(exception.name, sizeof exception.name, "%s%s", qvrmNames[row.name], qvrmSuffixes[row.type]);
                qvrmUserHook(&exception);
            }
            break;
        default:
            break;
        }
    }
}

} // extern "C"
