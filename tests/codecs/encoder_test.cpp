// Bytes is spelt out bit by bit from the tables of T.4 and T.6, or byte by byte.
#include "support/pictures.h"
#include "support/raw_stream.h"
#include "support/target.h"
#include "tiff/ccitt.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <map>

namespace {

const std::string eol = "000000000001", eofb = eol + eol;

std::string Times(const std::string& part, size_t count)
{
    std::string all;
    while (count-- > 0)
        all += part;
    return all;
}

// Lines of eight pixels, "...##.../........".
std::vector<Bytes> Picture(const std::string& drawn)
{
    std::vector<Bytes> lines;
    for (size_t at = 0; at < drawn.size(); at += 9) {
        lines.push_back({0});
        for (size_t pixel = 0; pixel < 8; ++pixel)
            if (drawn[at + pixel] == '#')
                lines.back()[0] = static_cast<uint8_t>(lines.back()[0] | 0x80 >> pixel);
    }
    return lines;
}

Bytes EncodeRaw(uint32_t compression, uint32_t width, uint32_t rows, RowSource source)
{
    const RawStream code;
    EXPECT_EQ(EncodeCcittImage(code.stream, width, rows, compression, &source, FillRow), 1) << TiffError();
    return code.Written();
}

// Lines of whole bytes, in one strip.
Bytes EncodeBytes(uint32_t compression, const std::vector<Bytes>& lines, uint32_t rows)
{
    return EncodeRaw(compression, static_cast<uint32_t>(lines[0].size() * 8), rows, {lines});
}

struct Page {
    uint32_t width = 8, bits = 1, rows = 1, rowsPerStrip = 1, compression = 1;
    uint32_t samples = 1, options = 1, byteOrder = TIFF_INTEL;
};

struct Encoded {
    Bytes code;
    std::vector<uint32_t> offsets, counts;
};

// The strips of a page, one behind the other.
Encoded EncodePage(const Page& page, RowSource source)
{
    const Target target;
    ModiTiffFileInfo(target.file, nullptr, static_cast<uint16_t>(page.byteOrder));
    DefinePage(target.file, {{256, page.width},
                             {257, page.rows},
                             {258, page.bits},
                             {277, page.samples},
                             {278, page.rowsPerStrip},
                             {259, page.compression},
                             {292, page.options},
                             {317, page.options}});
    EXPECT_EQ(EncodeTiffImage(target.file, 0, &source, FillRow), 1) << TiffError();
    const auto numbers = [&](uint32_t tag) {
        const Bytes bytes = TagValues(target.file, 0, tag);
        std::vector<uint32_t> values(bytes.size() / 4);
        std::memcpy(values.data(), bytes.data(), bytes.size());
        return values;
    };
    Encoded encoded{target.Written(), numbers(273), numbers(279)};
    encoded.code.resize(encoded.offsets.back() + encoded.counts.back());
    encoded.code.erase(encoded.code.begin(), encoded.code.begin() + encoded.offsets[0]);
    return encoded;
}

} // namespace

