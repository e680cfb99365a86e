// Pictures in a window, against a model that holds the whole picture.
#include "raster/screen_rows.h"
#include "support/bytes.h"

#include <gtest/gtest.h>
#include <random>

using namespace tiff;

namespace {

ScreenAxis Axis(uint32_t pixels, uint32_t room, ScrollBar scroll = {}, double picturePerInch = 0,
                double zoom = 1)
{
    return {pixels, picturePerInch, 100, zoom, room, 10, scroll};
}

// Pixels of 0 to 255, or 0x00RRGGBB; of bilevel pictures 0 and 1.
struct Grid {
    uint32_t width, height;
    std::vector<uint32_t> pixels;

    uint32_t& At(uint32_t x, uint32_t y)
    {
        return pixels[size_t{y} * width + x];
    }
    bool operator==(const Grid&) const = default;
};

Grid Blank(uint32_t width, uint32_t height)
{
    return {width, height, std::vector<uint32_t>(size_t{width} * height, 0xEEEEEEEE)};
}

Grid Turned(Grid page, Turn turn)
{
    for (auto quarters = static_cast<int>(turn); quarters > 0; --quarters) {
        Grid next = Blank(page.height, page.width);
        for (uint32_t y = 0; y < page.height; ++y)
            for (uint32_t x = 0; x < page.width; ++x)
                next.At(page.height - 1 - y, x) = page.At(x, y);
        page = next;
    }
    return page;
}

// The pixels of an axis behind a device pixel, from the definition.
PixelSpan Behind(const ShownAxis& axis, uint32_t device)
{
    const auto at = [&axis](uint64_t d) {
        return static_cast<uint32_t>(axis.first + d * axis.pixels / axis.scaled);
    };
    const uint32_t first = std::min(at(device), axis.pixels - 1), end = std::min(at(device + 1), axis.pixels);
    return {first, end > first ? end - first : 1};
}

Grid Model(Grid page, const ShownPicture& shown, Turn turn, uint32_t bits, bool grey)
{
    Grid displayed = Turned(page, turn), screen = Blank(shown.x.shown, shown.y.shown);
    for (uint32_t y = 0; y < screen.height; ++y)
        for (uint32_t x = 0; x < screen.width; ++x) {
            const PixelSpan across = Behind(shown.x, x), down = Behind(shown.y, y);
            uint32_t set = 0;
            for (uint32_t row = 0; row < down.count; ++row)
                for (uint32_t column = 0; column < across.count; ++column)
                    set += displayed.At(across.first + column, down.first + row) & 1;
            const uint32_t all = across.count * down.count;
            screen.At(x, y) = bits > 1 ? displayed.At(across.first, down.first)
                              : grey   ? (set * 255 + all / 2) / all
                                       : set != 0;
        }
    return screen;
}

Bytes LineOf(Grid& page, uint32_t row, uint32_t bits)
{
    Bytes line((size_t{page.width} * bits + 7) / 8);
    for (uint32_t x = 0; x < page.width; ++x) {
        const uint32_t pixel = page.At(x, row);
        if (bits == 24)
            for (uint32_t sample = 0; sample < 3; ++sample)
                line[size_t{x} * 3 + sample] = static_cast<uint8_t>(pixel >> (16 - 8 * sample));
        else
            line[size_t{x} * bits / 8] |= static_cast<uint8_t>(pixel << (8 - bits - x * bits % 8));
    }
    return line;
}

// Puts a band where it belongs. Every pixel may be shown once.
void Compose(void* user, const ScreenBand& band)
{
    auto& [screen, form] = *static_cast<std::pair<Grid, PixelForm>*>(user);
    EXPECT_LE(uint64_t{band.stride} * band.height, 68u * 1024);
    for (uint32_t y = 0; y < band.height; ++y)
        for (uint32_t x = 0; x < band.width; ++x) {
            const uint8_t* row = band.rows + size_t{y} * band.stride;
            uint32_t& pixel = screen.At(band.x + x, band.y + y);
            EXPECT_EQ(pixel, 0xEEEEEEEE);
            pixel = form == PixelForm::Bits    ? row[x / 8] >> (7 - x % 8) & 1u
                    : form == PixelForm::Bytes ? row[x]
                                               : row[3 * x] | row[3 * x + 1] << 8 | row[3 * x + 2] << 16;
        }
}

Grid Drawn(Grid page, const ScreenRowsOrder& order, uint32_t bits, uint32_t rowCount)
{
    PictureFormat format = BilevelFormat(page.width, page.height, 0, 0);
    format.stored.biBitCount = static_cast<WORD>(bits);
    format.conversion = bits == 24 ? Conversion::SwapRedBlue : Conversion::Copy;
    std::pair<Grid, PixelForm> shown{Blank(order.shown.x.shown, order.shown.y.shown), {}};
    ScreenRows rows{Compose, &shown};
    EXPECT_EQ(BeginScreenRows(rows, format, order), 0u);
    shown.second = rows.form;
    for (uint32_t row = 0; row < rowCount; ++row)
        TakeScreenRow(rows, LineOf(page, row, bits).data(), row);
    EndScreenRows(rows);
    return shown.first;
}

Grid RandomPage(uint32_t width, uint32_t height, uint32_t bits)
{
    std::mt19937 random(width * 31 + height);
    Grid page = Blank(width, height);
    for (uint32_t& pixel : page.pixels)
        pixel = static_cast<uint32_t>(random() & random()) & ((1u << bits) - 1);
    return page;
}

} // namespace

