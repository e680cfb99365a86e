#include "raster/dib.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace tiff {

namespace {

constexpr uint32_t LAST_PIXEL_COMPRESSION = 5; // larger values of the field are colour spaces

struct HeaderFacts {
    int64_t width, height; // height below 0 for rows from the top
    uint64_t headerBytes, colourCount;
};

constexpr bool IsDepth(uint32_t bitCount)
{
    return StandardColours(bitCount) != 0 || bitCount == 16 || bitCount == 24 || bitCount == 32;
}

bool ReadCoreHeader(std::span<const uint8_t> block, DibView& view, HeaderFacts& facts)
{
    BITMAPCOREHEADER header;
    if (block.size() < sizeof(header))
        return false;
    std::memcpy(&header, block.data(), sizeof(header));
    facts = {header.bcWidth, header.bcHeight, sizeof(header), StandardColours(header.bcBitCount)};
    view.planes = header.bcPlanes;
    view.bitCount = header.bcBitCount;
    view.colourBytes = sizeof(RGBTRIPLE);
    return true;
}

bool ReadInfoHeader(std::span<const uint8_t> block, DibView& view, HeaderFacts& facts)
{
    BITMAPINFOHEADER header;
    if (block.size() < sizeof(header))
        return false;
    std::memcpy(&header, block.data(), sizeof(header));
    if (header.biSize < sizeof(header) || header.biSize > block.size())
        return false;
    facts = {header.biWidth, header.biHeight, header.biSize, DibColours(header)};
    view.planes = header.biPlanes;
    view.bitCount = header.biBitCount;
    view.compression = header.biCompression;
    view.dotsPerMetreX = header.biXPelsPerMeter;
    view.dotsPerMetreY = header.biYPelsPerMeter;
    view.colourBytes = sizeof(RGBQUAD);
    return true;
}

} // namespace

Status ViewDib(std::span<const uint8_t> block, DibView& view)
{
    view = {};
    uint32_t headerBytes = 0;
    HeaderFacts facts{};
    if (block.size() >= sizeof(headerBytes))
        std::memcpy(&headerBytes, block.data(), sizeof(headerBytes));
    const bool read = headerBytes == sizeof(BITMAPCOREHEADER) ? ReadCoreHeader(block, view, facts)
                                                              : ReadInfoHeader(block, view, facts);
    if (read && !IsDepth(view.bitCount))
        return error::ColourFormat;
    const bool compressed = view.compression != 0 && view.compression <= LAST_PIXEL_COMPRESSION;
    if (!read || compressed || facts.width <= 0 || facts.height == 0)
        return error::BadDib;
    view.topDown = facts.height < 0;
    view.width = static_cast<uint32_t>(facts.width);
    view.height = static_cast<uint32_t>(view.topDown ? -facts.height : facts.height);

    const uint64_t stride = DibStride(view.width, view.bitCount);
    const uint64_t colourBytes = facts.colourCount * view.colourBytes;
    const uint64_t pixelsAt = facts.headerBytes + colourBytes;
    if (stride > UINT32_MAX || pixelsAt > block.size() || stride * view.height > block.size() - pixelsAt)
        return error::BadDib;
    view.stride = static_cast<uint32_t>(stride);
    view.colours = block.subspan(static_cast<size_t>(facts.headerBytes), static_cast<size_t>(colourBytes));
    view.pixels = block.data() + pixelsAt;
    return error::None;
}

LockedDib::LockedDib(HGLOBAL dib) : block(dib), status(error::NotEnoughMemory)
{
    if (!block)
        return;
    status = ViewDib({block.Get(), GlobalSize(dib)}, view);
    const uint32_t most = StandardColours(view.bitCount);
    if (status == error::None && most != 0 && view.ColourCount() > most)
        status = error::BadDib;
}

BITMAPINFOHEADER DibHeader(uint32_t width, uint32_t height, uint32_t bitCount, uint32_t colours)
{
    BITMAPINFOHEADER header{};
    header.biSize = sizeof(header);
    header.biWidth = static_cast<int32_t>(width);
    header.biHeight = static_cast<int32_t>(height);
    header.biPlanes = 1;
    header.biBitCount = static_cast<WORD>(bitCount);
    header.biSizeImage = static_cast<uint32_t>(DibStride(width, bitCount) * height);
    header.biClrUsed = colours;
    return header;
}

static uint64_t PixelsAt(const BITMAPINFOHEADER& header)
{
    return sizeof(header) + uint64_t{header.biClrUsed} * sizeof(RGBQUAD);
}

static uint64_t StrideOf(const BITMAPINFOHEADER& header)
{
    return DibStride(static_cast<uint32_t>(header.biWidth), header.biBitCount);
}

// More pixels than a header can count are more than there is memory for.
static uint64_t BytesOf(const BITMAPINFOHEADER& header)
{
    const uint64_t pixelBytes = StrideOf(header) * static_cast<uint32_t>(header.biHeight);
    return pixelBytes <= UINT32_MAX ? PixelsAt(header) + pixelBytes : UINT64_MAX;
}

FreshDib::FreshDib(const BITMAPINFOHEADER& header)
    : block(GlobalBlock::Uncleared(BytesOf(header))), made(block.Get()),
      stride(static_cast<size_t>(StrideOf(header)))
{
    if (!made)
        return;
    std::memcpy(made.Get(), &header, sizeof(header));
    colours = reinterpret_cast<RGBQUAD*>(made.Get() + sizeof(header));
    rows = made.Get() + PixelsAt(header);
}

HGLOBAL FreshDib::Release()
{
    made.Unlock();
    return block.Release();
}

Status CompleteDib(std::span<uint8_t> block, DibView& view)
{
    const Status status = ViewDib(block, view);
    if (status == error::None && view.colourBytes == sizeof(RGBQUAD)) {
        const uint32_t colours = view.ColourCount();
        std::memcpy(block.data() + offsetof(BITMAPINFOHEADER, biClrUsed), &colours, sizeof(colours));
    }
    return status;
}

int32_t ToDotsPerMetre(uint32_t dotsPerInch)
{
    return static_cast<int32_t>(std::min<double>(dotsPerInch * INCHES_PER_METRE + 0.5, INT32_MAX));
}

uint32_t ToDotsPerInch(int32_t dotsPerMetre)
{
    return static_cast<uint32_t>(std::max(dotsPerMetre, 0) / INCHES_PER_METRE + 0.5);
}

PictureFormat FormatOfDib(const DibView& view)
{
    PictureFormat format{};
    BITMAPINFOHEADER& header = format.stored;
    header.biSize = sizeof(header);
    header.biWidth = static_cast<int32_t>(view.width);
    header.biHeight = static_cast<int32_t>(view.height);
    header.biPlanes = 1;
    header.biBitCount = view.bitCount;
    header.biCompression = view.compression;
    header.biClrUsed = view.ColourCount();
    header.biXPelsPerMeter = view.dotsPerMetreX;
    header.biYPelsPerMeter = view.dotsPerMetreY;
    const size_t colours = std::min<size_t>(header.biClrUsed, format.colours.size());
    for (size_t index = 0; index < colours; ++index) {
        const uint8_t* colour = &view.colours[index * view.colourBytes];
        format.colours[index] = {colour[0], colour[1], colour[2], 0};
    }
    format.lineBytes = static_cast<uint32_t>((uint64_t{view.width} * view.bitCount + 7) / 8);
    return format;
}

} // namespace tiff
