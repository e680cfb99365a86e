// The line routines of drawings on the screen.
#pragma once

#include "raster/screen_rows.h"
#include "tiff/codecs.h"

namespace tiff {

// The exported routine for pictures of this depth and turn.
TiffLineCallback ScreenRoutine(uint32_t bitCount, Turn turn);

// Makes rows those of the calling thread's drawing, for a scope: only its line routines know them.
class ThreadDrawing {
public:
    explicit ThreadDrawing(ScreenRows& rows);
    ThreadDrawing(const ThreadDrawing&) = delete;
    ThreadDrawing& operator=(const ThreadDrawing&) = delete;
    ~ThreadDrawing();

private:
    ScreenRows* const before;
};

} // namespace tiff
