#include "core/directory_layout.h"

#include "core/directory_window.h"

#include <algorithm>

namespace tiff {

// Of two entries with one tag, which a file that was read may have, the first stays the first.
static bool Precedes(const DirectoryTag& left, const DirectoryTag& right)
{
    return left.view.tag != right.view.tag ? left.view.tag < right.view.tag
                                           : left.view.values.data() < right.view.values.data();
}

std::optional<DirectoryLayout> LayOutDirectory(std::span<DirectoryTag> tags, uint32_t start)
{
    std::sort(tags.begin(), tags.end(), Precedes);
    uint64_t at = start;
    for (DirectoryTag& tag : tags) {
        tag.valueOffset = LiesInEntry(tag) ? 0 : static_cast<uint32_t>(at);
        if (!LiesInEntry(tag))
            at += tag.valueBytes;
    }
    const uint64_t directory = at + at % 2;
    const auto entryBytes = static_cast<uint32_t>(tags.size() * ENTRY_BYTES);
    const uint64_t link = directory + 2 + entryBytes;
    if (link + 4 > UINT32_MAX)
        return std::nullopt;
    return DirectoryLayout{.start = start,
                           .valueBytes = static_cast<uint32_t>(at - start),
                           .directoryOffset = static_cast<uint32_t>(directory),
                           .entryBytes = entryBytes,
                           .linkPosition = static_cast<uint32_t>(link),
                           .end = static_cast<uint32_t>(link + 4)};
}

} // namespace tiff
