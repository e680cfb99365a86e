// Pages in real windows, read back from the screen.
#include "gdi/desktop.h"
#include "tiff/cals.h"

#include <gtest/gtest.h>

namespace {

const std::string SAMPLES = TIFF_SOURCE_DIR "/samples/";

constexpr uint32_t WHITE = 0xFFFFFF, BLACK = 0, BACKGROUND = 0x3060C0;

Picture Turned(const Picture& page, uint32_t quarters)
{
    if (quarters == 0)
        return page;
    Picture next{page.height, page.width, std::vector<uint32_t>(page.pixels.size())};
    for (int32_t y = 0; y < page.height; ++y)
        for (int32_t x = 0; x < page.width; ++x)
            next.pixels[static_cast<size_t>(x * page.height + page.height - 1 - y)] =
                page.pixels[static_cast<size_t>(y * page.width + x)];
    return Turned(next, quarters - 1);
}

// The part of a picture, with the background where it has none.
Picture PartOf(const Picture& from, int32_t left, int32_t top, int32_t width, int32_t height,
               uint32_t outside = BACKGROUND)
{
    Picture part{width, height, {}};
    for (int32_t y = top; y < top + height; ++y)
        for (int32_t x = left; x < left + width; ++x)
            part.pixels.push_back(x < from.width && y < from.height
                                      ? from.pixels[static_cast<size_t>(y * from.width + x)]
                                      : outside);
    return part;
}

// A window on the screen for a scope, in the background's colour or in one of its own.
class PageWindow {
public:
    PageWindow(int width, int height, bool brush = true)
        : window(Create(width, height, brush)), dc(GetDC(window))
    {
        Fill(0x80FF80);
    }
    PageWindow(const PageWindow&) = delete;
    PageWindow& operator=(const PageWindow&) = delete;
    ~PageWindow()
    {
        ReleaseDC(window, dc);
        DestroyWindow(window);
    }
    void Fill(COLORREF colour) const
    {
        RECT room;
        GetClientRect(window, &room);
        HBRUSH brush = CreateSolidBrush(colour);
        FillRect(dc, &room, brush);
        DeleteObject(brush);
    }
    Picture Seen() const
    {
        RECT room;
        GetClientRect(window, &room);
        HBITMAP bitmap = CreateCompatibleBitmap(dc, room.right, room.bottom);
        HDC memory = CreateCompatibleDC(dc);
        HGDIOBJ before = SelectObject(memory, bitmap);
        BitBlt(memory, 0, 0, room.right, room.bottom, dc, 0, 0, SRCCOPY);
        SelectObject(memory, before);
        DeleteDC(memory);
        return TakeBitmap(bitmap);
    }
    const HWND window;
    const HDC dc;

private:
    // In one window for all: a new top-level window takes seconds to come up without a window manager.
    static HWND Create(int width, int height, bool brush)
    {
        static const HBRUSH background = CreateSolidBrush(RGB(0x30, 0x60, 0xC0));
        static const HWND parent = CreateWindowA("STATIC", "", WS_POPUP | WS_VISIBLE, 10, 10, 800, 600,
                                                 nullptr, nullptr, nullptr, nullptr);
        WNDCLASSA description{};
        description.lpfnWndProc = DefWindowProcA;
        description.hInstance = GetModuleHandleA(nullptr);
        description.lpszClassName = brush ? "page with a brush" : "page without";
        description.hbrBackground = brush ? background : nullptr;
        RegisterClassA(&description);
        return CreateWindowA(description.lpszClassName, "", WS_CHILD | WS_VISIBLE, 0, 0, width, height,
                             parent, nullptr, description.hInstance, nullptr);
    }
};

int32_t Draw(const PageWindow& page, const std::string& path, uint32_t flags, const int32_t* zoom = nullptr)
{
    return DecompressToScreen(TIFF_FORMAT_ANY, page.window, page.dc, path.c_str(), 0, zoom, flags);
}

// Black at the left and above, one black pixel at the lower right.
TiffPage Corner(uint32_t photometric = 0)
{
    Bytes rows = Hex("FFFFFF") + Repeat(Hex("800000"), 18) + Hex("800001");
    if (photometric == 1)
        for (uint8_t& byte : rows)
            byte = static_cast<uint8_t>(~byte);
    return TiffPage::Picture(24, 20, 1, 1, photometric).Strips({rows});
}

} // namespace

