// The load dialog of the dialogs library.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"

namespace tiff {

inline constexpr char DIALOGS_LIBRARY[] = "KVDlgs.dll";

// True when there is none to show or the user goes on with it; else the last error is set: 0 the
// user cancelled, 1 the dialog failed, 28 it is missing. The page to load stays the caller's.
[[nodiscard]] bool PassLoadDialog(int32_t dialog, HGLOBAL file, uint32_t page);

} // namespace tiff
