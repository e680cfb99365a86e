#include "support/leaks.h"
#include "support/target.h"
#include "support/tiff_builder.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

TiffPage Plain()
{
    return TiffPage::Picture(8, 1, 1, 1).Strips({{0}});
}

// Of the table's header and colours, blue first.
Bytes ColourTable(HGLOBAL file)
{
    HGLOBAL block = GetTiffRGBQuad(file, 0);
    Bytes table = Content(block, GlobalSize(block));
    GlobalFree(block);
    return table;
}

} // namespace

TEST(Directory, ValuesArriveInTheProcessorsOrderFromEitherByteOrder)
{
    for (const uint16_t order : {uint16_t{TIFF_INTEL}, uint16_t{TIFF_MOTOROLA}}) {
        SCOPED_TRACE(order);
        NoLeaks leaks;
        MemoryTiff opened(OnePage(Plain()
                                      .Short(258 + 1000, {1, 2})
                                      .Short(259 + 1000, {1, 2, 3})
                                      .Rational(282, 200, 3)
                                      .Entry(11000, 11, 1, {1, 2, 3, 4}) // FLOAT: bytes as they lie
                                      .Entry(11001, 4, 0, {7})
                                      .Entry(11002, 1, 3, {9, 8, 7})
                                      .Ascii(11003, "abcdef")
                                      .Entry(347, 7, 5, {1, 2, 3, 4, 5}),
                                  order));
        const HGLOBAL file = opened.file;
        static const struct {
            uint32_t tag, type, count;
            Bytes values;
        } rows[] = {
            {256, 3, 1, Hex("08000000")}, // one SHORT fills four bytes
            {282, 5, 1, Hex("C8000000 03000000")},
            {347, 7, 5, Hex("01 02 03 04 05")}, // JPEG tables are always reported as undefined
            {1258, 3, 2, Hex("0100 0200")},
            {1259, 3, 3, Hex("0100 0200 0300")},
            {11000, 1, 1, Hex("01 02 03 04")},
            {11001, 4, 1, Hex("07000000")},
            {11002, 1, 3, Hex("09 08 07")},
        };
        for (const auto& [tag, type, count, values] : rows) {
            SCOPED_TRACE(tag);
            uint32_t foundType = 0, foundCount = 0;
            const Bytes found = TagValues(file, 0, tag, &foundType, &foundCount);
            EXPECT_EQ(foundType, type);
            EXPECT_EQ(foundCount, count);
            EXPECT_EQ(Part(found, 0, values.size()), values);
        }
        uint32_t value[2] = {0xFFFFFFFF, 0xFFFFFFFF};
        EXPECT_EQ(GetTiffImageInfo(file, 0, 282, value), 1);
        EXPECT_EQ(value[0], 200u);
        EXPECT_EQ(value[1], 3u);
        EXPECT_EQ(TagNumber(file, 0, 256), 8u) << "a SHORT fills a 32-bit value";
        EXPECT_EQ(TagNumber(file, 0, 11002), 0xFFFFFF09u) << "a BYTE fills one byte";
        EXPECT_EQ(TagNumber(file, 0, 11003), 0xFFFFFFFFu) << "text is not a number";

        uint32_t count = 0;
        const Bytes list = TagValues(file, 0, 0, nullptr, &count);
        EXPECT_EQ(count, 15u);
        EXPECT_EQ(Part(list, 0, 8), Hex("00010000 01010000"));
        EXPECT_EQ(Refusal(GetTiffImageInfo(file, 0, 999, value)), 13u);
        EXPECT_EQ(GetTiffImageInfoBuffer(file, 0, 999, nullptr, nullptr, &count), 0);
    }
}

TEST(Directory, OnlyValuesThatDescribeThePictureMustBeThere)
{
    NoLeaks leaks;
    static const struct {
        const char* row;
        uint16_t tag;
        uint32_t tagsLeft; // of 256, 257, 258, 259, 262, 273, 279 and the tag itself
    } rows[] = {{"text is kept, empty", 270, 8}, {"offsets end the directory", 324, 7}};
    for (const auto& [row, tag, tagsLeft] : rows) {
        SCOPED_TRACE(row);
        TiffBuilder builder;
        Bytes file =
            builder.Add(Plain().Entry(tag, tag == 324 ? 4 : 2, 8, std::vector<uint32_t>(8, 65))).Build();
        const size_t entry = builder.directories[0] + 2 + 12u * (tag == 324 ? 7 : 5);
        file[entry + 8 + 3] = 0x7F; // its values are far beyond the end
        TempFile disk(file);
        HGLOBAL tiff = OpenTiffFile(disk.Path(), T_READ);
        EXPECT_EQ(GetTiffImage(tiff, 0), 1);
        EXPECT_EQ(TiffError(), 0u);
        EXPECT_EQ(TagValues(tiff, 0, 0).size(), tagsLeft * 4);
        EXPECT_EQ(TagValues(tiff, 0, tag), tag == 270 ? Bytes(8) : Bytes());
        CloseTiffFile(tiff);
    }
    EXPECT_EQ(IsRequiredTag(273), 1);
    EXPECT_EQ(IsRequiredTag(270), 0);
    EXPECT_EQ(IsRequiredTag(65536 + 273), 0);
}

