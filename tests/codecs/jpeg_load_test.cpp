// Pages of JPEG streams whose samples are known without decoding.
#include "support/jpeg_stream.h"
#include "support/leaks.h"
#include "support/tiff_builder.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

// A loaded picture: levels of its first sample, row by row from the top.
struct Loaded {
    uint32_t error = 0;
    bool there = false;
    BITMAPINFOHEADER header{};
    std::vector<Bytes> rows;

    int At(uint32_t column, uint32_t row, uint32_t sample = 0) const
    {
        return rows[row][column * header.biBitCount / 8 + sample];
    }
};

Loaded Load(const TiffPage& page, uint16_t byteOrder = TIFF_INTEL)
{
    const MemoryTiff memory(OnePage(page, byteOrder));
    HGLOBAL block = LoadTiffChainIntoDIB(memory.file, 0);
    Loaded loaded{TiffError(), block != nullptr};
    if (!block)
        return loaded;
    const auto* start = static_cast<const uint8_t*>(GlobalLock(block));
    std::memcpy(&loaded.header, start, 40);
    const BITMAPINFOHEADER& header = loaded.header;
    const uint32_t height = static_cast<uint32_t>(header.biHeight), stride = header.biSizeImage / height;
    const uint8_t* pixels = start + 40 + header.biClrUsed * 4;
    for (uint32_t row = height; row-- > 0;)
        loaded.rows.emplace_back(pixels + row * stride, pixels + (row + 1) * stride);
    GlobalUnlock(block);
    GlobalFree(block);
    return loaded;
}

TiffPage Page(uint32_t width, uint32_t length, std::vector<Bytes> strips, uint32_t rowsPerStrip,
              uint32_t samples = 1, uint32_t photometric = 1)
{
    return TiffPage::Picture(width, length, 8, 7, photometric)
        .Short(277, {samples})
        .Short(278, {rowsPerStrip})
        .Strips(std::move(strips));
}

TiffPage GreyPage(const Bytes& stream, uint32_t width = 8, uint32_t length = 8)
{
    return Page(width, length, {stream}, length);
}

JpegStream Whole(uint8_t width = 8, uint8_t height = 8)
{
    return JpegStream().Start().Tables().Frame(width, height).Scan();
}

TiffPage& WithTables(TiffPage& page, const Bytes& tables)
{
    return page.Entry(347, 7, static_cast<uint32_t>(tables.size()), {tables.begin(), tables.end()});
}

} // namespace

TEST(JpegLoad, TablesAreFoundWhereverTheyStand)
{
    const Bytes pageTables = JpegStream().Start().Tables().Interval(1).Segment(0xFE, {1, 2}).End();
    const auto bare = [] { return JpegStream().Start().Frame(8, 8).Scan().Block(20).End(); };
    const struct {
        const char* row;
        Bytes tables, stream;
        int level;
        uint32_t error;
    } rows[] = {
        {"in the stream", {}, Whole().Block(20).End(), 148, 0},
        {"in the page", pageTables, bare(), 148, 0},
        {"in the page without EOI", Part(pageTables, 0, pageTables.size() - 2), bare(), 148, 0},
        {"the stream's own first", pageTables,
         JpegStream().Start().Quantisers(0, 16).Frame(8, 8).Scan().Block(20).End(), 168, 0},
        {"behind the frame", {}, JpegStream().Start().Frame(8, 8).Tables().Scan().Block(20).End(), 148, 0},
        {"numbers 2 and 3, 16 bits",
         {},
         JpegStream()
             .Start()
             .WideQuantisers(3, 400)
             .Huffman(2)
             .Frame(8, 8, {{0x11, 3}})
             .Scan({0}, 2)
             .Block(1)
             .End(),
         178,
         0},
        {"the standard's Huffman tables",
         {},
         JpegStream().Start().Quantisers().Frame(8, 8).Scan().Put(Bits("110 10100 1010 1111")).End(),
         148,
         0},
        {"extended frame, APP0, COM, fill bytes",
         {},
         JpegStream()
                 .Start()
                 .Segment(0xE0, {7})
                 .Segment(0xFE, {})
                 .Put({0xFF, 0xFF})
                 .Tables()
                 .Frame(8, 8, {{}}, 0xC1)
                 .Scan()
                 .Block(20)
                 .End() +
             Bytes{1, 2, 3},
         148,
         0},
        {"no quantisers", {}, JpegStream().Start().Huffman().Frame(8, 8).Scan().Block(20).End(), 0, 12},
        {"another Huffman table",
         {},
         JpegStream().Start().Quantisers().Huffman(1).Frame(8, 8).Scan().Block(20).End(),
         0,
         12},
        {"a broken page table", Hex("FFD8 FFC4 0003 44"), Whole().Block(20).End(), 0, 12},
    };
    for (const auto& [row, tables, stream, level, error] : rows) {
        SCOPED_TRACE(row);
        TiffPage page = GreyPage(stream);
        const Loaded loaded = Load(tables.empty() ? page : WithTables(page, tables));
        EXPECT_EQ(loaded.error, error);
        ASSERT_EQ(loaded.there, error == 0);
        if (loaded.there) {
            EXPECT_EQ(loaded.rows, std::vector<Bytes>(8, Bytes(8, static_cast<uint8_t>(level))));
        }
    }
}

