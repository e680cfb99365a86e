// The parameters around the image data of an IOCA segment, in files that lie open.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"
#include "tiff/ioca.h"

#include <array>
#include <span>

namespace tiff::ioca {

inline constexpr uint8_t TAIL[] = {0x93, 0x00, 0x71, 0x00}; // ends image content and segment

// Fails with 6 when a write transfers nothing.
[[nodiscard]] Status WritePiece(HANDLE file, std::span<const uint8_t> piece);
[[nodiscard]] Status WriteNumber(HANDLE file, uint16_t number);
[[nodiscard]] Status WriteSegmentStart(HANDLE file, const TiffIocaDescription& description);

// False without a position, as a pipe has none.
[[nodiscard]] bool Position(HANDLE file, int64_t& position);
[[nodiscard]] bool MovePosition(HANDLE file, int64_t distance, DWORD origin);

// A file that is read in blocks, but seems to be read byte by byte: at the end its position is behind the
// last byte taken. What has no position really is read byte by byte.
class Reader {
public:
    explicit Reader(HANDLE file);
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    [[nodiscard]] bool Take(uint8_t& byte);
    [[nodiscard]] bool Take(std::span<uint8_t> bytes);

    // Takes bytes up to the first of this value. At the end of the file it closes the file.
    [[nodiscard]] bool TakeThrough(uint8_t value);

    // Of the next byte to take.
    [[nodiscard]] bool NextOffset(int64_t& offset) const;

    // Sets the position; false when that fails. Call it last.
    [[nodiscard]] bool Finish();

private:
    bool Fill();

    HANDLE file; // null after it was closed
    bool ended = false;
    DWORD blockBytes, taken = 0, held = 0;
    std::array<uint8_t, 4096> block;
};

// From the next Begin Segment on.
[[nodiscard]] bool ReadSegmentStart(Reader& reader, TiffIocaDescription& description);

} // namespace tiff::ioca
