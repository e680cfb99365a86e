// All state that belongs to no file: one record per thread, reached through one slot. Nothing here is shared,
// so there are no locks.
#pragma once

#include "core/win32.h"

#include <array>
#include <cstddef>

namespace tiff {

struct MemoryFileSlot {
    HGLOBAL block; // never owned by the slot
    int32_t position;
    int32_t size;                   // MEMORY_FILE_FREE marks a slot that is not in use
    const uint8_t* bytes = nullptr; // of a file that is only read, instead of a block
};

inline constexpr int32_t MEMORY_FILE_FREE = -1;

// Slots 0 and 1 stay unused: their negated numbers would be no handle and the system's invalid handle.
inline constexpr int32_t FIRST_MEMORY_SLOT = 2;
inline constexpr int32_t LAST_MEMORY_SLOT = 30;

// Room for the settings of an upper layer, which defines them. Zero at first.
template <size_t BYTES>
struct LayerRoom {
    alignas(8) std::array<uint8_t, BYTES> bytes;
};

// What is known of a failure besides its code.
struct ErrorFacts {
    uint32_t status;      // that they are about; 0 without facts
    uint32_t page, tag;   // when they are known
    uint32_t systemError; // 0 for none
    bool hasPage, hasTag;
    bool sealed;    // the failure was reported
    char path[260]; // empty when it is not known
};

struct TiffThreadState {
    uint32_t lastError;
    uint32_t pathCodePage;
    ErrorFacts facts;
    std::array<MemoryFileSlot, LAST_MEMORY_SLOT + 1> memoryFiles;
    LayerRoom<32> codecs;
    LayerRoom<256> raster;
    LayerRoom<264> pages;
    LayerRoom<8> containers;
    LayerRoom<8> notes;
};

// The settings that a layer keeps in its room.
template <class Settings, size_t BYTES>
Settings& SettingsIn(LayerRoom<BYTES>& room)
{
    static_assert(sizeof(Settings) <= BYTES && alignof(Settings) <= 8);
    return *reinterpret_cast<Settings*>(room.bytes.data());
}

// The calling thread's record, made on first use. A thread that gets no memory for it is ended: no function
// could report an error to it.
TiffThreadState& ThreadState();
// False when the memory is missing; the first use tries again.
bool CreateThreadState();
void FreeThreadState();

} // namespace tiff
