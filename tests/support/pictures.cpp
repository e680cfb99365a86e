#include "support/pictures.h"

#include <cstring>
#include <gtest/gtest.h>

std::string Decoded::Pixels(uint32_t width) const
{
    std::string drawn;
    for (const Bytes& row : rows) {
        drawn += drawn.empty() ? "" : "/";
        for (uint32_t column = 0; column < width; ++column)
            drawn += row[column / 8] >> (7 - column % 8) & 1 ? '#' : '.';
    }
    return drawn;
}

Bytes Decoded::Joined() const
{
    Bytes all;
    for (const Bytes& row : rows)
        all.insert(all.end(), row.begin(), row.end());
    return all;
}

intptr_t CollectRow(void* line, uint32_t row, void* collector)
{
    auto& target = *static_cast<RowCollector*>(collector);
    const auto* bytes = static_cast<const uint8_t*>(line);
    target.decoded.rows.emplace_back(bytes, bytes + target.rowBytes);
    target.decoded.numbers.push_back(row);
    return row == target.stopRow ? target.stopStatus : 0;
}

intptr_t FillRow(void* line, uint32_t row, void* rowSource)
{
    auto& source = *static_cast<RowSource*>(rowSource);
    EXPECT_EQ(row, source.calls++);
    if (source.closedStream != 0)
        mClose(source.closedStream);
    const Bytes& pixels = source.lines[row % source.lines.size()];
    std::memcpy(line, pixels.data(), pixels.size());
    return row == source.stopRow ? source.stopStatus : 0;
}

Decoded DecodePage(HGLOBAL file, uint32_t page, uint32_t firstStrip, uint32_t rowCount)
{
    BITMAPINFOHEADER header{};
    GetTiffImage(file, page);
    GetTiffDimensions(file, page, &header);
    RowCollector collector{
        static_cast<uint32_t>((uint64_t{static_cast<uint32_t>(header.biWidth)} * header.biBitCount + 7) / 8)};
    collector.decoded.result = DecodeTiffImage(file, page, firstStrip, rowCount, &collector, CollectRow);
    collector.decoded.error = TiffError();
    return collector.decoded;
}

Decoded DecodeFile(const Bytes& tiff)
{
    MemoryTiff opened(tiff);
    return DecodePage(opened.file, 0);
}

Bytes PackedDib(const DibPicture& picture)
{
    BITMAPINFOHEADER header{};
    header.biSize = sizeof(header);
    header.biWidth = static_cast<int32_t>(picture.width);
    header.biHeight = static_cast<int32_t>(picture.topDown ? 0u - picture.height : picture.height);
    header.biPlanes = 1;
    header.biBitCount = picture.bits;
    header.biXPelsPerMeter = picture.dotsPerMetre[0];
    header.biYPelsPerMeter = picture.dotsPerMetre[1];
    header.biClrUsed = picture.colourCount;
    Bytes dib(sizeof(header));
    std::memcpy(dib.data(), &header, sizeof(header));
    for (const uint32_t colour : picture.colours)
        dib = dib + Bytes{static_cast<uint8_t>(colour), static_cast<uint8_t>(colour >> 8),
                          static_cast<uint8_t>(colour >> 16), 0};
    return dib + picture.pixels;
}
