/* Saving the page that the viewer shows. */
#ifndef TOOLS_VIEW_SAVE_H
#define TOOLS_VIEW_SAVE_H

#include "view_document.h"

namespace tiffview {

// What the extension of a path stands for.
enum class SavedAs { Tiff, Cals, Bmp };

SavedAs SavedAsOf(const std::string& path);

enum class Existing { Replaced, Extended }; // only TIFF files can be extended

// A TIFF page is moved without decoding it. A file that is replaced stays until the new one is whole. Returns
// what the user must know, or an empty text.
std::string SavePage(const Document& document, const std::string& path, Existing existing);

} // namespace tiffview

#endif
