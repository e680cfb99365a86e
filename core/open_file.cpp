// Opening, describing and closing files. Nothing is kept open on disk between calls.
#include "core/open_file.h"

#include "core/chain_walk.h"
#include "core/error_detail.h"
#include "core/errors.h"
#include "core/file_names.h"
#include "core/global_block.h"
#include "core/handles.h"
#include "core/registry.h"
#include "core/sibling_library.h"
#include "tiff/version.h"

#include <array>
#include <cstring>

namespace tiff {

static constexpr char VERSION_TEXT[] = "Version " TIFF_VERSION_TEXT;
static constexpr uint16_t TIFF_VERSION = 42;
static constexpr uint32_t LINK_BYTES = 4;
static constexpr uint32_t ON_DISK = 0xFFFFFFFF;
static constexpr uint32_t RETRY_PAUSE_MILLISECONDS = 200;

TiffStream OpenRecord(const TiffFileRecord& record)
{
    if (record.path[0])
        return OpenForReading(record.path);
    if (record.openFlags & openflag::PlainBytes)
        return OpenByteStream(record.memoryBlock, record.memoryBytes);
    return OpenMemoryStream(record.memoryBlock, record.memoryBytes);
}

static TiffStream OpenForWriting(const TiffFileRecord& record)
{
    DWORD access = GENERIC_READ, disposition = OPEN_EXISTING;
    if (record.openFlags & (openflag::OrCreate | openflag::Existing | openflag::NoHeader))
        access = GENERIC_READ | GENERIC_WRITE;
    if (record.openFlags & openflag::OrCreate)
        disposition = OPEN_ALWAYS;
    if (record.openFlags & openflag::Existing)
        disposition = OPEN_EXISTING;
    if (record.openFlags & openflag::NoHeader)
        disposition = CREATE_ALWAYS;
    FileHandle handle(record.path, access, disposition);
    return handle ? static_cast<TiffStream>(reinterpret_cast<intptr_t>(handle.Release())) : NO_STREAM;
}

// The first block of a memory file is made here, not by the first write: its owner must know it even when a
// later write fails to grow it.
static TiffStream OpenMemoryForWriting(const TiffFileRecord& record, GlobalBlock& fresh)
{
    if (!record.memoryBlock) {
        fresh = GlobalBlock(0);
        if (!fresh)
            return NO_STREAM;
    }
    const bool isNew = record.openFlags & openflag::NoHeader;
    return OpenMemoryStream(fresh ? fresh.Get() : record.memoryBlock, isNew ? 0 : record.memoryBytes);
}

static TiffStream OpenRecordForWriting(const TiffFileRecord* record, uint32_t retries, GlobalBlock& fresh)
{
    if (!record)
        return NO_STREAM;
    if (!record->path[0])
        return OpenMemoryForWriting(*record, fresh);
    TiffStream stream = OpenForWriting(*record);
    for (; stream == NO_STREAM && retries > 0; --retries) {
        Sleep(RETRY_PAUSE_MILLISECONDS);
        stream = OpenForWriting(*record);
    }
    return stream;
}

WritingStream::WritingStream(HGLOBAL file, uint32_t retries)
    : file(file), record(file), stream(OpenRecordForWriting(record.Get(), retries, fresh)),
      knowsEnd(SizeToRead(stream.Get(), end))
{
}

// Writing may have moved the block. The record takes the new handle, or the caller would be
// left holding memory that no longer exists.
WritingStream::~WritingStream()
{
    GiveBackRoom(stream.Get());
    HGLOBAL block = MemoryStreamBlock(stream.Get());
    if (fresh) {
        fresh.Release();
        fresh.Adopt(block);
        return;
    }
    if (record && block)
        record->memoryBlock = block;
}

void WritingStream::Commit()
{
    fresh.Release();
    if (MemoryStreamBlock(stream.Get()))
        record->memoryBytes = mSize(stream.Get());
}

Status WritingStream::OpenStatus() const
{
    if (stream)
        return error::None;
    const bool noMemory = record ? !record->path[0] && !record->memoryBlock && !fresh : file != nullptr;
    return noMemory ? error::NotEnoughMemory : error::InputOutput;
}

void WritingStream::TakeBack()
{
    constexpr uint32_t BEYOND_OFFSETS = UINT32_MAX; // such a file is never written to
    if (knowsEnd && end != BEYOND_OFFSETS)
        CutStream(stream.Get(), end);
}

std::array<uint8_t, 8> FileHeader(uint32_t byteOrder)
{
    std::array<uint8_t, 8> header{};
    Store16(&header[0], static_cast<uint16_t>(byteOrder), TIFF_INTEL);
    Store16(&header[2], TIFF_VERSION, byteOrder);
    return header;
}

// A file may end inside its last link. The link is completed first, because the page would lie in its place.
static Status MoveToEnd(TiffStream stream, uint32_t linkPosition)
{
    const uint32_t end = mSeek(stream, 0, 2);
    if (end == STREAM_FAILED)
        return error::InputOutput;
    if (end >= linkPosition + LINK_BYTES)
        return error::None;
    uint8_t noPage[LINK_BYTES] = {};
    const bool completed = mSeek(stream, linkPosition, 0) != STREAM_FAILED &&
                           WriteArray(stream, fieldtype::Byte, LINK_BYTES, noPage, TIFF_INTEL, 0);
    return completed ? error::None : error::InputOutput;
}

Status BeginPage(TiffStream stream, HGLOBAL file)
{
    uint32_t byteOrder, openFlags, linkPosition;
    {
        Locked<TiffFileRecord> record(file);
        if (!record)
            return error::NotEnoughMemory;
        byteOrder = record->byteOrder;
        openFlags = record->openFlags;
        linkPosition = record->linkPosition;
    }
    if (!(openFlags & openflag::NoHeader))
        return MoveToEnd(stream, linkPosition);
    auto header = FileHeader(byteOrder);
    const bool written = WriteArray(stream, fieldtype::Byte, header.size(), header.data(), TIFF_INTEL, 0);
    return written ? error::None : error::InputOutput;
}

static Status SetPath(TiffFileRecord& record, const char* path)
{
    if (strnlen(path, sizeof(record.path)) == sizeof(record.path))
        return error::PathTooLong;
    std::strcpy(record.path, path);
    return error::None;
}

// The byte-order mark and the version number.
static Status ReadHeader(DirectoryWindow& window)
{
    const uint8_t* header = Fetch(window, 0, 2);
    if (!header)
        return error::InputOutput;
    window.byteOrder = Load16(header, TIFF_INTEL);
    if (window.byteOrder != TIFF_INTEL && window.byteOrder != TIFF_MOTOROLA)
        return error::BadByteOrder;
    header = Fetch(window, 2, 2);
    if (!header)
        return error::InputOutput;
    return Load16(header, window.byteOrder) == TIFF_VERSION ? error::None : error::NotTiff;
}

static Status TakePages(TiffFileRecord* record, const ChainWalk& walk)
{
    Locked<WalkedPage> walked(walk.pages.Get());
    if (!record || (!walked && walk.pageCount > 0))
        return error::NotEnoughMemory;
    PageEntry* pages = Pages(record);
    for (uint32_t page = 0; page < walk.pageCount; ++page) {
        const WalkedPage& found = walked[page];
        pages[page] = {found.directoryOffset, found.tagBlockBytes, nullptr,
                       static_cast<uint16_t>(found.kind)};
    }
    record->pageCount = walk.pageCount;
    record->linkPosition = walk.linkPosition;
    return error::None;
}

// Reads the pages of the file that an empty record names.
static Status ReadPages(GlobalBlock& block, uint32_t openFlags, bool& broken)
{
    ChainWalk walk;
    {
        Locked<TiffFileRecord> record(block.Get());
        if (!record)
            return error::NotEnoughMemory;
        record->openFlags = openFlags;
        Stream stream(OpenRecord(*record));
        DirectoryWindow window;
        window.stream = stream.Get();
        if (const Status status = ReadHeader(window); status != error::None)
            return status;
        if (const Status status = WalkChain(window, walk); status != error::None)
            return status;
        // The next page written would cut off pages that exist but could not be read.
        if (walk.broken && window.failed && record->openFlags == openflag::Append && record->path[0])
            return error::InputOutput;
        record->byteOrder = static_cast<uint16_t>(window.byteOrder);
    }
    if (!block.Resize(FileRecordBytes(PageRoom(walk.pageCount))))
        return error::NotEnoughMemory;
    Locked<TiffFileRecord> record(block.Get());
    broken = walk.broken;
    return TakePages(record.Get(), walk);
}

// An empty record for a new file.
static GlobalBlock MakeRecord(const char* path, HGLOBAL memoryBlock, uint32_t memoryBytes, Status& status)
{
    GlobalBlock block(FileRecordBytes(PageRoom(0)));
    Locked<TiffFileRecord> record(block.Get());
    status = record ? SetPath(*record, path) : Status{error::NotEnoughMemory};
    if (status != error::None)
        return {};
    record->byteOrder = TIFF_INTEL;
    record->openFlags = openflag::New;
    record->linkPosition = FIRST_LINK;
    record->memoryBlock = memoryBlock;
    record->memoryBytes = memoryBytes;
    return block;
}

// A broken chain opens with the pages before the break, and the status says that it is broken.
static HGLOBAL OpenExisting(GlobalBlock block, uint32_t openFlags, Status& status)
{
    if (!block)
        return nullptr;
    bool broken = false;
    status = ReadPages(block, openFlags, broken);
    if (status != error::None)
        return nullptr;
    if (broken)
        status = error::InputOutput;
    return block.Release();
}

enum class Found { Nothing, Pages, Unreadable };

// A file of unknown size does not count as empty: an empty one is begun anew.
static bool IsEmpty(HANDLE file)
{
    LARGE_INTEGER size;
    return GetFileSizeEx(file, &size) && size.QuadPart == 0;
}

// A file that exists but cannot be opened is not new: the first page written would delete its pages.
static Found LookFor(const char* path)
{
    FileHandle file(path, GENERIC_READ, OPEN_EXISTING);
    if (file)
        return IsEmpty(file.Get()) ? Found::Nothing : Found::Pages;
    return AttributesOf(path) == INVALID_FILE_ATTRIBUTES ? Found::Nothing : Found::Unreadable;
}

static HGLOBAL OpenInMode(const char* path, uint32_t mode, Status& status)
{
    status = error::InvalidParameters;
    if (!path)
        return nullptr;
    const Found found = mode == T_APPEND ? LookFor(path) : Found::Pages;
    status = error::InputOutput;
    if (found == Found::Unreadable)
        return nullptr;
    if (found == Found::Nothing)
        mode = T_CREAT;
    GlobalBlock block = MakeRecord(path, nullptr, ON_DISK, status);
    switch (mode) {
    case T_READ:
        return OpenExisting(std::move(block), openflag::Read, status);
    case T_APPEND:
        return OpenExisting(std::move(block), openflag::Append, status);
    default:
        return block.Release();
    }
}

HGLOBAL OpenFile(const char* path, uint32_t mode, Status& status)
{
    ForgetFacts();
    HGLOBAL file = OpenInMode(path, mode, status);
    if (status != error::None)
        NotePath(status, path);
    return file;
}

HGLOBAL OpenBytes(const void* bytes, uint32_t size, Status& status)
{
    ForgetFacts();
    status = error::InvalidParameters;
    if (!bytes || size == 0 || size > INT32_MAX)
        return nullptr;
    GlobalBlock block = MakeRecord("", const_cast<void*>(bytes), size, status);
    return OpenExisting(std::move(block), openflag::Read | openflag::PlainBytes, status);
}

} // namespace tiff

