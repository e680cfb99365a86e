// Group 4 code in records: FE 92, the length as a 16-bit big-endian number, then that many bytes.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

inline constexpr uint8_t RECORD_MARK[] = {0xFE, 0x92};
inline constexpr uint32_t RECORD_HEADER_BYTES = 4; // the mark and the length

// Loads the next record; 5 without one.
[[nodiscard]] Status FillFromRecord(CodecContext* context);

// Makes the buffers and loads the first record.
[[nodiscard]] Status InitRecordBuffers(CodecContext* context);

// Writes the content of the code buffer as a record and empties the buffer, also when the write fails. An
// empty buffer writes nothing.
[[nodiscard]] Status FlushToRecord(CodecContext* context);

} // namespace tiff
