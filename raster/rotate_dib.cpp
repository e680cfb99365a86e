// Packed DIBs turned by quarters, for callers.
#include "core/errors.h"
#include "raster/dib.h"
#include "raster/rotate.h"
#include "tiff/crop.h"

#include <cstring>
#include <utility>

namespace tiff {

namespace {

constexpr PixelForm FormOf(uint32_t bitCount)
{
    switch (bitCount) {
    case 1:
        return PixelForm::Bits;
    case 4:
        return PixelForm::Nibbles;
    case 8:
        return PixelForm::Bytes;
    case 16:
        return PixelForm::Pairs;
    case 24:
        return PixelForm::Triples;
    default:
        return PixelForm::Quads;
    }
}

// The rows as the result stores them, from the bottom. Seen so, a picture turns the other way.
PixelRows RowsFromBottom(const DibView& view)
{
    const auto stride = static_cast<ptrdiff_t>(view.stride);
    return {view.width, view.height, view.topDown ? -stride : stride, view.Row(view.height - 1)};
}

constexpr Turn seenFromBottom[] = {Turn::None, Turn::ThreeQuarters, Turn::Half, Turn::Quarter};

// The resolutions turn with the picture. A colour space stays what it is.
BITMAPINFOHEADER TurnedHeader(const DibView& view, uint32_t quarters)
{
    const bool odd = quarters % 2 != 0;
    BITMAPINFOHEADER header = DibHeader(odd ? view.height : view.width, odd ? view.width : view.height,
                                        view.bitCount, view.bitCount <= 8 ? view.ColourCount() : 0);
    header.biCompression = view.compression;
    header.biXPelsPerMeter = odd ? view.dotsPerMetreY : view.dotsPerMetreX;
    header.biYPelsPerMeter = odd ? view.dotsPerMetreX : view.dotsPerMetreY;
    return header;
}

void FillRows(const DibView& view, uint32_t quarters, const BITMAPINFOHEADER& header, const FreshDib& result)
{
    const PixelRows rows = RowsFromBottom(view);
    const auto height = static_cast<uint32_t>(header.biHeight);
    const size_t used = (size_t{static_cast<uint32_t>(header.biWidth)} * view.bitCount + 7) / 8;
    for (uint32_t row = 0; row < height; ++row) {
        uint8_t* const target = result.rows + result.stride * row;
        if (quarters == 0)
            std::memcpy(target, rows.Row(row), used);
        std::memset(target + used, 0, result.stride - used);
    }
    if (quarters != 0)
        TurnRows(seenFromBottom[quarters], FormOf(view.bitCount), rows, result.rows,
                 static_cast<uint32_t>(result.stride));
}

HGLOBAL Rotate(const LockedDib& dib, uint32_t quarters, Status& status)
{
    const DibView& view = dib.view;
    status = dib.status;
    if (status != error::None)
        return nullptr;
    const BITMAPINFOHEADER header = TurnedHeader(view, quarters);
    FreshDib result(header);
    if (!result.made) {
        status = error::NotEnoughMemory;
        return nullptr;
    }
    for (uint32_t index = 0; index < header.biClrUsed; ++index) {
        const uint8_t* colour = &view.colours[size_t{index} * view.colourBytes];
        result.colours[index] = {colour[0], colour[1], colour[2], 0};
    }
    FillRows(view, quarters, header, result);
    return result.Release();
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" HGLOBAL RotateDIB(HGLOBAL dib, int32_t quarters) noexcept
{
    Status status;
    HGLOBAL result = Rotate(LockedDib(dib), static_cast<uint32_t>(quarters) % 4, status);
    StoreLastError(status);
    return result;
}
