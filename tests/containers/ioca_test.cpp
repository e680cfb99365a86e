// Image segments and the field around them, written and read byte for byte.
#include "support/drawing.h"
#include "support/leaks.h"
#include "support/open_file.h"
#include "support/pictures.h"
#include "tiff/ioca.h"

#include <gtest/gtest.h>

namespace {

const TiffIocaDescription fax = {0, 0, 2000, 2000, 1728, 2200, 0, 0, 0};
const Bytes faxSegment = Hex("7000 9101FF 940900 07D0 07D0 06C0 0898 95020101 960101 970100");
const Bytes size = Hex("940900 07D0 07D0 06C0 0898");

std::vector<uint32_t> Fields(const TiffIocaDescription& read)
{
    return {read.segmentName, read.objectType, read.horizontalResolution, read.verticalResolution, read.width,
            read.height,      read.encoding,   read.dataLength,           read.dataOffset};
}

std::vector<uint32_t> Fax(uint32_t name, uint32_t type, uint32_t encoding, uint32_t length = 0,
                          uint32_t offset = 0)
{
    return {name, type, 2000, 2000, 1728, 2200, encoding, length, offset};
}

} // namespace

TEST(Ioca, HeadersAndTailsAreFixedBytes)
{
    NoLeaks leaks;
    const Bytes before = Hex("0102");
    OpenedFile segment(before), field(before), readOnly(before, false);
    SetTiffError(0);
    for (const HANDLE file : {segment.handle, field.handle})
        mSeek(reinterpret_cast<intptr_t>(file), 2, 0);
    EXPECT_EQ(WriteIOCAHeader(segment.handle, &fax), 1);
    EXPECT_EQ(WriteIOCATail(segment.handle), 1);
    EXPECT_EQ(WriteMODCAHeader(field.handle, &fax), 1);
    EXPECT_EQ(WriteIOCATail(readOnly.handle), 0);
    EXPECT_EQ(TiffError(), 0u);
    EXPECT_EQ(segment.Content(), before + faxSegment + Hex("93007100"));
    EXPECT_EQ(field.Content(), before + Hex("D3EEFB") + faxSegment);
    EXPECT_EQ(Refusal(WriteIOCAHeader(readOnly.handle, &fax)), 6u);
    EXPECT_EQ(Refusal(WriteMODCAHeader(readOnly.handle, &fax)), 6u);
    EXPECT_EQ(Refusal(WriteMODCATail(readOnly.handle)), 6u);
    EXPECT_EQ(Refusal(WriteMODCATail(nullptr)), 6u);
    EXPECT_EQ(Refusal(WriteIOCAHeader(segment.handle, nullptr)), 29u);
    EXPECT_EQ(Refusal(WriteMODCAHeader(segment.handle, nullptr)), 29u);
}

TEST(Ioca, TheTailPatchesTheLengthAtItsFixedPlace)
{
    NoLeaks leaks;
    const struct {
        const char* row;
        Bytes content;
        const char* length;
    } rows[] = {
        {"a length ahead of the field", Bytes(28, 0xAA) + Hex("0000") + Bytes(100, 0xBB), "0066"},
        {"beyond 16 bits", Bytes(28 + 65536 + 5, 0xAA), "0005"},
        {"inside the header that the file begins with", Hex("D3EEFB") + faxSegment + Hex("FE92"), "0003"},
    };
    for (const auto& [row, content, length] : rows) {
        SCOPED_TRACE(row);
        OpenedFile file(content);
        mSeek(file.Stream(), 0, 2);
        EXPECT_EQ(WriteMODCATail(file.handle), 1);
        EXPECT_EQ(file.Content(), Part(content, 0, 28) + Hex(length) + Part(content, 30, content.size()) +
                                      Hex("93007100 D3A9C7"));
    }
}

