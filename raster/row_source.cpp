#include "raster/row_source.h"

#include "codecs/decode_driver.h"
#include "core/registry.h"

namespace tiff {

static Status DecodeLines(const RowSource& source, const LineTarget& target)
{
    return DecodePage(source.file, source.page, 0, 0, target);
}

static Status DecodeBare(const RowSource& source, const LineTarget& target)
{
    return DecodeRawImage(source.code, target);
}

// The library has no codec for such pages yet.
static Status DecodeWithPictureCodec(const RowSource&, const LineTarget&)
{
    return error::UnknownCompression;
}

Status OpenPageRows(HGLOBAL file, uint32_t page, PageRows rows, RowSource& source)
{
    const PageTags tags(file, page);
    if (!tags)
        return PageStatus(file, page);
    source.decode = DecodeLines;
    if (rows == PageRows::Any && IsLeftToPictureCodec(tags))
        source.decode = DecodeWithPictureCodec;
    source.file = file;
    source.page = page;
    return FormatOfPage(tags, rows == PageRows::ColourSpace, source.format);
}

RowSource OpenBareRows(const RawImage& code, const PictureFormat& format)
{
    return {.decode = DecodeBare, .format = format, .code = code};
}

Status SendRows(const RowSource& source, RowSink& sink)
{
    Status status = sink.begin ? sink.begin(sink.record, source.format, sink.lines) : Status{error::None};
    if (status == error::None)
        status = source.decode(source, sink.lines);
    return sink.end ? sink.end(sink.record, status) : status;
}

} // namespace tiff
