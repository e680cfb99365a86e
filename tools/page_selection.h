/* Pages as users select them: "2", "1,4-6", "last", "5-1"; and behind a colon after a file's name. */
#ifndef TOOLS_PAGE_SELECTION_H
#define TOOLS_PAGE_SELECTION_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tifftool {

inline constexpr uint32_t LAST_PAGE = UINT32_MAX;
inline constexpr char PAGES_EXAMPLE[] = "numbers and ranges such as 1,3-5,last";

// Pages counted from 1, or LAST_PAGE. A range with first behind last runs backwards.
struct PageRange {
    uint32_t first, last;
};

using PageSelection = std::vector<PageRange>; // in the order wanted; empty for all pages

// False for anything else; `selection` is undefined then.
bool ParsePages(std::string_view text, PageSelection& selection);

// Where the selection behind the name of a file begins: at its colon. npos for a name alone. The colon of a
// drive begins none.
size_t FindSelection(std::string_view argument);

// Lists the pages of a file that has `count`. Returns 0, or the first page that the file does not have.
uint32_t ListPages(const PageSelection& selection, uint32_t count, std::vector<uint32_t>& pages);

} // namespace tifftool

#endif
