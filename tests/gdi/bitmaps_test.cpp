#include "gdi/desktop.h"

#include <gtest/gtest.h>

namespace {

const std::string SAMPLES = TIFF_SOURCE_DIR "/samples/";

constexpr uint32_t WHITE = 0xFFFFFF, BLACK = 0;

TiffPage Bilevel(const Bytes& rows, uint32_t width, uint32_t height)
{
    return TiffPage::Picture(width, height, 1, 1).Strips({rows});
}

TiffPage Colour(uint32_t photometric, uint32_t samples, const Bytes& row, uint32_t width)
{
    return TiffPage::Picture(width, 1, 8, 1, photometric).Short(277, {samples}).Strips({row});
}

TiffPage PalettePage()
{
    std::vector<uint32_t> map(3 * 16);
    map[5] = 0x1200, map[16 + 5] = 0x3400, map[32 + 5] = 0x5600;
    map[15] = 0xFF00, map[31] = 0x8000, map[47] = 0x0100;
    return TiffPage::Picture(3, 1, 4, 1, 3).Short(320, map).Strips({Hex("5F00")});
}

} // namespace

TEST(Bitmaps, OfTheSamplesAreTheirDibs)
{
    static constexpr struct {
        const char* name;
        uint32_t pages;
        bool upsideDown;
    } rows[] = {
        {"fax-g3-1d.tif", 2, false},    {"fax-g3-2d.tif", 1, false},    {"fax-g3-2d-strips.tif", 1, false},
        {"fax-g4.tif", 3, false},       {"fax-mh.tif", 2, false},       {"codings.tif", 9, false},
        {"upside-down.tif", 3, true},   {"pictures-lzw.tif", 4, false}, {"pictures-packed.tif", 3, false},
        {"truncated-g4.tif", 1, false},
    };
    for (const auto& [name, pages, upsideDown] : rows)
        for (uint32_t page = 0; page < pages; ++page) {
            SCOPED_TRACE(testing::Message() << name << " page " << page);
            const std::string path = SAMPLES + name;
            const Picture dib = TakeDib(LoadTiffIntoDIB(path.c_str(), page, 0));
            const uint32_t error = TiffError();
            ASSERT_FALSE(dib.pixels.empty());
            const Picture bitmap = TakeBitmap(LoadTiffIntoBitmap(path.c_str(), page, 0));
            EXPECT_EQ(TiffError(), error);
            EXPECT_EQ(bitmap.width, dib.width);
            EXPECT_EQ(bitmap.height, dib.height);
            // Rows that could not be decoded are as GDI makes them.
            if (error == 0) {
                EXPECT_TRUE(bitmap == (upsideDown ? dib.UpsideDown() : dib));
            }
        }
}

TEST(Bitmaps, OfEveryDepthShowWhatTheHeaderSays)
{
    const struct {
        const char* row;
        TiffPage page;
        std::vector<uint32_t> pixels;
        uint32_t error = 0;
    } rows[] = {
        {"bilevel",
         Bilevel(Hex("8080 0000"), 9, 2),
         {BLACK, WHITE, WHITE, WHITE, WHITE, WHITE, WHITE, WHITE, BLACK, WHITE, WHITE, WHITE, WHITE, WHITE,
          WHITE, WHITE, WHITE, WHITE}},
        {"bilevel, black is 0", Bilevel(Hex("80"), 2, 1).Short(262, {1}), {WHITE, BLACK}},
        {"orientation 4", Bilevel(Hex("80 00"), 1, 2).Short(274, {4}), {BLACK, WHITE}},
        {"4-bit palette", PalettePage(), {0x123456, 0xFF8001, BLACK}},
        {"8-bit grey", TiffPage::Picture(3, 1, 8, 1, 1).Strips({Hex("00807F")}), {0, 0x808080, 0x7F7F7F}},
        {"24 bits", Colour(2, 3, Hex("112233 AABBCC"), 2), {0x112233, 0xAABBCC}},
        {"16 bits, five for each colour",
         TiffPage::Picture(3, 1, 16, 1, 1).Strips({Hex("FF7F 1F00 007C")}),
         {WHITE, 0x0000FF, 0xFF0000}},
        {"Y, Cb, Cr", Colour(6, 3, Hex("008080 4C55FF"), 2), {0x000000, 0xFE0000}},
        {"CMYK, shown as four bytes", Colour(5, 4, Hex("11223300 AABBCC00"), 2), {0x332211, 0xCCBBAA}},
    };
    for (const auto& [row, page, pixels, error] : rows) {
        SCOPED_TRACE(row);
        const TempFile file(OnePage(page));
        EXPECT_EQ(TakeBitmap(LoadTiffFileIntoBitmap(file.Path(), 0, 0)).pixels, pixels);
        EXPECT_EQ(TiffError(), error);
        const MemoryTiff memory(OnePage(page));
        EXPECT_EQ(TakeBitmap(LoadTiffChainIntoBitmap(memory.file, 0)).pixels, pixels);
    }
}

