#include "support/leaks.h"
#include "support/pictures.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

// Nine rows of a byte each, three to a strip, the strips out of order in the file.
TiffPage NineRows()
{
    return TiffPage::Picture(8, 9, 1, 1)
        .Short(278, {3})
        .Strips({Hex("01 02 03"), Hex("04 05 06"), Hex("07 08 09")});
}

uint32_t ErrorOf(TiffPage page)
{
    MemoryTiff opened(OnePage(std::move(page)));
    return DecodePage(opened.file, 0).error;
}

} // namespace

TEST(DecodeDriver, StripsAreDecodedWhereverTheyLie)
{
    const Bytes all = Hex("01 02 03 04 05 06 07 08 09");
    const struct {
        const char* row;
        TiffPage page;
    } rows[] = {
        {"in order", NineRows()},
        {"out of order", NineRows().StoredOrder({2, 0, 1})},
        {"backwards, far apart", TiffPage::Picture(8, 9, 1, 1)
                                     .Short(278, {3})
                                     .Strips({Hex("01 02 03") + Bytes(40000), Hex("04 05 06") + Bytes(40000),
                                              Hex("07 08 09") + Bytes(40000)})
                                     .StoredOrder({2, 1, 0})},
        {"16-bit offsets", NineRows().ShortOffsets()},
        {"one strip, no rows told", TiffPage::Picture(8, 9, 1, 1).Strips({all})},
        {"one strip of no end", TiffPage::Picture(8, 9, 1, 1).Long(278, {0xFFFFFFFF}).Strips({all})},
        {"rows per strip 0", TiffPage::Picture(8, 9, 1, 1).Long(278, {0}).Strips({all})},
    };
    for (const uint16_t order : {uint16_t{TIFF_INTEL}, uint16_t{TIFF_MOTOROLA}})
        for (const auto& [row, page] : rows) {
            SCOPED_TRACE(row);
            NoLeaks leaks;
            const Decoded decoded = DecodeFile(OnePage(page, order));
            EXPECT_EQ(decoded.error, 0u);
            EXPECT_EQ(decoded.Joined(), all);
        }
}

TEST(DecodeDriver, EveryStripStartsAfresh)
{
    // Group 4: each strip begins on its own byte with a white reference. Two strips of two rows.
    const Bytes group4 = Bits("001 1000 11 1 111");
    const TiffPage fax = TiffPage::Picture(8, 4, 1, 4).Short(278, {2}).Strips({group4, group4});
    const std::string rows = "...##.../...##.../...##.../...##...";
    EXPECT_EQ(DecodeFile(OnePage(fax)).Pixels(8), rows);

    // Group 3 2-D: each strip begins one-dimensional, with or without an EOL before it.
    const Bytes with = Bits("000000000001 1 1000 11 1000 000000000001 0 111");
    const Bytes without = Bits("1000 11 1000 000000000001 0 111");
    const TiffPage mixed =
        TiffPage::Picture(8, 4, 1, 3).Long(292, {1}).Short(278, {2}).Strips({with, without});
    EXPECT_EQ(DecodeFile(OnePage(mixed)).Pixels(8), rows);

    // LZW: each strip has a new table, without Clear or end code.
    const TiffPage lzw = TiffPage::Picture(2, 2, 8, 5)
                             .Short(278, {1})
                             .Strips({Bits("001000001 001000010 001111111"), Bits("001000011 001000100")});
    EXPECT_EQ(DecodeFile(OnePage(lzw)).Joined(), Hex("4142 4344"));
}

TEST(DecodeDriver, ARangeOfRowsStartsAtAStrip)
{
    static const struct {
        uint32_t firstStrip, rowCount;
        Bytes rows;
        uint32_t firstRow;
    } rows[] = {
        {0, 0, Hex("01 02 03 04 05 06 07 08 09"), 0},
        {0, 4, Hex("01 02 03 04"), 0},
        {1, 2, Hex("04 05"), 3},
        {1, 0, Hex("04 05 06 07 08 09"), 3},
        {2, 4, Hex("07 08 09"), 6},
        {1, 0xFFFFFFFF, Hex("04 05 06 07 08 09"), 3},
    };
    MemoryTiff opened(OnePage(NineRows()));
    for (const auto& [firstStrip, rowCount, expected, firstRow] : rows) {
        SCOPED_TRACE(testing::Message() << firstStrip << ", " << rowCount);
        const Decoded decoded = DecodePage(opened.file, 0, firstStrip, rowCount);
        EXPECT_EQ(decoded.result, 1);
        EXPECT_EQ(decoded.Joined(), expected);
        EXPECT_EQ(decoded.numbers.front(), firstRow);
    }
    EXPECT_EQ(DecodePage(opened.file, 0, 3).error, 3u);
}

