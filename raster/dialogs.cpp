#include "raster/dialogs.h"

#include "core/sibling_library.h"

namespace tiff {

FARPROC FindDialog(const char* name, Module& held)
{
    held = LoadSibling("KVDlgs.dll");
    const FARPROC found = held ? GetProcAddress(held.Get(), name) : nullptr;
    // Deliberate: a library of that name that lacks the dialog stays loaded.
    if (!found)
        held.Release();
    return found;
}

} // namespace tiff
