/* Why a file cannot be used, in words. */
#ifndef TOOLS_DIAGNOSIS_H
#define TOOLS_DIAGNOSIS_H

#include "tiff/base.h"

#include <cstdint>
#include <string>

namespace tifftool {

// The system's text for a failure.
std::string SystemCause(DWORD cause);

// Why this is not a TIFF file: missing, a folder, empty, held by another program, or of another kind, which
// is named. Empty when it begins like a TIFF file.
std::string WhyNotTiff(const std::string& path);

bool IsFolder(const std::string& path);

// Both paths lead to the same existing file.
bool IsSameFile(const std::string& left, const std::string& right);

} // namespace tifftool

#endif
