/* The notes of the shown page: where they are in the window, and what mouse and keys do to them. */
#ifndef TOOLS_VIEW_NOTES_H
#define TOOLS_VIEW_NOTES_H

#include "view_layout.h"

namespace tiffview {

// Where the whole page is, unturned, and what turns it to where it is shown in the window.
struct ShownPage {
    RECT picture;
    XFORM turn;
};

// For a window that is scrolled by so many pixels.
ShownPage PlacePage(const Layout& layout, const View& view, int32_t scrolledX, int32_t scrolledY);

struct NotesView {
    size_t chosen = SIZE_MAX; // by a click
    bool dragging = false;
    POINT dragStart{}, dragEnd{}; // pixels of the window
};

bool HasChosenNote(const NotesView& notes, const Document& document);

// Draws the notes turned and scaled with the page, and marks the chosen one.
void DrawNotesInView(const NotesView& notes, const Document& document, const ShownPage& shown, HDC dc);

// Follows a message of the mouse in a window. A dragged frame becomes a new note, a click chooses a note, a
// double click edits one. False for other messages; `failure` says why a note could not be saved.
bool FollowMouse(NotesView& notes, Document& document, const ShownPage& shown, HWND window, UINT message,
                 LPARAM place, std::string& failure);

// These do nothing without a chosen note. They return why they failed, or an empty text.
std::string EditChosenNote(const NotesView& notes, Document& document, HWND window);
std::string DeleteChosenNote(NotesView& notes, Document& document);

} // namespace tiffview

#endif
