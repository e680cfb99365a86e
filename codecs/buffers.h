// The line and code buffers of a codec call, and its way from strip to strip.
#pragma once

#include "codecs/codec_context.h"

#include <span>

namespace tiff {

inline constexpr uint32_t CODE_BUFFER_LIMIT = 32767;
inline constexpr uint32_t RECORD_BUFFER_LIMIT = 65520;

// Bytes behind the line buffer that a packet may spill into.
inline constexpr uint32_t SPARE_LINE_BYTES = 256;

// Allocates and locks both buffers for the rest of the call, and finds the last row of the first strip.
[[nodiscard]] Status AllocateBuffers(CodecContext* context, uint32_t codeBytes);

inline uint8_t* CodeBuffer(const CodecContext* context)
{
    return context->lineBuffer + context->lineBufferSize;
}

// Finds the last row of the strip that begins with the current row.
void SetStripLastRow(CodecContext* context);

// Sets the line cursor and the per-line copies for the next line.
void BeginLine(CodecContext* context);

// Clears the line buffer.
void ClearLine(CodecContext* context);

// Hands over a line, which may lie outside the line buffer.
[[nodiscard]] Status HandOverLine(CodecContext* context, uint8_t* line);

// The picture row of the current line, if `margin` bytes behind it may be rewritten unchanged; else null.
inline uint8_t* RowInPlace(const CodecCall* context, uint32_t margin)
{
    const RowsInPlace* rows = context->rowsInPlace;
    if (!rows)
        return nullptr;
    uint8_t* row = rows->first + int64_t{context->row} * rows->step;
    return rows->end - row >= int64_t{context->bytesPerLine} + margin ? row : nullptr;
}

// Goes on to the next strip, after the last line of one.
[[nodiscard]] Status BeginNextStrip(CodecContext* context);

// Counts a line that was handed over or painted into its row.
[[nodiscard]] inline Status CountLine(CodecContext* context)
{
    context->lastLineOfStrip = context->row == context->stripLastRow;
    ++context->row;
    return context->lastLineOfStrip ? BeginNextStrip(context) : error::None;
}

// Puts 16-bit samples into the processor's order and hands the line buffer over.
[[nodiscard]] Status HandOverSamples(CodecContext* context);

// Whether a line may be handed over from where it lies.
inline bool PassesLines(const CodecCall* context)
{
    return context->readsLines && !HasSwappedSamples(context);
}

// Puts the 16-bit samples of the current line into the file's order, for coding.
void OrderSamples(const CodecContext* context);

// Appends bytes to the code. Writes the code buffer out when it is full and more bytes follow.
[[nodiscard]] Status PutBytes(CodecContext* context, std::span<const uint8_t> bytes);

// Marks the code buffer as empty and counts its content as written.
void EmptyCodeBuffer(CodecContext* context);

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
