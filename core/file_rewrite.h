// Editing a file by building another one and putting it in its place.
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

// What becomes of the files when the new one is not finished.
enum class OnFailure { DeleteNew, LeaveNew, DeleteBoth };

// The new file that is to take the place of an old one. It is the caller's to write.
class Replacement {
public:
    // Chooses the name; nothing is created. False when there is none.
    Replacement(const char* path, Naming naming, OnFailure onFailure);
    Replacement(const Replacement&) = delete;
    Replacement& operator=(const Replacement&) = delete;
    // Unless committed, the new file was not finished.
    ~Replacement();

    explicit operator bool() const
    {
        return name[0] != 0;
    }
    // 0, or why there is no name: 6 or 7.
    Status NameStatus() const
    {
        return status;
    }
    const char* Name() const
    {
        return name;
    }
    // Deletes the old file and renames the new one. When the old one cannot be deleted it has all
    // that it had, and the new one goes; when the renaming fails the new one stays where it is: 6.
    [[nodiscard]] Status Commit();
    // Renames the new file to a name that is free.
    [[nodiscard]] Status Place();

    // The old file is gone and the new one has not got its name.
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
    Status status; // behind the name, which is chosen with it
};

// A file that may be in the way, under another name in its folder. It comes back, in place of what has
// got its name meanwhile, unless it is dropped.
class SetAside {
public:
    // Nothing has changed when the file cannot be moved. Folders and read-only files are not.
    explicit SetAside(const char* path);
    SetAside(const SetAside&) = delete;
    SetAside& operator=(const SetAside&) = delete;
    ~SetAside();

    // 0, or why it cannot: 6 or 7.
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
