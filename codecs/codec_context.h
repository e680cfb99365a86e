// The state of a codec call: the public context, with the proof of its layout, which companion libraries and
// applications are compiled against, and after it the library's private part.
#pragma once

#include "core/vocabulary.h"
#include "tiff/codecs.h"

#include <cstddef>

namespace tiff {

static_assert(offsetof(CodecContext, codeCursor) == 0);
static_assert(offsetof(CodecContext, lineCursor) == 8);
static_assert(offsetof(CodecContext, codeBytesLeft) == 16);
static_assert(offsetof(CodecContext, lineBytes) == 20);
static_assert(offsetof(CodecContext, linePixels) == 24);
static_assert(offsetof(CodecContext, userData) == 32);
static_assert(offsetof(CodecContext, lastLineOfStrip) == 40);
static_assert(offsetof(CodecContext, lineFormat) == 44);
static_assert(offsetof(CodecContext, bytesPerLine) == 84);
static_assert(offsetof(CodecContext, compression) == 88);
static_assert(offsetof(CodecContext, row) == 92);
static_assert(offsetof(CodecContext, bufferBlock) == 96);
static_assert(offsetof(CodecContext, stream) == 104);
static_assert(offsetof(CodecContext, fillOrder) == 112);
static_assert(offsetof(CodecContext, byteOrder) == 116);
static_assert(offsetof(CodecContext, bufferFilePos) == 120);
static_assert(offsetof(CodecContext, codeBufferSize) == 124);
static_assert(offsetof(CodecContext, dataEnd) == 128);
static_assert(offsetof(CodecContext, strip) == 132);
static_assert(offsetof(CodecContext, stripPos) == 136);
static_assert(offsetof(CodecContext, stripCount) == 140);
static_assert(offsetof(CodecContext, rowsPerStrip) == 144);
static_assert(offsetof(CodecContext, stripLastRow) == 148);
static_assert(offsetof(CodecContext, stripOffsets) == 152);
static_assert(offsetof(CodecContext, stripOffsetsType) == 160);
static_assert(offsetof(CodecContext, stripByteCounts) == 168);
static_assert(offsetof(CodecContext, lineCallback) == 176);
static_assert(offsetof(CodecContext, lineBuffer) == 184);
static_assert(offsetof(CodecContext, lineBufferSize) == 192);
static_assert(offsetof(CodecContext, bitsPerSample) == 196);
static_assert(offsetof(CodecContext, jpegProcess) == 200);
static_assert(offsetof(CodecContext, tileWidth) == 204);
static_assert(offsetof(CodecContext, tileLength) == 208);
static_assert(offsetof(CodecContext, tilesAcross) == 212);
static_assert(offsetof(CodecContext, tilesDown) == 216);
static_assert(offsetof(CodecContext, planarConfiguration) == 220);
static_assert(offsetof(CodecContext, restartInterval) == 224);
static_assert(offsetof(CodecContext, quantisationTables) == 232);
static_assert(offsetof(CodecContext, acTables) == 240);
static_assert(offsetof(CodecContext, dcTables) == 248);
static_assert(offsetof(CodecContext, subSampling) == 256);
static_assert(offsetof(CodecContext, referenceBlackWhite) == 264);
static_assert(sizeof(CodecContext) == 312);

// The rows of a picture. A codec may put a line directly into its row, without a line routine.
struct RowsInPlace {
    uint8_t* first; // row 0
    int64_t step;   // bytes from one row to the next; below 0 for pictures stored bottom up
    uint32_t count;
    bool zeros;   // the rows are new memory, still zero
    uint8_t* end; // end of the rows decoded, as they lie in memory
};

// What the CCITT decoders notice of damage. Healthy lines change nothing in it.
struct LineDamage {
    uint32_t badRows = 0, longestRun = 0;
    uint32_t run = 0, nextRow = 0; // the run of damaged rows before this one
    uint32_t cutColumn = 0;        // where EOLs cut two lines short; 0 when they did not
    uint32_t strayFills = 0;       // rows aligned to bytes with a 1 among the bits skipped behind them
};

// A call by the library itself. Codecs of applications have only the public part.
struct CodecCall : CodecContext {
    // The line routine changes no line and reads no spare bytes, so it may get a line where it lies instead
    // of in the line buffer.
    bool readsLines = false;
    const RowsInPlace* rowsInPlace = nullptr;
    bool endsAtEols = false; // a sequence of EOLs ends the picture, for code whose rows are not known
    LineDamage damage;
};

inline uint32_t Width(const CodecContext* context)
{
    return static_cast<uint32_t>(context->lineFormat.biWidth);
}

inline uint32_t Rows(const CodecContext* context)
{
    return static_cast<uint32_t>(context->lineFormat.biHeight);
}

inline uint32_t SampleBits(const CodecContext* context)
{
    return context->bitsPerSample ? context->bitsPerSample : context->lineFormat.biBitCount;
}

inline bool HasSwappedSamples(const CodecContext* context)
{
    return context->byteOrder == TIFF_MOTOROLA && SampleBits(context) == 16;
}

// A codec ends with ALL_ROWS_DONE; its caller gets success.
inline Status CodecResult(Status status)
{
    return status == ALL_ROWS_DONE ? error::None : status;
}

} // namespace tiff
