// Received quality, raw code, TIFFs in plain memory, and what is told of failures.
#include "support/open_file.h"
#include "support/pictures.h"
#include "support/target.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>

namespace {

const std::string EOL = "000000000001", ROW = "1000 11 1000"; // ...##...

std::string Times(const std::string& text, size_t times)
{
    std::string all;
    while (times-- > 0)
        all += text;
    return all;
}

// Rows of 1728 pixels that differ, coded by the library.
Bytes Coded(uint32_t compression, uint32_t rows, uint32_t width = 1728)
{
    const OpenedFile file({});
    RowSource source;
    for (uint32_t row = 0; row < rows; ++row) {
        Bytes line(width / 8 + 1);
        for (size_t at = 0; at + 9 < line.size(); at += 9 + row % 7)
            line[at] = static_cast<uint8_t>(0x3C + row * 2);
        source.lines.push_back(line);
    }
    EXPECT_TRUE(EncodeCcittImage(file.Stream(), width, rows, compression, &source, FillRow));
    return file.Content();
}

Bytes TakeDib(HGLOBAL dib)
{
    const Bytes bytes = dib ? Content(dib, GlobalSize(dib)) : Bytes();
    if (dib)
        GlobalFree(dib);
    return bytes;
}

std::string Detail()
{
    char text[512] = "";
    const uint32_t bytes = TiffErrorDetail(text, sizeof(text));
    EXPECT_EQ(bytes, std::strlen(text) + 1);
    return text;
}

} // namespace

TEST(DecodeQuality, DamagedRowsOfGroup3AreCounted)
{
    const std::string one = EOL + "1", two = EOL + "0", first = one + ROW, cut = EOL + "1000";
    const struct {
        const char* row;
        uint32_t compression, options, rows;
        std::string code;
        uint32_t bad, longest, counted = 1;
    } rows[] = {
        {"whole rows", 3, 0, 2, Times(EOL + ROW, 2) + Times(EOL, 6), 0, 0},
        {"no EOLs", 3, 0, 2, Times(ROW, 2), 0, 0},
        {"cut rows, two together", 3, 0, 5, cut + EOL + ROW + cut + cut + Times(EOL + ROW, 2), 3, 2},
        {"a run past the width", 3, 0, 2, EOL + "1000 000101" + EOL + ROW, 1, 1},
        {"a damaged mode row", 3, 1, 3, first + two + "1" + one + ROW, 1, 1},
        {"an extension", 3, 1, 2, first + two + "0000001 111", 1, 1},
        {"a mode past the width", 3, 1, 2, one + "10011" + two + "000011", 1, 1},
        {"a change to the left", 3, 1, 2, first + two + "011 0000010 1 1", 1, 1},
        {"a horizontal mode past the width", 3, 1, 2, first + two + "001 10011 11", 1, 1},
        {"Group 4 is not counted", 4, 0, 1, "001 1000 11 1", 0, 0, 0},
        {"nor is modified Huffman", 2, 0, 1, "00000000 000101 00", 0, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.row);
        TiffPage page = TiffPage::Picture(8, row.rows, 1, row.compression).Strips({Bits(row.code)});
        page.Long(292, {row.options});
        EXPECT_EQ(DecodeFile(OnePage(page)).rows.size(), row.rows);
        TiffDecodeQuality quality = {};
        ASSERT_TRUE(GetTiffDecodeQuality(&quality));
        EXPECT_EQ(quality.isCounted, row.counted);
        EXPECT_EQ(quality.rows, row.rows);
        EXPECT_EQ(quality.decodedRows, row.rows);
        EXPECT_EQ(quality.badRows, row.bad);
        EXPECT_EQ(quality.longestBadRun, row.longest);
    }
    // Nothing is said of a page that cannot be begun.
    const TempFile file(OnePage(TiffPage::Picture(8, 2, 1, 3).Strips({Bits(Times(EOL + ROW, 2))})));
    const Bytes odd = OnePage(TiffPage::Picture(8, 1, 3, 1).Strips({Bits("1")}));
    const std::function<HGLOBAL()> refused[] = {
        [] { return LoadTiffIntoDIB("no file", 0, 0); },
        [&] { return LoadTiffIntoDIB(file.Path(), 1, 0); },
        [&] { return LoadTiffFromMemory(odd.data(), static_cast<uint32_t>(odd.size()), 0); },
    };
    for (const auto& load : refused) {
        TakeDib(LoadTiffIntoDIB(file.Path(), 0, 0));
        TiffDecodeQuality quality = {};
        EXPECT_TRUE(GetTiffDecodeQuality(&quality) && quality.decodedRows == 2);
        EXPECT_EQ(load(), nullptr);
        EXPECT_TRUE(GetTiffDecodeQuality(&quality) && quality.isCounted == 0 && quality.rows == 0);
    }
    EXPECT_FALSE(GetTiffDecodeQuality(nullptr));
}

