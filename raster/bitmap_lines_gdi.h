// The line routines for bitmaps that say when GDI fails. The exported ones of lines.h do the same and answer
// 0.
#pragma once

#include <cstdint>

namespace tiff {

// Into the bitmap of a TiffDecodeLineContext: as they are, with red and blue swapped, from Y, Cb and Cr.
intptr_t FlushBitmapLine(void* line, uint32_t row, void* context);
intptr_t FlushSwappedBitmapLine(void* line, uint32_t row, void* context);
intptr_t FlushYCbCrLine(void* line, uint32_t row, void* context);

// Out of the bitmap of a TiffEncodeLineContext: as they are, complemented, with red and blue swapped.
intptr_t FillBitmapLine(void* line, uint32_t row, void* context);
intptr_t FillMonoBitmapLine(void* line, uint32_t row, void* context);
intptr_t FillSwappedBitmapLine(void* line, uint32_t row, void* context);
// The same with this thread's bitmap information. Nothing without one.
intptr_t FillCcittLine(void* line, uint32_t row, void* context);

} // namespace tiff
