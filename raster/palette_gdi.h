// Logical palettes.
#pragma once

#include "core/win32.h"

#include <span>

namespace tiff {

// Colours as a DIB stores them: blue, green, red and perhaps a fourth byte each; 256 at most are
// taken. Null for none, or when GDI has no room. The caller deletes it.
HPALETTE MakePalette(std::span<const uint8_t> colours, uint32_t colourBytes);

// The colours behind the header of a page.
HPALETTE MakePalette(const BITMAPINFO& info);

} // namespace tiff
