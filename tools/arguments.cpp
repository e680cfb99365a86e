#include "arguments.h"

#include "tiff/base.h"

#include <cstdio>
#include <string_view>

namespace tifftool {

namespace {

struct ShortenedPath {
    std::wstring full, inUse;
};

std::vector<ShortenedPath> shortened;

// False when a character is not in the code page.
bool Narrow(std::wstring_view wide, std::string& narrow)
{
    const int characters = static_cast<int>(wide.size());
    narrow.resize(wide.size() * 4);
    const int bytes = WideCharToMultiByte(CP_ACP, 0, wide.data(), characters, narrow.data(),
                                          static_cast<int>(narrow.size()), nullptr, nullptr);
    narrow.resize(static_cast<size_t>(bytes));
    std::wstring back(wide.size() + 1, L'\0');
    const int again =
        MultiByteToWideChar(CP_ACP, 0, narrow.data(), bytes, back.data(), static_cast<int>(back.size()));
    return back.substr(0, static_cast<size_t>(again)) == wide;
}

std::wstring ShortPath(const std::wstring& path)
{
    std::wstring buffer(32768, L'\0');
    buffer.resize(GetShortPathNameW(path.c_str(), buffer.data(), static_cast<DWORD>(buffer.size())));
    return buffer;
}

// The short name of a file, or, for a new file, its name behind the short name of its folder.
std::wstring Shortened(const std::wstring& path)
{
    const size_t separator = path.find_last_of(L"/\\:");
    if (std::wstring whole = ShortPath(path); !whole.empty() || separator == std::wstring::npos) {
        return whole;
    }
    const std::wstring folder = ShortPath(path.substr(0, separator + 1));
    return folder.empty() ? folder : folder + path.substr(separator + 1);
}

} // namespace

bool ReadArguments(std::span<wchar_t* const> wide, std::vector<std::string>& arguments)
{
    for (const wchar_t* text : wide) {
        std::string& argument = arguments.emplace_back();
        if (Narrow(text, argument)) {
            continue;
        }
        const std::string shown = argument;
        const std::wstring path = Shortened(text);
        if (path.empty() || !Narrow(path, argument)) {
            fprintf(stderr,
                    "tifftool: %s: has characters outside this system's code page, and names no file with a "
                    "short name\n",
                    shown.c_str());
            return false;
        }
        shortened.push_back({text, path});
    }
    return true;
}

// An editing command replaces a file by a new one of the same name.
void RestoreNames()
{
    for (const auto& [full, inUse] : shortened) {
        if (GetFileAttributesW(full.c_str()) == INVALID_FILE_ATTRIBUTES &&
            GetFileAttributesW(inUse.c_str()) != INVALID_FILE_ATTRIBUTES) {
            MoveFileW(inUse.c_str(), full.c_str());
        }
    }
}

} // namespace tifftool
