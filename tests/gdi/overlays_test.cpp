// Text on forms and pictures beside the same text drawn by GDI without the library.
#include "gdi/hand.h"
#include "support/pictures.h"

#include <gtest/gtest.h>

namespace {

constexpr uint32_t WIDTH = 400, HEIGHT = 300;

// Stripes, as rows of a page and as those of a bitmap.
const Bytes& Stripes()
{
    static const Bytes rows = Repeat(Hex("00FFFFFFFFFFFFFF0000"), HEIGHT * WIDTH / 80);
    return rows;
}

// A text of two pages on a form of 400 by 300 pixels.
struct Filled {
    TempFile form{OnePage(TiffPage::Picture(WIDTH, HEIGHT, 1, 1, 1).Strips({Stripes()}))};
    TempFile file;
    TiffTextPageSettings settings{};

    explicit Filled(std::string_view text) : file(Bytes(text.begin(), text.end()))
    {
        std::strcpy(settings.path, file.Path());
        std::strcpy(settings.faceName, FACE);
        settings.flags = TIFF_TEXT_INCHES;
        settings.horizontalDpi = settings.verticalDpi = 100;
        settings.pageWidth = WIDTH;
        settings.pageHeight = HEIGHT;
        settings.leftMargin = 20;
        settings.topMargin = 30;
        settings.fontSize = 36;
        settings.lineSpacing = 200;
    }
};

// The font that overlays describe.
LOGFONTA Plain(int32_t height)
{
    LOGFONTA font{};
    font.lfHeight = height;
    std::strcpy(font.lfFaceName, FACE);
    return font;
}

} // namespace

TEST(FormOverlay, PutsTheTextOnTheFormAndTheRestOnWhitePages)
{
    Filled filled("Name\r\nTown");
    const LOGFONTA font = Font(-50);
    const Picture first = Hand(WIDTH, HEIGHT, &font, Stripes().data()).Text(20, 30, "Name").Taken();
    const Picture lower = Hand(WIDTH, HEIGHT, &font, Stripes().data()).Text(20, 90, "Name").Taken();
    const Picture second = Hand(WIDTH, HEIGHT, &font).Text(20, 30, "Town").Taken();
    const Bytes formBytes = ReadFileBytes(filled.form.Path());

    EXPECT_TRUE(TakeBitmap(BitmapFormOverlay(filled.form.Path(), &filled.settings)) == first);
    EXPECT_TRUE(TakeDib(DIBFormOverlay(filled.form.Path(), &filled.settings)) == first);
    HANDLE pages[3] = {};
    ASSERT_EQ(DIBFormOverlayExt(filled.form.Path(), &filled.settings, pages, 3, 90), 2u);
    EXPECT_TRUE(TakeDib(pages[0]) == lower);
    EXPECT_TRUE(TakeDib(pages[1]) == second);
    EXPECT_EQ(ReadFileBytes(filled.form.Path()), formBytes);

    EXPECT_EQ(BitmapFormOverlay(filled.file.Path(), &filled.settings), nullptr); // no TIFF
    EXPECT_EQ(BitmapFormOverlay(nullptr, &filled.settings), nullptr);
    EXPECT_EQ(DIBFormOverlay(filled.form.Path(), nullptr), nullptr);
    EXPECT_EQ(DIBFormOverlayExt(filled.form.Path(), &filled.settings, nullptr, 3, 0), 0u);
    std::strcpy(filled.settings.path, "no such file.txt");
    EXPECT_EQ(BitmapFormOverlay(filled.form.Path(), &filled.settings), nullptr);
    EXPECT_EQ(DIBFormOverlayExt(filled.form.Path(), &filled.settings, pages, 3, 0), 0u);
}

TEST(TextOverlay, DrawsOnACopy)
{
    const HDC screen = GetDC(nullptr);
    const int32_t dots = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    const LOGFONTA own = Plain(-MulDiv(20, dots, 72)), fine = Plain(-MulDiv(20, dots * 2, 72));
    const int32_t down = Hand(1, 1, &own).LineHeight();
    const HBITMAP bitmap = CreateBitmap(WIDTH, HEIGHT, 1, 1, Stripes().data());
    const Picture before = Look(bitmap);
    const auto draw = [&](int32_t x, int32_t y, const char* text, uint32_t dpi = 0) {
        return TakeBitmap(BitmapTextOverlay(bitmap, x, y, text, FACE, 20, dpi, dpi));
    };
    const auto hand = [](const LOGFONTA& font) { return Hand(WIDTH, HEIGHT, &font, Stripes().data()); };
    EXPECT_TRUE(draw(30, 40, "A\r\nB") == hand(own).Text(30, 40, "A").Text(30, 40 + down, "B").Taken());
    EXPECT_TRUE(draw(30, 40, "A\nI") == hand(own).Text(30, 40, "A").Text(30, 40, "I").Taken());
    EXPECT_TRUE(draw(30, 40, "Ag", static_cast<uint32_t>(dots) * 2) == hand(fine).Text(60, 80, "Ag").Taken());
    // The part left of the place and above it is cut off.
    const Picture below = draw(0, -10, "A"), cut = draw(40, 0, "A");
    EXPECT_TRUE(below == hand(own).Text(0, -10, "A").Taken());
    EXPECT_TRUE(cut == hand(own).Text(40, 0, "A").Taken());
    // A coarse picture: the text begins halfway to the place, and is cut off there.
    const LOGFONTA coarse = Plain(-MulDiv(60, dots / 2, 72));
    const Picture whole = Hand(WIDTH, HEIGHT, &coarse, Stripes().data()).Text(20, 10, "MM").Taken();
    Picture part = before;
    for (size_t row = 20; row < HEIGHT; ++row)
        for (size_t column = 40; column < WIDTH; ++column)
            part.pixels[row * WIDTH + column] = whole.pixels[row * WIDTH + column];
    EXPECT_FALSE(part == whole);
    const auto half = static_cast<uint32_t>(dots / 2);
    EXPECT_TRUE(TakeBitmap(BitmapTextOverlay(bitmap, 40, 20, "MM", FACE, 60, half, half)) == part);
    EXPECT_TRUE(draw(WIDTH, 0, "A") == before);
    EXPECT_TRUE(draw(0, HEIGHT, "A") == before);
    EXPECT_TRUE(draw(INT32_MAX, INT32_MIN, "A\r\n", UINT32_MAX).pixels.empty()); // no such font
    EXPECT_TRUE(Look(bitmap) == before);
    EXPECT_EQ(BitmapTextOverlay(nullptr, 0, 0, "A", FACE, 20, 0, 0), nullptr);
    EXPECT_EQ(BitmapTextOverlay(bitmap, 0, 0, nullptr, FACE, 20, 0, 0), nullptr);
    EXPECT_EQ(BitmapTextOverlay(bitmap, 0, 0, "A", nullptr, 20, 0, 0), nullptr);
    DeleteObject(bitmap);
}

