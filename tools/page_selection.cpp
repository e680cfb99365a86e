#include "page_selection.h"

#include "tiff/files.h"

#include <charconv>

namespace tifftool {

namespace {

bool ParsePage(std::string_view text, uint32_t& page)
{
    if (text == "last") {
        page = LAST_PAGE;
        return true;
    }
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, page);
    return error == std::errc() && rest == end && page >= 1 && page <= TIFF_MAX_PAGES;
}

bool ParseRange(std::string_view text, PageRange& range)
{
    const size_t dash = text.find('-');
    return ParsePage(text.substr(0, dash), range.first) &&
           ParsePage(dash == std::string_view::npos ? text : text.substr(dash + 1), range.last);
}

} // namespace

bool ParsePages(std::string_view text, PageSelection& selection)
{
    selection.clear();
    for (size_t comma = 0; comma != std::string_view::npos; text.remove_prefix(comma + 1)) {
        comma = text.find(',');
        if (!ParseRange(text.substr(0, comma), selection.emplace_back())) {
            return false;
        }
        if (comma == std::string_view::npos) {
            return true;
        }
    }
    return false;
}

size_t FindSelection(std::string_view argument)
{
    const size_t colon = argument.rfind(':');
    const bool isDrive = colon == 1 && (argument[0] | 0x20) >= 'a' && (argument[0] | 0x20) <= 'z';
    const bool inFolder =
        colon != std::string_view::npos && argument.find_first_of("/\\", colon) != std::string_view::npos;
    return colon == 0 || isDrive || inFolder ? std::string_view::npos : colon;
}

uint32_t ListPages(const PageSelection& selection, uint32_t count, std::vector<uint32_t>& pages)
{
    const PageRange all = {1, count};
    pages.clear();
    const size_t ranges = selection.empty() ? 1 : selection.size();
    for (size_t index = 0; index < ranges; ++index) {
        auto [first, last] = selection.empty() ? all : selection[index];
        first = first == LAST_PAGE ? count : first;
        last = last == LAST_PAGE ? count : last;
        if (first > count || last > count) {
            return first > count ? first : count + 1;
        }
        const uint32_t step = first <= last ? 1 : UINT32_MAX; // UINT32_MAX counts down
        for (uint32_t page = first; page != last; page += step) {
            pages.push_back(page);
        }
        pages.push_back(last);
    }
    return 0;
}

} // namespace tifftool
