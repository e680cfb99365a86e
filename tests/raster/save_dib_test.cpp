#include "support/leaks.h"
#include "support/pictures.h"
#include "support/target.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

struct Saved {
    int32_t result = 0;
    uint32_t error = 0;
    Decoded rows{};
};

Saved Save(const DibPicture& picture, uint32_t selector, uint32_t fillOrder = 1)
{
    NewFile file;
    Block dib(PackedDib(picture));
    Saved saved;
    saved.result = SaveDIBInTiffFileExt(file.Path(), dib.Get(), selector, 0, fillOrder);
    saved.error = TiffError();
    if (HGLOBAL tiff = OpenTiffFile(file.Path(), T_READ)) {
        saved.rows = DecodePage(tiff, 0);
        CloseTiffFile(tiff);
    }
    return saved;
}

const std::vector<uint32_t> blackWhite = {0x000000, 0xFFFFFF}, whiteBlack = {0xFFFFFF, 0x000000};
const DibPicture twoRows{9, 2, 1, whiteBlack, Hex("0F000000 81800000")};

std::vector<uint32_t> Greys()
{
    std::vector<uint32_t> greys;
    for (uint32_t level = 0; level < 256; ++level)
        greys.push_back(level * 0x010101);
    return greys;
}

} // namespace

TEST(SaveDib, SamplesAreWrittenAsTheSelectorSays)
{
    const DibPicture greys{2, 1, 8, Greys(), Hex("1280 0000")};
    std::vector<uint32_t> fallingGreys = Greys();
    std::reverse(fallingGreys.begin(), fallingGreys.end());
    const DibPicture falling{2, 1, 8, fallingGreys, Hex("1280 0000")};
    const DibPicture colours{2, 2, 24, {}, Hex("010203 040506 0000 FF0000 000000 0000")};
    const DibPicture dark{9, 2, 1, blackWhite, twoRows.pixels};
    DibPicture topDown = twoRows;
    topDown.topDown = true;
    const struct {
        const char* row;
        DibPicture picture;
        uint32_t selector;
        Bytes rows;
        uint32_t photometric;
    } rows[] = {
        {"black first is inverted", dark, 201, Hex("7E7F F0FF"), 0},
        {"white first stays", twoRows, 201, Hex("8180 0F00"), 0},
        {"palette", {2, 1, 4, {0x102030, 0x405060}, Hex("01000000"), {1, 1}, 2}, 201, Hex("01"), 3},
        {"palette of 8 bits", greys, 202, Hex("1280"), 3},
        {"16-bit grey", greys, 201 + 256, Hex("0012 0080"), 1},
        {"12-bit grey", greys, 203 + 512, Hex("2001 0008"), 1},
        {"16-bit grey, white first", falling, 201 + 256, Hex("00ED 007F"), 1},
        {"RGB", colours, 204, Hex("0000FF 000000 030201 060504"), 2},
        {"CMYK", colours, 201 + 768, Hex("FFFF0000 000000FF 0055AAFC 002A55F9"), 5},
        {"YCbCr", colours, 201 + 1024, Hex("1DFF6A 007F7F 027E80 057E80"), 6},
        {"rows from the top", topDown, 208, Hex("0F00 8180"), 0},
        {"no colours, one strip of bits", {2, 1, 24, {}, Hex("010283 040506 0000")}, 208, Hex("80"), 0},
    };
    for (const auto& [row, picture, selector, expected, photometric] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        NewFile file;
        Block dib(PackedDib(picture));
        EXPECT_EQ(SaveDIBInTiffFile(file.Path(), dib.Get(), selector, 0), 1);
        EXPECT_EQ(TiffError(), 0u);
        HGLOBAL tiff = OpenTiffFile(file.Path(), T_READ);
        const Decoded decoded = DecodePage(tiff, 0);
        EXPECT_EQ(decoded.error, 0u);
        Bytes masked = decoded.Joined();
        if (selector == 208 && picture.bits == 24)
            masked[0] &= 0xC0;
        EXPECT_EQ(masked, expected);
        EXPECT_EQ(TagNumber(tiff, 0, 262), photometric);
        CloseTiffFile(tiff);
    }
}

