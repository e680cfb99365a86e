// Saving a packed DIB, whatever the variant.
#pragma once

#include "raster/save_page.h"

namespace tiff {

// Appends the DIB to a file on disk. CANCELLED when the user does so in the dialog.
[[nodiscard]] Status SaveDib(HGLOBAL dib, const SaveRequest& request);

// The same, as an exported function's result.
inline int32_t SaveDibInFile(HGLOBAL dib, const SaveRequest& request)
{
    return FinishSave(SaveDib(dib, request));
}

} // namespace tiff
