#include "json.h"

#include "standard_streams.h"
#include "tiff/base.h"

#include <cmath>
#include <cstdio>

namespace tifftool {

namespace {

bool IsUtf8(const std::string& text)
{
    return text.empty() || MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(),
                                               static_cast<int>(text.size()), nullptr, 0) != 0;
}

} // namespace

void Json::Separate()
{
    if (!text.empty() && std::string("[{:").find(text.back()) == std::string::npos) {
        text += ',';
    }
}

Json& Json::Open(char bracket)
{
    Separate();
    text += bracket;
    return *this;
}

Json& Json::Close(char bracket)
{
    text += bracket;
    return *this;
}

Json& Json::Key(const char* name)
{
    Text(name);
    text += ':';
    return *this;
}

Json& Json::Text(const std::string& value)
{
    Separate();
    const bool utf8 = IsUtf8(value);
    text += '"';
    for (const char character : value) {
        const auto byte = static_cast<uint8_t>(character);
        char escape[8] = {};
        if (byte == '"' || byte == '\\') {
            text += '\\';
        }
        if (byte < 0x20 || byte == 0x7F || (byte > 0x7F && !utf8)) {
            snprintf(escape, sizeof escape, "\\u%04X", unsigned{byte});
            text += escape;
        } else {
            text += character;
        }
    }
    text += '"';
    return *this;
}

Json& Json::Number(int64_t value)
{
    Separate();
    text += std::to_string(value);
    return *this;
}

Json& Json::Real(double value)
{
    char number[32];
    snprintf(number, sizeof number, "%.17g", value);
    Separate();
    text += std::isfinite(value) ? number : "null";
    return *this;
}

Json& Json::Truth(bool value)
{
    Separate();
    text += value ? "true" : "false";
    return *this;
}

void Print(const Json& json)
{
    printf("%s\n", json.text.c_str());
}

} // namespace tifftool
