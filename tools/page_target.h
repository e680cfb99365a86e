/* The file that a command appends its pages to. */
#ifndef TOOLS_PAGE_TARGET_H
#define TOOLS_PAGE_TARGET_H

#include "commands.h"

#include <memory>

namespace tifftool {

// Stays open from page to page: walking to its end for each page would take longer and longer.
struct PageTarget {
    std::string name; // for messages
    const char* path;
    std::unique_ptr<OpenFile> file{};
};

// Opens it, if it is not open yet. Returns an exit code, with a message for a file in Motorola byte order.
int OpenTarget(PageTarget& target);

// Appends a packed DIB; `where` names it in messages. Returns an exit code.
int AppendDib(PageTarget& target, const OwnedBlock& dib, const std::string& where, uint32_t selector,
              uint32_t fillOrder);

} // namespace tifftool

#endif