TEST(Screen, ShowsThePictureInEveryTurn)
{
    for (const char* name :
         {"fax-g4.tif", "codings.tif", "pictures-lzw.tif", "pictures-packed.tif", "pictures-jpeg.tif"})
        for (uint32_t turn = 0; turn < 4; ++turn) {
            SCOPED_TRACE(testing::Message() << name << ", turn " << turn);
            const std::string path = SAMPLES + name;
            const PageWindow page(400, 300);
            const Picture dib = Turned(TakeDib(LoadTiffIntoDIB(path.c_str(), 0, 0)), turn);
            EXPECT_EQ(Draw(page, path, turn), 1);
            const Picture seen = page.Seen();
            EXPECT_TRUE(seen == PartOf(dib, 0, 0, seen.width, seen.height));
            const LONG_PTR style = GetWindowLongPtrA(page.window, GWL_STYLE);
            EXPECT_EQ((style & WS_HSCROLL) != 0, dib.width > seen.width);
            EXPECT_EQ((style & WS_VSCROLL) != 0, dib.height > seen.height);
        }
}

TEST(Screen, FollowsItsFlags)
{
    const int32_t half[] = {1, 2, 1, 2}, twice[] = {2, 1, 2, 1};
    const TempFile white(OnePage(Corner())), black(OnePage(Corner(1)));
    struct Pixel {
        int x, y;
        uint32_t colour;
    };
    const struct {
        const char* row;
        const char* path;
        const int32_t* zoom;
        uint32_t flags;
        std::vector<Pixel> pixels;
    } rows[] = {
        {"plain",
         white.Path(),
         half,
         0,
         {{0, 19, BLACK}, {1, 1, WHITE}, {23, 19, BLACK}, {24, 0, BACKGROUND}}},
        {"plain, black is zero", black.Path(), nullptr, 0, {{0, 19, BLACK}, {1, 1, WHITE}, {23, 19, BLACK}}},
        {"inverted", white.Path(), nullptr, 32, {{0, 19, WHITE}, {1, 1, BLACK}, {24, 0, BACKGROUND}}},
        {"half", white.Path(), half, 4, {{0, 9, BLACK}, {1, 1, WHITE}, {11, 9, BLACK}, {12, 0, BACKGROUND}}},
        {"half, the ones stay: they are white", black.Path(), half, 4, {{0, 9, WHITE}, {11, 9, WHITE}}},
        {"half, grey", white.Path(), half, 4 | 64, {{0, 0, 0x404040}, {0, 9, 0x7F7F7F}, {11, 9, 0xBFBFBF}}},
        {"half, grey, black is zero", black.Path(), half, 4 | 64, {{0, 0, 0x404040}, {11, 9, 0xBFBFBF}}},
        {"grey changes nothing unreduced", white.Path(), nullptr, 64, {{0, 19, BLACK}, {1, 1, WHITE}}},
        {"twice, turned",
         white.Path(),
         twice,
         4 | 2,
         {{0, 0, BLACK}, {1, 1, BLACK}, {2, 0, WHITE}, {47, 39, BLACK}}},
        {"fit leaves the rest alone",
         white.Path(),
         nullptr,
         8,
         {{4, 4, BLACK}, {5, 5, WHITE}, {119, 99, BLACK}, {60, 100, 0x80FF80}}},
    };
    for (const auto& [row, path, zoom, flags, pixels] : rows) {
        SCOPED_TRACE(row);
        const PageWindow page(120, 101);
        EXPECT_EQ(Draw(page, path, flags, zoom), 1);
        for (const Pixel& pixel : pixels)
            EXPECT_EQ(GetPixel(page.dc, pixel.x, pixel.y),
                      RGB(pixel.colour >> 16 & 255, pixel.colour >> 8 & 255, pixel.colour & 255))
                << pixel.x << "," << pixel.y;
        EXPECT_FALSE(GetUpdateRect(page.window, nullptr, FALSE));
    }
}