TEST(JpegLoad, TablesOfAStripAreGoneWithIt)
{
    const Bytes own = Whole().Block(20).End(), bare = JpegStream().Start().Frame(8, 8).Scan().Block(20).End();
    TiffPage page = Page(8, 16, {own, bare}, 8);
    EXPECT_EQ(Load(page).error, 12u);
    WithTables(page, JpegStream().Start().Quantisers(0, 16).Huffman().End());
    const Loaded loaded = Load(page);
    EXPECT_EQ(loaded.error, 0u);
    EXPECT_EQ(loaded.At(0, 7), 148);
    EXPECT_EQ(loaded.At(0, 8), 168);
}

TEST(JpegLoad, StripsAreCutToTheirRows)
{
    const auto strip = [](int level, uint8_t height) {
        return JpegStream()
            .Start()
            .Tables()
            .Frame(9, height)
            .Scan()
            .Blocks({level, level, level, level})
            .End();
    };
    TiffPage page = Page(9, 15, {strip(1, 12), strip(2, 12)}, 12).Short(266, {2});
    const Loaded loaded = Load(page, TIFF_MOTOROLA);
    EXPECT_EQ(loaded.error, 0u) << "a whole strip's rows behind the last";
    EXPECT_EQ(loaded.header.biClrUsed, 256u);
    EXPECT_EQ(loaded.At(8, 11), 129);
    EXPECT_EQ(loaded.At(8, 14), 130);
    EXPECT_EQ(Load(Page(9, 15, {strip(1, 11), strip(2, 12)}, 12)).error, 12u) << "too few rows";
    EXPECT_EQ(Load(Page(10, 12, {strip(1, 12)}, 12)).error, 12u) << "another width";
    EXPECT_EQ(Load(Page(9, 24, {strip(1, 12)}, 12)).error, 5u) << "a strip is missing";
}

