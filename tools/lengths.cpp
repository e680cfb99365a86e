#include "lengths.h"

#include <charconv>
#include <cstring>
#include <string_view>

namespace tifftool {

namespace {

constexpr double MOST_HUNDREDTHS = 100'000;

bool ParseLength(std::string_view text, uint32_t& hundredths)
{
    const bool inches = text.ends_with("in");
    if (inches || text.ends_with("mm")) {
        text.remove_suffix(2);
    }
    double number = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    // As the library converts millimetres: whole hundredths, cut off.
    const double length = inches ? number * 100 : number * 1000 / 254;
    if (error != std::errc() || rest != text.data() + text.size() ||
        !(length >= 0 && length <= MOST_HUNDREDTHS)) {
        return false;
    }
    hundredths = static_cast<uint32_t>(length + 1e-6);
    return true;
}

} // namespace

size_t ParseLengths(const char* text, char separator, uint32_t* hundredths, size_t most)
{
    std::string_view rest = text;
    for (size_t count = 0; count < most;) {
        const size_t end = rest.find(separator);
        if (!ParseLength(rest.substr(0, end), hundredths[count])) {
            return 0;
        }
        ++count;
        if (end == std::string_view::npos) {
            return count;
        }
        rest.remove_prefix(end + 1);
    }
    return 0;
}

int32_t PixelsOf(uint32_t hundredths, uint32_t dotsPerInch)
{
    const uint64_t pixels = uint64_t{hundredths} * dotsPerInch / 100;
    return static_cast<int32_t>(pixels < INT32_MAX ? pixels : INT32_MAX);
}

} // namespace tifftool
