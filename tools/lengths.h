/* Lengths and places on paper, as users give them. */
#ifndef TOOLS_LENGTHS_H
#define TOOLS_LENGTHS_H

#include "options.h"

namespace tifftool {

inline constexpr uint32_t MOST_POINTS = 1000;

// Parses lengths between separators, such as "210x297" or "0.5in": millimetres unless "in" follows, given in
// hundredths of an inch. Returns how many there are, at most `most`, or 0 for anything else.
size_t ParseLengths(const char* text, char separator, uint32_t* hundredths, size_t most);

// The pixels of a length.
int32_t PixelsOf(uint32_t hundredths, uint32_t dotsPerInch);

} // namespace tifftool

#endif
