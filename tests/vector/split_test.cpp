#include "model/vector.h"
#include "support/elementwise.h"
#include "support/status_order.h"
#include "vector/slot_tables.h"

namespace {

float unit(int16_t x)
{
    float y, *row = &y;
    model::qvrsSplitScaled_16s32f_D2L(&x, &row, 1, 1);
    return y;
}

// Samples end at an unreadable page, rows too; `offset` moves both off their alignment.
template<class F> void checkSplit(F f, int channels, int len, size_t offset)
{
    const size_t samples = static_cast<size_t>(channels) * len;
    const std::vector<int16_t> in = mixedValues<int16_t>(samples, static_cast<uint32_t>(samples + 1));
    Guarded& source = pooledGuarded(1000, samples * 2 + 64);
    int16_t* src = offset ? source.atFront<int16_t>(samples * 2, offset) : source.atEnd<int16_t>(samples * 2);
    memcpy(static_cast<void*>(src), in.data(), samples * 2);
    std::vector<float*> rows(channels);
    for (int c = 0; c < channels; c++) {
        Guarded& row = pooledGuarded(2000 + c, len * 4 + 64);
        rows[c] = c % 2 ? row.atFront<float>(len * 4, offset) : row.atEnd<float>(len * 4);
    }
    ASSERT_EQ(f(src, rows.data(), channels, len), qvrOk);
    EXPECT_TRUE(source.intact());
    for (int c = 0; c < channels; c++) {
        EXPECT_TRUE(pooledGuarded(2000 + c, len * 4 + 64).intact()) << "channel " << c;
        for (int i = 0; i < len; i++) {
            float got;
            memcpy(&got, reinterpret_cast<char*>(rows[c]) + i * 4, 4);
            ASSERT_EQ(bitsOf(got), bitsOf(unit(in[c + static_cast<size_t>(i) * channels])))
                << channels << " channels, channel " << c << ", frame " << i << " of " << len;
        }
    }
}

TEST(Split, EveryChannelCount)
{
    slots::each(qvrTable_qvrsSplitScaled_16s32f_D2L, [&](auto f, int) {
        for (int channels = 1; channels <= 20; channels++)
            for (int len = 1; len <= 70; len++)
                checkSplit(f, channels, len, 0);
        for (int channels : {1, 2, 3, 4, 5, 6, 7, 8, 9, 31, 64, 100})
            for (int len : {8, 16, 33, 130, 1000})
                for (size_t offset : {0, 1, 2, 7, 33})
                    checkSplit(f, channels, len, offset);
        // Around the tiles.
        for (int channels : {3, 5, 16})
            for (int len : {8192 / channels / 8 * 8 - 1, 8192 / channels / 8 * 8, 8192 / channels / 8 * 8 + 1, 9000})
                checkSplit(f, channels, len, 0);
        checkSplit(f, 3000, 40, 0);
    });
}

TEST(Split, KnownValues)
{
    slots::each(qvrTable_qvrsSplitScaled_16s32f_D2L, [&](auto f, int) {
        const int16_t in[3] = {0, -32768, 32767};
        float out[3];
        float* row = out;
        EXPECT_EQ(f(in, &row, 1, 3), qvrOk);
        EXPECT_EQ(out[0], 1.5259022e-5f);
        EXPECT_NEAR(out[1], -1, 1e-6);
        EXPECT_NEAR(out[2], 1, 1e-6);
    });
}

TEST(Split, Statuses)
{
    slots::each(qvrTable_qvrsSplitScaled_16s32f_D2L, [&](auto f, int) {
        struct Args {
            const int16_t* src;
            float** rows;
            int channels, len;
            bool nullRow;
        };
        const int16_t in[12] = {};
        Guarded dst(48);
        float* d = dst.atEnd<float>(48);
        float* good[3] = {d, d + 4, d + 8};
        for (int missing = 0; missing < 3; missing++) {
            float* bad[3] = {d, d + 4, d + 8};
            bad[missing] = nullptr;
            for (int wrong : {0, -1, INT32_MIN}) {
                expectStatusOrder<Args>(
                    {in, good, 3, 4, false},
                    {{"src", qvrErrNullPointer, [](Args& a) { a.src = nullptr; }},
                     {"channels", qvrErrBadSize, [=](Args& a) { a.channels = wrong; }},
                     {"len", qvrErrBadSize, [=](Args& a) { a.len = wrong; }},
                     {"rows", qvrErrNullPointer, [](Args& a) { a.rows = nullptr; }},
                     {"a row", qvrErrNullPointer, [](Args& a) { a.nullRow = true; }}},
                    [&](const Args& a) { return f(a.src, a.rows && a.nullRow ? bad : a.rows, a.channels, a.len); },
                    [&] { return dst.untouched(); });
            }
        }
    });
}

} // namespace
