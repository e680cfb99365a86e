#include "support/leaks.h"
#include "support/pictures.h"
#include "support/target.h"
#include "support/tiff_dump.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

int32_t Encode(HGLOBAL file, uint32_t page, const Bytes& rows, size_t rowBytes = 1)
{
    RowSource source;
    for (size_t at = 0; at < rows.size(); at += rowBytes)
        source.lines.push_back(Part(rows, at, rowBytes));
    return EncodeTiffImage(file, page, &source, FillRow);
}

} // namespace

TEST(EncodeDriver, StripsTheirTagsAndTheDirectoryFollowTheHeader)
{
    for (const uint16_t order : {uint16_t{TIFF_INTEL}, uint16_t{TIFF_MOTOROLA}})
        for (const bool onDisk : {true, false}) {
            SCOPED_TRACE(testing::Message() << order << (onDisk ? ", disk" : ", memory"));
            NoLeaks leaks;
            const Target target(onDisk, {}, T_CREAT);
            ModiTiffFileInfo(target.file, nullptr, order);
            const uint32_t page = DefinePage(target.file, {{257, 3}, {256, 8}, {258, 1}, {278, 2}});
            SetTiffError(12);
            EXPECT_EQ(Encode(target.file, page, Hex("81 42 24")), 1);
            EXPECT_EQ(TiffError(), 0u);
            EXPECT_EQ(DumpTiff(target.Written()), std::string(order == TIFF_INTEL ? "II" : "MM") + R"(
directory 28, link 0
256 LONG 1: 8
257 LONG 1: 3
258 LONG 1: 1
273 LONG 2 @11: 8 10
278 LONG 1: 2
279 LONG 2 @19: 2 1
)");
            EXPECT_EQ(Part(target.Written(), 8, 3), Hex("81 42 24"));
        }
}

TEST(EncodeDriver, StripsHoldTheRowsThatTheTagSays)
{
    static const struct {
        const char* row;
        int64_t rowsPerStrip; // -1: not defined
        std::string tags;
    } rows[] = {
        {"missing", -1, "278 LONG 1: 1\n279 LONG 5 @78: 10 10 10 10 10\n"},
        {"two and the rest", 2, "278 LONG 1: 2\n279 LONG 3 @70: 20 20 10\n"},
        {"all", 5, "278 LONG 1: 5\n279 LONG 1: 50\n"},
        {"beyond the page", 0xFFFFFFFF, "278 LONG 1: 4294967295\n279 LONG 1: 50\n"},
        {"none", 0, "278 LONG 1: 5\n279 LONG 1: 50\n"},
    };
    Bytes pixels(50);
    for (size_t at = 0; at < pixels.size(); ++at)
        pixels[at] = static_cast<uint8_t>(at);
    for (const auto& [row, rowsPerStrip, tags] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        const Target target;
        const uint32_t page = DefinePage(target.file, {{256, 10}, {257, 5}, {258, 8}});
        if (rowsPerStrip >= 0)
            DefineTiffImageInfo(target.file, page, 278, 4, static_cast<uint32_t>(rowsPerStrip));
        EXPECT_EQ(Encode(target.file, page, pixels, 10), 1);
        const std::string dump = DumpTiff(target.Written());
        EXPECT_EQ(dump.substr(dump.find("278 ")), tags) << dump;
        EXPECT_EQ(DecodeFile(target.Written()).Joined(), pixels);
    }
}

TEST(EncodeDriver, ALineRoutineThatStopsLeavesTheFileAndMayTryAgain)
{
    const Bytes old = OnePage(TiffPage::Picture(8, 1, 1, 1).Strips({Hex("01")}));
    for (const bool onDisk : {true, false})
        for (const bool isNew : {true, false})
            for (const uint32_t stopRow : {0u, 1u, 2u}) {
                const intptr_t status = stopRow == 0 ? -1 : 76 + static_cast<intptr_t>(stopRow);
                SCOPED_TRACE(testing::Message() << onDisk << ", row " << stopRow << (isNew ? ", new" : ""));
                NoLeaks leaks;
                const Target target(onDisk, isNew ? Bytes() : old);
                EXPECT_EQ(LoadPages(target.file), isNew ? 0u : 1u);
                const uint32_t page = DefinePage(target.file, {{256, 8}, {257, 3}, {258, 1}});
                RowSource source{{{0x0A}, {0x0B}, {0x0C}}, stopRow, status};
                EXPECT_EQ(Refusal(EncodeTiffImage(target.file, page, &source, FillRow)),
                          static_cast<uint32_t>(status));
                EXPECT_EQ(source.calls, stopRow + 1);
                EXPECT_EQ(target.Written(), isNew ? Bytes() : old);
                EXPECT_EQ(Encode(target.file, page, Hex("0A 0B 0C")), 1);
                EXPECT_EQ(DecodePage(target.file, page).Joined(), Hex("0A 0B 0C"));
                const MemoryTiff again(target.Written());
                EXPECT_EQ(NumberOfTiffImages(again.file, TIFF_ALL_PAGES), isNew ? 1u : 2u);
            }
}

TEST(EncodeDriver, PagesThatCannotBeEncodedSayWhy)
{
    static const struct {
        const char* row;
        uint32_t tag, value, error;
    } rows[] = {
        {"fill order", 266, 3, 15},
        {"no width", 256, 0, 10},
        {"planes", 284, 2, 16},
        {"2 bits", 258, 2, 16},
        {"compression not known", 259, 99, 11},
        {"JPEG", 259, 7, 11},
        {"unknown predictor", 317, 3, 0}, // not looked at without LZW
        {"old JPEG without tiles", 259, 6, 9990},
        {"more strips than can be listed", 257, 0xFFFFFFFF, 1},
    };
    for (const auto& [row, tag, value, error] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        const Target target;
        const uint32_t page = DefinePage(target.file, {{256, 8}, {257, 1}, {258, 1}});
        DefineTiffImageInfo(target.file, page, tag, 4, value);
        EXPECT_EQ(Encode(target.file, page, Hex("00")), error == 0);
        EXPECT_EQ(TiffError(), error);
        EXPECT_EQ(GetMemoryTiffHandle(target.file) != nullptr, error == 0) << "nothing is left behind";
    }
    const Target target;
    const uint32_t page = DefinePage(target.file, {{256, 8}, {257, 1}, {258, 1}});
    EXPECT_EQ(Refusal(EncodeTiffImage(target.file, page, nullptr, nullptr)), 29u);
    EXPECT_EQ(Refusal(Encode(target.file, 1, Hex("00"))), 3u);
    EXPECT_EQ(Refusal(Encode(nullptr, 0, Hex("00"))), 34u);
    DropTiffImage(target.file, page);
    EXPECT_EQ(Refusal(Encode(target.file, page, Hex("00"))), 27u);
}