TEST(Directory, QueriesNeedALoadedPage)
{
    MemoryTiff opened(TiffBuilder().Add(Plain()).Add(Plain()).Build());
    BITMAPINFOHEADER header;
    uint32_t dpi = 1;
    EXPECT_EQ(GetTiffDimensions(opened.file, 1, &header), 27u);
    EXPECT_EQ(GetTiffImageDPI(opened.file, 2, &dpi), 3u);
    EXPECT_EQ(dpi, 0u);
    EXPECT_EQ(GetTiffRGBQuad(opened.file, 1), nullptr);
    EXPECT_EQ(Refusal(GetTiffImage(opened.file, 2)), 3u);
    EXPECT_EQ(GetTiffImage(nullptr, 0), 0);
    EXPECT_EQ(GetTiffImage(opened.file, 0), 1) << "a loaded page stays loaded";
}

TEST(Description, SizeAndDepthFollowTheTags)
{
    static const struct {
        const char* row;
        TiffPage page;
        uint32_t error;
        int32_t width, height;
        uint32_t bits, colours;
    } rows[] = {
        {"bilevel", TiffPage::Picture(17, 5, 1, 1), 0, 17, 5, 1, 2},
        {"length left open", TiffPage::Picture(17, 0, 1, 1), 0, 17, 1000, 1, 2},
        {"nothing but a size", TiffPage().Long(256, {70000}).Long(257, {9}), 0, 70000, 9, 1, 2},
        {"sixteen greys", TiffPage::Picture(3, 5, 4, 1, 1), 0, 3, 5, 4, 16},
        {"16-bit grey", TiffPage::Picture(3, 5, 16, 1, 1), 0, 3, 5, 16, 256},
        {"16 bits of something else", TiffPage::Picture(3, 5, 16, 1, 2), 0, 3, 5, 16, 0},
        {"RGB", TiffPage::Picture(3, 5, 8, 1, 2).Short(277, {3}), 0, 3, 5, 24, 0},
        {"CMYK", TiffPage::Picture(3, 5, 8, 1, 5).Short(277, {4}), 0, 3, 5, 32, 0},
        {"no width", TiffPage().Short(257, {9}), 10, 0, 0, 0, 0},
        {"no length", TiffPage().Short(256, {9}), 10, 0, 0, 0, 0},
        {"2 bits", TiffPage::Picture(3, 5, 2, 1), 16, 0, 0, 0, 0},
        {"48 bits", TiffPage::Picture(3, 5, 16, 1).Short(277, {3}), 16, 0, 0, 0, 0},
        {"bits beyond 32 bits", TiffPage::Picture(3, 5, 8, 1).Long(277, {0x20000001}), 16, 0, 0, 0, 0},
        {"planes", TiffPage::Picture(3, 5, 8, 1).Short(284, {2}), 16, 0, 0, 0, 0},
    };
    for (const auto& [row, page, error, width, height, bits, colours] : rows) {
        SCOPED_TRACE(row);
        MemoryTiff opened(OnePage(page));
        BITMAPINFOHEADER header{};
        EXPECT_EQ(GetTiffDimensions(opened.file, 0, &header), error);
        EXPECT_EQ(TiffError(), error);
        if (error == 0) {
            EXPECT_EQ(header.biSize, 40u);
            EXPECT_EQ(header.biPlanes, 1);
            EXPECT_EQ(header.biWidth, width);
            EXPECT_EQ(header.biHeight, height);
            EXPECT_EQ(header.biBitCount, bits);
            EXPECT_EQ(header.biClrUsed, colours);
            EXPECT_EQ(header.biClrImportant, colours);
        }
    }
}

