#include "siblings/jpeg.h"

#include "tiff/tiff.h"

#include <algorithm>
#include <initializer_list>

namespace {

constexpr uint32_t LONGEST_LINE = 4096;

JpegCall call;
uint32_t answer = 0;

uint32_t First(HGLOBAL block)
{
    const auto* values = block ? static_cast<const uint32_t*>(GlobalLock(block)) : nullptr;
    const uint32_t first = values ? *values : 0;
    if (values)
        GlobalUnlock(block);
    return first;
}

void Keep(const CodecContext* context)
{
    ++call.count;
    call.context = *context;
    call.tileOffset = First(context->stripOffsets);
    call.quantisationTable = First(context->quantisationTables);
    call.acTable = First(context->acTables);
    call.dcTable = First(context->dcTables);
    call.cursor = GetCursor();
}

bool Store(HGLOBAL block, std::initializer_list<uint32_t> values)
{
    auto* const entries = block ? static_cast<uint32_t*>(GlobalLock(block)) : nullptr;
    if (!entries)
        return false;
    std::copy(values.begin(), values.end(), entries);
    GlobalUnlock(block);
    return true;
}

} // namespace

void AnswerJpeg(uint32_t status)
{
    answer = status;
}

const JpegCall* LastJpegCall()
{
    return &call;
}

// Pixel x of row y is 16 y + x, in each of its bytes.
extern "C" __declspec(dllexport) uint32_t JPEGDecoder(CodecContext* context)
{
    Keep(context);
    for (uint32_t times = context->restartInterval == CLOSES_FILES ? 2 : 0; times > 0; --times)
        CloseTiffFile(OpenTiffInMemory(nullptr, 0, T_CREAT));
    const uint32_t pixelBytes = context->lineFormat.biBitCount / 8u;
    for (; context->row < static_cast<uint32_t>(context->lineFormat.biHeight); ++context->row) {
        uint8_t line[LONGEST_LINE] = {};
        for (uint32_t at = 0; at < std::min(context->bytesPerLine, LONGEST_LINE); ++at)
            line[at] = static_cast<uint8_t>(context->row * 16 + at / pixelBytes);
        if (context->lineCallback(line, context->row, context->userData))
            return 12;
    }
    return answer;
}

extern "C" __declspec(dllexport) uint32_t JPEGEncoder(CodecContext* context)
{
    Keep(context);
    call.rows = call.byteTotal = 0;
    const uint32_t start = mTell(context->stream);
    for (; context->row < static_cast<uint32_t>(context->lineFormat.biHeight); ++context->row) {
        uint8_t line[LONGEST_LINE] = {};
        if (context->lineCallback(line, context->row, context->userData))
            return 12;
        for (uint32_t at = 0; at < context->bytesPerLine; ++at)
            call.byteTotal += line[at];
        if (mWrite(context->stream, line, context->bytesPerLine) != context->bytesPerLine)
            return 6;
        ++call.rows;
    }
    const uint32_t end = mTell(context->stream);
    if (start == STREAM_FAILED || end == STREAM_FAILED)
        return 6;
    context->quantisationTables = GlobalAlloc(GMEM_MOVEABLE, 12);
    const bool stored = Store(context->stripOffsets, {start}) &&
                        Store(context->stripByteCounts, {end - start}) &&
                        Store(context->quantisationTables, {8, 9, 10});
    return stored ? answer : 1;
}
