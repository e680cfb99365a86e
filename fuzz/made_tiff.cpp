#include "made_tiff.h"

namespace fuzz {

namespace {

enum : uint32_t { SHORT = 3, LONG = 4, RATIONAL = 5 };

struct Entry {
    uint32_t tag, type, count, value;
};

class Maker {
public:
    explicit Maker(bool motorola) : motorola(motorola)
    {
        file.assign(2, motorola ? uint8_t{'M'} : uint8_t{'I'});
        Put(42, 2);
        Put(0, 4);
    }
    void Put(uint32_t number, uint32_t bytes)
    {
        for (uint32_t at = 0; at < bytes; ++at)
            file.push_back(static_cast<uint8_t>(number >> 8 * (motorola ? bytes - 1 - at : at)));
    }
    uint32_t Place(Input content)
    {
        const auto at = static_cast<uint32_t>(file.size());
        file.insert(file.end(), content.begin(), content.end());
        file.resize((file.size() + 1) / 2 * 2);
        return at;
    }
    // Values of one field, of which up to four bytes stand in the entry.
    Entry Field(uint32_t tag, uint32_t type, std::span<const uint32_t> values)
    {
        const uint32_t bytes = type == SHORT ? 2 : 4;
        Entry entry = {tag, type, static_cast<uint32_t>(values.size()), 0};
        if (type == RATIONAL)
            entry.count /= 2;
        if (values.size() * bytes > 4) {
            entry.value = static_cast<uint32_t>(file.size());
            for (const uint32_t value : values)
                Put(value, bytes);
            file.resize((file.size() + 1) / 2 * 2);
            return entry;
        }
        for (size_t at = values.size(); at-- > 0;)
            entry.value |= values[at] << 8 * bytes * (motorola ? values.size() - 1 - at : at) % 32;
        if (motorola && bytes == 2 && values.size() == 1)
            entry.value <<= 16;
        return entry;
    }
    void PutDirectory(std::vector<Entry> entries)
    {
        std::ranges::stable_sort(entries, {}, &Entry::tag);
        const auto at = static_cast<uint32_t>(file.size());
        for (uint32_t byte = 0; byte < 4; ++byte)
            file[link + byte] = static_cast<uint8_t>(at >> 8 * (motorola ? 3 - byte : byte));
        Put(static_cast<uint32_t>(entries.size()), 2);
        for (const Entry& entry : entries) {
            Put(entry.tag, 2);
            Put(entry.type, 2);
            Put(entry.count, 4);
            Put(entry.value, 4);
        }
        link = file.size();
        Put(0, 4);
    }

