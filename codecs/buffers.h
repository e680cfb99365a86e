// The line and code buffers of a codec call, and its way from strip to strip.
#pragma once

#include "codecs/codec_context.h"

namespace tiff {

inline constexpr uint32_t CODE_BUFFER_LIMIT = 32767;
inline constexpr uint32_t RECORD_BUFFER_LIMIT = 65520;

// Bytes behind the line buffer that a packet may spill into.
inline constexpr uint32_t SPARE_LINE_BYTES = 256;

// Allocates and locks both buffers for the rest of the call, and finds the last row of the
// first strip.
[[nodiscard]] Status AllocateBuffers(CodecContext* context, uint32_t codeBytes);

inline uint8_t* CodeBuffer(const CodecContext* context)
{
    return context->lineBuffer + context->lineBufferSize;
}

// Sets the line cursor and the per-line copies for the next line.
void BeginLine(CodecContext* context);

// Puts 16-bit samples into the processor's order and hands the line over.
[[nodiscard]] Status HandOverSamples(CodecContext* context);

// Unlocks and frees every block of the context.
void ReleaseBlocks(CodecContext* context);

class ContextBlocks {
public:
    explicit ContextBlocks(CodecContext* context) : context(context)
    {
    }
    ContextBlocks(const ContextBlocks&) = delete;
    ContextBlocks& operator=(const ContextBlocks&) = delete;
    ~ContextBlocks()
    {
        ReleaseBlocks(context);
    }

private:
    CodecContext* context;
};

} // namespace tiff
