// Files that lie about sizes: an error, no access outside a block (the sanitizers watch), no
// allocation that the picture does not call for, no work without end.
#include "standin/standin.h"
#include "support/jpeg_stream.h"
#include "support/open_file.h"
#include "support/pictures.h"
#include "tiff/ioca.h"

#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <set>

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

TEST(Hostile, ACycleOfDirectoriesIsSearchedOnceForTheEndOfAStrip)
{
    TiffBuilder builder;
    Bytes cycle = builder.Add(TiffPage::Picture(8, 1, 1, 1).Data(273, 0, {{0xA5}}).Long(279, {0})).Build();
    std::memcpy(&cycle[builder.links[0]], &builder.directories[0], 4);
    TempFile file(cycle);
    NewFile copy;
    standin::ResetCalls();
    EXPECT_EQ(CopyTiffImageInFile(file.Path(), 0, copy.Path(), T_CREAT), 1);
    EXPECT_LE(standin::CallsMade(standin::Lock), 1000u);
    EXPECT_EQ(GetNumberOfImagesInTiffFile(copy.Path()), 1u);
}

TEST(Hostile, DirectoriesOverEachOtherAreABrokenChain)
{
    // Each counts 300 entries and begins four bytes behind the one before.
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
    // Make-up codes for ever, empty runs for ever, steps that never advance.
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

namespace {

// Loads the first page, which may cost twice its picture and 64 MiB.
uint32_t LoadFirst(const Bytes& file)
{
    constexpr uint64_t MOST_BESIDES = 64 << 20;
    const standin::LeakCheck leaks;
    const TempFile disk(file);
    standin::ResetPeak();
    HGLOBAL dib = LoadTiffIntoDIB(disk.Path(), 0, 0);
    const uint32_t error = TiffError();
    EXPECT_TRUE(dib || error != 0);
    EXPECT_LE(standin::BytesAllocatedPeak(), MOST_BESIDES + 2 * (dib ? GlobalSize(dib) : 0));
    GlobalFree(dib);
    return error;
}

TiffPage Grey(uint32_t width, uint32_t length, uint32_t compression = 1)
{
    return TiffPage::Picture(width, length, 8, compression, 1);
}

// All entries are the same one, which leads nowhere.
Bytes ManyEntries(uint32_t count)
{
    return Hex("49492A00 08000000") + Bytes{static_cast<uint8_t>(count), static_cast<uint8_t>(count >> 8)} +
           Repeat(Hex("0F01 0200 FFFF0000 08000000"), count) + Bytes(4);
}

} // namespace

TEST(Hostile, EveryClassOfFaultHasItsError)
{
    const Bytes row(64, 0x11);
    const struct {
        const char* row;
        Bytes file;
        uint32_t error;
    } rows[] = {
        {"no bytes", {}, 6},
        {"half a header", Hex("49492A00"), 6},
        {"a header and no directory", Hex("49492A00 08000000"), 6},
        {"a directory cut inside its count", Hex("49492A00 08000000 01"), 6},
        {"a directory at the header", Hex("49492A00 00000000"), 3},
        {"a directory at the end of all", Hex("49492A00 FFFFFFFF"), 6},
        {"no entries", Hex("49492A00 08000000 0000 00000000"), 6},
        {"65,535 entries that are not there", Hex("49492A00 08000000 FFFF"), 6},
        {"5,000 equal entries in a file of 60 KB", ManyEntries(5000), 10},
        {"65,535 equal entries", ManyEntries(65535), 10},
        {"fewer offsets than strips", OnePage(Grey(64, 4).Strips({row, row}).Short(278, {1})), 6},
        {"fewer byte counts than offsets",
         OnePage(Grey(64, 2).Strips({row, row}).Short(278, {1}).Long(279, {64})), 0},
        {"no byte counts", OnePage(Grey(64, 1).Strips({row}).Long(279, {})), 0},
        {"offsets as text", OnePage(Grey(64, 1).Strips({row}).Entry(273, 2, 4, {8, 0, 0, 0})), 0},
        {"offsets as doubles", OnePage(Grey(64, 1).Strips({row}).Entry(273, 12, 1, {8, 0})), 0},
        {"offsets of a type that is none", OnePage(Grey(64, 1).Strips({row}).Entry(273, 77, 1, {8})), 0},
        {"an offset at the end of 32 bits", OnePage(Grey(64, 1).Long(273, {0xFFFFFFFF}).Long(279, {64})), 6},
        {"a byte count of 4 GB", OnePage(Grey(64, 1).Strips({row}).Long(279, {0xFFFFFFFF})), 0},
        {"no rows a strip", OnePage(Grey(64, 1).Strips({row}).Long(278, {0})), 0},
        {"4 billion rows a strip", OnePage(Grey(64, 1).Strips({row}).Long(278, {0xFFFFFFFF})), 0},
        {"no width", OnePage(Grey(0, 1).Strips({row})), 10},
        {"no length", OnePage(Grey(64, 0).Strips({row})), 5},
        {"as many samples as there are numbers", OnePage(Grey(64, 1).Strips({row}).Short(277, {65535})), 16},
        {"no bits", OnePage(Grey(64, 1).Strips({row}).Short(258, {0})), 16},
        {"bits that are no depth", OnePage(Grey(64, 1).Strips({row}).Short(258, {255})), 16},
        {"a palette of three colours",
         OnePage(Grey(64, 1).Strips({row}).Short(262, {3}).Short(320, std::vector<uint32_t>(9))), 0},
        {"a palette of LONGs",
         OnePage(Grey(64, 1).Strips({row}).Short(262, {3}).Long(320, std::vector<uint32_t>(768))), 10},
        {"a palette outside the file",
         OnePage(Grey(64, 1).Strips({row}).Short(262, {3}).Entry(320, 3, 0x10000000, {8})), 10},
        {"no palette", OnePage(Grey(64, 1).Strips({row}).Short(262, {3})), 10},
        {"a predictor over no code", OnePage(Grey(64, 9, 5).Strips({{}}).Short(317, {2})), 12},
        {"a predictor that is none", OnePage(Grey(64, 9, 5).Strips({row}).Short(317, {77})), 11},
        {"a predictor over one-bit samples",
         OnePage(TiffPage::Picture(65535, 9, 1, 5).Strips({row}).Short(317, {2})), 12},
        {"LZW codes from the future", OnePage(Grey(64, 9, 5).Strips({Bits("100000000 111111111 111111111")})),
         12},
        {"LZW without a Clear", OnePage(Grey(64, 9, 5).Strips({Bits("000000001 000000010 100000010")})), 12},
        {"a PackBits run over the end of the line", OnePage(Grey(1, 9, 32773).Strips({Hex("80 41 81 42")})),
         0},
        {"a PackBits literal over the end of the data", OnePage(Grey(64, 9, 32773).Strips({Hex("7F 41")})),
         5},
        {"a run over the end of the line",
         OnePage(TiffPage::Picture(1, 9, 1, 2).Strips({Bits("000000011111 000000011111 10011")})), 0},
        {"a tile without end",
         OnePage(Grey(64, 1).Long(322, {0xFFFFFFF0}).Long(323, {0xFFFFFFF0}).Long(324, {8}).Long(325, {64})),
         10},
    };
    for (const auto& [name, file, error] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(LoadFirst(file), error);
    }
}

TEST(Hostile, AFileThatChangesAfterItWasOpened)
{
    const Bytes before = OnePage(Grey(64, 64).Strips({Bytes(4096)}));
    static const struct {
        const char* row;
        size_t bytes;
        uint32_t error;
    } rows[] = {{"nothing is left", 0, 6},
                {"half a header", 4, 6},
                {"half a strip", 2000, 6},
                {"half a directory", before.size() - 60, 10}};
    for (const auto& [name, bytes, error] : rows) {
        SCOPED_TRACE(name);
        const standin::LeakCheck leaks;
        const TempFile file(before);
        HGLOBAL tiff = OpenTiffFile(file.Path(), T_READ);
        std::ofstream(file.Path(), std::ios::binary)
            .write(reinterpret_cast<const char*>(before.data()), static_cast<std::streamsize>(bytes));
        HGLOBAL dib = GetTiffImage(tiff, 0) ? LoadTiffChainIntoDIB(tiff, 0) : nullptr;
        EXPECT_EQ(TiffError(), error);
        GlobalFree(dib);
        CloseTiffFile(tiff);
    }
}

TEST(Hostile, AMemoryBlockShorterThanClaimed)
{
    const Bytes file = OnePage(Grey(64, 64).Strips({Bytes(4096)}));
    const Block block(file);
    HGLOBAL tiff = OpenTiffInMemory(block.Get(), 0x7FFFFFFF, T_READ);
    EXPECT_EQ(NumberOfTiffImages(tiff, TIFF_ALL_PAGES), 1u);
    EXPECT_EQ(GetTiffImage(tiff, 0), 1);
    GlobalFree(LoadTiffChainIntoDIB(tiff, 0));
    CloseTiffFile(tiff);
}

namespace {

// Three components that share samples, with everything that may stand before a scan.
Bytes ColourJpeg()
{
    JpegStream page;
    page.Start()
        .Segment(0xEE, Hex("41646F6265 0064 0000 0000 01"))
        .Tables()
        .WideQuantisers(1, 300)
        .Huffman(1)
        .Interval(1)
        .Frame(32, 16, {{0x22, 0}, {0x11, 1}, {0x11, 1}})
        .Scan({0, 1, 2}, 1);
    for (const int level : {1, 3}) {
        for (int block = 0; block < 4; ++block)
            page.Block(level + block);
        page.Block(2, 1).Block(level, 2);
        if (level == 1)
            page.Restart(0);
    }
    return OnePage(TiffPage::Picture(32, 16, 8, 7, 6).Short(277, {3}).Short(278, {16}).Strips({page.End()}));
}

Bytes Cals()
{
    const TempFile file({});
    const Block dib(PackedDib({24, 6, 1, {0xFFFFFF, 0}, Repeat(Hex("00A5C300"), 6)}));
    EXPECT_EQ(SaveDIBInCALSFormat(file.Path(), dib.Get(), nullptr, nullptr, 0), 1);
    return ReadFileBytes(file.Path());
}

uint32_t LoadCals(const Bytes& bytes)
{
    const TempFile file(bytes);
    HGLOBAL dib = LoadCALSIntoDIB(file.Path(), 0);
    const uint32_t error = TiffError();
    EXPECT_TRUE(dib || error != 0);
    GlobalFree(dib);
    return error;
}

// These answer yes or no, whatever the last error is.
uint32_t ReadField(const Bytes& bytes)
{
    const auto before = standin::Live().handles;
    OpenedFile file(bytes);
    TiffIocaDescription description;
    const bool found = ReadMODCAHeader(file.handle, &description);
    file.closed = standin::Live().handles == before; // the file ended early
    EXPECT_FALSE(found && file.closed);
    return 0;
}

} // namespace

TEST(Hostile, AHeaderMayHoldAnyByteAnywhere)
{
    const Bytes field =
        Repeat(Hex("5A"), 9) + Hex("D3EEFB 7000 9101FF 940900 07D0 07D0 06C0 0898 95020101 960101 "
                                   "970100 FE92 0008 01020304 0506 93007100");
    const struct {
        const char* row;
        Bytes file;
        uint32_t (*read)(const Bytes&);
        std::set<uint32_t> errors;
    } formats[] = {
        {"JPEG", ColourJpeg(), LoadFirst, {0, 5, 6, 8, 10, 11, 12, 14, 16}},
        {"CALS", Cals(), LoadCals, {0, 18, 20}},
        {"MO:DCA", field, ReadField, {0}},
    };
    for (const auto& [name, whole, read, errors] : formats) {
        const standin::LeakCheck leaks;
        EXPECT_EQ(read(whole), 0u) << name;
        for (size_t at = 0; at < std::min<size_t>(whole.size(), 1200); ++at)
            for (const int value : {0x00, 0x01, 0x7F, 0x80, 0xFF, -1, whole[at] ^ 1, whole[at] ^ 0x20}) {
                SCOPED_TRACE(std::string(name) + ", byte " + std::to_string(at));
                Bytes bytes = value < 0 ? Part(whole, 0, at) : whole;
                if (value >= 0)
                    bytes[at] = static_cast<uint8_t>(value);
                const uint32_t error = read(bytes);
                EXPECT_TRUE(errors.contains(error)) << error;
            }
    }
}
