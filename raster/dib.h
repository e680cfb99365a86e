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

// The number of colours of a depth.
constexpr uint32_t StandardColours(uint32_t bitCount)
{
    return bitCount == 1 || bitCount == 4 || bitCount == 8 ? 1u << bitCount : 0;
}

// Colours of a header: its own count, or else the standard one.
constexpr uint32_t DibColours(const BITMAPINFOHEADER& header)
{
    return header.biClrUsed != 0 ? header.biClrUsed : StandardColours(header.biBitCount);
}

// The claims of a packed DIB, checked to lie inside its block. Both kinds of header and both row orders
// become one form.
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

// Error 16 for a depth that no DIB has. Error 30 for a header without sense, for compressed pixels, and for a
// block shorter than its header says.
[[nodiscard]] Status ViewDib(std::span<const uint8_t> block, DibView& view);

// The same. An unset colour count in the caller's header becomes the standard one.
[[nodiscard]] Status CompleteDib(std::span<uint8_t> block, DibView& view);

// Resolutions of DIB headers; negative ones count as 0.
int32_t ToDotsPerMetre(uint32_t dotsPerInch);
uint32_t ToDotsPerInch(int32_t dotsPerMetre);

// The picture in a view: its first 256 colours, rows counted from the top, a colour space in biCompression.
PictureFormat FormatOfDib(const DibView& view);

} // namespace tiff