TEST(CcittEncoder, LinesBecomeTheCodesOfTheirScheme)
{
    const std::string runs = "1000 11 1000", tag1 = eol + "1", tag0 = eol + "0", rtc = Times(tag1, 6);
    const std::string fill = "00000000 0000", empties = "00110101 0000110111";
    const struct {
        const char* row;
        uint32_t compression;
        int32_t k;
        const char* picture;
        std::string code;
    } rows[] = {
        {"Huffman rows begin on bytes", 2, 2, "...##.../........", runs + "000000 10011"},
        {"Huffman by its variant", 0x40002, 2, "...##.../........", runs + "000000 10011"},
        {"a black eighth pixel", 2, 2, ".......#", empties + "1111 010"},
        {"black at both ends of the byte", 2, 2, "#......#", "00110101 010 1110 010"},
        {"Group 3", 3, 2, "......../...##...", eol + "10011" + eol + runs + Times(eol, 6)},
        {"Group 3 aligned", 0x40003, 2, "......../........",
         fill + eol + "10011 000 0000" + eol + "10011 000 0000" + eol + Times(fill + eol, 5)},
        {"every second line in runs", 0x10003, 2, "...##.../...##.../..###...",
         tag1 + runs + tag0 + "1 1 1" + tag1 + "0111 10 1000" + rtc},
        {"every fourth", 0x10003, 4, "...##.../...##.../..###...",
         tag1 + runs + tag0 + "1 1 1" + tag0 + "010 1 1" + rtc},
        {"a black eighth pixel between tags", 0x10003, 2, ".......#", tag1 + empties + "1111 010" + rtc},
        {"but not above a line of modes", 0x10003, 2, ".......#/.......#",
         tag1 + "1111 010" + tag0 + "1 1" + rtc},
        {"aligned tags, five bits left or more", 0x50003, 2, "...##.../...##...",
         "000" + tag1 + runs + "0" + tag0 + "111" + tag1 + Times("000" + tag1, 5)},
        {"aligned tags, fewer than five", 0x50003, 2, "........",
         "000" + tag1 + "10011 000000" + tag1 + Times("000" + tag1, 5)},
        {"horizontal, vertical and pass modes", 4, 2, "...##.../..###.../......../#.......",
         "001 1000 11 1  010 1 1  0001 1  001 00110101 010 1" + eofb},
        {"all vertical modes", 4, 2, "####..../#######./#####.../######../########/#####.../####....",
         "001 00110101 011 1  1 0000011 1  1 000010 1  1 011 1  1 000011  1 0000010 1  1 010 1" + eofb},
        {"b1 goes back after a vertical mode to the left", 4, 2, ".....#../..##.#..",
         "0000010 000010 1  0000010 000010 1 1 1" + eofb},
    };
    for (const auto& [row, compression, k, picture, code] : rows) {
        SCOPED_TRACE(row);
        RowSource source{Picture(picture)};
        EXPECT_EQ(SetKfactor(k), 1);
        EXPECT_EQ(SetKfactor(1), 0) << "K stays";
        EXPECT_EQ(SetKfactor(-1), 0);
        const auto count = static_cast<uint32_t>(source.lines.size());
        EXPECT_EQ(EncodeRaw(compression, 8, count, source), Bits(code));
    }
    SetKfactor(2);
}

TEST(CcittEncoder, LongRunsAreMadeUp)
{
    static const struct {
        uint32_t width;
        uint8_t colour;
        const char* code;
    } rows[] = {
        {63, 0x00, "00110100"},
        {64, 0x00, "11011 00110101"},
        {2560, 0x00, "000000011111 00110101"},
        {2561, 0x00, "000000011111 000111"},
        {2624, 0x00, "000000011111 11011 00110101"},
        {6000, 0x00, "000000011111 000000011111 011010010 00001011"},
        {6000, 0xFF, "00110101 000000011111 000000011111 0000001001101 000001100100"},
    };
    for (const auto& [width, colour, code] : rows) {
        SCOPED_TRACE(width);
        EXPECT_EQ(EncodeRaw(2, width, 1, {{Bytes((width + 7) / 8, colour)}}), Bits(code));
    }
}

TEST(CcittEncoder, BitsBehindTheWidthDoNotMatter)
{
    for (const uint8_t padding : Bytes{0x00, 0x01}) {
        const Bytes narrow = {static_cast<uint8_t>(0x02 | padding)};
        EXPECT_EQ(EncodeRaw(2, 7, 1, {{narrow}}), Bits("1110 010"));
        const Bytes wide = {0x00, static_cast<uint8_t>(padding * 0x7F)};
        EXPECT_EQ(EncodeRaw(4, 9, 1, {{wide}}), Bits("1" + eofb));
    }
}

