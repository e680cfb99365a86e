/* The values of a tag in words, for people and for programs. */
#ifndef TOOLS_TAG_TEXT_H
#define TOOLS_TAG_TEXT_H

#include "json.h"
#include "source.h"

namespace tifftool {

inline constexpr size_t MAX_SHOWN_VALUES = 8; // of a tag that is not text

// The values of a tag, or the first of them, in the processor's order.
struct TagContent {
    uint32_t type, count;
    std::vector<uint8_t> bytes;
};

// The first values in words. Never reads past the bytes given, whatever count the file claims.
std::string FormatValues(uint32_t type, uint32_t count, std::span<const uint8_t> bytes);

// Reads up to `most` values of a tag of a loaded page, counted from 0; returns an exit code.
int ReadTag(Source& source, uint32_t page, uint32_t tag, size_t most, TagContent& content);

// The tags of a loaded page, counted from 0: one a line, or all with all their values.
int PrintTags(Source& source, uint32_t page);
int WriteTags(Json& json, Source& source, uint32_t page);

} // namespace tifftool

#endif
