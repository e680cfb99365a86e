#include "support/leaks.h"
#include "support/pictures.h"
#include "support/tiff_dump.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace {

// Supplies rows; can stop with a status at a row.
struct RowSource {
    Bytes rows;
    uint32_t rowBytes = 1;
    uint32_t stopRow = UINT32_MAX;
    intptr_t stopStatus = 0;
    uint32_t calls = 0;
};

intptr_t FillRow(void* line, uint32_t row, void* userData)
{
    auto& source = *static_cast<RowSource*>(userData);
    EXPECT_EQ(row, source.calls++);
    const auto start = source.rows.begin() + static_cast<ptrdiff_t>(size_t{row} * source.rowBytes);
    std::copy_n(start, source.rowBytes, static_cast<uint8_t*>(line));
    return row == source.stopRow ? source.stopStatus : 0;
}

uint32_t DefinePage(HGLOBAL file, uint32_t width, uint32_t length, uint32_t bits = 1)
{
    const auto page = static_cast<uint32_t>(DefineTiffImage(file));
    DefineTiffImageInfo(file, page, 257, 3, length);
    DefineTiffImageInfo(file, page, 256, 3, width);
    DefineTiffImageInfo(file, page, 258, 3, bits);
    return page;
}

int32_t Encode(HGLOBAL file, uint32_t page, const Bytes& rows, uint32_t rowBytes = 1)
{
    RowSource source{rows, rowBytes};
    return EncodeTiffImage(file, page, &source, FillRow);
}

// The bytes of a TIFF in memory, whose block the caller owns.
Bytes Written(HGLOBAL file)
{
    HGLOBAL block = GetMemoryTiffHandle(file);
    return Content(block, GlobalSize(block));
}

// A TIFF opened or created in memory; its block is freed at the end.
struct MemoryFile {
    explicit MemoryFile(const Bytes& content = {})
        : file(content.empty()
                   ? OpenTiffInMemory(nullptr, 0, T_CREAT)
                   : OpenTiffInMemory(Fresh(content), static_cast<uint32_t>(content.size()), T_APPEND))
    {
        for (uint32_t page = 0; page < NumberOfTiffImages(file, TIFF_ALL_PAGES); ++page)
            GetTiffImage(file, page);
    }
    ~MemoryFile()
    {
        GlobalFree(GetMemoryTiffHandle(file));
        CloseTiffFile(file);
    }
    static HGLOBAL Fresh(const Bytes& content)
    {
        HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, content.size());
        std::copy(content.begin(), content.end(), static_cast<uint8_t*>(GlobalLock(block)));
        GlobalUnlock(block);
        return block;
    }
    const HGLOBAL file;
};

} // namespace

TEST(EncodeDriver, StripsTheirTagsAndTheDirectoryFollowTheHeader)
{
    NoLeaks leaks;
    static const struct {
        uint16_t order;
        Bytes expected;
    } rows[] = {
        {TIFF_INTEL, Hex("4949 2A00 1C000000") + Hex("81 42") + Hex("24") + // strips at 8 and 10
                         Hex("08000000 0A000000") +                         // 273 at 11
                         Hex("02000000 01000000") +                         // 279 at 19
                         Hex("00") + Hex("0600") +                          // directory at 28
                         Hex("0001 0300 01000000 08000000") + Hex("0101 0300 01000000 03000000") +
                         Hex("0201 0300 01000000 01000000") + Hex("1101 0400 02000000 0B000000") +
                         Hex("1601 0300 01000000 02000000") + Hex("1701 0400 02000000 13000000") +
                         Hex("00000000")},
        {TIFF_MOTOROLA, Hex("4D4D 002A 0000001C") + Hex("81 42") + Hex("24") + Hex("00000008 0000000A") +
                            Hex("00000002 00000001") + Hex("00") + Hex("0006") +
                            Hex("0100 0003 00000001 00080000") + Hex("0101 0003 00000001 00030000") +
                            Hex("0102 0003 00000001 00010000") + Hex("0111 0004 00000002 0000000B") +
                            Hex("0116 0003 00000001 00020000") + Hex("0117 0004 00000002 00000013") +
                            Hex("00000000")},
    };
    for (const auto& [order, expected] : rows) {
        SCOPED_TRACE(order);
        TempFile disk(Bytes(100, 0xEE));
        MemoryFile memory;
        HGLOBAL onDisk = OpenTiffFile(disk.Path(), T_CREAT);
        for (HGLOBAL file : {onDisk, memory.file}) {
            ModiTiffFileInfo(file, nullptr, order);
            const uint32_t page = DefinePage(file, 8, 3);
            DefineTiffImageInfo(file, page, 278, 3, 2);
            SetTiffError(12);
            EXPECT_EQ(Encode(file, page, Hex("81 42 24")), 1);
            EXPECT_EQ(TiffError(), 0u);
        }
        CloseTiffFile(onDisk);
        EXPECT_EQ(ReadFileBytes(disk.Path()), expected) << DumpTiff(ReadFileBytes(disk.Path()));
        EXPECT_EQ(Written(memory.file), expected);
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
        MemoryFile memory;
        const uint32_t page = DefinePage(memory.file, 10, 5, 8);
        if (rowsPerStrip >= 0)
            DefineTiffImageInfo(memory.file, page, 278, 4, static_cast<uint32_t>(rowsPerStrip));
        EXPECT_EQ(Encode(memory.file, page, pixels, 10), 1);
        const std::string dump = DumpTiff(Written(memory.file));
        EXPECT_EQ(dump.substr(dump.find("278 ")), tags) << dump;
        EXPECT_EQ(DecodeFile(Written(memory.file)).Joined(), pixels);
    }
}

