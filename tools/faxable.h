/* Any picture as a page that a fax machine takes: as wide as its paper, in black and white. */
#ifndef TOOLS_FAXABLE_H
#define TOOLS_FAXABLE_H

#include "options.h"

namespace tifftool {

inline constexpr uint32_t FAX_ACROSS = 204; // dots per inch of every fax page

struct FaxForm {
    uint32_t width = 0; // pixels; 0 for the picture's own size
    uint32_t down = 0;  // dots per inch of the rows
    bool dithers = false;
    uint32_t method = 0, threshold = 0; // as DitherDIB has them
};

// Dots per inch of the rows, by the names that fax machines have for them; 0 for another name.
uint32_t FaxResolution(const std::string& name);

// Options --fit, --resolution, --dither and --threshold; false with a message.
bool ReadFaxForm(const Command& command, const Options& options, FaxForm& form);

// A new packed DIB; null with the library's error.
HGLOBAL MakeFaxable(const FaxForm& form, const OwnedBlock& dib);

} // namespace tifftool

#endif
