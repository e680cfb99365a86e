// The few desktop services that lower code needs. Declared only: the library links them to the screen, the
// native tests to a desktop of their own.
#pragma once

#include "core/win32.h"

namespace tiff {

struct DotsPerInch {
    uint32_t horizontal, vertical;
};

DotsPerInch ScreenResolution();

void ShowErrorBox(const char* text);

// The wait cursor for a scope; the previous cursor comes back at its end.
class BusyCursor {
public:
    BusyCursor();
    BusyCursor(const BusyCursor&) = delete;
    BusyCursor& operator=(const BusyCursor&) = delete;
    ~BusyCursor();

private:
    void* previous;
};

} // namespace tiff
