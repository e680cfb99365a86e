/* A packed DIB as a BMP file. */
#ifndef TOOLS_BMP_H
#define TOOLS_BMP_H

#include "tiff/base.h"

#include <cstdint>
#include <span>
#include <string>

namespace tifftool {

// Bits per pixel, of a DIB with either kind of header.
uint32_t DepthOf(std::span<const uint8_t> dib);

// Writes into a file that must be there, or must not. Returns 0, or the system's code for what went
// wrong; a new file that could not be written to its end is removed.
uint32_t WriteBmp(const char* path, std::span<const uint8_t> dib, bool isNew);

// Reads a BMP file into a movable block that the caller frees. Returns an empty text, with a
// null block for a file of another kind, or in a few words what is wrong with it.
std::string ReadBmp(const char* path, HGLOBAL& dib);

} // namespace tifftool

#endif
