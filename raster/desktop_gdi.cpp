#include "core/desktop.h"
#include "raster/gdi_guards.h"

namespace tiff {

// A screen that gives no device context counts as the usual one.
DotsPerInch ScreenResolution()
{
    constexpr uint32_t USUAL = 96;
    const WindowDc screen(nullptr);
    if (!screen)
        return {USUAL, USUAL};
    return {static_cast<uint32_t>(GetDeviceCaps(screen.Get(), LOGPIXELSX)),
            static_cast<uint32_t>(GetDeviceCaps(screen.Get(), LOGPIXELSY))};
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
