#include "whole_file.h"

#include "commands.h"
#include "diagnosis.h"
#include "standard_streams.h"
#include "unfinished.h"

namespace tifftool {

bool Exists(const std::string& path)
{
    return GetFileAttributesA(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string FolderOf(const std::string& path)
{
    const size_t separator = path.find_last_of("/\\:");
    return separator == std::string::npos ? "" : path.substr(0, separator + 1);
}

int ReportUnwritten(const std::string& path)
{
    // A full disk may take a part without calling that an error. What is left then is what opening the file
    // said.
    const DWORD cause = _doserrno;
    const bool isTold = cause != 0 && cause != ERROR_ALREADY_EXISTS;
    return ReportSentence(path, "cannot be written: " + SystemCause(isTold ? cause : ERROR_DISK_FULL));
}

bool CheckOutput(const std::string& path)
{
    const std::string folder = FolderOf(path);
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (path.empty()) {
        ReportSentence("the output", "has no name");
    } else if (path == STANDARD_STREAM) {
        return true;
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

namespace {

int Deliver(const std::string& unfinished, const std::string& path)
{
    if (path == STANDARD_STREAM) {
        return CopyToStandardOutput(unfinished) ? int{ALL_FINE} : ReportUnwritten("the standard output");
    }
    if (MoveFileExA(unfinished.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        KeepFile(unfinished);
        return ALL_FINE;
    }
    const DWORD cause = GetLastError();
    KeepFile(unfinished);
    return ReportSentence(path,
                          "cannot be replaced: " + SystemCause(cause) + "; the result is in " + unfinished);
}

} // namespace

int WriteWhole(const std::string& path, bool append, const std::function<int(const char*)>& write)
{
    if (!CheckOutput(path)) {
        return FAILED;
    }
    const bool isStream = path == STANDARD_STREAM;
    const std::string unfinished =
        MakeUnfinishedFile(isStream ? TemporaryFolder() : FolderOf(path),
                           append && !isStream && Exists(path) ? path.c_str() : nullptr);
    if (unfinished.empty()) {
        return ReportSentence(path, "cannot be written: " + SystemCause(GetLastError()));
    }
    _doserrno = 0; // what failed before is another cause
    int result = write(unfinished.c_str());
    if (result == ALL_FINE) {
        result = Deliver(unfinished, path);
    }
    if (result != ALL_FINE || isStream) {
        DeleteUnfinished(unfinished);
    }
    return result;
}

} // namespace tifftool
