// The properties of a picture, whatever its source: everything else is planned from them.
#pragma once

#include "core/tag_block.h"

#include <array>

namespace tiff {

// How the rows of a source become rows of a DIB.
enum class Conversion { Copy, SwapRedBlue, ReduceGrey, Cmyk, YCbCr };

struct PictureFormat {
    BITMAPINFOHEADER stored;            // rows as the source gives them
    BITMAPINFOHEADER dib;               // rows as a DIB stores them
    std::array<RGBQUAD, 256> colours{}; // biClrUsed of them
    Conversion conversion = Conversion::Copy;
    uint32_t sampleShift = 0; // right shift of 16-bit grey samples
    uint32_t photometric = 0; // as the source says
    uint32_t orientation = 1;
    uint32_t lineBytes = 0;    // of a source row
    bool sharesChroma = false; // between pixels: such lines cannot be converted pixel by pixel
};

// The format of a loaded page. Fails with 10 (no size or colour map), 16 or 27. With keepColourSpace,
// photometric values 7 to 17 are not converted, and the DIB's biCompression holds the value.
[[nodiscard]] Status FormatOfPage(const PageTags& tags, bool keepColourSpace, PictureFormat& format);

// A bilevel picture whose 1 is black: facsimile code without a TIFF.
PictureFormat BilevelFormat(uint32_t width, uint32_t height, int32_t dotsPerMetreX, int32_t dotsPerMetreY);

} // namespace tiff
