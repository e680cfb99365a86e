// Geometry of packed DIBs.
#pragma once

#include "core/win32.h"

namespace tiff {

// Bytes of a DIB row.
constexpr uint64_t DibStride(uint32_t width, uint32_t bitCount)
{
    return (uint64_t{width} * bitCount + 31) / 32 * 4;
}

// Colours of a header: its own count, or what its depth calls for.
constexpr uint32_t DibColours(const BITMAPINFOHEADER& header)
{
    if (header.biClrUsed != 0)
        return header.biClrUsed;
    return header.biBitCount == 1 || header.biBitCount == 4 || header.biBitCount == 8
               ? 1u << header.biBitCount
               : 0;
}

} // namespace tiff
