/* PNG and PNM pictures as packed DIBs, and back. */
#ifndef TOOLS_RASTER_FILES_H
#define TOOLS_RASTER_FILES_H

#include "pixels.h"
#include "tiff/base.h"

#include <string>

namespace tifftool {

// Reads a PNG or PNM picture. Returns an empty text and null for a file of another kind; otherwise a block
// that the caller frees, or the fault in words.
std::string ReadRasterFile(const std::string& path, HGLOBAL& dib);

// Whole files.
std::vector<uint8_t> EncodePng(const Pixels& pixels);
std::vector<uint8_t> EncodePnm(const Pixels& pixels);

// ".pbm", ".pgm" or ".ppm", as the picture needs.
const char* PnmExtension(const Pixels& pixels);

// A picture that is being read: rows from the top, of depth 1, 8 or 24, red first.
struct RasterPicture {
    std::string fault;
    uint32_t width = 0, height = 0, depth = 0;
    uint32_t dotsAcross = 0, dotsDown = 0; // per metre
    std::vector<Rgb> colours;              // of depths 1 and 8
    std::vector<uint8_t> rows;
};

RasterPicture DecodePng(std::span<const uint8_t> bytes);
RasterPicture DecodePnm(std::span<const uint8_t> bytes);

inline constexpr uint64_t MOST_RASTER_BYTES = uint64_t{1} << 31;

} // namespace tifftool

#endif
