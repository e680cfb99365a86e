/* What the viewer draws into its window. */
#ifndef TOOLS_VIEW_DRAW_H
#define TOOLS_VIEW_DRAW_H

#include "view_layout.h"

namespace tiffview {

// In the middle of an empty window, or over the top of a page that is not whole.
void DrawSentence(HWND window, HDC dc, const std::string& sentence, bool overPage);

// Returns 0 or the library's error.
uint32_t DrawPage(HWND window, HDC dc, const Document& document, const View& view, const Layout& layout);

} // namespace tiffview

#endif
