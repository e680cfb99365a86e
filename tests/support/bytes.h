// Byte strings in the form in which a person checks them.
#pragma once

#include "tiff/errors.h"

#include <windows.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

using Bytes = std::vector<uint8_t>;

// "0101 1" with spaces anywhere, padded with zeros to a whole byte.
Bytes Bits(std::string_view digits);

// "41 FF 00", spaces anywhere.
Bytes Hex(std::string_view digits);

Bytes operator+(Bytes left, const Bytes& right);
Bytes Repeat(const Bytes& part, size_t times);
// So many bytes from one on, as far as there are any.
Bytes Part(const Bytes& bytes, size_t start, size_t count);
Bytes ReversedBits(Bytes bytes);

// LZW codes of growing width; nothing is known of strings but how many there are.
Bytes LzwCode(const std::vector<uint32_t>& codes);

// A movable block with these bytes.
HGLOBAL NewBlock(const Bytes& bytes);

// The same, freed at the end of the scope.
class Block {
public:
    explicit Block(const Bytes& bytes) : block(NewBlock(bytes))
    {
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block()
    {
        GlobalFree(block);
    }
    HGLOBAL Get() const
    {
        return block;
    }

private:
    HGLOBAL block;
};

// A copy of a block's first bytes, or of all of it.
Bytes Content(HGLOBAL block, size_t bytes);

// A file that is deleted at the end of the scope.
class TempFile {
public:
    explicit TempFile(const Bytes& content);
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    ~TempFile();
    const char* Path() const
    {
        return path.c_str();
    }

private:
    std::string path;
};

// A free file name. A file of that name is deleted at the end of the scope.
class NewFile {
public:
    NewFile() : file({})
    {
        DeleteFileA(file.Path());
    }
    const char* Path() const
    {
        return file.Path();
    }

private:
    TempFile file;
};

// The error of a call that failed, by its result.
template <class Result>
uint32_t Refusal(Result result)
{
    constexpr uint32_t NONE = 0xFFFFFFFF;
    return result ? NONE : TiffError();
}

Bytes ReadFileBytes(const std::string& path);
