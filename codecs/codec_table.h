// The routines of each compression scheme, and how its pages describe a call.
#pragma once

#include "codecs/line_target.h"
#include "core/tag_block.h"

namespace tiff {

using CodecRoutine = Status (*)(CodecCall* call);

// Runs the decoder of the context's compression; 11 when there is none.
[[nodiscard]] Status Decode(CodecCall* call);

// Runs its encoder. After success the caller flushes the rest of the code in the buffer.
[[nodiscard]] Status Encode(CodecCall* call);

// Whether pages of a compression can be written.
bool HasEncoder(uint32_t compression);

// The rows of a page to decode.
struct RowRange {
    uint32_t firstStrip, rowCount; // 0 rows: to the end of the page
};

// The properties of a compression besides its routines.
struct PageScheme {
    uint32_t compression;
    // The high half of the compression code.
    uint32_t (*variant)(const PageTags& tags);
    // Whether the line drivers leave a page to a codec for whole pictures, and the status they return then.
    bool (*isLeft)(const PageTags& tags);
    Status notDecoded, notEncoded;
    // From tags to the strips or tiles of a call, and back when they are written.
    Status (*describeDecoding)(CodecContext* context, HGLOBAL file, uint32_t page, RowRange range);
    Status (*describeEncoding)(CodecContext* context, HGLOBAL file, uint32_t page);
    Status (*defineData)(const CodecContext* context, HGLOBAL file, uint32_t page);
    // The codec for whole pictures; null for none.
    Status (*decodePicture)(HGLOBAL file, uint32_t page, const LineTarget& target);
    // The same backwards; describeEncoding comes before it.
    CodecRoutine encodePicture;
    // Whether its encoder moves from strip to strip with FillDataBuffer.
    bool countsStrips;
};

// Unknown schemes have strips.
const PageScheme& SchemeOf(const PageTags& tags);

// The compression code of a page.
uint32_t CompressionCode(const PageTags& tags);

inline bool IsLeftToPictureCodec(const PageTags& tags)
{
    return SchemeOf(tags).isLeft(tags);
}

} // namespace tiff
