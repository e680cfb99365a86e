// Bitmaps to packed DIBs and back, with colours from a palette. The bitmaps must not be selected into a
// device context.
#pragma once

#include "core/win32.h"
#include "raster/gdi_guards.h"

namespace tiff {

// Bits per pixel for fetching a bitmap's rows: 1, 4 or 8, and 24 for all deeper bitmaps.
uint32_t DibDepth(const BITMAP& bitmap);

// Monochrome for two colours, else compatible with the device context; null when memory is missing.
HBITMAP CreateBitmapFor(HDC dc, uint32_t colourCount, int32_t width, int32_t height);

// A packed DIB in the bitmap's depth: 1, 4, 8 or 24 bits. The palette, which may be null, gives the colours
// on a palette screen. Resolutions are 0. Null with error 1 or 34.
HGLOBAL BitmapToDib(HBITMAP bitmap, HPALETTE palette);

// A bitmap of a packed DIB, and the palette of its colours (null without colours). Null with error 1, 16 (a
// depth that GDI does not take) or 30 (not a whole, uncompressed DIB).
HBITMAP DibToBitmap(HGLOBAL dib, GdiObject<HPALETTE>& palette);

} // namespace tiff
