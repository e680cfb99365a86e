// The load dialog of the dialogs library.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"

namespace tiff {

// 0 when there is none to show or the user goes on with it. CANCELLED, 1 when the dialog failed, 28 when
// it is missing. The page to load stays the caller's.
[[nodiscard]] Status ShowLoadDialog(int32_t dialog, HGLOBAL file, uint32_t page);

// Ends a load without a picture: an error for all but a cancelled dialog.
void RefuseLoad(Status status);

} // namespace tiff
