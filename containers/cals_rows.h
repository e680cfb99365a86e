// CALS files as they lie on disk: their header, and their picture as a source of rows.
#pragma once

#include "containers/cals_header.h"
#include "raster/row_source.h"

namespace tiff::cals {

// From the beginning of a stream. Fails with 6, and with 18 when there is no header.
[[nodiscard]] Status ReadHeader(TiffStream stream, NewHeader header);

// The same by the file's name; 29 without one.
[[nodiscard]] Status ReadHeaderOfFile(const char* path, NewHeader header);

// The picture of an open file, its stream's as long as it is read. Fails as ReadHeader, with 18 for a
// header without a picture, and with 1 for one of 4 GiB and more.
[[nodiscard]] Status OpenRows(TiffStream stream, RowSource& source);

} // namespace tiff::cals
