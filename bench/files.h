// Files of many pages for the jobs that open, and the files that the Windows program loads.
#pragma once

#include "bench/picture.h"

// Writes pages, each with some picture bytes and a directory of 13 entries. The spread is the distance from
// page to page in bytes; 0 packs them closely. Spread files have holes.
void WritePages(const std::string& path, uint32_t pageCount, uint32_t spread, uint32_t pictureBytes = 2);

inline constexpr uint32_t CLOSE = 0;
inline constexpr uint32_t TYPICAL_SPREAD = 38 * 1024;

void WriteFilesForWindows(const std::vector<Picture>& pictures, const std::filesystem::path& folder);
