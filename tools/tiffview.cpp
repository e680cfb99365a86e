/* tiffview: shows TIFF and CALS files in a window, on the public interface of the library alone. A page is
 * decoded anew each time it is drawn; nothing of it is kept.
 */
#include "arguments.h"
#include "view_draw.h"
#include "view_ids.h"
#include "view_notes.h"
#include "view_save.h"

#include <commctrl.h>
#include <commdlg.h>
#include <shellapi.h>

#include <algorithm>
#include <cstdlib>
#include <cwchar>

namespace tiffview {

namespace {

constexpr const char *FRAME_CLASS = "tiffview", *PAGE_CLASS = "tiffview page";
constexpr int LINE_PIXELS = 48; // of an arrow key

struct Viewer {
    HWND frame = nullptr, status = nullptr;
    HWND window = nullptr; // the page's, with the scroll bars
    Document document;
    View view;
    Layout layout;
    NotesView notes;
    uint32_t drawError = 0; // of the page as it was drawn last
    bool layingOut = false; // scroll bars change the window's size, which comes back here
};

Viewer viewer;

Room WindowRoom()
{
    RECT client;
    GetClientRect(viewer.window, &client);
    const LONG_PTR style = GetWindowLongPtrA(viewer.window, GWL_STYLE);
    Room room{
        client.right, client.bottom, GetSystemMetrics(SM_CXVSCROLL), GetSystemMetrics(SM_CYHSCROLL), 96, 96};
    room.width += style & WS_VSCROLL ? room.verticalBar : 0;
    room.height += style & WS_HSCROLL ? room.horizontalBar : 0;
    HDC dc = GetDC(viewer.window);
    room.horizontalDpi = GetDeviceCaps(dc, LOGPIXELSX);
    room.verticalDpi = GetDeviceCaps(dc, LOGPIXELSY);
    ReleaseDC(viewer.window, dc);
    return room;
}

void ShowStatus()
{
    std::string status = Describe(viewer.document);
    if (viewer.document.width != 0) {
        status += ", " + std::to_string(static_cast<int>(viewer.layout.scale * 100 + 0.5)) + " %";
    }
    SetWindowTextA(viewer.status, status.c_str());
    SetWindowTextA(viewer.frame, Title(viewer.document).c_str());
}

void SetBar(int bar, int hidden)
{
    const int position = std::min(GetScrollPos(viewer.window, bar), hidden);
    SetScrollRange(viewer.window, bar, 0, hidden, FALSE);
    SetScrollPos(viewer.window, bar, position, TRUE);
}

void Refresh()
{
    if (viewer.layingOut) {
        return;
    }
    viewer.layingOut = true;
    viewer.layout = LayOut(viewer.document, viewer.view, WindowRoom());
    SetBar(SB_HORZ, viewer.layout.hiddenWidth);
    SetBar(SB_VERT, viewer.layout.hiddenHeight);
    ShowStatus();
    InvalidateRect(viewer.window, nullptr, FALSE);
    viewer.layingOut = false;
}

void Say(const std::string& sentence)
{
    MessageBoxA(viewer.frame, sentence.c_str(), "tiffview", MB_OK | MB_ICONEXCLAMATION);
}

void ScrollToTop()
{
    SetScrollPos(viewer.window, SB_HORZ, 0, TRUE);
    SetScrollPos(viewer.window, SB_VERT, 0, TRUE);
}

void Open(const std::string& path)
{
    viewer.document = OpenDocument(path);
    viewer.notes = {};
    ScrollToTop();
    Refresh();
}

// Names outside the code page become the short names of their files.
void OpenWide(wchar_t* path)
{
    std::vector<std::string> paths;
    if (tifftool::ReadArguments({&path, 1}, paths)) {
        Open(paths[0]);
    } else {
        Say("The name of this file has characters that the system's code page lacks.");
    }
}

void TurnPageTo(uint32_t page)
{
    if (viewer.document.format != TIFF_FORMAT_TIFF || page >= viewer.document.pages) {
        return;
    }
    GoToPage(viewer.document, page);
    viewer.notes = {};
    ScrollToTop();
    Refresh();
}

void AskForFile()
{
    wchar_t path[MAX_PATH] = {};
    OPENFILENAMEW order = {};
    order.lStructSize = sizeof(order);
    order.hwndOwner = viewer.frame;
    order.lpstrFilter = L"Fax and document pages\0*.tif;*.tiff;*.fax;*.cal;*.cals;*.gp4\0All files\0*.*\0";
    order.lpstrFile = path;
    order.nMaxFile = MAX_PATH;
    order.Flags = OFN_FILEMUSTEXIST | OFN_HIDEREADONLY;
    if (GetOpenFileNameW(&order)) {
        OpenWide(path);
    }
}

// An existing TIFF file gets the page or makes room for it, as the user says.
void AskAndSave()
{
    if (viewer.document.format == TIFF_FORMAT_ANY) {
        return;
    }
    char path[MAX_PATH] = {};
    OPENFILENAMEA order = {};
    order.lStructSize = sizeof(order);
    order.hwndOwner = viewer.frame;
    order.lpstrFilter = "TIFF\0*.tif\0CALS\0*.cal\0BMP\0*.bmp\0";
    order.lpstrFile = path;
    order.nMaxFile = MAX_PATH;
    order.lpstrDefExt = "tif";
    order.Flags = OFN_HIDEREADONLY | OFN_PATHMUSTEXIST;
    if (!GetSaveFileNameA(&order)) {
        return;
    }
    Existing existing = Existing::Replaced;
    if (GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES) {
        const bool isTiff = SavedAsOf(path) == SavedAs::Tiff;
        const int answer =
            MessageBoxA(viewer.frame,
                        isTiff ? "This file exists.\n\nYes adds the page to it; No replaces the file."
                               : "This file exists. Replace it?",
                        "tiffview", (isTiff ? MB_YESNOCANCEL : MB_OKCANCEL) | MB_ICONQUESTION);
        if (answer == IDCANCEL) {
            return;
        }
        existing = answer == IDYES ? Existing::Extended : Existing::Replaced;
    }
    if (const std::string news = SavePage(viewer.document, path, existing); !news.empty()) {
        Say(news);
    }
}

void CopyPage()
{
    HGLOBAL dib = viewer.document.format == TIFF_FORMAT_ANY ? nullptr : LoadPage(viewer.document);
    if (!dib) {
        return Say("There is no page to copy. " + viewer.document.fault);
    }
    bool given = false;
    if (OpenClipboard(viewer.frame)) {
        EmptyClipboard();
        given = SetClipboardData(CF_DIB, dib) != nullptr;
        CloseClipboard();
    }
    if (!given) {
        GlobalFree(dib);
        Say("The clipboard did not take the page.");
    }
}

ShownPage PlacedPage()
{
    return PlacePage(viewer.layout, viewer.view, GetScrollPos(viewer.window, SB_HORZ),
                     GetScrollPos(viewer.window, SB_VERT));
}

// Also after nothing was changed.
void ShowNotes(const std::string& failure)
{
    Refresh();
    if (!failure.empty()) {
        Say("The note was not changed. " + failure);
    }
}

void DeleteNoteAndShow()
{
    ShowNotes(DeleteChosenNote(viewer.notes, viewer.document));
}

bool MoveMouse(UINT message, LPARAM place)
{
    std::string failure;
    if (!FollowMouse(viewer.notes, viewer.document, PlacedPage(), viewer.window, message, place, failure)) {
        return false;
    }
    if (message == WM_LBUTTONUP || message == WM_LBUTTONDBLCLK) {
        ShowNotes(failure);
    }
    return true;
}

void Show(Mode mode, double zoom)
{
    viewer.view.mode = mode;
    viewer.view.zoom = zoom;
    Refresh();
}

void Zoom(bool in)
{
    Show(Mode::Zoomed, ZoomStep(viewer.layout.scale, in));
}

void Turn(uint32_t quarters)
{
    viewer.view.turn = (viewer.view.turn + quarters) % 4;
    ScrollToTop();
    Refresh();
}

void ScrollTo(int bar, int position)
{
    const int hidden = bar == SB_HORZ ? viewer.layout.hiddenWidth : viewer.layout.hiddenHeight;
    SetScrollPos(viewer.window, bar, std::clamp(position, 0, hidden), TRUE);
    InvalidateRect(viewer.window, nullptr, FALSE);
}

void ScrollBy(int bar, int pixels)
{
    ScrollTo(bar, GetScrollPos(viewer.window, bar) + pixels);
}

void ScrollByBar(int bar, WORD action)
{
    RECT client;
    GetClientRect(viewer.window, &client);
    const int window =
        std::max<int>((bar == SB_HORZ ? client.right : client.bottom) - LINE_PIXELS, LINE_PIXELS);
    SCROLLINFO track = {};
    track.cbSize = sizeof(track);
    track.fMask = SIF_TRACKPOS;
    switch (action) {
    case SB_LINEUP:
        return ScrollBy(bar, -LINE_PIXELS);
    case SB_LINEDOWN:
        return ScrollBy(bar, LINE_PIXELS);
    case SB_PAGEUP:
        return ScrollBy(bar, -window);
    case SB_PAGEDOWN:
        return ScrollBy(bar, window);
    case SB_TOP:
        return ScrollTo(bar, 0);
    case SB_BOTTOM:
        return ScrollTo(bar, INT32_MAX);
    case SB_THUMBTRACK:
    case SB_THUMBPOSITION:
        GetScrollInfo(viewer.window, bar, &track);
        return ScrollTo(bar, track.nTrackPos);
    default:
        return;
    }
}

void TurnWheel(WPARAM keys)
{
    const int notches = GET_WHEEL_DELTA_WPARAM(keys);
    if (LOWORD(keys) & MK_CONTROL) {
        Zoom(notches > 0);
    } else {
        ScrollBy(LOWORD(keys) & MK_SHIFT ? SB_HORZ : SB_VERT, -notches * LINE_PIXELS / WHEEL_DELTA);
    }
}

bool PressKey(WPARAM key)
{
    switch (key) {
    case VK_LEFT:
        ScrollBy(SB_HORZ, -LINE_PIXELS);
        return true;
    case VK_RIGHT:
        ScrollBy(SB_HORZ, LINE_PIXELS);
        return true;
    case VK_UP:
        ScrollBy(SB_VERT, -LINE_PIXELS);
        return true;
    case VK_DOWN:
        ScrollBy(SB_VERT, LINE_PIXELS);
        return true;
    case VK_DELETE:
        DeleteNoteAndShow();
        return true;
    default:
        return false;
    }
}

void RunCommand(WORD command)
{
    const uint32_t page = viewer.document.page;
    switch (command) {
    case CMD_OPEN:
        return AskForFile();
    case CMD_SAVE:
        return AskAndSave();
    case CMD_COPY:
        return CopyPage();
    case CMD_EDIT_NOTE:
        return ShowNotes(EditChosenNote(viewer.notes, viewer.document, viewer.frame));
    case CMD_DELETE_NOTE:
        return DeleteNoteAndShow();
    case CMD_CALS_HEADER:
        ShowCALSInfo(viewer.frame, viewer.document.path.c_str());
        return;
    case CMD_EXIT:
        DestroyWindow(viewer.frame);
        return;
    case CMD_FIRST_PAGE:
        return TurnPageTo(0);
    case CMD_PREVIOUS_PAGE:
        return TurnPageTo(page - 1);
    case CMD_NEXT_PAGE:
        return TurnPageTo(page + 1);
    case CMD_LAST_PAGE:
        return TurnPageTo(viewer.document.pages - 1);
    case CMD_FIT_PAGE:
        return Show(Mode::FitPage, 1);
    case CMD_FIT_WIDTH:
        return Show(Mode::FitWidth, 1);
    case CMD_TRUE_SIZE:
        return Show(Mode::Zoomed, 1);
    case CMD_PIXELS:
        return Show(Mode::Pixels, 1);
    case CMD_ZOOM_IN:
    case CMD_ZOOM_OUT:
        return Zoom(command == CMD_ZOOM_IN);
    case CMD_TURN_LEFT:
        return Turn(3);
    case CMD_TURN_RIGHT:
        return Turn(1);
    case CMD_INVERT:
        viewer.view.inverted = !viewer.view.inverted;
        return Refresh();
    case CMD_GREY:
        viewer.view.grey = !viewer.view.grey;
        return Refresh();
    default:
        return;
    }
}

// Marks what is chosen, and greys what would do nothing.
void PrepareMenu(HMENU menu)
{
    const Document& document = viewer.document;
    const auto enable = [menu](UINT command, bool usable) {
        EnableMenuItem(menu, command, usable ? MF_ENABLED : MF_GRAYED);
    };
    const auto mark = [menu](UINT command, bool chosen) {
        CheckMenuItem(menu, command, chosen ? MF_CHECKED : MF_UNCHECKED);
    };
    const bool hasPage = document.format != TIFF_FORMAT_ANY;
    for (const UINT command : {CMD_SAVE, CMD_COPY}) {
        enable(command, hasPage);
    }
    for (const UINT command : {CMD_EDIT_NOTE, CMD_DELETE_NOTE}) {
        enable(command, HasChosenNote(viewer.notes, document));
    }
    enable(CMD_CALS_HEADER, document.format == TIFF_FORMAT_CALS);
    enable(CMD_FIRST_PAGE, hasPage && document.page > 0);
    enable(CMD_PREVIOUS_PAGE, hasPage && document.page > 0);
    enable(CMD_NEXT_PAGE, hasPage && document.page + 1 < document.pages);
    enable(CMD_LAST_PAGE, hasPage && document.page + 1 < document.pages);
    mark(CMD_FIT_PAGE, viewer.view.mode == Mode::FitPage);
    mark(CMD_FIT_WIDTH, viewer.view.mode == Mode::FitWidth);
    mark(CMD_TRUE_SIZE, viewer.view.mode == Mode::Zoomed && viewer.view.zoom == 1);
    mark(CMD_PIXELS, viewer.view.mode == Mode::Pixels);
    mark(CMD_INVERT, viewer.view.inverted);
    mark(CMD_GREY, viewer.view.grey);
}

void Paint(HDC dc)
{
    constexpr uint32_t IN_PART[] = {5, 12, 19, 20};
    const Document& document = viewer.document;
    if (document.path.empty()) {
        return DrawSentence(viewer.window, dc, "Open a TIFF or CALS file, or drop one here.", false);
    }
    if (document.format == TIFF_FORMAT_ANY) {
        return DrawSentence(viewer.window, dc, document.path + ": " + document.fault, false);
    }
    const auto draw = [&] { return DrawPage(viewer.window, dc, document, viewer.view, viewer.layout); };
    viewer.drawError = draw();
    if (viewer.drawError == 0) {
        return DrawNotesInView(viewer.notes, document, PlacedPage(), dc);
    }
    const bool inPart = std::ranges::find(IN_PART, viewer.drawError) != std::end(IN_PART);
    if (inPart) {
        // The rows that are missing must not show what was here before.
        RECT client;
        GetClientRect(viewer.window, &client);
        FillRect(dc, &client, GetSysColorBrush(COLOR_APPWORKSPACE));
        draw();
        DrawNotesInView(viewer.notes, document, PlacedPage(), dc);
    }
    DrawSentence(viewer.window, dc,
                 (inPart ? "The page is not whole: " : "The page cannot be shown: ") +
                     ErrorText(viewer.drawError),
                 inPart);
}

LRESULT CALLBACK RunPage(HWND window, UINT message, WPARAM first, LPARAM second)
{
    switch (message) {
    case WM_PAINT: {
        PAINTSTRUCT paint;
        Paint(BeginPaint(window, &paint));
        EndPaint(window, &paint);
        return 0;
    }
    case WM_ERASEBKGND:
        return 1;
    case WM_SIZE:
        Refresh();
        return 0;
    case WM_HSCROLL:
    case WM_VSCROLL:
        ScrollByBar(message == WM_HSCROLL ? SB_HORZ : SB_VERT, LOWORD(first));
        return 0;
    default:
        return MoveMouse(message, second) ? 0 : DefWindowProcA(window, message, first, second);
    }
}

// The status bar keeps its own height at the bottom; the page gets the rest.
void PlaceParts()
{
    RECT frame, status;
    SendMessageA(viewer.status, WM_SIZE, 0, 0);
    GetClientRect(viewer.frame, &frame);
    GetWindowRect(viewer.status, &status);
    MoveWindow(viewer.window, 0, 0, frame.right,
               std::max<int>(frame.bottom - (status.bottom - status.top), 0), TRUE);
}

void TakeDrop(HDROP drop)
{
    wchar_t path[MAX_PATH] = {};
    if (DragQueryFileW(drop, 0, path, MAX_PATH)) {
        OpenWide(path);
    }
    DragFinish(drop);
}

LRESULT CALLBACK RunFrame(HWND window, UINT message, WPARAM first, LPARAM second)
{
    switch (message) {
    case WM_SIZE:
        PlaceParts();
        return 0;
    case WM_COMMAND:
        RunCommand(LOWORD(first));
        return 0;
    case WM_INITMENU:
        PrepareMenu(reinterpret_cast<HMENU>(first));
        return 0;
    case WM_MOUSEWHEEL:
        TurnWheel(first);
        return 0;
    case WM_KEYDOWN:
        return PressKey(first) ? 0 : DefWindowProcA(window, message, first, second);
    case WM_DROPFILES:
        TakeDrop(reinterpret_cast<HDROP>(first));
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcA(window, message, first, second);
    }
}

bool RegisterClasses(HINSTANCE instance)
{
    WNDCLASSA page = {};
    page.style = CS_DBLCLKS;
    page.lpfnWndProc = RunPage;
    page.hInstance = instance;
    page.hCursor = LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_ARROW));
    page.hbrBackground = reinterpret_cast<HBRUSH>(ULONG_PTR{COLOR_APPWORKSPACE + 1});
    page.lpszClassName = PAGE_CLASS;
    WNDCLASSA frame = page;
    frame.style = 0;
    frame.lpfnWndProc = RunFrame;
    frame.hIcon = LoadIconA(nullptr, reinterpret_cast<LPCSTR>(IDI_APPLICATION));
    frame.lpszMenuName = MAKEINTRESOURCEA(VIEW_MENU);
    frame.lpszClassName = FRAME_CLASS;
    return RegisterClassA(&page) && RegisterClassA(&frame);
}

