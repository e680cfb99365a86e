#include "system_text.h"

#include "commands.h"

namespace tifftool {

namespace {

UINT SystemCodePage()
{
    UINT codePage = 0;
    GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                   reinterpret_cast<LPWSTR>(&codePage), sizeof codePage / sizeof(WCHAR));
    return codePage;
}

// Empty when the bytes do not fit the code page.
std::wstring Widened(const std::string& text, UINT codePage)
{
    const int bytes = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');
    wide.resize(static_cast<size_t>(
        MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, text.data(), bytes, wide.data(), bytes)));
    return wide;
}

std::string Narrowed(const std::wstring& wide, UINT codePage)
{
    std::string text(wide.size() * 4, '\0');
    text.resize(static_cast<size_t>(WideCharToMultiByte(codePage, 0, wide.data(),
                                                        static_cast<int>(wide.size()), text.data(),
                                                        static_cast<int>(text.size()), nullptr, nullptr)));
    return text;
}

// What does not come back as it was has lost a character.
bool Recode(std::string& text, UINT from)
{
    const std::wstring wide = Widened(text, from);
    std::string recoded = Narrowed(wide, SystemCodePage());
    const bool whole = Widened(recoded, SystemCodePage()) == wide;
    if (whole) {
        text = std::move(recoded);
    }
    return whole;
}

} // namespace

bool ToSystem(std::string& text)
{
    return GetACP() == SystemCodePage() || text.empty() || Recode(text, GetACP());
}

bool Utf8ToSystem(std::string& text)
{
    if (Widened(text, CP_UTF8).empty()) {
        return true;
    }
    text.erase(0, text.starts_with("\xEF\xBB\xBF") ? 3 : 0);
    return text.empty() || Recode(text, CP_UTF8);
}

std::string FromSystem(const std::string& text)
{
    const std::wstring wide = GetACP() == SystemCodePage() ? std::wstring() : Widened(text, SystemCodePage());
    return wide.empty() ? text : Narrowed(wide, GetACP());
}

bool TakeText(const char* argument, std::string& text)
{
    text = argument;
    const bool taken = ToSystem(text);
    if (!taken) {
        ReportSentence(argument, "has characters outside this system's code page, in which texts are drawn");
    }
    return taken;
}

} // namespace tifftool
