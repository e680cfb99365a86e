// Black and white pictures of others: single dots against limits, means against the greys.
#include "support/leaks.h"
#include "support/pictures.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace {

double Luma(uint32_t colour)
{
    return 0.299 * (colour >> 16 & 255) + 0.587 * (colour >> 8 & 255) + 0.114 * (colour & 255);
}

struct Dots {
    uint32_t error = 0;
    BITMAPINFOHEADER header{};
    std::vector<std::string> rows; // from the top, '#' for black

    uint32_t White(uint32_t left, uint32_t top, uint32_t side) const
    {
        uint32_t white = 0;
        for (uint32_t y = top; y < std::min<size_t>(top + side, rows.size()); ++y)
            for (uint32_t x = left; x < std::min<size_t>(left + side, rows[y].size()); ++x)
                white += rows[y][x] == '.';
        return white;
    }
};

Dots Dithered(const Bytes& dib, uint32_t method, uint32_t threshold)
{
    Dots dots;
    const Block block(dib);
    HGLOBAL made = DitherDIB(block.Get(), method, threshold);
    dots.error = TiffError();
    EXPECT_EQ(Content(block.Get(), dib.size()), dib);
    if (!made)
        return dots;
    const Bytes bytes = Content(made, GlobalSize(made));
    GlobalFree(made);
    std::memcpy(&dots.header, bytes.data(), sizeof(dots.header));
    const auto width = static_cast<uint32_t>(dots.header.biWidth), stride = (width + 31) / 32 * 4;
    EXPECT_EQ(Hex("FF FF FF 00 00 00 00 00"), Bytes(&bytes[40], &bytes[48]));
    EXPECT_EQ(bytes.size(), 48 + size_t{stride} * static_cast<uint32_t>(dots.header.biHeight));
    for (auto y = static_cast<uint32_t>(dots.header.biHeight); y-- > 0;) {
        std::string& row = dots.rows.emplace_back();
        for (uint32_t x = 0; x < stride * 8; ++x)
            row += bytes[48 + y * stride + x / 8] >> (7 - x % 8) & 1 ? '#' : '.';
        EXPECT_EQ(row.find('#', width), std::string::npos) << "behind the last pixel of row " << y;
        row.resize(width);
    }
    return dots;
}

// A DIB of these colours from the upper left.
Bytes DibOf(uint32_t width, const std::vector<uint32_t>& colours, uint16_t bits, bool topDown)
{
    const auto height = static_cast<uint32_t>(colours.size() / width);
    const size_t stride = (size_t{width} * bits + 31) / 32 * 4;
    DibPicture picture{width, height, bits, {}, Bytes(stride * height)};
    picture.topDown = topDown;
    for (size_t at = 0; at < colours.size(); ++at) {
        const size_t x = at % width, y = at / width, row = (topDown ? y : height - 1 - y) * stride;
        uint32_t value = colours[at];
        if (bits <= 8) {
            value =
                static_cast<uint32_t>(std::ranges::find(picture.colours, value) - picture.colours.begin());
            if (value == picture.colours.size())
                picture.colours.push_back(colours[at]);
            picture.pixels[row + x * bits / 8] |=
                static_cast<uint8_t>(value << (bits == 8 ? 0 : 8 - bits - x * bits % 8));
            continue;
        }
        if (bits == 16)
            value = (value >> 19 & 31) << 10 | (value >> 11 & 31) << 5 | (value >> 3 & 31);
        std::memcpy(&picture.pixels[row + x * bits / 8], &value, bits / 8);
    }
    picture.colourCount = static_cast<uint32_t>(picture.colours.size());
    return PackedDib(picture);
}

} // namespace

TEST(Dither, ThresholdIsWhereTheLumaOfAColourIs)
{
    NoLeaks leaks;
    std::mt19937 random(5);
    for (const uint16_t bits : std::initializer_list<uint16_t>{1, 4, 8, 16, 24, 32})
        for (const uint32_t width : {1u, 7u, 8u, 33u})
            for (const uint32_t threshold : {0u, 1u, 77u, 255u}) {
                SCOPED_TRACE(testing::Message() << bits << " bits, " << width << " wide, " << threshold);
                std::vector<uint32_t> palette(bits <= 8 ? 1u << bits : 300), colours(width * 5);
                for (uint32_t& colour : palette) {
                    const uint32_t five = random() & 0x1F1F1F;
                    colour = bits == 16 ? five << 3 | (five >> 2 & 0x070707) : random() & 0xFFFFFF;
                }
                for (uint32_t& colour : colours)
                    colour = palette[random() % palette.size()];
                const Dots dots =
                    Dithered(DibOf(width, colours, bits, width == 7), TIFF_DITHER_THRESHOLD, threshold);
                ASSERT_EQ(dots.rows.size(), 5u);
                EXPECT_EQ(dots.header.biXPelsPerMeter * 10000 + dots.header.biYPelsPerMeter, 78743937);
                for (size_t at = 0; at < colours.size(); ++at) {
                    const double distance = Luma(colours[at]) - (threshold ? threshold : 128) + 0.5;
                    if (std::abs(distance) > 0.01) {
                        EXPECT_EQ(dots.rows[at / width][at % width], distance > 0 ? '.' : '#') << at;
                    }
                }
            }
}

