#include "core/sibling_library.h"

#include "core/process_state.h"

#include <cstdint>
#include <cstring>

namespace tiff {

// This library's own path with another file name; false when it has no folder or is too long.
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

// Null for handles that are error codes.
static Module LoadJpegLibrary()
{
    const HMODULE module = LoadLibraryA("JPGLIB.DLL");
    return Module(IsLoaded(module) ? module : nullptr);
}

// Loading the library for every page could take longer than the page: one reference stays until a file is
// closed. Another thread may have left one in the meantime.
static void KeepJpegLibrary()
{
    if (processState.jpegLibrary)
        return;
    Module another = LoadJpegLibrary();
    HMODULE none = nullptr;
    if (processState.jpegLibrary.compare_exchange_strong(none, another.Get()))
        another.Release();
}

FARPROC FindJpegFunction(const char* name, Module& held, Status& status)
{
    held = LoadJpegLibrary();
    FARPROC function = nullptr;
    if (held) {
        KeepJpegLibrary();
        function = GetProcAddress(held.Get(), name);
    }
    if (function)
        return function;
    status = held ? error::JpegFunctionMissing : error::JpegLibraryMissing;
    return nullptr;
}

void UnloadJpegLibrary()
{
    if (const HMODULE library = processState.jpegLibrary.exchange(nullptr))
        FreeLibrary(library);
}

} // namespace tiff
