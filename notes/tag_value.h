// The tag that keeps a page's notes.
#pragma once

#include "core/tag_block.h"

namespace tiff {

inline constexpr uint16_t NOTES_TAG = 316; // HostComputer

// Its value; empty without one, and for another field type.
std::span<const uint8_t> NotesOf(const PageTags& tags);

} // namespace tiff
