// What the pages of a compression have in their tags that others have not. Drivers, page copy and tag
// sets ask here instead of naming schemes.
#pragma once

#include "core/vocabulary.h"

#include <span>

namespace tiff {

// Tables outside the directory, one for each offset in a tag.
struct TableTag {
    uint16_t tag;
    uint32_t bytes;        // of a table, or of the counts that it begins with
    bool beginsWithCounts; // a byte each; as many bytes follow as they add up to
};

// The tags that a picture of a new page gets.
enum class PictureTags { Strips, OneStrip, Tiles };

struct SchemeTags {
    uint32_t compression;
    PictureTags picture;
    bool dataInTiles; // also where a page has strips besides
    std::span<const TableTag> tables;
};

inline constexpr TableTag oldJpegTables[] = {
    {tag::JpegQTables, 64, false},
    {tag::JpegDcTables, 16, true},
    {tag::JpegAcTables, 16, true},
};

inline constexpr SchemeTags schemeTags[] = {
    {compression::ModifiedHuffman, PictureTags::OneStrip, false, {}},
    {compression::Group3, PictureTags::OneStrip, false, {}},
    {compression::Group4, PictureTags::OneStrip, false, {}},
    {compression::OldJpeg, PictureTags::Tiles, true, oldJpegTables},
};

constexpr SchemeTags SchemeTagsOf(uint32_t compression)
{
    for (const SchemeTags& known : schemeTags)
        if (known.compression == compression)
            return known;
    return {compression, PictureTags::Strips, false, {}};
}

} // namespace tiff
