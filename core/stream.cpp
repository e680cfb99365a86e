#include "core/stream.h"

#include "core/error_detail.h"
#include "core/global_block.h"
#include "core/handles.h"
#include "core/thread_state.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace tiff {

static bool IsFile(TiffStream stream)
{
    return stream > 0;
}

static HANDLE FileOf(TiffStream stream)
{
    return reinterpret_cast<HANDLE>(static_cast<intptr_t>(stream));
}

static bool IsFree(const MemoryFileSlot& slot)
{
    return !slot.block && slot.size == MEMORY_FILE_FREE;
}

// The open slot behind a memory handle, or null.
static MemoryFileSlot* MemoryFile(TiffStream stream)
{
    if (stream > -FIRST_MEMORY_SLOT || stream < -LAST_MEMORY_SLOT)
        return nullptr;
    MemoryFileSlot& slot = ThreadState().memoryFiles[static_cast<size_t>(-stream)];
    return IsFree(slot) ? nullptr : &slot;
}

static TiffStream TakeSlot(HGLOBAL block, const uint8_t* bytes, uint32_t size)
{
    if (size > INT32_MAX)
        return NO_STREAM;
    auto& slots = ThreadState().memoryFiles;
    for (int32_t index = FIRST_MEMORY_SLOT; index <= LAST_MEMORY_SLOT; ++index) {
        MemoryFileSlot& slot = slots[static_cast<size_t>(index)];
        if (IsFree(slot)) {
            slot = {block, 0, static_cast<int32_t>(size), bytes};
            return -index;
        }
    }
    return NO_STREAM;
}

TiffStream OpenMemoryStream(HGLOBAL block, uint32_t size)
{
    // A size beyond the block would let reads pass its end.
    if (block && size > GlobalSize(block))
        size = static_cast<uint32_t>(GlobalSize(block));
    return TakeSlot(block, nullptr, size);
}

TiffStream OpenByteStream(const void* bytes, uint32_t size)
{
    return TakeSlot(nullptr, static_cast<const uint8_t*>(bytes), size);
}

HGLOBAL MemoryStreamBlock(TiffStream stream)
{
    const MemoryFileSlot* slot = MemoryFile(stream);
    return slot ? slot->block : nullptr;
}

TiffStream OpenDiskStream(const char* path, DWORD access, DWORD disposition)
{
    FileHandle file(path, access, disposition);
    return file ? static_cast<TiffStream>(reinterpret_cast<intptr_t>(file.Release())) : NO_STREAM;
}

static uint32_t ReadMemory(MemoryFileSlot& slot, void* buffer, uint32_t count)
{
    const auto available = static_cast<uint32_t>(slot.size - slot.position);
    const uint32_t bytes = count < available ? count : available;
    const Locked<uint8_t> block(slot.block);
    const uint8_t* file = slot.bytes ? slot.bytes : block.Get();
    if (!file)
        return STREAM_FAILED;
    std::memcpy(buffer, file + slot.position, bytes);
    slot.position += static_cast<int32_t>(bytes);
    return bytes;
}

static HGLOBAL Resized(HGLOBAL block, SIZE_T bytes)
{
    return block ? GlobalReAlloc(block, bytes, GMEM_MOVEABLE | GMEM_ZEROINIT)
                 : GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, bytes);
}

// Room grows by half, so that a file written in many parts is not copied for each part. A block that cannot
// grow stays in the slot: it holds the file as it was.
static bool MakeRoom(MemoryFileSlot& slot, SIZE_T bytes)
{
    const SIZE_T room = slot.block ? GlobalSize(slot.block) : 0;
    if (slot.block && bytes <= room)
        return true;
    const SIZE_T more = std::min<SIZE_T>(room + room / 2, INT32_MAX);
    HGLOBAL grown = bytes < more ? Resized(slot.block, more) : nullptr;
    if (!grown)
        grown = Resized(slot.block, bytes);
    if (grown)
        slot.block = grown;
    return grown != nullptr;
}

static uint32_t WriteMemory(MemoryFileSlot& slot, const void* buffer, uint32_t count)
{
    const int64_t end = int64_t{slot.position} + count;
    if (slot.bytes || end > INT32_MAX)
        return STREAM_FAILED;
    if (end > slot.size) {
        if (!MakeRoom(slot, static_cast<SIZE_T>(end)))
            return STREAM_FAILED;
        slot.size = static_cast<int32_t>(end);
    }
    Locked<uint8_t> block(slot.block);
    if (!block)
        return STREAM_FAILED;
    std::memcpy(block.Get() + slot.position, buffer, count);
    slot.position += static_cast<int32_t>(count);
    return count;
}

static uint32_t SeekFile(TiffStream stream, uint32_t offset, int32_t origin)
{
    LARGE_INTEGER distance, position;
    distance.QuadPart = offset;
    if (!SetFilePointerEx(FileOf(stream), distance, &position, static_cast<DWORD>(origin)))
        return STREAM_FAILED;
    return position.QuadPart > UINT32_MAX ? STREAM_FAILED : static_cast<uint32_t>(position.QuadPart);
}