TEST(FaxQuality, IsSaidByPagesUntilItIsTakenBack)
{
    const Block dib(PackedDib({8, 1, 1, {0xFFFFFF, 0}, Hex("18000000")}));
    const NewFile saved;
    const TiffFaxQuality quality = {70000, 3, TIFF_FAX_REGENERATED}, none = {1, 1, TIFF_FAX_CLEAN},
                         unknown = {1, 1, 3};
    EXPECT_FALSE(SetTiffFaxQuality(&none) || SetTiffFaxQuality(&unknown));
    ASSERT_TRUE(SetTiffFaxQuality(&quality));
    ASSERT_TRUE(SaveDIBInBicomTiffFile(saved.Path(), dib.Get()));
    ASSERT_TRUE(SetTiffFaxQuality(nullptr));
    ASSERT_TRUE(SaveDIBInBicomTiffFile(saved.Path(), dib.Get()));
    const Target file(true, ReadFileBytes(saved.Path()));
    ASSERT_EQ(LoadPages(file.file), 2u);
    EXPECT_EQ(TagNumber(file.file, 0, 326), 70000u);
    EXPECT_EQ(TagNumber(file.file, 0, 327), 1u);
    EXPECT_EQ(TagNumber(file.file, 0, 328), 3u);
    EXPECT_FALSE(GetTiffImageInfo(file.file, 1, 326, nullptr));
}

TEST(RawFax, EverySchemeIsFoundOutAndStaysAsItLies)
{
    static constexpr struct {
        uint32_t compression, scheme, alignment, width;
    } rows[] = {
        {3, TIFF_RAW_GROUP3, TIFF_RAW_UNALIGNED, 1728},
        {0x40003, TIFF_RAW_GROUP3, TIFF_RAW_ALIGNED, 1728},
        {0x40003, TIFF_RAW_GROUP3, TIFF_RAW_ALIGNED, 1234},
        {0x10003, TIFF_RAW_GROUP3_TWO_DIMENSIONAL, TIFF_RAW_UNALIGNED, 2048},
        {0x50003, TIFF_RAW_GROUP3_TWO_DIMENSIONAL, TIFF_RAW_ALIGNED, 1000},
        {4, TIFF_RAW_GROUP4, TIFF_RAW_UNALIGNED, 2432},
        {2, TIFF_RAW_HUFFMAN, TIFF_RAW_UNALIGNED, 1728},
    };
    for (const auto& row : rows)
        for (const uint32_t fillOrder : {TIFF_MSB_FIRST, TIFF_LSB_FIRST}) {
            SCOPED_TRACE(std::to_string(row.compression) + ", fill order " + std::to_string(fillOrder));
            const NewFile out;
            Bytes code = Coded(row.compression, 40, row.width);
            if (fillOrder == TIFF_LSB_FIRST)
                code = ReversedBits(code);
            TiffRawFax fax = {};
            ASSERT_TRUE(
                AppendRawFaxToTiff(out.Path(), code.data(), static_cast<uint32_t>(code.size()), &fax));
            EXPECT_EQ(fax.scheme, row.scheme);
            EXPECT_EQ(fax.fillOrder, fillOrder);
            EXPECT_EQ(fax.width, row.width);
            EXPECT_EQ(fax.alignment, row.alignment);
            EXPECT_EQ(fax.rows, 40u);
            EXPECT_EQ(fax.badRows, 0u);
            const Target file(true, ReadFileBytes(out.Path()));
            ASSERT_EQ(LoadPages(file.file), 1u);
            EXPECT_EQ(Part(file.Written(), TagNumber(file.file, 0, 273), TagNumber(file.file, 0, 279)), code);
            EXPECT_EQ(TagNumber(file.file, 0, 283), 98u);
            const Decoded decoded = DecodePage(file.file, 0);
            EXPECT_EQ(decoded.rows.size(), 40u);
            EXPECT_EQ(decoded.error, 0u);
        }
}

