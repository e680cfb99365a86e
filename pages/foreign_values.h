// Values of types that pages in memory cannot hold. A copy keeps their type and all their bytes.
#pragma once

#include "pages/raw_entries.h"

namespace tiff {

// Gives tags that are unchanged in memory the types and values that they have in the file. The tags must be
// in order. Values missing from the file are left out; the window's `failed` says whether some could not be
// read. The values lie in the source's scratch. Returns 1 when memory is missing.
[[nodiscard]] Status RestoreForeignTypes(CopySource& source, uint32_t directory,
                                         std::span<DirectoryTag> tags);

} // namespace tiff
