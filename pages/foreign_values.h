// Values of types that pages in memory do not have. A copy keeps their type and all their bytes.
#pragma once

#include "pages/raw_entries.h"

namespace tiff {

// Gives the tags that are in memory as they were read their types in the file, and their values. The
// tags are in order. Values that the file does not have are left out; the window tells of those that
// could not be read. What is read lies in the source's scratch. Returns 1 when memory is missing.
[[nodiscard]] Status RestoreForeignTypes(CopySource& source, uint32_t directory,
                                         std::span<DirectoryTag> tags);

} // namespace tiff
