// Which routines a compression scheme stands for, and how its pages describe a call.
#pragma once

#include "codecs/codec_context.h"
#include "core/tag_block.h"

namespace tiff {

using CodecRoutine = Status (*)(CodecCall* call);

// Runs the decoder of the context's compression; 11 when there is none.
[[nodiscard]] Status Decode(CodecCall* call);

// Runs its encoder. The rest of the code in the buffer after success is the caller's to flush.
[[nodiscard]] Status Encode(CodecCall* call);

// Whether pages of a compression can be written.
bool HasEncoder(uint32_t compression);

// The rows of a page that are wanted.
struct RowRange {
    uint32_t firstStrip, rowCount; // 0 rows: to the end of the page
};

// What a value of Compression stands for besides its routines.
struct PageScheme {
    uint32_t compression;
    // The high half of the compression code.
    uint32_t (*variant)(const PageTags& tags);
    // Whether the line drivers leave a page to a codec for whole pictures, and what they answer then.
    bool (*isLeft)(const PageTags& tags);
    Status notDecoded, notEncoded;
    // Tags to the strips or tiles of a call, and back once they are written.
    Status (*describeDecoding)(CodecContext* context, HGLOBAL file, uint32_t page, RowRange range);
    Status (*describeEncoding)(CodecContext* context, HGLOBAL file, uint32_t page);
    Status (*defineData)(const CodecContext* context, HGLOBAL file, uint32_t page);
    // Whether its encoder goes from strip to strip by FillDataBuffer.
    bool countsStrips;
};

// Schemes that are not known have strips like others.
const PageScheme& SchemeOf(const PageTags& tags);

// The compression code of a page.
uint32_t CompressionCode(const PageTags& tags);

inline bool IsLeftToPictureCodec(const PageTags& tags)
{
    return SchemeOf(tags).isLeft(tags);
}

} // namespace tiff
