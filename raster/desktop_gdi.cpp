#include "core/desktop.h"

namespace tiff {

DotsPerInch ScreenResolution()
{
    HDC screen = GetDC(nullptr);
    const DotsPerInch resolution = {static_cast<uint32_t>(GetDeviceCaps(screen, LOGPIXELSX)),
                                    static_cast<uint32_t>(GetDeviceCaps(screen, LOGPIXELSY))};
    ReleaseDC(nullptr, screen);
    return resolution;
}

void ShowErrorBox(const char* text)
{
    MessageBoxA(nullptr, text, "TIFF error", MB_ICONEXCLAMATION);
}

BusyCursor::BusyCursor() : previous(SetCursor(LoadCursorA(nullptr, MAKEINTRESOURCEA(32514))))
{
}

BusyCursor::~BusyCursor()
{
    SetCursor(static_cast<HCURSOR>(previous));
}

} // namespace tiff
