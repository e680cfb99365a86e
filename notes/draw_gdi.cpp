// Notes drawn onto pages. Each is laid out in pixels of the page, by a font of that size, whatever the size
// on the screen: a world transform and the distances between the letters bring it there.
#include "compose/text_layout.h"
#include "compose/text_pages_gdi.h"
#include "core/desktop.h"
#include "core/errors.h"
#include "core/image_description.h"
#include "core/registry.h"
#include "notes/records.h"
#include "notes/tag_value.h"
#include "raster/dib.h"
#include "raster/gdi_guards.h"
#include "tiff/crop.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace tiff {

namespace {

constexpr char NOTE_FACE[] = "Arial";
constexpr uint32_t STANDARD_POINTS = 12;
constexpr int32_t TALLEST_LETTERS = INT16_MAX;
constexpr int32_t FARTHEST = 1 << 26; // GDI takes no coordinates far beyond

// The page as it is described, and what its tags say beyond that.
struct NotedPage {
    int32_t width, height;
    uint32_t verticalDpi;
    bool bottomUp; // Orientation 4: as a DIB it shows its first row at the bottom
};

Status DescribePage(const PageTags& tags, NotedPage& page)
{
    BITMAPINFOHEADER header{};
    if (const Status status = DescribeImage(tags, header); status != error::None)
        return status;
    if (header.biWidth <= 0 || header.biHeight <= 0)
        return error::TagsMissing;
    const uint32_t dpi = ToDotsPerInch(header.biYPelsPerMeter);
    page = {header.biWidth, header.biHeight, dpi ? dpi : ScreenResolution().vertical,
            tags.Value(tag::Orientation, 1) == ORIENTATION_BOTTOM_LEFT};
    return error::None;
}

// A font selected into a device context of its own, in which text is measured, and into the drawn one.
struct NoteFont {
    int32_t height = 0; // pixels of the page; 0 for none yet
    GdiObject<HFONT> font;
    MemoryDc measured;
    std::optional<Selected> inMeasured, inDrawn;
    LetterWidths letters;
    int32_t lineHeight, ascent;
};

struct NoteDrawing {
    HDC dc;
    const NotedPage& page;
    bool isTrueSize; // a pixel of the page is one of the device
    NoteFont font{};
    GdiObject<HPEN> pen{};
    RECT note{};
    bool lost = false; // a text that GDI did not measure or draw
};

// A device context prepared for drawing in pixels of the page, for a scope.
class PagePixels {
public:
    PagePixels(HDC dc, const NotedPage& page, const RECT& picture) : dc(dc), saved(SaveDC(dc))
    {
        const auto across =
            static_cast<float>(int64_t{picture.right} - picture.left) / static_cast<float>(page.width);
        const auto down =
            static_cast<float>(int64_t{picture.bottom} - picture.top) / static_cast<float>(page.height);
        const XFORM toPicture = {
            across, 0, 0, down, static_cast<float>(picture.left), static_cast<float>(picture.top)};
        IntersectClipRect(dc, picture.left, picture.top, picture.right, picture.bottom);
        moved = SetGraphicsMode(dc, GM_ADVANCED) && ModifyWorldTransform(dc, &toPicture, MWT_LEFTMULTIPLY);
        // Not the top: not every system finds it on a turned page.
        SetTextAlign(dc, TA_LEFT | TA_BASELINE | TA_NOUPDATECP);
        SetTextCharacterExtra(dc, 0);
        SetTextJustification(dc, 0, 0);
        SetTextColor(dc, RGB(0, 0, 0));
        SetBkMode(dc, TRANSPARENT);
        SetROP2(dc, R2_COPYPEN);
    }
    PagePixels(const PagePixels&) = delete;
    PagePixels& operator=(const PagePixels&) = delete;
    ~PagePixels()
    {
        RestoreDC(dc, saved);
    }

