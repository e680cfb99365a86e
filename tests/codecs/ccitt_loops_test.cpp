// The fast loops against the careful ones, which other tests check against codes written by hand.
#include "support/bytes.h"
#include "support/ccitt_loops.h"
#include "tiff/ccitt.h"

#include <gtest/gtest.h>

#include <random>

using namespace tiff;

namespace {

struct Scheme {
    const char* name;
    CcittScheme scheme;
    uint32_t compression; // 0: records
};

constexpr Scheme schemes[] = {
    {"modified Huffman", CcittScheme::ModifiedHuffman, 2},
    {"Group 3", CcittScheme::Group3, 3},
    {"Group 3, two-dimensional", CcittScheme::Group3TwoDimensional, 0x10003},
    {"Group 4", CcittScheme::Group4, 4},
    {"records", CcittScheme::MmrRecords, 0},
};

constexpr uint32_t BUFFER_BYTES = 32767;

// A page with rows like the row above except for a few pixels, runs of any length, fine patterns, empty rows
// and noise. Every mode and every kind of run occurs.
struct Drawing {
    uint32_t width;
    std::mt19937 random;
    Bytes row;

    Drawing(uint32_t width, uint32_t seed) : width(width), random(seed), row((width + 7) / 8)
    {
    }
    uint32_t Below(uint32_t limit)
    {
        return static_cast<uint32_t>(random() % limit);
    }
    void Flip(uint32_t start, uint32_t end)
    {
        for (uint32_t column = start; column < std::min(end, width); ++column)
            row[column / 8] ^= static_cast<uint8_t>(0x80 >> column % 8);
    }
    const Bytes& NextRow()
    {
        const uint32_t kind = Below(16);
        if (kind == 0)
            row.assign(row.size(), Below(3) == 0 ? 0xFF : 0);
        else if (kind == 1)
            for (uint8_t& byte : row)
                byte = static_cast<uint8_t>(random());
        else if (kind == 2)
            for (uint8_t& byte : row)
                byte = 0x11;
        const uint32_t changes = kind < 8 ? Below(width / 16 + 2) : Below(4);
        for (uint32_t change = 0; change < changes; ++change) {
            const uint32_t start = Below(width), length = 1u << Below(kind == 3 ? 12 : 5);
            Flip(start, start + 1 + Below(length));
        }
        return row;
    }
};

intptr_t DrawRow(void* line, uint32_t, void* drawing)
{
    const Bytes& row = static_cast<Drawing*>(drawing)->NextRow();
    std::copy(row.begin(), row.end(), static_cast<uint8_t*>(line));
    return 0;
}

Bytes Code(const Scheme& scheme, uint32_t width, uint32_t rows, uint32_t seed)
{
    Drawing drawing(width, seed);
    Block block(Bytes(1));
    const TiffStream stream = OpenMemoryStream(block.Get(), 0);
    if (scheme.compression)
        EXPECT_EQ(EncodeCcittImage(stream, width, rows, scheme.compression, &drawing, DrawRow), 1);
    else
        EXPECT_EQ(EncodeMMRImage(stream, width, rows, 0, &drawing, DrawRow), 1);
    const uint32_t bytes = mTell(stream);
    mClose(stream);
    return Content(block.Get(), bytes);
}

// The first `bytes` of the code, decoded both ways.
CcittOutcome ExpectSame(const Scheme& scheme, const Bytes& code, uint32_t bytes, uint32_t width,
                        uint32_t rows)
{
    Block block(code);
    const auto decode = [&](CcittLoops loops) {
        return DecodeWith(loops, block.Get(), bytes, scheme.scheme, width, rows);
    };
    const CcittOutcome all = decode(CcittLoops::All), careful = decode(CcittLoops::CarefulOnly);
    EXPECT_EQ(all.status, careful.status);
    EXPECT_EQ(all.rows, careful.rows);
    EXPECT_EQ(all.position, careful.position);
    EXPECT_EQ(all.pixels, careful.pixels);
    return all;
}

} // namespace

TEST(CcittLoops, PagesOfAnyWidthDecodeAlike)
{
    for (const Scheme& scheme : schemes)
        for (const uint32_t width : {1u, 2u, 7u, 8u, 9u, 63u, 64u, 65u, 1728u, 9000u}) {
            SCOPED_TRACE(testing::Message() << scheme.name << ", width " << width);
            const Bytes code = Code(scheme, width, 60, width);
            EXPECT_EQ(ExpectSame(scheme, code, static_cast<uint32_t>(code.size()), width, 60).rows, 60u);
        }
}

// The careful reader refills when it needs eight bits and has fewer. Data that end or continue anywhere
// around that moment give the same rows and the same status.
TEST(CcittLoops, DataCutAroundARefillEndAlike)
{
    constexpr uint32_t width = 1200, rows = 1500;
    for (const Scheme& scheme : schemes) {
        const Bytes code = Code(scheme, width, rows, 3);
        ASSERT_GT(code.size(), BUFFER_BYTES + 100) << scheme.name;
        for (uint32_t bytes = BUFFER_BYTES - 12; bytes <= BUFFER_BYTES + 12; ++bytes) {
            SCOPED_TRACE(testing::Message() << scheme.name << ", " << bytes << " bytes");
            ExpectSame(scheme, code, bytes, width, rows);
        }
        for (uint32_t bytes = 1; bytes < 200; ++bytes) {
            SCOPED_TRACE(testing::Message() << scheme.name << ", " << bytes << " bytes");
            ExpectSame(scheme, code, bytes, width, rows);
        }
    }
}

// Damage that goes back and forth fills the lists of narrow lines.
TEST(CcittLoops, DamageIsMetAlike)
{
    constexpr uint32_t rows = 60;
    std::mt19937 random(1);
    for (const Scheme& scheme : schemes)
        for (const uint32_t width : {12u, 40u, 700u}) {
            const Bytes whole = Code(scheme, width, rows, 4);
            for (uint32_t round = 0; round < 250; ++round) {
                SCOPED_TRACE(testing::Message() << scheme.name << ", width " << width << ", round " << round);
                Bytes code = whole;
                for (uint32_t flips = 1 + round % 4; flips > 0; --flips)
                    code[4 + random() % (code.size() - 4)] ^= static_cast<uint8_t>(1u << random() % 8);
                ExpectSame(scheme, code, static_cast<uint32_t>(code.size()), width, rows);
            }
        }
}

TEST(CcittLoops, DamageAtARefillIsMetAlike)
{
    constexpr uint32_t width = 1200, rows = 1500;
    std::mt19937 random(2);
    for (const Scheme& scheme : schemes) {
        const Bytes whole = Code(scheme, width, rows, 5);
        for (uint32_t round = 0; round < 24; ++round) {
            SCOPED_TRACE(testing::Message() << scheme.name << ", round " << round);
            Bytes code = whole;
            code[BUFFER_BYTES - 12 + round] = static_cast<uint8_t>(round % 3 == 0 ? 0 : random());
            ExpectSame(scheme, code, static_cast<uint32_t>(code.size()), width, rows);
        }
    }
}
