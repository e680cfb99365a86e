#include "support/leaks.h"
#include "support/tiff_builder.h"

#include "tiff/blank_pages.h"

#include <cstring>
#include <gtest/gtest.h>

namespace {

TiffPage Bilevel(uint32_t width, const Bytes& rows, uint32_t photometric = 0)
{
    return TiffPage::Picture(width, 1, 1, 1, photometric).Strips({rows});
}

// Ten pixels in a row: the first ones of one level, the others of another.
TiffPage Row(uint32_t samples, uint8_t level, size_t count, uint8_t rest)
{
    return TiffPage::Picture(10, 1, 8, 1, samples == 3 ? 2 : 1)
        .Short(277, {samples})
        .Strips({Bytes(count * samples, level) + Bytes((10 - count) * samples, rest)});
}

} // namespace

TEST(BlankPages, PagesAreCountedAgainstTheThreshold)
{
    static constexpr uint8_t grey[3] = {100, 100, 100};
    const struct {
        const char* row;
        TiffPage page;
        int32_t threshold;
        bool blank, black;
    } rows[] = {
        {"bilevel, one dark of ten, 10 %", Bilevel(10, Hex("8000")), 100, false, false},
        {"bilevel, one dark of ten, more", Bilevel(10, Hex("8000")), 101, true, false},
        {"bilevel, one dark of ten, less", Bilevel(10, Hex("8000")), 99, false, true},
        {"bilevel, threshold 0", Bilevel(10, Hex("0000")), 0, false, false},
        {"bilevel, below 0", Bilevel(10, Hex("8000")), -5, false, true},
        {"bilevel, black is zero", Bilevel(10, Hex("7FC0"), 1), 99, false, true},
        {"padding behind 8 pixels counts, white first", Bilevel(8, Hex("00")), 500, true, false},
        {"padding behind 8 pixels counts, black first", Bilevel(8, Hex("FF"), 1), 500, false, true},
        {"but not behind 32", Bilevel(32, Hex("FFFFFFFF"), 1), 500, true, false},
        {"8 bits, one dark", Row(1, 99, 1, 200), 100, false, false},
        {"8 bits, one dark, less", Row(1, 99, 1, 200), 99, false, true},
        {"8 bits, one dark, more", Row(1, 99, 1, 200), 101, true, false},
        {"8 bits, the colour itself is neither", Row(1, 100, 10, 0), 500, false, false},
        {"24 bits, three dark", Row(3, 99, 3, 101), 301, true, false},
        {"24 bits, three dark, less", Row(3, 99, 3, 101), 299, false, true},
        {"24 bits, threshold 0", Row(3, 255, 10, 0), 0, false, false},
        {"24 bits, beyond 1000", Row(3, 99, 10, 0), 1200, false, false},
        {"4 bits never match", TiffPage::Picture(8, 1, 4, 1, 1).Strips({Bytes(4)}), 1, false, false},
    };
    for (const auto& [row, page, threshold, blank, black] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        TempFile file(OnePage(page));
        EXPECT_EQ(FindBlackPage(file.Path(), threshold, 0, grey), black ? 1u : 0u);
        EXPECT_EQ(FindBlankPage(file.Path(), threshold, 0, grey), blank ? 1u : 0u);
    }
}

TEST(BlankPages, LevelsPairWithTheColourByDepth)
{
    static constexpr uint8_t colour[3] = {10, 100, 200}; // blue first at 24 bits, red first at 8
    TempFile trueColour(
        OnePage(TiffPage::Picture(1, 1, 8, 1, 2).Short(277, {3}).Strips({Hex("C7 63 09")}))); // 199, 99, 9
    EXPECT_EQ(FindBlackPage(trueColour.Path(), 0, 0, colour), 1u);
    std::vector<uint32_t> map(768);
    map[0] = 199 << 8, map[256] = 99 << 8, map[512] = 9 << 8;
    TempFile palette(OnePage(TiffPage::Picture(1, 1, 8, 1, 3).Short(320, map).Strips({{0}})));
    EXPECT_EQ(FindBlackPage(palette.Path(), 0, 0, colour), 0u);
    map[0] = 9 << 8, map[512] = 199 << 8;
    TempFile turned(OnePage(TiffPage::Picture(1, 1, 8, 1, 3).Short(320, map).Strips({{0}})));
    EXPECT_EQ(FindBlackPage(turned.Path(), 0, 0, colour), 1u);
}

TEST(BlankPages, TheSearchBeginsWhereItIsTold)
{
    static constexpr uint8_t grey[3] = {100, 100, 100};
    const TiffPage white = Bilevel(10, Hex("0000")), marked = Bilevel(10, Hex("FF00"));
    TempFile file(TiffBuilder().Add(white).Add(marked).Add(white).Build());
    TempFile broken(TiffBuilder().Add(marked).Add(Bilevel(10, {}).Short(259, {99})).Build());
    TempFile empty(Hex("4949 2A00 00000000"));
    TiffBuilder builder;
    Bytes ring = builder.Add(marked).Add(marked).Build();
    std::memcpy(&ring[builder.links[1]], &builder.directories[0], 4);
    TempFile circle(ring);
    const struct {
        const char* row;
        const char* path;
        int32_t first;
        uint32_t blank, error;
    } rows[] = {
        {"from the first", file.Path(), -1, 1, 0},
        {"from the second", file.Path(), 1, 3, 0},
        {"beyond the last", file.Path(), 3, 0xFFFFFFFF, 3},
        {"no path", nullptr, 0, 0xFFFFFFFF, 29},
        {"no file", "no-such-file.tif", 0, 0xFFFFFFFF, 6},
        {"no pages", empty.Path(), 0, 0xFFFFFFFF, 6},
        {"a chain that comes back without a blank page", circle.Path(), 0, 0xFFFFFFFF, 6},
        {"a page that cannot be loaded", broken.Path(), 0, 0xFFFFFFFF, 6},
    };
    for (const auto& [row, path, first, blank, error] : rows) {
        SCOPED_TRACE(row);
        EXPECT_EQ(FindBlankPage(path, 50, first, grey), blank);
        if (error != 0) {
            EXPECT_EQ(TiffError(), error);
        }
    }
    EXPECT_EQ(FindBlackPage(file.Path(), 50, 0, grey), 2u);
    EXPECT_EQ(FindBlackPage(file.Path(), 50, 2, grey), 0u);
}
