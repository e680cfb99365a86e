#include "bench/files.h"

#include "bench/peer.h"

#include <algorithm>
#include <cstring>
#include <fstream>

namespace {

struct Bytes {
    std::vector<uint8_t> bytes;

    void Put(uint32_t value, uint32_t count)
    {
        for (uint32_t at = 0; at < count; ++at)
            bytes.push_back(static_cast<uint8_t>(value >> at * 8));
    }
    void Entry(uint32_t tag, uint32_t type, uint32_t value)
    {
        Put(tag, 2);
        Put(type, 2);
        Put(1, 4);
        Put(value, 4);
    }
};

constexpr uint32_t SHORT = 3, LONG = 4, RATIONAL = 5;
constexpr uint32_t HEADER_BYTES = 8, ENTRIES = 13;
constexpr uint32_t DIRECTORY_BYTES = 2 + ENTRIES * 12 + 4;

// A page of one strip, 16 pixels wide: the picture, its directory and the resolution.
Bytes MakePage(uint32_t start, uint32_t next, uint32_t pictureBytes)
{
    const uint32_t directory = start + pictureBytes, resolution = directory + DIRECTORY_BYTES;
    Bytes page;
    page.bytes.assign(pictureBytes, 0x5A);
    page.Put(ENTRIES, 2);
    page.Entry(254, LONG, 2);
    page.Entry(256, SHORT, 16);
    page.Entry(257, LONG, pictureBytes / 2);
    page.Entry(258, SHORT, 1);
    page.Entry(259, SHORT, 1);
    page.Entry(262, SHORT, 0);
    page.Entry(273, LONG, start);
    page.Entry(277, SHORT, 1);
    page.Entry(278, LONG, pictureBytes / 2);
    page.Entry(279, LONG, pictureBytes);
    page.Entry(282, RATIONAL, resolution);
    page.Entry(283, RATIONAL, resolution);
    page.Entry(296, SHORT, 2);
    page.Put(next ? next + pictureBytes : 0, 4);
    page.Put(204, 4);
    page.Put(1, 4);
    return page;
}

void WriteFile(const std::filesystem::path& path, const std::vector<uint8_t>& bytes)
{
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

} // namespace

void WritePages(const std::string& path, uint32_t pageCount, uint32_t spread, uint32_t pictureBytes)
{
    const uint32_t pageBytes = pictureBytes + DIRECTORY_BYTES + 8, step = std::max(spread, pageBytes);
    std::ofstream file(path, std::ios::binary);
    Bytes header;
    header.Put(0x4949, 2);
    header.Put(42, 2);
    header.Put(HEADER_BYTES + pictureBytes, 4);
    file.write(reinterpret_cast<const char*>(header.bytes.data()), HEADER_BYTES);
    for (uint32_t page = 0; page < pageCount; ++page) {
        const uint32_t start = HEADER_BYTES + page * step;
        const Bytes bytes = MakePage(start, page + 1 < pageCount ? start + step : 0, pictureBytes);
        file.seekp(start);
        file.write(reinterpret_cast<const char*>(bytes.bytes.data()), pageBytes);
    }
}

void WriteFilesForWindows(const std::vector<Picture>& pictures, const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    WritePages((folder / "open close 10000.tif").string(), 10000, CLOSE);
    WritePages((folder / "open spread 10000.tif").string(), 10000, TYPICAL_SPREAD);
    for (const Picture& picture : pictures)
        for (const Scheme& scheme : schemes)
            if (Suits(scheme, picture) && !IsLossy(scheme))
                WriteFile(folder / ("load " + std::string(scheme.name) + ' ' + picture.name + ".tif"),
                          WriteTiff(picture, scheme, RowsPerStrip(scheme, picture)));
}
