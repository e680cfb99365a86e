/* PNM: a header of words and numbers, then rows, as bytes or as more numbers; and what reads pictures of any
 * kind into DIBs.
 */
#include "diagnosis.h"
#include "raster_files.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

namespace tifftool {

namespace {

struct Scanner {
    std::span<const uint8_t> bytes;
    size_t at = 2;
    bool good = true;

    bool SkipBlanks()
    {
        for (; at < bytes.size(); ++at) {
            if (bytes[at] == '#') {
                while (at + 1 < bytes.size() && bytes[at + 1] != '\n') {
                    ++at;
                }
            } else if (bytes[at] > ' ') {
                return true;
            }
        }
        return good = false;
    }
    uint32_t Number(size_t mostDigits = 9)
    {
        uint32_t number = 0;
        size_t digits = 0;
        for (good = good && SkipBlanks();
             good && at < bytes.size() && bytes[at] >= '0' && bytes[at] <= '9' && digits < mostDigits;
             ++at, ++digits) {
            number = number * 10 + (bytes[at] - '0');
        }
        good = good && digits != 0;
        return number;
    }
};

uint8_t Scaled(uint32_t value, uint32_t most)
{
    return static_cast<uint8_t>((std::min(value, most) * uint64_t{255} + most / 2) / most);
}

void ReadSamples(Scanner& scanner, RasterPicture& picture, uint32_t most, bool words)
{
    const size_t samples = size_t{picture.width} * picture.height * (picture.depth == 24 ? 3 : 1);
    const size_t bytes = words ? 1 : most > 255 ? 2 : 1;
    if (scanner.bytes.size() - scanner.at < samples * bytes) {
        scanner.good = false;
    }
    for (size_t index = 0; scanner.good && index < samples; ++index) {
        uint32_t value = 0;
        if (words) {
            value = scanner.Number();
        } else {
            value = scanner.bytes[scanner.at++];
            value = bytes == 2 ? value << 8 | scanner.bytes[scanner.at++] : value;
        }
        picture.rows.push_back(Scaled(value, most));
    }
}

void ReadBits(Scanner& scanner, RasterPicture& picture, bool words)
{
    const size_t rowBytes = (size_t{picture.width} + 7) / 8;
    const size_t all = rowBytes * picture.height;
    scanner.good = scanner.good && scanner.bytes.size() - scanner.at >=
                                       (words ? size_t{picture.width} * picture.height : all);
    if (!scanner.good) {
        return;
    }
    if (!words) {
        picture.rows.assign(&scanner.bytes[scanner.at], &scanner.bytes[scanner.at] + all);
        return;
    }
    picture.rows.resize(all);
    for (uint32_t row = 0; row < picture.height; ++row) {
        for (uint32_t column = 0; column < picture.width; ++column) {
            picture.rows[row * rowBytes + column / 8] |=
                static_cast<uint8_t>((scanner.Number(1) & 1) << (7 - column % 8));
        }
    }
}

HGLOBAL MakeDib(const RasterPicture& picture)
{
    const size_t from = (size_t{picture.width} * picture.depth + 7) / 8, stride = (from + 3) / 4 * 4;
    const size_t head = sizeof(BITMAPINFOHEADER) + picture.colours.size() * sizeof(RGBQUAD);
    const HGLOBAL dib = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, head + stride * picture.height);
    auto* const bytes = dib ? static_cast<uint8_t*>(GlobalLock(dib)) : nullptr;
    if (!bytes) {
        return nullptr;
    }
    BITMAPINFOHEADER header = {.biSize = sizeof header,
                               .biWidth = static_cast<LONG>(picture.width),
                               .biHeight = static_cast<LONG>(picture.height),
                               .biPlanes = 1,
                               .biBitCount = static_cast<WORD>(picture.depth)};
    header.biXPelsPerMeter = static_cast<LONG>(std::min<uint32_t>(picture.dotsAcross, INT32_MAX));
    header.biYPelsPerMeter = static_cast<LONG>(std::min<uint32_t>(picture.dotsDown, INT32_MAX));
    header.biClrUsed = static_cast<DWORD>(picture.colours.size());
    memcpy(bytes, &header, sizeof header);
    for (size_t index = 0; index < picture.colours.size(); ++index) {
        const auto& [red, green, blue] = picture.colours[index];
        const RGBQUAD colour = {blue, green, red, 0};
        memcpy(bytes + sizeof header + index * sizeof colour, &colour, sizeof colour);
    }
    for (uint32_t row = 0; row < picture.height; ++row) {
        uint8_t* const target = bytes + head + stride * (picture.height - 1 - row);
        memcpy(target, &picture.rows[row * from], from);
        for (size_t at = 0; picture.depth == 24 && at < from; at += 3) {
            std::swap(target[at], target[at + 2]);
        }
    }
    GlobalUnlock(dib);
    return dib;
}

std::vector<uint8_t> ReadAll(const std::string& path)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> file(IsFolder(path) ? nullptr : fopen(path.c_str(), "rb"),
                                                     fclose);
    std::vector<uint8_t> bytes, part(65536);
    const auto isRaster = [&bytes] {
        return bytes.size() > 8 && (memcmp(bytes.data(), "\x89PNG\r\n\x1A\n", 8) == 0 ||
                                    (bytes[0] == 'P' && bytes[1] >= '1' && bytes[1] <= '6' &&
                                     (bytes[2] <= ' ' || bytes[2] == '#')));
    };
    while (const size_t got = file ? fread(part.data(), 1, part.size(), file.get()) : 0) {
        bytes.insert(bytes.end(), part.begin(), part.begin() + static_cast<ptrdiff_t>(got));
        if (!isRaster()) {
            return {};
        }
    }
    return bytes;
}

} // namespace