static uint32_t SeekMemory(MemoryFileSlot& slot, uint32_t offset, int32_t origin)
{
    int64_t position = slot.position;
    if (origin == 0)
        position = offset;
    else if (origin == 1)
        position += offset;
    else if (origin == 2)
        position = int64_t{slot.size} - offset;
    if (position < 0 || position > slot.size)
        return STREAM_FAILED;
    slot.position = static_cast<int32_t>(position);
    return static_cast<uint32_t>(position);
}

void GiveBackRoom(TiffStream stream)
{
    MemoryFileSlot* slot = MemoryFile(stream);
    if (!slot || !slot->block || slot->size == 0 ||
        GlobalSize(slot->block) <= static_cast<SIZE_T>(slot->size))
        return;
    if (HGLOBAL block = Resized(slot->block, static_cast<SIZE_T>(slot->size)))
        slot->block = block;
}

bool SizeToRead(TiffStream stream, uint32_t& bytes)
{
    if (!IsFile(stream)) {
        bytes = mSize(stream);
        return bytes != STREAM_FAILED;
    }
    LARGE_INTEGER size;
    const bool known = GetFileSizeEx(FileOf(stream), &size);
    bytes = known ? static_cast<uint32_t>(std::min<int64_t>(size.QuadPart, UINT32_MAX)) : 0;
    return known;
}

bool CutStream(TiffStream stream, uint32_t bytes)
{
    if (IsFile(stream))
        return SeekFile(stream, bytes, 0) == bytes && SetEndOfFile(FileOf(stream));
    MemoryFileSlot* slot = MemoryFile(stream);
    if (!slot || bytes > static_cast<uint32_t>(slot->size))
        return false;
    slot->size = static_cast<int32_t>(bytes);
    slot->position = std::min(slot->position, slot->size);
    return true;
}

namespace {

struct Transfer {
    uint32_t bytes;
    bool refused; // by the system, which says why
};

Transfer Read(TiffStream stream, void* buffer, uint32_t count)
{
    if (IsFile(stream)) {
        DWORD transferred = 0;
        const bool done = ReadFile(FileOf(stream), buffer, count, &transferred, nullptr);
        return {done ? transferred : 0, !done};
    }
    MemoryFileSlot* slot = MemoryFile(stream);
    return {slot ? ReadMemory(*slot, buffer, count) : STREAM_FAILED, false};
}

Transfer Write(TiffStream stream, const void* buffer, uint32_t count)
{
    if (IsFile(stream)) {
        DWORD transferred = 0;
        const bool done = WriteFile(FileOf(stream), buffer, count, &transferred, nullptr);
        return {done ? transferred : 0, !done};
    }
    MemoryFileSlot* slot = MemoryFile(stream);
    return {slot ? WriteMemory(*slot, buffer, count) : STREAM_FAILED, false};
}

uint32_t Noted(const Transfer& transfer)
{
    if (transfer.refused)
        NoteSystemError(error::InputOutput, nullptr);
    return transfer.bytes;
}

} // namespace

uint32_t ReadStream(TiffStream stream, void* buffer, uint32_t count)
{
    return Noted(Read(stream, buffer, count));
}

uint32_t WriteStream(TiffStream stream, const void* buffer, uint32_t count)
{
    return Noted(Write(stream, buffer, count));
}

} // namespace tiff

using namespace tiff;

extern "C" uint32_t mRead(TiffStream stream, void* buffer, uint32_t count) noexcept
{
    return Read(stream, buffer, count).bytes;
}

extern "C" uint32_t mWrite(TiffStream stream, const void* buffer, uint32_t count) noexcept
{
    return Write(stream, buffer, count).bytes;
}

extern "C" uint32_t mSeek(TiffStream stream, uint32_t offset, int32_t origin) noexcept
{
    if (IsFile(stream))
        return SeekFile(stream, offset, origin);
    MemoryFileSlot* slot = MemoryFile(stream);
    return slot ? SeekMemory(*slot, offset, origin) : STREAM_FAILED;
}

extern "C" uint32_t mTell(TiffStream stream) noexcept
{
    return mSeek(stream, 0, 1);
}

extern "C" uint32_t mSize(TiffStream stream) noexcept
{
    if (IsFile(stream)) {
        const uint32_t position = SeekFile(stream, 0, 1);
        const uint32_t size = SeekFile(stream, 0, 2);
        if (position == STREAM_FAILED || SeekFile(stream, position, 0) == STREAM_FAILED)
            return STREAM_FAILED;
        return size;
    }
    const MemoryFileSlot* slot = MemoryFile(stream);
    return slot ? static_cast<uint32_t>(slot->size) : STREAM_FAILED;
}

extern "C" uint32_t mClose(TiffStream stream) noexcept
{
    if (IsFile(stream))
        return CloseHandle(FileOf(stream)) ? 0 : STREAM_FAILED;
    MemoryFileSlot* slot = MemoryFile(stream);
    if (!slot)
        return STREAM_FAILED;
    *slot = {nullptr, MEMORY_FILE_FREE, MEMORY_FILE_FREE};
    return 0;
}
