// Expected colours were calculated by hand in double precision from the conversion formulas.
#include "raster/dib_lines.h"
#include "support/bytes.h"

#include <gtest/gtest.h>

using namespace tiff;

namespace {

struct Row {
    const char* row;
    intptr_t (*flush)(void*, uint32_t, void*);
    Bytes line;
    uint32_t lineBytes, stride, shift;
    Bytes target;
};

} // namespace

TEST(FlushLines, ConvertIntoTheRowOfTheDib)
{
    static const Row rows[] = {
        {"copied", DllFlushTiffLineDIB, Hex("AA BB CC"), 3, 4, 0, Hex("AA BB CC 00")},
        {"RGB", DllFlushTiffLine24DIB, Hex("010203 040506"), 6, 8, 0, Hex("030201 060504 0000")},
        {"RGB, two bytes over", DllFlushTiffLine24DIB, Hex("010203 0405"), 5, 8, 0,
         Hex("030201 0405 000000")},
        {"12-bit samples", DllFlushTiffLine16DIB, Hex("FF0F 1000"), 4, 4, 4, Hex("FF 01 0000")},
        {"16-bit samples", DllFlushTiffLine16DIB, Hex("FF80 10FE"), 4, 4, 8, Hex("80 FE 0000")},
        {"low bytes", DllFlushTiffLine16DIB, Hex("0180 10FE"), 4, 4, 0, Hex("01 10 0000")},
        {"CMYK inks", DllFlushTiffLineCMYKDIB, Hex("FF000000 00FF0000 0000FF00"), 12, 12, 0,
         Hex("FFFF00 FF00FF 00FFFF 000000")},
        {"CMYK with black", DllFlushTiffLineCMYKDIB, Hex("000000FF 64000080"), 8, 8, 0,
         Hex("000000 7F7F4D 0000")},
        {"grey YCbCr", DllFlushTiffLineYCbCrDIB, Hex("808080 000000"), 6, 8, 0, Hex("807F80 008600 0000")},
        {"red YCbCr", DllFlushTiffLineYCbCrDIB, Hex("4C54FF"), 3, 4, 0, Hex("0000FE 00")},
        {"YCbCr that has begun", DllFlushTiffLineYCbCrDIB, Hex("FFFFFF FFFFFF"), 4, 8, 0,
         Hex("FF78FF FF78FF 0000")},
        {"YCbCr beyond the row", DllFlushTiffLineYCbCrDIB, Hex("FFFFFF FFFFFF"), 4, 4, 0, Hex("FF78FF 00")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.row);
        Bytes dib(row.stride * 3);
        TiffDecodeLineContext context{};
        context.pixelBits = dib.data();
        context.height = 3;
        context.lineBytes = row.lineBytes;
        context.strideOrColourUse = row.stride;
        context.sampleShift = row.shift;
        context.orientation = 1;
        Bytes line = row.line;
        EXPECT_EQ(row.flush(line.data(), 0, &context), 0);
        EXPECT_EQ(Bytes(dib.end() - row.stride, dib.end()), row.target);
        EXPECT_EQ(Bytes(dib.begin(), dib.end() - row.stride), Bytes(row.stride * 2));
        context.orientation = 4;
        line = row.line;
        row.flush(line.data(), 0, &context);
        EXPECT_EQ(Bytes(dib.begin(), dib.begin() + row.stride), row.target)
            << "orientation 4 starts at the bottom";
    }
}

TEST(FlushLines, RowsOfAnyLengthEndWhereTheyEnd)
{
    for (uint32_t bytes = 1; bytes <= 150; ++bytes) {
        SCOPED_TRACE(bytes);
        Bytes line(bytes), copied(bytes + 20, 0xEE), swapped = copied, passed = copied;
        for (uint32_t at = 0; at < bytes; ++at)
            line[at] = static_cast<uint8_t>(at * 7 + 1);
        Bytes expected = line;
        for (uint32_t at = 0; at + 3 <= bytes; at += 3)
            std::swap(expected[at], expected[at + 2]);
        TiffDecodeLineContext context{.height = 1, .lineBytes = bytes, .orientation = 1};
        const Bytes rest(20, 0xEE), before = line;
        context.pixelBits = copied.data();
        DllFlushTiffLineDIB(line.data(), 0, &context);
        EXPECT_EQ(copied, line + rest);
        context.pixelBits = passed.data();
        FlushSwappedLine(line.data(), 0, &context);
        EXPECT_EQ(passed, expected + rest);
        EXPECT_EQ(line, before) << "the line stays as it is";
        context.pixelBits = swapped.data();
        DllFlushTiffLine24DIB(line.data(), 0, &context);
        EXPECT_EQ(swapped, expected + rest);
    }
}
