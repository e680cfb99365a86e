// A part of a packed DIB in another size, as a new packed DIB.
#pragma once

#include "raster/dib.h"

namespace tiff {

struct ResizeOrder {
    uint32_t left, top, partWidth, partHeight; // inside the picture, as it looks
    uint32_t width, height;                    // of the result
    bool smooth;
};

// The depth is 1, 4, 8 or 24 bits, with no more colours than that. Null with status 1.
HGLOBAL ResizeDib(const DibView& view, const ResizeOrder& order, Status& status);

} // namespace tiff
