// Loading a page's tags through a stream that is open already.
#pragma once

#include "core/directory_window.h"
#include "core/win32.h"

namespace tiff {

// Loads a page that is not loaded yet. The window has the file's stream and byte order, and serves for all
// its pages; fileBytes is the size to read. `whole` is set when all tags and values in the file were loaded.
// Fails with 1, 3, 6 or 34.
[[nodiscard]] Status LoadTags(HGLOBAL file, uint32_t page, DirectoryWindow& window, uint32_t fileBytes,
                              bool& whole);

// The same through a stream of its own.
[[nodiscard]] Status LoadTags(HGLOBAL file, uint32_t page);

} // namespace tiff
