// Raw fax code becomes a page: the code is written as it lies, and tags say how to read it. Code that tags
// cannot describe is encoded anew.
#include "codecs/ccitt/raw_finding.h"
#include "codecs/encode_driver.h"
#include "core/desktop.h"
#include "core/error_detail.h"
#include "core/errors.h"
#include "core/global_block.h"
#include "core/open_file.h"
#include "raster/save_page.h"
#include "tiff/define.h"
#include "tiff/files.h"

#include <cstring>

namespace tiff {

namespace {

constexpr uint32_t WIDEST = 0xFFFF;
constexpr uint32_t TWO_DIMENSIONAL_OPTION = 1, FILL_BITS_OPTION = 4;

bool IsKnown(const TiffRawFax& fax)
{
    const uint32_t scheme = fax.scheme;
    const bool hasScheme = scheme == TIFF_RAW_FIND_OUT || scheme == TIFF_RAW_HUFFMAN ||
                           scheme == TIFF_RAW_GROUP3 || scheme == TIFF_RAW_GROUP4 ||
                           scheme == TIFF_RAW_GROUP3_TWO_DIMENSIONAL ||
                           scheme == TIFF_RAW_GROUP3_WITHOUT_EOLS;
    return hasScheme && fax.width <= WIDEST && fax.fillOrder <= TIFF_LSB_FIRST &&
           fax.alignment <= TIFF_RAW_UNALIGNED;
}

// No tag says that Group 4 rows begin on bytes, or that Group 3 rows follow each other without EOLs.
bool IsEncodedAnew(const TiffRawFax& fax)
{
    return fax.scheme == TIFF_RAW_GROUP3_WITHOUT_EOLS ||
           (fax.scheme == TIFF_RAW_GROUP4 && fax.alignment == TIFF_RAW_ALIGNED);
}

uint32_t Options(const TiffRawFax& fax)
{
    return (fax.scheme == TIFF_RAW_GROUP3_TWO_DIMENSIONAL ? TWO_DIMENSIONAL_OPTION : 0) |
           (fax.alignment == TIFF_RAW_ALIGNED ? FILL_BITS_OPTION : 0);
}

TiffFaxQuality QualityOf(const TiffRawFax& fax)
{
    const uint32_t damaged = IsEncodedAnew(fax) ? TIFF_FAX_REGENERATED : TIFF_FAX_UNCLEAN;
    return {fax.badRows, fax.longestBadRun, fax.badRows == 0 ? uint32_t{TIFF_FAX_CLEAN} : damaged};
}

bool DefineResolution(HGLOBAL file, uint32_t page, const TiffRawFax& fax)
{
    const DotsPerInch usual = UsualFaxResolution(fax.rows);
    return DefineDotsPerInch(file, page,
                             {fax.horizontalDpi ? fax.horizontalDpi : usual.horizontal,
                              fax.verticalDpi ? fax.verticalDpi : usual.vertical}) &&
           DefineTiffImageInfo(file, page, tag::ResolutionUnit, fieldtype::Short, unit::Inch);
}

bool DefinePage(HGLOBAL file, uint32_t page, const TiffRawFax& fax)
{
    const uint32_t raw = fax.scheme & 0xFFFF;
    const bool anew = IsEncodedAnew(fax);
    const uint32_t compression = anew ? uint32_t{compression::Group4} : raw;
    const struct {
        uint16_t tag, type;
        uint32_t value;
    } numbers[] = {
        {tag::ImageWidth, fieldtype::Long, fax.width},
        {tag::ImageLength, fieldtype::Long, fax.rows},
        {tag::BitsPerSample, fieldtype::Short, 1},
        {tag::Compression, fieldtype::Short, compression},
        {tag::PhotometricInterpretation, fieldtype::Short, photometric::WhiteIsZero},
        {tag::FillOrder, fieldtype::Short, anew ? uint32_t{TIFF_MSB_FIRST} : fax.fillOrder},
        {tag::SamplesPerPixel, fieldtype::Short, 1},
        {tag::RowsPerStrip, fieldtype::Long, fax.rows},
    };
    for (const auto& number : numbers)
        if (!DefineTiffImageInfo(file, page, number.tag, number.type, number.value))
            return false;
    if (!DefineResolution(file, page, fax))
        return false;
    if (compression == compression::Group4 &&
        !DefineTiffImageInfo(file, page, tag::T6Options, fieldtype::Long, 0))
        return false;
    if (compression == compression::Group3 &&
        !DefineTiffImageInfo(file, page, tag::T4Options, fieldtype::Long, Options(fax)))
        return false;
    return raw != compression::Group3 || DefineFaxQuality(file, page, QualityOf(fax));
}

// Bilevel rows, packed.
struct Rows {
    uint8_t* first;
    size_t bytes; // of a row
};

intptr_t KeepRow(void* line, uint32_t row, void* rows)
{
    const auto& kept = *static_cast<const Rows*>(rows);
    std::memcpy(kept.first + row * kept.bytes, line, kept.bytes);
    return error::None;
}

intptr_t GiveRow(void* line, uint32_t row, void* rows)
{
    const auto& kept = *static_cast<const Rows*>(rows);
    std::memcpy(line, kept.first + row * kept.bytes, kept.bytes);
    return error::None;
}

Status EncodeAnew(HGLOBAL file, uint32_t page, std::span<const uint8_t> code, const TiffRawFax& fax)
{
    const size_t rowBytes = (size_t{fax.width} + 7) / 8;
    const GlobalBlock block(rowBytes * fax.rows);
    Locked<uint8_t> first(block.Get());
    if (!first)
        return error::NotEnoughMemory;
    Rows rows = {first.Get(), rowBytes};
    if (const Status status = DecodeRawFax(code, fax, {KeepRow, &rows}); status != error::None)
        return status;
    return EncodePage(file, page, {GiveRow, &rows}, PageCodecs::Lines);
}

Status PutRawFax(HGLOBAL file, uint32_t page, std::span<const uint8_t> code, const TiffRawFax& fax)
{
    if (!DefinePage(file, page, fax))
        return error::NotEnoughMemory;
    return IsEncodedAnew(fax) ? EncodeAnew(file, page, code, fax) : PutCode(file, page, code);
}

Status AppendToOpenFile(HGLOBAL file, std::span<const uint8_t> code, const TiffRawFax& fax)
{
    const int32_t defined = DefineTiffImage(file);
    if (defined < 0)
        return error::NotEnoughMemory;
    const auto page = static_cast<uint32_t>(defined);
    const Status status = PutRawFax(file, page, code, fax);
    DropTiffImage(file, page);
    return status;
}

Status AppendRawFax(const char* path, std::span<const uint8_t> code, TiffRawFax& fax)
{
    const BusyCursor busy;
    if (const Status status = FindOutRawFax(code, fax); status != error::None)
        return status;
    Status status = error::None;
    HGLOBAL file = OpenFile(path, T_APPEND, status);
    if (!file && (status == error::NotEnoughMemory || status == error::PathTooLong))
        return status;
    if (!file)
        return ReportedAs(status, error::CannotOpen);
    status = AppendToOpenFile(file, code, fax);
    CloseTiffFile(file);
    return status;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" int32_t AppendRawFaxToTiff(const char* path, const void* bytes, uint32_t size,
                                      TiffRawFax* fax) noexcept
{
    Status status = error::InvalidParameters;
    if (size > INT32_MAX)
        status = error::TooLarge;
    else if (path && *path && bytes && size > 0 && fax && IsKnown(*fax))
        status = AppendRawFax(path, {static_cast<const uint8_t*>(bytes), size}, *fax);
    return FinishSave(status);
}
