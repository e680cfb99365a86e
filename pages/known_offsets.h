// The start of every item in a file: directories, values, strips, tables and sub-directories. An item without
// a length ends at the next one.
#pragma once

#include "core/global_block.h"
#include "core/vocabulary.h"

namespace tiff {

struct CopySource;

struct KnownOffsets {
    GlobalBlock offsets; // in order
    uint32_t count = 0;
    bool overlap = false; // there are more than the file can hold, and none is known
};

// The bytes from an offset to the next item, or to the end of the file. Walks all pages of the file once.
// Returns 1, 6, or 9 when the offset lies outside the file or in its header, or items overlap.
[[nodiscard]] Status BytesToNext(CopySource& source, uint32_t offset, uint32_t& bytes);

} // namespace tiff
