// CCITT code onto a bare stream, as one strip.
#include "codecs/buffers.h"
#include "codecs/ccitt/encoder.h"
#include "codecs/ccitt/raw.h"
#include "codecs/coding_settings.h"
#include "core/errors.h"
#include "tiff/ccitt.h"

namespace tiff {

namespace {

constexpr int32_t LEAST_K_FACTOR = 2;

int32_t EncodeForCaller(const RawImage& image, const LineFeed& feed, CodecRoutine encode)
{
    if (image.width == 0 || image.rows == 0)
        return 0;
    const Status status = EncodeRawImage(image, feed, encode);
    StoreLastError(status);
    return status == error::None;
}

} // namespace

Status EncodeRawImage(const RawImage& image, const LineFeed& feed, CodecRoutine encode)
{
    if (!feed.routine)
        return error::InvalidParameters;
    CodecCall call{};
    const ContextBlocks blocks(&call);
    call.userData = feed.userData;
    call.lineCallback = feed.routine;
    Status status = DescribeRawImage(&call, image);
    if (status == error::None)
        status = encode(&call);
    return status == error::None ? FlushCodeBuffer(&call) : status;
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t EncodeCcittImage(TiffStream stream, uint32_t width, uint32_t rows, uint32_t compression,
                                    void* userData, TiffLineCallback lineCallback) noexcept
{
    return EncodeForCaller({stream, width, rows, compression, 1, TIFF_INTEL}, {lineCallback, userData},
                           Encode);
}

extern "C" int32_t EncodeCcittImageTo(TiffStream stream, uint32_t width, uint32_t rows, uint32_t fillOrder,
                                      uint32_t byteOrder, uint32_t compression, void* userData,
                                      TiffLineCallback lineCallback) noexcept
{
    return EncodeForCaller({stream, width, rows, compression, fillOrder, byteOrder}, {lineCallback, userData},
                           Encode);
}

extern "C" int32_t EncodeMMRImage(TiffStream stream, uint32_t width, uint32_t rows, uint32_t /*compression*/,
                                  void* userData, TiffLineCallback lineCallback) noexcept
{
    return EncodeForCaller({stream, width, rows, 0, 1, TIFF_INTEL}, {lineCallback, userData},
                           EncodeMmrRecords);
}

extern "C" int32_t SetKfactor(int32_t k) noexcept
{
    if (k < LEAST_K_FACTOR)
        return 0;
    ThreadCoding().chosenK = static_cast<uint32_t>(k);
    return 1;
}
