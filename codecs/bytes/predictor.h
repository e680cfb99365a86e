// Horizontal differencing: each sample kept as its difference from the one before it.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

// Restores the samples of the current line by summing up, in place.
void UndoDifferencing(const CodecContext* context);

// Turns the samples of the current line into differences, in place.
void ApplyDifferencing(const CodecContext* context);

} // namespace tiff
