// A directory is put together in memory, in the file's byte order, and written in one piece.
// Then the link that leads to it is written, and that makes it a page of the file.
#include "core/directory_writer.h"

#include "core/byte_order.h"
#include "core/directory_layout.h"
#include "core/error_detail.h"
#include "core/errors.h"
#include "core/open_file.h"
#include "core/registry.h"
#include "tiff/define.h"
#include "tiff/files.h"

#include <array>
#include <span>

namespace tiff {

namespace {

Status BuildDirectory(HGLOBAL file, uint32_t page, uint32_t byteOrder, DirectoryLayout& layout,
                      GlobalBlock& bytes)
{
    const PageTags tags(file, page);
    if (!tags)
        return error::NotEnoughMemory;
    const GlobalBlock block(uint64_t{tags.Count()} * sizeof(DirectoryTag));
    Locked<DirectoryTag> first(block.Get());
    if (!first)
        return error::NotEnoughMemory;
    uint32_t position = 0, count = 0;
    while (const auto view = count < tags.Count() ? tags.Next(position) : std::nullopt)
        first[count++] = Described(*view);

    const std::span described(first.Get(), count);
    const auto laidOut = LayOutDirectory(described, layout.start, LayoutOrder::ValuesFirst);
    if (!laidOut)
        return error::InputOutput;
    layout = *laidOut;
    bytes = GlobalBlock(layout.end - layout.start);
    Locked<uint8_t> assembled(bytes.Get());
    if (!assembled)
        return error::NotEnoughMemory;
    AssembleDirectory(described, layout, byteOrder, assembled.Get());
    return error::None;
}

Status WriteBytes(TiffStream stream, HGLOBAL block, uint32_t count)
{
    Locked<uint8_t> bytes(block);
    if (!bytes)
        return error::NotEnoughMemory;
    return WriteArray(stream, fieldtype::Byte, count, bytes.Get(), TIFF_INTEL, 0) ? error::None
                                                                                  : error::InputOutput;
}

void TakeDirectory(TiffFileRecord* record, uint32_t page, const DirectoryLayout& layout)
{
    PageEntry& entry = Pages(record)[page];
    entry.directoryOffset = layout.directoryOffset;
    entry.tagBlockBytes = layout.valueBytes + layout.entryBytes;
    record->linkPosition = layout.linkPosition;
    record->openFlags = openflag::Existing;
}

} // namespace

Status PatchLink(TiffStream stream, uint32_t position, uint32_t directoryOffset, uint32_t byteOrder)
{
    std::array<uint8_t, 4> link;
    Store32(link.data(), directoryOffset, byteOrder);
    if (mSeek(stream, position, 0) == STREAM_FAILED)
        return error::InputOutput;
    return WriteArray(stream, fieldtype::Byte, 4, link.data(), TIFF_INTEL, 0) ? error::None
                                                                              : error::InputOutput;
}

// A link that was not written whole may lead anywhere, so it is restored. Returns whether that worked.
static bool RestoreLink(TiffStream stream, uint32_t position, std::span<uint8_t> before)
{
    return mSeek(stream, position, 0) != STREAM_FAILED &&
           WriteStream(stream, before.data(), static_cast<uint32_t>(before.size())) == before.size();
}

static Status SetLink(TiffStream stream, uint32_t position, uint32_t directoryOffset, uint32_t byteOrder,
                      bool& linked)
{
    std::array<uint8_t, 4> before;
    if (mSeek(stream, position, 0) == STREAM_FAILED ||
        ReadStream(stream, before.data(), before.size()) != before.size())
        return error::InputOutput;
    const Status status = PatchLink(stream, position, directoryOffset, byteOrder);
    linked = status == error::None || !RestoreLink(stream, position, before);
    return status;
}

Status WriteDirectory(TiffStream stream, HGLOBAL file, uint32_t page, bool& linked)
{
    linked = false;
    // Locked to the end: a page that is linked must be able to be entered.
    const Locked<TiffFileRecord> record(file);
    if (!record)
        return error::NotEnoughMemory;
    const uint32_t byteOrder = record->byteOrder, linkPosition = record->linkPosition;
    DirectoryLayout layout{.start = mSeek(stream, 0, 2)};
    if (layout.start == STREAM_FAILED)
        return error::InputOutput;
    GlobalBlock bytes;
    if (const Status status = BuildDirectory(file, page, byteOrder, layout, bytes); status != error::None)
        return status;
    if (const Status status = WriteBytes(stream, bytes.Get(), layout.end - layout.start);
        status != error::None)
        return status;
    // The link goes last. Until it is written the new page is only unreferenced bytes, and the
    // file reads as it did before.
    if (const Status status = SetLink(stream, linkPosition, layout.directoryOffset, byteOrder, linked);
        status != error::None)
        return status;
    TakeDirectory(record.Get(), page, layout);
    return error::None;
}

} // namespace tiff

using namespace tiff;

extern "C" uint32_t WriteTiffImageDirectory(HGLOBAL file, uint32_t page) noexcept
{
    // Opening may empty the file, so a page that is not loaded is refused first.
    if (!IsTiffImageRegistered(file, page))
        return error::NotEnoughMemory;
    ForgetFacts();
    WritingStream stream(file);
    if (!stream)
        return Fail(stream.OpenStatus());
    bool linked = false;
    Status status = BeginPage(stream.Get(), file);
    if (status == error::None)
        status = WriteDirectory(stream.Get(), file, page, linked);
    if (status == error::None)
        stream.Commit();
    else if (!linked)
        stream.TakeBack();
    NotePage(status, file, page);
    return Fail(status);
}
