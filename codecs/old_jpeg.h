// Old-style JPEG: the tags of its pages, and the calls of the library that codes them.
#pragma once

#include "codecs/codec_table.h"

namespace tiff {

// Only pages in tiles go to the library.
bool HasNoTiles(const PageTags& tags);

// As the functions of strips.h. The first reads the tables' offsets too; it fails with 1, 10 or 11.
[[nodiscard]] Status DescribeTilesToDecode(CodecContext* context, HGLOBAL file, uint32_t page,
                                           RowRange range);
[[nodiscard]] Status DescribeTilesToEncode(CodecContext* context, HGLOBAL file, uint32_t page);
[[nodiscard]] Status DefineTiles(const CodecContext* context, HGLOBAL file, uint32_t page);

// Tiles of one process begin with a header, which their offsets leave out.
constexpr uint32_t TileHeaderBytes(const CodecContext* context)
{
    constexpr uint32_t HEADER_BYTES = 8;
    const bool isOldJpeg = (context->compression & 0xFFFF) == compression::OldJpeg;
    return isOldJpeg && context->jpegProcess == 0 ? HEADER_BYTES : 0;
}

// These hand the whole context to the JPEG library.
[[nodiscard]] Status DecodeOldJpeg(CodecCall* call);
[[nodiscard]] Status EncodeOldJpeg(CodecCall* call);

} // namespace tiff
