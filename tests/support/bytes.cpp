#include "support/bytes.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

Bytes Bits(std::string_view digits)
{
    Bytes bytes;
    unsigned count = 0;
    for (const char digit : digits) {
        if (digit != '0' && digit != '1')
            continue;
        if (count % 8 == 0)
            bytes.push_back(0);
        if (digit == '1')
            bytes.back() = static_cast<uint8_t>(bytes.back() | 0x80 >> count % 8);
        ++count;
    }
    return bytes;
}

Bytes Hex(std::string_view digits)
{
    Bytes bytes;
    for (size_t at = 0; at + 1 < digits.size(); ++at)
        if (digits[at] != ' ') {
            bytes.push_back(
                static_cast<uint8_t>(std::strtoul(std::string(digits.substr(at, 2)).c_str(), nullptr, 16)));
            ++at;
        }
    return bytes;
}

Bytes operator+(Bytes left, const Bytes& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes Repeat(const Bytes& part, size_t times)
{
    Bytes bytes;
    for (; times > 0; --times)
        bytes.insert(bytes.end(), part.begin(), part.end());
    return bytes;
}

Bytes Part(const Bytes& bytes, size_t start, size_t count)
{
    const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(std::min(start, bytes.size()));
    return Bytes(first, first + std::min(static_cast<std::ptrdiff_t>(count), bytes.end() - first));
}

Bytes ReversedBits(Bytes bytes)
{
    for (uint8_t& byte : bytes) {
        uint8_t reversed = 0;
        for (int bit = 0; bit < 8; ++bit)
            reversed = static_cast<uint8_t>(reversed << 1 | (byte >> bit & 1));
        byte = reversed;
    }
    return bytes;
}

Bytes LzwCode(const std::vector<uint32_t>& codes)
{
    std::string digits;
    uint32_t known = 258;
    for (const uint32_t code : codes) {
        for (int bit = std::clamp(static_cast<int>(std::bit_width(known)), 9, 12); bit-- > 0;)
            digits += code >> bit & 1 ? '1' : '0';
        known = code == 256 ? 258 : known + 1;
    }
    return Bits(digits);
}

HGLOBAL NewBlock(const Bytes& bytes)
{
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, std::max<size_t>(bytes.size(), 1));
    std::copy(bytes.begin(), bytes.end(), static_cast<uint8_t*>(GlobalLock(block)));
    GlobalUnlock(block);
    return block;
}

Bytes Content(HGLOBAL block, size_t bytes)
{
    const auto* start = static_cast<const uint8_t*>(GlobalLock(block));
    if (!start)
        return {};
    Bytes content(start, start + bytes);
    GlobalUnlock(block);
    return content;
}

TempFile::TempFile(const Bytes& content)
{
    char folder[MAX_PATH], name[MAX_PATH];
    GetTempPathA(MAX_PATH, folder);
    GetTempFileNameA(folder, "tst", 0, name);
    path = name;
    if (FILE* file = std::fopen(name, "wb")) {
        if (!content.empty())
            std::fwrite(content.data(), 1, content.size(), file);
        std::fclose(file);
    }
}

TempFile::~TempFile()
{
    DeleteFileA(path.c_str());
}

Bytes ReadFileBytes(const std::string& path)
{
    Bytes bytes;
    if (FILE* file = std::fopen(path.c_str(), "rb")) {
        uint8_t part[4096];
        while (const size_t count = std::fread(part, 1, sizeof(part), file))
            bytes.insert(bytes.end(), part, part + count);
        std::fclose(file);
    }
    return bytes;
}
