// Files over POSIX, with the manners of Windows that code trips over: no deletion or renaming of an
// open file, no renaming onto another. A handle is a small number that serves again only after as
// many others as there are places, so that a closed one is recognised.
#include "standin.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace {

constexpr uint64_t NO_LIMIT = UINT64_MAX;

struct OpenFile {
    int descriptor = -1;
    bool known = false; // it was open once
    DWORD access = 0;
    struct stat facts {};
};

std::array<OpenFile, 128> openFiles;
size_t lastOpened = 0;
uint64_t diskLeft = NO_LIMIT;
thread_local DWORD lastError;

using standin::kernel::Refuse;

// The same path here, in UTF-8. Empty for one that Windows would not take.
std::string Path(LPCWSTR name)
{
    char path[4 * MAX_PATH] = "";
    if (!name || std::char_traits<WCHAR>::length(name) >= MAX_PATH ||
        !WideCharToMultiByte(CP_UTF8, 0, name, -1, path, sizeof(path), nullptr, nullptr))
        return {};
    std::replace(path, path + strlen(path), '\\', '/');
    return path;
}

std::string Path(LPCSTR name)
{
    WCHAR wide[MAX_PATH];
    return MultiByteToWideChar(CP_ACP, 0, name, -1, wide, MAX_PATH) ? Path(wide) : std::string();
}

// Numbers that are divided by four, as the system's are. Null too where a call of this access is refused.
OpenFile* Find(HANDLE handle, DWORD access = 0)
{
    const auto number = reinterpret_cast<uintptr_t>(handle);
    if (number % 4 != 0 || number == 0 || number / 4 > openFiles.size())
        return nullptr;
    OpenFile& file = openFiles[number / 4 - 1];
    if (file.descriptor < 0 && file.known)
        standin::kernel::Fault("use of a closed file handle");
    return file.descriptor >= 0 && (file.access & access) == access ? &file : nullptr;
}

bool HeldOpen(const std::string& path)
{
    struct stat facts {};
    return stat(path.c_str(), &facts) == 0 &&
           std::any_of(openFiles.begin(), openFiles.end(), [&](const OpenFile& file) {
               return file.descriptor >= 0 && file.facts.st_ino == facts.st_ino &&
                      file.facts.st_dev == facts.st_dev;
           });
}

uint64_t SizeOf(const OpenFile& file)
{
    struct stat facts {};
    fstat(file.descriptor, &facts);
    return static_cast<uint64_t>(facts.st_size);
}

// How many bytes of a file that is to end here the disk still takes.
uint64_t TakeDisk(const OpenFile& file, uint64_t end)
{
    const uint64_t size = SizeOf(file);
    if (diskLeft == NO_LIMIT || end <= size)
        return end;
    const uint64_t taken = std::min(end - size, diskLeft);
    diskLeft -= taken;
    return size + taken;
}

// Removed at exit by the process that made it, not by a fork of it.
struct Folder {
    pid_t owner = getpid();
    std::string path = (std::filesystem::temp_directory_path() / "standin-XXXXXX").string();

    Folder()
    {
        if (!mkdtemp(path.data()))
            abort();
    }
    ~Folder()
    {
        std::error_code ignored;
        if (getpid() == owner)
            std::filesystem::remove_all(path, ignored);
    }
};

} // namespace

namespace standin {

int64_t kernel::LiveHandles()
{
    return std::count_if(openFiles.begin(), openFiles.end(),
                         [](const OpenFile& file) { return file.descriptor >= 0; });
}

void kernel::LiftDiskLimit()
{
    diskLeft = NO_LIMIT;
}

void LimitDisk(uint64_t bytes)
{
    diskLeft = bytes;
}

std::string TempFolder()
{
    static const Folder folder;
    return folder.path;
}

} // namespace standin