TEST(Bitmaps, OfTwoColoursAreMonochrome)
{
    const struct {
        TiffPage page;
        WORD bits;
    } rows[] = {{Bilevel({0x80}, 1, 1), 1}, {Colour(2, 3, Bytes(3), 1), 0}};
    HDC screen = GetDC(nullptr);
    const auto screenBits = static_cast<WORD>(GetDeviceCaps(screen, BITSPIXEL));
    ReleaseDC(nullptr, screen);
    for (const auto& [page, bits] : rows) {
        const TempFile file(OnePage(page));
        HBITMAP bitmap = LoadTiffIntoBitmap(file.Path(), 0, 0);
        BITMAP description{};
        GetObjectA(bitmap, sizeof(description), &description);
        EXPECT_EQ(description.bmBitsPixel, bits ? bits : screenBits);
        DeleteObject(bitmap);
    }
}

TEST(Bitmaps, FailuresHaveTheirErrors)
{
    const Bytes jpeg = OnePage(TiffPage::Picture(8, 1, 8, 7).Strips({{0}}));
    const TempFile good(OnePage(Bilevel({0x80}, 1, 1))), jpegFile(jpeg);
    const TempFile narrow(OnePage(Bilevel({0x80}, 0, 1)));
    const TempFile tall(OnePage(Bilevel({0x80}, 1, 1).Long(257, {0x80000001})));
    const TempFile shared(OnePage(Colour(6, 3, Bytes(12), 2).Short(530, {2, 2})));
    const TempFile planes(OnePage(Colour(2, 3, Bytes(3), 1).Short(284, {2})));
    const TempFile early(
        OnePage(TiffPage::Picture(8, 4, 1, 4).Strips({Bits("001 1000 11 1 111 000000000001000000000001")})));
    const struct {
        const char* row;
        const char* path;
        uint32_t page;
        uint32_t error;
    } rows[] = {
        {"no such file", "no-such-file.tif", 0, 6},
        {"no such page", good.Path(), 1, 3},
        {"no header", planes.Path(), 0, 16},
        {"shared chroma", shared.Path(), 0, 16},
        {"no width", narrow.Path(), 0, 1},
        {"a height below 0", tall.Path(), 0, 1},
        {"early end of the facsimile block, kept in a DIB only", early.Path(), 0, 20},
        {"JPEG that is none", jpegFile.Path(), 0, 12},
    };
    for (const auto& [row, path, page, error] : rows) {
        SCOPED_TRACE(row);
        SetTiffError(9);
        EXPECT_EQ(Refusal(LoadTiffIntoBitmap(path, page, 0)), error);
        EXPECT_EQ(Refusal(LoadTiffFileIntoBitmap(path, page, 0)), error);
    }
    EXPECT_EQ(LoadTiffChainIntoBitmap(nullptr, 0), nullptr);
    // Nothing is said of the page before.
    DeleteObject(LoadTiffIntoBitmap(good.Path(), 0, 0));
    TiffDecodeQuality quality = {};
    EXPECT_TRUE(GetTiffDecodeQuality(&quality) && quality.rows == 1);
    EXPECT_EQ(LoadTiffIntoBitmap("no-such-file.tif", 0, 0), nullptr);
    EXPECT_TRUE(GetTiffDecodeQuality(&quality) && quality.rows == 0);
    const MemoryTiff memory(jpeg);
    EXPECT_EQ(Refusal(LoadTiffChainIntoBitmap(memory.file, 0)), 12u);
}

