// Group 4 code in records: FE 92, the length as a 16-bit big-endian number, then that many bytes.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

// Loads the next record; 5 when there is none.
[[nodiscard]] Status FillFromRecord(CodecContext* context);

// The buffers, with the first record loaded.
[[nodiscard]] Status InitRecordBuffers(CodecContext* context);

// Writes what the code buffer holds as a record and empties it, also when the write fails; an
// empty buffer writes nothing.
[[nodiscard]] Status FlushToRecord(CodecContext* context);

} // namespace tiff
