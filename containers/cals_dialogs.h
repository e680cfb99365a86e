// The dialogs of CALS files. Declared for all, so that only their implementation needs the desktop.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"

namespace tiff::cals {

enum class Dialog { ShowHeader, EditHeader };

struct DialogRequest {
    Dialog dialog;
    HWND parent;      // null for none
    const char* path; // of the file to load, or to write
    uint8_t* header;  // to be edited: HEADER_BYTES; null when the header is the file's
};

// 0 to go on, CANCELLED, or why there was no dialog.
[[nodiscard]] Status ShowDialog(const DialogRequest& request);

} // namespace tiff::cals
