// Byte codecs at the edge of the code buffer: the same code is cut at every byte around the first refill, and
// the result is compared with decoders without buffers.
#include "core/stream.h"
#include "support/pictures.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr uint32_t BUFFER_BYTES = 32767, REACH = 140, LINE_BYTES = 100;

struct Random {
    uint32_t state;

    uint32_t Below(uint32_t limit)
    {
        state = state * 1664525 + 1013904223;
        return static_cast<uint32_t>(uint64_t{state >> 8} * limit >> 24);
    }
};

// Whole lines, and the error that comes after them.
struct Expected {
    Bytes lines;
    uint32_t error;
};

Bytes RandomPackets(Random random, size_t bytes)
{
    Bytes code;
    while (code.size() < bytes) {
        const uint32_t count = 1 + random.Below(random.Below(3) ? 12 : 128);
        const bool literal = random.Below(2);
        code.push_back(static_cast<uint8_t>(literal ? count - 1 : 256 - count));
        for (uint32_t byte = literal ? count : 1; byte > 0; --byte)
            code.push_back(static_cast<uint8_t>(random.Below(256)));
    }
    return code;
}

Expected UnpackPackets(const Bytes& code)
{
    Bytes lines, line;
    for (size_t at = 0; at < code.size();) {
        const uint32_t header = code[at++];
        const size_t taken = header < 128 ? header + 1 : 1;
        if (code.size() - at < taken)
            break;
        if (header < 128)
            line.insert(line.end(), &code[at], &code[at] + taken);
        else
            line.insert(line.end(), 257 - header, code[at]);
        at += taken;
        if (line.size() >= LINE_BYTES) {
            lines.insert(lines.end(), line.begin(), line.begin() + LINE_BYTES);
            line.clear();
        }
    }
    return {lines, 5};
}

// The state of an LZW reader: strings by code, and the width of the next code.
struct Dictionary {
    std::vector<Bytes> strings;
    Bytes before;

    uint32_t Width() const
    {
        const size_t next = strings.size() + (before.empty() || strings.size() == 4096 ? 0 : 1);
        return next >= 2048 ? 12 : next >= 1024 ? 11 : next >= 512 ? 10 : 9;
    }
    void Clear()
    {
        strings.resize(258);
        for (uint32_t byte = 0; byte < 256; ++byte)
            strings[byte] = {static_cast<uint8_t>(byte)};
        before.clear();
    }
    Bytes Take(uint32_t code)
    {
        if (!before.empty() && strings.size() < 4096) {
            strings.push_back(before);
            strings.back().push_back(code < strings.size() - 1 ? strings[code][0] : before[0]);
        }
        return before = strings[code];
    }
};

// Valid codes with a Clear now and then; some go on long after the table is full.
Bytes RandomCodes(Random random, size_t bytes, uint32_t clearEvery, std::vector<uint32_t>& codes)
{
    Dictionary dictionary;
    dictionary.Clear();
    std::string digits;
    while (digits.size() < bytes * 8) {
        const bool pending = !dictionary.before.empty() && dictionary.strings.size() < 4096;
        const auto known = static_cast<uint32_t>(dictionary.strings.size() + pending);
        const uint32_t width = dictionary.Width();
        uint32_t code = dictionary.before.empty() ? random.Below(256) : random.Below(known);
        if (random.Below(clearEvery) == 0 || code == 257)
            code = 256;
        codes.push_back(code);
        for (uint32_t bit = width; bit-- > 0;)
            digits += code >> bit & 1 ? '1' : '0';
        if (code == 256)
            dictionary.Clear();
        else
            dictionary.Take(code);
    }
    return Bits(digits);
}

Expected UnpackCodes(const Bytes& code, const std::vector<uint32_t>& codes)
{
    Dictionary dictionary;
    dictionary.Clear();
    Bytes bytes;
    uint64_t bits = 0;
    for (const uint32_t each : codes) {
        bits += dictionary.Width();
        if (bits > code.size() * 8)
            break;
        if (each == 256) {
            dictionary.Clear();
            continue;
        }
        const Bytes string = dictionary.Take(each);
        bytes.insert(bytes.end(), string.begin(), string.end());
    }
    bytes.resize(bytes.size() / LINE_BYTES * LINE_BYTES);
    return {bytes, 12};
}

