// Global memory. A movable handle is the address of a record in a fixed arena, so that any value can be
// checked without a mutex. The data is a malloc block of exactly the requested size, so that a sanitizer sees
// the first byte outside it. Freed records stay unused for a long time, so that dead handles are recognised.
#include "standin.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <mutex>
#include <unordered_map>

namespace {

enum class Life : uint32_t { Never, Live, Dead };

struct Block {
    std::atomic<Life> life{Life::Never};
    std::atomic<uint32_t> locks{0};
    void* data = nullptr;
    size_t bytes = 0;
};

struct FixedBlock {
    size_t bytes;
    bool live;
};

constexpr size_t ARENA_BLOCKS = size_t{1} << 18;
constexpr size_t RESTING_BLOCKS = size_t{1} << 16;
constexpr size_t FILLED_BYTES = size_t{1} << 20;
constexpr int FILLER = 0xCD;

constinit std::array<Block, ARENA_BLOCKS> arena{};
constinit std::atomic<int64_t> liveBlocks{0}, liveLocks{0}, liveBytes{0}, peakBytes{0};
constinit std::atomic<uint64_t> largestAsked{0}, largestAllowed{uint64_t{1} << 30};

// Never destroyed: blocks may be freed while the process ends.
struct Books {
    std::mutex mutex;
    size_t used = 0;
    std::deque<Block*> resting;
    std::unordered_map<void*, FixedBlock> fixed;
};

Books& TheBooks()
{
    static auto& books = *new Books;
    return books;
}

template <class Number>
void Raise(std::atomic<Number>& highest, Number value)
{
    Number known = highest.load(std::memory_order_relaxed);
    while (known < value && !highest.compare_exchange_weak(known, value)) {
    }
}

void CountBytes(int64_t change)
{
    Raise(peakBytes, liveBytes.fetch_add(change) + change);
}

Block* InArena(HGLOBAL handle)
{
    const auto offset = reinterpret_cast<uintptr_t>(handle) - reinterpret_cast<uintptr_t>(arena.data());
    if (offset >= sizeof arena || offset % sizeof(Block) != 0)
        return nullptr;
    return static_cast<Block*>(handle);
}

// Null for anything but a live movable block; reports a dead one.
Block* LiveBlock(HGLOBAL handle)
{
    Block* block = InArena(handle);
    if (!block)
        return nullptr;
    const Life life = block->life.load(std::memory_order_acquire);
    if (life == Life::Dead)
        standin::kernel::Fault("use of a freed block");
    return life == Life::Live ? block : nullptr;
}

struct FixedAnswer {
    bool live;
    size_t bytes;
};

FixedAnswer FindFixed(HGLOBAL handle)
{
    if (!handle || InArena(handle))
        return {false, 0};
    Books& books = TheBooks();
    const std::lock_guard guard(books.mutex);
    const auto found = books.fixed.find(handle);
    if (found == books.fixed.end())
        return {false, 0};
    if (!found->second.live)
        standin::kernel::Fault("use of a freed fixed block");
    return {found->second.live, found->second.bytes};
}

void* NewData(size_t bytes, UINT flags)
{
    if (flags & GMEM_ZEROINIT)
        return calloc(1, bytes);
    void* data = malloc(bytes);
    if (data && bytes <= FILLED_BYTES)
        memset(data, FILLER, bytes);
    return data;
}

Block* NewRecord()
{
    Books& books = TheBooks();
    const std::lock_guard guard(books.mutex);
    if (books.resting.size() > RESTING_BLOCKS || (books.used == ARENA_BLOCKS && !books.resting.empty())) {
        Block* block = books.resting.front();
        books.resting.pop_front();
        return block;
    }
    return books.used < ARENA_BLOCKS ? &arena[books.used++] : nullptr;
}

bool RefuseSize(SIZE_T bytes)
{
    Raise<uint64_t>(largestAsked, bytes);
    if (standin::kernel::Refuse(standin::Allocation, ERROR_NOT_ENOUGH_MEMORY))
        return true;
    return bytes > largestAllowed.load(std::memory_order_relaxed);
}

void* OutOfMemory()
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

HGLOBAL NewMovable(UINT flags, SIZE_T bytes)
{
    Block* block = NewRecord();
    if (!block)
        return OutOfMemory();
    // An empty movable block exists but has nothing to lock.
    block->data = bytes ? NewData(bytes, flags) : nullptr;
    if (bytes && !block->data) {
        block->life = Life::Dead;
        Books& books = TheBooks();
        const std::lock_guard guard(books.mutex);
        books.resting.push_back(block);
        return OutOfMemory();
    }
    block->bytes = bytes;
    block->locks = 0;
    block->life.store(Life::Live, std::memory_order_release);
    return block;
}

HGLOBAL NewFixed(UINT flags, SIZE_T bytes)
{
    void* data = NewData(bytes, flags);
    if (!data)
        return OutOfMemory();
    Books& books = TheBooks();
    const std::lock_guard guard(books.mutex);
    books.fixed[data] = {bytes, true};
    return data;
}

bool FreeFixed(HGLOBAL handle)
{
    const FixedAnswer fixed = FindFixed(handle);
    if (!fixed.live)
        return false;
    {
        Books& books = TheBooks();
        const std::lock_guard guard(books.mutex);
        books.fixed[handle].live = false;
    }
    CountBytes(-static_cast<int64_t>(fixed.bytes));
    free(handle);
    return true;
}

// The new data with as much of the old as fits. The old data is not changed.
void* Moved(const void* data, size_t oldBytes, size_t newBytes, UINT flags)
{
    void* moved = malloc(newBytes);
    if (!moved)
        return nullptr;
    const size_t kept = std::min(oldBytes, newBytes);
    if (kept)
        memcpy(moved, data, kept);
    memset(static_cast<char*>(moved) + kept, flags & GMEM_ZEROINIT ? 0 : FILLER, newBytes - kept);
    return moved;
}

} // namespace

