// Old-style JPEG pages: their tags, and the library that codes them.
#pragma once

#include "codecs/codec_context.h"
#include "core/win32.h"

namespace tiff {

// Reads the tile layout and the tables' offsets of a loaded page into the context.
[[nodiscard]] Status ReadOldJpegTags(CodecContext* context, HGLOBAL file, uint32_t page);

// These hand the whole context to the JPEG library.
[[nodiscard]] Status DecodeOldJpeg(CodecContext* context);
[[nodiscard]] Status EncodeOldJpeg(CodecContext* context);

} // namespace tiff
