// Writes TIFF files in either byte order without the library, so that reading is not tested against the
// library's own writing. Faulty files are made by patching its output.
#pragma once

#include "support/bytes.h"
#include "tiff/tiff.h"

struct TiffEntry {
    uint16_t tag, type;
    uint32_t count;
    std::vector<uint32_t> values; // RATIONALs are two values; BYTEs and ASCII one each
};

class TiffPage {
public:
    TiffPage& Short(uint16_t tag, std::vector<uint32_t> values);
    TiffPage& Long(uint16_t tag, std::vector<uint32_t> values);
    TiffPage& Rational(uint16_t tag, uint32_t numerator, uint32_t denominator);
    TiffPage& Ascii(uint16_t tag, std::string_view text);
    // Any entry; replaces one with the same tag. The values are written in the type's element size.
    TiffPage& Entry(uint16_t tag, uint16_t type, uint32_t count, std::vector<uint32_t> values);
    // Adds StripOffsets and StripByteCounts.
    TiffPage& Strips(std::vector<Bytes> data);
    // Adds a tag with the offsets of these bytes, and one with their lengths unless it is 0.
    TiffPage& Data(uint16_t offsetTag, uint16_t lengthTag, std::vector<Bytes> data);
    // Adds a tag with the offsets of these directories, as LONGs or IFDs.
    TiffPage& Directories(uint16_t tag, std::vector<TiffPage> pages, uint16_t type = 4);
    // Writes the strips in this order of their numbers.
    TiffPage& StoredOrder(std::vector<size_t> order);
    TiffPage& ShortOffsets();
    // Width, length, depth, compression and photometric of an ordinary page.
    static TiffPage Picture(uint32_t width, uint32_t length, uint32_t bits, uint32_t compression,
                            uint32_t photometric = 0);

private:
    friend class TiffBuilder;
    std::vector<TiffEntry> entries;
    struct DataTag {
        uint16_t offsets, lengths;
        std::vector<Bytes> data;
    };
    struct DirectoryTag {
        uint16_t tag, type;
        std::vector<TiffPage> pages;
    };
    std::vector<Bytes> strips;
    std::vector<DataTag> otherData;
    std::vector<DirectoryTag> subDirectories;
    std::vector<size_t> order;
    uint16_t offsetType = 4;
};

class TiffBuilder {
public:
    explicit TiffBuilder(uint16_t byteOrder = TIFF_INTEL) : byteOrder(byteOrder)
    {
    }
    TiffBuilder& Add(TiffPage page);
    Bytes Build();

    // After Build: the offset of page n's directory, and of the link behind it.
    std::vector<uint32_t> directories, links;
    // The same for sub-directories, the inner ones first.
    std::vector<uint32_t> subDirectories, subLinks;

private:
    void Put16(uint32_t value);
    void Put32(uint32_t value);
    void Patch32(size_t at, uint32_t value);
    void PutValues(const TiffEntry& entry);
    void PutData(TiffPage& page);
    uint32_t PutPage(TiffPage& page);

    uint16_t byteOrder;
    std::vector<TiffPage> pages;
    Bytes file;
};

inline Bytes OnePage(TiffPage page, uint16_t byteOrder = TIFF_INTEL)
{
    return TiffBuilder(byteOrder).Add(std::move(page)).Build();
}

// A TIFF opened in memory for a scope; its first page, if any, is loaded.
class MemoryTiff {
public:
    explicit MemoryTiff(const Bytes& bytes)
        : block(bytes), file(OpenTiffInMemory(block.Get(), static_cast<uint32_t>(bytes.size()), T_READ)),
          openError(TiffError())
    {
        if (NumberOfTiffImages(file, TIFF_ALL_PAGES) > 0)
            GetTiffImage(file, 0);
    }
    ~MemoryTiff()
    {
        CloseTiffFile(file);
    }

private:
    Block block;

public:
    const HGLOBAL file;
    const uint32_t openError;
};
