// The companion libraries, which are loaded when needed and not linked.
#pragma once

#include "core/handles.h"
#include "core/vocabulary.h"
#include "core/win32.h"

namespace tiff {

// The library of this file name beside this one, or else where the system finds it. Null when it is in
// neither place.
Module LoadSibling(const char* fileName);

// A function of the JPEG library. Loads the library if necessary; it stays loaded as long as `held` lives,
// even when other threads close files. Null with status 22 (no library) or 23 (no such function).
FARPROC FindJpegFunction(const char* name, Module& held, Status& status);

// Called when a file is closed: drops the reference that keeps the library loaded between calls.
void UnloadJpegLibrary();

} // namespace tiff
