#include "codecs/predictor.h"

#include "core/byte_order.h"

namespace tiff {

template <uint32_t CHANNELS>
static void SumBytes(uint8_t* line, uint32_t bytes)
{
    for (uint32_t at = CHANNELS; at < bytes; ++at)
        line[at] = static_cast<uint8_t>(line[at] + line[at - CHANNELS]);
}

static void SumNibbles(uint8_t* line, uint32_t bytes)
{
    uint32_t sum = 0;
    for (uint32_t at = 0; at < bytes; ++at) {
        const uint32_t high = sum + (line[at] >> 4);
        sum = high + line[at];
        line[at] = static_cast<uint8_t>(high << 4 | (sum & 0x0F));
    }
}

static void SumWords(uint8_t* line, uint32_t bytes)
{
    uint16_t sum = 0;
    for (uint32_t at = 0; at + 2 <= bytes; at += 2) {
        sum = static_cast<uint16_t>(sum + Load16(line + at, TIFF_INTEL));
        std::memcpy(line + at, &sum, sizeof(sum));
    }
}

void UndoDifferencing(const CodecContext* context)
{
    uint8_t* line = context->lineBuffer;
    const uint32_t bytes = context->bytesPerLine;
    switch (context->lineFormat.biBitCount) {
    case 4:
        return SumNibbles(line, bytes);
    case 8:
        return SumBytes<1>(line, bytes);
    case 16:
        return SampleBits(context) == 8 ? SumBytes<2>(line, bytes) : SumWords(line, bytes);
    case 24:
        return SumBytes<3>(line, bytes);
    case 32:
        return SumBytes<4>(line, bytes);
    default:
        return;
    }
}

} // namespace tiff
