#include "support/leaks.h"
#include "support/pictures.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

// A DIB as readable text: header fields and the pixel bytes, bottom row first.
struct Dib {
    uint32_t error;
    bool loaded = false;
    BITMAPINFOHEADER header{};
    Bytes pixels{};
};

Dib Take(HGLOBAL block)
{
    Dib dib{TiffError(), block != nullptr};
    if (!block)
        return dib;
    const auto* start = static_cast<const uint8_t*>(GlobalLock(block));
    std::memcpy(&dib.header, start, sizeof(dib.header));
    const uint8_t* pixels = start + 40 + dib.header.biClrUsed * 4;
    dib.pixels.assign(pixels, pixels + dib.header.biSizeImage);
    EXPECT_GE(GlobalSize(block), 40 + dib.header.biClrUsed * 4 + dib.header.biSizeImage);
    GlobalUnlock(block);
    GlobalFree(block);
    return dib;
}

} // namespace

TEST(LoadDib, PagesOfEveryKindBecomeDibs)
{
    const auto rgb = [](uint32_t photometric, const Bytes& pixels, uint32_t samples = 3) {
        return TiffPage::Picture(1, 2, 8, 1, photometric).Short(277, {samples}).Strips({pixels});
    };
    static constexpr uint32_t NONE = 0;
    const struct {
        const char* row;
        TiffPage page;
        uint16_t bits;
        uint32_t colours;
        Bytes pixels;
        uint32_t error = NONE;
        bool loaded = true;
    } rows[] = {
        {"bilevel", TiffPage::Picture(9, 2, 1, 1).Strips({Hex("8180 0F00")}), 1, 2, Hex("0F000000 81800000")},
        {"upside down", TiffPage::Picture(9, 2, 1, 1).Short(274, {4}).Strips({Hex("8180 0F00")}), 1, 2,
         Hex("81800000 0F000000")},
        {"4 bits", TiffPage::Picture(3, 1, 4, 1, 1).Strips({Hex("1230")}), 4, 16, Hex("12300000")},
        {"12-bit grey", TiffPage::Picture(1, 1, 16, 1, 1).Strips({Hex("FF0F")}), 8, 256, Hex("FF000000")},
        {"12-bit grey by its largest sample",
         TiffPage::Picture(1, 1, 16, 1, 1).Short(281, {4095}).Strips({Hex("FF0F")}), 8, 256, Hex("FF000000")},
        {"16-bit grey", TiffPage::Picture(1, 1, 16, 1, 1).Short(281, {4096}).Strips({Hex("FF0F")}), 8, 256,
         Hex("0F000000")},
        {"grey with a second sample",
         TiffPage::Picture(2, 1, 8, 1, 1).Short(277, {2}).Strips({Hex("11FF 22FF")}), 8, 256,
         Hex("11220000")},
        {"RGB", rgb(2, Hex("010203 040506")), 24, 0, Hex("06050400 03020100")},
        {"CMYK", rgb(5, Hex("FF000000 00000000"), 4), 24, 0, Hex("FFFFFF00 FFFF0000")},
        {"YCbCr", rgb(6, Hex("808080 808080")), 24, 0, Hex("807F8000 807F8000")},
        {"LAB by the ordinary way", rgb(8, Hex("010203 040506")), 24, 0, Hex("06050400 03020100")},
        {"YCbCr with shared chroma", rgb(6, Bytes(6)).Short(530, {2, 2}), 0, 0, {}, 16, false},
        {"RGB and alpha", rgb(2, Bytes(8), 4), 0, 0, {}, 16, false},
        {"damaged from the third row",
         TiffPage::Picture(8, 4, 1, 4).Strips({Bits("001 1000 11 1 111 000000000001000000000001")}), 1, 2,
         Hex("00000000 00000000 18000000 18000000"), 20},
        {"damaged beyond use",
         TiffPage::Picture(8, 4, 1, 4).Strips({Bits("1 00000001")}),
         0,
         0,
         {},
         12,
         false},
    };
    for (const auto& [row, page, bits, colours, pixels, error, loaded] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        TempFile file(OnePage(page));
        SetTiffError(9);
        const Dib dib = Take(LoadTiffIntoDIB(file.Path(), 0, 0));
        EXPECT_EQ(dib.loaded, loaded);
        EXPECT_EQ(dib.error, error);
        EXPECT_EQ(dib.header.biBitCount, bits);
        EXPECT_EQ(dib.header.biClrUsed, colours);
        EXPECT_EQ(dib.pixels, pixels);
        MemoryTiff memory(OnePage(page));
        EXPECT_EQ(Take(LoadTiffChainIntoDIB(memory.file, 0)).pixels, pixels);
    }
}

