// CCITT code from a bare stream, as one strip.
#include "codecs/buffers.h"
#include "codecs/ccitt_decoder.h"
#include "codecs/codec_table.h"
#include "core/byte_order.h"
#include "core/errors.h"
#include "tiff/ccitt.h"

namespace tiff {

namespace {

struct RawImage {
    TiffStream stream;
    uint32_t offset; // 0, or beyond the data, for the current position
    uint32_t width, rows;
    uint32_t compression;
    uint32_t fillOrder, byteOrder;
    void* userData;
    TiffLineCallback lineCallback;
};

// Positions the stream and finds how much there is to decode.
bool FindData(const RawImage& image, uint32_t& dataBytes)
{
    const uint32_t size = mSize(image.stream);
    if (size == STREAM_FAILED)
        return false;
    uint32_t start = image.offset;
    if (start != 0 && start < size)
        start = mSeek(image.stream, start, 0);
    else
        start = mTell(image.stream);
    if (start == STREAM_FAILED)
        return false;
    dataBytes = start < size ? size - start : 0;
    return true;
}

int32_t DecodeRaw(const RawImage& image, CodecRoutine decode)
{
    if (image.width == 0 || image.rows == 0)
        return 0;
    CodecContext context{};
    const ContextBlocks blocks(&context);
    Status status = error::None;
    if (image.width > INT32_MAX)
        status = error::NotEnoughMemory;
    else if (!FindData(image, context.dataEnd))
        status = error::InputOutput;
    if (status == error::None) {
        context.stream = image.stream;
        context.userData = image.userData;
        context.lineCallback = image.lineCallback;
        context.lineFormat = {.biSize = sizeof(BITMAPINFOHEADER),
                              .biWidth = static_cast<int32_t>(image.width),
                              .biHeight = static_cast<int32_t>(image.rows),
                              .biPlanes = 1,
                              .biBitCount = 1,
                              .biCompression = 0,
                              .biSizeImage = 0,
                              .biXPelsPerMeter = 0,
                              .biYPelsPerMeter = 0,
                              .biClrUsed = 2,
                              .biClrImportant = 2};
        context.bytesPerLine = (image.width + 7) / 8;
        context.compression = image.compression;
        context.fillOrder = image.fillOrder == LSB_FIRST ? LSB_FIRST : 1;
        context.byteOrder = image.byteOrder == TIFF_MOTOROLA ? TIFF_MOTOROLA : TIFF_INTEL;
        context.rowsPerStrip = image.rows;
        status = decode(&context);
    }
    StoreLastError(status);
    return status == error::None;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" int32_t DecodeCcittImage(TiffStream stream, uint32_t width, uint32_t rows, uint32_t compression,
                                    void* userData, TiffLineCallback lineCallback) noexcept
{
    return DecodeRaw({stream, 0, width, rows, compression, 1, TIFF_INTEL, userData, lineCallback}, Decode);
}

extern "C" int32_t DecodeCcittImageFrom(TiffStream stream, uint32_t offset, uint32_t width, uint32_t rows,
                                        uint32_t compression, uint32_t fillOrder, uint32_t byteOrder,
                                        void* userData, TiffLineCallback lineCallback) noexcept
{
    return DecodeRaw({stream, offset, width, rows, compression, fillOrder, byteOrder, userData, lineCallback},
                     Decode);
}

extern "C" int32_t DecodeMMRImage(TiffStream stream, uint32_t offset, uint32_t width, uint32_t rows,
                                  uint32_t /*compression*/, uint32_t fillOrder, uint32_t byteOrder,
                                  void* userData, TiffLineCallback lineCallback) noexcept
{
    return DecodeRaw({stream, offset, width, rows, 0, fillOrder, byteOrder, userData, lineCallback},
                     DecodeMmrRecords);
}
