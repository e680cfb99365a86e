// Loads a page's directory: every value is fetched once, put into the processor's order and never read from
// the file again.
#include "core/directory_reader.h"

#include "core/error_detail.h"
#include "core/errors.h"
#include "core/open_file.h"
#include "core/registry.h"
#include "tiff/directory.h"

#include <algorithm>
#include <iterator>

namespace tiff {

namespace {

constexpr uint16_t requiredTags[] = {
    tag::NewSubfileType,      tag::ImageWidth,      tag::ImageLength,
    tag::BitsPerSample,       tag::Compression,     tag::PhotometricInterpretation,
    tag::StripOffsets,        tag::SamplesPerPixel, tag::RowsPerStrip,
    tag::StripByteCounts,     tag::XResolution,     tag::YResolution,
    tag::PlanarConfiguration, tag::ResolutionUnit,  tag::ColorMap,
    tag::TileWidth,           tag::TileLength,      tag::TileOffsets,
    tag::TileByteCounts,      tag::JpegProc,        tag::JpegQTables,
    tag::JpegDcTables,        tag::JpegAcTables,    tag::ReferenceBlackWhite,
};
static_assert(std::size(requiredTags) == 24);

// Outside values that together need more than this are not in the file, whatever the directory says: a file
// must not choose how much memory we take. A file that was merely cut short keeps all its entries.
constexpr uint64_t VALUE_SLACK = 65536;

struct DirectoryLoad {
    DirectoryWindow& window;
    uint64_t directory;
    uint32_t entryCount;
    uint64_t valueBudget;
    bool whole;
};

enum class Value { Here, Elsewhere, Impossible };

// Takes an entry's value bytes off the budget. An impossible value becomes a single zero.
Value Admit(DirectoryLoad& load, DirectoryEntry& entry)
{
    if (!entry.elsewhere)
        return Value::Here;
    if (entry.valueBytes <= load.valueBudget) {
        load.valueBudget -= entry.valueBytes;
        return Value::Elsewhere;
    }
    entry.count = 1;
    entry.valueBytes = std::max(4u, ElementBytes(entry.type));
    return Value::Impossible;
}

// The bytes of all records of the directory. An entry that cannot be read ends it.
uint64_t MeasureRecords(DirectoryLoad load)
{
    uint64_t bytes = 0;
    DirectoryEntry entry;
    for (uint32_t index = 0; index < load.entryCount && FetchEntry(load.window, load.directory, index, entry);
         ++index) {
        Admit(load, entry);
        bytes += sizeof(TagRecord) + KeptBytes(entry);
    }
    return bytes;
}

// A failed call is not damage: the value is there, and the page without it would be another picture.
bool NoteFailure(const DirectoryLoad& load, const DirectoryEntry& entry)
{
    load.window.failed |= IsInFile(load.window.stream, entry.Field(), entry.valueBytes);
    NoteTag(error::InputOutput, entry.tag);
    return false;
}

// False when the page cannot do without the value, or its place in the file cannot be reached.
bool ReadValue(DirectoryLoad& load, const DirectoryEntry& entry, Value value, uint8_t* target)
{
    if (value == Value::Here) {
        std::memcpy(target, entry.field.data(), entry.field.size());
        return true;
    }
    if (value == Value::Elsewhere) {
        const TiffStream stream = load.window.stream;
        if (mSeek(stream, entry.Field(), 0) == STREAM_FAILED)
            return NoteFailure(load, entry);
        if (ReadArray(stream, entry.type, entry.count, target, load.window.byteOrder, 0))
            return true;
        if (IsRequiredTag(entry.tag))
            return NoteFailure(load, entry);
        load.whole &= !IsInFile(stream, entry.Field(), entry.valueBytes);
    }
    return !IsRequiredTag(entry.tag);
}

// Fills the block as far as the directory can be read; error 6 when a part is missing. Entries that were not
// measured have no room: the file may have changed since, or may be readable now.
void ReadRecords(DirectoryLoad& load, TagBlock* block)
{
    auto* target = reinterpret_cast<uint8_t*>(block + 1);
    for (uint32_t index = 0; index < load.entryCount; ++index) {
        DirectoryEntry entry;
        bool readable = FetchEntry(load.window, load.directory, index, entry);
        if (readable) {
            const Value value = Admit(load, entry);
            const TagRecord record = {static_cast<uint32_t>(sizeof(TagRecord) + KeptBytes(entry)), entry.tag,
                                      entry.type, entry.count};
            readable = record.length <= block->capacity - block->used;
            if (readable) {
                std::memcpy(target, &record, sizeof(record));
                readable = ReadValue(load, entry, value, target + sizeof(record));
            }
            if (readable) {
                target += record.length;
                block->used += record.length;
                ++block->tagCount;
            }
        }
        if (!readable) {
            load.whole = false;
            return;
        }
    }
}

// The page's tags in a block of their own: of a damaged directory those that are left.
Status ReadTags(DirectoryWindow& window, uint32_t fileBytes, uint32_t directory, bool& whole,
                GlobalBlock& block)
{
    DirectoryLoad load{window, directory, 0, 0, true};
    const uint8_t* counted = Fetch(window, directory, 2);
    if (!counted)
        return error::InputOutput;
    load.entryCount = Load16(counted, window.byteOrder);
    load.valueBudget = uint64_t{fileBytes} * 2 + VALUE_SLACK;

    const uint64_t recordBytes = MeasureRecords(load);
    block = GlobalBlock(recordBytes > UINT32_MAX ? UINT64_MAX : sizeof(TagBlock) + recordBytes + 1);
    Locked<TagBlock> tags(block.Get());
    if (!tags)
        return error::NotEnoughMemory;
    tags->capacity = static_cast<uint32_t>(recordBytes + 1);
    ReadRecords(load, tags.Get());
    whole = load.whole;
    return tags->tagCount > 0 && !window.failed ? error::None : error::InputOutput;
}

} // namespace

static Status LoadTagsThrough(HGLOBAL file, uint32_t page, DirectoryWindow& window, uint32_t fileBytes,
                              bool& whole)
{
    whole = true;
    if (const Status status = PageStatus(file, page); status != error::NotRegistered)
        return status;
    const auto entry = FindPage(file, page);
    if (!entry)
        return error::NotEnoughMemory;
    if (entry->directoryOffset == 0)
        return error::InputOutput; // a page that was never written
    GlobalBlock block;
    const Status status = ReadTags(window, fileBytes, entry->directoryOffset, whole, block);
    if (status == error::None) {
        if (!RegisterPage(file, page, block.Get()))
            return error::NotEnoughMemory;
        block.Release();
    }
    return status;
}

Status LoadTags(HGLOBAL file, uint32_t page, DirectoryWindow& window, uint32_t fileBytes, bool& whole)
{
    ForgetFacts();
    const Status status = LoadTagsThrough(file, page, window, fileBytes, whole);
    NotePage(status, file, page);
    return status;
}

static Status OpenAndLoadTags(HGLOBAL file, uint32_t page)
{
    if (const Status status = PageStatus(file, page); status != error::NotRegistered)
        return status;
    Locked<TiffFileRecord> record(file);
    if (!record)
        return error::NotEnoughMemory;
    Stream stream(OpenRecord(*record));
    DirectoryWindow window;
    window.stream = stream.Get();
    window.byteOrder = record->byteOrder;
    record.Unlock();
    uint32_t fileBytes;
    bool whole;
    return SizeToRead(stream.Get(), fileBytes) ? LoadTagsThrough(file, page, window, fileBytes, whole)
                                               : Status{error::InputOutput};
}

Status LoadTags(HGLOBAL file, uint32_t page)
{
    ForgetFacts();
    const Status status = OpenAndLoadTags(file, page);
    NotePage(status, file, page);
    return status;
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t IsRequiredTag(uint32_t tag) noexcept
{
    return std::find(std::begin(requiredTags), std::end(requiredTags), tag) != std::end(requiredTags);
}

extern "C" int32_t GetTiffImage(HGLOBAL file, uint32_t page) noexcept
{
    if (!file || IsRegistered(file, page))
        return file != nullptr;
    const Status status = LoadTags(file, page);
    SetTiffError(status);
    return status == error::None;
}
