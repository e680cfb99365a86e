#include "containers/ioca.h"

#include "codecs/ccitt/mmr_records.h"
#include "core/byte_order.h"
#include "core/errors.h"

#include <algorithm>
#include <cstring>

namespace tiff::ioca {

namespace {

enum Parameter : uint8_t {
    BeginSegment = 0x70,
    BeginImageContent = 0x91,
    ImageSize = 0x94,
    ImageEncoding = 0x95,
    ElementSize = 0x96,
    LookupTable = 0x97,
};

constexpr size_t NAME_BYTES = 4;

// No name, an image object of type 255, resolutions per 10 inches.
constexpr uint8_t upToSize[] = {BeginSegment, 0, BeginImageContent, 1, 0xFF, ImageSize, 9, 0};
// Compression 1 recorded in lines, one bit an element, no lookup table.
constexpr uint8_t behindSize[] = {ImageEncoding, 2, 1, 1, ElementSize, 1, 1, LookupTable, 1, 0};

// The content of a parameter: a length byte and as many more.
struct Content {
    uint8_t length;
    std::array<uint8_t, 255> bytes;
};

bool TakeContent(Reader& reader, Content& content)
{
    return reader.Take(content.length) && reader.Take(std::span(content.bytes).first(content.length));
}

// This parameter and no other, with at least so many bytes.
bool TakeParameter(Reader& reader, Parameter parameter, uint8_t least, Content& content)
{
    uint8_t code;
    return reader.Take(code) && code == parameter && TakeContent(reader, content) && content.length >= least;
}

// Deliberate: a longer name stays unread, so that its first byte is taken for a parameter and the segment is
// refused.
bool TakeName(Reader& reader, uint32_t& name)
{
    uint8_t length, bytes[NAME_BYTES] = {};
    if (!reader.Take(length))
        return false;
    if (length > NAME_BYTES)
        return true;
    if (!reader.Take(std::span(bytes).first(length)))
        return false;
    name = Load32(bytes, TIFF_MOTOROLA);
    return true;
}

bool TakeSize(Reader& reader, TiffIocaDescription& description)
{
    constexpr uint8_t UNIT_AND_NUMBERS = 9;
    Content content;
    if (!TakeParameter(reader, ImageSize, UNIT_AND_NUMBERS, content))
        return false;
    description.horizontalResolution = Load16(&content.bytes[1], TIFF_MOTOROLA);
    description.verticalResolution = Load16(&content.bytes[3], TIFF_MOTOROLA);
    description.width = Load16(&content.bytes[5], TIFF_MOTOROLA);
    description.height = Load16(&content.bytes[7], TIFF_MOTOROLA);
    return true;
}

// Skips the two parameters that may stand there, each once; then `next` is the byte behind them.
bool TakeOptional(Reader& reader, uint8_t& next)
{
    Content content;
    if (!reader.Take(next))
        return false;
    for (const Parameter parameter : {ElementSize, LookupTable})
        if (next == parameter && !(TakeContent(reader, content) && reader.Take(next)))
            return false;
    return true;
}

// The first byte of the record's mark is already taken.
bool TakeRecordHeader(Reader& reader, TiffIocaDescription& description)
{
    uint8_t mark, length[2];
    int64_t behind;
    if (!reader.Take(mark) || mark != RECORD_MARK[1] || !reader.Take(length) || !reader.NextOffset(behind))
        return false;
    const int64_t offset = behind - RECORD_HEADER_BYTES;
    if (offset > UINT32_MAX)
        return false;
    description.dataLength = Load16(length, TIFF_MOTOROLA);
    description.dataOffset = static_cast<uint32_t>(offset);
    return true;
}

} // namespace

Status WritePiece(HANDLE file, std::span<const uint8_t> piece)
{
    while (!piece.empty()) {
        DWORD written = 0;
        if (!WriteFile(file, piece.data(), static_cast<DWORD>(piece.size()), &written, nullptr) ||
            written == 0)
            return error::InputOutput;
        piece = piece.subspan(written);
    }
    return error::None;
}

Status WriteNumber(HANDLE file, uint16_t number)
{
    uint8_t bytes[2];
    Store16(bytes, number, TIFF_MOTOROLA);
    return WritePiece(file, bytes);
}

Status WriteSegmentStart(HANDLE file, const TiffIocaDescription& description)
{
    Status status = WritePiece(file, upToSize);
    for (const uint16_t number : {description.horizontalResolution, description.verticalResolution,
                                  description.width, description.height})
        if (status == error::None)
            status = WriteNumber(file, number);
    return status == error::None ? WritePiece(file, behindSize) : status;
}

bool Position(HANDLE file, int64_t& position)
{
    LARGE_INTEGER distance{}, reached{};
    if (!SetFilePointerEx(file, distance, &reached, FILE_CURRENT))
        return false;
    position = reached.QuadPart;
    return true;
}

bool MovePosition(HANDLE file, int64_t distance, DWORD origin)
{
    LARGE_INTEGER wanted;
    wanted.QuadPart = distance;
    return SetFilePointerEx(file, wanted, nullptr, origin);
}

Reader::Reader(HANDLE file) : file(file)
{
    int64_t position;
    blockBytes = Position(file, position) ? static_cast<DWORD>(block.size()) : 1;
}

bool Reader::Fill()
{
    taken = held = 0;
    if (!ReadFile(file, block.data(), blockBytes, &held, nullptr))
        return false;
    ended = held == 0;
    return !ended;
}

bool Reader::Take(uint8_t& byte)
{
    if (taken == held && !Fill())
        return false;
    byte = block[taken++];
    return true;
}

bool Reader::Take(std::span<uint8_t> bytes)
{
    return std::ranges::all_of(bytes, [this](uint8_t& byte) { return Take(byte); });
}

// Deliberate: a file without the value is closed; programs count on it. A read that failed has not met the
// end, and leaves the file open.
bool Reader::TakeThrough(uint8_t value)
{
    for (;;) {
        const uint8_t* const next = block.data() + taken;
        const void* found = std::memchr(next, value, held - taken);
        if (found) {
            taken += static_cast<DWORD>(static_cast<const uint8_t*>(found) - next) + 1;
            return true;
        }
        if (!Fill())
            break;
    }
    if (ended) {
        CloseHandle(file);
        file = nullptr;
    }
    return false;
}

bool Reader::NextOffset(int64_t& offset) const
{
    if (!Position(file, offset))
        return false;
    offset -= held - taken;
    return true;
}

bool Reader::Finish()
{
    const int64_t ahead = int64_t{held} - taken;
    held = taken;
    return !file || ahead == 0 || MovePosition(file, -ahead, FILE_CURRENT);
}

bool ReadSegmentStart(Reader& reader, TiffIocaDescription& description)
{
    Content content;
    uint32_t name = 0;
    if (!reader.TakeThrough(BeginSegment) || !TakeName(reader, name))
        return false;
    description.segmentName = name;
    if (!TakeParameter(reader, BeginImageContent, 1, content))
        return false;
    description.objectType = content.bytes[0];
    if (!TakeSize(reader, description) || !TakeParameter(reader, ImageEncoding, 1, content))
        return false;
    description.encoding = content.bytes[0];
    uint8_t next;
    return TakeOptional(reader, next) && (next != RECORD_MARK[0] || TakeRecordHeader(reader, description));
}

} // namespace tiff::ioca

using namespace tiff;

extern "C" int32_t WriteIOCAHeader(HANDLE file, const TiffIocaDescription* description) noexcept
{
    const Status status =
        description ? ioca::WriteSegmentStart(file, *description) : Status{error::InvalidParameters};
    if (status != error::None)
        StoreLastError(status);
    return status == error::None;
}

extern "C" int32_t WriteIOCATail(HANDLE file) noexcept
{
    return ioca::WritePiece(file, ioca::TAIL) == error::None;
}

extern "C" int32_t ReadIOCAHeader(HANDLE file, TiffIocaDescription* description) noexcept
{
    if (!description)
        return 0;
    *description = {};
    ioca::Reader reader(file);
    const bool read = ioca::ReadSegmentStart(reader, *description);
    return reader.Finish() && read;
}
