// The dialogs of CALS files. Declared for all, so that only their implementation needs the desktop.
#pragma once

#include "containers/cals_header.h"
#include "core/vocabulary.h"
#include "core/win32.h"

namespace tiff::cals {

struct DialogRequest {
    HWND parent;      // null for none
    const char* path; // of the file to load, or to write
    uint8_t* header;  // HEADER_BYTES to be shown or edited
};

// 0 to go on, CANCELLED, or 1 when there is no dialog.
[[nodiscard]] Status ShowHeader(const DialogRequest& request);
[[nodiscard]] Status EditHeader(const DialogRequest& request);

} // namespace tiff::cals
