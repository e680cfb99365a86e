#include "unfinished.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <mutex>
#include <vector>

namespace tifftool {

namespace {

constexpr uint32_t MOST_NAMES = 1000;
constexpr DWORD PAUSE = 20, PATIENCE = 10'000; // milliseconds
constexpr UINT INTERRUPTED = 130;              // as shells count it

std::mutex listLock;
std::vector<std::string> unfinished;
std::atomic<bool> interrupted = false;
std::mutex rewriting;

// A file that nobody else has open goes with this handle, and nobody can open it any more.
bool TakeAway(const std::string& path)
{
    const HANDLE file =
        CreateFileA(path.c_str(), DELETE, 0, nullptr, OPEN_EXISTING, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    return file != INVALID_HANDLE_VALUE || GetLastError() == ERROR_FILE_NOT_FOUND;
}

// Runs on a thread of its own. The library has files open for moments only; work that keeps one open asks
// IsInterrupted.
BOOL WINAPI Interrupt(DWORD)
{
    interrupted = true;
    const std::lock_guard wholeFiles(rewriting);
    const std::lock_guard lock(listLock);
    for (DWORD waited = 0; waited < PATIENCE; waited += PAUSE) {
        std::erase_if(unfinished, TakeAway);
        if (unfinished.empty()) {
            break;
        }
        Sleep(PAUSE);
    }
    TerminateProcess(GetCurrentProcess(), INTERRUPTED);
    return TRUE;
}

// False when it was not one of them.
bool Forget(const std::string& path)
{
    const std::lock_guard lock(listLock);
    return std::erase(unfinished, path) != 0;
}

} // namespace

void WatchForInterruption()
{
    SetConsoleCtrlHandler(Interrupt, TRUE);
}

bool IsInterrupted()
{
    return interrupted;
}

std::string MakeUnfinishedFile(const std::string& folder, const char* copyOf)
{
    const uint32_t seed = GetCurrentProcessId() * 2654435761u + GetTickCount();
    for (uint32_t tries = 0; tries < MOST_NAMES; ++tries) {
        char ownName[24];
        snprintf(ownName, sizeof ownName, "~%08X.part", seed + tries);
        const std::string name = folder + ownName;
        const std::lock_guard lock(listLock);
        if (copyOf) {
            if (CopyFileA(copyOf, name.c_str(), TRUE)) {
                unfinished.push_back(name);
                return name;
            }
        } else {
            const HANDLE made = CreateFileA(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                            FILE_ATTRIBUTE_NORMAL, nullptr);
            if (made != INVALID_HANDLE_VALUE) {
                CloseHandle(made);
                unfinished.push_back(name);
                return name;
            }
        }
        if (const DWORD cause = GetLastError(); cause != ERROR_FILE_EXISTS && cause != ERROR_ALREADY_EXISTS) {
            return "";
        }
    }
    SetLastError(ERROR_FILE_EXISTS);
    return "";
}

void KeepFile(const std::string& path)
{
    Forget(path);
}

void DeleteUnfinished(const std::string& path)
{
    if (Forget(path)) {
        DeleteFileA(path.c_str());
    }
}

void DeleteUnfinished()
{
    const std::lock_guard lock(listLock);
    for (const std::string& path : unfinished) {
        DeleteFileA(path.c_str());
    }
    unfinished.clear();
}

std::string TemporaryFolder()
{
    char folder[MAX_PATH + 1] = {};
    return GetTempPathA(sizeof folder, folder) ? folder : "";
}

Uninterrupted::Uninterrupted()
{
    rewriting.lock();
}

Uninterrupted::~Uninterrupted()
{
    rewriting.unlock();
}

} // namespace tifftool
