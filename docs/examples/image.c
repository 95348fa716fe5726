// Image resize and point operations.
#include "example.h"

EXAMPLE(qvriResizeGetBufSize)
{
    const qvriRect from = {0, 0, 640, 480}, to = {0, 0, 320, 240};
    int bytes;
    EXPECT_VALUE(Morven_qvriResizeGetBufSize(from, to, 1, qvriInterLinear, &bytes), qvrOk);
    qvr8u* buffer = Morven_qvrsMalloc_8u(bytes);
    Morven_qvrsFree(buffer);
}

EXAMPLE(qvriResizeGetBufSize_64f)
{
    const qvriRect from = {0, 0, 640, 480}, to = {0, 0, 320, 240};
    int bytes;
    EXPECT_VALUE(Morven_qvriResizeGetBufSize_64f(from, to, 1, qvriInterLinear, &bytes), qvrOk);
    qvr8u* buffer = Morven_qvrsMalloc_8u(bytes);
    Morven_qvrsFree(buffer);
}

EXAMPLE(qvriResizeSqrPixel_8u_C1R)
{
    const qvr8u src[] = {0, 100}; // two pixels in a row
    const qvriSize size = {2, 1};
    const qvriRect from = {0, 0, 2, 1}, to = {0, 0, 4, 1};
    qvr8u dst[4];
    int bytes;
    Morven_qvriResizeGetBufSize(from, to, 1, qvriInterLinear, &bytes);
    qvr8u* buffer = Morven_qvrsMalloc_8u(bytes);
    Morven_qvriResizeSqrPixel_8u_C1R(src, size, sizeof src, from, dst, sizeof dst, to, 2, 1, 0, 0, qvriInterLinear,
                                     buffer);
    EXPECT(dst, 0, 25, 75, 100);
    Morven_qvrsFree(buffer);
}

EXAMPLE(qvriResize_8u_C1R)
{
    const qvr8u src[] = {0, 100}; // two pixels in a row
    const qvriSize size = {2, 1}, twice = {4, 1};
    const qvriRect all = {0, 0, 2, 1};
    qvr8u dst[4];
    Morven_qvriResize_8u_C1R(src, size, sizeof src, all, dst, sizeof dst, twice, 2, 1, qvriInterLinear);
    EXPECT(dst, 0, 25, 75, 100);
}

EXAMPLE(qvriResizeSqrPixel_8u_C4R)
{
    const qvr8u src[] = {0, 10, 20, 255, 100, 30, 20, 255}; // two pixels in a row
    const qvriSize size = {2, 1};
    const qvriRect from = {0, 0, 2, 1}, to = {0, 0, 4, 1};
    qvr8u dst[16];
    int bytes;
    Morven_qvriResizeGetBufSize(from, to, 4, qvriInterLinear, &bytes);
    qvr8u* buffer = Morven_qvrsMalloc_8u(bytes);
    Morven_qvriResizeSqrPixel_8u_C4R(src, size, sizeof src, from, dst, sizeof dst, to, 2, 1, 0, 0, qvriInterLinear,
                                     buffer);
    EXPECT(dst, 0, 10, 20, 255, 25, 15, 20, 255, 75, 25, 20, 255, 100, 30, 20, 255);
    Morven_qvrsFree(buffer);
}

EXAMPLE(qvriResize_8u_C4R)
{
    const qvr8u src[] = {0, 10, 20, 255, 100, 30, 20, 255}; // two pixels in a row
    const qvriSize size = {2, 1}, twice = {4, 1};
    const qvriRect all = {0, 0, 2, 1};
    qvr8u dst[16];
    Morven_qvriResize_8u_C4R(src, size, sizeof src, all, dst, sizeof dst, twice, 2, 1, qvriInterLinear);
    EXPECT(dst, 0, 10, 20, 255, 25, 15, 20, 255, 75, 25, 20, 255, 100, 30, 20, 255);
}

