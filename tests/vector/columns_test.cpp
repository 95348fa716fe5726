#include "support/elementwise.h"
#include "support/status_order.h"
#include "vector/slot_tables.h"

namespace {

using T = int16_t;

struct Case {
    int srcCols, srcStride, dstCols, dstStride, rows;
};
const Case kCases[] = {{1, 1, 1, 1, 1}, {5, 5, 3, 3, 4}, {5, 9, 8, 11, 3}, {300, 300, 40, 64, 7}, {2, 3, 100, 100, 2}};

std::vector<int32_t> someIndices(const Case& c, uint32_t seed)
{
    std::mt19937 engine(seed);
    std::vector<int32_t> v(static_cast<size_t>(c.dstCols));
    for (int32_t& k : v)
        k = static_cast<int32_t>(engine() % static_cast<uint32_t>(c.srcCols));
    v.front() = c.srcCols - 1;
    v.back() = 0;
    return v;
}

TEST(Columns, Strided)
{
    for (const Case& c : kCases)
        for (size_t offset : {0, 1}) {
            const std::vector<int32_t> indices = someIndices(c, 3);
            // The last row ends with its columns, not with its stride.
            const size_t srcCount = static_cast<size_t>((c.rows - 1) * c.srcStride + c.srcCols);
            const size_t dstCount = static_cast<size_t>((c.rows - 1) * c.dstStride + c.dstCols);
            const std::vector<T> in = randomValues<T>(srcCount, 5);
            std::vector<T> want(dstCount);
            memset(want.data(), Guarded::kPoison, dstCount * 2);
            for (int r = 0; r < c.rows; r++)
                for (int k = 0; k < c.dstCols; k++)
                    want[static_cast<size_t>(r * c.dstStride + k)] =
                        in[static_cast<size_t>(r * c.srcStride + indices[static_cast<size_t>(k)])];
            Guarded& src = pooledGuarded(0, srcCount * 2 + 64);
            Guarded& dst = pooledGuarded(1, dstCount * 2 + 64);
            Guarded& idx = pooledGuarded(2, indices.size() * 4 + 64);
            T* s = src.atEnd<T>(srcCount * 2, offset);
            T* d = dst.atEnd<T>(dstCount * 2, offset);
            int32_t* k = idx.atEnd<int32_t>(indices.size() * 4, offset);
            memcpy(static_cast<void*>(s), in.data(), srcCount * 2);
            memcpy(static_cast<void*>(k), indices.data(), indices.size() * 4);
            EXPECT_EQ(
                Morven_qvrsCopyColumn_Indirect_16s_D2(s, c.srcCols, c.srcStride, d, k, c.dstCols, c.dstStride, c.rows),
                qvrOk);
            EXPECT_EQ(memcmp(d, want.data(), dstCount * 2), 0);
            EXPECT_TRUE(src.intact() && dst.intact() && idx.intact());
        }
}

TEST(Columns, BadIndexStopsInTheFirstRow)
{
    const T src[6] = {10, 11, 12, 20, 21, 22};
    for (int32_t bad : {3, -1, INT32_MIN, INT32_MAX})
        for (int at = 0; at < 4; at++) {
            int32_t indices[4] = {2, 1, 0, 1};
            indices[at] = bad;
            T dst[8] = {99, 99, 99, 99, 99, 99, 99, 99};
            EXPECT_EQ(Morven_qvrsCopyColumn_Indirect_16s_D2(src, 3, 3, dst, indices, 4, 4, 2), qvrErrBadSize);
            for (int c = 0; c < 8; c++)
                EXPECT_EQ(dst[c], c < at ? src[indices[c]] : 99) << bad << " at " << at;
        }
}

struct Args {
    const T* src;
    int srcCols, srcStride;
    T* dst;
    const int32_t* index;
    int dstCols, dstStride, rows;
};

TEST(Columns, StridedStatuses)
{
    const T src[6] = {};
    const int32_t index[2] = {0, 1}, badIndex[2] = {7, 1};
    T dst[4] = {99, 99, 99, 99};
    for (int bad : {0, -1, INT32_MIN})
        expectStatusOrder<Args>(
            {src, 3, 3, dst, index, 2, 2, 2},
            {{"source", qvrErrNullPointer, [](Args& a) { a.src = nullptr; }},
             {"destination", qvrErrNullPointer, [](Args& a) { a.dst = nullptr; }},
             {"index", qvrErrNullPointer, [](Args& a) { a.index = nullptr; }},
             {"source columns", qvrErrBadSize, [=](Args& a) { a.srcCols = bad; }},
             {"destination columns", qvrErrBadSize, [=](Args& a) { a.dstCols = bad; }},
             {"rows", qvrErrBadSize, [=](Args& a) { a.rows = bad; }},
             {"source stride", qvrErrBadColumns, [](Args& a) { a.srcStride = a.srcCols > 0 ? 2 : INT32_MIN; }},
             {"destination stride", qvrErrBadColumns, [](Args& a) { a.dstStride = a.dstCols > 0 ? 1 : INT32_MIN; }},
             {"an index", qvrErrBadSize, [&](Args& a) { a.index = a.index ? badIndex : nullptr; }}},
            [](const Args& a) {
                return Morven_qvrsCopyColumn_Indirect_16s_D2(a.src, a.srcCols, a.srcStride, a.dst, a.index, a.dstCols,
                                                             a.dstStride, a.rows);
            },
            [&] { return dst[0] == 99 && dst[3] == 99; });
}

TEST(Columns, RowPointers)
{
    for (const Case& c : kCases) {
        const std::vector<int32_t> indices = someIndices(c, 4);
        std::vector<std::vector<T>> in, out;
        std::vector<const T*> src;
        std::vector<T*> dst;
        for (int r = 0; r < c.rows; r++) {
            in.push_back(randomValues<T>(static_cast<size_t>(c.srcCols), static_cast<uint32_t>(r)));
            out.push_back(std::vector<T>(static_cast<size_t>(c.dstCols), 99));
        }
        for (int r = 0; r < c.rows; r++) {
            src.push_back(in[static_cast<size_t>(r)].data());
            dst.push_back(out[static_cast<size_t>(r)].data());
        }
        EXPECT_EQ(Morven_qvrsCopyColumn_Indirect_16s_D2L(src.data(), c.srcCols, dst.data(), indices.data(), c.dstCols,
                                                         c.rows),
                  qvrOk);
        for (size_t r = 0; r < in.size(); r++)
            for (size_t k = 0; k < indices.size(); k++)
                EXPECT_EQ(out[r][k], in[r][static_cast<size_t>(indices[k])]);
    }
}

TEST(Columns, RowPointersTrustTheIndex)
{
    // Beyond the columns that are told, but inside the row: no status tells.
    const T row[6] = {10, 11, 12, 13, 14, 15};
    const T* src[1] = {row + 2};
    T out[3] = {};
    T* dst[1] = {out};
    const int32_t index[3] = {3, -2, 1};
    EXPECT_EQ(Morven_qvrsCopyColumn_Indirect_16s_D2L(src, 1, dst, index, 3, 1), qvrOk);
    EXPECT_EQ(out[0], 15);
    EXPECT_EQ(out[1], 10);
    EXPECT_EQ(out[2], 13);
}

TEST(Columns, RowPointersStatuses)
{
    const T row[2] = {5, 6};
    const int32_t index[2] = {1, 0};
    T out[3][2];
    const T* src[3] = {row, row, row};
    T* dst[3] = {out[0], out[1], out[2]};
    const auto call = Morven_qvrsCopyColumn_Indirect_16s_D2L;
    for (int bad : {0, -1, INT32_MIN}) {
        EXPECT_EQ(call(nullptr, bad, dst, index, 2, 3), qvrErrNullPointer);
        EXPECT_EQ(call(src, bad, nullptr, index, 2, 3), qvrErrNullPointer);
        EXPECT_EQ(call(src, bad, dst, nullptr, 2, 3), qvrErrNullPointer);
        EXPECT_EQ(call(src, bad, dst, index, 2, 3), qvrErrBadSize);
        EXPECT_EQ(call(src, 2, dst, index, bad, 3), qvrErrBadSize);
        EXPECT_EQ(call(src, 2, dst, index, 2, bad), qvrErrBadSize);
    }
    for (bool source : {true, false})
        for (int at = 0; at < 3; at++) {
            const T* s[3] = {row, row, row};
            T* d[3] = {out[0], out[1], out[2]};
            if (source)
                s[at] = nullptr;
            else
                d[at] = nullptr;
            for (auto& r : out)
                r[0] = r[1] = 99;
            EXPECT_EQ(call(s, 2, d, index, 2, 3), qvrErrNullPointer);
            for (int r = 0; r < 3; r++)
                EXPECT_EQ(out[r][0], r < at ? 6 : 99);
        }
}

} // namespace
