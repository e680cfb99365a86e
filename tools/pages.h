/* Pictures that commands read. */
#ifndef TOOLS_PAGES_H
#define TOOLS_PAGES_H

#include "inputs.h"
#include "source.h"

#include <functional>
#include <memory>

namespace tifftool {

// Whether a selector is of a CCITT compression.
constexpr bool IsBilevel(uint32_t selector)
{
    return selector >= TIFF_SAVE_MODIFIED_HUFFMAN && selector <= TIFF_SAVE_GROUP4;
}

// A packed DIB, and its source.
struct Picture {
    const OwnedBlock& dib;
    std::string where;    // for messages
    uint32_t page;        // counted from 1; of a BMP or a CALS file 1
    uint32_t pages;       // number of pictures that its file gives
    uint32_t error;       // 0, or why it is not whole
    const Source* source; // its file, with the page loaded; null for a file that is one picture
};

// Returns an exit code.
using PictureHandler = std::function<int(const Picture& picture)>;

enum class Damage {
    Refused,  // only whole pictures of whole files, until a handler fails
    Tolerated // the decoded part of each page
};

// Loads a page as a DIB, counted from 0; null on failure, or damaged as the thread's error says.
HGLOBAL LoadPage(HGLOBAL file, uint32_t page);

// A file whose pictures are handed over one by one.
struct PictureFile {
    std::string path;
    std::unique_ptr<const Source> source;     // null for a file that is one picture
    std::unique_ptr<const OwnedBlock> single; // that one
    uint32_t error = 0;                       // why it is not whole
    std::vector<uint32_t> pages;              // the selected ones
};

// Opens a BMP picture, a CALS file or a TIFF file, and selects its pages. Returns an exit code.
int OpenPictures(const Input& input, Damage damage, PictureFile& file);

// Hands over one of the selected pictures.
int HandlePicture(PictureFile& file, size_t index, Damage damage, const PictureHandler& handle);

// Hands over all of them.
int ForEachPicture(const Input& input, Damage damage, const PictureHandler& handle);
int ForEachPicture(std::span<const Input> inputs, Damage damage, const PictureHandler& handle);

// Reports a depth that does not suit a compression: the library would read samples as bits.
int CheckDepth(const Picture& picture, uint32_t selector);

} // namespace tifftool

#endif
