// Files with wrong sizes: an error, no access outside a block (the sanitizers watch), no allocation larger
// than the picture needs, and no endless work.
#include "standin/standin.h"
#include "support/pictures.h"

#include <cstring>
#include <gtest/gtest.h>

TEST(Hostile, ValuesThatTheFileCannotHoldAreNotAllocated)
{
    static const struct {
        const char* row;
        uint16_t tag, type;
        uint32_t count;
        int32_t loads;
        uint32_t tags;
    } rows[] = {
        {"text of 4 GB", 270, 2, 0xFFFFFFFF, 1, 8},
        {"rationals of 32 GB", 282, 5, 0xFFFFFFFF, 1, 7},
        {"bytes of 1 GB", 700, 1, 0x40000000, 1, 8},
        {"longs that wrap to nothing", 324, 4, 0x40000000, 1, 7},
    };
    for (const auto& [row, tag, type, count, loads, tags] : rows) {
        SCOPED_TRACE(row);
        standin::LeakCheck leaks;
        TempFile file(OnePage(TiffPage::Picture(8, 1, 1, 1).Strips({{0}}).Entry(tag, type, count, {8, 8})));
        standin::ResetPeak();
        HGLOBAL tiff = OpenTiffFile(file.Path(), T_READ);
        EXPECT_EQ(GetTiffImage(tiff, 0), loads);
        uint32_t found = 0;
        EXPECT_EQ(GetTiffImageInfoBuffer(tiff, 0, 0, nullptr, nullptr, &found), 1);
        EXPECT_EQ(found, tags);
        EXPECT_LT(standin::LargestAllocation(), 200000u);
        CloseTiffFile(tiff);
    }
}

TEST(Hostile, ManyValuesOverTheSameBytesAreNotAllocated)
{
    TiffBuilder builder;
    TiffPage page = TiffPage::Picture(8, 1, 1, 1).Strips({Bytes(60000)});
    for (uint16_t tag = 1000; tag < 3000; ++tag)
        page.Entry(tag, 1, 4, {0, 0, 0, 0});
    Bytes file = builder.Add(page).Build();
    for (uint32_t entry = 7; entry < 2007; ++entry) {
        const uint32_t count = 60000, offset = 8;
        std::memcpy(&file[builder.directories[0] + 2 + 12 * entry + 4], &count, 4);
        std::memcpy(&file[builder.directories[0] + 2 + 12 * entry + 8], &offset, 4);
    }
    MemoryTiff opened(file);
    standin::ResetPeak();
    DropTiffImage(opened.file, 0);
    EXPECT_EQ(GetTiffImage(opened.file, 0), 1);
    EXPECT_LT(standin::LargestAllocation(), 4 * file.size());
}

TEST(Hostile, ACycleOfDirectoriesIsReadOnce)
{
    TiffBuilder builder;
    for (int page = 0; page < 50; ++page)
        builder.Add(TiffPage::Picture(8, 1, 1, 1).Strips({Bytes(9000)}));
    Bytes cycle = builder.Build();
    std::memcpy(&cycle[builder.links[49]], &builder.directories[20], 4);
    TempFile file(cycle);
    standin::ResetCalls();
    HGLOBAL tiff = OpenTiffFile(file.Path(), T_READ);
    EXPECT_EQ(NumberOfTiffImages(tiff, TIFF_ALL_PAGES), TIFF_MAX_PAGES);
    EXPECT_LE(standin::CallsMade(standin::Read), 52u);
    CloseTiffFile(tiff);
}

TEST(Hostile, DirectoriesOverEachOtherAreABrokenChain)
{
    // Each has 300 entries and begins four bytes after the one before.
    constexpr uint32_t DIRECTORY_BYTES = 2 + 300 * 12, SIZE = 3 * DIRECTORY_BYTES;
    Bytes file = Hex("49492A00 08000000") + Repeat(Hex("2C01"), SIZE / 2);
    for (uint32_t at = 8; at < DIRECTORY_BYTES; at += 4) {
        const uint32_t next = at + 4;
        std::memcpy(&file[at + DIRECTORY_BYTES], &next, 4);
    }
    const MemoryTiff opened(file);
    EXPECT_EQ(NumberOfTiffImages(opened.file, TIFF_ALL_PAGES), 3u);
    EXPECT_EQ(opened.openError, 6u);
}

