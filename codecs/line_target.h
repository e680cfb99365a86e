// The destination of decoded lines, and what is known of the routine that takes them.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

struct LineTarget {
    TiffLineCallback routine;
    void* userData;
    uint32_t bytesRead = 0;            // of a line, by a routine that changes no line
    const RowsInPlace* rows = nullptr; // the routine only copies these bytes into them
};

// Gives a call its line routine and, when the routine allows it, lines in place: read where they lie, or
// painted into their rows. Only memory that the routine would write to is touched. The rows must live as long
// as the call.
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
