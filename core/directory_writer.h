// Puts a page's directory into a file.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"
#include "tiff/streams.h"

namespace tiff {

// Writes the directory of a page behind everything else on an open stream and links it. The
// page's entry and the record know it from then on. Fails with 1, also for a page that is not loaded,
// and 6. Linked says whether the file leads to the directory, as it may after a failure too.
[[nodiscard]] Status WriteDirectory(TiffStream stream, HGLOBAL file, uint32_t page, bool& linked);

// Overwrites a link with the offset of a directory. Fails with 6.
[[nodiscard]] Status PatchLink(TiffStream stream, uint32_t position, uint32_t directoryOffset,
                               uint32_t byteOrder);

} // namespace tiff
