/* Pictures from segments and documents. The picture data of a document may be split over fields anywhere
 * behind the parameters in front of them.
 */
#include "wrapped_picture.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace tifftool {

namespace {

using Input = std::span<const uint8_t>;

// Parts of the input that make up the picture data.
using Parts = std::vector<Input>;

constexpr uint8_t BEGIN_SEGMENT = 0x70, END_CONTENT = 0x93, END_SEGMENT = 0x71;
constexpr uint8_t RECORD_MARK[] = {0xFE, 0x92};
constexpr uint8_t PICTURE_DATA[] = {0xD3, 0xEE, 0xFB}, END_IMAGE[] = {0xD3, 0xA9, 0xFB};
constexpr uint8_t HAS_EXTENSION = 0x80, HAS_PADDING = 0x08;
constexpr uint32_t TIFF_HEADER_BYTES = 8;

struct Encoding {
    uint8_t identifier;
    uint32_t compression, group3Options;
};

constexpr Encoding encodings[] = {
    {0x01, 4, 0}, {0x82, 4, 0}, {0x03, 1, 0}, {0x80, 3, 0}, {0x81, 3, 1},
};

size_t Number(Input bytes)
{
    return size_t{bytes[0]} << 8 | bytes[1];
}

bool BeginsWith(Input bytes, Input mark)
{
    return bytes.size() >= mark.size() && std::equal(mark.begin(), mark.end(), bytes.begin());
}

// The content of a field behind its introducer, without an extension of that and without padding.
Input ContentOf(Input field, uint8_t flags)
{
    Input content = field.subspan(INTRODUCER_BYTES);
    if (flags & HAS_EXTENSION && !content.empty()) {
        content = content.subspan(std::min<size_t>(content.size(), content[0]));
    }
    if (flags & HAS_PADDING && !content.empty()) {
        content = content.first(content.size() - std::min<size_t>(content.size(), content.back()));
    }
    return content;
}

// The picture data of the first image object, as far as the fields can be followed. A field that is cut off
// counts as far as it goes.
Parts PartsByFields(Input bytes)
{
    Parts parts;
    while (!bytes.empty()) {
        if (bytes[0] == FIELD_MARK) {
            bytes = bytes.subspan(1);
        }
        if (bytes.size() < INTRODUCER_BYTES || Number(bytes) < INTRODUCER_BYTES) {
            break;
        }
        const Input field = bytes.first(std::min(Number(bytes), bytes.size()));
        if (BeginsWith(field.subspan(2), PICTURE_DATA)) {
            parts.push_back(ContentOf(field, field[5]));
        } else if (!parts.empty() && BeginsWith(field.subspan(2), END_IMAGE)) {
            break;
        }
        bytes = bytes.subspan(field.size());
    }
    return parts;
}

// Everything behind the first mark of picture data: files whose introducers are not right.
Parts PartsByMark(Input bytes)
{
    const auto mark =
        std::search(bytes.begin(), bytes.end(), std::begin(PICTURE_DATA), std::end(PICTURE_DATA));
    const auto start = static_cast<size_t>(mark - bytes.begin()) + std::size(PICTURE_DATA);
    return start > bytes.size() ? Parts() : Parts{bytes.subspan(start)};
}

// Reads the parameters from where the first part begins. Reading beyond the last segment would close the
// file, so there must be one.
bool ReadDescription(HANDLE file, Input bytes, const Parts& parts, TiffIocaDescription& description)
{
    if (parts.empty()) {
        return false;
    }
    const auto start = static_cast<size_t>(parts[0].data() - bytes.data());
    return memchr(bytes.data() + start, BEGIN_SEGMENT, bytes.size() - start) &&
           mSeek(StreamOf(file), static_cast<uint32_t>(start), 0) == start &&
           ReadIOCAHeader(file, &description);
}

// What is behind the parameters that were read; empty without a record. The parameters may fill the first
// part, so that the record begins with the next. The data of one part are not copied.
Input DataOf(HANDLE file, Input bytes, const Parts& parts, uint32_t offset, std::vector<uint8_t>& joined)
{
    const auto start = static_cast<size_t>(parts[0].data() - bytes.data());
    const size_t read = offset ? offset : mTell(StreamOf(file)) - 1;
    if (read < start || read - start > parts[0].size()) {
        return {};
    }
    Input data = parts[0];
    if (parts.size() > 1) {
        for (const Input& part : parts) {
            joined.insert(joined.end(), part.begin(), part.end());
        }
        data = joined;
    }
    data = data.subspan(read - start);
    return BeginsWith(data, RECORD_MARK) ? data : Input();
}

// Takes the code out of the records, as DecodeMMRImage reads their lengths.
void TakeRecords(Input data, PictureCode& code)
{
    code.isWhole = true;
    while (data.size() >= RECORD_HEADER_BYTES && BeginsWith(data, RECORD_MARK)) {
        size_t length = Number(data.subspan(2));
        data = data.subspan(RECORD_HEADER_BYTES);
        if (length == 0) {
            length = std::min(data.size(), MOST_RECORD_BYTES);
        }
        code.isWhole = length <= data.size();
        const Input record = data.first(std::min(length, data.size()));
        code.bytes.insert(code.bytes.end(), record.begin(), record.end());
        data = data.subspan(record.size());
    }
    const uint8_t end[] = {END_CONTENT, 0, END_SEGMENT, 0};
    code.isWhole = code.isWhole && BeginsWith(data, end);
}

// Bits per pixel are not among what is read, but show in data that are not compressed.
std::string CheckCode(PictureCode& code)
{
    const TiffIocaDescription& page = code.description;
    const auto* const encoding = std::ranges::find(
        encodings, page.encoding, [](const Encoding& known) { return uint16_t{known.identifier}; });
    if (encoding == std::end(encodings)) {
        return "has a picture in compression " + std::to_string(page.encoding) +
               ", which is none for black and white that is known here";
    }
    code.compression = encoding->compression;
    code.group3Options = encoding->group3Options;
    if (page.width == 0 || page.height == 0) {
        return "has a picture without pixels";
    }
    const size_t pixelBytes = size_t{page.height} * ((page.width + 7u) / 8);
    if (code.compression == 1 && code.bytes.size() > pixelBytes) {
        return "has a picture of more than one bit per pixel";
    }
    return "";
}

void DefineTags(HGLOBAL file, uint32_t page, const PictureCode& code)
{
    constexpr uint32_t SHORT = 3, LONG = 4, RATIONAL = 5, INCHES = 2;
    const TiffIocaDescription& size = code.description;
    const struct {
        uint32_t tag, type;
        uint64_t value;
    } tags[] = {
        {256, SHORT, size.width},       {257, SHORT, size.height}, {258, SHORT, 1},
        {259, SHORT, code.compression}, {262, SHORT, 0}, // white is zero
        {273, LONG, TIFF_HEADER_BYTES}, {277, SHORT, 1},           {278, SHORT, size.height},
        {279, LONG, code.bytes.size()},
    };
    for (const auto& [tag, type, value] : tags) {
        DefineTiffImageInfo(file, page, tag, type, value);
    }
    if (code.compression == 3) {
        DefineTiffImageInfo(file, page, 292, LONG, code.group3Options);
    }
    constexpr uint64_t TENTHS = uint64_t{10} << 32; // the denominator
    if (size.horizontalResolution && size.verticalResolution) {
        DefineTiffImageInfo(file, page, 282, RATIONAL, TENTHS | size.horizontalResolution);
        DefineTiffImageInfo(file, page, 283, RATIONAL, TENTHS | size.verticalResolution);
        DefineTiffImageInfo(file, page, 296, SHORT, INCHES);
    }
}

bool WriteHeaderAndCode(const char* path, const std::vector<uint8_t>& code)
{
    const uint8_t header[TIFF_HEADER_BYTES] = {'I', 'I', 42, 0, 0, 0, 0, 0};
    const HANDLE file =
        CreateFileA(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const auto bytes = static_cast<uint32_t>(code.size());
    const bool written = mWrite(StreamOf(file), header, sizeof header) == sizeof header &&
                         mWrite(StreamOf(file), code.data(), bytes) == bytes;
    CloseHandle(file);
    return written;
}

} // namespace

std::string ReadCode(HANDLE file, Wrapping wrapping, PictureCode& code)
{
    const uint32_t size = mSize(StreamOf(file));
    std::vector<uint8_t> bytes(size == STREAM_FAILED ? 0 : size), joined;
    if (size == STREAM_FAILED || mSeek(StreamOf(file), 0, 0) != 0 ||
        mRead(StreamOf(file), bytes.data(), size) != size) {
        return "cannot be read";
    }
    Parts parts = wrapping == Wrapping::Segment ? Parts{bytes} : PartsByFields(bytes);
    TiffIocaDescription& page = code.description;
    if (!ReadDescription(file, bytes, parts, page)) {
        parts = wrapping == Wrapping::Segment ? Parts() : PartsByMark(bytes);
        if (!ReadDescription(file, bytes, parts, page)) {
            return "has no image segment that can be read";
        }
    }
    const Input data = DataOf(file, bytes, parts, page.dataOffset, joined);
    if (data.empty()) {
        return "has an image segment without image data in records";
    }
    TakeRecords(data, code);
    return CheckCode(code);
}

bool WriteTiffPage(const char* path, const PictureCode& code)
{
    constexpr uint32_t WRITING_FAILED = 6;
    if (!WriteHeaderAndCode(path, code.bytes)) {
        SetTiffError(WRITING_FAILED);
        return false;
    }
    HGLOBAL file = OpenTiffFile(path, T_APPEND);
    const int32_t page = DefineTiffImage(file);
    if (page >= 0) {
        DefineTags(file, static_cast<uint32_t>(page), code);
    }
    const bool written = page >= 0 && WriteTiffImageDirectory(file, static_cast<uint32_t>(page)) == 0;
    CloseTiffFile(file);
    return written;
}

} // namespace tifftool
