// Puts a page's directory into a file.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"
#include "tiff/streams.h"

namespace tiff {

// Writes the directory of a page behind everything else on an open stream and links it. The
// page's entry and the record know it from then on. Returns 0, 1 or 6, with the error set; the
// last error tells 3 or 27 for a page that is not loaded, whose status is 1. Linked says whether
// the file leads to the directory, as it may after a failure too.
[[nodiscard]] Status WriteDirectory(TiffStream stream, HGLOBAL file, uint32_t page, bool& linked);

// Overwrites a link with the offset of a directory. Fails with 6, the error set.
[[nodiscard]] Status PatchLink(TiffStream stream, uint32_t position, uint32_t directoryOffset,
                               uint32_t byteOrder);

} // namespace tiff
