// The companion libraries that are found when they are needed and not linked.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"

namespace tiff {

// A function of the JPEG library, which is loaded if it is not yet. Null with the status and
// the last error set to 22 (no library) or 23 (no such function).
FARPROC FindJpegFunction(const char* name, Status& status);

// The library stays loaded until a file is closed.
void UnloadJpegLibrary();

} // namespace tiff
