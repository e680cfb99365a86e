/* Pictures that commands read. */
#ifndef TOOLS_PAGES_H
#define TOOLS_PAGES_H

#include "commands.h"

#include <functional>

namespace tifftool {

inline constexpr uint32_t FIRST_BILEVEL = 205; // selectors from here on are of CCITT compressions

// Handles a packed DIB; "where" names it for messages. Returns an exit code.
using PictureHandler = std::function<int(const OwnedBlock& dib, const std::string& where)>;

// Hands over a BMP picture, or every page of a TIFF file, until a handler fails.
int ForEachPicture(const char* path, const PictureHandler& handle);

// Hands over one page, counted from 1, or a BMP picture.
int WithPicture(const char* path, uint32_t page, const PictureHandler& handle);

// Says why a picture does not suit a compression: the library would take samples for bits.
int CheckDepth(const OwnedBlock& dib, uint32_t selector, const std::string& where);

} // namespace tifftool

#endif
