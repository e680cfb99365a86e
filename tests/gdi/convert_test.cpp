// Linked with the library's objects: these conversions are not exported.
#include "gdi/desktop.h"
#include "raster/convert_gdi.h"
#include "raster/palette_gdi.h"
#include "support/pictures.h"

#include <gtest/gtest.h>

using namespace tiff;

TEST(Convert, DibsBecomeBitmapsAndComeBack)
{
    std::vector<uint32_t> wideColours(256);
    wideColours[7] = 0x123456;
    const std::vector<uint32_t> blackWhite = {0, 0xFFFFFF}, whiteBlack = {0xFFFFFF, 0};
    const struct {
        const char* row;
        DibPicture dib;
        UINT colours;
        WORD bits; // of the DIB that comes back
        std::vector<uint32_t> pixels;
    } rows[] = {
        {"bilevel", {2, 2, 1, blackWhite, Hex("80000000 40000000")}, 2, 1, {0, 0xFFFFFF, 0xFFFFFF, 0}},
        {"bilevel, white first", {2, 1, 1, whiteBlack, Hex("80000000")}, 2, 1, {0, 0xFFFFFF}},
        {"256 colours", {2, 1, 8, wideColours, Hex("07000000")}, 256, 24, {0x123456, 0}},
        {"24 bits", {1, 2, 24, {}, Hex("01020300 04050600")}, 0, 24, {0x060504, 0x030201}},
        {"from the top", {1, 2, 24, {}, Hex("01020300 04050600"), {}, 0, true}, 0, 24, {0x030201, 0x060504}},
    };
    for (const auto& [row, dib, colours, bits, pixels] : rows) {
        SCOPED_TRACE(row);
        const Block block(PackedDib(dib));
        GdiObject<HPALETTE> palette;
        const GdiObject<HBITMAP> bitmap(DibToBitmap(block.Get(), palette));
        EXPECT_EQ(Look(bitmap.Get()).pixels, pixels);
        EXPECT_EQ(palette ? GetPaletteEntries(palette.Get(), 0, 0, nullptr) : 0, colours);
        HGLOBAL back = BitmapToDib(bitmap.Get(), palette.Get());
        ASSERT_NE(back, nullptr);
        const Bytes start = Content(back, sizeof(BITMAPINFOHEADER));
        EXPECT_EQ(reinterpret_cast<const BITMAPINFOHEADER*>(start.data())->biBitCount, bits);
        EXPECT_EQ(TakeDib(back).pixels, pixels);
    }
}

TEST(Convert, FailuresHaveTheirErrors)
{
    Bytes space = PackedDib({1, 1, 24, {}, Bytes(4)});
    space[16] = 8;
    const struct {
        const char* row;
        Bytes dib;
        uint32_t error;
    } rows[] = {
        {"no rows", PackedDib({1, 1, 24, {}, {}}), 30},
        {"a colour space", space, 30},
        {"3 bits", PackedDib({1, 1, 3, {}, Bytes(4)}), 16},
    };
    for (const auto& [row, dib, error] : rows) {
        SCOPED_TRACE(row);
        const Block block(dib);
        GdiObject<HPALETTE> palette;
        SetTiffError(0);
        EXPECT_EQ(Refusal(DibToBitmap(block.Get(), palette)), error);
    }
    GdiObject<HPALETTE> palette;
    EXPECT_EQ(DibToBitmap(nullptr, palette), nullptr);
    EXPECT_EQ(Refusal(BitmapToDib(nullptr, nullptr)), 34u);
}
