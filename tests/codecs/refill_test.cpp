// Byte codecs at the edge of the code buffer: random code is made together with the bytes that it
// stands for, cut at every byte around the first refill, and what arrives must be the whole lines.
#include "support/pictures.h"
#include "support/raw_stream.h"

#include <gtest/gtest.h>

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

// More rows are asked for than there are, so that the code's end is always met.
void ExpectLines(const Bytes& code, uint32_t compression, Bytes expected, uint32_t error,
                 uint32_t lineBytes = LINE_BYTES)
{
    const auto rows = static_cast<uint32_t>(expected.size() / lineBytes);
    expected.resize(rows * lineBytes);
    const RawStream raw(code);
    RowCollector collector{lineBytes};
    DecodeCcittImageFrom(raw.stream, 0, lineBytes * 8, rows + 10, compression, 1, TIFF_INTEL, &collector,
                         CollectRow);
    EXPECT_EQ(TiffError(), error);
    EXPECT_TRUE(collector.decoded.Joined() == expected) << "lines differ";
}

// Codes, and what a reader knows of them.
struct Lzw {
    std::vector<uint32_t> codes;
    std::vector<Bytes> strings;
    Bytes before, bytes;
    std::vector<size_t> lengths; // of the bytes, up to each code

    Lzw()
    {
        for (uint32_t byte = 0; byte < 258; ++byte)
            strings.push_back({static_cast<uint8_t>(byte)});
    }
    bool Opens() const
    {
        return !before.empty() && strings.size() < 4096;
    }
    void Put(uint32_t code)
    {
        if (code == 256) {
            strings.resize(258);
            before.clear();
        } else {
            if (Opens()) {
                strings.push_back(before);
                strings.back().push_back(code + 1 < strings.size() ? strings[code][0] : before[0]);
            }
            before = strings[code];
            bytes.insert(bytes.end(), before.begin(), before.end());
        }
        codes.push_back(code);
        lengths.push_back(bytes.size());
    }
    // Codes that exist, with a Clear now and then; some go on long after the table is full.
    void PutRandom(Random& random, uint32_t clearEvery)
    {
        const size_t known = before.empty() ? 256 : strings.size() + Opens();
        const uint32_t code = random.Below(static_cast<uint32_t>(known));
        Put(random.Below(clearEvery) == 0 || code == 257 ? 256 : code);
    }
};

} // namespace

TEST(PackBits, CodeCutAroundARefillGivesTheLinesBefore)
{
    for (const uint32_t seed : {1u, 2u, 3u}) {
        Random random{seed};
        Bytes code, lines;
        std::vector<size_t> ends; // of the lines' code
        while (code.size() < BUFFER_BYTES + 2 * REACH) {
            Bytes line;
            while (line.size() < LINE_BYTES) {
                const uint32_t count = 1 + random.Below(random.Below(3) ? 12 : 128);
                const bool literal = random.Below(2);
                code.push_back(static_cast<uint8_t>(literal ? count - 1 : 256 - count));
                for (uint32_t byte = literal ? count : 1; byte > 0; --byte) {
                    code.push_back(static_cast<uint8_t>(random.Below(256)));
                    line.insert(line.end(), literal ? 1 : count + 1, code.back());
                }
            }
            line.resize(LINE_BYTES);
            lines = lines + line;
            ends.push_back(code.size());
        }
        for (uint32_t cut = BUFFER_BYTES - REACH; cut < BUFFER_BYTES + REACH; ++cut) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", cut at " << cut);
            const auto whole = std::upper_bound(ends.begin(), ends.end(), cut) - ends.begin();
            ExpectLines(Part(code, 0, cut), 32773, Part(lines, 0, static_cast<size_t>(whole) * LINE_BYTES),
                        5);
        }
    }
}

TEST(Lzw, CodeCutAroundARefillGivesTheLinesBefore)
{
    Random random{7};
    Lzw lzw;
    while (LzwCode(lzw.codes).size() < BUFFER_BYTES + 20)
        for (int code = 0; code < 200 || lzw.codes.size() < 20000; ++code)
            lzw.PutRandom(random, 3000);
    const Bytes code = LzwCode(lzw.codes);
    for (uint32_t cut = BUFFER_BYTES + 12; cut-- > BUFFER_BYTES - 12;) {
        SCOPED_TRACE(testing::Message() << "cut at " << cut);
        while (LzwCode(lzw.codes).size() > cut)
            lzw.codes.pop_back();
        ExpectLines(Part(code, 0, cut), 0x10005, Part(lzw.bytes, 0, lzw.lengths[lzw.codes.size() - 1]), 12);
    }
}

TEST(Lzw, CodesGrowWiderUpToTheLastByte)
{
    for (const uint32_t known : {512u, 1024u, 2048u, 4096u})
        for (uint32_t count = known - 258 - 6; count < known - 258 + 6; ++count) {
            SCOPED_TRACE(testing::Message() << known << " strings, " << count << " codes");
            Lzw lzw;
            for (uint32_t code = 0; code < count; ++code)
                lzw.Put(code * 7 % 256);
            ExpectLines(LzwCode(lzw.codes), 0x10005, lzw.bytes, 12, 1);
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
        Random random{clearEvery};
        Lzw lzw;
        while (lzw.codes.size() < 90000)
            lzw.PutRandom(random, clearEvery);
        EXPECT_GT(lzw.bytes.size(), size_t{120000});
        ExpectLines(LzwCode(lzw.codes), 0x10005, lzw.bytes, 12);
    }
}

TEST(Lzw, ALongRunOutgrowsTheHistory)
{
    static const struct {
        const char* row;
        std::vector<uint32_t> first;
    } rows[] = {{"of one byte", {65}}, {"that begins with two", {65, 66, 258}}};
    for (const auto& [row, first] : rows) {
        SCOPED_TRACE(row);
        Lzw lzw;
        for (const uint32_t code : first)
            lzw.Put(code);
        // Each string is the one before and its first byte once more, up to the last code.
        while (lzw.strings.size() < 4095)
            lzw.Put(static_cast<uint32_t>(lzw.strings.size()));
        EXPECT_GT(lzw.bytes.size(), size_t{7000000});
        ExpectLines(LzwCode(lzw.codes), 0x10005, lzw.bytes, 12);
    }
}
