#include "bench/picture.h"

#include "raster/dib.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

// The next number of a netpbm header, after blanks and comments.
static uint32_t HeaderNumber(std::istream& file)
{
    for (file >> std::ws; file.peek() == '#'; file >> std::ws) {
        std::string comment;
        std::getline(file, comment);
    }
    uint32_t number = 0;
    file >> number;
    return number;
}

Picture LoadPicture(const std::filesystem::path& path)
{
    std::ifstream file(path, std::ios::binary);
    char magic[2] = {};
    file.read(magic, 2);
    Picture picture{.name = path.stem().string()};
    picture.bits = magic[1] == '4' ? 1 : magic[1] == '5' ? 8 : 24;
    picture.width = HeaderNumber(file);
    picture.height = HeaderNumber(file);
    if (picture.bits > 1)
        HeaderNumber(file);
    file.get();
    picture.rows.resize(picture.RowBytes() * picture.height);
    file.read(reinterpret_cast<char*>(picture.rows.data()),
              static_cast<std::streamsize>(picture.rows.size()));
    if (!file || magic[0] != 'P' || picture.rows.empty()) {
        std::fprintf(stderr, "%s is no binary netpbm file\n", path.c_str());
        std::exit(1);
    }
    return picture;
}

std::vector<Picture> LoadPictures(const std::filesystem::path& folder)
{
    std::vector<Picture> pictures;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (const auto kind = entry.path().extension(); kind == ".pbm" || kind == ".pgm" || kind == ".ppm")
            pictures.push_back(LoadPicture(entry.path()));
    std::ranges::sort(pictures, {}, &Picture::name);
    return pictures;
}

uint64_t ChangingElements(const Picture& picture)
{
    if (picture.bits != 1)
        return 0;
    uint64_t changes = 0;
    for (uint32_t row = 0; row < picture.height; ++row) {
        const uint8_t* bytes = &picture.rows[row * picture.RowBytes()];
        uint32_t before = 0; // the pixel to the left of the byte, in the lowest bit
        for (uint32_t at = 0; at < picture.RowBytes(); ++at) {
            const uint32_t pixels = std::min(picture.width - at * 8, 8u);
            const uint32_t byte = bytes[at];
            const uint32_t differing = (byte ^ (before << 7 | byte >> 1)) & (0xFF00u >> pixels & 0xFF);
            changes += static_cast<uint32_t>(std::popcount(differing));
            before = byte & 1;
        }
    }
    return changes;
}

std::vector<uint8_t> PackDib(const Picture& picture)
{
    const auto stride = static_cast<size_t>(tiff::DibStride(picture.width, picture.bits));
    BITMAPINFOHEADER header{};
    header.biSize = sizeof(header);
    header.biWidth = static_cast<int32_t>(picture.width);
    header.biHeight = static_cast<int32_t>(picture.height);
    header.biPlanes = 1;
    header.biBitCount = static_cast<uint16_t>(picture.bits);
    const uint32_t colours = tiff::StandardColours(picture.bits);
    const size_t pixelsAt = sizeof(header) + colours * size_t{4};
    std::vector<uint8_t> dib(pixelsAt + stride * picture.height);
    std::memcpy(dib.data(), &header, sizeof(header));
    for (uint32_t index = 0; index < colours; ++index)
        std::memset(&dib[sizeof(header) + index * size_t{4}], static_cast<int>(index * 255 / (colours - 1)),
                    3);
    // Ink is 1 in the page and the first, dark colour in a DIB.
    const uint8_t flip = picture.bits == 1 ? 0xFF : 0;
    for (uint32_t row = 0; row < picture.height; ++row) {
        const uint8_t* from = &picture.rows[row * picture.RowBytes()];
        uint8_t* to = &dib[pixelsAt + (picture.height - 1 - row) * stride];
        for (size_t at = 0; at < picture.RowBytes(); ++at)
            to[at] = from[at] ^ flip;
        if (picture.bits == 24)
            for (size_t at = 0; at + 3 <= picture.RowBytes(); at += 3)
                std::swap(to[at], to[at + 2]);
    }
    return dib;
}
