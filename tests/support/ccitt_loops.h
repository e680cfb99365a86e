// Decodes a bare stream with all loops or with the careful ones alone, and keeps every result that an
// application can see.
#pragma once

#include "codecs/buffers.h"
#include "codecs/ccitt/decoder.h"
#include "codecs/ccitt/raw.h"
#include "core/stream.h"

struct CcittOutcome {
    uint32_t status = 0, rows = 0, position = 0; // of the stream: shows how often the buffer was refilled
    uint64_t pixels = 0;                         // a hash of the rows and their lengths
    uint32_t rowBytes = 0;
    uint32_t badRows = 0, longestBadRun = 0;

    bool operator==(const CcittOutcome&) const = default;
};

inline intptr_t HashRow(void* line, uint32_t row, void* outcome)
{
    auto& into = *static_cast<CcittOutcome*>(outcome);
    const auto* bytes = static_cast<const uint8_t*>(line);
    uint64_t hash = into.pixels * 31 + row;
    for (uint32_t at = 0; at < into.rowBytes; ++at)
        hash = (hash ^ bytes[at]) * UINT64_C(0x100000001B3);
    into.pixels = hash;
    ++into.rows;
    return 0;
}

inline CcittOutcome DecodeWith(tiff::CcittLoops loops, HGLOBAL block, uint32_t bytes,
                               tiff::CcittScheme scheme, uint32_t width, uint32_t rows)
{
    CcittOutcome outcome{.rowBytes = (width + 7) / 8};
    const TiffStream stream = tiff::OpenMemoryStream(block, bytes);
    tiff::CodecCall context{};
    const tiff::ContextBlocks blocks(&context);
    context.userData = &outcome;
    context.lineCallback = HashRow;
    if (tiff::DescribeRawImage(&context, {stream, width, rows, 0, 1, TIFF_INTEL}) == tiff::error::None) {
        context.dataEnd = bytes;
        outcome.status = tiff::DecodeCcitt(&context, scheme, loops);
        outcome.badRows = context.damage.badRows;
        outcome.longestBadRun = context.damage.longestRun;
    }
    outcome.position = mTell(stream);
    mClose(stream);
    return outcome;
}
