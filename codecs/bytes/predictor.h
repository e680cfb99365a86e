// Horizontal differencing: each sample kept as its difference from the one before it.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

// Sums the samples of the line in hand up again, in place.
void UndoDifferencing(const CodecContext* context);

// Turns the samples of the line in hand into differences, in place.
void ApplyDifferencing(const CodecContext* context);

} // namespace tiff
