// Linked with the library's objects: these conversions are not exported.
#include "gdi/desktop.h"
#include "raster/convert_gdi.h"
#include "raster/palette_gdi.h"
#include "raster/save_settings.h"

#include <cstring>
#include <gtest/gtest.h>

using namespace tiff;

namespace {

// A packed DIB with these colours (blue, green, red) and rows.
Bytes Dib(int32_t width, int32_t height, uint16_t bits, const Bytes& colours, const Bytes& rows)
{
    BITMAPINFOHEADER header{sizeof(header), width, height, 1, bits, BI_RGB, 0, 0, 0, 0, 0};
    header.biClrUsed = static_cast<uint32_t>(colours.size() / 4);
    const auto* start = reinterpret_cast<const uint8_t*>(&header);
    return Bytes(start, start + sizeof(header)) + colours + rows;
}

} // namespace

TEST(Convert, DibsBecomeBitmapsAndComeBack)
{
    Bytes wideColours(256 * 4);
    wideColours[7 * 4] = 0x56, wideColours[7 * 4 + 1] = 0x34, wideColours[7 * 4 + 2] = 0x12;
    const struct {
        const char* row;
        Bytes dib;
        UINT colours;
        WORD bits; // of the DIB that comes back
        std::vector<uint32_t> pixels;
    } rows[] = {
        {"bilevel",
         Dib(2, 2, 1, Hex("00000000 FFFFFF00"), Hex("80000000 40000000")),
         2,
         1,
         {0, 0xFFFFFF, 0xFFFFFF, 0}},
        {"bilevel, white first",
         Dib(2, 1, 1, Hex("FFFFFF00 00000000"), Hex("80000000")),
         2,
         1,
         {0, 0xFFFFFF}},
        {"256 colours", Dib(2, 1, 8, wideColours, Hex("07000000")), 256, 24, {0x123456, 0}},
        {"24 bits", Dib(1, 2, 24, {}, Hex("01020300 04050600")), 0, 24, {0x060504, 0x030201}},
        {"24 bits from the top", Dib(1, -2, 24, {}, Hex("01020300 04050600")), 0, 24, {0x030201, 0x060504}},
    };
    for (const auto& [row, dib, colours, bits, pixels] : rows) {
        SCOPED_TRACE(row);
        const Block block(dib);
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
    Bytes space = Dib(1, 1, 24, {}, Bytes(4));
    space[16] = 8;
    const struct {
        const char* row;
        Bytes dib;
        uint32_t error;
    } rows[] = {
        {"no rows", Dib(1, 1, 24, {}, {}), 30},
        {"a colour space", space, 30},
        {"3 bits", Dib(1, 1, 3, {}, Bytes(4)), 16},
        {"no depth", Dib(1, 0x7FFFFFFF, 0, {}, {}), 16},
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
