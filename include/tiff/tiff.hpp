// The library for C++17 and later: guards for what it returns, paths of std::filesystem, and results that
// carry the error's number and text. Header-only, over the functions of tiff.h.
//
//     tiffdll::Result<tiffdll::Block> dib = tiffdll::LoadPage("fax.tif", 0);
//     if (!dib)
//         std::cerr << dib.error().text();
//
// What has no function here is called through Call, which takes paths too:
//
//     auto merged = tiffdll::Call(MergeTiffFiles, archive, received, nullptr, 0);
#ifndef TIFF_TIFF_HPP
#define TIFF_TIFF_HPP

#include "tiff/tiff.h"

#include <array>
#include <filesystem>
#include <string>
#include <utility>

namespace tiffdll {

// Why a function failed. The code is one of TiffErrorCode, or the status of a line routine.
class Error {
public:
    Error() = default;
    explicit Error(uint32_t code) : number(code)
    {
        TiffErrorString(message.data(), static_cast<int32_t>(code));
    }
    uint32_t code() const noexcept
    {
        return number;
    }
    const char* text() const noexcept
    {
        return message.data();
    }
    explicit operator bool() const noexcept
    {
        return number != 0;
    }

private:
    uint32_t number = 0;
    std::array<char, 64> message{};
};

// Owns a handle, and frees it at the end of its scope.
template <class Handle, class Free>
class Guard {
public:
    Guard() = default;
    explicit Guard(Handle owned) noexcept : handle(owned)
    {
    }
    Guard(Guard&& other) noexcept : handle(other.release())
    {
    }
    Guard& operator=(Guard&& other) noexcept
    {
        if (this != &other)
            reset(other.release());
        return *this;
    }
    ~Guard()
    {
        reset();
    }
    Handle get() const noexcept
    {
        return handle;
    }
    Handle release() noexcept
    {
        return std::exchange(handle, nullptr);
    }
    void reset(Handle owned = nullptr) noexcept
    {
        if (Handle old = std::exchange(handle, owned))
            Free()(old);
    }
    explicit operator bool() const noexcept
    {
        return handle != nullptr;
    }

private:
    Handle handle = nullptr;
};

struct FreeFile {
    void operator()(HGLOBAL file) const noexcept
    {
        CloseTiffFile(file);
    }
};
struct FreeBlock {
    void operator()(HGLOBAL block) const noexcept
    {
        GlobalFree(block);
    }
};
// Deletes through the handle's own library: a program that has no GDI need not link it.
struct FreeGdiObject {
    void operator()(void* object) const noexcept
    {
        using Delete = int(WINAPI*)(void*);
        const HMODULE gdi = GetModuleHandleA("gdi32.dll");
        const FARPROC found = gdi ? GetProcAddress(gdi, "DeleteObject") : nullptr;
        if (found)
            reinterpret_cast<Delete>(reinterpret_cast<void*>(found))(object);
    }
};

using File = Guard<HGLOBAL, FreeFile>;          // of OpenTiffFile and OpenTiffInMemory
using Block = Guard<HGLOBAL, FreeBlock>;        // a DIB, a TIFF in memory, values of a tag
using Bitmap = Guard<HBITMAP, FreeGdiObject>;   // of LoadTiffIntoBitmap and others
using Palette = Guard<HPALETTE, FreeGdiObject>; // of GetTiffImagePalette

// A block's bytes, for as long as this lives. Do not let the library change the block meanwhile.
template <class Element = BITMAPINFOHEADER>
class Lock {
public:
    explicit Lock(const Block& block) noexcept
        : handle(block.get()), memory(handle ? static_cast<Element*>(GlobalLock(handle)) : nullptr)
    {
    }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;
    ~Lock()
    {
        if (memory)
            GlobalUnlock(handle);
    }
    Element* get() const noexcept
    {
        return memory;
    }
    Element* operator->() const noexcept
    {
        return memory;
    }
    explicit operator bool() const noexcept
    {
        return memory != nullptr;
    }

private:
    HGLOBAL handle;
    Element* memory;
};

// What a function gave. It is false for a failure. A picture that could be decoded in part is there, with its
// error.
template <class Value>
class Result {
public:
    Result(Value given, Error cause) : content(std::move(given)), why(cause)
    {
    }
    explicit operator bool() const noexcept
    {
        return static_cast<bool>(content);
    }
    Value& value() & noexcept
    {
        return content;
    }
    const Value& value() const& noexcept
    {
        return content;
    }
    Value value() && noexcept
    {
        return std::move(content);
    }
    const Error& error() const noexcept
    {
        return why;
    }

private:
    Value content;
    Error why;
};

// The calling thread's paths are UTF-8 as long as this lives.
class Utf8Paths {
public:
    Utf8Paths() : before(GetTiffPathCodePage())
    {
        SetTiffPathCodePage(TIFF_PATHS_UTF8);
    }
    Utf8Paths(const Utf8Paths&) = delete;
    Utf8Paths& operator=(const Utf8Paths&) = delete;
    ~Utf8Paths()
    {
        SetTiffPathCodePage(before);
    }

private:
    uint32_t before;
};

namespace detail {

inline std::string Utf8(const std::filesystem::path& path)
{
    const auto text = path.u8string(); // of char8_t from C++20 on
    return std::string(text.begin(), text.end());
}

class PathText {
public:
    explicit PathText(const std::filesystem::path& path) : text(Utf8(path))
    {
    }
    operator const char*() const noexcept
    {
        return text.c_str();
    }

private:
    std::string text;
};

// An argument as the library takes it, alive until the call is over.
template <class Argument>
const Argument& Passed(const Argument& argument) noexcept
{
    return argument;
}
template <class Handle, class Free>
Handle Passed(const Guard<Handle, Free>& guard) noexcept
{
    return guard.get();
}
inline PathText Passed(const std::filesystem::path& path)
{
    return PathText(path);
}

} // namespace detail

// Calls a function of tiff.h with guards, and with paths of std::filesystem or UTF-8. The result is false
// when the function returns 0 or null.
template <class Given, class... Parameters, class... Arguments>
Result<Given> Call(Given(TIFF_CALL* function)(Parameters...), const Arguments&... arguments)
{
    const Utf8Paths utf8;
    SetTiffError(TIFF_ERROR_NONE);
    Given given = function(detail::Passed(arguments)...);
    const uint32_t code = TiffError();
    return {given, code != TIFF_ERROR_NONE ? Error(code) : Error()};
}

// The same with the handle that the function returns in a guard.
template <class Owner, class Given, class... Parameters, class... Arguments>
Result<Owner> CallFor(Given(TIFF_CALL* function)(Parameters...), const Arguments&... arguments)
{
    const Result<Given> called = Call(function, arguments...);
    return {Owner(called.value()), called.error()};
}

inline Result<File> OpenFile(const std::filesystem::path& path, uint32_t mode = T_READ)
{
    return CallFor<File>(OpenTiffFile, path, mode);
}

inline Result<Block> LoadPage(const std::filesystem::path& path, uint32_t page)
{
    return CallFor<Block>(LoadTiffIntoDIB, path, page, 0);
}

inline Result<Block> LoadPage(const File& file, uint32_t page)
{
    return CallFor<Block>(LoadTiffChainIntoDIB, file, page);
}

inline Result<Bitmap> LoadBitmap(const std::filesystem::path& path, uint32_t page)
{
    return CallFor<Bitmap>(LoadTiffIntoBitmap, path, page, 0);
}

// Appends a DIB as a page.
inline Result<int32_t> SavePage(const std::filesystem::path& path, const Block& dib, uint32_t selector)
{
    return Call(SaveDIBInTiffFile, path, dib, selector, 0);
}

} // namespace tiffdll

#endif
