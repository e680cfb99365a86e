// Where paths meet the system: every file is opened, deleted, renamed and looked for through these functions.
// They read a path as the calling thread says: as ANSI, which the system converts, or as UTF-8.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"

namespace tiff {

using FileName = char (&)[MAX_PATH_BYTES];

// INVALID_HANDLE_VALUE when the file cannot be opened. Others may read and write it meanwhile.
HANDLE OpenNamedFile(const char* path, DWORD access, DWORD disposition);
bool DeleteNamedFile(const char* path);
// Never replaces a file.
bool RenameFile(const char* from, const char* to);
// INVALID_FILE_ATTRIBUTES when there is nothing of that name.
DWORD AttributesOf(const char* path);
// The system's folder for temporary files, with its last separator.
bool FindTempFolder(FileName folder);
// Makes an empty file with a name that is free in the folder.
bool MakeTempFile(const char* folder, const char* prefix, FileName name);

// The path in the system's own characters. False when it has other bytes than its code page, or too many.
bool WidenPath(const char* path, WCHAR (&wide)[MAX_PATH_BYTES]);

} // namespace tiff