TEST(TextOverlay, KeepsDibsAndTheirResolution)
{
    const LOGFONTA font = Plain(-MulDiv(20, 98, 72));
    const HDC screen = GetDC(nullptr);
    const float across = 204.0f / static_cast<float>(GetDeviceCaps(screen, LOGPIXELSX));
    const float down = 98.0f / static_cast<float>(GetDeviceCaps(screen, LOGPIXELSY));
    ReleaseDC(nullptr, screen);
    Bytes rows(size_t{52} * HEIGHT, 0xFF);
    // The colour count is left open, as it stays.
    const Bytes given = PackedDib({WIDTH, HEIGHT, 1, {0, 0xFFFFFF}, rows, {8031, 3858}});
    const Block dib(given);
    HGLOBAL drawn = DIBTextOverlay(dib.Get(), 10, 20, "Ag", FACE, 20);
    EXPECT_EQ(Content(dib.Get(), given.size()), given);
    ASSERT_NE(drawn, nullptr);
    EXPECT_EQ(Part(Content(drawn, 40), 24, 8), Part(given, 24, 8));
    const auto x = static_cast<int32_t>(across * 10 + 0.5f), y = static_cast<int32_t>(down * 20 + 0.5f);
    EXPECT_TRUE(TakeDib(drawn) == Hand(WIDTH, HEIGHT, &font).Text(x, y, "Ag").Taken());

    const Block colours(PackedDib({3, 2, 24, {}, Bytes(24, 0x55), {0, 0}}));
    const Picture copied = TakeDib(DIBTextOverlay(colours.Get(), 5, 5, "A", FACE, 20));
    EXPECT_EQ(copied.pixels, std::vector<uint32_t>(6, 0x555555));
    EXPECT_EQ(DIBTextOverlay(nullptr, 0, 0, "A", FACE, 20), nullptr);
    EXPECT_EQ(DIBTextOverlay(dib.Get(), 0, 0, nullptr, FACE, 20), nullptr);
    const Block bad(Hex("28000000"));
    EXPECT_EQ(Refusal(DIBTextOverlay(bad.Get(), 0, 0, "A", FACE, 20)), 30u);
}

// One GDI object more can be had each time, until there are enough.
TEST(Overlays, EndWithNothingOrAllWhenObjectsRunOut)
{
    Filled filled("Name");
    const Block dib(PackedDib({WIDTH, HEIGHT, 1, {0, 0xFFFFFF}, Bytes(size_t{52} * HEIGHT, 0xFF)}));
    const Bytes given = Content(dib.Get(), GlobalSize(dib.Get()));
    const HBITMAP bitmap = CreateBitmap(WIDTH, HEIGHT, 1, 1, Stripes().data());
    HANDLE page = nullptr;
    uint32_t error = 0;
    const auto draw = [&] {
        const uint32_t count = CreateBMPFaxPageFromASCII(&filled.settings, 1, &page, &error);
        EXPECT_EQ(count == 1, error == TIFF_TEXT_DONE);
        return std::vector<Picture>{count ? TakeBitmap(static_cast<HBITMAP>(page)) : Picture{},
                                    TakeBitmap(BitmapFormOverlay(filled.form.Path(), &filled.settings)),
                                    TakeBitmap(BitmapTextOverlay(bitmap, 9, 9, "A", FACE, 20, 0, 0)),
                                    TakeDib(DIBTextOverlay(dib.Get(), 9, 9, "A", FACE, 20))};
    };
    const std::vector<Picture> whole = draw();
    std::vector<HBRUSH> brushes;
    while (const HBRUSH brush = CreateSolidBrush(static_cast<COLORREF>(brushes.size())))
        brushes.push_back(brush);
    uint32_t failures = 0;
    for (bool all = false; !all && !brushes.empty();) {
        const std::vector<Picture> drawn = draw();
        all = drawn == whole;
        failures += !all;
        for (size_t at = 0; at < whole.size(); ++at)
            EXPECT_TRUE(drawn[at].pixels.empty() || drawn[at] == whole[at]) << at << " after " << failures;
        DeleteObject(brushes.back());
        brushes.pop_back();
    }
    EXPECT_GT(failures, 2u);
    for (const HBRUSH brush : brushes)
        DeleteObject(brush);
    EXPECT_EQ(Content(dib.Get(), given.size()), given);
    DeleteObject(bitmap);
}
