#include "core/sibling_library.h"

#include "core/process_state.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace tiff {

// This library's own path with another file name, of ASCII; false when it has no folder or is too long. The
// folder may have any name, whatever the code page.
static bool PathBesideUs(const char* fileName, WCHAR (&path)[MAX_PATH_BYTES])
{
    size_t length = GetModuleFileNameW(processState.module, path, MAX_PATH_BYTES);
    if (length >= MAX_PATH_BYTES)
        return false;
    while (length > 0 && path[length - 1] != '\\')
        --length;
    const size_t nameLength = std::strlen(fileName) + 1;
    if (length == 0 || nameLength > MAX_PATH_BYTES - length)
        return false;
    std::copy_n(fileName, nameLength, path + length);
    return true;
}

Module LoadSibling(const char* fileName)
{
    WCHAR path[MAX_PATH_BYTES];
    HMODULE module = PathBesideUs(fileName, path) ? LoadLibraryW(path) : nullptr;
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
