/* A BMP file is a packed DIB after fourteen bytes with its size and the offset of the pixels. Both
 * headers are checked against the number of bytes.
 */
#include "bmp.h"

#include "diagnosis.h"
#include "tiff/base.h"
#include "whole_file.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tifftool {

namespace {

constexpr uint32_t FILE_HEADER_BYTES = 14;

struct DibParts {
    uint32_t depth;
    uint64_t headBytes;  // header and colour table; 0 for an invalid header
    uint64_t totalBytes; // the same with the pixels
};

// Handles both kinds of header, and rows from the bottom or from the top.
DibParts MeasureDib(std::span<const uint8_t> dib)
{
    BITMAPCOREHEADER core = {};
    BITMAPINFOHEADER header = {};
    if (dib.size() < sizeof core) {
        return {};
    }
    memcpy(&core, dib.data(), sizeof core);
    const bool isCore = core.bcSize == sizeof core;
    if (isCore) {
        header.biWidth = core.bcWidth;
        header.biHeight = core.bcHeight;
        header.biBitCount = core.bcBitCount;
    } else if (core.bcSize < sizeof header || core.bcSize > dib.size()) {
        return {};
    } else {
        memcpy(&header, dib.data(), sizeof header);
    }
    uint64_t colours = header.biClrUsed;
    if (colours == 0 && header.biBitCount <= 8) {
        colours = uint64_t{1} << header.biBitCount;
    }
    const auto width = static_cast<uint64_t>(header.biWidth < 0 ? 0 : header.biWidth);
    const auto rows = static_cast<uint64_t>(std::abs(int64_t{header.biHeight}));
    const uint64_t stride = (width * header.biBitCount + 31) / 32 * 4;
    const uint64_t headBytes = core.bcSize + (isCore ? 3 : 4) * colours;
    return {header.biBitCount, headBytes, headBytes + stride * rows};
}

void Append32(std::string& bytes, uint64_t value)
{
    for (int shift = 0; shift < 32; shift += 8) {
        bytes += static_cast<char>(value >> shift & 0xFF);
    }
}

bool WriteAll(HANDLE file, const void* bytes, DWORD count)
{
    DWORD written = 0;
    if (!WriteFile(file, bytes, count, &written, nullptr)) {
        return false;
    }
    // A full disk may take a part without calling that an error.
    SetLastError(ERROR_DISK_FULL);
    return written == count;
}

} // namespace

uint32_t DepthOf(std::span<const uint8_t> dib)
{
    return MeasureDib(dib).depth;
}

uint32_t WriteBmp(const char* path, std::span<const uint8_t> dib, bool isNew)
{
    const auto [depth, headBytes, totalBytes] = MeasureDib(dib);
    if (headBytes == 0 || totalBytes > dib.size() || totalBytes > 0xFFFFFFFF - FILE_HEADER_BYTES) {
        return ERROR_INVALID_DATA;
    }
    std::string fileHeader = "BM";
    Append32(fileHeader, FILE_HEADER_BYTES + totalBytes);
    Append32(fileHeader, 0);
    Append32(fileHeader, FILE_HEADER_BYTES + headBytes);

    const HANDLE file = CreateFileA(path, GENERIC_WRITE, 0, nullptr, isNew ? CREATE_NEW : TRUNCATE_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return GetLastError();
    }
    const bool written = WriteAll(file, fileHeader.data(), FILE_HEADER_BYTES) &&
                         WriteAll(file, dib.data(), static_cast<DWORD>(totalBytes));
    const DWORD cause = GetLastError();
    CloseHandle(file);
    if (!written && isNew) {
        DeleteFileA(path);
    }
    return written ? ERROR_SUCCESS : cause;
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
    uint32_t pixelsAt = 0;
    const std::span bytes(reinterpret_cast<const uint8_t*>(content.data()), content.size());
    const uint64_t headBytes =
        bytes.size() < FILE_HEADER_BYTES ? 0 : MeasureDib(bytes.subspan(FILE_HEADER_BYTES)).headBytes;
    if (headBytes == 0) {
        return "this is a BMP picture whose header makes no sense";
    }
    memcpy(&pixelsAt, &content[10], sizeof pixelsAt);
    if (pixelsAt > content.size() || FILE_HEADER_BYTES + headBytes > pixelsAt) {
        return "this is a BMP picture that is cut off, or its header is wrong";
    }
    // Bytes between the colours and the pixels are left out.
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
