#include "pages/scratch.h"

#include <algorithm>

namespace tiff {

// The header of a locked block; the memory to hand out follows it.
struct Scratch::Chunk {
    HGLOBAL block;
    Chunk* before;
    uint64_t bytes; // with the header
};

static constexpr uint64_t FIRST_BYTES = 4096;
static constexpr uint64_t ALIGNMENT = 8;

Scratch::~Scratch()
{
    Free(newest);
}

void Scratch::Free(Chunk* chunk)
{
    while (chunk) {
        Chunk* before = chunk->before;
        HGLOBAL block = chunk->block;
        GlobalUnlock(block);
        GlobalFree(block);
        chunk = before;
    }
}

uint8_t* Scratch::Take(uint64_t bytes)
{
    bytes = (bytes + ALIGNMENT - 1) / ALIGNMENT * ALIGNMENT;
    if (!newest || bytes > newest->bytes - used) {
        const uint64_t wanted = std::max(newest ? newest->bytes * 2 : FIRST_BYTES, bytes + sizeof(Chunk));
        HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, static_cast<SIZE_T>(wanted));
        auto* chunk = block ? static_cast<Chunk*>(GlobalLock(block)) : nullptr;
        if (!chunk) {
            GlobalFree(block);
            return nullptr;
        }
        *chunk = {block, newest, wanted};
        newest = chunk;
        used = sizeof(Chunk);
    }
    uint8_t* taken = reinterpret_cast<uint8_t*>(newest) + used;
    used += bytes;
    return taken;
}

void Scratch::GiveBack()
{
    if (!newest)
        return;
    Free(newest->before);
    newest->before = nullptr;
    used = sizeof(Chunk);
}

} // namespace tiff
