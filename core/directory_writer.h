// Puts a page's directory into a file.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"
#include "tiff/streams.h"

namespace tiff {

// Writes the directory of a page at the end of an open stream, links it, and enters it in the page table and
// the record. Fails with 6, or with 1, also for a page that is not loaded. `linked` says whether the file
// leads to the directory, which may be so after a failure too.
[[nodiscard]] Status WriteDirectory(TiffStream stream, HGLOBAL file, uint32_t page, bool& linked);

// Overwrites a link with the offset of a directory. Fails with 6.
[[nodiscard]] Status PatchLink(TiffStream stream, uint32_t position, uint32_t directoryOffset,
                               uint32_t byteOrder);

} // namespace tiff
