/* Files in which some pages are drawn upon. The others are copied as they are. */
#ifndef TOOLS_REDRAW_H
#define TOOLS_REDRAW_H

#include "inputs.h"

#include <functional>

namespace tifftool {

struct RedrawOrder {
    std::string input, output;
    PageSelection selection; // the pages to draw upon
    bool turns = false;      // they are turned, by so many quarters
    uint32_t quarters = 0;
};

struct DrawnPage {
    const OwnedBlock& dib;
    uint32_t page, pages; // counted from 1, and how many there are
    uint32_t quarters;    // to turn the pixels by, so that the page is turned as wanted
};

// Makes a new packed DIB of a page's; null when that fails.
using DrawPage = std::function<HGLOBAL(const DrawnPage& page)>;

// Files, "-o" and "--pages"; false with a message. "-o" goes with one file.
bool ReadRedrawOrders(const Command& command, const Options& options, std::span<const char* const> files,
                      std::vector<RedrawOrder>& orders);

// Writes the file, whole or not at all. Drawn pages keep their compression and their other tags. Pages that
// would lose something are refused. Returns an exit code.
int Redraw(const RedrawOrder& order, const DrawPage& draw);

// All files, also when one fails.
int Redraw(std::span<const RedrawOrder> orders, const DrawPage& draw);

// Gives page 0 of a file, which is loaded, the tags of another page that do not belong to its code. With
// `turned` the resolutions change places.
bool CarryTags(HGLOBAL from, uint32_t page, HGLOBAL to, bool turned = false);

// A packed DIB's parts, for writing.
struct DibParts {
    BITMAPINFOHEADER* header;
    RGBQUAD* colours;
    uint32_t colourCount;
    uint8_t* rows; // from the bottom
    size_t stride;
};

DibParts PartsOf(void* dib);

struct DrawnText {
    int32_t x, y; // pixels
    const char* text;
    const char* faceName;
    uint32_t points;
};

// A copy of a page's DIB with a text.
HGLOBAL DrawString(HGLOBAL dib, const DrawnText& text);

} // namespace tifftool

#endif
