// Everything that changes and belongs to no file: one record per thread, reached through one
// slot. There are no locks because nothing here is shared.
#pragma once

#include "core/win32.h"

#include <array>

namespace tiff {

struct MemoryFileSlot {
    HGLOBAL block; // never owned by the slot
    int32_t position;
    int32_t size; // MEMORY_FILE_FREE marks a slot that is not in use
};

inline constexpr int32_t MEMORY_FILE_FREE = -1;

// Slots 0 and 1 stay unused: their negated numbers would look like no handle and like the
// system's invalid handle.
inline constexpr int32_t FIRST_MEMORY_SLOT = 2;
inline constexpr int32_t LAST_MEMORY_SLOT = 30;

inline constexpr uint32_t SAVE_TEXT_BYTES = 101;

// What the last save chose; texts are written into every page that is saved.
struct SaveSettings {
    uint32_t colourCount; // 2 is bilevel
    uint32_t photometric;
    uint32_t fillOrder;
    uint32_t selector;
    char description[SAVE_TEXT_BYTES];
    char artist[SAVE_TEXT_BYTES];
};

struct TiffThreadState {
    uint32_t lastError;
    std::array<MemoryFileSlot, LAST_MEMORY_SLOT + 1> memoryFiles;
    uint32_t kFactor;  // of Group 3 two-dimensional coding
    uint32_t codeMask; // the bit of its byte that the next CCITT code begins at; 0x80, a fresh byte
    SaveSettings save;
    char rawFileName[260];   // of the last bare fax file that a page was appended to
    BITMAPINFO* ccittSource; // of the bitmap whose lines DllFillCcittLine fetches; else null
};

// The calling thread's record, made on first use. A thread that cannot have one is ended: no
// function could report anything to it.
TiffThreadState& ThreadState();
// False when the memory is missing; the first use tries again.
bool CreateThreadState();
void FreeThreadState();

} // namespace tiff
