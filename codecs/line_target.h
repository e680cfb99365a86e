// Where decoded lines go, and what is known of the routine that takes them.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

struct LineTarget {
    TiffLineCallback routine;
    void* userData;
    uint32_t bytesRead = 0;            // of a line, by a routine that leaves lines as they are
    const RowsInPlace* rows = nullptr; // that the routine does nothing but copy these bytes to
};

// Gives a described call its routine and the short ways that both agree on: lines may be read where they
// lie, and put where they belong. Of the rows' memory nothing is touched that the routine would not have
// written to. The rows must live as long as the call.
inline void TakeTarget(CodecCall* call, const LineTarget& target, RowsInPlace& rows)
{
    call->userData = target.userData;
    call->lineCallback = target.routine;
    call->readsLines = target.bytesRead != 0 && target.bytesRead <= call->bytesPerLine;
    if (!target.rows || target.bytesRead != call->bytesPerLine || Rows(call) > target.rows->count)
        return;
    rows = *target.rows;
    const uint32_t highest = rows.step > 0 ? Rows(call) - 1 : call->row;
    rows.end = rows.first + int64_t{highest} * rows.step + call->bytesPerLine;
    call->rowsInPlace = &rows;
}

} // namespace tiff
