#include "core/sibling_library.h"

#include "core/errors.h"
#include "core/process_state.h"

#include <cstdint>

namespace tiff {

// Below this a module handle is an error code.
static constexpr uintptr_t LEAST_MODULE = 32;

static bool IsLoaded(HMODULE module)
{
    return reinterpret_cast<uintptr_t>(module) >= LEAST_MODULE;
}

FARPROC FindJpegFunction(const char* name, Status& status)
{
    if (!IsLoaded(processState.jpegLibrary))
        processState.jpegLibrary = LoadLibraryA("JPGLIB.DLL");
    FARPROC function = nullptr;
    if (!IsLoaded(processState.jpegLibrary))
        status = error::JpegLibraryMissing;
    else if (function = GetProcAddress(processState.jpegLibrary, name); !function)
        status = error::JpegFunctionMissing;
    else
        return function;
    SetTiffError(status);
    return nullptr;
}

void UnloadJpegLibrary()
{
    if (IsLoaded(processState.jpegLibrary))
        FreeLibrary(processState.jpegLibrary);
    processState.jpegLibrary = nullptr;
}

} // namespace tiff
