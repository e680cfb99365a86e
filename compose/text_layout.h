// The arrangement of a text on pages: lines, tab stops and page ends. Widths, drawing and the pages
// themselves are those of a device, so this needs no screen.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"
#include "tiff/text_pages.h"

#include <array>
#include <span>

namespace tiff {

// Pixels from the page's top left corner.
struct TextGeometry {
    int32_t width, height;
    int32_t left, top, right, bottom; // the text's area, without its right column and bottom row
    int32_t spacing;
    std::array<int32_t, TIFF_TEXT_TAB_STOPS> tabStops;
};

// False for a page that cannot be: no room between its margins, or too large for a bitmap.
[[nodiscard]] bool PlanGeometry(const TiffTextPageSettings& settings, TextGeometry& geometry);

// Text that is measured in one piece.
inline constexpr size_t MOST_MEASURED = 512;

struct TextDevice {
    // The widths of single bytes, so that the width of a line is their sum; at most MOST_MEASURED at once.
    void (*measure)(void* record, std::span<const char> text, int32_t* widths);
    void (*draw)(void* record, int32_t x, int32_t y, std::span<const char> text);
    // Hands the page over.
    Status (*deliver)(void* record);
    // Makes a blank page.
    Status (*begin)(void* record);
    void* record;
    int32_t width; // of its pages, which may differ from the geometry's
    int32_t lineHeight;
};

// Lays the text out from startY on (0 for the top margin) until the file ends or the limit is reached. The
// first page is there already. Returns a TiffTextError; `pages` counts the delivered ones.
[[nodiscard]] Status LayText(HANDLE file, const TextGeometry& geometry, const TextDevice& device,
                             uint32_t startY, uint32_t pageLimit, uint32_t& pages);

} // namespace tiff
