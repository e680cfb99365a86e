/* Everything that is wrong with one page, and how it could go out by fax, in words. */
#ifndef TOOLS_CHECK_PAGE_H
#define TOOLS_CHECK_PAGE_H

#include "anatomy.h"
#include "describe.h"

namespace tifftool {

struct PageVerdict {
    std::vector<std::string> wrong;
    std::vector<std::string> notes; // worth knowing, but allowed
    PageFacts facts{};
    bool isLoaded = false; // the facts are known
    bool isWhole = false;  // every row can be decoded
    uint32_t rows = 0;     // that can be decoded; all or none for JPEG
};

// The tags and strips of a directory, without decoding.
void CheckDirectory(RawFile& raw, const Directory& directory, PageVerdict& verdict);

// What loading and decoding says, of a page counted from 0.
void CheckPicture(HGLOBAL file, uint32_t page, PageVerdict& verdict);

// Decodes a loaded page without keeping it. Returns 0 or the library's error, and counts the whole rows.
uint32_t CountRows(HGLOBAL file, uint32_t page, const PageFacts& facts, uint32_t& rows);

struct BoardVerdict {
    const char* board;
    std::string reason; // why its file form needs the fax command first; empty when it can go as it is
};

struct FaxVerdict {
    std::string reason; // why it cannot be sent; empty when it can
    std::vector<BoardVerdict> boards;
};

FaxVerdict JudgeForFax(HGLOBAL file, uint32_t page, const Directory& directory, const PageVerdict& verdict);

} // namespace tifftool

#endif
