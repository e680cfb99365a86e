#include "view_notes.h"

#include <algorithm>
#include <cmath>

namespace tiffview {

namespace {

// A place of the window as one of the page.
POINT ToPage(const ShownPage& shown, const Document& document, POINT point)
{
    const XFORM& turn = shown.turn;
    const double x = static_cast<float>(point.x) - turn.eDx, y = static_cast<float>(point.y) - turn.eDy;
    const auto pixel = [](double place, LONG room, uint32_t pixels) {
        const double share = std::clamp(place / std::max<LONG>(room, 1), 0.0, 1.0);
        return static_cast<LONG>(share * pixels);
    };
    return {pixel(x * turn.eM11 + y * turn.eM12, shown.picture.right, document.width),
            pixel(x * turn.eM21 + y * turn.eM22, shown.picture.bottom, document.height)};
}

RECT Spanned(POINT first, POINT last)
{
    return {std::min(first.x, last.x), std::min(first.y, last.y), std::max(first.x, last.x),
            std::max(first.y, last.y)};
}

RECT ToWindow(const ShownPage& shown, const Document& document, const TiffNote& note)
{
    const XFORM& turn = shown.turn;
    const auto corner = [&](int32_t x, int32_t y) {
        const double across = static_cast<double>(x) * shown.picture.right / std::max(document.width, 1u);
        const double down = static_cast<double>(y) * shown.picture.bottom / std::max(document.height, 1u);
        const auto whole = [](double place) {
            return static_cast<LONG>(std::floor(std::clamp(place, -1e6, 1e6) + 0.5));
        };
        return POINT{whole(across * turn.eM11 + down * turn.eM21 + turn.eDx),
                     whole(across * turn.eM12 + down * turn.eM22 + turn.eDy)};
    };
    return Spanned(corner(note.left, note.top), corner(note.right, note.bottom));
}

// The uppermost note, or the number of notes.
size_t NoteAt(const Document& document, POINT point)
{
    for (size_t index = document.notes.size(); index-- > 0;) {
        const TiffNote& note = document.notes[index];
        if (point.x >= note.left && point.x < note.right && point.y >= note.top && point.y < note.bottom) {
            return index;
        }
    }
    return document.notes.size();
}

// Drawn twice it is gone.
void InvertFrame(const NotesView& notes, HWND window)
{
    const RECT frame = Spanned(notes.dragStart, notes.dragEnd);
    HDC dc = GetDC(window);
    DrawFocusRect(dc, &frame);
    ReleaseDC(window, dc);
}

void BeginDrag(NotesView& notes, const Document& document, HWND window, POINT point)
{
    if (document.format != TIFF_FORMAT_TIFF || document.width == 0) {
        return;
    }
    SetCapture(window);
    notes.dragging = true;
    notes.dragStart = notes.dragEnd = point;
    InvertFrame(notes, window);
}

void ContinueDrag(NotesView& notes, HWND window, POINT point)
{
    if (notes.dragging) {
        InvertFrame(notes, window);
        notes.dragEnd = point;
        InvertFrame(notes, window);
    }
}

// Also when another window takes the mouse; nothing is added then.
void CancelDrag(NotesView& notes, HWND window)
{
    if (notes.dragging) {
        InvertFrame(notes, window);
        notes.dragging = false;
    }
}

bool IsClick(const NotesView& notes)
{
    return std::abs(notes.dragEnd.x - notes.dragStart.x) <= GetSystemMetrics(SM_CXDRAG) &&
           std::abs(notes.dragEnd.y - notes.dragStart.y) <= GetSystemMetrics(SM_CYDRAG);
}

std::string EndDrag(NotesView& notes, Document& document, const ShownPage& shown, HWND window, POINT point)
{
    if (!notes.dragging) {
        return "";
    }
    ContinueDrag(notes, window, point);
    CancelDrag(notes, window);
    ReleaseCapture();
    const RECT frame =
        Spanned(ToPage(shown, document, notes.dragStart), ToPage(shown, document, notes.dragEnd));
    if (IsClick(notes)) {
        notes.chosen = NoteAt(document, ToPage(shown, document, notes.dragStart));
        return "";
    }
    if (frame.left == frame.right || frame.top == frame.bottom) {
        return "";
    }
    TiffNote note = {};
    note.kind = TIFF_NOTE_FRAMED;
    note.left = frame.left;
    note.top = frame.top;
    note.right = frame.right;
    note.bottom = frame.bottom;
    return EditNote(document, GetParent(window), document.notes.size(), note);
}

} // namespace

ShownPage PlacePage(const Layout& layout, const View& view, int32_t scrolledX, int32_t scrolledY)
{
    constexpr float turns[][4] = {{1, 0, 0, 1}, {0, 1, -1, 0}, {-1, 0, 0, -1}, {0, -1, 1, 0}};
    const auto& turn = turns[view.turn % 4];
    // Where the page's first corner comes to be.
    const int32_t x = view.turn == 1 || view.turn == 2 ? layout.width : 0;
    const int32_t y = view.turn == 2 || view.turn == 3 ? layout.height : 0;
    const bool isTurned = view.turn % 2 != 0;
    return {{0, 0, isTurned ? layout.height : layout.width, isTurned ? layout.width : layout.height},
            {turn[0], turn[1], turn[2], turn[3], static_cast<float>(x - scrolledX),
             static_cast<float>(y - scrolledY)}};
}

bool HasChosenNote(const NotesView& notes, const Document& document)
{
    return notes.chosen < document.notes.size();
}

void DrawNotesInView(const NotesView& notes, const Document& document, const ShownPage& shown, HDC dc)
{
    const int saved = SaveDC(dc);
    SetGraphicsMode(dc, GM_ADVANCED);
    SetWorldTransform(dc, &shown.turn);
    DrawNotes(document, dc, shown.picture);
    RestoreDC(dc, saved);
    if (HasChosenNote(notes, document)) {
        const RECT frame = ToWindow(shown, document, document.notes[notes.chosen]);
        DrawFocusRect(dc, &frame);
    }
}

bool FollowMouse(NotesView& notes, Document& document, const ShownPage& shown, HWND window, UINT message,
                 LPARAM place, std::string& failure)
{
    const POINT point = {static_cast<short>(LOWORD(place)), static_cast<short>(HIWORD(place))};
    switch (message) {
    case WM_LBUTTONDOWN:
        BeginDrag(notes, document, window, point);
        return true;
    case WM_MOUSEMOVE:
        ContinueDrag(notes, window, point);
        return true;
    case WM_CAPTURECHANGED:
        CancelDrag(notes, window);
        return true;
    case WM_LBUTTONUP:
        failure = EndDrag(notes, document, shown, window, point);
        return true;
    case WM_LBUTTONDBLCLK:
        notes.chosen = NoteAt(document, ToPage(shown, document, point));
        failure = EditChosenNote(notes, document, GetParent(window));
        return true;
    default:
        return false;
    }
}

std::string EditChosenNote(const NotesView& notes, Document& document, HWND window)
{
    return HasChosenNote(notes, document)
               ? EditNote(document, window, notes.chosen, document.notes[notes.chosen])
               : "";
}

std::string DeleteChosenNote(NotesView& notes, Document& document)
{
    if (!HasChosenNote(notes, document)) {
        return "";
    }
    const size_t deleted = notes.chosen;
    notes.chosen = SIZE_MAX;
    return DeleteNote(document, deleted);
}

} // namespace tiffview