TEST(SaveDib, EveryCompressionGivesTheRowsBack)
{
    const DibPicture fax{9, 3, 1, whiteBlack, Hex("0F000000 00000000 81800000")};
    for (uint32_t selector = 201; selector <= 208; ++selector)
        for (const uint32_t fillOrder : {1u, 2u}) {
            SCOPED_TRACE(testing::Message() << selector << ", " << fillOrder);
            const Saved saved = Save(fax, selector, fillOrder);
            EXPECT_EQ(saved.result, 1);
            EXPECT_EQ(saved.rows.Pixels(9), "#......##/........./....####.");
        }
}

TEST(SaveDib, PagesCarryTheirTags)
{
    NewFile file;
    Block dib(PackedDib(twoRows));
    Block bare(PackedDib({9, 2, 1, whiteBlack, Hex("0F000000 81800000"), {0, 3937}}));
    EXPECT_EQ(SaveDIBInTiffFormat(file.Path(), dib.Get(), 207, 0), 1);
    EXPECT_EQ(SaveDIBInTiffFileExt(file.Path(), bare.Get(), 204, 0, 2), 1);
    HGLOBAL tiff = OpenTiffFile(file.Path(), T_READ);
    ASSERT_EQ(LoadPages(tiff), 2u);
    static constexpr uint32_t tags[][3] = {{0, 259, 3}, {0, 292, 1}, {0, 282, 200}, {0, 283, 100},
                                           {0, 296, 2}, {1, 317, 2}, {1, 266, 2},   {1, 283, 100}};
    for (const auto& [page, tag, value] : tags)
        EXPECT_EQ(TagNumber(tiff, page, tag), value) << tag;
    EXPECT_GT(TagNumber(tiff, 1, 282), 70u) << "the screen's, for the axis without";
    const std::string software("TIFF.DLL from Korvane Software, Inc.Version 12.08", 50);
    EXPECT_EQ(TagValues(tiff, 0, 305), Bytes(software.begin(), software.end()));
    EXPECT_EQ(TagValues(tiff, 0, 306).size(), 20u);
    EXPECT_EQ(TagValues(tiff, 0, 270), Bytes(4));
    EXPECT_EQ(TagValues(tiff, 0, 315), Bytes(4));
    CloseTiffFile(tiff);
    BITMAPINFOHEADER header;
    std::memcpy(&header, Content(dib.Get(), 40).data(), 40);
    EXPECT_EQ(header.biClrUsed, 2u) << "an unset colour count is filled in";
}

TEST(SaveDib, RequestsThatCannotBeMetLeaveNoFile)
{
    NoLeaks leaks;
    const Bytes fax = PackedDib(twoRows);
    Bytes cut = fax, packed = fax, wide = fax, flat = fax;
    cut.pop_back();
    flat[14] = 0; // 0 bits per pixel, so that rows of any width have no bytes
    std::fill_n(&flat[8], 3, uint8_t{0xFF});
    packed[16] = 1;
    wide[4] = 0;
    const struct {
        const char* row;
        Bytes dib;
        uint32_t selector;
        int32_t dialog;
        uint32_t error;
    } rows[] = {
        {"unknown selector", fax, 200, 0, 11},
        {"unknown samples", fax, 201 + 1280, 0, 11},
        {"samples for fax", fax, 208 + 256, 0, 11},
        {"grey from one bit", fax, 201 + 256, 0, 16},
        {"CMYK from one bit", fax, 201 + 768, 0, 16},
        {"samples for JPEG", fax, 209 + 256, 0, 11},
        {"no dialogs library", fax, 201, 1, 28},
        {"a block shorter than its header says", cut, 201, 0, 30},
        {"run-length pixels", packed, 201, 0, 30},
        {"no width", wide, 201, 0, 30},
        {"no depth", flat, 201, 0, 16},
        {"less than a header", Hex("28000000"), 201, 0, 30},
    };
    for (const auto& [row, bytes, selector, dialog, error] : rows) {
        SCOPED_TRACE(row);
        NewFile file;
        Block dib(bytes);
        EXPECT_EQ(Refusal(SaveDIBInTiffFile(file.Path(), dib.Get(), selector, dialog)), error);
        EXPECT_EQ(GetFileAttributesA(file.Path()), INVALID_FILE_ATTRIBUTES);
    }
    Block dib(fax);
    EXPECT_EQ(SaveDIBInTiffFile("no-such-folder/file.tif", dib.Get(), 201, 0), 0);
    EXPECT_EQ(Refusal(SaveDIBInTiffFile("file.tif", nullptr, 201, 0)), 1u);
    EXPECT_EQ(Refusal(SaveDIBInTiffFile("", dib.Get(), 201, 0)), 29u);
    EXPECT_EQ(Save(twoRows, 208, 3).error, 15u);
}