EXAMPLE(qvriResizeSqrPixel_32f_C1R)
{
    const qvr32f src[] = {0, 100}; // two pixels in a row
    const qvriSize size = {2, 1};
    const qvriRect from = {0, 0, 2, 1}, to = {0, 0, 4, 1};
    qvr32f dst[4];
    int bytes;
    Morven_qvriResizeGetBufSize(from, to, 1, qvriInterLinear, &bytes);
    qvr8u* buffer = Morven_qvrsMalloc_8u(bytes);
    Morven_qvriResizeSqrPixel_32f_C1R(src, size, sizeof src, from, dst, sizeof dst, to, 2, 1, 0, 0, qvriInterLinear,
                                      buffer);
    EXPECT(dst, 0, 25, 75, 100);
    Morven_qvrsFree(buffer);
}

EXAMPLE(qvriResize_32f_C1R)
{
    const qvr32f src[] = {0, 100}; // two pixels in a row
    const qvriSize size = {2, 1}, twice = {4, 1};
    const qvriRect all = {0, 0, 2, 1};
    qvr32f dst[4];
    Morven_qvriResize_32f_C1R(src, size, sizeof src, all, dst, sizeof dst, twice, 2, 1, qvriInterLinear);
    EXPECT(dst, 0, 25, 75, 100);
}

EXAMPLE(qvriResizeSqrPixel_64f_C1R)
{
    const qvr64f src[] = {0, 100}; // two pixels in a row
    const qvriSize size = {2, 1};
    const qvriRect from = {0, 0, 2, 1}, to = {0, 0, 4, 1};
    qvr64f dst[4];
    int bytes;
    Morven_qvriResizeGetBufSize_64f(from, to, 1, qvriInterLinear, &bytes);
    qvr8u* buffer = Morven_qvrsMalloc_8u(bytes);
    Morven_qvriResizeSqrPixel_64f_C1R(src, size, sizeof src, from, dst, sizeof dst, to, 2, 1, 0, 0, qvriInterLinear,
                                      buffer);
    EXPECT(dst, 0, 25, 75, 100);
    Morven_qvrsFree(buffer);
}

EXAMPLE(qvriAddC_8u_C1IRSfs)
{
    qvr8u image[] = {10, 20, 30, 250};
    const qvriSize size = {2, 2};
    Morven_qvriAddC_8u_C1IRSfs(10, image, 2, size, 0);
    EXPECT(image, 20, 30, 40, 255);
}

EXAMPLE(qvriAddC_16u_C1IRSfs)
{
    qvr16u image[] = {10, 20, 30, 65530};
    const qvriSize size = {2, 2};
    Morven_qvriAddC_16u_C1IRSfs(10, image, 4, size, 0); // rows are 4 bytes apart
    EXPECT(image, 20, 30, 40, 65535);
}

EXAMPLE(qvriSet_16u_C1R)
{
    qvr16u image[] = {1, 1, 1, 1, 1, 1};
    const qvriSize size = {2, 2};
    Morven_qvriSet_16u_C1R(7, image, 6, size); // rows of three, two of which are set
    EXPECT(image, 7, 7, 1, 7, 7, 1);
}

EXAMPLE(qvriCopy_16u_C1MR)
{
    const qvr16u src[] = {1, 2, 3, 4};
    const qvr8u mask[] = {255, 0, 0, 255};
    qvr16u dst[] = {0, 0, 0, 0};
    const qvriSize size = {2, 2};
    Morven_qvriCopy_16u_C1MR(src, 4, dst, 4, size, mask, 2);
    EXPECT(dst, 1, 0, 0, 4);
}

EXAMPLE(qvriConvert_8u16u_C1R)
{
    const qvr8u src[] = {1, 2, 3, 255};
    qvr16u dst[4];
    const qvriSize size = {2, 2};
    Morven_qvriConvert_8u16u_C1R(src, 2, dst, 4, size);
    EXPECT(dst, 1, 2, 3, 255);
}

