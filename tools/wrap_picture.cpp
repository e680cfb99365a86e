/* Pictures to segments and documents. A document holds what viewers and printers ask for: a page as large
 * as its picture, and the picture as an image object on it.
 */
#include "wrapped_picture.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace tifftool {

namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t MOST_FIELD_BYTES = 32767; // with the introducer
constexpr size_t SEGMENT_START_BYTES = 26, TAIL_BYTES = 4;
constexpr uint32_t LARGEST_NUMBER = 32767;   // of pixels, and of pixels to 10 inches
constexpr uint16_t UNKNOWN_RESOLUTION = 960; // 96 dots per inch, as TIFF pages get it from most screens
constexpr uint32_t GROUP4 = 4, WRITING_FAILED = 6;
constexpr uint32_t PICTURE_DATA = 0xD3EEFB;

void Put16(Bytes& bytes, size_t value)
{
    bytes.push_back(static_cast<uint8_t>(value >> 8));
    bytes.push_back(static_cast<uint8_t>(value));
}

void Put24(Bytes& bytes, size_t value)
{
    bytes.push_back(static_cast<uint8_t>(value >> 16));
    Put16(bytes, value);
}

void Put(Bytes& bytes, std::initializer_list<uint8_t> more)
{
    bytes.insert(bytes.end(), more);
}

// Flags and sequence number are 0: nothing is segmented, padded or numbered.
void PutIntroducer(Bytes& bytes, uint32_t field, size_t contentBytes)
{
    bytes.push_back(FIELD_MARK);
    Put16(bytes, INTRODUCER_BYTES + contentBytes);
    Put24(bytes, field);
    Put(bytes, {0, 0, 0});
}

void PutField(Bytes& bytes, uint32_t field, const Bytes& content)
{
    PutIntroducer(bytes, field, content.size());
    bytes.insert(bytes.end(), content.begin(), content.end());
}

// Begins or ends a part of the document. Names are in EBCDIC: three letters and the number 1.
void PutNamed(Bytes& bytes, uint32_t field, std::initializer_list<uint8_t> letters)
{
    Bytes name(letters);
    Put(name, {0xF0, 0xF0, 0xF0, 0xF0, 0xF1});
    PutField(bytes, field, name);
}

void PutSize(Bytes& bytes, const TiffIocaDescription& page)
{
    Put24(bytes, page.width);
    Put24(bytes, page.height);
}

void PutUnits(Bytes& bytes, const TiffIocaDescription& page)
{
    Put16(bytes, page.horizontalResolution);
    Put16(bytes, page.verticalResolution);
}

void PutPageSize(Bytes& bytes, const TiffIocaDescription& page)
{
    Bytes content = {0, 0}; // resolutions per 10 inches
    PutUnits(content, page);
    PutSize(content, page);
    Put(content, {0, 0, 0});
    PutField(bytes, 0xD3A6AF, content);
}

// The picture's area is the page: its size, then its place at the top left, upright.
void PutArea(Bytes& bytes, const TiffIocaDescription& page)
{
    Bytes content = {3, 0x43, 1, 8, 0x4B, 0, 0};
    PutUnits(content, page);
    Put(content, {9, 0x4C, 2});
    PutSize(content, page);
    PutField(bytes, 0xD3A66B, content);
    PutField(bytes, 0xD3AC6B,
             {1, 0x17, 0, 0, 0, 0, 0, 0, 0, 0, 0x2D, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x2D, 0, 1});
}

void PutPictureSize(Bytes& bytes, const TiffIocaDescription& page)
{
    Bytes content = {0};
    PutUnits(content, page);
    Put16(content, page.width);
    Put16(content, page.height);
    Put(content, {0xF7, 2, 1, 10}); // function set 10: one bit per pixel
    PutField(bytes, 0xD3A6FB, content);
}

constexpr std::initializer_list<uint8_t> DOC = {0xC4, 0xD6, 0xC3}, PAG = {0xD7, 0xC1, 0xC7},
                                         AEG = {0xC1, 0xC5, 0xC7}, IMG = {0xC9, 0xD4, 0xC7},
                                         OEG = {0xD6, 0xC5, 0xC7};