TEST(JpegLoad, SharedSamplesAreWidened)
{
    // Two blocks of each component, side by side or one above the other, of 0 and 64.
    const struct {
        const char* row;
        uint8_t factors;
        uint32_t width, height;
        bool across;
        std::vector<int> levels; // of 128 + x around the step
        uint32_t first;
    } rows[] = {
        {"not shared", 0x11, 16, 8, true, {0, 64}, 7},
        {"two across", 0x21, 32, 8, true, {0, 16, 48, 64}, 14},
        {"two down", 0x12, 8, 32, false, {0, 16, 48, 64}, 14},
        {"two both ways", 0x22, 16, 32, false, {0, 16, 48, 64}, 14},
        {"four across", 0x41, 64, 8, true, {0, 0, 64, 64}, 30},
        {"three down", 0x13, 8, 48, false, {0, 0, 64, 64}, 22},
    };
    for (const auto& [row, factors, width, height, across, levels, first] : rows) {
        SCOPED_TRACE(row);
        const uint32_t luminance = (factors >> 4) * (factors & 15u);
        JpegStream stream = JpegStream().Start().Tables();
        stream.Frame(static_cast<uint8_t>(width), static_cast<uint8_t>(height), {{factors}, {}, {}})
            .Scan({0, 1, 2});
        for (int mcu = 0; mcu < 2; ++mcu) {
            for (uint32_t block = 0; block < luminance; ++block)
                stream.Block(0, 0);
            stream.Block(mcu * 64, 1).Block(mcu * 64, 2);
        }
        // Photometric 2: the second component is green.
        const Loaded loaded = Load(Page(width, height, {stream.End()}, height, 3, 2));
        ASSERT_TRUE(loaded.there);
        EXPECT_EQ(loaded.error, 0u);
        for (uint32_t at = 0; at < levels.size(); ++at)
            EXPECT_EQ(loaded.At(across ? first + at : 0, across ? 0 : first + at, 1), 128 + levels[at]) << at;
    }
}

TEST(JpegLoad, ComponentsMayHaveScansOfTheirOwn)
{
    // 9 x 9 pixels with chrominance of half the size: 4 blocks of luminance, 1 of each chrominance.
    JpegStream stream = JpegStream().Start().Tables().Frame(9, 9, {{0x22}, {}, {}});
    stream.Interval(3).Scan({1}).Block(10, 1).Interval(0).Quantisers(1, 3).Scan({0});
    stream.Block(1).Block(2).Block(3).Block(4).Scan({2}).Block(30, 2);
    const Loaded loaded = Load(Page(9, 9, {stream.End()}, 9, 3, 2));
    EXPECT_EQ(loaded.error, 0u);
    ASSERT_TRUE(loaded.there);
    EXPECT_EQ(loaded.At(8, 0, 2), 130);
    EXPECT_EQ(loaded.At(0, 8, 2), 131);
    EXPECT_EQ(loaded.At(8, 8, 2), 132);
    EXPECT_EQ(loaded.At(8, 8, 1), 138);
    EXPECT_EQ(loaded.At(8, 8, 0), 158);
}

TEST(JpegLoad, FactorsOfOneComponentMeanNothing)
{
    const Bytes stream = JpegStream().Start().Tables().Frame(16, 8, {{0x42}}).Scan().Blocks({5, 6}).End();
    const Loaded loaded = Load(GreyPage(stream, 16, 8));
    EXPECT_EQ(loaded.error, 0u);
    EXPECT_EQ(loaded.At(7, 7), 133);
    EXPECT_EQ(loaded.At(8, 0), 134);
}

