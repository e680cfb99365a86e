/* Runs a program with a window: watch CLASS PROGRAM FILE [KEY]. When the window shows something dark on white
 * the key is pressed, then the window is closed. Ends as the program does.
 */
#include <stdio.h>
#include <windows.h>

static int IsDrawn(HWND window)
{
    HDC dc = GetDC(window);
    int dark = 0, light = 0, x, y;
    for (y = 0; y < 500; y += 3)
        for (x = 0; x < 500; ++x)
            *(GetPixel(dc, x, y) == 0xFFFFFF ? &light : &dark) += 1;
    ReleaseDC(window, dc);
    return dark > 200 && light > dark;
}

int main(int argc, char** argv)
{
    STARTUPINFOA start = {sizeof(start)};
    PROCESS_INFORMATION process;
    char command[600];
    DWORD ended = 99;
    int tries, drawn = 0;
    HWND window = NULL;
    if (argc < 4)
        return 98;
    snprintf(command, sizeof(command), "%s %s", argv[2], argv[3]);
    if (!CreateProcessA(NULL, command, NULL, NULL, FALSE, 0, NULL, NULL, &start, &process))
        return 97;
    for (tries = 0; tries < 200 && !drawn; ++tries) {
        Sleep(50);
        window = FindWindowA(argv[1], argv[3]);
        drawn = window && IsDrawn(window);
        if (drawn && argc > 4) {
            SendMessageA(window, WM_KEYDOWN, (WPARAM)argv[4][0], 0);
            UpdateWindow(window);
            drawn = IsDrawn(window);
        }
    }
    PostMessageA(window, WM_CLOSE, 0, 0);
    if (WaitForSingleObject(process.hProcess, 10000) == WAIT_OBJECT_0)
        GetExitCodeProcess(process.hProcess, &ended);
    return drawn ? (int)ended : 96;
}