TEST(RawFax, CodeThatTagsCannotDescribeIsEncodedAnew)
{
    Bytes aligned = Bits("001 1000 11 1");
    std::string bare;
    for (uint32_t row = 1; row < 30; ++row)
        aligned = aligned + Bits("011 011 1");
    for (uint32_t row = 0; row < 30; ++row) // a white run of 3 or 2, a black one of 2, white up to 1728
        bare += row % 2 == 0 ? "1000 11 011000 01001010" : "0111 11 011000 01001011";
    const struct {
        const char* row;
        Bytes code;
        uint32_t scheme, alignment, given;
        std::function<size_t(size_t)> column;
    } rows[] = {
        {"Group 4", aligned + Bits("000000000001 000000000001"), TIFF_RAW_GROUP4, TIFF_RAW_ALIGNED,
         TIFF_RAW_FIND_OUT, [](size_t row) { return 3 + row; }},
        {"rows alone", Bits(bare), TIFF_RAW_GROUP3_WITHOUT_EOLS, TIFF_RAW_UNALIGNED, TIFF_RAW_GROUP3,
         [](size_t row) { return 3 - row % 2; }},
    };
    for (const auto& row : rows)
        for (const bool reversed : {false, true})
            for (const uint32_t scheme : {uint32_t{TIFF_RAW_FIND_OUT}, row.scheme, row.given}) {
                SCOPED_TRACE(row.row);
                const NewFile out;
                const Bytes code = reversed ? ReversedBits(row.code) : row.code;
                TiffRawFax fax = {.scheme = scheme};
                ASSERT_TRUE(
                    AppendRawFaxToTiff(out.Path(), code.data(), static_cast<uint32_t>(code.size()), &fax));
                EXPECT_EQ(fax.scheme, row.scheme);
                EXPECT_EQ(fax.alignment, row.alignment);
                EXPECT_EQ(fax.width, 1728u);
                EXPECT_EQ(fax.fillOrder, reversed ? 2u : 1u);
                const Target file(true, ReadFileBytes(out.Path()));
                ASSERT_EQ(LoadPages(file.file), 1u);
                EXPECT_EQ(TagNumber(file.file, 0, 259), 4u);
                EXPECT_EQ(TagNumber(file.file, 0, 266), 1u);
                const Decoded decoded = DecodePage(file.file, 0);
                ASSERT_EQ(decoded.rows.size(), 30u);
                std::string pixels;
                for (size_t at = 0; at < 30; ++at)
                    pixels += (at ? "/" : "") + std::string(1728, '.').replace(row.column(at), 2, "##");
                EXPECT_EQ(decoded.Pixels(1728), pixels);
            }
}

TEST(RawFax, WhatStandsBehindAPictureIsNoPartOfIt)
{
    for (const uint32_t compression : {3u, 0x40003u, 0x10003u, 4u})
        for (const Bytes& padding : {Bytes(100), Repeat(Hex("1A"), 30000), Coded(4, 60)}) {
            SCOPED_TRACE(std::to_string(compression) + ", " + std::to_string(padding.size()));
            const NewFile out;
            const Bytes code = Coded(compression, 40) + padding;
            TiffRawFax fax = {};
            ASSERT_TRUE(
                AppendRawFaxToTiff(out.Path(), code.data(), static_cast<uint32_t>(code.size()), &fax));
            EXPECT_EQ(fax.scheme, compression & ~0x40000u);
            EXPECT_EQ(fax.width, 1728u);
            EXPECT_EQ(fax.rows, 40u);
            EXPECT_EQ(fax.badRows, 0u);
        }
}

TEST(RawFax, DamageDoesNotHideTheScheme)
{
    for (const uint32_t compression : {3u, 0x40003u, 0x10003u, 4u, 2u})
        for (const size_t eighths : {3, 4, 5, 6}) {
            SCOPED_TRACE(std::to_string(compression) + ", " + std::to_string(eighths));
            const NewFile out;
            Bytes code = Coded(compression, 200);
            code[code.size() * eighths / 8] ^= 0x18;
            TiffRawFax fax = {};
            ASSERT_TRUE(
                AppendRawFaxToTiff(out.Path(), code.data(), static_cast<uint32_t>(code.size()), &fax));
            EXPECT_EQ(fax.scheme, compression & ~0x40000u);
            EXPECT_EQ(fax.width, 1728u);
        }
}