TEST(Bitmaps, TheWaitCursorGoesAgain)
{
    const TempFile good(OnePage(Bilevel({0x80}, 1, 1)));
    const TempFile damaged(OnePage(TiffPage::Picture(8, 4, 1, 4).Strips({Bits("1 00000001")})));
    const TempFile jpeg(OnePage(TiffPage::Picture(8, 1, 8, 7).Strips({{0}})));
    HCURSOR arrow = LoadCursorA(nullptr, MAKEINTRESOURCEA(32512));
    for (const TempFile* file : {&good, &damaged, &jpeg}) {
        SetCursor(arrow);
        TakeBitmap(LoadTiffIntoBitmap(file->Path(), 0, 0));
        EXPECT_EQ(GetCursor(), arrow);
        TakeDib(LoadTiffIntoDIB(file->Path(), 0, 0));
        EXPECT_EQ(GetCursor(), arrow);
    }
    static HCURSOR seen = nullptr;
    const TiffProgress look = [](uint32_t, uint32_t, uint64_t) -> int32_t {
        seen = GetCursor();
        return 1;
    };
    const NewFile copy;
    EXPECT_EQ(MergeTiffFiles(copy.Path(), good.Path(), look, 0), 1);
    EXPECT_EQ(seen, WaitCursor());
    EXPECT_EQ(GetCursor(), arrow);
    HGLOBAL dib = LoadTiffIntoDIB(good.Path(), 0, 0);
    EXPECT_EQ(SaveDIBInTiffFile(copy.Path(), dib, 208, 0), 1);
    EXPECT_EQ(GetCursor(), arrow);
    GlobalFree(dib);
    static constexpr uint8_t grey[3] = {100, 100, 100};
    EXPECT_EQ(FindBlankPage(copy.Path(), 0, 0, grey), 0u);
    EXPECT_EQ(GetCursor(), arrow);
    const MemoryTiff notLoaded(OnePage(Bilevel({0x80}, 1, 1)));
    DropTiffImage(notLoaded.file, 0);
    EXPECT_EQ(Refusal(LoadTiffChainIntoBitmap(notLoaded.file, 0)), 27u);
    EXPECT_EQ(GetCursor(), WaitCursor()); // wanted
    SetCursor(arrow);
}

TEST(Palettes, HoldTheColoursOfThePage)
{
    const struct {
        const char* row;
        TiffPage page;
        UINT count;
        UINT index;
        uint32_t colour; // red first
    } rows[] = {
        {"4-bit palette", PalettePage(), 16, 5, 0x123456},
        {"8-bit grey", TiffPage::Picture(1, 1, 8, 1, 1).Strips({{0}}), 256, 200, 0xC8C8C8},
        {"16-bit grey", TiffPage::Picture(1, 1, 16, 1, 1).Strips({{0}}), 256, 3, 0x030303},
        {"bilevel", Bilevel({0x80}, 1, 1), 0, 0, 0},
        {"24 bits", Colour(2, 3, Bytes(3), 1), 0, 0, 0},
    };
    for (const auto& [row, page, count, index, colour] : rows) {
        SCOPED_TRACE(row);
        const TempFile file(OnePage(page));
        HPALETTE palette = GetTiffImagePalette(file.Path(), 0);
        ASSERT_EQ(palette != nullptr, count != 0);
        if (!palette)
            continue;
        PALETTEENTRY entry{};
        EXPECT_EQ(GetPaletteEntries(palette, 0, 0, nullptr), count);
        GetPaletteEntries(palette, index, 1, &entry);
        EXPECT_EQ(static_cast<uint32_t>(entry.peRed << 16 | entry.peGreen << 8 | entry.peBlue), colour);
        EXPECT_TRUE(DeleteObject(palette));
        EXPECT_EQ(Refusal(GetTiffImagePalette(file.Path(), 1)), 3u);
    }
    EXPECT_EQ(Refusal(GetTiffImagePalette("no-such-file.tif", 0)), 6u);
}