TEST(JpegLoad, PhotometricSaysWhatComponentsAre)
{
    const Bytes adobe = Hex("41646F6265 0064 0000 0000 02");
    // Levels 0, 40, -20, 60 are samples 128, 168, 108, 188.
    const struct {
        const char* row;
        uint32_t samples, photometric;
        Bytes adobe;
        std::vector<int> pixel; // as the DIB has it
    } rows[] = {
        {"grey", 1, 0, {}, {128}},
        {"red, green, blue", 3, 2, {}, {108, 168, 128}},
        {"YCbCr",
         3,
         6,
         {},
         {199, 129, 100}}, // 128 + 1.772 x 40, 128 - .344 x 40 + .714 x 20, 128 - 1.402 x 20
        {"YCbCr, Adobe or not", 3, 6, adobe, {199, 129, 100}},
        {"inks", 4, 5, {}, {39, 23, 33}},    // 255 - (ink x (1 - 188 / 255) + 188)
        {"YCCK", 4, 5, adobe, {52, 34, 26}}, // inks 255 - 100, 255 - 129, 255 - 199
    };
    for (const auto& [row, samples, photometric, marker, pixel] : rows) {
        SCOPED_TRACE(row);
        JpegStream stream = JpegStream().Start().Tables();
        if (!marker.empty())
            stream.Segment(0xEE, marker);
        stream.Frame(8, 8, std::vector<JpegComponent>(samples)).Scan(Part({0, 1, 2, 3}, 0, samples));
        const int levels[] = {0, 40, -20, 60};
        for (uint32_t component = 0; component < samples; ++component)
            stream.Block(levels[component], component);
        const Loaded loaded = Load(Page(8, 8, {stream.End()}, 8, samples, photometric));
        ASSERT_TRUE(loaded.there);
        EXPECT_EQ(loaded.header.biBitCount, samples == 1 ? 8 : 24);
        for (uint32_t sample = 0; sample < pixel.size(); ++sample)
            EXPECT_NEAR(loaded.At(3, 3, sample), pixel[sample], 1) << sample;
    }
}

TEST(JpegLoad, DataThatEndEarlyLeaveTheRowsBefore)
{
    const Bytes whole = Whole(16, 24).Blocks({-100, -100, 50, 50, 60, 60}).End();
    const Bytes early = Whole(16, 24).Blocks({-100, -100, 50}).End();
    const struct {
        const char* row;
        Bytes stream;
        uint32_t error, rows;
    } rows[] = {
        {"whole", whole, 0, 24},
        {"without EOI", Part(whole, 0, whole.size() - 2), 0, 24},
        {"without the last byte of code", Part(whole, 0, whole.size() - 3), 5, 16},
        {"EOI in the second row of blocks", early, 5, 8},
        {"cut in a table", Part(whole, 0, 30), 5, 0},
        {"empty", {}, 5, 0},
    };
    for (const auto& [row, stream, error, known] : rows) {
        SCOPED_TRACE(row);
        // The byte count ends each: the next strip follows at once.
        const Loaded loaded = Load(Page(16, 48, {stream, whole}, 24));
        ASSERT_TRUE(loaded.there);
        EXPECT_EQ(loaded.error, stream.empty() ? 0u : error);
        if (stream.empty())
            continue; // a count of 0 says nothing, and the next strip stands there
        for (uint32_t at = 0; at < (error ? 48 : 24); ++at)
            EXPECT_EQ(loaded.At(15, at), at >= known ? 0 : at < 8 ? 28 : at < 16 ? 178 : 188) << at;
    }
}

TEST(JpegLoad, RestartsAreFoundAgain)
{
    // Intervals of one block; markers by number, 8 for none.
    const struct {
        const char* row;
        std::vector<uint8_t> markers; // before the second block and so on
        std::vector<int> levels, expected;
        uint32_t error;
    } rows[] = {
        {"in order", {0, 1, 2}, {10, 20, 30, 40}, {10, 20, 30, 40}, 0},
        {"one left out with its block", {0, 2}, {10, 20, 40}, {10, 20, 0, 40}, 0},
        {"one twice", {0, 0, 1, 2}, {10, 20, 99, 30, 40}, {10, 20, 30, 40}, 0},
        {"another number", {0, 5, 2}, {10, 20, 30, 40}, {10, 20, 30, 40}, 0},
        {"an end instead", {0, 1}, {10, 20, 30}, {}, 5},
    };
    for (const auto& [row, markers, levels, expected, error] : rows) {
        SCOPED_TRACE(row);
        JpegStream stream = JpegStream().Start().Tables().Frame(32, 8).Interval(1).Scan().Block(levels[0]);
        for (size_t at = 0; at < markers.size(); ++at)
            stream.Restart(markers[at]).Block(levels[at + 1]);
        const Loaded loaded = Load(GreyPage(stream.End(), 32, 8));
        EXPECT_EQ(loaded.error, error);
        for (uint32_t block = 0; block < expected.size(); ++block)
            EXPECT_EQ(loaded.At(block * 8 + 3, 3), 128 + expected[block]) << block;
    }
}

