// Text with GDI, as pages and overlays need it.
#pragma once

#include "core/win32.h"

namespace tiff {

// The height of a font of so many points; false when it is out of reason.
[[nodiscard]] bool FontHeight(uint32_t points, uint32_t dotsPerInch, int32_t& height);

// A font of this face, with a height, in an otherwise empty record. The face need not end in a zero.
LOGFONTA FontOfFace(const char* face, size_t faceBytes, int32_t height);

} // namespace tiff