TEST(ScreenGeometry, FollowsRoomResolutionZoomAndScrollBars)
{
    constexpr ScrollBar middle = {0, 100, 50}, beyond = {10, 20, 99}, none = {};
    const struct {
        const char* row;
        Placement placement;
        ScreenAxis x, y;
        ShownAxis shownX, shownY; // pixels, scaled, room, first, shown, scrolls
    } rows[] = {
        {"fits",
         Placement::Plain,
         Axis(50, 100),
         Axis(100, 100),
         {50, 50, 100, 0, 50, false},
         {100, 100, 100, 0, 100, false}},
        {"a bar makes the other one necessary",
         Placement::Plain,
         Axis(101, 100),
         Axis(95, 100),
         {101, 101, 90, 0, 90, true},
         {95, 95, 90, 0, 90, true}},
        {"no range, no offset",
         Placement::Plain,
         Axis(300, 100, none),
         Axis(50, 100),
         {300, 300, 100, 0, 100, true},
         {50, 50, 90, 0, 50, false}},
        {"a position is a share of what is hidden",
         Placement::Plain,
         Axis(300, 100, middle),
         Axis(50, 100),
         {300, 300, 100, 100, 100, true},
         {50, 50, 90, 0, 50, false}},
        {"beyond the range is its end",
         Placement::Plain,
         Axis(50, 100),
         Axis(300, 100, beyond),
         {50, 50, 90, 0, 50, false},
         {300, 300, 100, 200, 100, true}},
        {"true size of a fax",
         Placement::TrueSize,
         Axis(408, 300, none, 204),
         Axis(196, 300, none, 98),
         {408, 200, 300, 0, 200, false},
         {196, 200, 300, 0, 200, false}},
        {"zoom divides, unknown resolution is the device's",
         Placement::TrueSize,
         Axis(200, 300, none, 0, 2),
         Axis(200, 300, none, 50, 4),
         {200, 100, 300, 0, 100, false},
         {200, 100, 300, 0, 100, false}},
        {"scrolled and enlarged",
         Placement::TrueSize,
         Axis(40, 100, middle, 0, 0.25),
         Axis(10, 100, none),
         {40, 160, 100, 8, 100, true},
         {10, 10, 90, 0, 10, false}},
        {"fit keeps the shape",
         Placement::Fit,
         Axis(200, 100, middle),
         Axis(100, 100),
         {200, 100, 100, 0, 100, false},
         {100, 50, 100, 0, 50, false}},
        {"fit enlarges",
         Placement::Fit,
         Axis(10, 100),
         Axis(20, 100),
         {10, 50, 100, 0, 50, false},
         {20, 100, 100, 0, 100, false}},
        {"no room",
         Placement::Fit,
         Axis(10, 0),
         Axis(20, 100),
         {10, 1, 0, 0, 0, false},
         {20, 1, 100, 0, 1, false}},
        {"hostile zoom",
         Placement::TrueSize,
         Axis(1u << 30, 100, middle, 1, 1e-9),
         Axis(10, 100, none, 1e9, 1),
         {1u << 30, INT32_MAX, 100, (1u << 29) - 25, 100, true},
         {10, 1, 90, 0, 1, false}},
    };
    const auto numbers = [](const ShownAxis& a) {
        return std::vector<uint32_t>{a.pixels, a.scaled, a.room, a.first, a.shown, a.scrolls};
    };
    for (const auto& [row, placement, x, y, shownX, shownY] : rows) {
        SCOPED_TRACE(row);
        const ShownPicture shown = PlaceOnScreen(placement, x, y);
        EXPECT_EQ(numbers(shown.x), numbers(shownX));
        EXPECT_EQ(numbers(shown.y), numbers(shownY));
    }
    const int32_t zooms[] = {2, 3, 0, 3, 3, 0, -4, 2, -2, -4};
    const double ratios[] = {1.5, 1, 1, 1, 2};
    for (size_t pair = 0; pair < std::size(ratios); ++pair)
        EXPECT_EQ(ZoomRatio(zooms + 2 * pair), ratios[pair]);
    EXPECT_EQ(ZoomRatio(nullptr), 1);
}

