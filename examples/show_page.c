/* Shows page 1 of a file, fitted into a window: show_page FILE */
#include "tiff/tiff.h"

int main(int argc, char** argv)
{
    const char* path = argc > 1 ? argv[1] : "fax.tif";
    HWND window = CreateWindowA("STATIC", path, WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 600, 800, NULL, NULL,
                                NULL, NULL);
    MSG message;
    while (IsWindow(window) && GetMessageA(&message, window, 0, 0) > 0) {
        DispatchMessageA(&message);
        if (message.message == WM_PAINT) {
            HDC dc = GetDC(window);
            DecompressToScreen(TIFF_FORMAT_ANY, window, dc, path, 0, NULL, TIFF_FIT | TIFF_GREY_SCREEN);
            ReleaseDC(window, dc);
        }
    }
    return 0;
}
