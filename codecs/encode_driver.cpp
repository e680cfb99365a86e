// Writes a page into the file through one open stream: its strips, their tags, the directory. The file's
// record is not locked while the line routine runs.
#include "codecs/encode_driver.h"
#include "codecs/buffers.h"
#include "codecs/codec_table.h"
#include "codecs/decode_driver.h"
#include "core/directory_writer.h"
#include "core/error_detail.h"
#include "core/errors.h"
#include "core/open_file.h"
#include "tiff/define.h"

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

// Puts a page's code, given as a routine with its record, and its directory at the end of the file. The open
// flags change only with the directory. A new file that fails here keeps its "no header" flag, so that the
// next try begins it afresh.
struct CodeWriter {
    Status (*write)(void* record, TiffStream stream);
    void* record;
};

Status PutPage(HGLOBAL file, uint32_t page, const CodeWriter& code)
{
    WritingStream stream(file, OPEN_RETRIES);
    if (!stream)
        return stream.OpenStatus();
    bool linked = false;
    Status status = BeginPage(stream.Get(), file);
    if (status == error::None)
        status = code.write(code.record, stream.Get());
    if (status == error::None)
        status = WriteDirectory(stream.Get(), file, page, linked);
    if (status == error::None)
        stream.Commit();
    else if (!linked)
        stream.TakeBack();
    return status;
}

struct Encoding {
    CodecCall* call;
    HGLOBAL file;
    uint32_t page;
    const PageScheme& scheme;
};

Status WriteEncoded(void* record, TiffStream stream)
{
    const auto& encoding = *static_cast<const Encoding*>(record);
    encoding.call->stream = stream;
    const Status status = RunEncoder(encoding.call, encoding.scheme);
    return status == error::None ? encoding.scheme.defineData(encoding.call, encoding.file, encoding.page)
                                 : status;
}

Status EncodeAndPut(CodecCall* call, HGLOBAL file, uint32_t page, PageCodecs codecs)
{
    if (const Status status = DescribeLines(call, file, page); status != error::None)
        return status;
    const PageScheme* found = nullptr;
    if (const Status status = FindScheme(file, page, codecs, found); status != error::None)
        return status;
    const PageScheme& scheme = *found;
    if (const Status status = scheme.describeEncoding(call, file, page); status != error::None)
        return status;
    Encoding encoding = {call, file, page, scheme};
    return PutPage(file, page, {WriteEncoded, &encoding});
}

struct FinishedCode {
    std::span<const uint8_t> bytes;
    HGLOBAL file;
    uint32_t page;
};

Status WriteFinished(void* record, TiffStream stream)
{
    const auto& code = *static_cast<const FinishedCode*>(record);
    const auto count = static_cast<uint32_t>(code.bytes.size());
    const uint32_t offset = mTell(stream);
    if (offset == STREAM_FAILED || WriteStream(stream, code.bytes.data(), count) != count)
        return error::InputOutput;
    return DefineTiffImageInfo(code.file, code.page, tag::StripOffsets, fieldtype::Long, offset) &&
                   DefineTiffImageInfo(code.file, code.page, tag::StripByteCounts, fieldtype::Long, count)
               ? error::None
               : error::NotEnoughMemory;
}

} // namespace

Status PutCode(HGLOBAL file, uint32_t page, std::span<const uint8_t> bytes)
{
    ForgetFacts();
    FinishedCode code = {bytes, file, page};
    const Status status = PutPage(file, page, {WriteFinished, &code});
    NotePage(status, file, page);
    return status;
}

Status EncodePage(HGLOBAL file, uint32_t page, const LineFeed& feed, PageCodecs codecs)
{
    if (!feed.routine)
        return error::InvalidParameters;
    CodecCall call{};
    const ContextBlocks blocks(&call);
    call.userData = feed.userData;
    call.lineCallback = feed.routine;
    ForgetFacts();
    const Status status = EncodeAndPut(&call, file, page, codecs);
    NotePage(status, file, page);
    return status;
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
