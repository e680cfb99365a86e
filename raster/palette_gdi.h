// Logical palettes.
#pragma once

#include "core/win32.h"

#include <span>

namespace tiff {

// Colours as a DIB stores them: blue, green, red and perhaps a fourth byte each. At most 256 are used. Null
// for no colours, or when GDI has no room. The caller deletes the palette.
HPALETTE MakePalette(std::span<const uint8_t> colours, uint32_t colourBytes);

// The same with the colours behind a page's header.
HPALETTE MakePalette(const BITMAPINFO& info);

} // namespace tiff