namespace standin {

namespace kernel {

int64_t LiveBlocks()
{
    return liveBlocks;
}

int64_t LiveLocks()
{
    return liveLocks;
}

} // namespace kernel

void LimitAllocation(uint64_t bytes)
{
    largestAllowed = bytes;
}

uint64_t BytesAllocatedPeak()
{
    return static_cast<uint64_t>(peakBytes.load());
}

uint64_t LargestAllocation()
{
    return largestAsked;
}

void ResetPeak()
{
    peakBytes = liveBytes.load();
    largestAsked = 0;
}

} // namespace standin

using standin::kernel::Fail;
using standin::kernel::Fault;

extern "C" {

HGLOBAL GlobalAlloc(UINT flags, SIZE_T bytes)
{
    if (RefuseSize(bytes))
        return OutOfMemory();
    const HGLOBAL block = flags & GMEM_MOVEABLE ? NewMovable(flags, bytes) : NewFixed(flags, bytes);
    if (block) {
        ++liveBlocks;
        CountBytes(static_cast<int64_t>(bytes));
    }
    return block;
}

HGLOBAL GlobalReAlloc(HGLOBAL handle, SIZE_T bytes, UINT flags)
{
    if (RefuseSize(bytes))
        return OutOfMemory();
    if (const FixedAnswer fixed = FindFixed(handle); fixed.live) {
        // A fixed block may move only when the caller allows it, and here it always moves.
        const HGLOBAL moved = flags & GMEM_MOVEABLE ? NewFixed(flags, bytes) : OutOfMemory();
        if (!moved)
            return nullptr;
        const size_t kept = std::min<size_t>(fixed.bytes, bytes);
        memcpy(moved, handle, kept);
        memset(static_cast<char*>(moved) + kept, flags & GMEM_ZEROINIT ? 0 : FILLER, bytes - kept);
        CountBytes(static_cast<int64_t>(bytes));
        FreeFixed(handle);
        return moved;
    }
    Block* block = LiveBlock(handle);
    if (!block) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    if (block->locks != 0)
        return OutOfMemory();
    void* moved = bytes ? Moved(block->data, block->bytes, bytes, flags) : nullptr;
    if (bytes && !moved)
        return OutOfMemory();
    CountBytes(static_cast<int64_t>(bytes) - static_cast<int64_t>(block->bytes));
    free(block->data);
    block->data = moved;
    block->bytes = bytes;
    return handle;
}

LPVOID GlobalLock(HGLOBAL handle)
{
    if (standin::kernel::Refuse(standin::Lock, ERROR_NOT_ENOUGH_MEMORY))
        return nullptr;
    Block* block = LiveBlock(handle);
    if (!block) {
        if (FindFixed(handle).live)
            return handle;
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    if (!block->data) {
        SetLastError(ERROR_DISCARDED);
        return nullptr;
    }
    block->locks.fetch_add(1, std::memory_order_relaxed);
    liveLocks.fetch_add(1, std::memory_order_relaxed);
    return block->data;
}

BOOL GlobalUnlock(HGLOBAL handle)
{
    Block* block = LiveBlock(handle);
    if (!block)
        return FindFixed(handle).live ? TRUE : Fail(ERROR_INVALID_HANDLE);
    uint32_t locks = block->locks.load();
    do {
        if (locks == 0) {
            Fault("unlock of an unlocked block");
            return Fail(ERROR_NOT_LOCKED);
        }
    } while (!block->locks.compare_exchange_weak(locks, locks - 1));
    liveLocks.fetch_sub(1, std::memory_order_relaxed);
    return locks > 1 ? TRUE : Fail(NO_ERROR);
}

HGLOBAL GlobalFree(HGLOBAL handle)
{
    if (!handle)
        return nullptr;
    Block* block = LiveBlock(handle);
    Life live = Life::Live;
    if (!block || !block->life.compare_exchange_strong(live, Life::Dead)) {
        if (!block && FreeFixed(handle)) {
            --liveBlocks;
            return nullptr;
        }
        if (block)
            Fault("two threads free one block");
        SetLastError(ERROR_INVALID_HANDLE);
        return handle;
    }
    if (const uint32_t locks = block->locks.exchange(0); locks != 0) {
        Fault("free of a locked block");
        liveLocks -= locks;
    }
    CountBytes(-static_cast<int64_t>(block->bytes));
    --liveBlocks;
    free(block->data);
    block->data = nullptr;
    Books& books = TheBooks();
    const std::lock_guard guard(books.mutex);
    books.resting.push_back(block);
    return nullptr;
}

SIZE_T GlobalSize(HGLOBAL handle)
{
    if (const Block* block = LiveBlock(handle))
        return block->bytes;
    const FixedAnswer fixed = FindFixed(handle);
    if (!fixed.live)
        SetLastError(ERROR_INVALID_HANDLE);
    return fixed.live ? fixed.bytes : 0;
}

UINT GlobalFlags(HGLOBAL handle)
{
    if (const Block* block = LiveBlock(handle))
        return std::min<UINT>(block->locks, GMEM_LOCKCOUNT) | (block->data ? 0 : GMEM_DISCARDED);
    if (FindFixed(handle).live)
        return 0;
    SetLastError(ERROR_INVALID_HANDLE);
    return GMEM_INVALID_HANDLE;
}
}
