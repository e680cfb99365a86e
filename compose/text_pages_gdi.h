// Text with GDI, as pages and overlays need it.
#pragma once

#include "core/win32.h"

#include <array>
#include <cstdint>
#include <span>

namespace tiff {

// The height of a font of so many points; false when it is out of reason.
[[nodiscard]] bool FontHeight(uint32_t points, uint32_t dotsPerInch, int32_t& height);

// A font of this face, with a height, in an otherwise empty record. The face need not end in a zero.
LOGFONTA FontOfFace(const char* face, size_t faceBytes, int32_t height);

// The font of a device context as text is laid out with it.
struct LetterWidths {
    HDC dc;
    bool inTable; // else text is measured by GDI
    std::array<INT, 256> table;
};

void ReadLetterWidths(HDC dc, LetterWidths& widths);

// As a TextDevice measures. False when GDI fails.
[[nodiscard]] bool MeasureLetters(const LetterWidths& letters, std::span<const char> text, int32_t* widths);

// 0 when GDI fails.
int32_t LineHeightOf(HDC dc);

} // namespace tiff
