// Parts, other sizes and turns of DIBs, against a model that looks at single pixels.
#include "support/leaks.h"
#include "support/pictures.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>
#include <random>

namespace {

struct Pixels {
    uint32_t width = 0, height = 0, bits = 0;
    std::vector<uint32_t> colours; // of each pixel, 0x00RRGGBB
    int32_t dotsPerMetre[2] = {};
};

// Any DIB, looked at from the upper left.
Pixels LookAt(const Bytes& dib)
{
    BITMAPINFOHEADER header;
    std::memcpy(&header, dib.data(), sizeof(header));
    const size_t stride = (size_t{static_cast<uint32_t>(header.biWidth)} * header.biBitCount + 31) / 32 * 4;
    const uint8_t* table = dib.data() + header.biSize;
    const uint8_t* rows = table + header.biClrUsed * 4;
    Pixels pixels{static_cast<uint32_t>(header.biWidth),
                  static_cast<uint32_t>(std::abs(header.biHeight)),
                  header.biBitCount,
                  {},
                  {header.biXPelsPerMeter, header.biYPelsPerMeter}};
    for (uint32_t y = 0; y < pixels.height; ++y)
        for (uint32_t x = 0; x < pixels.width; ++x) {
            const uint8_t* row = rows + stride * (header.biHeight < 0 ? y : pixels.height - 1 - y);
            const size_t bit = size_t{x} * pixels.bits;
            if (pixels.bits == 16 || pixels.bits == 32) {
                std::memcpy(&pixels.colours.emplace_back(), row + bit / 8, pixels.bits / 8);
                continue;
            }
            const uint8_t* colour =
                pixels.bits == 24
                    ? row + bit / 8
                    : table + 4 * (row[bit / 8] >> (8 - pixels.bits - bit % 8) & ((1u << pixels.bits) - 1));
            pixels.colours.push_back(colour[0] | colour[1] << 8 | static_cast<uint32_t>(colour[2]) << 16);
        }
    return pixels;
}

Pixels Taken(HGLOBAL dib)
{
    Pixels pixels;
    if (dib) {
        const size_t size = GlobalSize(dib);
        pixels = LookAt(Content(dib, size));
        GlobalFree(dib);
    }
    return pixels;
}

// How much of pixel `from` lies under pixel `to` of a smaller axis; an axis that is not reduced repeats.
double Share(uint32_t from, uint32_t to, uint32_t part, uint32_t size)
{
    if (size >= part)
        return from == (2 * uint64_t{to} + 1) * part / (2 * uint64_t{size});
    const double scale = static_cast<double>(part) / size;
    return std::max(0.0, std::min(from + 1.0, (to + 1) * scale) - std::max<double>(from, to * scale));
}

// The colour of a pixel of the result, channel by channel, and how exact that is.
void ExpectPixel(const Pixels& before, const RECT& part, const Pixels& after, uint32_t x, uint32_t y,
                 bool smooth)
{
    const auto width = static_cast<uint32_t>(part.right - part.left);
    const auto height = static_cast<uint32_t>(part.bottom - part.top);
    double sums[3] = {}, weight = 0;
    for (uint32_t row = 0; row < height; ++row)
        for (uint32_t column = 0; column < width; ++column) {
            const double share =
                smooth ? Share(column, x, width, after.width) * Share(row, y, height, after.height)
                       : column == (2 * x + 1) * width / (2 * after.width) &&
                             row == (2 * y + 1) * height / (2 * after.height);
            const uint32_t colour = before.colours[(static_cast<uint32_t>(part.top) + row) * before.width +
                                                   static_cast<uint32_t>(part.left) + column];
            weight += share;
            for (uint32_t channel = 0; channel < 3; ++channel)
                sums[channel] += share * (colour >> 8 * channel & 255);
        }
    for (uint32_t channel = 0; channel < 3; ++channel)
        ASSERT_NEAR(after.colours[y * after.width + x] >> 8 * channel & 255, sums[channel] / weight, 0.501)
            << x << "," << y;
}

DibPicture RandomDib(uint32_t width, uint32_t height, uint16_t bits, bool coloured, bool topDown)
{
    std::mt19937 random(width + bits);
    DibPicture picture{width, height, bits, {}, Bytes((size_t{width} * bits + 31) / 32 * 4 * height)};
    for (uint8_t& byte : picture.pixels)
        byte = static_cast<uint8_t>(random());
    for (uint32_t index = 0; bits <= 8 && index < 1u << bits; ++index)
        picture.colours.push_back(coloured ? random() & 0xFFFFFF : (random() & 255) * 0x010101);
    picture.colourCount = static_cast<uint32_t>(picture.colours.size());
    picture.topDown = topDown;
    return picture;
}

} // namespace

