/* A packed DIB as a BMP file. */
#ifndef TOOLS_BMP_H
#define TOOLS_BMP_H

#include <cstdint>
#include <span>
#include <string>

namespace tifftool {

// Returns an empty text, or in a few words what went wrong. A file that could not be written
// to its end is removed.
std::string WriteBmp(const char* path, std::span<const uint8_t> dib);

} // namespace tifftool

#endif
