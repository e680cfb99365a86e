// Saving a packed DIB, whatever the variant.
#pragma once

#include "raster/save_page.h"

namespace tiff {

// Appends the DIB to a file on disk; an exported function's result, with the error set.
int32_t SaveDibInFile(HGLOBAL dib, const SaveRequest& request);

} // namespace tiff
