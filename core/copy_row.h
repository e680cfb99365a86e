// Copies rows and other pieces of a few hundred bytes. A call of the C library costs as much as such a copy,
// and libraries choose slow ways for some lengths.
#pragma once

#include "core/sixteen.h"

namespace tiff {

// Prefetches the next row: a picture is walked from its last row to the first, which the processor does not
// predict. An address outside the picture does no harm.
inline void AskForRow(const uint8_t* row, uint32_t bytes)
{
    constexpr uint32_t CACHE_LINE = 64;
    for (uint32_t at = 0; at < bytes; at += CACHE_LINE)
        AskForMemory(row + at);
}

// The two must not overlap.
inline void CopyRow(uint8_t* target, const uint8_t* source, size_t bytes)
{
    constexpr size_t WORD = SIXTEEN, BLOCK = 4 * WORD;
    size_t at = 0;
    if (bytes < WORD) {
        for (; at < bytes; ++at)
            target[at] = source[at];
        return;
    }
    for (; at + BLOCK <= bytes; at += BLOCK)
        for (size_t word = 0; word < BLOCK; word += WORD)
            CopySixteen(target + at + word, source + at + word);
    for (; at + WORD < bytes; at += WORD)
        CopySixteen(target + at, source + at);
    // The rest is part of the last word, most of which is copied twice.
    CopySixteen(target + bytes - WORD, source + bytes - WORD);
}

} // namespace tiff
