// The last error as the library itself sets it.
#pragma once

#include "core/vocabulary.h"
#include "tiff/errors.h"

namespace tiff {

// Sets the last error to any value: a line routine may stop a codec with its own status, and the JPEG signals
// lie above the range that SetTiffError takes from callers.
void StoreLastError(Status status);

// For the step that knows the cause of a failure: sets the error and returns it.
inline Status Fail(Status status)
{
    SetTiffError(status);
    return status;
}

} // namespace tiff
