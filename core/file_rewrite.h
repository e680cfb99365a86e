// Edits a file by building a new one and putting it in the old one's place.
#pragma once

#include "core/global_block.h"
#include "core/vocabulary.h"
#include "tiff/streams.h"

namespace tiff {

// Where the new file is built.
enum class Naming {
    TempFolder, // a free name in the temporary folder
    TempTiff,   // the same with the ending ".tif"; the empty file that reserves the name stays
    BesideFile, // the file's own name with another ending
    InFolder,   // a free name in the file's folder
};

// What happens to the files when the new one is not finished.
enum class OnFailure { DeleteNew, LeaveNew, DeleteBoth };

// The new file that will replace an old one. The caller writes it.
class Replacement {
public:
    // Chooses the name and creates nothing. False when there is no name.
    Replacement(const char* path, Naming naming, OnFailure onFailure);
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    // Without Commit or Place the new file counts as unfinished.
    ~Replacement();

    explicit operator bool() const
    {
        return name[0] != 0;
    }
    // 0, or the reason why there is no name: 6 or 7.
    Status NameStatus() const
    {
        return status;
    }
    const char* Name() const
    {
        return name;
    }
    // Deletes the old file and renames the new one; 6 when either fails. When the old file cannot be deleted
    // it stays whole and the new one is deleted; when renaming fails the new one stays under its own name.
    [[nodiscard]] Status Commit();
    // Renames the new file to a free name.
    [[nodiscard]] Status Place();

    // The old file is deleted and the new one could not be renamed.
    bool IsStranded() const
    {
        return stranded;
    }

private:
    const char* path;
    OnFailure onFailure;
    bool finished = false;
    bool stranded = false;
    char name[MAX_PATH_BYTES] = {};
    Status status; // after the name, because choosing the name sets it
};

// A file that may be in the way, renamed within its folder. It gets its name back at the end, replacing any
// file of that name, unless it is dropped.
class SetAside {
public:
    // Nothing has changed when the file cannot be moved. Folders and read-only files are not.
    explicit SetAside(const char* path);
    SetAside(const SetAside&) = delete;
    SetAside& operator=(const SetAside&) = delete;
    ~SetAside();

    // 0, or the reason why it could not be moved: 6 or 7.
    Status MoveStatus() const
    {
        return status;
    }
    void Drop();

private:
    const char* path;
    Status status = error::None;
    char name[MAX_PATH_BYTES] = {}; // empty when there was no file
};

// Whether a file on disk is the one that a stream reads.
bool IsSameFile(TiffStream stream, const char* path);

} // namespace tiff
