// PackBits, LZW and rows that are not compressed.
#include "support/pictures.h"

#include <gtest/gtest.h>

namespace {

Decoded DecodeBytes(uint32_t width, uint32_t rows, uint32_t bits, uint32_t compression, const Bytes& code,
                    uint32_t predictor = 0, uint16_t byteOrder = TIFF_INTEL, uint32_t samples = 1)
{
    TiffPage page = TiffPage::Picture(width, rows, bits, compression, 1).Short(277, {samples}).Strips({code});
    if (predictor)
        page.Short(317, {predictor});
    return DecodeFile(OnePage(page, byteOrder));
}

} // namespace

TEST(PackBits, PacketsFillLines)
{
    static const struct {
        const char* row;
        uint32_t width;
        Bytes code, pixels;
    } rows[] = {
        {"literal and repeat", 5, Hex("01 41 42 FE 43"), Hex("41 42 43 43 43")},
        {"-128 repeats", 129, Hex("80 55"), Bytes(129, 0x55)},
        {"a packet beyond the line is cut", 1, Hex("80 55"), Hex("55")},
        {"a literal beyond the line is cut", 2, Hex("03 01 02 03 04"), Hex("01 02")},
    };
    for (const auto& [row, width, code, pixels] : rows) {
        SCOPED_TRACE(row);
        const Decoded decoded = DecodeBytes(width, 2, 8, 32773, code + code);
        EXPECT_EQ(decoded.error, 0u);
        EXPECT_EQ(decoded.Joined(), pixels + pixels) << "the next line starts at its start";
    }
}

TEST(Lzw, StringsAreUnpackedOverLineEnds)
{
    static const struct {
        const char* row;
        uint32_t width, rows;
        Bytes code, pixels;
        uint32_t error;
    } rows[] = {
        {"strings and clear", 3, 2, LzwCode({256, 65, 66, 258, 256, 67, 68, 257}), Hex("414241 424344"), 0},
        {"a code that is being made", 3, 1, LzwCode({256, 65, 258, 257}), Hex("414141"), 0},
        {"the same code of other strings after a clear", 6, 3,
         LzwCode({256, 65, 258, 256, 65, 66, 258, 260, 256, 67, 68, 69, 70, 71, 72, 73, 74, 257}),
         Hex("414141 414241 424142 414344 454647 48494A"), 0},
        {"neither clear nor end", 3, 1, LzwCode({65, 258}), Hex("414141"), 0},
        {"a string over three lines", 1, 6, LzwCode({256, 65, 258, 259, 257}), Hex("41414141 4141"), 0},
        {"a code beyond the table", 3, 1, LzwCode({256, 65, 259}), {}, 12},
        {"a first code beyond the bytes", 3, 1, LzwCode({256, 258}), {}, 12},
        {"an early end", 2, 3, LzwCode({256, 65, 66, 67, 257, 0, 0}), Hex("4142 4300"), 12},
        {"an end in the last line", 3, 1, LzwCode({256, 65, 257}), Hex("410000"), 0},
    };
    for (const auto& [row, width, length, code, pixels, error] : rows) {
        SCOPED_TRACE(row);
        const Decoded decoded = DecodeBytes(width, length, 8, 5, code);
        EXPECT_EQ(decoded.error, error);
        EXPECT_EQ(decoded.Joined(), pixels);
    }
}

TEST(Lzw, DifferencesAreSummedByDepth)
{
    static const struct {
        const char* row;
        uint32_t width, bits, samples;
        uint16_t order;
        std::initializer_list<uint32_t> codes;
        Bytes pixels;
    } rows[] = {
        {"4 bits", 4, 4, 1, TIFF_INTEL, {256, 0x1F, 0x31, 257}, Hex("10 34")},
        {"8 bits", 3, 8, 1, TIFF_INTEL, {256, 10, 250, 1, 257}, Hex("0A 04 05")},
        {"16 bits", 2, 16, 1, TIFF_INTEL, {256, 0xFF, 0, 2, 1, 257}, Hex("FF00 0102")},
        {"16 bits, other order", 2, 16, 1, TIFF_MOTOROLA, {256, 0, 0xFF, 1, 2, 257}, Hex("FF00 0102")},
        {"two samples", 2, 8, 2, TIFF_INTEL, {256, 1, 255, 1, 255, 257}, Hex("01FF 02FE")},
        {"RGB", 2, 8, 3, TIFF_INTEL, {256, 1, 2, 3, 1, 1, 255, 257}, Hex("010203 020302")},
        {"CMYK", 2, 8, 4, TIFF_INTEL, {256, 1, 2, 3, 4, 1, 1, 1, 252, 257}, Hex("01020304 02030400")},
        {"1 bit is left alone", 16, 1, 1, TIFF_INTEL, {256, 0x81, 0x81, 257}, Hex("8181")},
    };
    for (const auto& [row, width, bits, samples, order, codes, pixels] : rows) {
        SCOPED_TRACE(row);
        const Decoded decoded = DecodeBytes(width, 1, bits, 5, LzwCode(codes), 2, order, samples);
        EXPECT_EQ(decoded.error, 0u);
        EXPECT_EQ(decoded.Joined(), pixels);
    }
}

TEST(Lzw, DifferencesOfLinesOfAnyLengthAreSummed)
{
    for (const uint32_t samples : {1u, 2u, 3u, 4u})
        for (uint32_t width = 1; width <= 40; ++width) {
            SCOPED_TRACE(testing::Message() << width << " pixels of " << samples);
            std::vector<uint32_t> codes = {256};
            Bytes sums;
            for (uint32_t at = 0; at < width * samples; ++at) {
                codes.push_back(at * 37 % 256);
                const uint32_t before = at < samples ? 0 : sums[at - samples];
                sums.push_back(static_cast<uint8_t>(before + codes.back()));
            }
            codes.push_back(257);
            EXPECT_EQ(DecodeBytes(width, 1, 8, 5, LzwCode(codes), 2, TIFF_INTEL, samples).Joined(), sums);
        }
}

TEST(ByteCodecs, SixteenBitSamplesArriveInTheProcessorsOrder)
{
    static const struct {
        const char* row;
        uint32_t compression, bits, samples;
        Bytes code, pixels;
    } rows[] = {
        {"stored", 1, 16, 1, Hex("0102 0304"), Hex("0201 0403")},
        {"PackBits", 32773, 16, 1, Hex("03 0102 0304"), Hex("0201 0403")},
        {"LZW", 5, 16, 1, LzwCode({256, 1, 2, 3, 4, 257}), Hex("0201 0403")},
        {"two samples of 8 bits stay", 1, 8, 2, Hex("0102 0304"), Hex("0102 0304")},
    };
    for (const auto& [row, compression, bits, samples, code, pixels] : rows) {
        SCOPED_TRACE(row);
        EXPECT_EQ(DecodeBytes(2, 1, bits, compression, code, 0, TIFF_MOTOROLA, samples).Joined(), pixels);
    }
}