TEST(JpegLoad, PagesThatCannotBeDecodedAreRefused)
{
    NoLeaks leaks;
    const auto frame = [](uint8_t code, uint8_t precision) {
        return JpegStream().Start().Tables().Frame(8, 8, {{}}, code, precision).Scan().Block(1).End();
    };
    const auto factors = [](std::vector<JpegComponent> components) {
        return Page(
            8, 8, {JpegStream().Start().Tables().Frame(8, 8, components).Scan({0, 1, 2}).Open() + Bytes(99)},
            8, 3, 2);
    };
    TiffPage tiled = TiffPage::Picture(8, 8, 8, 7).Short(322, {8}).Short(323, {8}).Long(324, {8});
    const struct {
        const char* row;
        TiffPage page;
        uint32_t error;
    } rows[] = {
        {"progressive", GreyPage(frame(0xC2, 8)), 11},
        {"arithmetic", GreyPage(frame(0xC9, 8)), 11},
        {"12 bits", GreyPage(frame(0xC1, 12)), 16},
        {"16 bits", GreyPage(frame(0xC0, 16)), 12},
        {"no strips", TiffPage::Picture(8, 8, 8, 7), 10},
        {"tiles", tiled, 10},
        {"planes", Page(8, 8, {Whole().Block(1).End()}, 8, 3, 2).Short(284, {2}), 16},
        {"no SOI", GreyPage(Part(Whole().Block(1).End(), 2, 999)), 12},
        {"more components than samples", Page(8, 8, {Whole().Block(1).End()}, 8, 3, 2), 12},
        {"samples of 4 bits", TiffPage::Picture(8, 8, 4, 7).Strips({Whole().Block(1).End()}), 12},
        {"no frame", GreyPage(JpegStream().Start().Tables().Scan().Block(1).End()), 12},
        {"two frames", GreyPage(JpegStream().Start().Tables().Frame(8, 8).Frame(8, 8).Scan().Block(1).End()),
         12},
        {"the component twice", GreyPage(JpegStream().Start().Tables().Frame(8, 8).Scan({0, 0}).End()), 12},
        {"an unknown component", GreyPage(JpegStream().Start().Tables().Frame(8, 8).Scan({1}).End()), 12},
        {"table 4", GreyPage(JpegStream().Start().Quantisers(4).Huffman().Frame(8, 8).Scan().End()), 12},
        {"too many codes", GreyPage(JpegStream().Start().Segment(0xC4, Bytes{0, 3} + Bytes(18)).End()), 12},
        {"a segment too short", GreyPage(JpegStream().Start().Put(Hex("FFDB 0001 00")).Tables().End()), 12},
        {"bits that are no code", GreyPage(Whole().Put(Bits("1100 0000")).Put(Bytes(9)).End()), 12},
        {"more coefficients than a block has",
         GreyPage(JpegStream()
                      .Start()
                      .Tables()
                      .Segment(0xC4, Bytes{0x10} + Hex("01000000 00000000 00000000 00000000 F0"))
                      .Frame(8, 8)
                      .Scan()
                      .Put(Bytes(9))
                      .End()),
         12},
        {"a factor of 5", factors({{0x51}, {}, {}}), 12},
        {"a factor of 0", factors({{0x01}, {}, {}}), 12},
        {"factors 3 and 2", factors({{0x31}, {0x21}, {}}), 12},
        {"eleven blocks", factors({{0x41}, {0x41}, {0x13}}), 12},
    };
    for (const auto& [row, page, error] : rows) {
        SCOPED_TRACE(row);
        const Loaded loaded = Load(page);
        EXPECT_FALSE(loaded.there);
        EXPECT_EQ(loaded.error, error);
    }
}
