// TIFF files that an input describes: bytes alone hardly ever get past a header.
#pragma once

#include "scaffold.h"

namespace fuzz {

// What a described page may be.
enum class Pages {
    Sound,    // of a kind that every reader knows, in whole strips
    Readable, // the same, and others with tags of all kinds whose values are there
    Any       // with tags, types, counts and offsets of all kinds
};

// One to three pages. Strips hold bytes of the input.
Bytes MakeTiff(Choices& choices, Pages pages);

// The input itself, or a TIFF that it describes, as its first byte says.
Bytes TiffOf(Choices& choices);

// Each tag's number, and its values and type, without the places of what it points to.
using PageTags = std::vector<std::pair<uint32_t, Bytes>>;

PageTags TagsOf(HGLOBAL file, uint32_t page);

// Says what differs.
bool SameTags(const std::vector<PageTags>& one, const std::vector<PageTags>& other);

} // namespace fuzz
