// Which routine a compression code stands for.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

using CodecRoutine = Status (*)(CodecContext* context);

// Runs the decoder of the context's compression; 11 when there is none.
[[nodiscard]] Status Decode(CodecContext* context);

} // namespace tiff
