// Guards for the system's handles.
#pragma once

#include "core/file_names.h"
#include "core/win32.h"

#include <utility>

namespace tiff {

class FileHandle {
public:
    FileHandle() = default;
    FileHandle(const char* path, DWORD access, DWORD disposition)
        : handle(OpenNamedFile(path, access, disposition))
    {
    }
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;
    ~FileHandle()
    {
        if (*this)
            CloseHandle(handle);
    }

    explicit operator bool() const
    {
        return handle != INVALID_HANDLE_VALUE;
    }
    HANDLE Get() const
    {
        return handle;
    }
    HANDLE Release()
    {
        return std::exchange(handle, INVALID_HANDLE_VALUE);
    }

private:
    HANDLE handle = INVALID_HANDLE_VALUE;
};

class Module {
public:
    Module() = default;
    explicit Module(HMODULE module) : module(module)
    {
    }
    Module(Module&& other) noexcept : module(other.Release())
    {
    }
    Module& operator=(Module&& other) noexcept
    {
        Module released(std::exchange(module, other.Release()));
        return *this;
    }
    ~Module()
    {
        if (module)
            FreeLibrary(module);
    }

    explicit operator bool() const
    {
        return module != nullptr;
    }
    HMODULE Get() const
    {
        return module;
    }
    HMODULE Release()
    {
        return std::exchange(module, nullptr);
    }

private:
    HMODULE module = nullptr;
};

} // namespace tiff