    Bytes file;

private:
    const bool motorola;
    size_t link = 4;
};

struct Kind {
    uint32_t compression, bits, samples, photometric, options, predictor;
};

// Kinds of which any bytes mean the same to every reader of TIFF files, then others. Facsimile codes are none
// of the first: what a code means that no encoder writes is a matter of opinion.
constexpr uint32_t SOUND_KINDS = 10;
constexpr Kind kinds[] = {
    {1, 1, 1, 0, 0, 1},     {1, 4, 1, 1, 0, 1}, {1, 8, 1, 1, 0, 1},     {1, 8, 3, 2, 0, 1},
    {5, 1, 1, 0, 0, 1},     {5, 4, 1, 1, 0, 1}, {5, 8, 1, 1, 0, 2},     {5, 8, 3, 2, 0, 2},
    {5, 8, 1, 1, 0, 1},     {5, 8, 3, 2, 0, 1}, {32773, 1, 1, 0, 0, 1}, {32773, 8, 1, 1, 0, 1},
    {32773, 8, 3, 2, 0, 1}, {2, 1, 1, 0, 0, 1}, {4, 1, 1, 0, 0, 1},     {4, 1, 1, 1, 0, 1},
    {3, 1, 1, 0, 0, 1},     {3, 1, 1, 0, 1, 1}, {3, 1, 1, 0, 4, 1},     {3, 1, 1, 1, 5, 1},
    {1, 16, 1, 1, 0, 1},    {1, 8, 4, 5, 0, 1}, {1, 8, 1, 3, 0, 1},     {1, 8, 3, 6, 0, 1},
    {5, 16, 1, 1, 0, 2},    {7, 8, 1, 1, 0, 1}, {7, 8, 3, 6, 0, 1},     {6, 8, 3, 6, 0, 1},
    {32771, 1, 1, 0, 0, 1}, {4, 8, 1, 1, 2, 1}, {99, 1, 1, 0, 0, 1},    {32773, 16, 4, 5, 9, 3},
};

// Tags that the library reads or follows, and some that it does not.
constexpr uint16_t someTags[] = {254, 256, 257, 258, 259, 262, 266, 273,  274,   277,   278,   279,
                                 282, 283, 284, 292, 296, 297, 306, 317,  320,   322,   323,   324,
                                 325, 326, 330, 333, 347, 512, 513, 519,  520,   521,   529,   530,
                                 532, 270, 305, 315, 700, 998, 999, 1000, 34665, 34853, 40965, 65535};

Entry AnyEntry(Choices& choices, Maker& maker)
{
    const uint32_t tag = choices.Below(4) ? choices.OneOf(someTags) : choices.Number(2);
    const uint32_t type = choices.Below(15), size = choices.Byte();
    const uint32_t count = size >= 0xF0 ? choices.Number(4) : size % 16;
    uint32_t value = choices.Number(4);
    if (size & 16)
        value = maker.Place(choices.Take(size % 64));
    else if (size & 32)
        value %= static_cast<uint32_t>(maker.file.size()) + 64;
    return {tag, type, count, value};
}

// Of a tag that says nothing about the picture.
Entry ReadableEntry(Choices& choices, Maker& maker)
{
    static constexpr uint32_t tags[] = {254, 270, 282, 283, 296, 297, 305, 306, 315, 700, 999, 32000, 65535};
    // Values of other types are kept, but what is told of them is not them.
    static constexpr uint32_t sizes[] = {1, 1, 2, 4, 8, 1, 1};
    const uint32_t tag = choices.OneOf(tags), type = choices.Below(7), count = 1 + choices.Below(20);
    Bytes values(count * sizes[type]);
    std::ranges::copy(choices.Take(values.size()), values.begin());
    Entry entry = {tag, type + 1, count, 0};
    if (values.size() > 4)
        entry.value = maker.Place(values);
    else
        entry.value = choices.Number(4);
    return entry;
}

void MakePage(Choices& choices, Pages pages, Maker& maker)
{
    static constexpr uint32_t widths[] = {1, 2, 7, 8, 9, 16, 24, 31, 33, 64, 100, 200, 300};
    const Kind& kind = kinds[choices.Below(pages == Pages::Sound ? SOUND_KINDS : uint32_t{std::size(kinds)})];
    const uint32_t width = choices.OneOf(widths), rows = 1 + choices.Below(40), form = choices.Byte();
    const uint32_t strips = 1 + form % 3, rowsPerStrip = (rows + strips - 1) / strips;
    std::vector<uint32_t> offsets, counts;
    for (uint32_t row = 0; row < rows; row += rowsPerStrip) {
        const Input code = choices.Take(choices.Byte() * (form & 4 ? 16u : 1u));
        offsets.push_back(maker.Place(code));
        counts.push_back(static_cast<uint32_t>(code.size()));
    }
    const std::vector<uint32_t> bits(kind.samples, kind.bits), range = {0, 1, 255, 1};
    std::vector<Entry> entries;
    const auto add = [&](uint32_t tag, uint32_t type, std::vector<uint32_t> values) {
        entries.push_back(maker.Field(tag, type, values));
    };
    add(256, form & 8 ? SHORT : LONG, {width});
    add(257, LONG, {rows});
    add(258, SHORT, bits);
    add(259, SHORT, {kind.compression});
    add(262, SHORT, {kind.photometric});
    add(266, SHORT, {form & 16 ? 2u : 1u});
    add(273, form & 32 ? SHORT : LONG, offsets);
    add(277, SHORT, {kind.samples});
    add(278, LONG, {rowsPerStrip});
    add(279, form & 64 ? SHORT : LONG, counts);
    add(284, SHORT, {1});
    if (kind.compression == 3)
        add(292, LONG, {kind.options});
    if (kind.predictor != 1)
        add(317, SHORT, {kind.predictor});
    if (form & 128)
        add(282, RATIONAL, {204, 1});
    for (uint32_t more = pages == Pages::Sound ? 0 : choices.Below(6); more > 0; --more) {
        const Entry entry = pages == Pages::Any ? AnyEntry(choices, maker) : ReadableEntry(choices, maker);
        // In place of one that is there, beside it, or new.
        const auto same = std::ranges::find(entries, entry.tag, &Entry::tag);
        if (same != entries.end() && (pages == Pages::Readable || entry.count % 4 != 3))
            *same = entry;
        else
            entries.push_back(entry);
    }
    if (pages == Pages::Any && form == 0x55)
        entries.erase(entries.begin() + choices.Below(10));
    maker.PutDirectory(entries);
}

} // namespace

Bytes MakeTiff(Choices& choices, Pages pages)
{
    const uint8_t head = choices.Byte();
    Maker maker(head & 1);
    const uint32_t count = 1 + (head >> 1) % 3;
    for (uint32_t page = 0; page < count; ++page)
        MakePage(choices, pages, maker);
    return maker.file;
}

Bytes TiffOf(Choices& choices)
{
    if (choices.left.empty() || choices.left[0] == 'I' || choices.left[0] == 'M')
        return {choices.left.begin(), choices.left.end()};
    return MakeTiff(choices, Pages::Any);
}

PageTags TagsOf(HGLOBAL file, uint32_t page)
{
    // What copying moves: strips, tiles, tables and directories.
    static constexpr uint32_t places[] = {273, 279, 324, 325, 288,   289,   330,  513,
                                          514, 519, 520, 521, 34665, 34853, 40965};
    PageTags tags;
    HGLOBAL list = nullptr;
    uint32_t count = 0;
    if (!GetTiffImageInfoBuffer(file, page, 0, &list, nullptr, &count))
        return tags;
    const Bytes numbers = TakeBlock(list);
    for (uint32_t index = 0; index < count; ++index) {
        uint32_t tag = 0, type = 0, values = 0;
        std::memcpy(&tag, &numbers[index * 4], 4);
        HGLOBAL block = nullptr;
        // Tag 0 would ask for the list once more.
        if (tag != 0 && std::ranges::find(places, tag) == std::end(places) &&
            GetTiffImageInfoBuffer(file, page, tag, &block, &type, &values)) {
            static constexpr uint8_t sizes[] = {1, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
            Bytes content = TakeBlock(block);
            content.resize(
                std::min<uint64_t>(content.size(), uint64_t{values} * (type < 13 ? sizes[type] : 1)));
            // A copied value of a type that nobody knows is UNDEFINED.
            content.push_back(static_cast<uint8_t>(type == 0 || type > 12 ? 7 : type));
            tags.emplace_back(tag, content);
        }
    }
    return tags;
}

bool SameTags(const std::vector<PageTags>& one, const std::vector<PageTags>& other)
{
    if (one == other)
        return true;
    std::fprintf(stderr, "%zu pages, %zu pages\n", one.size(), other.size());
    const PageTags none;
    for (size_t page = 0; page < std::max(one.size(), other.size()); ++page)
        for (const PageTags* pages[] = {page < one.size() ? &one[page] : &none,
                                        page < other.size() ? &other[page] : &none};
             const auto& side : {0, 1})
            for (const auto& [tag, values] : *pages[side])
                if (std::ranges::find(*pages[1 - side], std::pair(tag, values)) == pages[1 - side]->end()) {
                    std::fprintf(stderr, "page %zu, only %s: %u =", page, side ? "after" : "before", tag);
                    for (const uint8_t byte : values)
                        std::fprintf(stderr, " %02x", byte);
                    std::fprintf(stderr, "\n");
                }
    return false;
}

} // namespace fuzz
