// What fuzzers share: the library's start, blocks and files of bytes, and inputs that choose.
#pragma once

#include "core/process_state.h"
#include "standin/standin.h"
#include "tiff/tiff.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace fuzz {

using Input = std::span<const uint8_t>;
using Bytes = std::vector<uint8_t>;

inline void Demand(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE())
{
    if (holds)
        return;
    std::fprintf(stderr, "%s:%d: does not hold; error %u\n", file, line, TiffError());
    std::abort();
}

// With FUZZ_KEEP in the environment, the last file in work is left under that name for other programs to look
// at.
inline void Keep(Input bytes)
{
    static const char* const path = std::getenv("FUZZ_KEEP");
    if (FILE* const file = path ? std::fopen(path, "wb") : nullptr) {
        if (!bytes.empty())
            std::fwrite(bytes.data(), 1, bytes.size(), file);
        std::fclose(file);
    }
}

// One run: starts the library, bounds the blocks that can be had, and demands at its end that everything was
// given back.
class Run {
public:
    explicit Run(uint64_t largestBlock)
    {
        static const bool attached = tiff::AttachProcess(nullptr);
        Demand(attached);
        standin::LimitAllocation(largestBlock);
        before = standin::Live();
        faults = standin::Faults();
    }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;
    ~Run()
    {
        const standin::Counts after = standin::Live();
        Demand(after.blocks == before.blocks && after.locks == before.locks);
        Demand(after.handles == before.handles && standin::Faults() == faults);
    }

private:
    standin::Counts before;
    uint64_t faults;
};

// The beginning of an input decides what is done with the rest. Behind the end there are zeros.
struct Choices {
    Input left;

    uint8_t Byte()
    {
        if (left.empty())
            return 0;
        const uint8_t byte = left[0];
        left = left.subspan(1);
        return byte;
    }
    uint32_t Below(uint32_t count)
    {
        return Byte() % count;
    }
    template <class Value, size_t COUNT>
    Value OneOf(const Value (&values)[COUNT])
    {
        return values[Below(COUNT)];
    }
    uint32_t Number(uint32_t bytes)
    {
        uint32_t number = 0;
        while (bytes-- > 0)
            number = number << 8 | Byte();
        return number;
    }
    Input Take(size_t bytes)
    {
        const Input taken = left.first(std::min(bytes, left.size()));
        left = left.subspan(taken.size());
        return taken;
    }
};

class Block {
public:
    explicit Block(Input bytes) : block(GlobalAlloc(GMEM_MOVEABLE, std::max<size_t>(bytes.size(), 1)))
    {
        if (block && !bytes.empty())
            std::memcpy(GlobalLock(block), bytes.data(), bytes.size());
        if (block && !bytes.empty())
            GlobalUnlock(block);
    }
    Block(const Block&) = delete;
    Block& operator=(const Block&) = delete;
    ~Block()
    {
        if (block)
            GlobalFree(block);
    }
    HGLOBAL Get() const
    {
        return block;
    }

private:
    HGLOBAL block;
};

// The bytes of a block, which is freed; none for null.
inline Bytes TakeBlock(HGLOBAL block)
{
    Bytes bytes(block ? GlobalSize(block) : 0);
    if (!block)
        return bytes;
    std::memcpy(bytes.data(), GlobalLock(block), bytes.size());
    GlobalUnlock(block);
    GlobalFree(block);
    return bytes;
}

// A TIFF of these bytes, open for reading unless the mode says otherwise. No handle when it cannot be opened.
class OpenTiff {
public:
    explicit OpenTiff(Input bytes, uint32_t mode = T_READ)
        : block(bytes),
          handle(bytes.empty() ? nullptr
                               : OpenTiffInMemory(block.Get(), static_cast<uint32_t>(bytes.size()), mode))
    {
    }
    OpenTiff(const OpenTiff&) = delete;
    OpenTiff& operator=(const OpenTiff&) = delete;
    ~OpenTiff()
    {
        if (handle)
            CloseTiffFile(handle);
    }

private:
    Block block;

public:
    const HGLOBAL handle;
};

// A file of the disk, which should be one in memory; gone at the end of the scope.
class DiskFile {
public:
    explicit DiskFile(Input bytes) : path(NewName())
    {
        if (FILE* const file = std::fopen(path.c_str(), "wb")) {
            if (!bytes.empty())
                std::fwrite(bytes.data(), 1, bytes.size(), file);
            std::fclose(file);
        }
    }
    DiskFile(const DiskFile&) = delete;
    DiskFile& operator=(const DiskFile&) = delete;
    ~DiskFile()
    {
        std::remove(path.c_str());
    }
    const char* Path() const
    {
        return path.c_str();
    }
    // Nothing when there is no such file.
    Bytes Content() const
    {
        Bytes bytes;
        if (FILE* const file = std::fopen(path.c_str(), "rb")) {
            uint8_t part[4096];
            while (const size_t count = std::fread(part, 1, sizeof(part), file))
                bytes.insert(bytes.end(), part, part + count);
            std::fclose(file);
        }
        return bytes;
    }

private:
    static std::string NewName()
    {
        static uint32_t number = 0;
        return standin::TempFolder() + "/fuzz-" + std::to_string(getpid()) + '-' + std::to_string(++number) +
               ".tif";
    }
    std::string path;
};

} // namespace fuzz