RasterPicture DecodePnm(std::span<const uint8_t> bytes)
{
    const uint32_t kind = bytes[1] - '0';
    const bool words = kind <= 3, bits = kind == 1 || kind == 4;
    Scanner scanner = {bytes};
    RasterPicture picture;
    picture.width = scanner.Number();
    picture.height = scanner.Number();
    const uint32_t most = bits ? 1 : scanner.Number();
    picture.depth = bits ? 1 : kind == 2 || kind == 5 ? 8 : 24;
    ++scanner.at; // the blank before the rows
    const uint64_t all = uint64_t{picture.width} * picture.height * 3;
    if (!scanner.good || all == 0 || all > MOST_RASTER_BYTES || most == 0 || most > 65535 ||
        picture.width > INT32_MAX / 32 || scanner.at > bytes.size()) {
        picture.fault = "this is a PNM picture whose header makes no sense";
        return picture;
    }
    bits ? ReadBits(scanner, picture, words) : ReadSamples(scanner, picture, most, words);
    if (!scanner.good) {
        picture.fault = "this is a PNM picture that is cut off";
    }
    for (uint32_t level = 0; picture.depth == 8 && level < 256; ++level) {
        const auto grey = static_cast<uint8_t>(level);
        picture.colours.push_back({grey, grey, grey});
    }
    if (bits) {
        picture.colours = {{255, 255, 255}, {0, 0, 0}};
    }
    return picture;
}

const char* PnmExtension(const Pixels& pixels)
{
    constexpr Rgb black = {0, 0, 0}, white = {255, 255, 255};
    const bool bits = pixels.depth == 1 && std::ranges::all_of(pixels.colours, [&](const Rgb& colour) {
                          return colour == black || colour == white;
                      });
    return bits ? ".pbm" : IsGrey(pixels) ? ".pgm" : ".ppm";
}

std::vector<uint8_t> EncodePnm(const Pixels& pixels)
{
    const std::string extension = PnmExtension(pixels);
    const bool bits = extension == ".pbm", grey = extension == ".pgm";
    const std::string head = std::string(bits   ? "P4"
                                         : grey ? "P5"
                                                : "P6") +
                             "\n" + std::to_string(pixels.width) + " " + std::to_string(pixels.height) +
                             "\n" + (bits ? "" : "255\n");
    std::vector<uint8_t> pnm(head.begin(), head.end());
    std::vector<Rgb> row(pixels.width);
    for (uint32_t index = 0; index < pixels.height; ++index) {
        ReadRow(pixels, index, row);
        if (bits) {
            const size_t at = pnm.size();
            pnm.resize(at + (row.size() + 7) / 8);
            for (size_t column = 0; column < row.size(); ++column) {
                pnm[at + column / 8] |= static_cast<uint8_t>((row[column][0] == 0) << (7 - column % 8));
            }
            continue;
        }
        for (const Rgb& colour : row) {
            pnm.insert(pnm.end(), colour.begin(), grey ? colour.begin() + 1 : colour.end());
        }
    }
    return pnm;
}

std::string ReadRasterFile(const std::string& path, HGLOBAL& dib)
{
    dib = nullptr;
    const std::vector<uint8_t> bytes = ReadAll(path);
    if (bytes.empty()) {
        return "";
    }
    const RasterPicture picture = bytes[0] == 'P' ? DecodePnm(bytes) : DecodePng(bytes);
    if (picture.fault.empty() && (dib = MakeDib(picture)) == nullptr) {
        return "there is not enough memory for the picture";
    }
    return picture.fault;
}

} // namespace tifftool
