#include "whole_file.h"

#include "commands.h"
#include "diagnosis.h"

#include <cstdio>

namespace tifftool {

namespace {

constexpr uint32_t MOST_NAMES = 1000;

// Makes a copy of the old file, or an empty file, under a free name; prints the reason and returns an empty
// name when there is none. Only files made here are ever removed.
std::string MakeUnfinished(const std::string& path, bool copyOld)
{
    const uint32_t seed = GetCurrentProcessId() * 2654435761u + GetTickCount();
    for (uint32_t tries = 0; tries < MOST_NAMES; ++tries) {
        char ownName[24];
        snprintf(ownName, sizeof ownName, "~%08X.part", seed + tries);
        const std::string name = FolderOf(path) + ownName;
        if (copyOld) {
            if (CopyFileA(path.c_str(), name.c_str(), TRUE)) {
                return name;
            }
        } else {
            const HANDLE made = CreateFileA(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                            FILE_ATTRIBUTE_NORMAL, nullptr);
            if (made != INVALID_HANDLE_VALUE) {
                CloseHandle(made);
                return name;
            }
        }
        if (const DWORD cause = GetLastError(); cause != ERROR_FILE_EXISTS && cause != ERROR_ALREADY_EXISTS) {
            ReportSentence(path, "cannot be written: " + SystemCause(cause));
            return "";
        }
    }
    ReportSentence(path, "cannot be written: there is no free name for the unfinished file");
    return "";
}

} // namespace

bool Exists(const std::string& path)
{
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string FolderOf(const std::string& path)
{
    const size_t separator = path.find_last_of("/\\:");
    return separator == std::string::npos ? "" : path.substr(0, separator + 1);
}

bool CheckOutput(const std::string& path)
{
    const std::string folder = FolderOf(path);
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (path.empty()) {
        ReportSentence("the output", "has no name");
    } else if (!folder.empty() && !IsFolder(folder)) {
        ReportSentence(path, "cannot be written: there is no folder " + folder);
    } else if (attributes != INVALID_FILE_ATTRIBUTES && attributes & FILE_ATTRIBUTE_DIRECTORY) {
        ReportSentence(path, "cannot be written: this is a folder");
    } else if (attributes != INVALID_FILE_ATTRIBUTES && attributes & FILE_ATTRIBUTE_READONLY) {
        ReportSentence(path, "cannot be written: it is read-only");
    } else {
        return true;
    }
    return false;
}

int WriteWhole(const std::string& path, bool append, const std::function<int(const char*)>& write)
{
    if (!CheckOutput(path)) {
        return FAILED;
    }
    const std::string unfinished = MakeUnfinished(path, append && Exists(path));
    if (unfinished.empty()) {
        return FAILED;
    }
    const int result = write(unfinished.c_str());
    if (result != ALL_FINE) {
        DeleteFileA(unfinished.c_str());
        return result;
    }
    if (!MoveFileExA(unfinished.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        const DWORD cause = GetLastError();
        return ReportSentence(path, "cannot be replaced: " + SystemCause(cause) + "; the result is in " +
                                        unfinished);
    }
    return ALL_FINE;
}

} // namespace tifftool
