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

// A routine that writes lines into a DIB, and its properties.
struct DibRoutine {
    TiffLineCallback routine;
    TiffLineCallback exported; // what applications call for the same pixels; may be null
    bool leavesLines;          // changes no line and reads no spare bytes
    bool copies;               // only copies
};

const DibRoutine& RoutineOf(Conversion conversion);

// The routine behind an exported one, or null for a routine of the application.
const DibRoutine* BehindExport(TiffLineCallback exported);

// Line bytes are the DIB's bytes. The first routine produces twice as many, the second four for every three.
intptr_t DllFillTiffLine16DIB(void* line, uint32_t row, void* context);
intptr_t DllFillTiffLineCMYKDIB(void* line, uint32_t row, void* context);
intptr_t DllFillTiffLineYCbCrDIB(void* line, uint32_t row, void* context);

} // namespace tiff