TEST(Screen, StandsWhereTheScrollBarsSay)
{
    const std::string path = SAMPLES + "fax-g4.tif";
    const Picture dib = TakeDib(LoadTiffIntoDIB(path.c_str(), 0, 0));
    const PageWindow page(300, 200);
    Draw(page, path, 0);
    SetScrollRange(page.window, SB_VERT, 0, 1000, FALSE);
    SetScrollPos(page.window, SB_VERT, 250, FALSE);
    SetScrollRange(page.window, SB_HORZ, 0, 0, FALSE);
    EXPECT_EQ(Draw(page, path, 0), 1);
    const Picture seen = page.Seen();
    EXPECT_TRUE(seen ==
                PartOf(dib, 0, ((dib.height - seen.height) * 250 + 500) / 1000, seen.width, seen.height));
    EXPECT_EQ(Draw(page, path, 8), 1);
    EXPECT_EQ(GetScrollPos(page.window, SB_VERT), 0);
    EXPECT_EQ(GetWindowLongPtrA(page.window, GWL_STYLE) & (WS_HSCROLL | WS_VSCROLL), 0);
}

TEST(Screen, LeavesTheDeviceContextAsItWas)
{
    const TempFile file(OnePage(Corner()));
    const PageWindow page(100, 80, false);
    SetMapMode(page.dc, MM_ANISOTROPIC);
    SetWindowExtEx(page.dc, 7, 9, nullptr);
    SetViewportExtEx(page.dc, 11, 13, nullptr);
    SetViewportOrgEx(page.dc, 5, 6, nullptr);
    SetWindowOrgEx(page.dc, 3, 4, nullptr);
    SetStretchBltMode(page.dc, HALFTONE);
    SetTextColor(page.dc, RGB(1, 2, 3));
    SetROP2(page.dc, R2_XORPEN);
    HRGN clip = CreateRectRgn(0, 0, 10, 80);
    SelectClipRgn(page.dc, clip);
    HCURSOR arrow = LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_ARROW));
    SetCursor(arrow);
    HGDIOBJ palette = GetCurrentObject(page.dc, OBJ_PAL);
    EXPECT_EQ(Draw(page, file.Path(), 0), 1);
    SIZE window, viewport;
    POINT windowOrigin, viewportOrigin;
    GetWindowExtEx(page.dc, &window);
    GetViewportExtEx(page.dc, &viewport);
    GetWindowOrgEx(page.dc, &windowOrigin);
    GetViewportOrgEx(page.dc, &viewportOrigin);
    EXPECT_EQ(GetMapMode(page.dc), MM_ANISOTROPIC);
    EXPECT_EQ(window.cx * 10 + window.cy, 79);
    EXPECT_EQ(viewport.cx * 10 + viewport.cy, 123);
    EXPECT_EQ(windowOrigin.x * 10 + windowOrigin.y, 34);
    EXPECT_EQ(viewportOrigin.x * 10 + viewportOrigin.y, 56);
    EXPECT_EQ(GetStretchBltMode(page.dc), HALFTONE);
    EXPECT_EQ(GetTextColor(page.dc), RGB(1, 2, 3));
    EXPECT_EQ(GetROP2(page.dc), R2_XORPEN);
    EXPECT_EQ(GetCurrentObject(page.dc, OBJ_PAL), palette);
    EXPECT_EQ(GetCursor(), arrow);
    HRGN now = CreateRectRgn(0, 0, 0, 0);
    EXPECT_EQ(GetClipRgn(page.dc, now), 1);
    EXPECT_TRUE(EqualRgn(now, clip));
    // The page stands at the corner of the window, within the clipping of the caller.
    SelectClipRgn(page.dc, nullptr);
    SetMapMode(page.dc, MM_TEXT);
    SetViewportOrgEx(page.dc, 0, 0, nullptr);
    SetWindowOrgEx(page.dc, 0, 0, nullptr);
    EXPECT_EQ(GetPixel(page.dc, 0, 19), 0u);
    EXPECT_EQ(GetPixel(page.dc, 9, 19), RGB(255, 255, 255));
    EXPECT_EQ(GetPixel(page.dc, 9, 70), GetSysColor(COLOR_WINDOW));
    EXPECT_EQ(GetPixel(page.dc, 10, 19), 0x80FF80u);
    DeleteObject(clip);
    DeleteObject(now);
}