EXAMPLE(qvriConvert_8u16s_C1R)
{
    const qvr8u src[] = {1, 2, 3, 255};
    qvr16s dst[4];
    const qvriSize size = {2, 2};
    Morven_qvriConvert_8u16s_C1R(src, 2, dst, 4, size);
    EXPECT(dst, 1, 2, 3, 255);
}

EXAMPLE(qvriLUTPalette_8u_C1R)
{
    const qvr8u src[] = {0, 1, 2, 3};
    const qvr8u table[] = {10, 20, 30, 40}; // two bits of a pixel count
    qvr8u dst[4];
    const qvriSize size = {2, 2};
    Morven_qvriLUTPalette_8u_C1R(src, 2, dst, 2, size, table, 2);
    EXPECT(dst, 10, 20, 30, 40);
}

EXAMPLE(qvriLUTPalette_8u32u_C1R)
{
    const qvr8u src[] = {0, 1, 2, 3};
    const qvr32u table[] = {10, 20, 30, 40}; // two bits of a pixel count
    qvr32u dst[4];
    const qvriSize size = {2, 2};
    Morven_qvriLUTPalette_8u32u_C1R(src, 2, dst, 8, size, table, 2);
    EXPECT(dst, 10, 20, 30, 40);
}

EXAMPLE(qvriLUTPalette_16u8u_C1R)
{
    const qvr16u src[] = {0, 1, 2, 3};
    const qvr8u table[] = {10, 20, 30, 40}; // two bits of a pixel count
    qvr8u dst[4];
    const qvriSize size = {2, 2};
    Morven_qvriLUTPalette_16u8u_C1R(src, 4, dst, 2, size, table, 2);
    EXPECT(dst, 10, 20, 30, 40);
}

EXAMPLE(qvriLUTPalette_16u32u_C1R)
{
    const qvr16u src[] = {0, 1, 2, 3};
    const qvr32u table[] = {10, 20, 30, 40}; // two bits of a pixel count
    qvr32u dst[4];
    const qvriSize size = {2, 2};
    Morven_qvriLUTPalette_16u32u_C1R(src, 4, dst, 8, size, table, 2);
    EXPECT(dst, 10, 20, 30, 40);
}

EXAMPLE(qvriBlockMinMax_16s_C1R)
{
    const qvr16s src[] = {1, 2, 3, 4, 5, 6, -7, 8}; // two rows of four
    const qvriSize size = {4, 2}, block = {2, 2};
    qvr16s least[2], most[2], leastOfAll, mostOfAll;
    Morven_qvriBlockMinMax_16s_C1R(src, 8, size, least, 4, most, 4, block, &leastOfAll, &mostOfAll);
    EXPECT(least, 1, -7);
    EXPECT(most, 6, 8);
    EXPECT_VALUE(leastOfAll, -7);
    EXPECT_VALUE(mostOfAll, 8);
}

EXAMPLE(qvriSplitRow_TIFF_16u8u_C1)
{
    const qvr8u samples[] = {0x34, 0x12, 0x78, 0x56}; // 0x1234, 0x5678
    qvr8u high[2], low[2];
    qvr8u* planes[] = {high, low};
    Morven_qvriSplitRow_TIFF_16u8u_C1(samples, planes, 2);
    EXPECT(high, 0x12, 0x56);
    EXPECT(low, 0x34, 0x78);
}

EXAMPLE(qvriJoinRow_TIFF_8u16u_C1)
{
    qvr8u high[] = {0x12, 0x56}, low[] = {0x34, 0x78}, samples[4];
    qvr8u* planes[] = {high, low};
    Morven_qvriJoinRow_TIFF_8u16u_C1(planes, samples, 2);
    EXPECT(samples, 0x34, 0x12, 0x78, 0x56);
}
