// Where things begin in a file: the directories of its pages, their values, strips, tables and
// sub-directories. What has no length of its own goes up to the next of them.
#pragma once

#include "core/global_block.h"
#include "core/vocabulary.h"

namespace tiff {

struct CopySource;

struct KnownOffsets {
    GlobalBlock offsets; // in order
    uint32_t count = 0;
};

// The bytes from an offset to what comes next, or to the end of the file. Walks all pages of the
// file once. Returns 1, 6, or 9 when nothing can be known: the offset lies outside the file or in
// its header.
[[nodiscard]] Status BytesToNext(CopySource& source, uint32_t offset, uint32_t& bytes);

} // namespace tiff