TEST(LoadDib, FailuresLeaveNothingBehind)
{
    NoLeaks leaks;
    const Bytes good = OnePage(TiffPage::Picture(8, 1, 1, 1).Strips({{0x18}}));
    const Bytes jpeg = OnePage(TiffPage::Picture(8, 1, 8, 7).Strips({{0}}));
    const Bytes huge = OnePage(TiffPage::Picture(0, 0, 8, 1, 2).Short(277, {3}).Strips({{0}}));
    const Bytes large = OnePage(TiffPage()
                                    .Long(256, {65535})
                                    .Long(257, {65535})
                                    .Short(258, {8})
                                    .Short(259, {1})
                                    .Short(262, {2})
                                    .Short(277, {3})
                                    .Strips({{0}}));
    TempFile goodFile(good), jpegFile(jpeg), hugeFile(huge), largeFile(large);
    const struct {
        const char* row;
        const char* path;
        uint32_t page;
        int32_t dialog;
        uint32_t error;
    } rows[] = {
        {"no such file", "no-such-file.tif", 0, 0, 6},
        {"no such page", goodFile.Path(), 1, 0, 3},
        {"no dialogs library", goodFile.Path(), 0, 1, 28},
        {"JPEG that is none", jpegFile.Path(), 0, 0, 12},
        {"no width", hugeFile.Path(), 0, 0, 10},
        {"more than a DIB can hold", largeFile.Path(), 0, 0, 1},
    };
    for (const auto& [row, path, page, dialog, error] : rows) {
        SCOPED_TRACE(row);
        EXPECT_EQ(Refusal(LoadTiffIntoDIB(path, page, dialog)), error);
    }
    EXPECT_EQ(Refusal(LoadNonRGBTiffIntoDIB(jpegFile.Path(), 0)), 9991u);
    EXPECT_EQ(LoadTiffChainIntoDIB(nullptr, 0), nullptr);
}

TEST(LoadDib, ColourSpacesAreDeliveredUnconverted)
{
    static constexpr struct {
        uint32_t photometric, space;
    } rows[] = {{6, 0}, {7, 7}, {8, 8}, {17, 17}, {18, 0}};
    for (const auto& [photometric, space] : rows) {
        SCOPED_TRACE(photometric);
        TempFile file(
            OnePage(TiffPage::Picture(1, 1, 8, 1, photometric).Short(277, {3}).Strips({Hex("010203")})));
        const Dib dib = Take(LoadNonRGBTiffIntoDIB(file.Path(), 0));
        EXPECT_EQ(dib.header.biCompression, space);
        if (space) {
            EXPECT_EQ(dib.pixels, Hex("03020100"));
        }
        EXPECT_EQ(GetTiffColorSpace(file.Path(), 0), space);
        EXPECT_EQ(Take(LoadTiffIntoDIB(file.Path(), 0, 0)).header.biCompression, 0u);
        EXPECT_EQ(GetTiffColorSpace(file.Path(), 1), 0xFFFFFFFFu);
    }
    EXPECT_EQ(GetTiffColorSpace(nullptr, 0), 0xFFFFFFFFu);
    EXPECT_EQ(GetTiffColorSpace("no-such-file.tif", 0), 0xFFFFFFFFu);
}
