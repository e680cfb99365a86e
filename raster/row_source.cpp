#include "raster/row_source.h"

#include "codecs/codec_table.h"
#include "codecs/decode_driver.h"
#include "codecs/decode_quality.h"
#include "core/error_detail.h"
#include "core/registry.h"
#include "raster/colour.h"

namespace tiff {

static Status DecodeLines(const RowSource& source, const LineTarget& target)
{
    return DecodePage(source.file, source.page, 0, 0, target);
}

static Status DecodeBare(const RowSource& source, const LineTarget& target)
{
    return DecodeRawImage(source.code, target);
}

// Inks on their way to a routine for blue, green and red.
struct InkLines {
    const LineTarget& target;
    uint32_t width;
};

static intptr_t ConvertInkLine(void* line, uint32_t row, void* record)
{
    const auto& inks = *static_cast<const InkLines*>(record);
    auto* const bytes = static_cast<uint8_t*>(line);
    ConvertCmyk(bytes, bytes, inks.width);
    return inks.target.routine(line, row, inks.target.userData);
}

static Status DecodeWithPictureCodec(const RowSource& source, const LineTarget& target)
{
    constexpr uint32_t INKS = 4;
    ForgetQuality();
    const PageTags tags(source.file, source.page);
    if (!tags)
        return error::NotEnoughMemory;
    const auto decode = SchemeOf(tags).decodePicture;
    if (!decode)
        return error::UnknownCompression;
    if (tags.Value(tag::SamplesPerPixel, 1) != INKS)
        return decode(source.file, source.page, target);
    InkLines inks = {target, static_cast<uint32_t>(source.format.stored.biWidth)};
    return decode(source.file, source.page, {ConvertInkLine, &inks});
}

// A codec for whole pictures gives colours as a DIB stores them.
static void TakeDibColours(PictureFormat& format)
{
    if (format.stored.biBitCount < 24)
        return;
    format.stored.biBitCount = format.dib.biBitCount = 24;
    format.conversion = Conversion::Copy;
    format.lineBytes = static_cast<uint32_t>(format.stored.biWidth) * 3;
}

Status OpenPageRows(HGLOBAL file, uint32_t page, PageRows rows, RowSource& source)
{
    ForgetQuality(); // also of a page that fails here
    const PageTags tags(file, page);
    if (!tags)
        return TagsStatus(file, page);
    const bool isPicture = rows == PageRows::Any && IsLeftToPictureCodec(tags);
    source.decode = isPicture ? DecodeWithPictureCodec : DecodeLines;
    source.file = file;
    source.page = page;
    const Status status = FormatOfPage(tags, rows == PageRows::ColourSpace, source.format);
    if (status == error::None && isPicture)
        TakeDibColours(source.format);
    NotePage(status, file, page);
    return status;
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
    if (source.file)
        NotePage(status, source.file, source.page);
    return sink.end ? sink.end(sink.record, status) : status;
}

} // namespace tiff
