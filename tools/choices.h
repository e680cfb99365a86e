/* What people choose by name on the command line. */
#ifndef TOOLS_CHOICES_H
#define TOOLS_CHOICES_H

#include <cstdint>

namespace tifftool {

// The library's compression selector, 0 for a name that is not known.
uint32_t FindCompression(const char* name);

// Zero when the text is not a number from 1 on that the library could hold.
uint32_t ParsePage(const char* text);

} // namespace tifftool

#endif
