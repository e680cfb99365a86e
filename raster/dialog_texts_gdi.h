// Texts in dialogs. Callers' texts are in the system's code page, as GDI draws them, also in a program whose
// own code page is UTF-8. There the dialog functions that end in A would take them for something else.
#pragma once

#include "core/win32.h"

#include <span>

namespace tiff {

void ShowText(HWND dialog, int control, const char* text);

// Takes whole characters, as many as there is room for with a zero. Returns their bytes.
uint32_t TakeText(HWND dialog, int control, std::span<char> room);

} // namespace tiff
