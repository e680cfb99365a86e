// A page's tags as a bitmap header and its colours.
#pragma once

#include "core/tag_block.h"

namespace tiff {

// As GetTiffDimensions. Fails with 10, 16, or 27 without tags.
[[nodiscard]] Status DescribeImage(const PageTags& tags, BITMAPINFOHEADER& header);

// The colours of the header; `colours` must have room for them. Fails with 10 without a colour map, and with
// 16 for 32 bits that are not CMYK.
[[nodiscard]] Status DescribeColours(const PageTags& tags, const BITMAPINFOHEADER& header,
                                     std::span<RGBQUAD> colours);

// The greys of WhiteIsZero and BlackIsZero; for any other value of two colours, white and black.
void FillPlainColours(std::span<RGBQUAD> colours, uint32_t important, uint32_t photometric);

} // namespace tiff
