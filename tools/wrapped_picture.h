/* Black and white pictures wrapped as IOCA segments and MO:DCA documents. Their code goes from one
 * container into the other as it is.
 */
#ifndef TOOLS_WRAPPED_PICTURE_H
#define TOOLS_WRAPPED_PICTURE_H

#include "tiff/tiff.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace tifftool {

inline constexpr size_t MOST_RECORD_BYTES = 65520; // of code, as DecodeMMRImage takes them
inline constexpr size_t RECORD_HEADER_BYTES = 4;
inline constexpr size_t INTRODUCER_BYTES = 8; // of a field, without the mark in front of it
inline constexpr uint8_t FIELD_MARK = 0x5A;

inline TiffStream StreamOf(HANDLE file)
{
    return static_cast<TiffStream>(reinterpret_cast<intptr_t>(file));
}

enum class Wrapping {
    Segment, // an image segment alone
    Document // a document of one page, the segment in fields of picture data
};

// The pixels of a DIB of one bit per pixel, and its resolution.
struct BilevelRows {
    const uint8_t* first; // row of the picture, from the top
    ptrdiff_t step;       // to the next row
    uint32_t width, height;
    uint8_t flip; // 0xFF when 1 is white
    int32_t dotsPerMetre[2];
};

// Of a whole DIB.
BilevelRows RowsOf(std::span<const uint8_t> dib);

// Replaces the content of an open file. Returns why it cannot, or an empty text. When the fault is not the
// picture's, the last error is not 0.
std::string WrapRows(HANDLE file, Wrapping wrapping, const BilevelRows& rows);

// A picture's code as a TIFF page has it.
struct PictureCode {
    TiffIocaDescription description;
    uint32_t compression, group3Options;
    std::vector<uint8_t> bytes;
    bool isWhole; // no record is cut off, and the segment ends
};

// Reads the first picture of an open file. Returns why it cannot, or an empty text.
std::string ReadCode(HANDLE file, Wrapping wrapping, PictureCode& code);

// Writes a new TIFF file over an empty one, with this page. False with the last error when that fails.
bool WriteTiffPage(const char* path, const PictureCode& code);

} // namespace tifftool

#endif