Bytes DocumentStart(const TiffIocaDescription& page)
{
    Bytes bytes;
    PutNamed(bytes, 0xD3A8A8, DOC);
    PutNamed(bytes, 0xD3A8AF, PAG);
    PutNamed(bytes, 0xD3A8C9, AEG);
    PutPageSize(bytes, page);
    PutNamed(bytes, 0xD3A9C9, AEG);
    PutNamed(bytes, 0xD3A8FB, IMG);
    PutNamed(bytes, 0xD3A8C7, OEG);
    PutArea(bytes, page);
    PutPictureSize(bytes, page);
    PutNamed(bytes, 0xD3A9C7, OEG);
    return bytes;
}

Bytes DocumentEnd()
{
    Bytes bytes;
    PutNamed(bytes, 0xD3A9FB, IMG);
    PutNamed(bytes, 0xD3A9AF, PAG);
    PutNamed(bytes, 0xD3A9A8, DOC);
    return bytes;
}

bool Write(HANDLE file, std::span<const uint8_t> bytes)
{
    const auto count = static_cast<uint32_t>(bytes.size());
    return count == 0 || mWrite(StreamOf(file), bytes.data(), count) == count;
}

bool WriteRecord(HANDLE file, std::span<const uint8_t> code)
{
    Bytes header = {0xFE, 0x92};
    Put16(header, code.size());
    return code.empty() || (Write(file, header) && Write(file, code));
}

bool WriteSegment(HANDLE file, const TiffIocaDescription& page, std::span<const uint8_t> code)
{
    bool written = WriteIOCAHeader(file, &page);
    while (written && !code.empty()) {
        const size_t bytes = std::min(code.size(), MOST_RECORD_BYTES);
        written = WriteRecord(file, code.first(bytes));
        code = code.subspan(bytes);
    }
    return written && WriteIOCATail(file);
}

// A field holds whole parameters of the segment: one record, in front of the first one the start, behind the
// last one the tail, which has a field of its own when there is no room.
struct PictureField {
    size_t codeBytes;
    bool hasStart, hasTail;

    size_t ContentBytes() const
    {
        return (hasStart ? SEGMENT_START_BYTES : 0) + (codeBytes ? RECORD_HEADER_BYTES + codeBytes : 0) +
               (hasTail ? TAIL_BYTES : 0);
    }
};

PictureField NextField(size_t codeLeft, bool isFirst)
{
    const size_t room =
        MOST_FIELD_BYTES - INTRODUCER_BYTES - RECORD_HEADER_BYTES - (isFirst ? SEGMENT_START_BYTES : 0);
    PictureField field = {std::min(codeLeft, room), isFirst, codeLeft + TAIL_BYTES <= room};
    // ReadMODCAHeader would take a length that ends with D3 for the beginning of the mark behind it.
    if (((INTRODUCER_BYTES + field.ContentBytes()) & 0xFF) == 0xD3) {
        --field.codeBytes;
        field.hasTail = false;
    }
    return field;
}

bool WriteField(HANDLE file, const PictureField& field, const TiffIocaDescription& page,
                std::span<const uint8_t> code)
{
    Bytes introducer;
    PutIntroducer(introducer, PICTURE_DATA, field.ContentBytes());
    return Write(file, introducer) && (!field.hasStart || WriteIOCAHeader(file, &page)) &&
           WriteRecord(file, code.first(field.codeBytes)) && (!field.hasTail || WriteIOCATail(file));
}

bool WriteDocument(HANDLE file, const TiffIocaDescription& page, std::span<const uint8_t> code)
{
    bool written = Write(file, DocumentStart(page));
    for (bool isFirst = true, isLast = false; written && !isLast; isFirst = false) {
        const PictureField field = NextField(code.size(), isFirst);
        written = WriteField(file, field, page, code);
        code = code.subspan(field.codeBytes);
        isLast = field.hasTail;
    }
    return written && Write(file, DocumentEnd());
}

