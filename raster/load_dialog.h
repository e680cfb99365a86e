// The load dialog of the dialogs library.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"

namespace tiff {

// 0 to go on, also when no dialog is wanted. CANCELLED; 1 when the dialog failed; 28 when its library is
// missing. The loaded page still belongs to the caller.
[[nodiscard]] Status ShowLoadDialog(int32_t dialog, HGLOBAL file, uint32_t page);

// Ends a load without a picture; sets the error unless the dialog was cancelled.
void RefuseLoad(Status status);

} // namespace tiff
