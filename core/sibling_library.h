// The companion libraries that are found when they are needed and not linked.
#pragma once

#include "core/handles.h"
#include "core/vocabulary.h"
#include "core/win32.h"

namespace tiff {

// The library of this file name beside this one, or else where the system finds it; null when
// neither is there.
Module LoadSibling(const char* fileName);

// A function of the JPEG library, which is loaded if it is not yet and stays loaded while it is
// held, whatever other threads close. Null with the status 22 (no library) or 23 (no such function).
FARPROC FindJpegFunction(const char* name, Module& held, Status& status);

// Closing a file ends what keeps the library loaded between calls.
void UnloadJpegLibrary();

} // namespace tiff
