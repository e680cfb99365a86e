// Text in the system's own characters. The ANSI code page has one character a byte, as Latin-1, so that a
// path of UTF-8 taken for ANSI names another file here too.
#include <windows.h>

#include <algorithm>
#include <filesystem>
#include <string>

namespace {

template <class Text>
int Deliver(const Text& text, typename Text::value_type* room, int roomSize)
{
    const int size = static_cast<int>(text.size()) + 1;
    if (size > roomSize)
        return 0;
    std::copy_n(text.c_str(), size, room);
    return size;
}

} // namespace

extern "C" {

int MultiByteToWideChar(UINT codePage, DWORD, LPCSTR text, int, LPWSTR wide, int room)
try {
    const std::string bytes = text ? text : "";
    const std::u8string utf8(bytes.begin(), bytes.end());
    std::u16string decoded;
    for (const char byte : bytes)
        decoded += static_cast<unsigned char>(byte);
    if (codePage == CP_UTF8)
        decoded = std::filesystem::path(utf8).u16string();
    return text ? Deliver(decoded, wide, room) : 0;
} catch (const std::exception&) { // not UTF-8
    return 0;
}

int WideCharToMultiByte(UINT, DWORD, LPCWSTR wide, int, LPSTR text, int room, LPCSTR, BOOL*)
try {
    const std::u8string utf8 = std::filesystem::path(std::u16string(wide)).u8string();
    return Deliver(std::string(utf8.begin(), utf8.end()), text, room);
} catch (const std::exception&) {
    return 0;
}
}