TEST(Ioca, SegmentsAreFoundAndReadAsFarAsTheyGo)
{
    NoLeaks leaks;
    const Bytes record = Hex("FE921234 55");
    const Bytes full = Hex("FF") + Bytes(255, 0x70);
    enum { Refused, Read, Closed };
    const struct {
        const char* row;
        Bytes file;
        int result;
        size_t position;
        std::vector<uint32_t> fields; // not looked at when it was refused
    } rows[] = {
        {"as written", faxSegment + record, Read, 30, Fax(0, 255, 1, 0x1234, 26)},
        {"behind two blocks of other bytes", Bytes(9000, 0x91) + faxSegment + record, Read, 9030,
         Fax(0, 255, 1, 0x1234, 9026)},
        {"parameters across a block's edge", Bytes(4090, 0) + faxSegment + record, Read, 4120,
         Fax(0, 255, 1, 0x1234, 4116)},
        {"no image data", faxSegment + Hex("93007100"), Read, 27, Fax(0, 255, 1)},
        {"a name of four", Hex("7004C1C2C3C4 910107") + size + Hex("950282 01") + record, Read, 28,
         Fax(0xC1C2C3C4, 7, 0x82, 0x1234, 24)},
        {"a name of two", Hex("7002C1C2 910107") + size + Hex("950182 00"), Read, 22,
         Fax(0xC1C20000, 7, 0x82)},
        {"a name of five", Hex("7005C1C2C3C4C5 9101FF") + size + Hex("95020101") + record, Refused, 3, {}},
        {"one optional parameter", Hex("7000 9101FF") + size + Hex("950103 970100") + record, Read, 26,
         Fax(0, 255, 3, 0x1234, 22)},
        {"the optional parameters in the other order",
         Hex("7000 9101FF") + size + Hex("950103 970100 960101") + record, Read, 23, Fax(0, 255, 3)},
        {"parameters of 255 bytes",
         Hex("7000 91") + full + Hex("94") + full + Hex("95") + full + Hex("96") + full + Hex("97") + full +
             record,
         Read,
         2 + 5 * 257 + 4,
         {0, 0x70, 0x7070, 0x7070, 0x7070, 0x7070, 0x70, 0x1234, 2 + 5 * 257}},
        {"a size of eight bytes", Hex("7000 9101FF 9408") + Bytes(100), Refused, 15, {}},
        {"content without a type", Hex("7000 9100") + size, Refused, 4, {}},
        {"no compression", Hex("7000 9101FF") + size + Hex("9500 FE92"), Refused, 18, {}},
        {"another order", Hex("7000") + size, Refused, 3, {}},
        {"half a record's mark", faxSegment + Hex("FE93 1234"), Refused, 28, {}},
        {"cut inside a record's length", faxSegment + Hex("FE9212"), Refused, 29, {}},
        {"cut inside a parameter", Hex("7000 91FF 0102"), Refused, 6, {}},
        {"cut behind its first byte", Hex("70"), Refused, 1, {}},
        {"nothing that begins one", Bytes(10000, 0x71), Closed, 0, {}},
        {"an empty file", {}, Closed, 0, {}},
    };
    for (const auto& [row, content, result, position, fields] : rows) {
        SCOPED_TRACE(row);
        OpenedFile file(content);
        TiffIocaDescription read = {1, 2, 3, 4, 5, 6, 7, 8, 9};
        SetTiffError(13);
        EXPECT_EQ(ReadIOCAHeader(file.handle, &read), result == Read);
        EXPECT_EQ(TiffError(), 13u);
        EXPECT_TRUE(result != Read || Fields(read) == fields);
        file.closed = result == Closed;
        EXPECT_TRUE(file.closed || mTell(file.Stream()) == position);
    }
    OpenedFile twoSegments(faxSegment + Hex("93 7000"));
    EXPECT_EQ(ReadIOCAHeader(twoSegments.handle, nullptr), 0);
    EXPECT_EQ(mTell(twoSegments.Stream()), 0u);
}

TEST(Ioca, TheFieldIsLookedForInItsCandidates)
{
    NoLeaks leaks;
    enum { Refused, Read, Closed };
    const Bytes field = Hex("D3EEFB") + faxSegment + Hex("00");
    const struct {
        const char* row;
        Bytes file;
        int result;
        size_t position;
    } rows[] = {
        {"at the start", field, Read, 30},
        {"behind an introducer's zeros", Hex("5A0020 D3EEFB 000000") + faxSegment + Hex("00"), Read, 36},
        {"as the last candidate", Bytes(2047) + field, Read, 2077},
        {"one candidate later", Bytes(2048) + field, Refused, 2048},
        {"behind second bytes, which are no candidates", Repeat(Hex("D300"), 2047) + field, Read, 4124},
        {"behind third bytes", Repeat(Hex("D3EE00"), 2047) + field, Read, 6171},
        {"behind a first byte", Hex("D3") + field, Refused, 31},
        {"cut inside", Hex("00D3EE"), Refused, 3},
        {"an empty file", {}, Refused, 0},
        {"no segment in it", Hex("D3EEFB") + Bytes(5000), Closed, 0},
    };
    for (const auto& [row, content, result, position] : rows) {
        SCOPED_TRACE(row);
        OpenedFile file(content);
        TiffIocaDescription read{};
        EXPECT_EQ(ReadMODCAHeader(file.handle, &read), result == Read);
        EXPECT_TRUE(result != Read || Fields(read) == Fax(0, 255, 1));
        file.closed = result == Closed;
        EXPECT_EQ(file.closed ? position : mTell(file.Stream()), position);
    }
}

TEST(Ioca, ThePictureBetweenHeaderAndTailIsDecoded)
{
    NoLeaks leaks;
    constexpr uint32_t WIDTH = 2480, ROWS = 300;
    OpenedFile file({});
    const TiffIocaDescription page = {0, 0, 3000, 3000, WIDTH, ROWS, 0, 0, 0};
    Drawing drawn(WIDTH, 7), expected(WIDTH, 7);
    ASSERT_EQ(WriteIOCAHeader(file.handle, &page), 1);
    ASSERT_EQ(EncodeMMRImage(file.Stream(), WIDTH, ROWS, 0, &drawn, DrawRow), 1);
    ASSERT_EQ(WriteIOCATail(file.handle), 1);
    mSeek(file.Stream(), 0, 0);
    TiffIocaDescription read;
    ASSERT_EQ(ReadIOCAHeader(file.handle, &read), 1);
    EXPECT_EQ(uint32_t{read.dataLength}, 32767u);
    RowCollector rows{WIDTH / 8};
    EXPECT_EQ(DecodeMMRImage(file.Stream(), read.dataOffset, read.width, read.height, 0, 1, TIFF_INTEL, &rows,
                             CollectRow),
              1);
    ASSERT_EQ(rows.decoded.rows.size(), ROWS);
    for (const Bytes& row : rows.decoded.rows)
        ASSERT_EQ(row, expected.NextRow());
}
