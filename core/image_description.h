// A page's tags as a bitmap header and its colours.
#pragma once

#include "core/tag_block.h"

namespace tiff {

// As GetTiffDimensions. Fails with 10, 16, or 27 without tags.
[[nodiscard]] Status DescribeImage(const PageTags& tags, BITMAPINFOHEADER& header);

// The colours that the header announces, which there must be room for. Fails with 10 without a colour
// map, and with 16 for 32 bits that are no inks.
[[nodiscard]] Status DescribeColours(const PageTags& tags, const BITMAPINFOHEADER& header,
                                     std::span<RGBQUAD> colours);

// Greys of a photometric value that has them, and white and black for two colours of any other.
void FillPlainColours(std::span<RGBQUAD> colours, uint32_t important, uint32_t photometric);

} // namespace tiff