TEST(RawFax, HasUpToAMillionRows)
{
    for (const uint32_t rows : {1000000u, 1000008u}) {
        const NewFile out;
        const Bytes code = Repeat(Hex("FF"), rows / 8) + Hex("001001");
        TiffRawFax fax = {1728, TIFF_RAW_GROUP4, TIFF_MSB_FIRST, TIFF_RAW_UNALIGNED, 0, 0, 0, 0, 0};
        const bool taken = rows == 1000000;
        EXPECT_EQ(AppendRawFaxToTiff(out.Path(), code.data(), static_cast<uint32_t>(code.size()), &fax),
                  taken);
        EXPECT_EQ(TiffError(), taken ? 0u : 36u);
    }
}

TEST(RawFax, DamageIsCountedAndImpossibleCodeRefused)
{
    const TempFile out(OnePage(TiffPage::Picture(8, 1, 1, 1).Strips({Hex("01")}), TIFF_MOTOROLA));
    const Bytes before = ReadFileBytes(out.Path());
    Bytes code = Bits(Times(EOL + ROW, 3) + EOL + "1000" + Times(EOL + ROW, 3) + Times(EOL, 6));
    const auto size = static_cast<uint32_t>(code.size());
    TiffRawFax fax = {.width = 8, .horizontalDpi = 300, .verticalDpi = 400};
    const Bytes zeros(40);
    TiffRawFax any = {}, wrong = {.fillOrder = 3}, scheme = {.scheme = 7};
    EXPECT_FALSE(AppendRawFaxToTiff(out.Path(), zeros.data(), 40, &any));
    EXPECT_EQ(TiffError(), 12u);
    for (TiffRawFax* impossible : {&wrong, &scheme, static_cast<TiffRawFax*>(nullptr)}) {
        EXPECT_FALSE(AppendRawFaxToTiff(out.Path(), code.data(), size, impossible));
        EXPECT_EQ(TiffError(), 29u);
    }
    EXPECT_FALSE(AppendRawFaxToTiff("no folder/out.tif", code.data(), size, &fax));
    EXPECT_TRUE(TiffError() == 2 || TiffError() == 6);
    EXPECT_EQ(Detail().find("no folder/out.tif"), 0u) << Detail();
    EXPECT_FALSE(AppendRawFaxToTiff("", code.data(), size, &fax));
    EXPECT_EQ(TiffError(), 29u);
    EXPECT_FALSE(AppendRawFaxToTiff(std::string(300, 'a').c_str(), code.data(), size, &fax));
    EXPECT_EQ(TiffError(), 7u);
    EXPECT_EQ(ReadFileBytes(out.Path()), before);
    ASSERT_TRUE(AppendRawFaxToTiff(out.Path(), code.data(), size, &fax));
    EXPECT_EQ(fax.rows, 7u);
    const Target file(true, ReadFileBytes(out.Path()));
    ASSERT_EQ(LoadPages(file.file), 2u);
    EXPECT_EQ(TagNumber(file.file, 1, 326), 1u);
    EXPECT_EQ(TagNumber(file.file, 1, 327), TIFF_FAX_UNCLEAN);
    EXPECT_EQ(TagNumber(file.file, 1, 283), 400u);
}

TEST(LoadFromMemory, GivesWhatAFileGives)
{
    const Bytes bytes = TiffBuilder()
                            .Add(TiffPage::Picture(8, 2, 1, 1).Strips({Hex("A5 5A")}))
                            .Add(TiffPage::Picture(1728, 40, 1, 4).Strips({Coded(4, 40)}))
                            .Build();
    const auto size = static_cast<uint32_t>(bytes.size());
    const TempFile file(bytes);
    for (uint32_t page = 0; page < 2; ++page) {
        const Bytes loaded = TakeDib(LoadTiffFromMemory(bytes.data(), size, page));
        EXPECT_FALSE(loaded.empty());
        EXPECT_EQ(loaded, TakeDib(LoadTiffIntoDIB(file.Path(), page, 0)));
    }
    EXPECT_FALSE(LoadTiffFromMemory(bytes.data(), size, 2));
    EXPECT_EQ(TiffError(), 3u);
    EXPECT_EQ(Detail(), "page index 2");
    EXPECT_FALSE(LoadTiffFromMemory(nullptr, 8, 0) || LoadTiffFromMemory(bytes.data(), 0, 0));
    EXPECT_EQ(TiffError(), 29u);
    EXPECT_EQ(Refusal(LoadTiffFromMemory(bytes.data(), 0x80000000u, 0)), 29u);
    for (uint32_t length = 1; length < size; ++length) {
        const Bytes cut(bytes.begin(), bytes.begin() + length);
        TakeDib(LoadTiffFromMemory(cut.data(), length, 1));
    }
}

