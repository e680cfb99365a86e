// What a picture is, whatever its rows come from: everything else is planned from it.
#pragma once

#include "core/tag_block.h"

#include <array>

namespace tiff {

// How the rows of a source become rows of a DIB.
enum class Conversion { Copy, SwapRedBlue, ReduceGrey, Cmyk, YCbCr };

struct PictureFormat {
    BITMAPINFOHEADER stored;            // rows as the source gives them
    BITMAPINFOHEADER dib;               // rows as a DIB has them
    std::array<RGBQUAD, 256> colours{}; // biClrUsed of them
    Conversion conversion = Conversion::Copy;
    uint32_t sampleShift = 0; // of grey that is reduced
    uint32_t orientation = 1;
    uint32_t lineBytes = 0;    // of a row of the source
    bool sharesChroma = false; // between pixels: such lines cannot be converted pixel by pixel
};

// A loaded page. Fails with 10 (no size or colour map), 16 or 27. With keepColourSpace, photometric
// values 7 to 17 come unconverted and the DIB's biCompression says which.
[[nodiscard]] Status FormatOfPage(const PageTags& tags, bool keepColourSpace, PictureFormat& format);

// A picture of a bit a pixel, whose 1 is black: facsimile code without a TIFF around it.
PictureFormat BilevelFormat(uint32_t width, uint32_t height, int32_t dotsPerMetreX, int32_t dotsPerMetreY);

} // namespace tiff
