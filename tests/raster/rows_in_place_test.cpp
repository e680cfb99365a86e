// Rows painted directly into a DIB, by the loader and for the exported line routine, against rows that an
// application's own routine copies there.
#include "core/stream.h"
#include "support/leaks.h"
#include "support/pictures.h"
#include "tiff/ccitt.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace tiff;

namespace {

constexpr uint32_t ROWS = 11, ROWS_PER_STRIP = 6, COLOUR_BYTES = 40 + 2 * 4;

struct Pixels {
    uint32_t error;
    Bytes bytes; // empty without a picture
};

// Rows of noise, rows with one change, and rows of one colour.
intptr_t DrawRow(void* line, uint32_t, void* random)
{
    auto& next = *static_cast<std::mt19937*>(random);
    const auto kind = next() % 3;
    const auto colour = static_cast<uint8_t>(0xFF << next() % 9);
    for (uint32_t at = 0; at < 9; ++at)
        static_cast<uint8_t*>(line)[at] = kind == 0 ? static_cast<uint8_t>(next()) : colour;
    return 0;
}

Bytes CodeStrip(uint32_t width, uint32_t rows, uint32_t compression, std::mt19937& random)
{
    Block block(Bytes(1));
    const TiffStream stream = OpenMemoryStream(block.Get(), 0);
    EXPECT_EQ(EncodeCcittImage(stream, width, rows, compression, &random, DrawRow), 1);
    const uint32_t bytes = mTell(stream);
    mClose(stream);
    return Content(block.Get(), bytes);
}

Pixels Load(HGLOBAL file)
{
    HGLOBAL dib = LoadTiffChainIntoDIB(file, 0);
    Pixels pixels{TiffError(), {}};
    if (!dib)
        return pixels;
    pixels.bytes = Content(dib, GlobalSize(dib));
    pixels.bytes.erase(pixels.bytes.begin(), pixels.bytes.begin() + COLOUR_BYTES);
    GlobalFree(dib);
    return pixels;
}

intptr_t CopyLine(void* line, uint32_t row, void* target)
{
    return DllFlushTiffLineDIB(line, row, target);
}

// Decodes into memory that ends with the highest row's last pixel.
Pixels DecodeLines(HGLOBAL file, uint32_t width, uint32_t orientation, uint8_t before,
                   TiffLineCallback routine)
{
    const uint32_t stride = (width + 31) / 32 * 4;
    Bytes rows(size_t{stride} * (ROWS - 1) + (width + 7) / 8, before);
    TiffDecodeLineContext target{.pixelBits = rows.data(),
                                 .height = ROWS,
                                 .lineBytes = (width + 7) / 8,
                                 .strideOrColourUse = stride,
                                 .orientation = orientation};
    DecodeTiffImage(file, 0, 0, 0, &target, routine);
    return {TiffError(), rows};
}

enum class Damage { None, FirstStrip, LastStrip, CutShort };

TiffPage DrawPage(uint32_t compression, uint32_t width, Damage damage, std::mt19937& random)
{
    Bytes first = CodeStrip(width, ROWS_PER_STRIP, compression, random);
    Bytes last = CodeStrip(width, ROWS - ROWS_PER_STRIP, compression, random);
    if (damage == Damage::FirstStrip)
        first[random() % first.size()] ^= static_cast<uint8_t>(1u << random() % 8);
    if (damage == Damage::LastStrip)
        last[random() % last.size()] ^= static_cast<uint8_t>(random());
    if (damage == Damage::CutShort)
        last.resize(random() % last.size());
    return TiffPage::Picture(width, ROWS, 1, compression).Long(278, {ROWS_PER_STRIP}).Strips({first, last});
}

} // namespace

TEST(RowsInPlace, ShowWhatIsHandedOverLineByLine)
{
    NoLeaks leaks;
    std::mt19937 random(1);
    for (uint32_t width = 1; width <= 70; ++width)
        for (const uint32_t compression : {2u, 3u, 0x10003u, 4u})
            for (const auto damage :
                 {Damage::None, Damage::FirstStrip, Damage::LastStrip, Damage::CutShort}) {
                SCOPED_TRACE(testing::Message() << "width " << width << ", compression " << compression
                                                << ", damage " << static_cast<int>(damage));
                TiffPage page = DrawPage(compression, width, damage, random);
                const uint32_t orientation = width % 2 ? 1 : 4;
                page.Short(274, {orientation}).Short(259, {compression & 0xFFFF});
                const MemoryTiff tiff(OnePage(page.Long(292, {compression >> 16})));
                const auto decode = [&](uint8_t before, TiffLineCallback routine) {
                    return DecodeLines(tiff.file, width, orientation, before, routine);
                };
                const Pixels painted = decode(0x5A, DllFlushTiffLineDIB), copied = decode(0x5A, CopyLine);
                EXPECT_EQ(painted.error, copied.error);
                EXPECT_EQ(painted.bytes, copied.bytes);
                Pixels loaded = Load(tiff.file);
                EXPECT_EQ(loaded.error, copied.error);
                if (damage == Damage::None || !loaded.bytes.empty()) {
                    loaded.bytes.resize(copied.bytes.size());
                    EXPECT_EQ(loaded.bytes, decode(0, CopyLine).bytes);
                }
            }
}

// Grey rows in memory that is touched many rows at a time, and a row longer than that.
TEST(RowsInPlace, StandInMuchMemory)
{
    NoLeaks leaks;
    std::mt19937 random(2);
    for (const uint32_t width : {252u, 70000u})
        for (const uint32_t orientation : {1u, 4u}) {
            SCOPED_TRACE(testing::Message() << "width " << width << ", orientation " << orientation);
            const uint32_t rows = 280000 / width;
            Bytes pixels(size_t{width} * rows);
            std::generate(pixels.begin(), pixels.end(), [&] { return static_cast<uint8_t>(random()); });
            TiffPage page =
                TiffPage::Picture(width, rows, 8, 1, 1).Short(274, {orientation}).Strips({pixels});
            page.Long(256, {width});
            const MemoryTiff tiff(OnePage(page));
            HGLOBAL dib = LoadTiffChainIntoDIB(tiff.file, 0);
            ASSERT_TRUE(dib);
            const Bytes loaded = Content(dib, GlobalSize(dib));
            GlobalFree(dib);
            for (uint32_t row = 0; row < rows; ++row) {
                const uint32_t stored = orientation == 4 ? row : rows - 1 - row;
                const auto* found = &loaded[loaded.size() - size_t{width} * (rows - stored)];
                ASSERT_TRUE(std::equal(found, found + width, &pixels[size_t{width} * row])) << "row " << row;
            }
        }
}
