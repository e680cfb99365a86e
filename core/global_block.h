// Ownership and locking of movable global memory.
#pragma once

#include "core/win32.h"

#include <cstddef>
#include <cstdint>
#include <utility>

namespace tiff {

class GlobalBlock {
public:
    GlobalBlock() = default;
    // Zero-filled. A block of no bytes would have no address, so it has at least one.
    explicit GlobalBlock(uint64_t bytes)
        : block(GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, static_cast<SIZE_T>(bytes ? bytes : 1)))
    {
    }
    // For a block whose every byte is written before anybody sees it.
    static GlobalBlock Uncleared(uint64_t bytes)
    {
        GlobalBlock made;
        made.block = GlobalAlloc(GMEM_MOVEABLE, static_cast<SIZE_T>(bytes ? bytes : 1));
        return made;
    }
    GlobalBlock(GlobalBlock&& other) noexcept : block(other.Release())
    {
    }
    GlobalBlock& operator=(GlobalBlock&& other) noexcept
    {
        if (this != &other)
            Adopt(other.Release());
        return *this;
    }
    ~GlobalBlock()
    {
        Adopt(nullptr);
    }

    explicit operator bool() const
    {
        return block != nullptr;
    }
    HGLOBAL Get() const
    {
        return block;
    }
    HGLOBAL Release()
    {
        return std::exchange(block, nullptr);
    }
    void Adopt(HGLOBAL other)
    {
        if (block)
            GlobalFree(block);
        block = other;
    }
    // For functions that hand out a block through a pointer.
    HGLOBAL* Receive()
    {
        Adopt(nullptr);
        return &block;
    }
    // Keeps the content and zero-fills the new part. A failure leaves the old block. The block must not be
    // locked.
    [[nodiscard]] bool Resize(uint64_t bytes)
    {
        HGLOBAL resized =
            GlobalReAlloc(block, static_cast<SIZE_T>(bytes ? bytes : 1), GMEM_MOVEABLE | GMEM_ZEROINIT);
        if (!resized)
            return false;
        block = resized;
        return true;
    }

private:
    HGLOBAL block = nullptr;
};

// Locks a block for a scope; false when the block is null or gone. Who would lose what lies in the block asks
// for several tries.
template <class T>
class Locked {
public:
    explicit Locked(HGLOBAL block, uint32_t tries = 1) : block(block), address(nullptr)
    {
        for (; block && !address && tries > 0; --tries)
            address = static_cast<T*>(GlobalLock(block));
    }
    Locked(const Locked&) = delete;
    Locked& operator=(const Locked&) = delete;
    ~Locked()
    {
        Unlock();
    }

    explicit operator bool() const
    {
        return address != nullptr;
    }
    T* Get() const
    {
        return address;
    }
    T* operator->() const
    {
        return address;
    }
    T& operator*() const
    {
        return *address;
    }
    T& operator[](size_t index) const
    {
        return address[index];
    }
    void Unlock()
    {
        if (std::exchange(address, nullptr))
            GlobalUnlock(block);
    }

private:
    HGLOBAL block;
    T* address;
};

} // namespace tiff
