// What the calling thread's last decoded page is known to have lost.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

// Before a page is decoded: nothing is known of it.
void ForgetQuality();
// After it. Only Group 3 has a sign between its lines by which damaged ones are found.
void NoteQuality(const CodecCall& call, uint32_t firstRow);

} // namespace tiff
