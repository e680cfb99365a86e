// Bare streams end where their data end, which files never do: a directory follows the strips.
#include "support/leaks.h"
#include "support/pictures.h"
#include "support/raw_stream.h"

#include <gtest/gtest.h>

namespace {

struct Call {
    uint32_t offset = 0, width = 8, rows = 1, compression = 4, fillOrder = 1;
    bool records = false;
};

Decoded DecodeRaw(const Bytes& data, const Call& call)
{
    NoLeaks leaks;
    const RawStream raw(data);
    RowCollector collector{(call.width + 7) / 8};
    SetTiffError(0);
    auto* decode = call.records ? DecodeMMRImage : DecodeCcittImageFrom;
    collector.decoded.result = decode(raw.stream, call.offset, call.width, call.rows, call.compression,
                                      call.fillOrder, TIFF_INTEL, &collector, CollectRow);
    collector.decoded.error = TiffError();
    return collector.decoded;
}

Bytes Record(const Bytes& data)
{
    return Hex("FE 92") + Bytes{static_cast<uint8_t>(data.size() >> 8), static_cast<uint8_t>(data.size())} +
           data;
}

} // namespace

TEST(RawStreams, ARowWhoseCodesAreThereIsHandedOver)
{
    static const struct {
        const char* row;
        uint32_t compression, rows;
        const char* code;
        uint32_t error;
        size_t decoded;
    } rows[] = {
        {"Group 4, the last bit of the data", 4, 8, "1111 1111", 0, 8},
        {"Group 4, one row more", 4, 9, "1111 1111", 5, 8},
        {"Group 4, a code cut", 4, 9, "1111 1110", 5, 7},
        {"Group 4, zeros at the end are no EOFB", 4, 4, "1000 0000", 5, 1},
        {"Group 4, an EOFB cut", 4, 4, "1 00000000000100000000000", 5, 1},
        {"Group 4, a whole EOFB", 4, 9, "1111 1111 000000000001000000000001", 20, 8},
        {"Huffman, two rows", 2, 2, "1000 0011 1000 0011", 0, 2},
        {"Huffman, a row cut", 2, 2, "1000 0011 1000 0000", 5, 1},
        {"Group 3, RTC and no more", 3, 2, "10011 000000000001 000000000001 0000000", 5, 1},
        {"Group 3, a second byte of look-ahead missing", 3, 2, "10011 10011 000000", 0, 2},
        {"Group 3, a long code cut", 3, 1, "00110101 0000 0001", 5, 0},
        {"PackBits", 32773, 2, "00000000 01010101 00000000", 5, 1},
        {"LZW", 0x10005, 2, "100000000 001000001 000000", 12, 1},
        {"stored", 1, 3, "11111111 00000000", 5, 2},
        {"unknown", 99, 1, "11111111", 11, 0},
        {"no data", 4, 1, "", 6, 0},
    };
    for (const auto& [row, compression, length, code, error, decodedRows] : rows) {
        SCOPED_TRACE(row);
        const Decoded decoded = DecodeRaw(Bits(code), {.rows = length, .compression = compression});
        EXPECT_EQ(decoded.error, error);
        EXPECT_EQ(decoded.result, error == 0);
        EXPECT_EQ(decoded.rows.size(), decodedRows);
    }
}

TEST(RawStreams, DecodingBeginsAtTheOffset)
{
    const Bytes code = Bits("001 1000 11 1"), data = Bytes(5, 0xAA) + code;
    EXPECT_EQ(DecodeRaw(data, {.offset = 5}).Pixels(8), "...##...");
    EXPECT_EQ(DecodeRaw(data, {.offset = 5, .rows = 9}).error, 5u) << "the limit is lowered by the offset";
    EXPECT_EQ(DecodeRaw(ReversedBits(data), {.offset = 5, .fillOrder = 2}).Pixels(8), "...##...");
    EXPECT_EQ(DecodeRaw(code, {.offset = 5000, .fillOrder = 7}).result, 1)
        << "beyond the data: where the stream stands";
    const Decoded none = DecodeRaw(code, {.width = 0});
    EXPECT_EQ(none.result, 0);
    EXPECT_EQ(none.error, 0u);
}

TEST(RawStreams, DecodingGoesOnFromTheStreamsPosition)
{
    const RawStream raw(Bytes(3, 0x00) + Bits("001 1000 11 1"));
    RowCollector collector{1};
    mSeek(raw.stream, 3, 0);
    EXPECT_EQ(DecodeCcittImage(raw.stream, 8, 1, 4, &collector, CollectRow), 1);
    EXPECT_EQ(collector.decoded.Pixels(8), "...##...");
    EXPECT_EQ(Refusal(DecodeCcittImage(0, 8, 1, 4, &collector, CollectRow)), 6u);
}

TEST(MmrRecords, CodeComesInRecords)
{
    const Bytes white(3, 0xFF), row = Bits("001 1000 11 1");
    static const std::string eofb = "000000000001000000000001";
    const struct {
        const char* row;
        Bytes data;
        uint32_t rows, error;
        size_t decoded;
    } rows[] = {
        {"two records", Record(white) + Record(row), 25, 0, 25},
        {"a length of 0 is all there is", Hex("FE 92 00 00") + white, 24, 0, 24},
        {"no record", white, 1, 5, 0},
        {"a wrong second header", Record(white) + Hex("FE 93 00 01 FF"), 25, 5, 24},
        {"a record longer than the data", Hex("FE 92 00 09") + white, 24, 5, 0},
        {"a record cut", Hex("FE 92 00 05") + white, 24, 0, 24},
        {"an extension", Record(Bits("0000001 1")), 1, 12, 0},
        {"no EOFB", Record(Bits("00000001")), 1, 12, 0},
        {"an early EOFB", Record(Bits("11111111" + eofb)), 9, 20, 8},
        {"an early EOFB over two records", Record(Hex("FF 00")) + Record(Hex("10 01")), 9, 0, 8},
    };
    for (const auto& [name, data, length, error, decodedRows] : rows) {
        SCOPED_TRACE(name);
        const Decoded decoded =
            DecodeRaw(data, {.rows = length, .compression = 12345, .fillOrder = 2, .records = true});
        EXPECT_EQ(decoded.error, error);
        EXPECT_EQ(decoded.rows.size(), decodedRows);
    }
}

TEST(RawStreams, WithoutALineRoutineNothingHappens)
{
    const MemoryTiff page(OnePage(TiffPage::Picture(8, 1, 1, 1).Strips({{0}})));
    const RawStream raw(Bytes(8));
    EXPECT_EQ(Refusal(DecodeTiffImage(page.file, 0, 0, 0, nullptr, nullptr)), 29u);
    EXPECT_EQ(Refusal(DecodeCcittImage(raw.stream, 8, 1, 4, nullptr, nullptr)), 29u);
    EXPECT_EQ(Refusal(EncodeCcittImage(raw.stream, 8, 1, 4, nullptr, nullptr)), 29u);
    SetTiffError(0);
    EXPECT_EQ(Refusal(DecodeMMRImage(raw.stream, 0, 8, 1, 4, 1, TIFF_INTEL, nullptr, nullptr)), 29u);
    SetTiffError(0);
    EXPECT_EQ(Refusal(EncodeMMRImage(raw.stream, 8, 1, 4, nullptr, nullptr)), 29u);
}
