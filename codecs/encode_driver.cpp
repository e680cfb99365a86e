// Writes a page into the file through one open stream: its strips, their tags, the directory. The file's
// record is not locked while the line routine runs.
#include "codecs/encode_driver.h"
#include "codecs/buffers.h"
#include "codecs/codec_table.h"
#include "codecs/decode_driver.h"
#include "core/directory_writer.h"
#include "core/errors.h"
#include "core/open_file.h"

namespace tiff {

namespace {

constexpr uint32_t OPEN_RETRIES = 10;

Status RunEncoder(CodecCall* call, const PageScheme& scheme)
{
    const Status encoded = scheme.encodePicture ? scheme.encodePicture(call) : Encode(call);
    if (const Status status = encoded; status != error::None)
        return status;
    // A line routine may stop with ALL_ROWS_DONE before all rows are done. A page with missing strips must
    // not be linked.
    if (scheme.countsStrips && call->strip < call->stripCount)
        return ALL_ROWS_DONE;
    return FlushCodeBuffer(call);
}

// The tags are not locked any more afterwards: the page gets some while it is encoded.
Status FindScheme(HGLOBAL file, uint32_t page, PageCodecs codecs, const PageScheme*& scheme)
{
    const PageTags tags(file, page);
    if (!tags)
        return error::NotEnoughMemory;
    scheme = &SchemeOf(tags);
    const bool hasPictureCodec = codecs == PageCodecs::All && scheme->encodePicture;
    return scheme->isLeft(tags) && !hasPictureCodec ? scheme->notEncoded : Status{error::None};
}

// The open flags change only with the directory. A new file that fails here keeps its "no header" flag, so
// that the next try begins it afresh.
Status WritePage(CodecCall* call, HGLOBAL file, uint32_t page, PageCodecs codecs)
{
    if (const Status status = DescribeLines(call, file, page); status != error::None)
        return status;
    const PageScheme* found = nullptr;
    if (const Status status = FindScheme(file, page, codecs, found); status != error::None)
        return status;
    const PageScheme& scheme = *found;
    if (const Status status = scheme.describeEncoding(call, file, page); status != error::None)
        return status;
    WritingStream stream(file, OPEN_RETRIES);
    if (!stream)
        return stream.OpenStatus();
    call->stream = stream.Get();
    bool linked = false;
    Status status = BeginPage(stream.Get(), file);
    if (status == error::None)
        status = RunEncoder(call, scheme);
    if (status == error::None)
        status = scheme.defineData(call, file, page);
    if (status == error::None)
        status = WriteDirectory(stream.Get(), file, page, linked);
    if (status == error::None)
        stream.Commit();
    else if (!linked)
        stream.TakeBack();
    return status;
}

} // namespace

Status EncodePage(HGLOBAL file, uint32_t page, const LineFeed& feed, PageCodecs codecs)
{
    if (!feed.routine)
        return error::InvalidParameters;
    CodecCall call{};
    const ContextBlocks blocks(&call);
    call.userData = feed.userData;
    call.lineCallback = feed.routine;
    return WritePage(&call, file, page, codecs);
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t EncodeTiffImage(HGLOBAL file, uint32_t page, void* userData,
                                   TiffLineCallback lineCallback) noexcept
{
    const Status status = EncodePage(file, page, {lineCallback, userData}, PageCodecs::Lines);
    StoreLastError(status);
    return status == error::None;
}
