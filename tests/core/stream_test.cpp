#include "support/leaks.h"
#include "support/raw_stream.h"

#include <gtest/gtest.h>

using namespace tiff;

TEST(Stream, MemorySeekStaysInsideTheFile)
{
    static constexpr struct {
        const char* row;
        uint32_t offset;
        int32_t origin;
        uint32_t result, after;
    } rows[] = {
        {"absolute, to the end itself", 100, 0, 100, 100},
        {"absolute, one past the end", 101, 0, STREAM_FAILED, 40},
        {"relative, one past the end", 61, 1, STREAM_FAILED, 40},
        {"relative, beyond 32 bits", 0xFFFFFFFF, 1, STREAM_FAILED, 40},
        {"counted back from the end", 4, 2, 96, 96},
        {"counted back beyond the start", 101, 2, STREAM_FAILED, 40},
        {"unknown origin", 7, 3, 40, 40},
    };
    for (const auto& [row, offset, origin, result, after] : rows) {
        SCOPED_TRACE(row);
        const RawStream file(Bytes(100));
        mSeek(file.stream, 40, 0);
        EXPECT_EQ(mSeek(file.stream, offset, origin), result);
        EXPECT_EQ(mTell(file.stream), after);
        EXPECT_EQ(mSize(file.stream), 100u);
    }
}

TEST(Stream, MemoryReadsStopAtTheEnd)
{
    NoLeaks leaks;
    const RawStream file({1, 2, 3, 4, 5});
    uint8_t buffer[8] = {};
    mSeek(file.stream, 3, 0);
    EXPECT_EQ(mRead(file.stream, buffer, 8), 2u);
    EXPECT_EQ(buffer[1], 5);
    EXPECT_EQ(mRead(file.stream, buffer, 8), 0u);
    mSeek(file.stream, 3, 0);
    EXPECT_EQ(LongRead(file.stream, 4, 1, buffer, TIFF_INTEL, 0), 0);
}

TEST(Stream, MemoryFilesGrowToWhatIsWritten)
{
    NoLeaks leaks;
    const TiffStream stream = OpenMemoryStream(nullptr, 0);
    EXPECT_EQ(MemoryStreamBlock(stream), nullptr);
    EXPECT_EQ(mWrite(stream, "0123456789", 10), 10u);
    EXPECT_EQ(mSize(stream), 10u);
    mSeek(stream, 4, 0);
    EXPECT_EQ(mWrite(stream, "ab", 2), 2u);
    EXPECT_EQ(mSize(stream), 10u);
    EXPECT_EQ(Content(MemoryStreamBlock(stream), 10),
              Bytes({'0', '1', '2', '3', 'a', 'b', '6', '7', '8', '9'}));
    GlobalFree(MemoryStreamBlock(stream));
    EXPECT_EQ(mClose(stream), 0u);
    EXPECT_EQ(mWrite(stream, "x", 1), STREAM_FAILED) << "a closed slot must not come to life again";
}

TEST(Stream, ASizeBeyondTheBlockIsCutToIt)
{
    Block block({1, 2, 3, 4});
    const TiffStream stream = OpenMemoryStream(block.Get(), 1000000);
    EXPECT_LE(mSize(stream), GlobalSize(block.Get()));
    mClose(stream);
}

TEST(Stream, AThreadHasTwentyNineMemoryFiles)
{
    Block block({0});
    std::vector<TiffStream> streams;
    for (int32_t index = 0; index < 29; ++index) {
        streams.push_back(OpenMemoryStream(block.Get(), 1));
        EXPECT_EQ(streams.back(), -2 - index);
    }
    EXPECT_EQ(OpenMemoryStream(block.Get(), 1), NO_STREAM);
    mClose(-7);
    EXPECT_EQ(OpenMemoryStream(block.Get(), 1), -7) << "the lowest free slot is taken";
    for (const TiffStream stream : streams)
        mClose(stream);
}

TEST(Stream, InvalidHandlesFailEverywhere)
{
    for (const TiffStream stream : {TiffStream{0}, TiffStream{-1}, TiffStream{-2}, TiffStream{-31}}) {
        SCOPED_TRACE(stream);
        uint8_t byte = 0;
        EXPECT_EQ(mRead(stream, &byte, 1), STREAM_FAILED);
        EXPECT_EQ(mWrite(stream, &byte, 1), STREAM_FAILED);
        EXPECT_EQ(mSeek(stream, 0, 0), STREAM_FAILED);
        EXPECT_EQ(mTell(stream), STREAM_FAILED);
        EXPECT_EQ(mSize(stream), STREAM_FAILED);
        EXPECT_EQ(MemoryStreamBlock(stream), nullptr);
    }
}

TEST(Stream, DiskPositionsEndAtFourGigabytes)
{
    TempFile file(Bytes(100));
    const TiffStream stream = OpenForReading(file.Path());
    ASSERT_NE(stream, NO_STREAM);
    EXPECT_EQ(mSeek(stream, 4, 2), 104u) << "a disk file goes forward from its end";
    EXPECT_EQ(mSize(stream), 100u);
    EXPECT_EQ(mTell(stream), 104u) << "asking for the size keeps the position";
    mSeek(stream, 0xFFFFFFF0, 0);
    EXPECT_EQ(mTell(stream), 0xFFFFFFF0u);
    EXPECT_EQ(mSeek(stream, 0x10, 1), STREAM_FAILED);
    EXPECT_EQ(mClose(stream), 0u);
}

TEST(TypedIo, ValuesAreSwappedByElementThenByBit)
{
    static const struct {
        const char* row;
        uint32_t type, count, order, fill;
        Bytes stored, host;
    } rows[] = {
        {"rational", 5, 1, TIFF_MOTOROLA, 0, Hex("00000048 00000001"), Hex("48000000 01000000")},
        {"short", 3, 2, TIFF_MOTOROLA, 0, Hex("002A 0102"), Hex("2A00 0201")},
        {"type 9 is a long", 9, 1, TIFF_MOTOROLA, 0, Hex("01020304"), Hex("04030201")},
        {"double is bytes", 12, 4, TIFF_MOTOROLA, 0, Hex("01020304"), Hex("01020304")},
        {"Intel stays", 4, 1, TIFF_INTEL, 0, Hex("01020304"), Hex("01020304")},
        {"bits of bytes", 1, 9, TIFF_INTEL, 2, Hex("01 02 03 80 F0 0F AA 10 01"),
         Hex("80 40 C0 01 0F F0 55 08 80")},
        {"both", 3, 1, TIFF_MOTOROLA, 2, Hex("0180"), Hex("0180")},
    };
    for (const auto& [row, type, count, order, fill, stored, host] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        const RawStream source(stored);
        Bytes read(host.size());
        EXPECT_EQ(LongRead(source.stream, type, count, read.data(), order, fill), 1);
        EXPECT_EQ(read, host);

        const RawStream target;
        EXPECT_EQ(LongWrite(target.stream, type, count, read.data(), order, fill), 1);
        EXPECT_EQ(target.Written(), stored);
        EXPECT_EQ(read, host) << "the caller's values stay as they were";
    }
}
