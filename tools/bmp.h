/* A packed DIB as a BMP file. */
#ifndef TOOLS_BMP_H
#define TOOLS_BMP_H

#include "tiff/base.h"

#include <cstdint>
#include <span>
#include <string>

namespace tifftool {

// Bits per pixel of a DIB with either kind of header.
uint32_t DepthOf(std::span<const uint8_t> dib);

// Writes into an existing file, or with isNew into one that must not exist. Returns 0 or the system's error
// code; a new file that was not completed is removed.
uint32_t WriteBmp(const char* path, std::span<const uint8_t> dib, bool isNew);

// Reads a BMP file into a movable block that the caller frees. Returns a short text with the fault, or an
// empty one. The block is null for a file of another kind, whose text is empty.
std::string ReadBmp(const char* path, HGLOBAL& dib);

} // namespace tifftool

#endif
