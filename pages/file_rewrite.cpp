#include "pages/file_rewrite.h"

#include "core/errors.h"
#include "core/handles.h"

#include <cstdio>
#include <cstring>

namespace tiff {

namespace {

using FileName = char (&)[MAX_PATH_BYTES];

Status NameInTempFolder(FileName name, const char* prefix)
{
    char folder[MAX_PATH_BYTES];
    const DWORD length = GetTempPathA(sizeof(folder), folder);
    if (length == 0 || length >= sizeof(folder) || !GetTempFileNameA(folder, prefix, 0, name)) {
        name[0] = 0;
        return error::InputOutput;
    }
    return error::None;
}

// Everything behind the last full stop gives way to the ending. Wanted: the stop may be one of a
// folder's name.
Status ReplaceEnding(FileName name, const char* ending)
{
    char* stop = std::strrchr(name, '.');
    const size_t stem = stop ? static_cast<size_t>(stop - name) : std::strlen(name);
    if (stem + std::strlen(ending) >= sizeof(name)) {
        name[0] = 0;
        return error::PathTooLong;
    }
    std::strcpy(name + stem, ending);
    return error::None;
}

// The call that finds a free name creates the file. It goes, so that the first page makes a new
// TIFF file of it.
Status ChooseTempName(FileName name)
{
    const Status status = NameInTempFolder(name, "TMP");
    if (status == error::None)
        DeleteFileA(name);
    return status;
}

// Wanted: the file that reserves the name stays, for those who look for what was in work.
Status ChooseTempTiffName(FileName name)
{
    Status status = NameInTempFolder(name, "tmp");
    if (status == error::None)
        status = ReplaceEnding(name, ".tif");
    if (status == error::None)
        DeleteFileA(name);
    return status;
}

Status ChooseName(FileName name, const char* path, Naming naming)
{
    if (naming == Naming::TempFolder)
        return ChooseTempName(name);
    if (naming == Naming::TempTiff)
        return ChooseTempTiffName(name);
    if (strnlen(path, sizeof(name)) == sizeof(name))
        return error::PathTooLong;
    std::strcpy(name, path);
    return ReplaceEnding(name, ".~~~");
}

} // namespace

Replacement::Replacement(const char* path, Naming naming, OnFailure onFailure)
    : path(path), onFailure(onFailure)
{
    if (const Status status = ChooseName(name, path, naming); status != error::None)
        SetTiffError(status);
}

Replacement::~Replacement()
{
    if (finished || !*this || onFailure == OnFailure::LeaveNew)
        return;
    DeleteFileA(name);
    if (onFailure == OnFailure::DeleteBoth)
        DeleteFileA(path);
}

Status Replacement::Commit()
{
    finished = true;
    const bool deleted = DeleteFileA(path);
    if (deleted && MoveFileA(name, path))
        return error::None;
    stranded = deleted;
    SetTiffError(error::InputOutput);
    return error::InputOutput;
}

bool IsSameFile(TiffStream stream, const char* path)
{
    const FileHandle other(path, 0, OPEN_EXISTING);
    BY_HANDLE_FILE_INFORMATION left, right;
    if (stream <= 0 || !other ||
        !GetFileInformationByHandle(reinterpret_cast<HANDLE>(static_cast<intptr_t>(stream)), &left) ||
        !GetFileInformationByHandle(other.Get(), &right))
        return false;
    return left.dwVolumeSerialNumber == right.dwVolumeSerialNumber &&
           left.nFileIndexHigh == right.nFileIndexHigh && left.nFileIndexLow == right.nFileIndexLow;
}

} // namespace tiff
