// Line routines that convert; applications use the plain ones of the public header.
#pragma once

#include "codecs/codec_context.h"
#include "raster/picture_format.h"
#include "tiff/lines.h"

namespace tiff {

// The rows that DllFlushTiffLineDIB copies lines to.
RowsInPlace DibRows(const TiffDecodeLineContext& context, bool zeros);

// As DllFlushTiffLine24DIB, but the line stays as it is.
intptr_t FlushSwappedLine(void* line, uint32_t row, void* context);

intptr_t DllFlushTiffLine16DIB(void* line, uint32_t row, void* context);
intptr_t DllFlushTiffLineCMYKDIB(void* line, uint32_t row, void* context);
intptr_t DllFlushTiffLineYCbCrDIB(void* line, uint32_t row, void* context);

// A routine that writes lines into a DIB, and what is known of it.
struct DibRoutine {
    TiffLineCallback routine;
    TiffLineCallback exported; // what applications call for the same pixels; may be null
    bool leavesLines;          // as they are, and looks at no spare bytes
    bool copies;               // and does nothing else
};

const DibRoutine& RoutineOf(Conversion conversion);

// The one that stands behind an exported routine, or null for a routine of the application's own.
const DibRoutine* BehindExport(TiffLineCallback exported);

// Line bytes count the DIB's bytes: twice as many come out of the first, four for every three
// out of the second.
intptr_t DllFillTiffLine16DIB(void* line, uint32_t row, void* context);
intptr_t DllFillTiffLineCMYKDIB(void* line, uint32_t row, void* context);
intptr_t DllFillTiffLineYCbCrDIB(void* line, uint32_t row, void* context);

} // namespace tiff
