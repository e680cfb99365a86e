#include "diagnosis.h"

#include <string_view>

namespace tifftool {

namespace {

using namespace std::string_view_literals;

constexpr struct {
    std::string_view start;
    const char* kind;
} kinds[] = {
    {"II\x2B\0"sv, "a BigTIFF file (version 43); only classic TIFF files (version 42) can be read"},
    {"MM\0\x2B"sv, "a BigTIFF file (version 43); only classic TIFF files (version 42) can be read"},
    {"%PDF"sv, "a PDF document, not a TIFF file"},
    {"%!PS"sv, "a PostScript document, not a TIFF file"},
    {"\xFF\xD8\xFF"sv, "a JPEG picture, not a TIFF file"},
    {"\x89PNG"sv, "a PNG picture, not a TIFF file"},
    {"BM"sv, "a BMP picture, not a TIFF file"},
    {"GIF8"sv, "a GIF picture, not a TIFF file"},
    {"PK\3\4"sv, "a ZIP archive, not a TIFF file"},
};

constexpr std::string_view tiffStarts[] = {"II\x2A\0"sv, "MM\0\x2A"sv};

std::string DescribeStart(std::string_view start)
{
    if (start.empty()) {
        return "the file is empty";
    }
    for (const std::string_view tiff : tiffStarts) {
        if (start.starts_with(tiff)) {
            return "";
        }
    }
    for (const auto& [signature, kind] : kinds) {
        if (start.starts_with(signature)) {
            return std::string("this is ") + kind;
        }
    }
    return "this is not a TIFF file";
}

bool OpenForIdentity(const std::string& path, BY_HANDLE_FILE_INFORMATION& identity)
{
    const HANDLE file = CreateFileA(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const bool known = GetFileInformationByHandle(file, &identity) != 0;
    CloseHandle(file);
    return known;
}

} // namespace

std::string SystemCause(DWORD cause)
{
    switch (cause) {
    case ERROR_FILE_NOT_FOUND:
        return "there is no such file";
    case ERROR_PATH_NOT_FOUND:
        return "there is no such folder";
    case ERROR_ACCESS_DENIED:
        return "access is denied";
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
        return "another program holds it";
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
        return "the disk is full";
    case ERROR_WRITE_PROTECT:
        return "the disk is write-protected";
    case ERROR_INVALID_NAME:
        return "this is no file name";
    default:
        return "system error " + std::to_string(cause);
    }
}

std::string WhyNotTiff(const std::string& path)
{
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return SystemCause(GetLastError());
    }
    if (attributes & FILE_ATTRIBUTE_DIRECTORY) {
        return "this is a folder";
    }
    const HANDLE file = CreateFileA(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return SystemCause(GetLastError());
    }
    char start[8] = {};
    DWORD got = 0;
    const bool readable = ReadFile(file, start, sizeof start, &got, nullptr) != 0;
    const DWORD cause = GetLastError();
    CloseHandle(file);
    return readable ? DescribeStart({start, got}) : "cannot be read: " + SystemCause(cause);
}

bool IsFolder(const std::string& path)
{
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool IsSameFile(const std::string& left, const std::string& right)
{
    BY_HANDLE_FILE_INFORMATION a = {}, b = {};
    return OpenForIdentity(left, a) && OpenForIdentity(right, b) &&
           a.dwVolumeSerialNumber == b.dwVolumeSerialNumber && a.nFileIndexHigh == b.nFileIndexHigh &&
           a.nFileIndexLow == b.nFileIndexLow;
}

} // namespace tifftool