// Replaces the JPEG library's decoder: closes another file while it runs.
static uint32_t CloseAnotherFile(CodecContext* context)
{
    const int loaded = standin::ModuleLoads() - standin::ModuleFrees();
    EXPECT_GE(loaded, 2);
    for (int times = 0; times < 2; ++times)
        CloseTiffFile(OpenTiffInMemory(nullptr, 0, T_CREAT));
    EXPECT_EQ(standin::ModuleLoads() - standin::ModuleFrees(), 1);
    return context->stripCount;
}

TEST(Hostile, OldJpegTilesAreAsManyAsTheirOffsets)
{
    const auto function = reinterpret_cast<FARPROC>(reinterpret_cast<void*>(CloseAnotherFile));
    static const struct {
        uint16_t type;
        uint32_t count, tiles;
    } rows[] = {{4, 20, 20}, {3, 20, 20}, {1, 20, 5}, {2, 20, 5}, {1, 3, 1}};
    for (const auto& [type, count, tiles] : rows) {
        SCOPED_TRACE(type);
        standin::RegisterModule("JPGLIB.DLL", {{"JPEGDecoder", function}});
        TiffPage page = TiffPage::Picture(80, 40, 8, 6).Short(512, {1}).Short(322, {8}).Short(323, {8});
        page.Long(519, {0}).Long(520, {0}).Long(521, {0});
        page.Long(325, {0}).Entry(324, type, count, std::vector<uint32_t>(count, 1));
        {
            const MemoryTiff opened(OnePage(page));
            EXPECT_EQ(DecodePage(opened.file, 0).error, tiles);
        }
        EXPECT_EQ(standin::ModuleLoads(), standin::ModuleFrees());
        standin::ForgetModules();
    }
}

TEST(Hostile, HugeDimensionsCostWhatThePictureCosts)
{
    static const struct {
        const char* row;
        uint32_t width, length, bits, compression;
    } rows[] = {
        {"all sizes at their largest", 0xFFFFFFFF, 0xFFFFFFFF, 32, 1},
        {"a row beyond 4 GB", 0x7FFFFFFF, 1, 32, 5},
        {"a row of 256 MB", 0x7FFFFFFF, 1, 1, 4},
        {"a length beyond 31 bits", 8, 0xFFFFFFFF, 1, 4},
        {"modified Huffman", 0x7FFFFFFF, 0xFFFFFFFF, 1, 2},
        {"PackBits", 0x10000, 0x10000, 1, 32773},
    };
    for (const auto& [row, width, length, bits, compression] : rows) {
        SCOPED_TRACE(row);
        standin::LeakCheck leaks;
        TempFile file(OnePage(TiffPage()
                                  .Long(256, {width})
                                  .Long(257, {length})
                                  .Short(258, {bits})
                                  .Short(262, {5})
                                  .Short(259, {compression})
                                  .Strips({Bytes(100, 0x55)})));
        HGLOBAL dib = LoadTiffIntoDIB(file.Path(), 0, 0);
        EXPECT_TRUE(dib || TiffError() != 0);
        if (dib)
            GlobalFree(dib);
    }
}

TEST(Hostile, RunsWithoutEndEndWithTheData)
{
    // Endless make-up codes, endless empty runs, steps that never advance.
    static const struct {
        const char* row;
        uint32_t compression;
        Bytes code;
    } rows[] = {
        {"make-up codes", 2, Repeat(Bits("000000011111 000000011111"), 1000000)},
        {"empty runs", 2, Repeat(Bits("00110101 0000110111 00110101 0000110111 0000"), 100000)},
        {"empty horizontal modes", 4, Repeat(Bits("001 00110101 0000110111 00110101"), 100000)},
        {"passes", 4, Repeat(Bits("0001 0001"), 100000)},
        {"left steps", 4, Repeat(Bits("0000010 1"), 100000)},
        {"extensions", 4, Repeat(Bits("0000001 0"), 100000)},
    };
    for (const auto& [row, compression, code] : rows) {
        SCOPED_TRACE(row);
        for (const uint32_t width : {1u, 2u, 9u, 65535u}) {
            standin::LeakCheck leaks;
            const Decoded decoded =
                DecodeFile(OnePage(TiffPage::Picture(width, 3000, 1, compression).Strips({code})));
            EXPECT_EQ(decoded.result, decoded.error == 0);
            EXPECT_LE(decoded.rows.size(), 3000u);
        }
    }
}