TEST(Crop, PartsInAnySizeAreThePixelsOfTheModel)
{
    NoLeaks leaks;
    const struct {
        RECT part;
        uint32_t width, height;
    } rows[] = {
        {{0, 0, 37, 23}, 37, 23}, {{0, 0, 37, 23}, 1, 1}, {{3, 5, 20, 23}, 17, 18}, {{1, 2, 36, 22}, 7, 5},
        {{9, 0, 37, 10}, 61, 33}, {{5, 5, 6, 6}, 10, 10}, {{0, 0, 37, 23}, 9, 230}, {{2, 1, 34, 21}, 8, 5},
    };
    for (const uint16_t bits : {uint16_t{1}, uint16_t{4}, uint16_t{8}, uint16_t{24}})
        for (const bool coloured : {false, true})
            for (const auto& [part, width, height] : rows)
                for (const uint32_t flags : {0u, TIFF_SMOOTH}) {
                    SCOPED_TRACE(testing::Message() << bits << " bits, coloured " << coloured << ", to "
                                                    << width << " x " << height << ", flags " << flags);
                    const Bytes bytes = PackedDib(RandomDib(37, 23, bits, coloured, width % 2 == 0));
                    const Block dib(bytes);
                    const Pixels before = LookAt(bytes);
                    const auto w = static_cast<int32_t>(width), h = static_cast<int32_t>(height);
                    const bool whole = part.right - part.left == 37,
                               plain = part.right - part.left == w && part.bottom - part.top == h;
                    const Pixels after =
                        Taken(whole                 ? StretchDIB(dib.Get(), w, h, flags)
                              : plain && flags == 0 ? CropDIB(dib.Get(), part.left, part.top, w, h)
                                                    : CropStretchDIB(dib.Get(), &part, w, h, flags));
                    ASSERT_EQ(after.width * 1000 + after.height, width * 1000 + height);
                    EXPECT_EQ(after.bits, flags == 0 || bits == 24 ? bits : coloured ? 24u : 8u);
                    EXPECT_NEAR(after.dotsPerMetre[0], 7874.0 * w / (part.right - part.left), 0.5);
                    EXPECT_NEAR(after.dotsPerMetre[1], 3937.0 * h / (part.bottom - part.top), 0.5);
                    for (uint32_t y = 0; y < height; ++y)
                        for (uint32_t x = 0; x < width; ++x)
                            ExpectPixel(before, part, after, x, y, flags != 0);
                    EXPECT_EQ(Content(dib.Get(), bytes.size()), bytes);
                }
}

TEST(Crop, TurnedPixelsLieWhereTheTurnPutsThem)
{
    NoLeaks leaks;
    for (const uint16_t bits : std::initializer_list<uint16_t>{1, 4, 8, 16, 24, 32})
        for (const uint32_t width : {1u, 8u, 37u, 150u})
            for (const int32_t quarters : {0, 1, 2, 3, 4, -1, -6, INT32_MAX, INT32_MIN}) {
                SCOPED_TRACE(testing::Message()
                             << bits << " bits, " << width << " wide, quarters " << quarters);
                const Bytes bytes = PackedDib(RandomDib(width, 69, bits, true, width == 37));
                const Block dib(bytes);
                const Pixels before = LookAt(bytes), after = Taken(RotateDIB(dib.Get(), quarters));
                const uint32_t turn = static_cast<uint32_t>(quarters) & 3;
                const bool odd = turn % 2 != 0;
                ASSERT_EQ(after.width * 1000 + after.height, odd ? 69000 + width : width * 1000 + 69);
                EXPECT_EQ(after.dotsPerMetre[odd], 7874);
                EXPECT_EQ(after.dotsPerMetre[!odd], 3937);
                for (uint32_t y = 0; y < after.height; ++y)
                    for (uint32_t x = 0; x < after.width; ++x) {
                        const uint32_t fromX[] = {x, y, width - 1 - x, width - 1 - y};
                        const uint32_t fromY[] = {y, 68 - x, 68 - y, x};
                        ASSERT_EQ(after.colours[y * after.width + x],
                                  before.colours[fromY[turn] * width + fromX[turn]])
                            << x << "," << y;
                    }
            }
    const Block bad(Hex("28 00"));
    EXPECT_EQ(RotateDIB(bad.Get(), 1), nullptr);
    EXPECT_EQ(TiffError(), 30u);
    EXPECT_EQ(RotateDIB(nullptr, 0), nullptr);
    EXPECT_EQ(TiffError(), 1u);
}

TEST(Crop, RefusesWhatItCannotTake)
{
    NoLeaks leaks;
    const Block good(PackedDib(RandomDib(10, 10, 8, false, false)));
    DibPicture many = RandomDib(10, 10, 1, false, false);
    many.colours.resize(3);
    many.colourCount = 3;
    const Block deep(PackedDib(RandomDib(10, 10, 16, false, false))), tooMany(PackedDib(many)),
        bad(Hex("28 00"));
    const RECT all = {0, 0, 10, 10}, outside = {0, 1, 10, 11}, none = {3, 3, 3, 9}, before = {-1, 0, 5, 5};
    const struct {
        const char* row;
        HGLOBAL dib;
        const RECT* part;
        int32_t width;
        uint32_t error;
    } rows[] = {
        {"no DIB", nullptr, &all, 1, 1},         {"16 bits", deep.Get(), &all, 1, 16},
        {"colours", tooMany.Get(), &all, 1, 30}, {"no header", bad.Get(), &all, 1, 30},
        {"no part", good.Get(), nullptr, 1, 29}, {"outside", good.Get(), &outside, 1, 29},
        {"empty", good.Get(), &none, 1, 29},     {"before", good.Get(), &before, 1, 29},
        {"no size", good.Get(), &all, 0, 29},    {"too large", good.Get(), &all, INT32_MAX, 1},
    };
    for (const auto& [row, dib, part, width, error] : rows) {
        SCOPED_TRACE(row);
        EXPECT_EQ(CropStretchDIB(dib, part, width, 10, TIFF_SMOOTH), nullptr);
        EXPECT_EQ(TiffError(), error);
    }
    EXPECT_EQ(CropDIB(good.Get(), 5, 5, INT32_MAX, 1), nullptr);
    EXPECT_EQ(TiffError(), 29u);
    EXPECT_EQ(StretchDIB(good.Get(), 5, -5, 0), nullptr);
    EXPECT_EQ(TiffError(), 29u);
}
