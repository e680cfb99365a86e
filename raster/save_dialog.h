// The save dialog of the dialogs library.
#pragma once

#include "raster/picture_format.h"
#include "raster/save_settings.h"

namespace tiff {

// Shows the dialog; the answers become the thread's save settings. Error 28 when the library is missing,
// CANCELLED when the user cancels.
[[nodiscard]] Status ShowSaveDialog(const char* path, const PictureFormat& format, SaveSettings& settings);

} // namespace tiff