TEST(CcittEncoder, EveryStripStandsAlone)
{
    const Bytes line = {0x18};
    const Bytes group4 = Bits("001 1000 11 1" + eofb);
    EXPECT_EQ(EncodePage({.rows = 2, .compression = 4}, {{line}}).code, group4 + group4);

    // The EOL in front is written once, but each strip begins in runs.
    const std::string rest = "1000 11 1000" + Times(eol + "1", 6);
    const Bytes first = Bits(eol + "1" + rest), second = Bits(rest);
    const Encoded group3 = EncodePage({.rows = 2, .compression = 3}, {{line}});
    EXPECT_EQ(group3.code, first + second);
    EXPECT_EQ(group3.counts[0], first.size());
}

TEST(CcittEncoder, RecordsHoldOneCodeBufferEach)
{
    const struct {
        const char* row;
        uint32_t rows;
        size_t ones; // bytes of white rows, one bit each
        Bytes first, last;
    } rows[] = {
        {"a short record", 1, 0, {0xFE, 0x92, 0x00, 0x04}, {0x80, 0x08, 0x00, 0x80}},
        {"a full one, and none of 0 bytes", 32764 * 8, 32764, {0xFE, 0x92, 0x7F, 0xFF}, {0x00, 0x10, 0x01}},
        {"a tail", 32767 * 8, 32767, {0xFE, 0x92, 0x7F, 0xFF}, {0xFE, 0x92, 0x00, 0x03, 0x00, 0x10, 0x01}},
    };
    for (const auto& [row, count, ones, first, last] : rows) {
        SCOPED_TRACE(row);
        RowSource source{{{0x00}}};
        const RawStream records;
        EXPECT_EQ(EncodeMMRImage(records.stream, 8, count, 1, &source, FillRow), 1);
        EXPECT_EQ(records.Written(), first + Bytes(ones, 0xFF) + last);
    }
}

TEST(CcittEncoder, RawCodeGoesToTheCurrentPositionInTheBitOrderAsked)
{
    for (const auto& [fillOrder, byte] : {std::pair{1u, 0x98}, {2u, 0x19}, {7u, 0x98}}) {
        RowSource source{{{0x00}}};
        const RawStream code({'a', 'b', 'c'});
        mSeek(code.stream, 0, 2);
        EXPECT_EQ(EncodeCcittImageTo(code.stream, 8, 1, fillOrder, TIFF_INTEL, 2, &source, FillRow), 1);
        EXPECT_EQ(code.Written(), (Bytes{'a', 'b', 'c', static_cast<uint8_t>(byte)}));
    }
}

TEST(CcittEncoder, FailuresEndTheCall)
{
    const struct {
        const char* row;
        uint32_t width, rows, compression;
        bool losesStream;
        intptr_t status; // of the line routine at row 1
        uint32_t error, calls;
    } rows[] = {
        {"stopped by the line routine", 8, 5, 4, false, 77, 77, 2},
        {"a status in the high half is none", 8, 5, 4, false, static_cast<intptr_t>(uint64_t{7} << 32), 0, 5},
        {"lines too long for modes", 32768 * 8 + 1, 1, 4, false, 0, 12, 0},
        {"for modes and runs", 32768 * 8 + 1, 1, 0x10003, false, 0, 12, 0},
        {"the longest line", 32768 * 8, 1, 4, false, 0, 0, 1},
        {"runs have no limit", 32768 * 8 + 1, 1, 2, false, 0, 0, 1},
        {"the tail cannot be written", 8, 1, 4, true, 0, 6, 1},
        {"a full buffer cannot be written", 8, 40000, 1, true, 0, 6, 32768},
        {"an unknown compression", 8, 1, 99, false, 0, 11, 0},
    };
    for (const auto& [row, width, count, compression, losesStream, status, error, calls] : rows) {
        SCOPED_TRACE(row);
        RowSource source{{Bytes((width + 7) / 8)}, 1, status};
        const RawStream code;
        source.closedStream = losesStream ? code.stream : 0;
        SetTiffError(0);
        EXPECT_EQ(EncodeCcittImage(code.stream, width, count, compression, &source, FillRow), error == 0);
        EXPECT_EQ(TiffError(), error);
        EXPECT_EQ(source.calls, calls);
    }
    RowSource source{{{0x00}}};
    EXPECT_EQ(Refusal(EncodeCcittImage(-1, 8, 1, 4, &source, FillRow)), 6u);
}

