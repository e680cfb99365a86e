#include "pages/foreign_values.h"

#include <algorithm>

namespace tiff {

namespace {

// Bytes of an element: SBYTE, UNDEFINED, SSHORT, SLONG, SRATIONAL, FLOAT, DOUBLE and IFD. Nothing
// can be said of others.
constexpr uint32_t FIRST_FOREIGN = 6;
constexpr uint8_t elementBytes[] = {1, 1, 2, 4, 8, 4, 8, 4};

uint32_t ForeignElementBytes(uint32_t type)
{
    const uint32_t index = type - FIRST_FOREIGN;
    return index < std::size(elementBytes) ? elementBytes[index] : 0;
}

// An entry as it stands in the file.
struct RawEntry {
    uint16_t tag, type;
    uint32_t count;
    uint64_t valueBytes;
    uint32_t valuePosition;       // in the file, of the entry's own field for values that lie in it
    std::array<uint8_t, 4> field; // what pages in memory have of few values
};

bool FetchRaw(DirectoryWindow& source, uint64_t position, RawEntry& entry)
{
    const uint8_t* raw = Fetch(source, position, ENTRY_BYTES);
    if (!raw)
        return false;
    entry.tag = Load16(raw, source.byteOrder);
    entry.type = Load16(raw + 2, source.byteOrder);
    entry.count = Load32(raw + 4, source.byteOrder);
    entry.valueBytes = uint64_t{entry.count} * ForeignElementBytes(entry.type);
    entry.valuePosition =
        entry.valueBytes > 4 ? Load32(raw + 8, source.byteOrder) : static_cast<uint32_t>(position + 8);
    std::memcpy(entry.field.data(), raw + 8, 4);
    return true;
}

// Calls back for every entry of a foreign type with values.
template <class Visit>
void ForEachForeign(DirectoryWindow& source, uint32_t directory, Visit visit)
{
    const uint8_t* counted = Fetch(source, directory, 2);
    const uint32_t entryCount = counted ? Load16(counted, source.byteOrder) : 0;
    RawEntry entry;
    for (uint32_t index = 0; index < entryCount; ++index) {
        if (!FetchRaw(source, directory + 2 + uint64_t{index} * ENTRY_BYTES, entry))
            return;
        if (entry.valueBytes > 0)
            visit(entry);
    }
}

bool ReadAt(DirectoryWindow& source, uint32_t position, std::span<uint8_t> bytes)
{
    if (mSeek(source.stream, position, 0) != STREAM_FAILED &&
        mRead(source.stream, bytes.data(), static_cast<uint32_t>(bytes.size())) == bytes.size())
        return true;
    source.failed |= IsInFile(source.stream, position, bytes.size());
    return false;
}

// The tag if it is still what was read: so many single bytes, wherever those would lie.
DirectoryTag* FindUnchanged(std::span<DirectoryTag> tags, const RawEntry& entry, std::span<uint8_t> values)
{
    const uint8_t* read = entry.count <= 4 ? entry.field.data() : values.data();
    for (DirectoryTag& tag : tags)
        if (tag.view.tag == entry.tag)
            return tag.view.type == fieldtype::Byte && tag.view.count == entry.count &&
                           std::equal(read, read + entry.count, tag.view.values.begin())
                       ? &tag
                       : nullptr;
    return nullptr;
}

} // namespace

uint64_t ForeignBytes(DirectoryWindow& source, uint32_t sourceBytes, uint32_t directory)
{
    uint64_t bytes = 0;
    ForEachForeign(source, directory, [&](const RawEntry& entry) { bytes += entry.valueBytes; });
    return bytes <= sourceBytes ? bytes : 0;
}

void RestoreForeignTypes(DirectoryWindow& source, uint32_t directory, std::span<uint8_t> room,
                         std::span<DirectoryTag> tags)
{
    ForEachForeign(source, directory, [&](const RawEntry& entry) {
        if (entry.valueBytes > room.size())
            return;
        const auto values = room.first(static_cast<size_t>(entry.valueBytes));
        DirectoryTag* tag =
            ReadAt(source, entry.valuePosition, values) ? FindUnchanged(tags, entry, values) : nullptr;
        if (!tag)
            return;
        // Values are put back in the file's order, with the elements that the writer knows.
        if (source.byteOrder == TIFF_MOTOROLA)
            SwapElements(values, entry.type);
        tag->view.type = entry.type;
        tag->view.values = values;
        tag->valueBytes = static_cast<uint32_t>(values.size());
        room = room.subspan(values.size());
    });
}

} // namespace tiff