TEST(Description, ResolutionIsInInchesOrCentimetres)
{
    static const struct {
        const char* row;
        TiffPage page;
        int32_t perMetre;
        uint32_t dpi;
    } rows[] = {
        {"inches by default", TiffPage().Rational(282, 200, 1).Rational(283, 200, 1), 7874, 200 << 16 | 200},
        {"inches", TiffPage().Rational(282, 204, 1).Rational(283, 196, 1).Short(296, {2}), 8031,
         196 << 16 | 204},
        {"no unit counts as inches", TiffPage().Rational(282, 200, 1).Rational(283, 98, 1).Short(296, {1}),
         7874, 98 << 16 | 200},
        {"centimetres", TiffPage().Rational(282, 200, 1).Rational(283, 200, 1).Short(296, {3}), 20000,
         508 << 16 | 508},
        {"denominator 0 counts as 1", TiffPage().Rational(282, 100, 0).Rational(283, 50, 0), 3937,
         50 << 16 | 100},
        {"cut to 16 bits", TiffPage().Rational(282, 65537, 1).Rational(283, 65536, 1), 2580192, 1},
        {"beyond everything", TiffPage().Rational(282, 0xFFFFFFFF, 1).Rational(283, 1, 1), 0x7FFFFFFF,
         1 << 16 | 0xFFFF},
    };
    for (auto [row, page, perMetre, dpi] : rows) {
        SCOPED_TRACE(row);
        MemoryTiff opened(OnePage(page.Short(256, {8}).Short(257, {1})));
        BITMAPINFOHEADER header{};
        uint32_t found = 0;
        EXPECT_EQ(GetTiffDimensions(opened.file, 0, &header), 0u);
        EXPECT_EQ(header.biXPelsPerMeter, perMetre);
        EXPECT_EQ(GetTiffImageDPI(opened.file, 0, &found), 0u);
        EXPECT_EQ(found, dpi);
    }
}

TEST(Description, ColourTablesFollowThePhotometricInterpretation)
{
    std::vector<uint32_t> map(48);
    for (uint32_t index = 0; index < 48; ++index)
        map[index] = index << 8 | 0xFF;
    static const struct {
        const char* row;
        TiffPage page;
        uint32_t count, index, colour; // 0x00RRGGBB of one entry
    } rows[] = {
        {"white is zero", TiffPage::Picture(8, 1, 1, 1, 0), 2, 0, 0xFFFFFF},
        {"black is zero", TiffPage::Picture(8, 1, 1, 1, 1), 2, 1, 0xFFFFFF},
        {"grey steps of 16 stop at 240", TiffPage::Picture(8, 1, 4, 1, 1), 16, 15, 0xF0F0F0},
        {"grey from white", TiffPage::Picture(8, 1, 8, 1, 0), 256, 1, 0xFEFEFE},
        {"mask", TiffPage::Picture(8, 1, 8, 1, 4), 256, 255, 0x000000},
        {"16-bit grey", TiffPage::Picture(8, 1, 16, 1, 1), 256, 200, 0xC8C8C8},
        {"palette", TiffPage::Picture(8, 1, 4, 1, 3).Short(320, map), 16, 2, 0x021222},
        {"short palette", TiffPage::Picture(8, 1, 8, 1, 3).Short(320, map), 256, 16, 0},
        {"two colours ignore the palette", TiffPage::Picture(8, 1, 1, 1, 3).Short(320, map), 2, 1, 0},
        {"no photometric, two colours", TiffPage().Short(256, {8}).Short(257, {1}), 2, 0, 0xFFFFFF},
        {"no photometric, more", TiffPage().Short(256, {8}).Short(257, {1}).Short(258, {8}), 256, 9, 0},
    };
    for (const auto& [row, page, count, index, colour] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        MemoryTiff opened(OnePage(page));
        const Bytes table = ColourTable(opened.file);
        EXPECT_EQ(table.at(32) | table.at(33) << 8, count);
        const Bytes levels = {static_cast<uint8_t>(colour), static_cast<uint8_t>(colour >> 8),
                              static_cast<uint8_t>(colour >> 16), 0};
        EXPECT_EQ(Part(table, 40 + index * 4, 4), levels);
    }
    MemoryTiff mapless(OnePage(TiffPage::Picture(8, 1, 8, 1, 3)));
    EXPECT_EQ(Refusal(GetTiffRGBQuad(mapless.file, 0)), 10u);
    MemoryTiff wide(OnePage(TiffPage::Picture(8, 1, 8, 1, 2).Short(277, {4})));
    EXPECT_EQ(Refusal(GetTiffRGBQuad(wide.file, 0)), 16u);
}

TEST(Description, RowsPerStripNeverPassThePage)
{
    static const struct {
        TiffPage page;
        uint32_t rows, strips;
    } rows[] = {
        {TiffPage::Picture(8, 9, 1, 1).Short(278, {4}).Strips({{0}, {0}, {0}}), 4, 3},
        {TiffPage::Picture(8, 9, 1, 1).Long(278, {0xFFFFFFFF}), 9, 0},
        {TiffPage::Picture(8, 9, 1, 1).Short(278, {0}), 9, 0},
        {TiffPage::Picture(8, 9, 1, 1), 9, 0},
        {TiffPage().Short(256, {8}).Short(278, {4}), 0, 0},
    };
    for (const auto& [page, rowsPerStrip, strips] : rows) {
        MemoryTiff opened(OnePage(page));
        EXPECT_EQ(GetTiffRowsPerStrip(opened.file, 0), rowsPerStrip);
        EXPECT_EQ(GetTiffStripCount(opened.file, 0), strips);
    }
}
