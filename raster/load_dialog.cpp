#include "raster/load_dialog.h"

#include "core/errors.h"
#include "raster/dialogs.h"
#include "tiff/load.h"

#include <cstddef>

namespace tiff {

// The dialogs library is compiled against it.
static_assert(offsetof(TiffLoadDialogRequest, page) == sizeof(HGLOBAL));

static constexpr int32_t GO_ON = 1;
static constexpr int32_t CANCEL = 2;

Status ShowLoadDialog(int32_t dialog, HGLOBAL file, uint32_t page)
{
    if (!dialog)
        return error::None;
    Module library;
    const FARPROC function = FindDialog("TiffLoadDialog", library);
    if (!function)
        return error::DialogLibraryMissing;
    using LoadDialog = int32_t (*)(TiffLoadDialogRequest*);
    TiffLoadDialogRequest request = {file, page};
    switch (reinterpret_cast<LoadDialog>(reinterpret_cast<void*>(function))(&request)) {
    case GO_ON:
        return error::None;
    case CANCEL:
        return CANCELLED;
    default:
        return error::NotEnoughMemory;
    }
}

void RefuseLoad(Status status)
{
    StoreLastError(status == CANCELLED ? error::None : status);
}

} // namespace tiff
