// The save dialog of the dialogs library.
#pragma once

#include "core/thread_state.h"
#include "raster/picture_format.h"

namespace tiff {

// Lets the user choose; the answers become the thread's save settings. Error 28 when the
// library is missing, CANCELLED when the user cancels.
[[nodiscard]] Status ShowSaveDialog(const char* path, const PictureFormat& format, SaveSettings& settings);

} // namespace tiff
