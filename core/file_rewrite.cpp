#include "core/file_rewrite.h"

#include "core/error_detail.h"
#include "core/errors.h"
#include "core/file_names.h"
#include "core/handles.h"

#include <cstdio>
#include <cstring>

namespace tiff {

namespace {

bool IsThere(const char* path)
{
    return AttributesOf(path) != INVALID_FILE_ATTRIBUTES;
}

Status NameInTempFolder(FileName name, const char* prefix)
{
    char folder[MAX_PATH_BYTES];
    if (!FindTempFolder(folder) || !MakeTempFile(folder, prefix, name)) {
        name[0] = 0;
        return error::InputOutput;
    }
    return error::None;
}

// Replaces everything after the last full stop. Deliberate: that stop may belong to a folder's name.
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

// The system call creates the file with the free name. It is deleted, so that the first page creates a new
// TIFF file.
Status ChooseTempName(FileName name)
{
    const Status status = NameInTempFolder(name, "TMP");
    if (status == error::None)
        DeleteNamedFile(name);
    return status;
}

// Deliberate: the file that reserves the name stays, for programs that look for unfinished files.
Status ChooseTempTiffName(FileName name)
{
    Status status = NameInTempFolder(name, "tmp");
    if (status == error::None)
        status = ReplaceEnding(name, ".tif");
    if (status == error::None)
        DeleteNamedFile(name);
    return status;
}

// The empty file that reserves the name stays. A path without a folder means the current folder.
Status ChooseNameInFolder(FileName name, const char* path)
{
    char folder[MAX_PATH_BYTES];
    size_t length = strnlen(path, sizeof(folder));
    if (length == sizeof(folder))
        return error::PathTooLong;
    while (length > 0 && !std::strchr("\\/:", path[length - 1]))
        --length;
    std::memcpy(folder, path, length);
    std::strcpy(folder + length, length ? "" : ".");
    if (MakeTempFile(folder, "TMP", name))
        return error::None;
    name[0] = 0;
    return error::InputOutput;
}

Status ChooseName(FileName name, const char* path, Naming naming)
{
    if (naming == Naming::TempFolder)
        return ChooseTempName(name);
    if (naming == Naming::TempTiff)
        return ChooseTempTiffName(name);
    if (naming == Naming::InFolder)
        return ChooseNameInFolder(name, path);
    if (strnlen(path, sizeof(name)) == sizeof(name))
        return error::PathTooLong;
    std::strcpy(name, path);
    return ReplaceEnding(name, ".~~~");
}

} // namespace

Replacement::Replacement(const char* path, Naming naming, OnFailure onFailure)
    : path(path), onFailure(onFailure), status(ChooseName(name, path, naming))
{
}

Replacement::~Replacement()
{
    if (finished || !*this || onFailure == OnFailure::LeaveNew)
        return;
    DeleteNamedFile(name);
    if (onFailure == OnFailure::DeleteBoth)
        DeleteNamedFile(path);
}

Status Replacement::Commit()
{
    finished = true;
    if (!DeleteNamedFile(path) && IsThere(path)) {
        NotePath(error::InputOutput, path);
        DeleteNamedFile(name);
        return error::InputOutput;
    }
    stranded = !RenameFile(name, path);
    if (stranded)
        NoteSystemError(error::InputOutput, path);
    return stranded ? error::InputOutput : error::None;
}

Status Replacement::Place()
{
    finished = RenameFile(name, path);
    if (!finished)
        NoteSystemError(error::InputOutput, path);
    return finished ? error::None : error::InputOutput;
}

SetAside::SetAside(const char* path) : path(path)
{
    const DWORD attributes = AttributesOf(path);
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return;
    const bool replaceable = !(attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY));
    status = replaceable ? ChooseNameInFolder(name, path) : Status{error::InputOutput};
    if (status == error::None && (!DeleteNamedFile(name) || !RenameFile(path, name))) {
        name[0] = 0;
        status = error::InputOutput;
    }
}

SetAside::~SetAside()
{
    if (!name[0])
        return;
    DeleteNamedFile(path);
    RenameFile(name, path);
}

void SetAside::Drop()
{
    if (name[0])
        DeleteNamedFile(name);
    name[0] = 0;
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