using namespace tiff;

extern "C" HGLOBAL OpenTiffFile(const char* path, uint32_t mode) noexcept
{
    Status status;
    HGLOBAL file = OpenFile(path, mode, status);
    SetTiffError(status);
    return file;
}

extern "C" HGLOBAL OpenTiffInMemory(HGLOBAL memory, uint32_t size, uint32_t mode) noexcept
{
    Status status;
    GlobalBlock block = MakeRecord("", memory, size, status);
    // Deliberate: reading in memory always allows pages to be added. A new TIFF is made only when asked for,
    // never in place of an empty one.
    HGLOBAL file = mode == T_READ || mode == T_APPEND
                       ? OpenExisting(std::move(block), openflag::Append, status)
                       : block.Release();
    SetTiffError(status);
    return file;
}

extern "C" HGLOBAL GetMemoryTiffHandle(HGLOBAL file) noexcept
{
    // Without it the TIFF is lost: writing may have moved the block.
    Locked<TiffFileRecord> record(file, 2);
    return record ? record->memoryBlock : nullptr;
}

extern "C" int32_t CloseTiffFile(HGLOBAL file) noexcept
{
    if (!file)
        return 0;
    DropPages(file);
    GlobalFree(file);
    UnloadJpegLibrary();
    return 1;
}

