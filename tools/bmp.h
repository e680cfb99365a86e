/* A packed DIB as a BMP file. */
#ifndef TOOLS_BMP_H
#define TOOLS_BMP_H

#include "tiff/base.h"

#include <cstdint>
#include <span>
#include <string>

namespace tifftool {

// Returns an empty text, or in a few words what went wrong. A file that could not be written
// to its end is removed.
std::string WriteBmp(const char* path, std::span<const uint8_t> dib);

// Reads a BMP file into a movable block that the caller frees. Returns an empty text, with a
// null block for a file of another kind, or in a few words what is wrong with it.
std::string ReadBmp(const char* path, HGLOBAL& dib);

} // namespace tifftool

#endif