void ExpectLines(const Bytes& code, uint32_t compression, const Expected& expected)
{
    // More rows than exist, so that the code's end is always reached.
    const auto rows = static_cast<uint32_t>(expected.lines.size() / LINE_BYTES + 10);
    Block block(code);
    const TiffStream stream = tiff::OpenMemoryStream(block.Get(), static_cast<uint32_t>(code.size()));
    RowCollector collector{LINE_BYTES};
    DecodeCcittImageFrom(stream, 0, LINE_BYTES * 8, rows, compression, 1, TIFF_INTEL, &collector, CollectRow);
    EXPECT_EQ(TiffError(), expected.error);
    EXPECT_TRUE(collector.decoded.Joined() == expected.lines) << "lines differ";
    mClose(stream);
}

Bytes Cut(const Bytes& code, size_t bytes)
{
    return {code.begin(), code.begin() + static_cast<ptrdiff_t>(bytes)};
}

} // namespace

TEST(PackBits, CodeCutAroundARefillGivesTheLinesBefore)
{
    for (const uint32_t seed : {1u, 2u, 3u}) {
        const Bytes code = RandomPackets({seed}, BUFFER_BYTES + 2 * REACH);
        for (uint32_t cut = BUFFER_BYTES - REACH; cut < BUFFER_BYTES + REACH; ++cut) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", cut at " << cut);
            ExpectLines(Cut(code, cut), 32773, UnpackPackets(Cut(code, cut)));
        }
    }
}

TEST(Lzw, CodeCutAroundARefillGivesTheLinesBefore)
{
    std::vector<uint32_t> codes;
    const Bytes code = RandomCodes({7}, BUFFER_BYTES + 20, 3000, codes);
    for (uint32_t cut = BUFFER_BYTES - 12; cut < BUFFER_BYTES + 12; ++cut) {
        SCOPED_TRACE(testing::Message() << "cut at " << cut);
        ExpectLines(Cut(code, cut), 0x10005, UnpackCodes(Cut(code, cut), codes));
    }
}

TEST(Lzw, StringsOutliveTheHistory)
{
    static constexpr struct {
        const char* row;
        uint32_t clearEvery;
    } rows[] = {{"tables of all sizes", 500}, {"full tables in use", 20000}, {"one table", 1u << 24}};
    for (const auto& [row, clearEvery] : rows) {
        SCOPED_TRACE(row);
        std::vector<uint32_t> codes;
        const Bytes code = RandomCodes({clearEvery}, 4 * BUFFER_BYTES, clearEvery, codes);
        const Expected expected = UnpackCodes(code, codes);
        EXPECT_GT(expected.lines.size(), size_t{2} << 16);
        ExpectLines(code, 0x10005, expected);
    }
}

TEST(Lzw, ALongRunOutgrowsTheHistory)
{
    static const struct {
        const char* row;
        std::vector<uint32_t> first;
    } rows[] = {{"of one byte", {256, 65}}, {"that begins with two", {256, 65, 66, 258}}};
    for (const auto& [row, first] : rows) {
        SCOPED_TRACE(row);
        // Each string is the last one plus its first byte, up to the last code.
        std::vector<uint32_t> codes = first;
        while (codes.size() < 4096 - 256)
            codes.push_back(static_cast<uint32_t>(256 + codes.size()));
        Dictionary dictionary;
        dictionary.Clear();
        std::string digits;
        for (const uint32_t code : codes) {
            for (uint32_t bit = dictionary.Width(); bit-- > 0;)
                digits += code >> bit & 1 ? '1' : '0';
            if (code != 256)
                dictionary.Take(code);
        }
        const Expected expected = UnpackCodes(Bits(digits), codes);
        EXPECT_GT(expected.lines.size(), size_t{7000000});
        ExpectLines(Bits(digits), 0x10005, expected);
    }
}
