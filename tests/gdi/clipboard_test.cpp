#include "gdi/desktop.h"

#include <gtest/gtest.h>

namespace {

Bytes ColourPage(uint8_t first)
{
    return OnePage(TiffPage::Picture(3, 1, 8, 1, 2)
                       .Short(277, {3})
                       .Strips({{first, 0x22, 0x33, 0xAA, 0xBB, 0xCC, 0, 0, 0}}));
}

class ForeignWindow {
public:
    ForeignWindow()
        : window(CreateWindowA("STATIC", "", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr, nullptr, nullptr))
    {
    }
    ~ForeignWindow()
    {
        DestroyWindow(window);
    }
    const HWND window;
};

} // namespace

TEST(Clipboard, AnotherProcessFindsThePage)
{
    const TempFile colour(ColourPage(0x11));
    EXPECT_EQ(LoadTiffFileIntoClipboard(colour.Path(), 0, 0), 1);
    EXPECT_EQ(TiffError(), 0u);
    EXPECT_EQ(ClipboardOfAnotherProcess(), (Picture{3, 1, {0x112233, 0xAABBCC, 0}}));

    const TempFile bilevel(OnePage(TiffPage::Picture(3, 2, 1, 1).Strips({Hex("A0 40")})));
    EXPECT_EQ(LoadTiffFileIntoClipboard(bilevel.Path(), 0, 0), 1);
    EXPECT_EQ(ClipboardOfAnotherProcess(), (Picture{3, 2, {0, 0xFFFFFF, 0, 0xFFFFFF, 0, 0xFFFFFF}}));
}

TEST(Clipboard, WhatCannotBeLoadedCountsAsDone)
{
    const TempFile good(ColourPage(0x44));
    const TempFile damaged(OnePage(TiffPage::Picture(8, 4, 1, 4).Strips({Bits("1 00000001")})));
    const TempFile notTiff(Hex("4D4D 0000 0000 0000"));
    static constexpr uint32_t KEPT = 0x442233;
    const struct {
        const char* row;
        const char* path;
        uint32_t page, error;
        bool kept; // the old content of the clipboard
    } rows[] = {
        {"no such file", "no-such-file.tif", 0, 6, true},
        {"no TIFF", notTiff.Path(), 0, 8, true},
        {"no such page", good.Path(), 1, 3, true},
        {"damaged beyond use", damaged.Path(), 0, 12, false},
    };
    for (const auto& [row, path, page, error, kept] : rows) {
        SCOPED_TRACE(row);
        EXPECT_EQ(LoadTiffFileIntoClipboard(good.Path(), 0, 0), 1);
        EXPECT_EQ(LoadTiffFileIntoClipboard(path, page, 0), 1);
        EXPECT_EQ(TiffError(), error);
        const Picture found = ClipboardOfAnotherProcess();
        EXPECT_EQ(found.pixels, kept ? (std::vector<uint32_t>{KEPT, 0xAABBCC, 0}) : std::vector<uint32_t>{});
    }
}

TEST(Clipboard, OneThatIsTakenIsAFailureWithoutAnError)
{
    const TempFile file(ColourPage(0x55));
    const ForeignWindow foreign;
    EXPECT_EQ(LoadTiffFileIntoClipboard(file.Path(), 0, 0), 1);
    ASSERT_TRUE(OpenClipboard(foreign.window)) << "it was not closed";
    EXPECT_EQ(LoadTiffFileIntoClipboard(file.Path(), 0, 0), 0);
    EXPECT_EQ(TiffError(), 0u);
    EXPECT_EQ(SaveTiffFileFromClipboard(file.Path(), 201, 0), 0);
    EXPECT_EQ(TiffError(), 25u);
    // A bitmap that is promised but never supplied.
    EmptyClipboard();
    SetClipboardData(CF_BITMAP, nullptr);
    CloseClipboard();
    EXPECT_EQ(SaveTiffFileFromClipboard(file.Path(), 201, 0), 0);
    EXPECT_EQ(TiffError(), 26u);
}