TEST(EncodeDriver, PagesAreAddedOneAfterTheOther)
{
    const Bytes old = TiffBuilder()
                          .Add(TiffPage::Picture(8, 1, 1, 1).Strips({Hex("01")}))
                          .Add(TiffPage::Picture(8, 1, 1, 1).Strips({Hex("02")}))
                          .Build();
    for (const bool onDisk : {true, false}) {
        SCOPED_TRACE(onDisk);
        NoLeaks leaks;
        TempFile disk(old);
        MemoryFile memory(old);
        HGLOBAL opened = OpenTiffFile(disk.Path(), T_APPEND);
        HGLOBAL file = onDisk ? opened : memory.file;
        for (uint32_t page = 0; page < 2; ++page)
            GetTiffImage(file, page);
        for (uint32_t page = 2; page < 5; ++page) {
            EXPECT_EQ(DefinePage(file, 8, 1), page);
            EXPECT_EQ(Encode(file, page, {static_cast<uint8_t>(page + 1)}), 1);
        }
        for (uint32_t page = 0; page < 5; ++page)
            EXPECT_EQ(DecodePage(file, page).Joined(), Bytes{static_cast<uint8_t>(page + 1)});
        const Bytes written = onDisk ? ReadFileBytes(disk.Path()) : Written(file);
        CloseTiffFile(opened);
        MemoryTiff again(written);
        EXPECT_EQ(NumberOfTiffImages(again.file, TIFF_ALL_PAGES), 5u);
        EXPECT_EQ(DecodePage(again.file, 4).Joined(), Hex("05"));
        EXPECT_EQ(DumpTiff(written).find("overlaps"), std::string::npos) << DumpTiff(written);
    }
}

TEST(EncodeDriver, ALineRoutineThatStopsLeavesTheFileAndMayTryAgain)
{
    const Bytes old = OnePage(TiffPage::Picture(8, 1, 1, 1).Strips({Hex("01")}));
    for (const intptr_t status : {intptr_t{77}, intptr_t{3}, intptr_t{-1}})
        for (const uint32_t stopRow : {0u, 1u, 2u})
            for (const bool isNew : {true, false}) {
                SCOPED_TRACE(testing::Message() << status << ", row " << stopRow << (isNew ? ", new" : ""));
                NoLeaks leaks;
                TempFile disk(isNew ? Bytes() : old);
                HGLOBAL onDisk = OpenTiffFile(disk.Path(), T_APPEND);
                GetTiffImage(onDisk, 0);
                MemoryFile memory(isNew ? Bytes() : old);
                for (HGLOBAL file : {onDisk, memory.file}) {
                    const uint32_t page = DefinePage(file, 8, 3);
                    RowSource source{Hex("0A 0B 0C"), 1, stopRow, status};
                    EXPECT_EQ(EncodeTiffImage(file, page, &source, FillRow), 0);
                    EXPECT_EQ(TiffError(), static_cast<uint32_t>(status));
                    EXPECT_EQ(source.calls, stopRow + 1);
                    if (!isNew) {
                        EXPECT_EQ(DecodePage(file, 0).Joined(), Hex("01"));
                    }
                    EXPECT_EQ(Encode(file, page, Hex("0A 0B 0C")), 1);
                    EXPECT_EQ(DecodePage(file, page).Joined(), Hex("0A 0B 0C"));
                }
                CloseTiffFile(onDisk);
                MemoryTiff again(ReadFileBytes(disk.Path()));
                EXPECT_EQ(NumberOfTiffImages(again.file, TIFF_ALL_PAGES), isNew ? 1u : 2u);
                if (isNew) {
                    EXPECT_EQ(ReadFileBytes(disk.Path()), Written(memory.file)) << "begun afresh";
                }
            }
}

TEST(EncodeDriver, FillOrderTwoReversesTheStripsButNotTheDirectory)
{
    NoLeaks leaks;
    MemoryFile memory;
    const uint32_t page = DefinePage(memory.file, 16, 1);
    DefineTiffImageInfo(memory.file, page, 266, 3, 2);
    EXPECT_EQ(Encode(memory.file, page, Hex("01 C0"), 2), 1);
    const Bytes file = Written(memory.file);
    EXPECT_EQ(Bytes(file.begin() + 8, file.begin() + 10), Hex("80 03"));
    EXPECT_EQ(DecodeFile(file).Joined(), Hex("01 C0"));
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
        {"unknown predictor", 317, 3, 0}, // ignored without LZW
        {"old JPEG without tiles", 259, 6, 9990},
        {"more strips than can be listed", 257, 0xFFFFFFFF, 1},
    };
    for (const auto& [row, tag, value, error] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        MemoryFile memory;
        const uint32_t page = DefinePage(memory.file, 8, 1);
        DefineTiffImageInfo(memory.file, page, tag, 4, value);
        EXPECT_EQ(Encode(memory.file, page, Hex("00")), error == 0);
        EXPECT_EQ(TiffError(), error);
        EXPECT_EQ(GetMemoryTiffHandle(memory.file) != nullptr, error == 0) << "nothing is left behind";
    }
    MemoryFile memory;
    const uint32_t page = DefinePage(memory.file, 8, 1);
    EXPECT_EQ(EncodeTiffImage(memory.file, page, nullptr, nullptr), 0);
    EXPECT_EQ(TiffError(), 29u);
    EXPECT_EQ(Encode(memory.file, 1, Hex("00")), 0);
    EXPECT_EQ(TiffError(), 3u);
    EXPECT_EQ(Encode(nullptr, 0, Hex("00")), 0);
    EXPECT_EQ(TiffError(), 34u);
    DropTiffImage(memory.file, page);
    EXPECT_EQ(Encode(memory.file, page, Hex("00")), 0);
    EXPECT_EQ(TiffError(), 27u);
}
