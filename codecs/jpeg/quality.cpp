#include "codecs/jpeg/quality.h"

#include "codecs/coding_settings.h"
#include "codecs/jpeg/markers.h"
#include "core/errors.h"
#include "core/vocabulary.h"
#include "tiff/save.h"

#include <algorithm>
#include <numeric>

namespace tiff::jpeg {

Quantisers ScaleQuantisers(const std::array<uint8_t, BLOCK_SIZE>& standard, uint32_t quality)
{
    const uint32_t percent = quality < 50 ? 5000 / quality : 200 - quality * 2;
    Quantisers scaled{};
    for (uint32_t at = 0; at < BLOCK_SIZE; ++at)
        scaled[at] = static_cast<uint16_t>(std::clamp((standard[zigzag[at]] * percent + 50) / 100, 1u, 255u));
    return scaled;
}

namespace {

uint8_t* PutMarker(uint8_t* target, uint8_t code)
{
    *target++ = 0xFF;
    *target++ = code;
    return target;
}

uint8_t* PutHead(uint8_t* target, uint8_t code, size_t bytes, uint8_t number)
{
    target = PutMarker(target, code);
    *target++ = static_cast<uint8_t>((bytes + 3) >> 8);
    *target++ = static_cast<uint8_t>(bytes + 3);
    *target++ = number;
    return target;
}

uint8_t* PutQuantisers(uint8_t* target, uint8_t number, const Quantisers& quantisers)
{
    target = PutHead(target, marker::Quantisers, BLOCK_SIZE, number);
    return std::transform(quantisers.begin(), quantisers.end(), target,
                          [](uint16_t quantiser) { return static_cast<uint8_t>(quantiser); });
}

uint8_t* PutHuffmanList(uint8_t* target, uint8_t number, const HuffmanList& list)
{
    const size_t values = std::accumulate(list.counts.begin(), list.counts.end(), size_t{0});
    target = PutHead(target, marker::HuffmanTables, list.counts.size() + values, number);
    target = std::copy(list.counts.begin(), list.counts.end(), target);
    return std::copy_n(list.values.begin(), values, target);
}

} // namespace

size_t WriteTables(bool isColour, uint32_t quality, std::span<uint8_t, MOST_TABLE_BYTES> target)
{
    constexpr uint8_t AC = 0x10;
    uint8_t* at = PutMarker(target.data(), marker::Start);
    at = PutQuantisers(at, 0, ScaleQuantisers(luminanceQuantisers, quality));
    at = PutHuffmanList(at, 0, luminanceDc);
    at = PutHuffmanList(at, AC, luminanceAc);
    if (isColour) {
        at = PutQuantisers(at, 1, ScaleQuantisers(chrominanceQuantisers, quality));
        at = PutHuffmanList(at, 1, chrominanceDc);
        at = PutHuffmanList(at, AC | 1, chrominanceAc);
    }
    at = PutMarker(at, marker::End);
    return static_cast<size_t>(at - target.data());
}

uint32_t ThreadQuality()
{
    const uint32_t chosen = ThreadCoding().jpegQuality;
    return chosen ? chosen : USUAL_QUALITY;
}

} // namespace tiff::jpeg

using namespace tiff;

extern "C" int32_t SetTiffJpegQuality(uint32_t quality) noexcept
{
    if (quality < jpeg::LEAST_QUALITY || quality > jpeg::MOST_QUALITY) {
        SetTiffError(error::InvalidParameters);
        return 0;
    }
    ThreadCoding().jpegQuality = quality;
    return 1;
}

extern "C" uint32_t GetTiffJpegQuality(void) noexcept
{
    return jpeg::ThreadQuality();
}
