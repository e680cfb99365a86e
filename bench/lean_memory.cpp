// Global memory for timing: the handle of a movable block is one of a fixed number of records, and nothing is
// checked. A block has room to grow, because the system's way of growing is not measured here. Bytes are
// counted, for the peak of a load. One thread only.
#include "bench/lean_memory.h"

#include "standin.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

struct Block {
    void* data;
    size_t bytes;
    size_t room; // of data
    bool mapped;
};

// From this size on blocks may come straight from the system.
constexpr size_t LARGE_BYTES = 256 * 1024;

constexpr size_t MOST_BLOCKS = size_t{1} << 17;
Block blocks[MOST_BLOCKS];
Block* freeBlocks[MOST_BLOCKS];
size_t usedBlocks = 0, freeCount = 0;
size_t liveBytes = 0, peakBytes = 0;
bool fromSystem = false;

void CountBytes(size_t added, size_t removed)
{
    liveBytes += added - removed;
    peakBytes = std::max(peakBytes, liveBytes);
}

// Null for a fixed block, whose handle is its address.
Block* BlockOf(HGLOBAL handle)
{
    auto* block = static_cast<Block*>(handle);
    return block >= blocks && block < blocks + MOST_BLOCKS ? block : nullptr;
}

Block Allocated(size_t bytes)
{
    if (!fromSystem || bytes < LARGE_BYTES)
        return {calloc(1, bytes), bytes, bytes, false};
    void* data = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return {data == MAP_FAILED ? nullptr : data, bytes, bytes, true};
}

void Free(const Block& block)
{
    if (block.mapped)
        munmap(block.data, block.bytes);
    else
        free(block.data);
}

// Most of a block that grows many times is fresh zeroed memory: clearing it again would cost as much as
// filling it.
Block Grown(const Block& block, size_t bytes)
{
    if (block.mapped || bytes / 2 > block.bytes) {
        const Block fresh = Allocated(bytes);
        if (fresh.data) {
            memcpy(fresh.data, block.data, std::min(bytes, block.bytes));
            Free(block);
        }
        return fresh;
    }
    Block grown = block;
    if (bytes > block.room) {
        grown.room = bytes * 2;
        grown.data = realloc(block.data, grown.room);
    }
    if (grown.data && bytes > block.bytes)
        memset(static_cast<char*>(grown.data) + block.bytes, 0, bytes - block.bytes);
    grown.bytes = bytes;
    return grown;
}

} // namespace

void TakeLargeBlocksFromSystem(bool take)
{
    fromSystem = take;
}

size_t LiveBytes()
{
    return liveBytes;
}

size_t PeakBytes()
{
    return peakBytes;
}

void ResetPeakBytes()
{
    peakBytes = liveBytes;
}

// The counters of the other half of the kernel.
namespace standin::kernel {

int64_t LiveBlocks()
{
    return static_cast<int64_t>(usedBlocks - freeCount);
}

int64_t LiveLocks()
{
    return 0;
}

} // namespace standin::kernel

extern "C" {

HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes)
{
    if (!(flags & GMEM_MOVEABLE))
        return calloc(1, bytes);
    const Block allocated = Allocated(bytes);
    if (!allocated.data)
        return nullptr;
    Block* block = freeCount ? freeBlocks[--freeCount] : &blocks[usedBlocks++];
    *block = allocated;
    CountBytes(bytes, 0);
    return block;
}

HGLOBAL GlobalReAlloc(HGLOBAL handle, SIZE_T bytes, UINT)
{
    Block* block = BlockOf(handle);
    const Block grown = Grown(*block, bytes);
    if (!grown.data)
        return nullptr;
    CountBytes(bytes, block->bytes);
    *block = grown;
    return handle;
}

LPVOID GlobalLock(HGLOBAL handle)
{
    const Block* block = BlockOf(handle);
    return block ? block->data : handle;
}

BOOL GlobalUnlock(HGLOBAL)
{
    return TRUE;
}

HGLOBAL GlobalFree(HGLOBAL handle)
{
    if (Block* block = BlockOf(handle)) {
        CountBytes(0, block->bytes);
        Free(*block);
        freeBlocks[freeCount++] = block;
    } else {
        free(handle);
    }
    return nullptr;
}

SIZE_T GlobalSize(HGLOBAL handle)
{
    const Block* block = BlockOf(handle);
    return block ? block->bytes : 0;
}
}
