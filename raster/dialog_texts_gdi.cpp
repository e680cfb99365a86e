#include "raster/dialog_texts_gdi.h"

#include "core/global_block.h"

#include <cstring>

namespace tiff {

namespace {

// The system has none where its languages are written in Unicode alone.
UINT SystemCodePage()
{
    UINT codePage = 0;
    GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                   reinterpret_cast<LPWSTR>(&codePage), sizeof(codePage) / sizeof(WCHAR));
    return codePage;
}

int UnitsOfCharacter(const WCHAR* text)
{
    return IS_HIGH_SURROGATE(text[0]) && IS_LOW_SURROGATE(text[1]) ? 2 : 1;
}

} // namespace

void ShowText(HWND dialog, int control, const char* text)
{
    const size_t length = std::strlen(text) + 1;
    const GlobalBlock block(length * sizeof(WCHAR));
    const Locked<WCHAR> wide(block.Get());
    if (wide && MultiByteToWideChar(SystemCodePage(), 0, text, static_cast<int>(length), wide.Get(),
                                    static_cast<int>(length)))
        SetDlgItemTextW(dialog, control, wide.Get());
    else
        SetDlgItemTextA(dialog, control, text);
}

uint32_t TakeText(HWND dialog, int control, std::span<char> room)
{
    const auto most = static_cast<int>(room.size());
    const GlobalBlock block(room.size() * sizeof(WCHAR));
    const Locked<WCHAR> wide(block.Get());
    if (!wide)
        return GetDlgItemTextA(dialog, control, room.data(), most);
    GetDlgItemTextW(dialog, control, wide.Get(), most);
    int taken = 0;
    for (const WCHAR* at = wide.Get(); *at;) {
        const int units = UnitsOfCharacter(at);
        const int bytes =
            WideCharToMultiByte(SystemCodePage(), 0, at, units, &room[static_cast<size_t>(taken)],
                                most - 1 - taken, nullptr, nullptr);
        // No room at all is a question for the room that is needed.
        if (bytes == 0 || taken + bytes >= most)
            break;
        taken += bytes;
        at += units;
    }
    room[static_cast<size_t>(taken)] = 0;
    return static_cast<uint32_t>(taken);
}

} // namespace tiff
