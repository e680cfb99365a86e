// Puts a page's directory into a file.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"
#include "tiff/streams.h"

namespace tiff {

// Writes the directory of a page behind everything else on an open stream and links it. The
// page's entry and the record know it from then on. Returns 0, 1 or 6, with the error set; the
// last error tells 3 or 27 for a page that is not loaded, whose status is 1.
[[nodiscard]] Status WriteDirectory(TiffStream stream, HGLOBAL file, uint32_t page);

} // namespace tiff
