#include "core/sibling_library.h"

#include "core/errors.h"
#include "core/process_state.h"

#include <cstdint>
#include <cstring>

namespace tiff {

// This library's own path with another file name; false when it tells no folder or is too long.
static bool PathBesideUs(const char* fileName, char (&path)[MAX_PATH_BYTES])
{
    const DWORD length = GetModuleFileNameA(processState.module, path, sizeof(path));
    if (length == 0 || length >= sizeof(path))
        return false;
    char* lastSeparator = std::strrchr(path, '\\');
    if (!lastSeparator)
        return false;
    char* name = lastSeparator + 1;
    const size_t nameBytes = std::strlen(fileName) + 1;
    if (nameBytes > static_cast<size_t>(path + sizeof(path) - name))
        return false;
    std::memcpy(name, fileName, nameBytes);
    return true;
}

Module LoadSibling(const char* fileName)
{
    char path[MAX_PATH_BYTES];
    HMODULE module = PathBesideUs(fileName, path) ? LoadLibraryA(path) : nullptr;
    return Module(module ? module : LoadLibraryA(fileName));
}

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
