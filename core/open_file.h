// Where an open file's bytes are.
#pragma once

#include "core/records.h"
#include "core/stream.h"

namespace tiff {

// The file on disk, or a memory stream over the record's block, for reading.
TiffStream OpenRecord(const TiffFileRecord& record);

} // namespace tiff