extern "C" uint32_t GetNumberOfImagesInTiffFile(const char* path) noexcept
{
    HGLOBAL file = OpenTiffFile(path, T_READ);
    if (!file)
        return 0xFFFFFFFF;
    const auto pageCount = CountPages(file);
    CloseTiffFile(file);
    if (!pageCount)
        SetTiffError(error::NotEnoughMemory);
    return pageCount.value_or(0xFFFFFFFF);
}

extern "C" int32_t GetTiffFileInfo(HGLOBAL file, TiffFileInformation* info) noexcept
{
    Locked<TiffFileRecord> record(file);
    if (!record || !info) {
        SetTiffError(record ? error::InvalidParameters : error::InvalidHandle);
        return 0;
    }
    std::memcpy(info->path, record->path, sizeof(info->path));
    info->byteOrder = record->byteOrder;
    info->pageCount = record->pageCount;
    info->firstDirectoryOffset = record->pageCount ? Pages(record.Get())[0].directoryOffset : 0;
    return 1;
}

extern "C" int32_t ModiTiffFileInfo(HGLOBAL file, const char* path, uint32_t byteOrder) noexcept
{
    Locked<TiffFileRecord> record(file);
    if (!record) {
        SetTiffError(error::InvalidHandle);
        return 0;
    }
    if (path)
        if (const Status status = SetPath(*record, path); status != error::None) {
            SetTiffError(status);
            return 0;
        }
    if (byteOrder == 0)
        return 1;
    if (byteOrder != TIFF_INTEL && byteOrder != TIFF_MOTOROLA) {
        SetTiffError(error::BadByteOrder);
        return 0;
    }
    record->byteOrder = static_cast<uint16_t>(byteOrder);
    return 1;
}

extern "C" void GetTiffVersion(char* buffer, int32_t size) noexcept
{
    if (!buffer || size <= 0)
        return;
    // Deliberate: the size is used as given, so a short buffer gets no terminator.
    std::memcpy(buffer, VERSION_TEXT, std::min(static_cast<size_t>(size), sizeof(VERSION_TEXT)));
}

extern "C" uint32_t GetTiffVersionNumber(void) noexcept
{
    return TIFF_VERSION_NUMBER;
}
