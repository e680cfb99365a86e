// Memory for the plan of one page, freed all at once.
#pragma once

#include "core/win32.h"

#include <cstddef>
#include <span>

namespace tiff {

class Scratch {
public:
    Scratch() = default;
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    ~Scratch();

    // Memory aligned for any type, not cleared; null when memory is missing.
    uint8_t* Take(uint64_t bytes);
    // A span with null data when memory is missing.
    template <class T>
    std::span<T> TakeSpan(uint64_t count)
    {
        uint8_t* bytes = Take(count * sizeof(T));
        return {reinterpret_cast<T*>(bytes), bytes ? static_cast<size_t>(count) : 0};
    }
    // Frees everything taken. The newest chunk, which is the largest, is used again.
    void GiveBack();

private:
    struct Chunk;
    void Free(Chunk* chunk);

    Chunk* newest = nullptr;
    uint64_t used = 0;
};

} // namespace tiff