namespace {

HANDLE OpenPath(const std::string& path, DWORD access, DWORD disposition)
{
    static constexpr int flags[] = {0, O_CREAT | O_EXCL, O_CREAT | O_TRUNC, 0, O_CREAT};
    lastError = ERROR_ACCESS_DENIED;
    if (Refuse(standin::Open))
        return INVALID_HANDLE_VALUE;
    const int mode = access & GENERIC_WRITE ? access & GENERIC_READ ? O_RDWR : O_WRONLY : O_RDONLY;
    const int descriptor = open(path.c_str(), O_CLOEXEC | mode | flags[disposition], 0666);
    if (descriptor < 0) {
        lastError = errno == ENOENT ? ERROR_FILE_NOT_FOUND : ERROR_ACCESS_DENIED;
        return INVALID_HANDLE_VALUE;
    }
    do
        lastOpened = (lastOpened + 1) % openFiles.size();
    while (openFiles[lastOpened].descriptor >= 0);
    OpenFile& file = openFiles[lastOpened];
    file = {descriptor, true, access, {}};
    fstat(descriptor, &file.facts);
    return reinterpret_cast<HANDLE>((lastOpened + 1) * 4);
}

BOOL DeletePath(const std::string& path)
{
    return !Refuse(standin::Delete) && !HeldOpen(path) && unlink(path.c_str()) == 0;
}

BOOL MovePath(const std::string& source, const std::string& target)
{
    lastError = ERROR_ACCESS_DENIED;
    return !Refuse(standin::Move) && !HeldOpen(source) && access(target.c_str(), F_OK) != 0 &&
           rename(source.c_str(), target.c_str()) == 0;
}

DWORD AttributesOfPath(const std::string& path)
{
    return access(path.c_str(), F_OK) == 0 ? FILE_ATTRIBUTE_NORMAL : INVALID_FILE_ATTRIBUTES;
}

// The number in the name; 0 without a file.
UINT MakeTemporary(const std::string& folder, const std::string& prefix, std::string& path)
{
    static UINT counter = 0;
    if (Refuse(standin::Open))
        return 0;
    char name[64];
    snprintf(name, sizeof(name), "/%.3s%X.tmp", prefix.c_str(), ++counter);
    path = folder + name;
    const int descriptor = open(path.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
    close(descriptor);
    return descriptor >= 0 ? counter : 0;
}

} // namespace

extern "C" {

DWORD GetLastError(void)
{
    return lastError;
}

HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD, void*, DWORD disposition, DWORD, HANDLE)
{
    const auto guard = standin::kernel::Guard();
    return OpenPath(Path(name), access, disposition);
}

HANDLE CreateFileW(LPCWSTR name, DWORD access, DWORD, void*, DWORD disposition, DWORD, HANDLE)
{
    const auto guard = standin::kernel::Guard();
    return OpenPath(Path(name), access, disposition);
}

BOOL ReadFile(HANDLE handle, LPVOID buffer, DWORD bytes, DWORD* bytesRead, void*)
{
    const auto guard = standin::kernel::Guard();
    *bytesRead = 0;
    lastError = ERROR_ACCESS_DENIED;
    const OpenFile* file = Refuse(standin::Read) ? nullptr : Find(handle, GENERIC_READ);
    const ssize_t got = file ? read(file->descriptor, buffer, bytes) : -1;
    if (got >= 0)
        *bytesRead = static_cast<DWORD>(got);
    return got >= 0;
}

BOOL WriteFile(HANDLE handle, const void* buffer, DWORD bytes, DWORD* bytesWritten, void*)
{
    const auto guard = standin::kernel::Guard();
    *bytesWritten = 0;
    lastError = diskLeft == NO_LIMIT ? ERROR_ACCESS_DENIED : ERROR_DISK_FULL;
    const OpenFile* file = Find(handle, GENERIC_WRITE);
    const bool refused = Refuse(standin::Write);
    if (file && refused && bytes > 8 && standin::kernel::TearsWrites())
        write(file->descriptor, buffer, bytes / 2);
    if (!file || refused)
        return FALSE;
    const auto position = static_cast<uint64_t>(lseek(file->descriptor, 0, SEEK_CUR));
    const uint64_t end = diskLeft == NO_LIMIT ? position + bytes : TakeDisk(*file, position + bytes);
    const ssize_t put = end > position ? write(file->descriptor, buffer, end - position) : 0;
    *bytesWritten = put > 0 ? static_cast<DWORD>(put) : 0;
    return put > 0 || bytes == 0;
}

BOOL SetFilePointerEx(HANDLE handle, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD origin)
{
    const auto guard = standin::kernel::Guard();
    static constexpr int origins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    const OpenFile* file = Refuse(standin::Seek) || origin > 2 ? nullptr : Find(handle);
    const off_t reached = file ? lseek(file->descriptor, distance.QuadPart, origins[origin]) : -1;
    if (position && reached >= 0)
        position->QuadPart = reached;
    return reached >= 0;
}

BOOL GetFileSizeEx(HANDLE handle, LARGE_INTEGER* size)
{
    const auto guard = standin::kernel::Guard();
    const OpenFile* file = Refuse(standin::Seek) ? nullptr : Find(handle);
    if (file)
        size->QuadPart = static_cast<int64_t>(SizeOf(*file));
    return file != nullptr;
}

DWORD GetFileSize(HANDLE handle, DWORD*)
{
    const auto guard = standin::kernel::Guard();
    LARGE_INTEGER size{};
    return GetFileSizeEx(handle, &size) ? static_cast<DWORD>(size.QuadPart) : INVALID_FILE_SIZE;
}

// The file's identity; the rest is 0.
BOOL GetFileInformationByHandle(HANDLE handle, BY_HANDLE_FILE_INFORMATION* facts)
{
    const auto guard = standin::kernel::Guard();
    const OpenFile* file = Find(handle);
    *facts = {};
    if (!file)
        return FALSE;
    facts->dwVolumeSerialNumber = static_cast<DWORD>(file->facts.st_dev);
    facts->nFileIndexHigh = static_cast<DWORD>(file->facts.st_ino >> 32);
    facts->nFileIndexLow = static_cast<DWORD>(file->facts.st_ino);
    return TRUE;
}

BOOL SetEndOfFile(HANDLE handle)
{
    const auto guard = standin::kernel::Guard();
    const OpenFile* file = Refuse(standin::Write) ? nullptr : Find(handle, GENERIC_WRITE);
    if (!file)
        return FALSE;
    const off_t end = lseek(file->descriptor, 0, SEEK_CUR);
    const auto wanted = static_cast<uint64_t>(end);
    return (wanted <= SizeOf(*file) || wanted - SizeOf(*file) <= diskLeft) &&
           TakeDisk(*file, wanted) == wanted && ftruncate(file->descriptor, end) == 0;
}

BOOL CloseHandle(HANDLE handle)
{
    const auto guard = standin::kernel::Guard();
    OpenFile* file = Find(handle);
    if (!file)
        return FALSE;
    close(file->descriptor);
    file->descriptor = -1;
    return TRUE;
}

BOOL DeleteFileA(LPCSTR name)
{
    const auto guard = standin::kernel::Guard();
    return DeletePath(Path(name));
}

BOOL DeleteFileW(LPCWSTR name)
{
    const auto guard = standin::kernel::Guard();
    return DeletePath(Path(name));
}

BOOL MoveFileA(LPCSTR from, LPCSTR to)
{
    const auto guard = standin::kernel::Guard();
    return MovePath(Path(from), Path(to));
}

BOOL MoveFileW(LPCWSTR from, LPCWSTR to)
{
    const auto guard = standin::kernel::Guard();
    return MovePath(Path(from), Path(to));
}

DWORD GetFileAttributesA(LPCSTR name)
{
    const auto guard = standin::kernel::Guard();
    return AttributesOfPath(Path(name));
}

DWORD GetFileAttributesW(LPCWSTR name)
{
    const auto guard = standin::kernel::Guard();
    return AttributesOfPath(Path(name));
}

DWORD GetTempPathA(DWORD, LPSTR buffer)
{
    const auto guard = standin::kernel::Guard();
    const std::string folder = standin::TempFolder() + '/';
    memcpy(buffer, folder.c_str(), folder.size() + 1);
    return static_cast<DWORD>(folder.size());
}

DWORD GetTempPathW(DWORD room, LPWSTR buffer)
{
    const auto guard = standin::kernel::Guard();
    const std::string folder = standin::TempFolder() + '/';
    return static_cast<DWORD>(
        MultiByteToWideChar(CP_UTF8, 0, folder.c_str(), -1, buffer, static_cast<int>(room)) - 1);
}

UINT GetTempFileNameA(LPCSTR folder, LPCSTR prefix, UINT, LPSTR name)
{
    const auto guard = standin::kernel::Guard();
    std::string path;
    const UINT number = MakeTemporary(folder, prefix, path);
    memcpy(name, path.c_str(), path.size() + 1);
    return number;
}

UINT GetTempFileNameW(LPCWSTR folder, LPCWSTR prefix, UINT, LPWSTR name)
{
    const auto guard = standin::kernel::Guard();
    std::string path;
    const UINT number = MakeTemporary(Path(folder), Path(prefix), path);
    return MultiByteToWideChar(CP_UTF8, 0, path.c_str(), -1, name, MAX_PATH) ? number : 0;
}
}
