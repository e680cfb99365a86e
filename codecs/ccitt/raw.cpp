// CCITT code from a bare stream, as one strip.
#include "codecs/ccitt/raw.h"

#include "codecs/buffers.h"
#include "codecs/ccitt/decoder.h"
#include "codecs/decode_quality.h"
#include "core/byte_order.h"
#include "core/errors.h"
#include "core/stream.h"
#include "tiff/ccitt.h"

namespace tiff {

namespace {

// Positions the stream and finds the size of the data. An offset of 0, or beyond the data, means the current
// position.
bool FindData(TiffStream stream, uint32_t offset, uint32_t& dataBytes)
{
    uint32_t size;
    if (!SizeToRead(stream, size))
        return false;
    const uint32_t start = offset != 0 && offset < size ? mSeek(stream, offset, 0) : mTell(stream);
    if (start == STREAM_FAILED)
        return false;
    dataBytes = start < size ? size - start : 0;
    return true;
}

// Deliberate: a picture without pixels fails and sets no error.
int32_t DecodeForCaller(const RawImage& image, const LineTarget& target, CodecRoutine decode)
{
    if (image.width == 0 || image.rows == 0)
        return 0;
    const Status status = DecodeRawImage(image, target, decode);
    StoreLastError(status);
    return status == error::None;
}

} // namespace

Status DescribeRawImage(CodecContext* context, const RawImage& image)
{
    if (image.width > INT32_MAX)
        return error::NotEnoughMemory;
    context->stream = image.stream;
    BITMAPINFOHEADER& format = context->lineFormat;
    format.biSize = sizeof(format);
    format.biWidth = static_cast<int32_t>(image.width);
    format.biHeight = static_cast<int32_t>(image.rows);
    format.biPlanes = 1;
    format.biBitCount = 1;
    format.biClrUsed = 2;
    format.biClrImportant = 2;
    context->bytesPerLine = (image.width + 7) / 8;
    context->compression = image.compression;
    context->fillOrder = image.fillOrder == TIFF_LSB_FIRST ? TIFF_LSB_FIRST : TIFF_MSB_FIRST;
    context->byteOrder = image.byteOrder == TIFF_MOTOROLA ? TIFF_MOTOROLA : TIFF_INTEL;
    context->rowsPerStrip = image.rows;
    return error::None;
}

Status DecodeRawImage(const RawImage& image, const LineTarget& target, CodecRoutine decode)
{
    ForgetQuality();
    if (!target.routine)
        return error::InvalidParameters;
    CodecCall call{};
    const ContextBlocks blocks(&call);
    if (const Status status = DescribeRawImage(&call, image); status != error::None)
        return status;
    if (!FindData(image.stream, image.offset, call.dataEnd))
        return error::InputOutput;
    RowsInPlace rows;
    TakeTarget(&call, target, rows);
    const Status status = decode(&call);
    NoteQuality(call, 0);
    return status;
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t DecodeCcittImage(TiffStream stream, uint32_t width, uint32_t rows, uint32_t compression,
                                    void* userData, TiffLineCallback lineCallback) noexcept
{
    return DecodeForCaller({stream, width, rows, compression, 1, TIFF_INTEL}, {lineCallback, userData},
                           Decode);
}

extern "C" int32_t DecodeCcittImageFrom(TiffStream stream, uint32_t offset, uint32_t width, uint32_t rows,
                                        uint32_t compression, uint32_t fillOrder, uint32_t byteOrder,
                                        void* userData, TiffLineCallback lineCallback) noexcept
{
    return DecodeForCaller({stream, width, rows, compression, fillOrder, byteOrder, offset},
                           {lineCallback, userData}, Decode);
}

extern "C" int32_t DecodeMMRImage(TiffStream stream, uint32_t offset, uint32_t width, uint32_t rows,
                                  uint32_t /*compression*/, uint32_t fillOrder, uint32_t byteOrder,
                                  void* userData, TiffLineCallback lineCallback) noexcept
{
    return DecodeForCaller({stream, width, rows, 0, fillOrder, byteOrder, offset}, {lineCallback, userData},
                           DecodeMmrRecords);
}
