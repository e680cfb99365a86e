// Geometry of packed DIBs, and a checked view of one that a caller hands in.
#pragma once

#include "core/global_block.h"
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
    // Counted from the top.
    const uint8_t* Row(uint32_t row) const
    {
        return pixels + uint64_t{stride} * (topDown ? row : height - 1 - row);
    }
};

// Pixels of 1 and 4 bits.
inline uint32_t BitAt(const uint8_t* row, uint32_t pixel)
{
    return row[pixel / 8] >> (7 - pixel % 8) & 1u;
}

inline uint32_t NibbleAt(const uint8_t* row, uint32_t pixel)
{
    return row[pixel / 2] >> (pixel % 2 ? 0 : 4) & 15u;
}

// Error 16 for a depth that no DIB has. Error 30 for a header without sense, for compressed pixels, and for a
// block shorter than its header says.
[[nodiscard]] Status ViewDib(std::span<const uint8_t> block, DibView& view);

// The same. An unset colour count in the caller's header becomes the standard one.
[[nodiscard]] Status CompleteDib(std::span<uint8_t> block, DibView& view);

// A caller's DIB, locked and viewed for a scope. Error 1 when it cannot be locked, 30 also for more colours
// than its depth has, else as ViewDib.
struct LockedDib {
    Locked<const uint8_t> block;
    DibView view{};
    Status status;

    explicit LockedDib(HGLOBAL dib);
};

// A header for rows from the bottom.
BITMAPINFOHEADER DibHeader(uint32_t width, uint32_t height, uint32_t bitCount, uint32_t colours);

// A packed DIB in the making: its header is written, its colours and rows are not. Not `made` without memory.
struct FreshDib {
    GlobalBlock block;
    Locked<uint8_t> made;
    RGBQUAD* colours = nullptr;
    uint8_t* rows = nullptr; // from the bottom
    size_t stride;

    explicit FreshDib(const BITMAPINFOHEADER& header);
    HGLOBAL Release();
};

// Resolutions of DIB headers; negative ones count as 0.
int32_t ToDotsPerMetre(uint32_t dotsPerInch);
uint32_t ToDotsPerInch(int32_t dotsPerMetre);

// The picture in a view: its first 256 colours, rows counted from the top, a colour space in biCompression.
PictureFormat FormatOfDib(const DibView& view);

} // namespace tiff
