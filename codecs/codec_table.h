// Which routine a compression code stands for.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

using CodecRoutine = Status (*)(CodecContext* context);

// Runs the decoder of the context's compression; 11 when there is none.
[[nodiscard]] Status Decode(CodecContext* context);

// Runs its encoder. What is left in the code buffer after success is the caller's to flush.
[[nodiscard]] Status Encode(CodecContext* context);

} // namespace tiff