TEST(ErrorDetail, BelongsToTheLastErrorAlone)
{
    const TempFile empty({}), page(OnePage(TiffPage::Picture(8, 1, 1, 4))); // without strips
    const std::string path = page.Path();
    EXPECT_FALSE(OpenTiffFile("missing.tif", T_READ));
    EXPECT_EQ(Detail(), "missing.tif, system error 2 (not found)");
    EXPECT_FALSE(LoadTiffIntoDIB(path.c_str(), 0, 0));
    EXPECT_EQ(Detail(), path + ", page index 0, tag 273");
    char part[4] = {'x', 'x', 'x', 'x'};
    EXPECT_EQ(TiffErrorDetail(part, 3), Detail().size() + 1);
    EXPECT_EQ(std::string(part, 4), path.substr(0, 2) + std::string("\0x", 2));
    EXPECT_EQ(TiffErrorDetail(nullptr, 99), Detail().size() + 1);
    EXPECT_FALSE(OpenTiffFile("odd\nname", T_READ));
    EXPECT_EQ(Detail().find("odd?name"), 0u);

    EXPECT_FALSE(DropTiffImage(nullptr, 0)); // a failure without facts
    EXPECT_EQ(Detail(), "");
    EXPECT_FALSE(LoadTiffIntoDIB(path.c_str(), 9, 0));
    EXPECT_EQ(Detail(), path + ", page index 9");
    EXPECT_FALSE(DropTiffImage(nullptr, 0)); // with the same code
    EXPECT_EQ(Detail(), "");
    EXPECT_FALSE(OpenTiffFile("missing.tif", T_READ));
    SetTiffError(6);
    EXPECT_EQ(Detail(), "");
    // The file that was not there is no failure of what follows.
    HGLOBAL made = OpenTiffFile("missing.tif", T_APPEND);
    EXPECT_EQ(Detail(), "");
    EXPECT_FALSE(GetTiffImageInfo(made, 0, 256, nullptr));
    EXPECT_EQ(Detail(), "");
    CloseTiffFile(made);
    const OpenedFile unwritable(Hex("00"), false);
    EXPECT_EQ(mWrite(unwritable.Stream(), "x", 1), 0u); // the application's own
    char byte = 'x';
    EXPECT_FALSE(LongWrite(unwritable.Stream(), 1, 1, &byte, TIFF_INTEL, 1));
    EXPECT_EQ(Detail().find("system error 5"), 0u) << Detail();
    EXPECT_FALSE(LoadCALSIntoDIB("missing.cal", 0)); // is about a file of its own
    EXPECT_EQ(Detail(), "missing.cal, system error 2 (not found)");
    EXPECT_FALSE(LoadTiffFromMemory("II*", 3, 0));
    EXPECT_EQ(TiffError(), 6u);
    EXPECT_EQ(Detail(), "");
    const struct {
        uint16_t tag;
        uint32_t value;
    } wrong[] = {{256, 0}, {258, 3}, {266, 3}, {277, 9}, {284, 2}, {257, 0}};
    for (const auto& [tag, value] : wrong) {
        TiffPage odd = TiffPage::Picture(8, 1, 1, 4).Short(tag, {value}).Strips({Bits("1")});
        if (tag == 257) // missing: 0 rows are of unknown length
            odd = TiffPage().Short(256, {8}).Short(259, {4}).Strips({Bits("1")});
        const TempFile faulty(OnePage(odd));
        EXPECT_FALSE(LoadTiffIntoDIB(faulty.Path(), 0, 0));
        EXPECT_EQ(Detail(), std::string(faulty.Path()) + ", page index 0, tag " + std::to_string(tag));
    }
    HGLOBAL file = OpenTiffFile(path.c_str(), T_READ);
    ASSERT_TRUE(GetTiffImage(file, 0));
    EXPECT_FALSE(GetTiffImageInfo(file, 0, 326, nullptr));
    EXPECT_EQ(Detail(), path + ", page index 0, tag 326");
    CloseTiffFile(file);
}