TEST(SaveDib, AMotorolaFileIsNotMixedWithIntelPages)
{
    const Bytes before = OnePage(TiffPage::Picture(8, 1, 1, 1).Strips({{0x18}}), TIFF_MOTOROLA);
    TempFile file(before);
    Block dib(PackedDib(twoRows));
    EXPECT_EQ(Refusal(SaveDIBInTiffFile(file.Path(), dib.Get(), 201, 0)), 35u);
    EXPECT_EQ(ReadFileBytes(file.Path()), before);
}

TEST(SaveDib, OldHeadersAndLargeSizesAreSaved)
{
    BITMAPCOREHEADER header{sizeof(header), 9, 1, 1, 1};
    Bytes core(sizeof(header));
    std::memcpy(core.data(), &header, sizeof(header));
    Block dib(core + Hex("FFFFFF 000000") + Hex("81800000"));
    NewFile file;
    EXPECT_EQ(SaveDIBInTiffFile(file.Path(), dib.Get(), 208, 0), 1);
    HGLOBAL tiff = OpenTiffFile(file.Path(), T_READ);
    EXPECT_EQ(DecodePage(tiff, 0).Pixels(9), "#......##");
    CloseTiffFile(tiff);

    const uint32_t wide = 100000, stride = 12500;
    Saved saved = Save({wide, 2, 1, whiteBlack, Bytes(stride * 2, 0x5A)}, 208);
    EXPECT_EQ(saved.error, 0u);
    EXPECT_EQ(saved.rows.Joined(), Bytes(stride * 2, 0x5A));
    saved = Save({1, wide, 1, whiteBlack, Repeat(Hex("80000000"), wide)}, 206);
    EXPECT_EQ(saved.error, 0u);
    EXPECT_EQ(saved.rows.rows.size(), wide);
}

TEST(SaveDib, ColourSpacesComeBack)
{
    static constexpr struct {
        uint32_t space;
        int32_t result;
    } rows[] = {{0, 0}, {9, 0}, {10, 1}, {17, 1}, {18, 0}};
    for (const auto& [space, result] : rows) {
        SCOPED_TRACE(space);
        Bytes bytes = PackedDib({1, 1, 24, {}, Hex("01020300")});
        bytes[16] = static_cast<uint8_t>(space);
        Block dib(bytes);
        NewFile file;
        SetTiffError(0);
        EXPECT_EQ(SaveNonRGBDIBInTiffFile(file.Path(), dib.Get()), result);
        EXPECT_EQ(TiffError(), 0u);
        if (result) {
            EXPECT_EQ(GetTiffColorSpace(file.Path(), 0), space);
        }
    }
}

TEST(SaveDib, MemoryTiffsGrowByPages)
{
    NoLeaks leaks;
    Block dib(PackedDib(twoRows));
    EXPECT_EQ(SaveTiffToMemory(nullptr, nullptr, 201, 1), nullptr);
    HGLOBAL memory = nullptr;
    for (uint32_t pages = 1; pages <= 3; ++pages) {
        memory = SaveTiffToMemory(memory, dib.Get(), pages == 2 ? 208 : 0, 1);
        ASSERT_NE(memory, nullptr);
        HGLOBAL tiff = OpenTiffInMemory(memory, static_cast<uint32_t>(GlobalSize(memory)), T_READ);
        EXPECT_EQ(NumberOfTiffImages(tiff, TIFF_ALL_PAGES), pages);
        for (uint32_t page = 0; page < pages; ++page)
            EXPECT_EQ(DecodePage(tiff, page).Pixels(9), "#......##/....####.");
        EXPECT_EQ(TagNumber(tiff, pages - 1, 259), pages == 2 ? 4u : 1u);
        CloseTiffFile(tiff);
    }
    GlobalFree(memory);
}
