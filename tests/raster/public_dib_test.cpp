// The inline functions of the public header over DIBs of every form.
#include "support/pictures.h"
#include "tiff/tiff.h"

#include <gtest/gtest.h>

TEST(PublicDib, FindsRowsColoursAndBlack)
{
    const Bytes two = Hex("80000000 00000000"), masks = Hex("00F80000 E0070000 1F000000 01020304");
    const Bytes core = Hex("0C000000 0900 0200 0100 0100 000000 FFFFFF 80000000 00000000");
    Bytes fields = PackedDib({1, 1, 16, {}, masks});
    fields[offsetof(BITMAPINFOHEADER, biCompression)] = 3;
    const struct {
        const char* row;
        Bytes dib;
        size_t bits, top;
        uint32_t stride, black;
    } rows[] = {
        {"two colours, black second", PackedDib({9, 2, 1, {0xFFFFFF, 0}, two}), 48, 52, 4, 1},
        {"two colours, black first", PackedDib({9, 2, 1, {0x000080, 0x00FF00}, two}), 48, 52, 4, 0},
        {"rows from the top", PackedDib({9, 2, 1, {0, 0}, two, {0, 0}, 0, true}), 48, 48, 4, 0},
        {"the short header", core, 18, 22, 4, 0},
        {"fewer colours than the depth has", PackedDib({1, 2, 8, {0, 1, 2}, two, {0, 0}, 3}), 52, 56, 4, 0},
        {"masks before the pixels", fields, 52, 52, 4, 0},
    };
    for (const auto& [row, dib, bits, top, stride, black] : rows) {
        SCOPED_TRACE(row);
        Bytes copy = dib;
        uint8_t* header = copy.data();
        EXPECT_EQ(TiffDIBBits(header) - header, static_cast<std::ptrdiff_t>(bits));
        EXPECT_EQ(TiffDIBRow(header, 0) - header, static_cast<std::ptrdiff_t>(top));
        EXPECT_EQ(TiffDIBStride(header), stride);
        if (TiffDIBDepth(header) == 1) {
            EXPECT_EQ(TiffDIBBlack(header), black);
        }
    }
}
