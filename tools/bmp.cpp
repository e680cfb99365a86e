/* A BMP file is a packed DIB behind fourteen bytes that tell its size and where the pixels
 * begin. What either side claims is checked against the bytes that are there.
 */
#include "bmp.h"

#include "diagnosis.h"
#include "tiff/base.h"
#include "whole_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace tifftool {

namespace {

constexpr uint32_t FILE_HEADER_BYTES = 14;

struct DibParts {
    uint64_t headBytes;  // header and colour table
    uint64_t totalBytes; // the same and the pixels
};

DibParts MeasureDib(const BITMAPINFOHEADER& header)
{
    uint64_t colours = header.biClrUsed;
    if (colours == 0 && header.biBitCount <= 8) {
        colours = uint64_t{1} << header.biBitCount;
    }
    const auto width = static_cast<uint64_t>(header.biWidth < 0 ? 0 : header.biWidth);
    const auto rows = static_cast<uint64_t>(header.biHeight < 0 ? 0 : header.biHeight);
    const uint64_t stride = (width * header.biBitCount + 31) / 32 * 4;
    const uint64_t headBytes = header.biSize + 4 * colours;
    return {headBytes, headBytes + stride * rows};
}

void Append32(std::string& bytes, uint64_t value)
{
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>(value >> shift & 0xFF);
    }
}

} // namespace

std::string WriteBmp(const char* path, std::span<const uint8_t> dib)
{
    BITMAPINFOHEADER header;
    if (dib.size() < sizeof header) {
        return "the picture has no header";
    }
    memcpy(&header, dib.data(), sizeof header);
    const auto [headBytes, totalBytes] = MeasureDib(header);
    if (header.biSize != sizeof header || totalBytes > dib.size() ||
        totalBytes > 0xFFFFFFFF - FILE_HEADER_BYTES) {
        return "the picture does not fit its block";
    }
    std::string fileHeader = "BM";
    Append32(fileHeader, FILE_HEADER_BYTES + totalBytes);
    Append32(fileHeader, 0);
    Append32(fileHeader, FILE_HEADER_BYTES + headBytes);

    FILE* const file = fopen(path, "wb");
    if (!file) {
        return std::string("cannot be created: ") + strerror(errno);
    }
    const auto dibBytes = static_cast<size_t>(totalBytes);
    const bool written = fwrite(fileHeader.data(), 1, fileHeader.size(), file) == fileHeader.size() &&
                         fwrite(dib.data(), 1, dibBytes, file) == dibBytes;
    if (fclose(file) != 0 || !written) {
        remove(path);
        return "cannot be written";
    }
    return "";
}

std::string ReadBmp(const char* path, HGLOBAL& dib)
{
    dib = nullptr;
    FILE* const file = IsFolder(path) ? nullptr : fopen(path, "rb");
    if (!file) {
        return WhyNotTiff(path);
    }
    std::string content;
    char part[65536];
    while (const size_t got = fread(part, 1, sizeof part, file)) {
        content.append(part, got);
        if (content.compare(0, 2, "BM") != 0) {
            break;
        }
    }
    fclose(file);
    if (content.compare(0, 2, "BM") != 0) {
        return "";
    }
    BITMAPINFOHEADER header;
    uint32_t pixelsAt = 0;
    if (content.size() < FILE_HEADER_BYTES + sizeof header) {
        return "the picture has no header";
    }
    memcpy(&pixelsAt, &content[10], sizeof pixelsAt);
    memcpy(&header, &content[FILE_HEADER_BYTES], sizeof header);
    const uint64_t headBytes = MeasureDib(header).headBytes;
    if (pixelsAt > content.size() || FILE_HEADER_BYTES + headBytes > pixelsAt) {
        return "the picture does not fit its file";
    }
    // Whatever stands between the colours and the pixels is left out.
    const size_t pixelBytes = content.size() - pixelsAt;
    const auto head = static_cast<size_t>(headBytes);
    dib = GlobalAlloc(GMEM_MOVEABLE, head + pixelBytes);
    auto* const target = dib ? static_cast<char*>(GlobalLock(dib)) : nullptr;
    if (!target) {
        return "there is not enough memory for the picture";
    }
    memcpy(target, &content[FILE_HEADER_BYTES], head);
    memcpy(target + head, content.data() + pixelsAt, pixelBytes);
    GlobalUnlock(dib);
    return "";
}

} // namespace tifftool
