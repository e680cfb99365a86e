// Rows to a packed DIB.
#pragma once

#include "raster/row_source.h"

namespace tiff {

// The rows of a source as a packed DIB, and the status: the DIB is whole with 0, in part with 5, 19 and 20,
// else null.
HGLOBAL RowsToDib(const RowSource& source, Status& status);

} // namespace tiff