TEST(Screen, RefusesWhatItCannotShow)
{
    const TempFile deep(OnePage(TiffPage::Picture(4, 1, 16, 1).Strips({Bytes(8)})));
    const TempFile damaged(OnePage(TiffPage::Picture(8, 2, 1, 4).Strips({Bits("001 1000 11 1 00000001")})));
    const TempFile other(Bytes(4000, 'x'));
    const PageWindow page(100, 80);
    const struct {
        const char* row;
        uint32_t format;
        HDC dc;
        const char* path;
        uint32_t page, error;
        COLORREF first; // pixel afterwards
    } rows[] = {
        {"16 bits", 0, page.dc, deep.Path(), 0, 16, 0x80FF80},
        {"no such page", 1, page.dc, deep.Path(), 1, 3, 0x80FF80},
        {"no path", 1, page.dc, "", 0, 29, 0x80FF80},
        {"no device context", 1, nullptr, deep.Path(), 0, 29, 0x80FF80},
        {"no such format", 3, page.dc, deep.Path(), 0, 29, 0x80FF80},
        {"neither format", 0, page.dc, other.Path(), 0, 18, 0x80FF80},
        {"no CALS file", 2, page.dc, deep.Path(), 0, 18, 0x80FF80},
        {"no TIFF file", 1, page.dc, other.Path(), 0, 14, 0x80FF80},
        {"the rows before the damage stay", 1, page.dc, damaged.Path(), 0, 12, 0xFFFFFF},
    };
    for (const auto& [row, format, dc, path, number, error, first] : rows) {
        SCOPED_TRACE(row);
        page.Fill(0x80FF80);
        EXPECT_EQ(DecompressToScreen(format, page.window, dc, path, number, nullptr, 0), 0);
        EXPECT_EQ(TiffError(), error);
        EXPECT_EQ(GetPixel(page.dc, 0, 0), first);
    }
    uint8_t line[4] = {0xFF, 0xFF, 0xFF, 0xFF};
    EXPECT_EQ(FlushMonoLineToScreen(line, 0, line), 0);
}

TEST(Screen, ShowsCalsFilesAsTheirDibs)
{
    const std::string path = SAMPLES + "drawing.cal";
    const Picture dib = TakeDib(LoadCALSIntoDIB(path.c_str(), 0));
    for (uint32_t turn = 0; turn < 4; ++turn) {
        const PageWindow page(500, 400);
        EXPECT_EQ(Draw(page, path, turn), 1);
        const Picture seen = page.Seen(), expected = Turned(dib, turn);
        EXPECT_TRUE(seen == PartOf(expected, 0, 0, seen.width, seen.height)) << turn;
    }
    const PageWindow page(500, 400);
    const int32_t half[] = {1, 2, 1, 2};
    EXPECT_EQ(DecompressCALSToScreen(page.window, page.dc, path.c_str(), half, 4 | 32), 1);
}

TEST(Screen, LeavesNothingBehindInAThousandDrawings)
{
    const std::string cals = SAMPLES + "drawing.cal", fax = SAMPLES + "fax-mh.tif";
    const TempFile deep(OnePage(TiffPage::Picture(4, 1, 16, 1).Strips({Bytes(8)})));
    const PageWindow page(60, 50);
    const auto drawAll = [&] {
        Draw(page, cals, 3);
        Draw(page, fax, 8 | 64);
        Draw(page, deep.Path(), 0);
    };
    drawAll();
    TakeMarks();
    const HandleMarks before = TakeMarks();
    for (int round = 0; round < 334; ++round)
        drawAll();
    ExpectNoGrowth(before, 1000);
}
