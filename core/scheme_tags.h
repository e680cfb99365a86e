// The tags that only pages of one compression have. Drivers, page copy and tag sets look here and name no
// scheme.
#pragma once

#include "core/vocabulary.h"

#include <span>

namespace tiff {

// Tables outside the directory, one for each offset in a tag.
struct TableTag {
    uint16_t tag;
    uint32_t bytes;        // of a table, or of the counts at its start
    bool beginsWithCounts; // one byte each; their sum is the number of bytes that follow
};

// The kind of picture tags that a new page gets.
enum class PictureTags { Strips, OneStrip, Tiles };

struct SchemeTags {
    uint32_t compression;
    PictureTags picture;
    bool dataInTiles; // also in a page that has strips too
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
