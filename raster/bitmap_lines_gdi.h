// The line routine for bitmaps that is not exported.
#pragma once

#include <cstdint>

namespace tiff {

// Converts a row of Y, Cb, Cr in the line buffer, then puts it into the bitmap. The user data is a
// TiffDecodeLineContext.
intptr_t FlushYCbCrLine(void* line, uint32_t row, void* context);

} // namespace tiff
