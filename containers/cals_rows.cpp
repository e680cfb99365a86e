#include "containers/cals_rows.h"

#include "core/stream.h"
#include "raster/dib.h"

#include <array>

namespace tiff::cals {

namespace {

// A body cut off at its beginning has rows like one that is cut off later: white ones.
Status DecodeNothing(const RowSource&, const LineTarget&)
{
    return error::UnexpectedEndOfFile;
}

} // namespace

Status ReadHeader(TiffStream stream, NewHeader header)
{
    uint32_t fileBytes;
    if (ReadStream(stream, header.data(), HEADER_BYTES) == HEADER_BYTES)
        return IsHeader(header) ? error::None : error::NotCals;
    // A file that is long enough could not be read.
    return SizeToRead(stream, fileBytes) && fileBytes < HEADER_BYTES ? error::NotCals : error::InputOutput;
}

Status ReadHeaderOfFile(const char* path, NewHeader header)
{
    if (!path || !*path)
        return error::InvalidParameters;
    const Stream file(OpenForReading(path));
    return file ? ReadHeader(file.Get(), header) : Status{error::InputOutput};
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
    // A DIB's header holds 31 bits of each. A row has an eighth of its pixels in bytes, so that the product
    // stays within 64 bits even for larger numbers.
    if (width > INT32_MAX || lines > INT32_MAX || DibStride(width, 1) * lines > UINT32_MAX)
        return error::NotEnoughMemory;
    const int32_t dotsPerMetre = ToDotsPerMetre(information.dotsPerInch);
    source = OpenBareRows({.stream = stream,
                           .width = width,
                           .rows = lines,
                           .compression = compression::Group4,
                           .fillOrder = TIFF_MSB_FIRST,
                           .byteOrder = TIFF_INTEL,
                           .offset = HEADER_BYTES},
                          BilevelFormat(width, lines, dotsPerMetre, dotsPerMetre));
    uint32_t bytes;
    if (!SizeToRead(stream, bytes))
        return error::InputOutput;
    if (bytes <= HEADER_BYTES)
        source.decode = DecodeNothing;
    return error::None;
}

} // namespace tiff::cals
