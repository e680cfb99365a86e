// The destination of rows: a DIB, a bitmap, the screen, an application's line routine.
#pragma once

#include "codecs/line_target.h"
#include "raster/picture_format.h"

namespace tiff {

struct RowSink {
    // Prepares for rows of this format and fills in the line target; null when that is filled in already.
    Status (*begin)(void* record, const PictureFormat& format, LineTarget& lines);
    // Gets the status of the rows and returns that of the picture; null when there is nothing to do.
    Status (*end)(void* record, Status status);
    void* record; // the sink's own
    LineTarget lines;
};

} // namespace tiff
