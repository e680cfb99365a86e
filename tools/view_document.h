/* What the viewer shows: a page of a TIFF file or a CALS file. Files are open only while they are read. */
#ifndef TOOLS_VIEW_DOCUMENT_H
#define TOOLS_VIEW_DOCUMENT_H

#include "tiff/tiff.h"

#include <string>
#include <vector>

namespace tiffview {

struct Document {
    std::string path;                          // empty for none
    uint32_t format = TIFF_FORMAT_ANY;         // TIFF or CALS, when it could be opened
    uint32_t pages = 0, page = 0;              // counted from 0
    uint32_t width = 0, height = 0;            // of the page
    double horizontalDpi = 0, verticalDpi = 0; // 0 when unknown
    std::string coding;                        // "Group 4"
    std::vector<TiffNote> notes;               // of the page, without their texts
    std::string fault;                         // why the page, or the file, cannot be described; empty
};

Document OpenDocument(const std::string& path);
void GoToPage(Document& document, uint32_t page);

// "fax.tif - tiffview"
std::string Title(const Document& document);

// "Page 2 of 3: 1728 x 2200, Group 4, 204 x 196 dpi"
std::string Describe(const Document& document);

// The page as a packed DIB; null with the library's error.
HGLOBAL LoadPage(const Document& document);

// Draws the page's notes where the page is shown.
void DrawNotes(const Document& document, HDC dc, const RECT& picture);

// Edits a note of the page in the library's dialog, or a new one that follows the others, and saves it.
// Returns why it could not, or an empty text.
std::string EditNote(Document& document, HWND window, size_t index, TiffNote note);
std::string DeleteNote(Document& document, size_t index);

std::string ErrorText(uint32_t code);

} // namespace tiffview

#endif
