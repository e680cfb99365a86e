/* A viewer: viewer FILE. Page Up and Page Down turn the pages, R turns the page, F fits it, the scroll bars
 * move. */
#include "tiff/tiff.h"

static const char* path = "fax.tif";
static uint32_t page, turn, size = TIFF_FIT;

static void Draw(HWND window)
{
    PAINTSTRUCT paint;
    HDC dc = BeginPaint(window, &paint);
    if (!DecompressToScreen(TIFF_FORMAT_ANY, window, dc, path, page, NULL, size | turn | TIFF_GREY_SCREEN)) {
        char text[64];
        TextOutA(dc, 8, 8, TiffErrorString(text, (int32_t)TiffError()), lstrlenA(text));
    }
    EndPaint(window, &paint);
}

static void Key(WPARAM key)
{
    if (key == VK_NEXT && page + 1 < GetNumberOfImagesInTiffFile(path))
        ++page;
    else if (key == VK_PRIOR && page > 0)
        --page;
    else if (key == 'R')
        turn = (turn + TIFF_TURN_90) % 4;
    else if (key == 'F')
        size ^= TIFF_FIT;
}

static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM wide, LPARAM narrow)
{
    if (message == WM_PAINT)
        Draw(window);
    else if (message == WM_DESTROY)
        PostQuitMessage(0);
    else if (message == WM_KEYDOWN)
        Key(wide);
    else if (message == WM_HSCROLL || message == WM_VSCROLL) {
        if (LOWORD(wide) == SB_THUMBPOSITION)
            SetScrollPos(window, message == WM_HSCROLL ? SB_HORZ : SB_VERT, HIWORD(wide), TRUE);
    } else
        return DefWindowProcA(window, message, wide, narrow);
    if (message != WM_PAINT)
        InvalidateRect(window, NULL, TRUE);
    return 0;
}

int main(int argc, char** argv)
{
    const WNDCLASSA kind = {.lpfnWndProc = OnMessage, .lpszClassName = "example viewer"};
    MSG message;
    path = argc > 1 ? argv[1] : path;
    RegisterClassA(&kind);
    CreateWindowA("example viewer", path, WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 700, 900, NULL, NULL, NULL,
                  NULL);
    while (GetMessageA(&message, NULL, 0, 0) > 0)
        DispatchMessageA(&message);
    return 0;
}
