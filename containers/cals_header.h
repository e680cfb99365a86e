// The header of a CALS raster file: sixteen records of text, keyword and value, padded with spaces.
#pragma once

#include "tiff/cals.h"

#include <span>
#include <string_view>

namespace tiff::cals {

inline constexpr size_t RECORD_BYTES = 128;
inline constexpr size_t RECORD_COUNT = 16;
inline constexpr size_t HEADER_BYTES = RECORD_BYTES * RECORD_COUNT;
inline constexpr size_t BLOCK_BYTES = HEADER_BYTES + 200; // as headers and notes are handed out

using Header = std::span<const uint8_t, HEADER_BYTES>;
using NewHeader = std::span<uint8_t, HEADER_BYTES>;
using NewRecord = std::span<uint8_t, RECORD_BYTES>;

// In the order of the records.
enum class Field {
    SourceDocument,
    DestinationDocument,
    TextFile,
    Figure,
    SourceGraph,
    DocumentClass,
    RasterType,
    Orientation,
    PixelCount,
    Density,
    Notes
};

// Every record ends with a space or a zero byte.
bool IsHeader(Header header);

// Where the first record of this keyword begins; HEADER_BYTES without one. A record that begins with a
// space or a zero byte is none.
size_t FindRecord(Header header, std::string_view keyword);

// The same for a field, under the library's keyword or that of other writers. The keyword is the one
// found.
size_t FindRecord(Header header, Field field, std::string_view& keyword);

// False when a record is missing, the type is not 1 or the picture has no pixels.
[[nodiscard]] bool ReadInformation(Header header, TiffCalsInformation& information);

// The text of a note, without the blanks behind it; empty when it has none.
std::string_view ReadNote(Header header, Field field);

// The text of a record behind its keyword, without the blanks behind it.
std::string_view ReadValue(Header header, size_t at, size_t keywordBytes);

// Puts the notes of a header into memory of BLOCK_BYTES zeros.
void ReadNotes(Header header, char* memory, TiffCalsNotes& notes);

void WriteHeader(NewHeader header, const TiffCalsInformation& information, const TiffCalsNotes& notes);

// One record, its text cut so that the last byte stays a space.
void WriteRecord(NewRecord record, std::string_view keyword, std::string_view text);

} // namespace tiff::cals