TEST(Dither, DiffusedDotsAreThoseWorkedOutByHand)
{
    const std::vector<uint32_t> greys(9, 100 * 0x010101);
    EXPECT_EQ(Dithered(DibOf(3, greys, 24, false), TIFF_DITHER_DIFFUSION, 0).rows,
              (std::vector<std::string>{"#.#", ".#.", "##."}));
    // However few rows there are, the rest of the error is less than a dot.
    for (const uint32_t height : {1u, 2u, 4u})
        for (const uint32_t grey : {20u, 64u, 240u}) {
            const Bytes flat = DibOf(131, std::vector<uint32_t>(131 * height, grey * 0x010101), 24, false);
            EXPECT_NEAR(Dithered(flat, TIFF_DITHER_DIFFUSION, 0).White(0, 0, 131), 131 * height * grey / 255.,
                        1)
                << height << " rows of " << grey;
        }
}

TEST(Dither, KeepsTheMeanOfTheGreys)
{
    NoLeaks leaks;
    constexpr uint32_t WIDTH = 131, HEIGHT = 160;
    for (const uint32_t method : {TIFF_DITHER_ORDERED, TIFF_DITHER_DIFFUSION})
        for (const int level : {0, 1, 3, 31, 64, 100, 127, 128, 129, 200, 252, 254, 255, -1, -2}) {
            SCOPED_TRACE(testing::Message() << "method " << method << ", level " << level);
            std::mt19937 random(7);
            std::vector<uint32_t> colours(WIDTH * HEIGHT);
            double mean = 0;
            for (size_t at = 0; at < colours.size(); ++at) {
                const auto noise = static_cast<uint32_t>(random());
                colours[at] = level >= 0    ? static_cast<uint32_t>(level) * 0x010101
                              : level == -1 ? noise & 0xFFFFFF
                                            : static_cast<uint32_t>(at % WIDTH) * 0x010101;
                mean += Luma(colours[at]) / static_cast<double>(colours.size());
            }
            const Dots dots = Dithered(DibOf(WIDTH, colours, 24, false), method, 9);
            EXPECT_NEAR(dots.White(0, 0, HEIGHT) * 255.0 / (WIDTH * HEIGHT), mean, 2.55);
            // Each square by itself, too: dots stand where the greys are.
            for (uint32_t left = 0; level == -2 && left < 128; left += 16)
                for (uint32_t top = 16; top < HEIGHT; top += 16)
                    EXPECT_NEAR(dots.White(left, top, 16) * 255.0 / 256, left + 7.5, 5) << left << "," << top;
        }
}

TEST(Dither, LeavesNoRowThatHasMoreRunsThanPixels)
{
    std::string alternating;
    for (int pair = 0; pair < 32; ++pair)
        alternating += "#.";
    const Bytes grey = DibOf(64, std::vector<uint32_t>(64 * 40, 0x808080), 8, false);
    for (const uint32_t method : {TIFF_DITHER_ORDERED, TIFF_DITHER_DIFFUSION}) {
        const Dots dots = Dithered(grey, method, 0);
        EXPECT_EQ(std::ranges::count(dots.rows, alternating), 0);
        EXPECT_NEAR(dots.White(0, 0, 64), 64 * 20, 26);
    }
    // The threshold says what each pixel is.
    std::vector<uint32_t> stripes(64);
    for (size_t at = 1; at < stripes.size(); at += 2)
        stripes[at] = 0xFFFFFF;
    EXPECT_EQ(Dithered(DibOf(64, stripes, 8, false), TIFF_DITHER_THRESHOLD, 0).rows[0], alternating);
}

TEST(Dither, RefusesWhatItCannotTake)
{
    NoLeaks leaks;
    const Bytes good = DibOf(2, {0, 1, 2, 3}, 24, false);
    Bytes space = good, cut = good;
    space[16] = 10;
    cut.pop_back();
    const struct {
        const char* row;
        Bytes dib;
        uint32_t method, threshold, error;
    } rows[] = {
        {"method", good, 3, 0, 29},
        {"threshold", good, 2, 256, 29},
        {"colour space", space, 0, 0, 16},
        {"cut off", cut, 0, 0, 30},
    };
    for (const auto& [row, dib, method, threshold, error] : rows) {
        SCOPED_TRACE(row);
        EXPECT_EQ(Dithered(dib, method, threshold).error, error);
    }
    EXPECT_EQ(DitherDIB(nullptr, 0, 0), nullptr);
    EXPECT_EQ(TiffError(), 1u);
}