bool MakeWindows(HINSTANCE instance, int show)
{
    InitCommonControls();
    if (!RegisterClasses(instance)) {
        return false;
    }
    viewer.frame = CreateWindowA(FRAME_CLASS, "tiffview", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT,
                                 860, 940, nullptr, nullptr, instance, nullptr);
    viewer.status = CreateWindowA(STATUSCLASSNAMEA, "", WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, 0, 0, 0, 0,
                                  viewer.frame, nullptr, instance, nullptr);
    viewer.window = CreateWindowA(PAGE_CLASS, "", WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, viewer.frame, nullptr,
                                  instance, nullptr);
    if (!viewer.window) {
        return false;
    }
    DragAcceptFiles(viewer.frame, TRUE);
    PlaceParts();
    ShowWindow(viewer.frame, show);
    return true;
}

int RunMessages(HINSTANCE instance)
{
    HACCEL keys = LoadAcceleratorsA(instance, MAKEINTRESOURCEA(VIEW_KEYS));
    MSG message;
    while (GetMessageA(&message, nullptr, 0, 0) > 0) {
        if (!TranslateAcceleratorA(viewer.frame, keys, &message)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
    }
    return static_cast<int>(message.wParam);
}

} // namespace

} // namespace tiffview

// tiffview [FILE [PAGE]]
int WINAPI wWinMain(HINSTANCE instance, HINSTANCE, LPWSTR, int show)
{
    using namespace tiffview;
    if (!MakeWindows(instance, show)) {
        return 1;
    }
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (count > 1) {
        OpenWide(arguments[1]);
    }
    if (count > 2) {
        TurnPageTo(static_cast<uint32_t>(wcstoul(arguments[2], nullptr, 10)) - 1);
    }
    LocalFree(arguments);
    return RunMessages(instance);
}
