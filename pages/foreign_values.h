// Values of types that pages in memory do not have. A copy keeps their type and all their bytes.
#pragma once

#include "pages/page_content.h"

namespace tiff {

// The room that the values of a directory take which pages in memory have only in part. More than
// the file can hold is 0: such values stay as they are in memory.
uint64_t ForeignBytes(DirectoryWindow& source, uint32_t sourceBytes, uint32_t directory);

// Gives the tags that are in memory as they were read their types in the file, and their values. Values that
// the file does not have are left out; the window tells of those that could not be read. The room, which the
// tags point into from then on, is as large as ForeignBytes says.
void RestoreForeignTypes(DirectoryWindow& source, uint32_t directory, std::span<uint8_t> room,
                         std::span<DirectoryTag> tags);

} // namespace tiff