TEST(ScreenRows, AreTheTurnedAndScaledPicture)
{
    constexpr ScrollBar third = {0, 3, 1};
    const struct {
        const char* row;
        Placement placement;
        uint32_t width, height, room;
        double zoomX, zoomY;
        ScrollBar scroll;
    } rows[] = {
        {"one pixel", Placement::Plain, 1, 1, 50, 1, 1, {}},
        {"odd sides", Placement::Plain, 37, 21, 50, 1, 1, {}},
        {"scrolled", Placement::Plain, 91, 77, 40, 1, 1, third},
        {"more than a band", Placement::Plain, 800, 700, 900, 1, 1, {}},
        {"fitted", Placement::Fit, 300, 200, 83, 1, 1, {}},
        {"enlarged", Placement::Fit, 17, 9, 83, 1, 1, {}},
        {"reduced unlike, scrolled", Placement::TrueSize, 300, 500, 60, 1.7, 4.1, third},
        {"reduced one way, enlarged the other", Placement::TrueSize, 70, 45, 70, 3, 0.4, third},
        {"many to one", Placement::TrueSize, 400, 300, 70, 150, 299, {}},
    };
    for (const auto& [row, placement, width, height, room, zoomX, zoomY, scroll] : rows)
        for (const uint32_t bits : {1u, 4u, 8u, 24u})
            for (uint32_t turn = 0; turn < 4; ++turn)
                for (const bool grey : {false, true}) {
                    SCOPED_TRACE(testing::Message() << row << ", " << bits << " bits, turn " << turn << grey);
                    const bool swapped = turn % 2 != 0;
                    ScreenRowsOrder order{};
                    order.shown =
                        PlaceOnScreen(placement, Axis(swapped ? height : width, room, scroll, 0, zoomX),
                                      Axis(swapped ? width : height, room, scroll, 0, zoomY));
                    order.turn = static_cast<Turn>(turn);
                    order.grey = grey;
                    const bool reduced = order.shown.x.scaled < order.shown.x.pixels ||
                                         order.shown.y.scaled < order.shown.y.pixels;
                    const Grid page = RandomPage(width, height, bits);
                    ASSERT_TRUE(Drawn(page, order, bits, height) ==
                                Model(page, order.shown, order.turn, bits, grey && reduced));
                }
}

TEST(ScreenRows, ThatEndEarlyAreShownSoFar)
{
    const Grid page = RandomPage(20, 20, 1);
    ScreenRowsOrder order{};
    order.shown = PlaceOnScreen(Placement::TrueSize, Axis(20, 50), Axis(20, 50, {}, 0, 4));
    order.turn = Turn::Half;
    // Of the third device row only its first page row has come.
    Grid part = page;
    std::fill(part.pixels.begin() + 9 * 20, part.pixels.end(), 0u);
    Grid expected = Model(part, order.shown, order.turn, 1, false);
    std::fill(expected.pixels.begin(), expected.pixels.begin() + 2 * 20, 0xEEEEEEEE);
    EXPECT_TRUE(Drawn(page, order, 1, 9) == expected);
}

TEST(ScreenRows, OfAHostileWidthHaveRoomOrAreRefused)
{
    ScreenRowsOrder order{};
    order.shown = PlaceOnScreen(Placement::Fit, Axis(INT32_MAX, 100), Axis(1, 100));
    order.grey = true;
    ScreenRows rows{Compose, nullptr};
    const Status status = BeginScreenRows(rows, BilevelFormat(INT32_MAX, 1, 0, 0), order);
    EXPECT_TRUE(status == error::NotEnoughMemory || GlobalSize(rows.block.Get()) > UINT32_MAX);
}
