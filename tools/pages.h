/* Pictures that commands read. */
#ifndef TOOLS_PAGES_H
#define TOOLS_PAGES_H

#include "commands.h"

#include <functional>

namespace tifftool {

// Whether a selector is of a CCITT compression.
constexpr bool IsBilevel(uint32_t selector)
{
    return selector >= TIFF_SAVE_MODIFIED_HUFFMAN && selector <= TIFF_SAVE_GROUP4;
}

// A packed DIB, and its source.
struct Picture {
    const OwnedBlock& dib;
    std::string where; // for messages
    uint32_t page;     // counted from 1; of a BMP or a CALS file 1
    uint32_t pages;    // number of pages in its file
    uint32_t error;    // 0, or why it is not whole
};

// Returns an exit code.
using PictureHandler = std::function<int(const Picture& picture)>;

enum class Damage {
    Refused,  // only whole pictures of whole files, until a handler fails
    Tolerated // the decoded part of each page
};

// Hands over a BMP picture, a CALS file's or every page of a TIFF file.
int ForEachPicture(const char* path, Damage damage, const PictureHandler& handle);

// Hands over one page, counted from 1, or a BMP picture or a CALS file's.
int WithPicture(const char* path, uint32_t page, Damage damage, const PictureHandler& handle);

// Reports a depth that does not suit a compression: the library would read samples as bits.
int CheckDepth(const Picture& picture, uint32_t selector);

} // namespace tifftool

#endif
