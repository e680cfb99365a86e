#include "core/file_names.h"

#include "core/error_detail.h"
#include "core/errors.h"
#include "core/thread_state.h"
#include "tiff/paths.h"

namespace tiff {

namespace {

constexpr int WIDE_ROOM = MAX_PATH_BYTES;

// A path as the functions with wide names take it. False for bytes that are not UTF-8: a replacement
// character would name another file.
class WidePath {
public:
    explicit WidePath(const char* path)
        : whole(MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, text, WIDE_ROOM) > 0)
    {
    }
    explicit operator bool() const
    {
        return whole;
    }
    const WCHAR* Get() const
    {
        return text;
    }

private:
    WCHAR text[MAX_PATH_BYTES];
    bool whole;
};

bool InUtf8()
{
    return ThreadState().pathCodePage == TIFF_PATHS_UTF8;
}

// False when the name has too many bytes, or no form in UTF-8.
bool Narrow(const WCHAR* wide, FileName name)
{
    return WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, wide, -1, name, WIDE_ROOM, nullptr, nullptr) >
           0;
}

bool MakeWideTempFile(const char* folder, const char* prefix, FileName name)
{
    const WidePath wideFolder(folder), widePrefix(prefix);
    WCHAR wide[MAX_PATH_BYTES];
    if (!wideFolder || !widePrefix || !GetTempFileNameW(wideFolder.Get(), widePrefix.Get(), 0, wide))
        return false;
    const bool named = Narrow(wide, name);
    if (!named)
        DeleteFileW(wide);
    return named;
}

HANDLE CreateNamed(const char* path, DWORD access, DWORD disposition)
{
    constexpr DWORD SHARED = FILE_SHARE_READ | FILE_SHARE_WRITE;
    if (!InUtf8())
        return CreateFileA(path, access, SHARED, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
    const WidePath wide(path);
    return wide
               ? CreateFileW(wide.Get(), access, SHARED, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, nullptr)
               : INVALID_HANDLE_VALUE;
}

} // namespace

HANDLE OpenNamedFile(const char* path, DWORD access, DWORD disposition)
{
    const HANDLE file = CreateNamed(path, access, disposition);
    if (file == INVALID_HANDLE_VALUE)
        NoteSystemError(error::InputOutput, path);
    return file;
}

bool DeleteNamedFile(const char* path)
{
    if (!InUtf8())
        return DeleteFileA(path);
    const WidePath wide(path);
    return wide && DeleteFileW(wide.Get());
}

bool RenameFile(const char* from, const char* to)
{
    if (!InUtf8())
        return MoveFileA(from, to);
    const WidePath wideFrom(from), wideTo(to);
    return wideFrom && wideTo && MoveFileW(wideFrom.Get(), wideTo.Get());
}

DWORD AttributesOf(const char* path)
{
    if (!InUtf8())
        return GetFileAttributesA(path);
    const WidePath wide(path);
    return wide ? GetFileAttributesW(wide.Get()) : INVALID_FILE_ATTRIBUTES;
}

bool FindTempFolder(FileName folder)
{
    if (!InUtf8()) {
        const DWORD length = GetTempPathA(MAX_PATH_BYTES, folder);
        return length > 0 && length < MAX_PATH_BYTES;
    }
    WCHAR wide[MAX_PATH_BYTES];
    const DWORD length = GetTempPathW(MAX_PATH_BYTES, wide);
    return length > 0 && length < MAX_PATH_BYTES && Narrow(wide, folder);
}

bool MakeTempFile(const char* folder, const char* prefix, FileName name)
{
    return InUtf8() ? MakeWideTempFile(folder, prefix, name) : GetTempFileNameA(folder, prefix, 0, name) != 0;
}

bool WidenPath(const char* path, WCHAR (&wide)[MAX_PATH_BYTES])
{
    const UINT codePage = InUtf8() ? CP_UTF8 : CP_ACP;
    return MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, path, -1, wide, WIDE_ROOM) > 0;
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t SetTiffPathCodePage(uint32_t codePage) noexcept
{
    if (codePage != TIFF_PATHS_ANSI && codePage != TIFF_PATHS_UTF8) {
        SetTiffError(error::InvalidParameters);
        return 0;
    }
    ThreadState().pathCodePage = codePage;
    return 1;
}

extern "C" uint32_t GetTiffPathCodePage(void) noexcept
{
    return ThreadState().pathCodePage;
}