TEST(Encoders, StripsAreRecordedWhereverTheyEndInTheBuffer)
{
    static const struct {
        const char* row;
        uint32_t compression, lineBytes, rows, rowsPerStrip, rowCode;
        std::vector<uint32_t> counts;
    } rows[] = {
        {"inside and across the buffer", 1, 10000, 7, 2, 10000, {20000, 20000, 20000, 10000}},
        {"at its edge", 1, 32767, 3, 1, 32767, {32767, 32767, 32767}},
        {"lines beyond it", 1, 70000, 2, 1, 70000, {70000, 70000}},
        {"many in one", 1, 1, 5, 2, 1, {2, 2, 1}},
        {"Huffman over the edge", 2, 1, 70000, 30000, 1, {30000, 30000, 10000}},
        {"PackBits over the edge", 32773, 1, 40000, 15000, 2, {30000, 30000, 20000}},
    };
    for (const auto& [row, compression, lineBytes, count, rowsPerStrip, rowCode, counts] : rows) {
        SCOPED_TRACE(row);
        const Encoded encoded = EncodePage(
            {.width = lineBytes * 8, .rows = count, .rowsPerStrip = rowsPerStrip, .compression = compression},
            {{Bytes(lineBytes, 0)}});
        EXPECT_EQ(encoded.code.size(), size_t{count} * rowCode);
        EXPECT_EQ(encoded.counts, counts);
        uint32_t offset = 8;
        for (size_t strip = 0; strip < counts.size(); offset += counts[strip++])
            EXPECT_EQ(encoded.offsets[strip], offset);
    }
}

TEST(PackBitsEncoder, PacketsStayInsideTheirLine)
{
    Bytes counting(129);
    for (size_t index = 0; index < counting.size(); ++index)
        counting[index] = static_cast<uint8_t>(index);
    const Bytes countingCode = Bytes{0x7F} + Bytes(counting.begin(), counting.end() - 1) + Bytes{0x00, 0x80};
    const struct {
        const char* row;
        Bytes line;
        Bytes code;
    } rows[] = {
        {"one byte", {0x41}, {0x00, 0x41}},
        {"a literal before a repeat", {0x41, 0x42, 0x42, 0x42}, {0x01, 0x41, 0x42, 0xFF, 0x42}},
        {"and leaves a byte alone", {0x41, 0x42, 0x42}, {0x01, 0x41, 0x42, 0x00, 0x42}},
        {"the longest repeat", Bytes(128, 0x55), {0x81, 0x55}},
        {"one more", Bytes(129, 0x55), {0x81, 0x55, 0x00, 0x55}},
        {"the longest literal", counting, countingCode},
        {"a pair behind eight bytes", {0, 1, 2, 3, 4, 5, 6, 7, 8, 8}, {8, 0, 1, 2, 3, 4, 5, 6, 7, 8, 0, 8}},
    };
    for (const auto& [row, line, code] : rows) {
        SCOPED_TRACE(row);
        EXPECT_EQ(EncodeBytes(32773, {line}, 2), code + code);
    }
}

TEST(LzwEncoder, EveryStripBeginsWithClearAndEndsOnAByte)
{
    const Bytes strip = LzwCode({256, 65, 258, 257});
    const Encoded encoded = EncodePage({.width = 24, .rows = 2, .compression = 5}, {{Bytes(3, 65)}});
    EXPECT_EQ(encoded.counts[0], strip.size());
    EXPECT_EQ(encoded.code, strip + strip);
}

