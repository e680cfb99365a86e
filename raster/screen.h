// Rows to a window.
#pragma once

#include "raster/row_source.h"

namespace tiff {

struct ScreenOrder {
    HWND window; // may be null
    HDC dc;
    const int32_t* zoom; // two ratios, or null
    uint32_t flags;      // TiffScreenFlags
};

// The wait cursor is the caller's.
[[nodiscard]] Status DrawRows(const RowSource& source, const ScreenOrder& order);

} // namespace tiff
