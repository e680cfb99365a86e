#include "containers/cals_dialogs.h"

namespace tiff::cals {

// The library has no dialogs of its own yet.
Status ShowDialog(const DialogRequest&)
{
    return error::DialogLibraryMissing;
}

} // namespace tiff::cals