TEST(DecodeDriver, FillOrderTwoReversesTheBitsOfEveryByte)
{
    const Bytes code = Bits("001 1000 11 1 111");
    const TiffPage page = TiffPage::Picture(8, 2, 1, 4).Short(266, {2}).Strips({ReversedBits(code)});
    EXPECT_EQ(DecodeFile(OnePage(page)).Pixels(8), "...##.../...##...");
}

TEST(DecodeDriver, PagesThatCannotBeDecodedSayWhy)
{
    const auto old = [] {
        return TiffPage::Picture(8, 1, 8, 6).Short(322, {8}).Short(323, {8}).Short(512, {1}).Long(324, {0});
    };
    const auto tables = [&old] { return old().Long(325, {0}).Long(519, {0}).Long(520, {0}).Long(521, {0}); };
    const struct {
        const char* row;
        TiffPage page;
        uint32_t error;
    } rows[] = {
        {"fill order 3", NineRows().Short(266, {3}), 15},
        {"no strips", TiffPage::Picture(8, 9, 1, 1), 10},
        {"tiles", TiffPage::Picture(8, 9, 1, 1).Short(322, {8}).Long(324, {0}), 10},
        {"planes", NineRows().Short(284, {2}), 16},
        {"no width", TiffPage::Picture(0, 9, 1, 1).Strips({{0}}), 10},
        {"width beyond 31 bits", TiffPage::Picture(8, 9, 1, 1).Strips({{0}}).Long(256, {0x80000001}), 10},
        {"unknown compression", TiffPage::Picture(8, 9, 1, 99).Strips({{0}}), 11},
        {"uncompressed mode", TiffPage::Picture(8, 9, 1, 3).Long(292, {2}).Strips({{0}}), 11},
        {"unknown predictor", TiffPage::Picture(8, 9, 8, 5).Short(317, {3}).Strips({{0}}), 11},
        {"JPEG", TiffPage::Picture(8, 9, 8, 7).Strips({{0}}), 9991},
        {"old JPEG in strips", TiffPage::Picture(8, 9, 8, 6).Strips({{0}}), 9990},
        {"old JPEG without tables", old(), 10},
        {"old JPEG without process", TiffPage::Picture(8, 1, 8, 6).Short(322, {8}).Short(323, {8}), 10},
        {"old JPEG, no library", tables(), 22},
    };
    for (const auto& [row, page, error] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        EXPECT_EQ(ErrorOf(page), error);
    }
}

TEST(DecodeDriver, AStripOutsideTheFileEndsThePage)
{
    Bytes file = OnePage(NineRows());
    const Bytes offsets = Hex("08000000 0B000000");
    const auto at = std::search(file.begin(), file.end(), offsets.begin(), offsets.end());
    ASSERT_NE(at, file.end());
    at[7] = 0x7F; // the second strip
    const Decoded decoded = DecodeFile(file);
    EXPECT_EQ(decoded.error, 6u);
    EXPECT_EQ(decoded.rows.size(), 3u);
}

TEST(DecodeDriver, ALineRoutineStopsWithAnyStatus)
{
    MemoryTiff opened(OnePage(NineRows()));
    for (const intptr_t status : {intptr_t{77}, intptr_t{5}, intptr_t{-1}, intptr_t{0x100000000 + 9}}) {
        RowCollector collector{1, 4, status};
        EXPECT_EQ(Refusal(DecodeTiffImage(opened.file, 0, 0, 0, &collector, CollectRow)),
                  static_cast<uint32_t>(status));
        EXPECT_EQ(collector.decoded.rows.size(), 5u);
    }
    RowCollector collector{1, 4, intptr_t{0x100000000}};
    EXPECT_EQ(DecodeTiffImage(opened.file, 0, 0, 0, &collector, CollectRow), 1) << "the low half decides";
}

TEST(DecodeDriver, WithoutALoadedPageTheLastOutcomeIsRepeated)
{
    MemoryTiff opened(TiffBuilder().Add(NineRows()).Add(NineRows()).Build());
    RowCollector collector{1};
    for (const uint32_t standing : {0u, 12u}) {
        SetTiffError(standing);
        EXPECT_EQ(DecodeTiffImage(opened.file, 1, 0, 0, &collector, CollectRow), standing == 0);
        EXPECT_EQ(TiffError(), standing);
    }
    EXPECT_TRUE(collector.decoded.rows.empty());
}
