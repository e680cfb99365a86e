#include "raster/load_dialog.h"

#include "core/errors.h"
#include "core/sibling_library.h"
#include "tiff/load.h"

#include <cstddef>

namespace tiff {

// The dialogs library is compiled against it.
static_assert(offsetof(TiffLoadDialogRequest, page) == sizeof(HGLOBAL));

static constexpr int32_t GO_ON = 1;
static constexpr int32_t CANCEL = 2;

bool PassLoadDialog(int32_t dialog, HGLOBAL file, uint32_t page)
{
    if (!dialog)
        return true;
    Module library = LoadSibling(DIALOGS_LIBRARY);
    const FARPROC function = library ? GetProcAddress(library.Get(), "TiffLoadDialog") : nullptr;
    if (!function) {
        // Deliberate: a library of that name that lacks the dialog stays loaded.
        library.Release();
        SetTiffError(error::DialogLibraryMissing);
        return false;
    }
    using LoadDialog = int32_t (*)(TiffLoadDialogRequest*);
    TiffLoadDialogRequest request = {file, page};
    const int32_t answer = reinterpret_cast<LoadDialog>(reinterpret_cast<void*>(function))(&request);
    if (answer != GO_ON)
        SetTiffError(answer == CANCEL ? error::None : error::NotEnoughMemory);
    return answer == GO_ON;
}

} // namespace tiff
