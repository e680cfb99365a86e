#include "containers/cals_rows.h"

#include "core/stream.h"
#include "raster/dib.h"

#include <algorithm>
#include <array>

namespace tiff::cals {

namespace {

int32_t DotsPerMetre(uint32_t dotsPerInch)
{
    return static_cast<int32_t>(std::min<double>(dotsPerInch * INCHES_PER_METRE + 0.5, INT32_MAX));
}

} // namespace

Status ReadHeader(TiffStream stream, NewHeader header)
{
    const uint32_t bytes = mRead(stream, header.data(), HEADER_BYTES);
    if (bytes == STREAM_FAILED)
        return error::InputOutput;
    return bytes == HEADER_BYTES && IsHeader(header) ? error::None : error::NotCals;
}

Status OpenRows(TiffStream stream, RowSource& source)
{
    std::array<uint8_t, HEADER_BYTES> header;
    if (const Status status = ReadHeader(stream, header); status != error::None)
        return status;
    TiffCalsInformation information;
    if (!ReadInformation(header, information))
        return error::NotCals;
    const uint32_t width = information.pixelsPerLine, lines = information.lines;
    // Both are less than 2^32, so that their product fits. What a DIB's header holds is less still.
    if (width > INT32_MAX || lines > INT32_MAX || DibStride(width, 1) * lines > UINT32_MAX)
        return error::NotEnoughMemory;
    const int32_t dotsPerMetre = DotsPerMetre(information.dotsPerInch);
    source = OpenBareRows({.stream = stream,
                           .width = width,
                           .rows = lines,
                           .compression = compression::Group4,
                           .fillOrder = TIFF_MSB_FIRST,
                           .byteOrder = TIFF_INTEL,
                           .offset = HEADER_BYTES},
                          BilevelFormat(width, lines, dotsPerMetre, dotsPerMetre));
    return error::None;
}

} // namespace tiff::cals
