// Notes on pages beside the same text drawn by GDI without the library, and their dialog by the numbers of
// its controls.
#include "gdi/hand.h"
#include "support/pictures.h"

#include <functional>
#include <gtest/gtest.h>

namespace {

constexpr int32_t WIDTH = 300, HEIGHT = 200;

// A page with notes, loaded.
struct NotedPage {
    TempFile path;
    HGLOBAL file;

    explicit NotedPage(const std::string& notes, uint32_t orientation = 1)
        : path(OnePage(TiffPage::Picture(WIDTH, HEIGHT, 1, 1)
                           .Rational(282, 100, 1)
                           .Rational(283, 144, 1)
                           .Short(274, {orientation})
                           .Strips({Bytes(size_t{38} * HEIGHT)})
                           .Ascii(316, notes))),
          file(OpenTiffFile(path.Path(), T_READ))
    {
        GetTiffImage(file, 0);
    }
    NotedPage(const NotedPage&) = delete;
    NotedPage& operator=(const NotedPage&) = delete;
    ~NotedPage()
    {
        CloseTiffFile(file);
    }
};

// A DIB to draw upon by hand. Its pixels begin as those of its packed form, all bytes the same.
class Canvas {
public:
    Canvas(uint16_t bits, int32_t width, int32_t height, uint8_t fill)
        : packed(PackedDib(
              {static_cast<uint32_t>(width), static_cast<uint32_t>(height), bits, Colours(bits),
               Bytes((static_cast<size_t>(width) * bits + 31) / 32 * 4 * static_cast<size_t>(height),
                     fill)})),
          dc(CreateCompatibleDC(nullptr))
    {
        section = CreateDIBSection(dc, reinterpret_cast<BITMAPINFO*>(packed.data()), DIB_RGB_COLORS, &pixels,
                                   nullptr, 0);
        std::memset(pixels, fill, packed.size() - 40 - Colours(bits).size() * 4);
        before = SelectObject(dc, section);
        SetBkMode(dc, TRANSPARENT);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    ~Canvas()
    {
        DeleteObject((SelectObject(dc, before), section));
        DeleteDC(dc);
    }
    static std::vector<uint32_t> Colours(uint16_t bits)
    {
        std::vector<uint32_t> colours;
        for (uint32_t index = 0; bits <= 8 && index < 1u << bits; ++index)
            colours.push_back(bits == 1 ? index * 0xFFFFFF : (index * 255 / ((1u << bits) - 1)) * 0x10101);
        return colours;
    }
    void Text(const RECT& clip, int32_t x, int32_t y, int32_t letterHeight, std::string_view text) const
    {
        const LOGFONTA described = Font(-letterHeight);
        HFONT font = CreateFontIndirectA(&described);
        HGDIOBJ other = SelectObject(dc, font);
        ExtTextOutA(dc, x, y, ETO_CLIPPED, &clip, text.data(), static_cast<UINT>(text.size()), nullptr);
        DeleteObject((SelectObject(dc, other), font));
    }
    Picture Taken() const
    {
        GdiFlush();
        return Look(section);
    }

    Bytes packed;
    HDC dc;

private:
    HBITMAP section;
    HGDIOBJ before;
    void* pixels = nullptr;
};

uint32_t At(const Picture& picture, int32_t x, int32_t y)
{
    return picture
        .pixels[static_cast<size_t>(y) * static_cast<size_t>(picture.width) + static_cast<size_t>(x)];
}

// The smallest rectangle with all pixels of a colour.
RECT Bounds(const Picture& picture, uint32_t colour)
{
    RECT bounds = {picture.width, picture.height, 0, 0};
    for (int32_t y = 0; y < picture.height; ++y)
        for (int32_t x = 0; x < picture.width; ++x)
            if (At(picture, x, y) == colour)
                bounds = {std::min<LONG>(bounds.left, x), std::min<LONG>(bounds.top, y),
                          std::max<LONG>(bounds.right, x + 1), std::max<LONG>(bounds.bottom, y + 1)};
    return bounds;
}

bool operator==(const RECT& left, const RECT& right)
{
    return EqualRect(&left, &right);
}

std::function<void(HWND)> visitDialog;

void CALLBACK VisitDialog(HWND, UINT, UINT_PTR, DWORD) noexcept
{
    HWND dialog = FindWindowA("#32770", "Note");
    if (dialog && IsWindowVisible(dialog))
        visitDialog(dialog);
}

int32_t Edit(TiffNote& note, char* text, uint32_t textSize, std::function<void(HWND)> visit)
{
    visitDialog = std::move(visit);
    const UINT_PTR timer = SetTimer(nullptr, 0, 10, VisitDialog);
    const int32_t button = EditTiffNote(nullptr, &note, text, textSize);
    KillTimer(nullptr, timer);
    return button;
}

std::string TextIn(HWND dialog, int control)
{
    char text[100] = {};
    GetDlgItemTextA(dialog, control, text, sizeof(text));
    return text;
}

void Press(HWND dialog, WPARAM button)
{
    SendMessageA(dialog, WM_COMMAND, button, 0);
}

} // namespace

TEST(NoteDrawing, LooksAsDrawnByHandInEveryDepth)
{
    const LOGFONTA font = Font(-20);
    const Hand hand(1, 1, &font);
    const int32_t down = hand.Size("M").cy, room = hand.Size("wrapped ").cx + hand.Size("li").cx;
    const RECT text = {10, 15, 10 + room, 15 + 3 * down - 4}, framed = {100, 100, 180, 150};
    const auto head = [](char kind, const RECT& place, int height) {
        return std::string("~,1,") + kind + ',' + std::to_string(place.left) + ',' +
               std::to_string(place.top) + ',' + std::to_string(place.right) + ',' +
               std::to_string(place.bottom) + ',' + std::to_string(height) + ',';
    };
    // The third line is cut off below, the word at the right, and no more lines follow.
    const NotedPage page(head('T', text, 20) + "wrapped line\r\nlongerthanthat\r\nunseen" +
                         head('F', framed, 0) + "F~~" + "~,1,T,a" + head('?', {-20, 180, 5000, 5000}, 20) +
                         "half outside");
    const TempFile unchanged(ReadFileBytes(page.path.Path()));
    for (const uint16_t bits : {uint16_t{1}, uint16_t{4}, uint16_t{8}, uint16_t{24}}) {
        SCOPED_TRACE(bits);
        const uint8_t fill = bits == 1 ? 0xFF : 0xCC;
        const Canvas canvas(bits, WIDTH, HEIGHT, fill);
        canvas.Text(text, 10, 15, 20, "wrapped ");
        canvas.Text(text, 10, 15 + down, 20, "line");
        canvas.Text(text, 10, 15 + 2 * down, 20, "longerthanthat");
        SelectObject(canvas.dc, GetStockObject(WHITE_BRUSH));
        Rectangle(canvas.dc, framed.left, framed.top, framed.right, framed.bottom);
        canvas.Text(framed, framed.left, framed.top, 24, "F~"); // 12 points of 144 dots per inch
        canvas.Text({0, 180, WIDTH, HEIGHT}, -20, 180, 20, "half outside");
        const Block dib(canvas.packed);
        HGLOBAL drawn = DrawTiffNotesOnDIB(dib.Get(), page.file, 0);
        ASSERT_NE(drawn, nullptr) << TiffError();
        EXPECT_EQ(Part(Content(drawn, 40), 14, 2), Part(canvas.packed, 14, 2));
        EXPECT_EQ(Part(Content(drawn, 40), 24, 8), Part(canvas.packed, 24, 8));
        EXPECT_TRUE(TakeDib(drawn) == canvas.Taken());
        EXPECT_EQ(Content(dib.Get(), canvas.packed.size()), canvas.packed);
    }
    EXPECT_EQ(ReadFileBytes(page.path.Path()), ReadFileBytes(unchanged.Path()));
}

TEST(NoteDrawing, KeepsItsLinesInEverySizeAndTurn)
{
    const std::string words = "one two three four five six seven eight nine ten eleven twelve";
    const NotedPage page("~,1,T,20,20,140,190,16," + words), frame("~,1,F,30,20,90,60,5,"),
        lower("~,1,F,30,20,90,60,5,", 4);
    const Canvas canvas(24, WIDTH, HEIGHT, 0xFF), dark(24, WIDTH, HEIGHT, 0);
    const Block whole(canvas.packed), black(dark.packed);
    const RECT plain = Bounds(TakeDib(DrawTiffNotesOnDIB(whole.Get(), page.file, 0)), 0);
    for (const int32_t times : {2, 3}) {
        const Canvas large(24, WIDTH * times, HEIGHT * times, 0xFF);
        const Block dib(large.packed);
        const RECT bounds = Bounds(TakeDib(DrawTiffNotesOnDIB(dib.Get(), page.file, 0)), 0);
        EXPECT_NEAR(bounds.left, plain.left * times, times * 3);
        EXPECT_NEAR(bounds.right, plain.right * times, times * 3);
        EXPECT_NEAR(bounds.top, plain.top * times, times * 3);
        EXPECT_NEAR(bounds.bottom, plain.bottom * times, times * 3);
    }
    // On a black page white is what is inside the frame.
    EXPECT_TRUE(Bounds(TakeDib(DrawTiffNotesOnDIB(black.Get(), frame.file, 0)), 0xFFFFFF) ==
                (RECT{31, 21, 89, 59}));
    EXPECT_TRUE(Bounds(TakeDib(DrawTiffNotesOnDIB(black.Get(), lower.file, 0)), 0xFFFFFF) ==
                (RECT{31, HEIGHT - 59, 89, HEIGHT - 21}));
    // Turned clockwise: x of the page runs down, y to the left.
    const RECT picture = {0, 0, WIDTH, HEIGHT};
    const XFORM turn = {0, 1, -1, 0, HEIGHT, 0};
    SetGraphicsMode(dark.dc, GM_ADVANCED);
    SetWorldTransform(dark.dc, &turn);
    EXPECT_EQ(DrawTiffNotes(dark.dc, frame.file, 0, &picture), 1);
    const RECT turned = Bounds(dark.Taken(), 0xFFFFFF);
    EXPECT_TRUE(turned == (RECT{HEIGHT - 59, 31, HEIGHT - 21, 89}));
    const Canvas pale(24, HEIGHT, WIDTH, 0xFF);
    SetGraphicsMode(pale.dc, GM_ADVANCED);
    SetWorldTransform(pale.dc, &turn);
    EXPECT_EQ(DrawTiffNotes(pale.dc, page.file, 0, &picture), 1);
    const RECT letters = Bounds(pale.Taken(), 0);
    EXPECT_NEAR(letters.left, HEIGHT - plain.bottom, 3);
    EXPECT_NEAR(letters.right, HEIGHT - plain.top, 3);
    EXPECT_NEAR(letters.top, plain.left, 3);
    EXPECT_NEAR(letters.bottom, plain.right, 3);
}

TEST(NoteDrawing, LeavesTheDeviceContextAsItWas)
{
    const NotedPage page("~,1,F,0,0,300,200,30,text");
    const Canvas canvas(24, WIDTH, HEIGHT, 0x80);
    HRGN region = CreateRectRgn(50, 0, 120, 70);
    SelectClipRgn(canvas.dc, region);
    SetTextColor(canvas.dc, RGB(1, 2, 3));
    SetBkMode(canvas.dc, OPAQUE);
    SetTextAlign(canvas.dc, TA_BOTTOM | TA_RIGHT);
    SetROP2(canvas.dc, R2_NOT);
    const auto state = [&] {
        RECT clip;
        XFORM transform;
        GetClipBox(canvas.dc, &clip);
        GetWorldTransform(canvas.dc, &transform);
        return std::vector<int64_t>{clip.left,
                                    clip.top,
                                    clip.right,
                                    clip.bottom,
                                    static_cast<int64_t>(transform.eM11 * 1000),
                                    static_cast<int64_t>(transform.eDx * 1000),
                                    GetGraphicsMode(canvas.dc),
                                    GetTextColor(canvas.dc),
                                    GetBkMode(canvas.dc),
                                    GetTextAlign(canvas.dc),
                                    GetROP2(canvas.dc),
                                    reinterpret_cast<int64_t>(GetCurrentObject(canvas.dc, OBJ_FONT)),
                                    reinterpret_cast<int64_t>(GetCurrentObject(canvas.dc, OBJ_PEN)),
                                    reinterpret_cast<int64_t>(GetCurrentObject(canvas.dc, OBJ_BRUSH))};
    };
    const std::vector<int64_t> before = state();
    const RECT picture = {0, 0, 150, 60}, nothing = {5, 5, 5, 9};
    EXPECT_EQ(DrawTiffNotes(canvas.dc, page.file, 0, &nothing), 1);
    EXPECT_EQ(canvas.Taken().pixels, std::vector<uint32_t>(WIDTH * HEIGHT, 0x808080));
    EXPECT_EQ(DrawTiffNotes(canvas.dc, page.file, 0, &picture), 1);
    EXPECT_EQ(state(), before);
    // Inside the region and the picture, and nowhere else.
    const Picture drawn = canvas.Taken();
    EXPECT_TRUE(Bounds(drawn, 0xFFFFFF) == (RECT{50, 1, 120, 59}));
    EXPECT_EQ(At(drawn, 49, 30), 0x808080u);
    EXPECT_EQ(At(drawn, 60, 60), 0x808080u);
    DeleteObject(region);
}

TEST(NoteDrawing, SaysWhyItFails)
{
    const NotedPage page("~,1,T,0,0,300,200,30,text"), none("host");
    const Canvas canvas(8, WIDTH, HEIGHT, 0x80);
    const RECT picture = {0, 0, WIDTH, HEIGHT};
    EXPECT_EQ(Refusal(DrawTiffNotes(nullptr, page.file, 0, &picture)), 29u);
    EXPECT_EQ(Refusal(DrawTiffNotes(canvas.dc, page.file, 0, nullptr)), 29u);
    EXPECT_EQ(Refusal(DrawTiffNotes(canvas.dc, nullptr, 0, &picture)), 34u);
    EXPECT_EQ(Refusal(DrawTiffNotes(canvas.dc, page.file, 1, &picture)), 3u);
    const Block dib(canvas.packed), wide(PackedDib({1, 1, 32, {}, Bytes(4)})), bad(Hex("28000000"));
    EXPECT_EQ(Refusal(DrawTiffNotesOnDIB(nullptr, page.file, 0)), 1u);
    EXPECT_EQ(Refusal(DrawTiffNotesOnDIB(wide.Get(), page.file, 0)), 16u);
    EXPECT_EQ(Refusal(DrawTiffNotesOnDIB(bad.Get(), page.file, 0)), 30u);
    EXPECT_EQ(Refusal(DrawTiffNotesOnDIB(dib.Get(), nullptr, 0)), 34u);
    DropTiffImage(page.file, 0);
    EXPECT_EQ(Refusal(DrawTiffNotesOnDIB(dib.Get(), page.file, 0)), 27u);
    EXPECT_TRUE(TakeDib(DrawTiffNotesOnDIB(dib.Get(), none.file, 0)) == canvas.Taken());
    // Numbers at their limits, and 5,000 letters of every height.
    std::string hostile = "~,1,F,-2147483648,-2147483648,2147483647,2147483647,2147483647,x";
    for (int height = -5; height < 200; ++height)
        hostile +=
            "~,1,T,-2147483648,0,2147483647,9," + std::to_string(height) + "," + std::string(5000, 'x');
    const NotedPage limits(hostile);
    EXPECT_NE(TakeDib(DrawTiffNotesOnDIB(dib.Get(), limits.file, 0)).pixels.size(), 0u);
}

TEST(NoteDialog, ShowsAndChangesANote)
{
    char text[20] = "as it was";
    const TiffNote given = {'F', 1, 2, 3, 4, 0, 5, "a\nb~c"};
    TiffNote note = given;
    EXPECT_EQ(Edit(note, text, sizeof(text),
                   [](HWND dialog) {
                       EXPECT_EQ(TextIn(dialog, 1001), "a\r\nb~c");
                       EXPECT_EQ(TextIn(dialog, 1002), "Framed text");
                       EXPECT_EQ(TextIn(dialog, 1003), "0");
                       EXPECT_EQ(SendDlgItemMessageA(dialog, 1002, CB_GETCOUNT, 0, 0), 2);
                       SetDlgItemTextA(dialog, 1001, "lost");
                       SendDlgItemMessageA(dialog, 1002, CB_SETCURSEL, 0, 0);
                       Press(dialog, IDCANCEL);
                   }),
              2);
    EXPECT_TRUE(note.kind == 'F' && note.letterHeight == 0 && note.text == given.text && note.textBytes == 5);
    EXPECT_STREQ(text, "as it was");
    // Typed letters stop where the room ends.
    EXPECT_EQ(Edit(note, text, sizeof(text),
                   [](HWND dialog) {
                       for (int letter = 0; letter < 30; ++letter)
                           SendDlgItemMessageA(dialog, 1001, WM_CHAR, 'x', 0);
                       SendDlgItemMessageA(dialog, 1002, CB_SETCURSEL, 0, 0);
                       SetDlgItemTextA(dialog, 1003, "77");
                       Press(dialog, IDOK);
                   }),
              1);
    EXPECT_EQ(note.text, text);
    EXPECT_EQ(note.textBytes, 19u);
    EXPECT_EQ(std::string(text).size(), 19u);
    EXPECT_EQ(note.kind, 'T' + 0u);
    EXPECT_EQ(note.letterHeight, 77);
    EXPECT_TRUE(note.left == 1 && note.top == 2 && note.right == 3 && note.bottom == 4);
}

TEST(NoteDialog, LeavesWhatIsNotTouched)
{
    char text[20] = "own";
    for (const int32_t height : {0, -5, 12}) {
        TiffNote note = {'%', -1, 2, 3, 4, height, 3, text};
        bool refused = false;
        EXPECT_EQ(Edit(note, text, sizeof(text),
                       [&](HWND dialog) {
                           EXPECT_EQ(TextIn(dialog, 1002), "%");
                           const std::string shown = TextIn(dialog, 1003);
                           SetDlgItemTextA(dialog, 1003, "99999999999");
                           Press(dialog, IDOK);
                           refused = IsWindowVisible(dialog) && TextIn(dialog, 1001) == "own";
                           SetDlgItemTextA(dialog, 1003, shown.c_str());
                           Press(dialog, IDOK);
                       }),
                  1);
        EXPECT_TRUE(refused);
        EXPECT_EQ(note.kind, '%' + 0u);
        EXPECT_EQ(note.letterHeight, height);
        EXPECT_STREQ(text, "own");
        EXPECT_EQ(note.textBytes, 3u);
    }
    TiffNote note = {'T', 0, 0, 1, 1, 0, 3, nullptr};
    EXPECT_EQ(Refusal(EditTiffNote(nullptr, nullptr, text, 9)), 29u);
    EXPECT_EQ(Refusal(EditTiffNote(nullptr, &note, text, 9)), 29u);
    note.text = text;
    EXPECT_EQ(Refusal(EditTiffNote(nullptr, &note, nullptr, 9)), 29u);
    EXPECT_EQ(Refusal(EditTiffNote(nullptr, &note, text, 0)), 29u);
    EXPECT_EQ(Refusal(EditTiffNote(nullptr, &note, text, 3)), 29u);
}
