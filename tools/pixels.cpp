#include "pixels.h"

#include "tiff/base.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace tifftool {

namespace {

bool ReadHeader(std::span<const uint8_t> dib, BITMAPINFOHEADER& header)
{
    BITMAPCOREHEADER core;
    header = {};
    if (dib.size() < sizeof header) {
        return false;
    }
    memcpy(&header, dib.data(), sizeof header);
    if (header.biSize == sizeof core) {
        memcpy(&core, dib.data(), sizeof core);
        header = {.biSize = sizeof core,
                  .biWidth = core.bcWidth,
                  .biHeight = core.bcHeight,
                  .biBitCount = core.bcBitCount};
    }
    constexpr WORD depths[] = {1, 4, 8, 24, 32};
    return header.biWidth > 0 && header.biHeight != 0 && header.biHeight != INT32_MIN &&
           header.biCompression == BI_RGB && header.biSize <= dib.size() &&
           std::ranges::find(depths, header.biBitCount) != std::end(depths);
}

} // namespace

Pixels ReadPixels(std::span<const uint8_t> dib)
{
    BITMAPINFOHEADER header;
    if (!ReadHeader(dib, header)) {
        return {};
    }
    Pixels pixels = {};
    pixels.width = static_cast<uint32_t>(header.biWidth);
    pixels.height = static_cast<uint32_t>(std::abs(header.biHeight));
    pixels.fromTop = header.biHeight < 0;
    pixels.dotsAcross = static_cast<uint32_t>(std::max<LONG>(header.biXPelsPerMeter, 0));
    pixels.dotsDown = static_cast<uint32_t>(std::max<LONG>(header.biYPelsPerMeter, 0));
    const uint32_t standard = header.biBitCount <= 8 ? 1u << header.biBitCount : 0;
    const uint64_t stored = header.biClrUsed ? header.biClrUsed : standard;
    const uint64_t colourBytes = header.biSize == sizeof(BITMAPCOREHEADER) ? 3 : 4;
    const uint64_t head = header.biSize + stored * colourBytes;
    pixels.stride = static_cast<size_t>((uint64_t{pixels.width} * header.biBitCount + 31) / 32 * 4);
    if (head + uint64_t{pixels.stride} * pixels.height > dib.size()) {
        return {};
    }
    pixels.rows = dib.data() + head;
    pixels.colours.resize(standard);
    for (size_t index = 0; index < std::min<uint64_t>(stored, standard); ++index) {
        const uint8_t* const colour = &dib[header.biSize + index * static_cast<size_t>(colourBytes)];
        pixels.colours[index] = {colour[2], colour[1], colour[0]};
    }
    pixels.depth = header.biBitCount;
    return pixels;
}

std::span<const uint8_t> StoredRow(const Pixels& pixels, uint32_t row)
{
    const size_t line = pixels.fromTop ? row : pixels.height - 1 - row;
    return {pixels.rows + line * pixels.stride, pixels.stride};
}

uint8_t IndexAt(const Pixels& pixels, std::span<const uint8_t> stored, uint32_t column)
{
    switch (pixels.depth) {
    case 1:
        return stored[column / 8] >> (7 - column % 8) & 1;
    case 4:
        return stored[column / 2] >> (column % 2 ? 0 : 4) & 15;
    default:
        return stored[column];
    }
}

void ReadRow(const Pixels& pixels, uint32_t row, std::span<Rgb> colours)
{
    const std::span<const uint8_t> stored = StoredRow(pixels, row);
    const size_t step = pixels.depth / 8;
    for (uint32_t column = 0; column < pixels.width; ++column) {
        if (pixels.depth <= 8) {
            colours[column] = pixels.colours[IndexAt(pixels, stored, column)];
        } else {
            const uint8_t* const pixel = &stored[column * step];
            colours[column] = {pixel[2], pixel[1], pixel[0]};
        }
    }
}

bool IsGrey(const Pixels& pixels)
{
    return pixels.depth <= 8 && std::ranges::all_of(pixels.colours, [](const Rgb& colour) {
               return colour[0] == colour[1] && colour[1] == colour[2];
           });
}

} // namespace tifftool
