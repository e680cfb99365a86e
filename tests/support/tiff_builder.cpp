#include "support/tiff_builder.h"

#include <algorithm>
#include <cstddef>
#include <utility>

TiffPage& TiffPage::Entry(uint16_t tag, uint16_t type, uint32_t count, std::vector<uint32_t> values)
{
    std::erase_if(entries, [tag](const TiffEntry& entry) { return entry.tag == tag; });
    entries.push_back({tag, type, count, std::move(values)});
    return *this;
}

TiffPage& TiffPage::Short(uint16_t tag, std::vector<uint32_t> values)
{
    const auto count = static_cast<uint32_t>(values.size());
    return Entry(tag, 3, count, std::move(values));
}

TiffPage& TiffPage::Long(uint16_t tag, std::vector<uint32_t> values)
{
    const auto count = static_cast<uint32_t>(values.size());
    return Entry(tag, 4, count, std::move(values));
}

TiffPage& TiffPage::Rational(uint16_t tag, uint32_t numerator, uint32_t denominator)
{
    return Entry(tag, 5, 1, {numerator, denominator});
}

TiffPage& TiffPage::Ascii(uint16_t tag, std::string_view text)
{
    std::vector<uint32_t> values(text.begin(), text.end());
    values.push_back(0);
    const auto count = static_cast<uint32_t>(values.size());
    return Entry(tag, 2, count, std::move(values));
}

TiffPage& TiffPage::Strips(std::vector<Bytes> data)
{
    strips = std::move(data);
    return *this;
}

TiffPage& TiffPage::Data(uint16_t offsetTag, uint16_t lengthTag, std::vector<Bytes> data)
{
    otherData.push_back({offsetTag, lengthTag, std::move(data)});
    return *this;
}

TiffPage& TiffPage::Directories(uint16_t tag, std::vector<TiffPage> pages, uint16_t type)
{
    subDirectories.push_back({tag, type, std::move(pages)});
    return *this;
}

TiffPage& TiffPage::StoredOrder(std::vector<size_t> wanted)
{
    order = std::move(wanted);
    return *this;
}

TiffPage& TiffPage::ShortOffsets()
{
    offsetType = 3;
    return *this;
}

TiffPage TiffPage::Picture(uint32_t width, uint32_t length, uint32_t bits, uint32_t compression,
                           uint32_t photometric)
{
    TiffPage page;
    page.Short(256, {width}).Short(257, {length}).Short(258, {bits}).Short(259, {compression});
    page.Short(262, {photometric});
    return page;
}

TiffBuilder& TiffBuilder::Add(TiffPage page)
{
    pages.push_back(std::move(page));
    return *this;
}

void TiffBuilder::Put16(uint32_t value)
{
    const auto low = static_cast<uint8_t>(value), high = static_cast<uint8_t>(value >> 8);
    file.push_back(byteOrder == TIFF_MOTOROLA ? high : low);
    file.push_back(byteOrder == TIFF_MOTOROLA ? low : high);
}

void TiffBuilder::Put32(uint32_t value)
{
    Put16(byteOrder == TIFF_MOTOROLA ? value >> 16 : value & 0xFFFF);
    Put16(byteOrder == TIFF_MOTOROLA ? value & 0xFFFF : value >> 16);
}

void TiffBuilder::Patch32(size_t at, uint32_t value)
{
    Bytes tail(file.begin() + static_cast<std::ptrdiff_t>(at) + 4, file.end());
    file.resize(at);
    Put32(value);
    file.insert(file.end(), tail.begin(), tail.end());
}

void TiffBuilder::PutValues(const TiffEntry& entry)
{
    for (const uint32_t value : entry.values)
        if (entry.type == 3)
            Put16(value);
        else if (entry.type == 4 || entry.type == 5 || entry.type == 13)
            Put32(value);
        else
            file.push_back(static_cast<uint8_t>(value));
}

void TiffBuilder::PutData(TiffPage& page)
{
    std::vector<uint32_t> offsets(page.strips.size()), counts(page.strips.size());
    for (size_t index = 0; index < page.strips.size(); ++index) {
        const size_t strip = page.order.empty() ? index : page.order[index];
        offsets[strip] = static_cast<uint32_t>(file.size());
        counts[strip] = static_cast<uint32_t>(page.strips[strip].size());
        file.insert(file.end(), page.strips[strip].begin(), page.strips[strip].end());
    }
    if (!page.strips.empty()) {
        const auto count = static_cast<uint32_t>(offsets.size());
        page.Entry(273, page.offsetType, count, offsets).Long(279, counts);
    }
    for (const TiffPage::DataTag& other : page.otherData) {
        std::vector<uint32_t> at, lengths;
        for (const Bytes& data : other.data) {
            at.push_back(static_cast<uint32_t>(file.size()));
            lengths.push_back(static_cast<uint32_t>(data.size()));
            file.insert(file.end(), data.begin(), data.end());
        }
        page.Long(other.offsets, at);
        if (other.lengths)
            page.Long(other.lengths, lengths);
    }
    for (TiffPage::DirectoryTag& sub : page.subDirectories) {
        std::vector<uint32_t> at;
        for (TiffPage& directory : sub.pages) {
            at.push_back(PutPage(directory));
            subDirectories.push_back(at.back());
            subLinks.push_back(static_cast<uint32_t>(file.size() - 4));
        }
        page.Entry(sub.tag, sub.type, static_cast<uint32_t>(at.size()), at);
    }
}

// Returns the offset of the directory; the link behind it is written last.
uint32_t TiffBuilder::PutPage(TiffPage& page)
{
    PutData(page);
    std::stable_sort(page.entries.begin(), page.entries.end(),
                     [](const TiffEntry& left, const TiffEntry& right) { return left.tag < right.tag; });

    std::vector<uint32_t> valueAt;
    for (const TiffEntry& entry : page.entries) {
        if (file.size() % 2)
            file.push_back(0);
        valueAt.push_back(static_cast<uint32_t>(file.size()));
        const uint32_t elementBytes = entry.type == 3                                          ? 2
                                      : entry.type == 4 || entry.type == 5 || entry.type == 13 ? 4
                                                                                               : 1;
        if (entry.values.size() * elementBytes > 4)
            PutValues(entry);
    }
    if (file.size() % 2)
        file.push_back(0);
    const auto directory = static_cast<uint32_t>(file.size());
    Put16(static_cast<uint32_t>(page.entries.size()));
    for (size_t index = 0; index < page.entries.size(); ++index) {
        const TiffEntry& entry = page.entries[index];
        Put16(entry.tag);
        Put16(entry.type);
        Put32(entry.count);
        const size_t field = file.size();
        if (valueAt[index] != (index + 1 < valueAt.size() ? valueAt[index + 1] : directory))
            Put32(valueAt[index]);
        else
            PutValues(entry);
        file.resize(field + 4);
    }
    Put32(0);
    return directory;
}

Bytes TiffBuilder::Build()
{
    file = {static_cast<uint8_t>(byteOrder), static_cast<uint8_t>(byteOrder)};
    directories.clear();
    links.clear();
    Put16(42);
    Put32(0);
    size_t linkAt = 4;
    for (TiffPage& page : pages) {
        directories.push_back(PutPage(page));
        links.push_back(static_cast<uint32_t>(file.size() - 4));
        Patch32(linkAt, directories.back());
        linkAt = links.back();
    }
    return file;
}
