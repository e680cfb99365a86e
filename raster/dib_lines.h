// Flush routines that convert; applications use the plain ones of the public header.
#pragma once

#include "tiff/lines.h"

namespace tiff {

intptr_t DllFlushTiffLine16DIB(void* line, uint32_t row, void* context);
intptr_t DllFlushTiffLineCMYKDIB(void* line, uint32_t row, void* context);
intptr_t DllFlushTiffLineYCbCrDIB(void* line, uint32_t row, void* context);

} // namespace tiff