intptr_t FillLine(void* line, uint32_t row, void* rows)
{
    const auto& from = *static_cast<const BilevelRows*>(rows);
    const uint8_t* bytes = from.first + static_cast<ptrdiff_t>(row) * from.step;
    std::transform(bytes, bytes + (from.width + 7) / 8, static_cast<uint8_t*>(line),
                   [flip = from.flip](uint8_t byte) { return static_cast<uint8_t>(byte ^ flip); });
    return 0;
}

// The file serves as the place to encode to, and is overwritten: a wrapped picture has more bytes.
bool EncodeRows(HANDLE file, const BilevelRows& rows, Bytes& code)
{
    const TiffStream stream = StreamOf(file);
    BilevelRows from = rows;
    if (mSeek(stream, 0, 0) != 0 ||
        !EncodeCcittImageTo(stream, rows.width, rows.height, 1, TIFF_INTEL, GROUP4, &from, FillLine))
        return false;
    code.resize(mTell(stream));
    return mSeek(stream, 0, 0) == 0 &&
           mRead(stream, code.data(), static_cast<uint32_t>(code.size())) == code.size() &&
           mSeek(stream, 0, 0) == 0;
}

uint32_t PerTenInches(int32_t dotsPerMetre)
{
    return dotsPerMetre > 0 ? static_cast<uint32_t>(std::lround(dotsPerMetre / 3.937)) : UNKNOWN_RESOLUTION;
}

bool IsDark(const uint8_t* colour, const uint8_t* other)
{
    return colour[0] + colour[1] + colour[2] < other[0] + other[1] + other[2];
}

} // namespace

BilevelRows RowsOf(std::span<const uint8_t> dib)
{
    BITMAPCOREHEADER core;
    BITMAPINFOHEADER header{};
    memcpy(&core, dib.data(), sizeof core);
    const bool isCore = core.bcSize == sizeof core;
    if (isCore) {
        header.biWidth = core.bcWidth;
        header.biHeight = core.bcHeight;
    } else {
        memcpy(&header, dib.data(), sizeof header);
    }
    const size_t colours = header.biClrUsed ? header.biClrUsed : 2, colourBytes = isCore ? 3 : 4;
    const uint8_t* const colour = dib.data() + core.bcSize;
    const uint8_t* const pixels = colour + colours * colourBytes;
    const auto width = static_cast<uint32_t>(header.biWidth);
    const auto height = static_cast<uint32_t>(std::abs(header.biHeight));
    const auto stride = static_cast<ptrdiff_t>((size_t{width} + 31) / 32 * 4);
    const bool topDown = header.biHeight < 0 || height == 0;
    return {.first = topDown ? pixels : pixels + static_cast<ptrdiff_t>(height - 1) * stride,
            .step = topDown ? stride : -stride,
            .width = width,
            .height = height,
            .flip = static_cast<uint8_t>(colours >= 2 && IsDark(colour, colour + colourBytes) ? 0xFF : 0),
            .dotsPerMetre = {header.biXPelsPerMeter, header.biYPelsPerMeter}};
}

std::string WrapRows(HANDLE file, Wrapping wrapping, const BilevelRows& rows)
{
    SetTiffError(0);
    const uint32_t numbers[] = {PerTenInches(rows.dotsPerMetre[0]), PerTenInches(rows.dotsPerMetre[1]),
                                rows.width, rows.height};
    if (std::ranges::any_of(numbers, [](uint32_t number) { return number > LARGEST_NUMBER; })) {
        return "is too large; these files take at most 32,767 pixels each way, at most 3,276 to the inch";
    }
    TiffIocaDescription page{};
    page.horizontalResolution = static_cast<uint16_t>(numbers[0]);
    page.verticalResolution = static_cast<uint16_t>(numbers[1]);
    page.width = static_cast<uint16_t>(rows.width);
    page.height = static_cast<uint16_t>(rows.height);
    Bytes code;
    const auto write = wrapping == Wrapping::Segment ? WriteSegment : WriteDocument;
    if (EncodeRows(file, rows, code) && write(file, page, code)) {
        return "";
    }
    if (TiffError() == 0) {
        SetTiffError(WRITING_FAILED);
    }
    return "cannot be written";
}

} // namespace tifftool
