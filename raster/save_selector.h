// The meaning of a caller's compression selector.
#pragma once

#include "core/vocabulary.h"

namespace tiff {

// The low byte.
struct CompressionChoice {
    uint32_t selector;
    uint32_t compression;
    uint16_t extraTag; // 0 for none
    uint16_t extraValue;
    bool bilevel; // the picture is saved as black and white
};

// The high byte: how samples are widened or converted.
struct SampleChoice {
    uint32_t kind; // also what DefineSpecialTags takes
    uint32_t sourceBits;
    uint32_t photometric;
    uint32_t sampleShift;
    uint32_t bitsPerPixel; // in the file
    intptr_t (*routine)(void*, uint32_t, void*);
};

struct SaveChoice {
    const CompressionChoice* compression;
    const SampleChoice* samples; // null for the DIB's own
};

// Error 11 for an unknown selector, 16 for samples that do not suit the picture's depth. Without sample kinds
// every high byte is unknown.
[[nodiscard]] Status ChooseSave(uint32_t selector, uint32_t bitCount, bool sampleKinds, SaveChoice& choice);

} // namespace tiff
