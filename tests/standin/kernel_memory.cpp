// Global memory. A movable handle is the address of a record in a fixed arena, so that any value can
// be checked; the data is a malloc block of exactly the asked size, so that a sanitizer sees the first
// byte outside it. A freed record rests a long time before it serves again, which keeps dead handles
// recognisable. A fixed block is memory that stays.
#include "standin.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

struct Block {
    bool live = false, known = false;
    uint32_t locks = 0;
    void* data = nullptr;
    size_t bytes = 0;
};

constexpr size_t FILLED_BYTES = size_t{1} << 20;
constexpr int FILLER = 0xCD;

constinit std::array<Block, size_t{1} << 17> arena{};
size_t lastUsed = 0;
int64_t liveBlocks = 0, liveLocks = 0;
uint64_t liveBytes = 0, peakBytes = 0, largestAsked = 0, largestAllowed = uint64_t{1} << 30;

void CountBytes(size_t added, size_t removed)
{
    liveBytes += added - removed;
    peakBytes = std::max(peakBytes, liveBytes);
}

// Null for anything but a live movable block; complains about one that is dead.
Block* LiveBlock(HGLOBAL handle)
{
    const auto offset = reinterpret_cast<uintptr_t>(handle) - reinterpret_cast<uintptr_t>(arena.data());
    if (offset >= sizeof arena || offset % sizeof(Block) != 0)
        return nullptr;
    auto* block = static_cast<Block*>(handle);
    if (!block->live && block->known)
        standin::kernel::Fault("use of a freed block");
    return block->live ? block : nullptr;
}

// New data, holding as much of the old as fits. An empty block has none and cannot be locked.
void* NewData(size_t bytes, UINT flags, const Block& old)
{
    if (bytes == 0)
        return nullptr;
    void* data = flags & GMEM_ZEROINIT ? calloc(1, bytes) : malloc(bytes);
    if (data && !(flags & GMEM_ZEROINIT) && bytes <= FILLED_BYTES)
        memset(data, FILLER, bytes);
    if (data && old.bytes)
        memcpy(data, old.data, std::min(old.bytes, bytes));
    return data;
}

bool Refused(SIZE_T bytes)
{
    largestAsked = std::max<uint64_t>(largestAsked, bytes);
    return standin::kernel::Refuse(standin::Allocation) || bytes > largestAllowed;
}

} // namespace

namespace standin {

int64_t kernel::LiveBlocks()
{
    return liveBlocks;
}

int64_t kernel::LiveLocks()
{
    return liveLocks;
}

void LimitAllocation(uint64_t bytes)
{
    largestAllowed = bytes;
}

uint64_t BytesAllocatedPeak()
{
    return peakBytes;
}

uint64_t LargestAllocation()
{
    return largestAsked;
}

void ResetPeak()
{
    peakBytes = liveBytes;
    largestAsked = 0;
}

} // namespace standin

extern "C" {

HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes)
{
    const auto guard = standin::kernel::Guard();
    static auto& fixedBlocks = *new std::vector<void*>; // never destroyed: the thread's record is one
    if (Refused(bytes))
        return nullptr;
    if (!(flags & GMEM_MOVEABLE))
        return fixedBlocks.emplace_back(calloc(1, bytes));
    void* data = NewData(bytes, flags, {});
    if (bytes && !data)
        return nullptr;
    do
        lastUsed = (lastUsed + 1) % arena.size();
    while (arena[lastUsed].live);
    arena[lastUsed] = {true, true, 0, data, bytes};
    ++liveBlocks;
    CountBytes(bytes, 0);
    return &arena[lastUsed];
}

HGLOBAL GlobalReAlloc(HGLOBAL handle, SIZE_T bytes, UINT flags)
{
    const auto guard = standin::kernel::Guard();
    Block* block = Refused(bytes) ? nullptr : LiveBlock(handle);
    if (!block || block->locks != 0)
        return nullptr;
    void* moved = NewData(bytes, flags, *block);
    if (bytes && !moved)
        return nullptr;
    CountBytes(bytes, block->bytes);
    free(block->data);
    block->data = moved;
    block->bytes = bytes;
    return handle;
}

LPVOID GlobalLock(HGLOBAL handle)
{
    const auto guard = standin::kernel::Guard();
    Block* block = standin::kernel::Refuse(standin::Lock) ? nullptr : LiveBlock(handle);
    if (!block || !block->data)
        return nullptr;
    ++block->locks;
    ++liveLocks;
    return block->data;
}

BOOL GlobalUnlock(HGLOBAL handle)
{
    const auto guard = standin::kernel::Guard();
    Block* block = LiveBlock(handle);
    if (!block || block->locks == 0) {
        standin::kernel::Fault("unlock of an unlocked block");
        return FALSE;
    }
    --liveLocks;
    return --block->locks > 0;
}

HGLOBAL GlobalFree(HGLOBAL handle)
{
    const auto guard = standin::kernel::Guard();
    Block* block = LiveBlock(handle);
    if (!block)
        return handle;
    if (block->locks)
        standin::kernel::Fault("free of a locked block");
    liveLocks -= block->locks;
    --liveBlocks;
    CountBytes(0, block->bytes);
    free(block->data);
    *block = {.known = true};
    return nullptr;
}

SIZE_T GlobalSize(HGLOBAL handle)
{
    const Block* block = LiveBlock(handle);
    return block ? block->bytes : 0;
}
}
