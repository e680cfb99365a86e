// Defining tags of a page in memory.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"

namespace tiff {

struct TagDefinition {
    uint32_t tag, type, count;
    const void* values;
};

// As DefineTiffImageInfoBuffer. Fails with 1, 3, 27, 29 or 34.
[[nodiscard]] Status DefineTag(HGLOBAL file, uint32_t page, const TagDefinition& defined);

} // namespace tiff