TEST(LzwEncoder, ThreeRowsThatDoNotCompressRestartTheTable)
{
    EXPECT_EQ(EncodeBytes(0x10005, {{0, 1, 2, 3}, {4, 5, 6, 7}, {8, 9, 10, 11}, {12, 13, 14, 15}}, 4),
              LzwCode({256, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 256, 12, 13, 14, 15, 257}));
}

TEST(LzwEncoder, AFullTableIsCleared)
{
    // No two neighbours occur twice, so every byte is a code of its own.
    Bytes line;
    for (uint32_t first = 0; line.size() < 3840; ++first)
        for (uint32_t second = first + 1; second < 256; ++second)
            line.insert(line.end(), {static_cast<uint8_t>(first), static_cast<uint8_t>(second)});
    line.resize(3840);
    std::vector<uint32_t> codes(line.begin(), line.end());
    codes.insert(codes.begin() + (4095 - 258), 256);
    codes.insert(codes.begin(), 256);
    codes.push_back(257);
    EXPECT_EQ(EncodeBytes(0x10005, {line}, 1), LzwCode(codes));
}

// The rule, byte by byte, for one strip.
static std::vector<uint32_t> LzwCodes(const std::vector<Bytes>& lines)
{
    std::vector<uint32_t> codes{256};
    std::map<std::pair<uint32_t, uint32_t>, uint32_t> strings;
    uint32_t nextFree = 258, string = UINT32_MAX, rows = 0;
    const auto restart = [&] {
        codes.push_back(256);
        strings.clear();
        nextFree = 258;
        rows = 0;
    };
    for (size_t row = 0; row < lines.size(); ++row) {
        uint32_t lineCodes = 0;
        for (const uint8_t byte : lines[row]) {
            const auto known = strings.find({string, byte});
            if (string == UINT32_MAX || known != strings.end()) {
                string = string == UINT32_MAX ? byte : known->second;
                continue;
            }
            strings[{string, byte}] = nextFree++;
            codes.push_back(string);
            string = byte;
            ++lineCodes;
            if (nextFree == 4095)
                restart();
        }
        const size_t bits = size_t{lineCodes} * static_cast<size_t>(std::bit_width(nextFree));
        if (++rows < 3 || bits <= lines[row].size() * 8 || row + 1 == lines.size())
            continue;
        codes.push_back(string);
        string = UINT32_MAX;
        restart();
    }
    codes.insert(codes.end(), {string, 257});
    return codes;
}

TEST(LzwEncoder, CodesStandForTheLongestStringsKnown)
{
    for (const size_t length : {1, 2, 3, 7, 310, 1001, 9000})
        for (const uint32_t kinds : {1, 2, 3, 12, 256}) {
            SCOPED_TRACE(testing::Message() << length << " bytes of " << kinds << " kinds");
            std::vector<Bytes> lines;
            for (uint32_t random = 1; lines.size() < 40;) {
                Bytes line;
                while (line.size() < length) {
                    random = random * 1664525 + 1013904223;
                    const uint32_t run = (random >> 16 & 7) == 0 ? 1 + (random >> 24) : 1;
                    line.insert(line.end(), run, static_cast<uint8_t>((random >> 8 & 0xFF) % kinds));
                }
                line.resize(length);
                lines.push_back(line);
            }
            EXPECT_TRUE(EncodeBytes(0x10005, lines, 40) == LzwCode(LzwCodes(lines)));
        }
}

