// Files over POSIX with the rules of Windows that code can break: share modes, no deletion or renaming of an
// open file, no renaming onto another. The read-only bit counts for root too. A handle is a small positive
// number made of a table index and a generation, so that a closed one is recognised after its slot is in use
// again.
#include "standin.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <filesystem>
#include <mutex>
#include <string>
#include <system_error>

namespace {

constexpr uint32_t SLOT_BITS = 12;
constexpr uint32_t SLOTS = 1u << SLOT_BITS;
constexpr size_t RESTING_SLOTS = 64;
constexpr uint32_t GENERATIONS = 1u << 16;
constexpr uint64_t NO_LIMIT = UINT64_MAX;

struct OpenFile {
    std::atomic<uint32_t> number{0};
    uint32_t generation = 0;
    int descriptor = -1;
    DWORD access = 0, share = 0;
    dev_t device = 0;
    ino_t inode = 0;
};

constinit std::array<OpenFile, SLOTS> openFiles{};
constinit std::atomic<int64_t> liveHandles{0};
constinit std::atomic<uint64_t> diskLeft{NO_LIMIT};
std::mutex diskMutex;

// Held while names and share modes are checked, never while reading or writing.
struct Names {
    std::mutex mutex;
    uint32_t used = 0;
    std::deque<uint32_t> freeSlots;
};

Names& TheNames()
{
    static auto& names = *new Names;
    return names;
}

using standin::kernel::Fail;
using standin::kernel::Refuse;

// Empty for a path that Windows would reject.
std::string Path(LPCSTR name)
{
    std::string path = name ? name : "";
    if (path.size() >= MAX_PATH)
        return {};
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

DWORD ErrorOf(int code, const std::string& path = {})
{
    switch (code) {
    case ENOENT: {
        const size_t slash = path.rfind('/');
        const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
        const bool folderExists = !path.empty() && access(folder.c_str(), F_OK) == 0;
        return folderExists ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
    }
    case ENOTDIR:
    case ENAMETOOLONG:
        return ERROR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case EBADF:
        return ERROR_ACCESS_DENIED;
    case EEXIST:
        return ERROR_FILE_EXISTS;
    case ENOSPC:
        return ERROR_DISK_FULL;
    case EMFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case EINVAL:
        return ERROR_INVALID_PARAMETER;
    default:
        return ERROR_GEN_FAILURE;
    }
}

OpenFile* Find(HANDLE handle)
{
    const auto number = reinterpret_cast<uintptr_t>(handle);
    OpenFile& file = openFiles[number >> 2 & (SLOTS - 1)];
    const uint32_t current = file.number.load(std::memory_order_acquire);
    if (current != 0 && current == number)
        return &file;
    const uintptr_t generation = number >> (SLOT_BITS + 2);
    if (number % 4 == 0 && generation >= 1 && generation <= file.generation)
        standin::kernel::Fault("use of a closed file handle");
    SetLastError(ERROR_INVALID_HANDLE);
    return nullptr;
}

template <class Predicate>
bool AnyOpen(const struct stat& facts, Predicate predicate)
{
    const uint32_t used = TheNames().used;
    return std::any_of(openFiles.begin(), openFiles.begin() + used, [&](const OpenFile& file) {
        const bool same = file.device == facts.st_dev && file.inode == facts.st_ino;
        return same && file.number != 0 && predicate(file);
    });
}

bool Allows(DWORD share, DWORD access)
{
    return (!(access & GENERIC_READ) || share & FILE_SHARE_READ) &&
           (!(access & GENERIC_WRITE) || share & FILE_SHARE_WRITE);
}

bool HeldOpen(const struct stat& facts)
{
    return AnyOpen(facts, [](const OpenFile& file) { return !(file.share & FILE_SHARE_DELETE); });
}

bool Empties(DWORD disposition)
{
    return disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING;
}

// The error that prevents opening, or ERROR_SUCCESS.
DWORD Objection(const struct stat* facts, DWORD access, DWORD share, DWORD disposition)
{
    if (disposition < CREATE_NEW || disposition > TRUNCATE_EXISTING)
        return ERROR_INVALID_PARAMETER;
    if (disposition == TRUNCATE_EXISTING && !(access & GENERIC_WRITE))
        return ERROR_INVALID_PARAMETER;
    if (!facts)
        return ERROR_SUCCESS;
    if (disposition == CREATE_NEW)
        return ERROR_FILE_EXISTS;
    const DWORD wanted = access | (Empties(disposition) ? GENERIC_WRITE : 0);
    if (S_ISDIR(facts->st_mode) || (wanted & GENERIC_WRITE && !(facts->st_mode & S_IWUSR)))
        return ERROR_ACCESS_DENIED;
    const bool shut = AnyOpen(*facts, [&](const OpenFile& file) {
        return !Allows(file.share, wanted) || !Allows(share, file.access);
    });
    return shut ? ERROR_SHARING_VIOLATION : ERROR_SUCCESS;
}

uint32_t TakeSlot()
{
    Names& names = TheNames();
    if (names.freeSlots.size() <= RESTING_SLOTS && names.used < SLOTS)
        return names.used++;
    if (names.freeSlots.empty())
        return SLOTS;
    const uint32_t slot = names.freeSlots.front();
    names.freeSlots.pop_front();
    return slot;
}

HANDLE Enter(int descriptor, DWORD access, DWORD share)
{
    struct stat facts {};
    fstat(descriptor, &facts);
    const uint32_t slot = TakeSlot();
    if (slot == SLOTS) {
        close(descriptor);
        SetLastError(ERROR_TOO_MANY_OPEN_FILES);
        return INVALID_HANDLE_VALUE;
    }
    OpenFile& file = openFiles[slot];
    file.generation = std::max(1u, (file.generation + 1) % GENERATIONS);
    file.descriptor = descriptor;
    file.access = access;
    file.share = share;
    file.device = facts.st_dev;
    file.inode = facts.st_ino;
    const uint32_t number = (file.generation << SLOT_BITS | slot) << 2;
    file.number.store(number, std::memory_order_release);
    ++liveHandles;
    return reinterpret_cast<HANDLE>(uintptr_t{number});
}

bool Seek(const OpenFile& file, int64_t distance, DWORD origin, int64_t& position)
{
    constexpr std::array origins{SEEK_SET, SEEK_CUR, SEEK_END};
    if (origin >= origins.size())
        return Fail(ERROR_INVALID_PARAMETER);
    position = lseek(file.descriptor, distance, origins[origin]);
    return position >= 0 || Fail(errno == EINVAL ? ERROR_NEGATIVE_SEEK : ErrorOf(errno));
}

bool SizeOf(HANDLE handle, int64_t& bytes)
{
    if (Refuse(standin::Seek, ERROR_GEN_FAILURE))
        return false;
    const OpenFile* file = Find(handle);
    struct stat facts {};
    if (!file || fstat(file->descriptor, &facts) != 0)
        return false;
    bytes = facts.st_size;
    return true;
}

// The part of a write at the current position for which the disk has room.
size_t TakeDisk(const OpenFile& file, size_t bytes)
{
    struct stat facts {};
    fstat(file.descriptor, &facts);
    const auto size = static_cast<uint64_t>(facts.st_size);
    const auto position = static_cast<uint64_t>(lseek(file.descriptor, 0, SEEK_CUR));
    const uint64_t lastEnd = size + std::min(diskLeft.load(), NO_LIMIT - size);
    const uint64_t end = std::min(position + bytes, lastEnd);
    if (end <= position)
        return 0;
    if (end > size)
        diskLeft -= end - size;
    return end - position;
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

namespace kernel {

int64_t LiveHandles()
{
    return liveHandles;
}

void LiftDiskLimit()
{
    diskLeft = NO_LIMIT;
}

} // namespace kernel

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

extern "C" {

HANDLE CreateFileA(LPCSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD disposition, DWORD,
                   HANDLE)
{
    if (Refuse(standin::Open, ERROR_ACCESS_DENIED))
        return INVALID_HANDLE_VALUE;
    const std::string path = Path(name);
    const std::lock_guard guard(TheNames().mutex);
    struct stat facts {};
    const bool exists = stat(path.c_str(), &facts) == 0;
    if (const DWORD error = Objection(exists ? &facts : nullptr, access, share, disposition)) {
        SetLastError(error);
        return INVALID_HANDLE_VALUE;
    }
    int flags = O_CLOEXEC | (access & GENERIC_WRITE ? access & GENERIC_READ ? O_RDWR : O_WRONLY : O_RDONLY);
    flags |= Empties(disposition) ? O_TRUNC : 0;
    flags |= disposition == OPEN_EXISTING || disposition == TRUNCATE_EXISTING ? 0 : O_CREAT;
    const int descriptor = open(path.c_str(), flags, 0666);
    if (descriptor < 0) {
        SetLastError(ErrorOf(errno, path));
        return INVALID_HANDLE_VALUE;
    }
    const bool tellsOfOld = disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
    SetLastError(exists && tellsOfOld ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return Enter(descriptor, access, share);
}

BOOL ReadFile(HANDLE handle, LPVOID buffer, DWORD bytes, LPDWORD bytesRead, LPOVERLAPPED overlapped)
{
    if (!bytesRead || overlapped)
        return Fail(ERROR_INVALID_PARAMETER);
    *bytesRead = 0;
    if (Refuse(standin::Read, ERROR_READ_FAULT))
        return FALSE;
    const OpenFile* file = Find(handle);
    if (!file)
        return FALSE;
    if (!(file->access & GENERIC_READ))
        return Fail(ERROR_ACCESS_DENIED);
    const ssize_t got = read(file->descriptor, buffer, bytes);
    if (got < 0)
        return Fail(ErrorOf(errno));
    *bytesRead = static_cast<DWORD>(got);
    return TRUE;
}

BOOL WriteFile(HANDLE handle, LPCVOID buffer, DWORD bytes, LPDWORD bytesWritten, LPOVERLAPPED overlapped)
{
    if (!bytesWritten || overlapped)
        return Fail(ERROR_INVALID_PARAMETER);
    *bytesWritten = 0;
    if (Refuse(standin::Write, ERROR_WRITE_FAULT))
        return FALSE;
    const OpenFile* file = Find(handle);
    if (!file)
        return FALSE;
    if (!(file->access & GENERIC_WRITE))
        return Fail(ERROR_ACCESS_DENIED);
    size_t taken = bytes;
    if (diskLeft.load(std::memory_order_relaxed) != NO_LIMIT) {
        const std::lock_guard guard(diskMutex);
        taken = TakeDisk(*file, bytes);
        if (taken == 0 && bytes != 0)
            return Fail(ERROR_DISK_FULL);
    }
    const ssize_t put = write(file->descriptor, buffer, taken);
    if (put < 0)
        return Fail(ErrorOf(errno));
    *bytesWritten = static_cast<DWORD>(put);
    return TRUE;
}

DWORD SetFilePointer(HANDLE handle, LONG distance, PLONG distanceHigh, DWORD origin)
{
    if (Refuse(standin::Seek, ERROR_SEEK))
        return INVALID_SET_FILE_POINTER;
    const OpenFile* file = Find(handle);
    if (!file)
        return INVALID_SET_FILE_POINTER;
    int64_t wide = distance;
    if (distanceHigh)
        wide = static_cast<int64_t>(uint64_t{static_cast<uint32_t>(*distanceHigh)} << 32 |
                                    static_cast<uint32_t>(distance));
    const off_t before = distanceHigh ? 0 : lseek(file->descriptor, 0, SEEK_CUR);
    int64_t position = 0;
    if (!Seek(*file, wide, origin, position))
        return INVALID_SET_FILE_POINTER;
    if (!distanceHigh && position > UINT32_MAX) {
        lseek(file->descriptor, before, SEEK_SET);
        SetLastError(ERROR_INVALID_PARAMETER);
        return INVALID_SET_FILE_POINTER;
    }
    if (distanceHigh)
        *distanceHigh = static_cast<LONG>(position >> 32);
    SetLastError(NO_ERROR);
    return static_cast<DWORD>(position);
}

BOOL SetFilePointerEx(HANDLE handle, LARGE_INTEGER distance, PLARGE_INTEGER newPosition, DWORD origin)
{
    if (Refuse(standin::Seek, ERROR_SEEK))
        return FALSE;
    const OpenFile* file = Find(handle);
    int64_t position = 0;
    if (!file || !Seek(*file, distance.QuadPart, origin, position))
        return FALSE;
    if (newPosition)
        newPosition->QuadPart = position;
    return TRUE;
}

DWORD GetFileSize(HANDLE handle, LPDWORD sizeHigh)
{
    int64_t bytes = 0;
    if (!SizeOf(handle, bytes))
        return INVALID_FILE_SIZE;
    if (sizeHigh)
        *sizeHigh = static_cast<DWORD>(bytes >> 32);
    SetLastError(NO_ERROR);
    return static_cast<DWORD>(bytes);
}

BOOL GetFileSizeEx(HANDLE handle, PLARGE_INTEGER size)
{
    int64_t bytes = 0;
    if (!SizeOf(handle, bytes))
        return FALSE;
    size->QuadPart = bytes;
    return TRUE;
}

// The file's identity and its size; the rest is 0.
BOOL GetFileInformationByHandle(HANDLE handle, LPBY_HANDLE_FILE_INFORMATION facts)
{
    const OpenFile* file = Find(handle);
    if (!file)
        return FALSE;
    *facts = {};
    facts->dwVolumeSerialNumber = static_cast<DWORD>(file->device);
    facts->nFileIndexHigh = static_cast<DWORD>(file->inode >> 32);
    facts->nFileIndexLow = static_cast<DWORD>(file->inode);
    return TRUE;
}

// Nothing is pushed to the disk: the bytes are already visible to every reader.
BOOL FlushFileBuffers(HANDLE handle)
{
    if (Refuse(standin::Write, ERROR_WRITE_FAULT))
        return FALSE;
    const OpenFile* file = Find(handle);
    return file && (file->access & GENERIC_WRITE || Fail(ERROR_ACCESS_DENIED));
}

BOOL SetEndOfFile(HANDLE handle)
{
    if (Refuse(standin::Write, ERROR_WRITE_FAULT))
        return FALSE;
    const OpenFile* file = Find(handle);
    if (!file)
        return FALSE;
    if (!(file->access & GENERIC_WRITE))
        return Fail(ERROR_ACCESS_DENIED);
    const off_t end = lseek(file->descriptor, 0, SEEK_CUR);
    if (diskLeft.load(std::memory_order_relaxed) != NO_LIMIT) {
        const std::lock_guard guard(diskMutex);
        struct stat facts {};
        fstat(file->descriptor, &facts);
        const auto growth = static_cast<uint64_t>(std::max<off_t>(0, end - facts.st_size));
        if (growth > diskLeft)
            return Fail(ERROR_DISK_FULL);
        diskLeft -= growth;
    }
    return ftruncate(file->descriptor, end) == 0 || Fail(ErrorOf(errno));
}

BOOL CloseHandle(HANDLE handle)
{
    Names& names = TheNames();
    const std::lock_guard guard(names.mutex);
    OpenFile* file = Find(handle);
    if (!file)
        return FALSE;
    file->number = 0;
    close(file->descriptor);
    names.freeSlots.push_back(static_cast<uint32_t>(file - openFiles.data()));
    --liveHandles;
    return TRUE;
}

BOOL DeleteFileA(LPCSTR name)
{
    if (Refuse(standin::Delete, ERROR_ACCESS_DENIED))
        return FALSE;
    const std::string path = Path(name);
    const std::lock_guard guard(TheNames().mutex);
    struct stat facts {};
    if (stat(path.c_str(), &facts) != 0)
        return Fail(ErrorOf(errno, path));
    if (S_ISDIR(facts.st_mode) || !(facts.st_mode & S_IWUSR))
        return Fail(ERROR_ACCESS_DENIED);
    if (HeldOpen(facts))
        return Fail(ERROR_SHARING_VIOLATION);
    return unlink(path.c_str()) == 0 || Fail(ErrorOf(errno, path));
}

BOOL MoveFileA(LPCSTR from, LPCSTR to)
{
    if (Refuse(standin::Move, ERROR_ACCESS_DENIED))
        return FALSE;
    const std::string source = Path(from), target = Path(to);
    const std::lock_guard guard(TheNames().mutex);
    struct stat sourceFacts {
    }, targetFacts{};
    if (stat(source.c_str(), &sourceFacts) != 0)
        return Fail(ErrorOf(errno, source));
    const bool targetExists = stat(target.c_str(), &targetFacts) == 0;
    if (HeldOpen(sourceFacts) || (targetExists && HeldOpen(targetFacts)))
        return Fail(ERROR_SHARING_VIOLATION);
    if (targetExists)
        return Fail(ERROR_ALREADY_EXISTS);
    if (rename(source.c_str(), target.c_str()) == 0)
        return TRUE;
    if (errno != EXDEV)
        return Fail(ErrorOf(errno, target));
    std::error_code error;
    std::filesystem::copy_file(source, target, error);
    if (error)
        return Fail(ErrorOf(error.value(), target));
    return unlink(source.c_str()) == 0 || Fail(ErrorOf(errno, source));
}

BOOL CopyFileA(LPCSTR from, LPCSTR to, BOOL failIfExists)
{
    constexpr DWORD shared = FILE_SHARE_READ | FILE_SHARE_WRITE;
    const HANDLE source = CreateFileA(from, GENERIC_READ, shared, nullptr, OPEN_EXISTING, 0, nullptr);
    if (source == INVALID_HANDLE_VALUE)
        return FALSE;
    const DWORD disposition = failIfExists ? CREATE_NEW : CREATE_ALWAYS;
    const HANDLE target = CreateFileA(to, GENERIC_WRITE, 0, nullptr, disposition, 0, nullptr);
    DWORD error = target == INVALID_HANDLE_VALUE ? GetLastError() : NO_ERROR;
    static thread_local std::array<char, 65536> buffer;
    for (DWORD got = 1, put = 0; error == NO_ERROR && got != 0;) {
        if (!ReadFile(source, buffer.data(), buffer.size(), &got, nullptr) ||
            (got != 0 && !WriteFile(target, buffer.data(), got, &put, nullptr)))
            error = GetLastError();
        else if (got != 0 && put != got)
            error = ERROR_DISK_FULL;
    }
    CloseHandle(source);
    if (target != INVALID_HANDLE_VALUE) {
        CloseHandle(target);
        if (error != NO_ERROR)
            unlink(Path(to).c_str());
    }
    return error == NO_ERROR || Fail(error);
}

DWORD GetFileAttributesA(LPCSTR name)
{
    const std::string path = Path(name);
    struct stat facts {};
    if (stat(path.c_str(), &facts) != 0) {
        SetLastError(ErrorOf(errno, path));
        return INVALID_FILE_ATTRIBUTES;
    }
    const DWORD readOnly = facts.st_mode & S_IWUSR ? 0 : FILE_ATTRIBUTE_READONLY;
    return readOnly | (S_ISDIR(facts.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE);
}

DWORD GetTempPathA(DWORD bufferBytes, LPSTR buffer)
{
    const std::string folder = standin::TempFolder() + '/';
    if (bufferBytes <= folder.size())
        return static_cast<DWORD>(folder.size() + 1);
    memcpy(buffer, folder.c_str(), folder.size() + 1);
    return static_cast<DWORD>(folder.size());
}

UINT GetTempFileNameA(LPCSTR folder, LPCSTR prefix, UINT unique, LPSTR name)
{
    if (unique == 0 && Refuse(standin::Open, ERROR_ACCESS_DENIED))
        return 0;
    std::string path = Path(folder);
    constexpr size_t longestFolder = MAX_PATH - 14;
    if (path.empty() || path.size() > longestFolder)
        return static_cast<UINT>(Fail(path.empty() ? ERROR_DIRECTORY : ERROR_BUFFER_OVERFLOW));
    if (path.back() != '/')
        path += '/';
    static std::atomic<UINT> counter{static_cast<UINT>(getpid())};
    constexpr UINT mostNames = 0xFFFF;
    for (UINT round = 0; round < mostNames; ++round) {
        const UINT number = unique ? unique & mostNames : std::max(1u, ++counter & mostNames);
        snprintf(name, MAX_PATH, "%s%.3s%X.tmp", path.c_str(), prefix ? prefix : "", number);
        if (unique)
            return unique;
        const int descriptor = open(name, O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, 0666);
        if (descriptor >= 0) {
            close(descriptor);
            return number;
        }
        if (errno != EEXIST)
            return static_cast<UINT>(Fail(errno == ENOENT ? ERROR_DIRECTORY : ErrorOf(errno)));
    }
    return static_cast<UINT>(Fail(ERROR_FILE_EXISTS));
}
}
