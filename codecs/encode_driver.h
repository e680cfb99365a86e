// From lines to a page of a file.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"
#include "tiff/codecs.h"

#include <span>

namespace tiff {

// Where lines come from.
struct LineFeed {
    TiffLineCallback routine;
    void* userData;
};

// Encodes a defined page and writes its directory, as EncodeTiffImage does. That has only the codecs that
// work line by line.
enum class PageCodecs { Lines, All };
[[nodiscard]] Status EncodePage(HGLOBAL file, uint32_t page, const LineFeed& feed, PageCodecs codecs);

// Puts code that is finished into the file, as the one strip of a page whose other tags are defined.
[[nodiscard]] Status PutCode(HGLOBAL file, uint32_t page, std::span<const uint8_t> bytes);

} // namespace tiff