TEST(LzwEncoder, SamplesBecomeDifferencesInTheFilesOrder)
{
    static const struct {
        const char* row;
        uint32_t predictor, bits, samples, byteOrder;
        Bytes line, differences;
    } rows[] = {
        {"1 bit", 2, 1, 1, TIFF_INTEL, {0xAA, 0x55}, {0xAA, 0x55}},
        {"4 bits", 2, 4, 1, TIFF_INTEL, {0x12, 0x45}, {0x11, 0x21}},
        {"8 bits", 2, 8, 1, TIFF_INTEL, {10, 12, 11}, {10, 2, 255}},
        {"16 bits", 2, 16, 1, TIFF_INTEL, {2, 1, 0, 1}, {2, 1, 254, 255}},
        {"16 bits, big-endian", 2, 16, 1, TIFF_MOTOROLA, {2, 1, 0, 1}, {1, 2, 255, 254}},
        {"two channels", 2, 8, 2, TIFF_MOTOROLA, {10, 100, 12, 101}, {10, 100, 2, 1}},
        {"no predictor", 1, 16, 1, TIFF_MOTOROLA, {1, 2, 3, 4}, {2, 1, 4, 3}},
    };
    for (const auto& [row, predictor, bits, samples, byteOrder, line, differences] : rows) {
        SCOPED_TRACE(row);
        std::vector<uint32_t> codes(differences.begin(), differences.end());
        codes.insert(codes.begin(), 256);
        codes.push_back(257);
        const Page page = {.width = static_cast<uint32_t>(line.size()) * 8 / (bits * samples),
                           .bits = bits,
                           .compression = 5,
                           .samples = samples,
                           .options = predictor,
                           .byteOrder = byteOrder};
        EXPECT_EQ(EncodePage(page, {{line}}).code, LzwCode(codes));
    }
    for (const uint32_t compression : {1u, 32773u}) {
        const Page page = {.width = 1, .bits = 16, .compression = compression, .byteOrder = TIFF_MOTOROLA};
        const Bytes code = EncodePage(page, {{{0x01, 0x02}}}).code;
        EXPECT_EQ(Bytes(code.end() - 2, code.end()), (Bytes{0x02, 0x01}));
    }
}

TEST(LzwEncoder, LinesOfAnyLengthBecomeDifferences)
{
    for (const uint32_t samples : {1u, 2u, 3u, 4u})
        for (uint32_t width = 1; width <= 40; ++width) {
            SCOPED_TRACE(testing::Message() << width << " pixels of " << samples);
            Bytes line, differences;
            for (uint32_t at = 0; at < width * samples; ++at) {
                line.push_back(static_cast<uint8_t>(at * at * 5 + 3));
                const uint32_t before = at < samples ? 0 : line[at - samples];
                differences.push_back(static_cast<uint8_t>(line[at] - before));
            }
            Page page = {.width = width, .bits = 8, .compression = 5, .samples = samples, .options = 2};
            const Bytes code = EncodePage(page, {{line}}).code;
            page.options = 1;
            EXPECT_EQ(code, EncodePage(page, {{differences}}).code);
        }
}

// The rule, byte by byte.
static Bytes PackLine(const Bytes& line)
{
    Bytes code;
    for (size_t at = 0; at < line.size();) {
        const size_t limit = std::min<size_t>(line.size() - at - 1, 127);
        const bool repeats = limit > 0 && line[at] == line[at + 1];
        size_t added = 0;
        while (added < limit && (line[at + added] == line[at + added + 1]) == repeats)
            ++added;
        code.push_back(static_cast<uint8_t>(repeats ? 256 - added : added));
        for (size_t byte = 0; byte < (repeats ? 1 : added + 1); ++byte)
            code.push_back(line[at + byte]);
        at += added + 1;
    }
    return code;
}

TEST(PackBitsEncoder, LongLinesPackAsShortOnes)
{
    for (const size_t length : {31, 32, 33, 64, 128, 2047, 2048, 2049, 2175, 2176, 2177, 5000}) {
        SCOPED_TRACE(length);
        Bytes line;
        for (uint32_t random = 1, run; line.size() < length; line.insert(line.end(), run, random >> 24 & 1)) {
            random = random * 1664525 + 1013904223;
            run = (random >> 16 & 3) == 0 ? random >> 8 & 0xFF : 1;
        }
        line.resize(length);
        EXPECT_TRUE(EncodeBytes(32773, {line}, 30) == Repeat(PackLine(line), 30));
    }
}
