// The walk along a file's directories when it is opened.
#pragma once

#include "core/directory_window.h"
#include "core/global_block.h"

namespace tiff {

// What the walk records of a page.
struct WalkedPage {
    uint32_t directoryOffset;
    uint32_t tagBlockBytes;
    uint32_t kind;
    uint32_t linkPosition; // of the link that leads to the page
    uint32_t nextLink;     // position of its own link
};

struct ChainWalk {
    GlobalBlock pages; // WalkedPages
    uint32_t pageCount = 0;
    uint32_t linkPosition = 0; // of the last link read
    bool broken = false;       // the chain goes on, but not to a directory of its own
    uint32_t fileBytes = 0;
    uint64_t directoryBytes = 0; // of the directories so far, without links
};

// Walks from the link in the file's header. A chain that leads back into itself is repeated up to the largest
// number of pages without reading anything twice. Fails with 1, and with 6 without a first page.
[[nodiscard]] Status WalkChain(DirectoryWindow& window, ChainWalk& walk);

} // namespace tiff