    explicit operator bool() const
    {
        return saved && moved;
    }
    bool IsTrueSize() const
    {
        POINT corners[] = {{0, 0}, {1 << 16, 1 << 16}};
        LPtoDP(dc, corners, 2);
        return corners[1].x - corners[0].x == 1 << 16 && corners[1].y - corners[0].y == 1 << 16;
    }

private:
    HDC dc;
    int saved;
    bool moved = false;
};

bool SelectNoteFont(NoteDrawing& drawing, int32_t letterHeight)
{
    NoteFont& font = drawing.font;
    int32_t height = -std::clamp(letterHeight, 0, TALLEST_LETTERS);
    if (height == 0 && !FontHeight(STANDARD_POINTS, drawing.page.verticalDpi, height))
        height = -TALLEST_LETTERS;
    if (font.height == height)
        return true;
    font.height = 0;
    font.inMeasured.reset();
    font.inDrawn.reset();
    LOGFONTA described = FontOfFace(NOTE_FACE, sizeof(NOTE_FACE), std::min(height, -1));
    described.lfWeight = FW_NORMAL;
    described.lfCharSet = DEFAULT_CHARSET;
    font.font.Adopt(CreateFontIndirectA(&described));
    if (!font.font || !font.measured)
        return false;
    font.inMeasured.emplace(font.measured.Get(), font.font.Get());
    font.inDrawn.emplace(drawing.dc, font.font.Get());
    if (!*font.inMeasured || !*font.inDrawn)
        return false;
    TEXTMETRICA metrics;
    if (!GetTextMetricsA(font.measured.Get(), &metrics))
        return false;
    font.ascent = metrics.tmAscent;
    ReadLetterWidths(font.measured.Get(), font.letters);
    font.lineHeight = LineHeightOf(font.measured.Get());
    if (font.lineHeight != 0)
        font.height = height;
    return font.lineHeight != 0;
}

void MeasureNote(void* record, std::span<const char> text, int32_t* widths)
{
    auto& drawing = *static_cast<NoteDrawing*>(record);
    drawing.lost |= !MeasureLetters(drawing.font.letters, text, widths);
}

void DrawPiece(NoteDrawing& drawing, int32_t x, int32_t y, std::span<const char> text, const INT* widths)
{
    drawing.lost |= !ExtTextOutA(drawing.dc, x, y + drawing.font.ascent, ETO_CLIPPED, &drawing.note,
                                 text.data(), static_cast<UINT>(text.size()), widths);
}

// In true size letters stand where GDI puts them; else where they would stand in true size.
void DrawNoteLine(void* record, int32_t x, int32_t y, std::span<const char> text)
{
    auto& drawing = *static_cast<NoteDrawing*>(record);
    if (x < -FARTHEST || x > FARTHEST || y < -FARTHEST || y > FARTHEST)
        return;
    if (drawing.isTrueSize)
        return DrawPiece(drawing, x, y, text, nullptr);
    std::array<int32_t, MOST_MEASURED> widths;
    while (!text.empty() && x < std::min<LONG>(drawing.note.right, FARTHEST)) {
        const std::span piece = text.first(std::min(text.size(), MOST_MEASURED));
        MeasureNote(record, piece, widths.data());
        DrawPiece(drawing, x, y, piece, widths.data());
        for (size_t index = 0; index < piece.size(); ++index)
            x += widths[index];
        text = text.subspan(piece.size());
    }
}

Status LayNote(NoteDrawing& drawing, std::span<const char> text)
{
    const RECT& note = drawing.note;
    TextGeometry geometry{};
    geometry.width = static_cast<int32_t>(std::min<int64_t>(int64_t{note.right} - note.left, INT32_MAX));
    geometry.left = note.left;
    geometry.top = note.top;
    geometry.right = note.right;
    geometry.bottom = note.bottom;
    const auto nothing = [](void*) { return Status{TIFF_TEXT_DONE}; };
    const TextDevice device = {MeasureNote,    DrawNoteLine,           nothing, nothing, &drawing,
                               geometry.width, drawing.font.lineHeight};
    const bool laid = LayTextOnPage(text, geometry, device) != TIFF_TEXT_NO_PAGE;
    return laid && !drawing.lost ? error::None : error::NotEnoughMemory;
}

// The corners of the rectangle's outer pixels on the device. What lies far from the page is cut off with it.
std::array<POINT, 4> FrameCorners(const NoteDrawing& drawing)
{
    const auto within = [](LONG place, int32_t size) {
        const LONG margin = std::min(size, FARTHEST);
        return std::clamp(place, -margin, margin * 2);
    };
    const LONG left = within(drawing.note.left, drawing.page.width),
               right = within(drawing.note.right, drawing.page.width),
               top = within(drawing.note.top, drawing.page.height),
               bottom = within(drawing.note.bottom, drawing.page.height);
    std::array<POINT, 4> corners = {{{left, top}, {right, top}, {right, bottom}, {left, bottom}}};
    LPtoDP(drawing.dc, corners.data(), static_cast<int>(corners.size()));
    LONG farthestX = corners[0].x, farthestY = corners[0].y;
    for (const POINT& corner : corners) {
        farthestX = std::max(farthestX, corner.x);
        farthestY = std::max(farthestY, corner.y);
    }
    for (POINT& corner : corners) {
        corner.x -= corner.x == farthestX;
        corner.y -= corner.y == farthestY;
    }
    return corners;
}

// Its line is one pixel of the device wide.
Status DrawFrame(NoteDrawing& drawing)
{
    const std::array<POINT, 4> corners = FrameCorners(drawing);
    if (!drawing.pen)
        drawing.pen.Adopt(CreatePen(PS_SOLID, 0, RGB(0, 0, 0)));
    const DevicePixels pixels(drawing.dc);
    const Selected pen(drawing.dc, drawing.pen.Get()), brush(drawing.dc, GetStockObject(WHITE_BRUSH));
    const bool drawn =
        pixels && pen && brush && Polygon(drawing.dc, corners.data(), static_cast<int>(corners.size()));
    return drawn ? error::None : error::NotEnoughMemory;
}

Status DrawNote(NoteDrawing& drawing, const NoteRecord& record)
{
    const RECT& note = drawing.note;
    if (note.left >= note.right || note.top >= note.bottom || !RectVisible(drawing.dc, &note))
        return error::None;
    if (record.fields.kind == TIFF_NOTE_FRAMED)
        if (const Status status = DrawFrame(drawing); status != error::None)
            return status;
    const size_t length = ReadNoteText(record.text, {});
    if (length == 0)
        return error::None;
    const GlobalBlock block(length);
    const Locked<char> text(block.Get());
    if (!text || !SelectNoteFont(drawing, record.fields.letterHeight))
        return error::NotEnoughMemory;
    ReadNoteText(record.text, {text.Get(), length});
    return LayNote(drawing, {text.Get(), length});
}

int32_t Mirrored(int32_t row, int32_t height)
{
    return static_cast<int32_t>(std::clamp<int64_t>(int64_t{height} - row, INT32_MIN, INT32_MAX));
}

RECT PlaceOf(const TiffNote& note, const NotedPage& page, bool asDib)
{
    if (asDib && page.bottomUp)
        return {note.left, Mirrored(note.bottom, page.height), note.right, Mirrored(note.top, page.height)};
    return {note.left, note.top, note.right, note.bottom};
}

Status DrawNotes(HDC dc, HGLOBAL file, uint32_t pageNumber, const RECT& picture, bool asDib)
{
    if (const Status status = PageStatus(file, pageNumber); status != error::None)
        return status;
    const PageTags tags(file, pageNumber);
    NotedPage page{};
    if (const Status status = tags ? DescribePage(tags, page) : Status{error::NotEnoughMemory};
        status != error::None)
        return status;
    NoteReader reader(NotesOf(tags));
    NoteRecord record{};
    if (!reader.NextNote(record) || picture.left >= picture.right || picture.top >= picture.bottom)
        return error::None;
    const PagePixels pixels(dc, page, picture);
    if (!pixels)
        return error::NotEnoughMemory;
    NoteDrawing drawing{.dc = dc, .page = page, .isTrueSize = pixels.IsTrueSize()};
    Status status = error::None;
    do {
        drawing.note = PlaceOf(record.fields, page, asDib);
        status = DrawNote(drawing, record);
    } while (status == error::None && reader.NextNote(record));
    return status;
}

// Draws on a packed DIB in its own depth. GDI does not draw into global memory, so its rows go there and
// back.
Status DrawOnDib(HGLOBAL dib, HGLOBAL file, uint32_t page)
{
    const Locked<uint8_t> block(dib);
    DibView view;
    if (!block || ViewDib({block.Get(), GlobalSize(dib)}, view) != error::None)
        return error::NotEnoughMemory;
    const MemoryDc dc;
    void* bits = nullptr;
    const GdiObject<HBITMAP> section(CreateDIBSection(
        dc.Get(), reinterpret_cast<const BITMAPINFO*>(block.Get()), DIB_RGB_COLORS, &bits, nullptr, 0));
    const Selected selected(dc.Get(), section.Get());
    if (!selected || !bits)
        return error::NotEnoughMemory;
    const size_t bytes = size_t{view.stride} * view.height;
    uint8_t* const pixels = block.Get() + (view.pixels - block.Get());
    std::memcpy(bits, pixels, bytes);
    const RECT whole = {0, 0, static_cast<LONG>(view.width), static_cast<LONG>(view.height)};
    const Status status = DrawNotes(dc.Get(), file, page, whole, true);
    GdiFlush();
    std::memcpy(pixels, bits, bytes);
    return status;
}

// The size of a packed DIB; 1 when it cannot be locked.
Status SizeOfDib(HGLOBAL dib, SIZE& size)
{
    const Locked<const uint8_t> block(dib);
    DibView view;
    if (!block)
        return error::NotEnoughMemory;
    const Status status = ViewDib({block.Get(), GlobalSize(dib)}, view);
    size = {static_cast<LONG>(view.width), static_cast<LONG>(view.height)};
    return status;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" int32_t DrawTiffNotes(HDC deviceContext, HGLOBAL file, uint32_t page, const RECT* picture) noexcept
{
    const Status status = deviceContext && picture ? DrawNotes(deviceContext, file, page, *picture, false)
                                                   : Status{error::InvalidParameters};
    StoreLastError(status);
    return status == error::None;
}

extern "C" HGLOBAL DrawTiffNotesOnDIB(HGLOBAL dib, HGLOBAL file, uint32_t page) noexcept
{
    SIZE size{};
    Status status = SizeOfDib(dib, size);
    if (status == error::None)
        status = PageStatus(file, page);
    if (status != error::None) {
        StoreLastError(status);
        return nullptr;
    }
    // A copy has rows from the bottom and a plain header, whatever was given.
    GlobalBlock copy;
    copy.Adopt(CropDIB(dib, 0, 0, size.cx, size.cy));
    if (!copy)
        return nullptr;
    status = DrawOnDib(copy.Get(), file, page);
    StoreLastError(status);
    return status == error::None ? copy.Release() : nullptr;
}
