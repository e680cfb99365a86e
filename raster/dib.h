// Geometry of packed DIBs, and a checked view of one that a caller hands in.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"
#include "raster/picture_format.h"

#include <span>

namespace tiff {

// Bytes of a DIB row.
constexpr uint64_t DibStride(uint32_t width, uint32_t bitCount)
{
    return (uint64_t{width} * bitCount + 31) / 32 * 4;
}

// Colours that a depth calls for.
constexpr uint32_t StandardColours(uint32_t bitCount)
{
    return bitCount == 1 || bitCount == 4 || bitCount == 8 ? 1u << bitCount : 0;
}

// Colours of a header: its own count, or the standard one.
constexpr uint32_t DibColours(const BITMAPINFOHEADER& header)
{
    return header.biClrUsed != 0 ? header.biClrUsed : StandardColours(header.biBitCount);
}

// What a packed DIB says of itself, found to lie inside its block. Both kinds of header and
// rows from the top are brought to one form.
struct DibView {
    uint32_t width, height;
    uint16_t planes, bitCount;
    uint32_t compression;
    int32_t dotsPerMetreX, dotsPerMetreY;
    bool topDown;
    std::span<const uint8_t> colours;
    uint32_t colourBytes; // of one colour: blue, green, red and perhaps a fourth
    uint32_t stride;
    const uint8_t* pixels;

    uint32_t ColourCount() const
    {
        return static_cast<uint32_t>(colours.size()) / colourBytes;
    }
};

// Error 16 for a depth that no DIB has; error 30 when the header makes no sense, is of compressed
// pixels, or the block is shorter than it claims. An unset colour count in the caller's header is set to the
// standard one.
[[nodiscard]] Status CompleteDib(std::span<uint8_t> block, DibView& view);

// The picture that a view shows: its first 256 colours, rows counted from the top, a colour space in
// biCompression.
PictureFormat FormatOfDib(const DibView& view);

} // namespace tiff
