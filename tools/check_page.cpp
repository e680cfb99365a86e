#include "check_page.h"

#include "fax_quality.h"
#include "source.h"
#include "tag_values.h"

#include <algorithm>
#include <array>
#include <map>

namespace tifftool {

namespace {

constexpr uint32_t ROWS_PER_STRIP = 278, STRIP_BYTE_COUNTS = 279, TILE_LENGTH = 323, TILE_OFFSETS = 324,
                   TILE_BYTE_COUNTS = 325, COLOR_MAP = 320;
constexpr uint32_t PALETTE = 3, JPEG = 7, OLD_JPEG = 6;
constexpr uint32_t ASCII = 2;

// Tags of which a page has one value.
constexpr uint32_t singleTags[] = {254, 256, 257, 259, 262, 266, 274, 277, 278,
                                   282, 283, 284, 292, 293, 296, 317, 322, 323};

struct Checker {
    RawFile& raw;
    const Directory& directory;
    PageVerdict& verdict;
    uint64_t fileSize;
    std::map<uint32_t, const DirectoryEntry*> byTag;

    void Wrong(const std::string& sentence)
    {
        verdict.wrong.push_back(sentence);
    }
    bool Has(uint32_t tag) const
    {
        return byTag.contains(tag);
    }
    std::vector<uint32_t> Numbers(uint32_t tag) const
    {
        return Has(tag) ? ReadNumbers(raw, *byTag.at(tag)) : std::vector<uint32_t>();
    }
    uint32_t Number(uint32_t tag, uint32_t missing) const
    {
        const std::vector<uint32_t> numbers = Numbers(tag);
        return numbers.empty() ? missing : numbers[0];
    }
};

std::string Named(uint32_t tag)
{
    const std::string name = TagName(tag), number = std::to_string(tag);
    return name == "tag " + number ? name : name + " (tag " + number + ")";
}

void CheckEntries(Checker& check)
{
    const Directory& directory = check.directory;
    uint32_t before = 0;
    bool unsorted = false;
    for (const DirectoryEntry& entry : directory.entries) {
        const std::string name = Named(entry.tag);
        if (!check.byTag.emplace(entry.tag, &entry).second) {
            check.Wrong(name + " is there twice; the first one counts");
        } else if (entry.tag < before) {
            unsorted = true;
        }
        before = entry.tag;
        const Extent values = ValuesOf(entry);
        if (KnownElementBytes(entry.type) == 0) {
            check.Wrong(name + " has values of type " + std::to_string(entry.type) +
                        ", which does not exist");
        } else if (values.at + values.bytes > check.fileSize) {
            check.Wrong(name + " has its values outside the file: they would end at " +
                        std::to_string(values.at + values.bytes));
        }
    }
    if (unsorted) {
        check.Wrong("the tags are not in ascending order");
    }
    if (directory.entries.size() < directory.claimedEntries) {
        check.Wrong("the directory is cut off: " + std::to_string(directory.entries.size()) + " of " +
                    Counted(directory.claimedEntries, "tag") + " are in the file");
    } else if (!directory.hasLink) {
        check.Wrong("the link to the next page is cut off");
    }
}

void CheckCounts(Checker& check)
{
    for (const uint32_t tag : singleTags) {
        if (check.Has(tag) && check.byTag[tag]->count != 1) {
            check.Wrong(Named(tag) + " has " + Counted(check.byTag[tag]->count, "value") + " instead of 1");
        }
    }
    const uint32_t samples = check.Number(tag::SamplesPerPixel, 1);
    if (check.Has(tag::BitsPerSample)) {
        const uint32_t count = check.byTag[tag::BitsPerSample]->count;
        if (count == 0 || (count > 1 && count < samples)) {
            check.Wrong("BitsPerSample has " + Counted(count, "value") + " for " +
                        Counted(samples, "sample"));
        }
    }
    const uint32_t bits = check.Number(tag::BitsPerSample, 1);
    if (check.Has(COLOR_MAP) && bits <= 16 && check.byTag[COLOR_MAP]->count != 3u << bits) {
        check.Wrong("ColorMap has " + Counted(check.byTag[COLOR_MAP]->count, "value") + " instead of " +
                    std::to_string(3u << bits));
    } else if (!check.Has(COLOR_MAP) && check.Number(tag::PhotometricInterpretation, 0) == PALETTE) {
        (bits < 8 ? check.verdict.wrong : check.verdict.notes)
            .push_back("a page with a palette has no ColorMap");
    }
}

void CheckValues(Checker& check)
{
    for (const uint32_t tag : {tag::ImageWidth, tag::ImageLength}) {
        if (!check.Has(tag)) {
            check.Wrong(Named(tag) + " is missing");
        } else if (check.Number(tag, 0) == 0) {
            check.Wrong(Named(tag) + " is 0 or no number");
        }
    }
    if (check.Has(ROWS_PER_STRIP) && check.Number(ROWS_PER_STRIP, 0) == 0) {
        check.Wrong("RowsPerStrip is 0");
    }
    if (const uint32_t order = check.Number(tag::FillOrder, 1); order != 1 && order != 2) {
        check.Wrong("FillOrder is " + std::to_string(order) + "; there are 1 and 2");
    }
    if (!check.Has(tag::PhotometricInterpretation)) {
        check.verdict.notes.push_back("PhotometricInterpretation is missing; white is taken to be zero");
    }
}

uint64_t Rounded(uint64_t length, uint64_t part)
{
    return part == 0 ? 0 : (length + part - 1) / part;
}

// Strips, or tiles.
struct Parts {
    const char* noun;
    uint32_t offsetsTag, countsTag;
    uint64_t wanted;
};

Parts PartsOfPage(const Checker& check)
{
    const uint64_t width = check.Number(tag::ImageWidth, 0), length = check.Number(tag::ImageLength, 0);
    const uint64_t planes =
        check.Number(tag::PlanarConfiguration, 1) == 2 ? check.Number(tag::SamplesPerPixel, 1) : 1;
    if (check.Has(tag::TileWidth)) {
        const bool old = !check.Has(TILE_OFFSETS);
        return {"tile", old ? tag::StripOffsets : TILE_OFFSETS, old ? STRIP_BYTE_COUNTS : TILE_BYTE_COUNTS,
                Rounded(width, check.Number(tag::TileWidth, 0)) *
                    Rounded(length, check.Number(TILE_LENGTH, 0)) * planes};
    }
    const uint64_t rows =
        std::min<uint64_t>(check.Number(ROWS_PER_STRIP, UINT32_MAX), std::max<uint64_t>(length, 1));
    return {"strip", tag::StripOffsets, STRIP_BYTE_COUNTS, Rounded(length, rows) * planes};
}

bool CheckList(Checker& check, uint32_t tag, const Parts& parts)
{
    if (!check.Has(tag)) {
        check.Wrong(Named(tag) + " is missing");
        return false;
    }
    if (check.byTag[tag]->count < parts.wanted) {
        check.Wrong(Named(tag) + " has " + Counted(check.byTag[tag]->count, "value") + " for " +
                    Counted(parts.wanted, parts.noun));
    }
    return true;
}

// Parts that lie in each other or in their directory. Readers that decode them take them without a word, so
// it is only worth knowing. Two parts that are one and the same save room for blank ones.
void NoteOverlaps(Checker& check, const std::string& noun, std::span<const uint32_t> offsets,
                  std::span<const uint32_t> counts)
{
    const uint64_t directory = check.directory.offset;
    std::vector<std::array<uint64_t, 2>> places = {
        {directory, directory + 2 + 12 * uint64_t{check.directory.claimedEntries} + 4}};
    for (size_t index = 0; index < offsets.size(); ++index) {
        if (counts[index] != 0) {
            places.push_back({offsets[index], uint64_t{offsets[index]} + counts[index]});
        }
    }
    std::ranges::sort(places);
    const auto [end, rest] = std::ranges::unique(places);
    places.erase(end, rest);
    for (size_t index = 1; index < places.size(); ++index) {
        if (places[index][0] < places[index - 1][1]) {
            const bool inDirectory = places[index - 1][0] == directory || places[index][0] == directory;
            check.verdict.notes.push_back("a " + noun + " at " + std::to_string(places[index - 1][0]) +
                                          " overlaps " + (inDirectory ? "the directory" : "the next one") +
                                          " at " + std::to_string(places[index][0]));
            return;
        }
    }
}

void CheckParts(Checker& check)
{
    const Parts parts = PartsOfPage(check);
    const std::string noun = parts.noun;
    if (!CheckList(check, parts.offsetsTag, parts) || !CheckList(check, parts.countsTag, parts)) {
        return;
    }
    const std::vector<uint32_t> offsets = check.Numbers(parts.offsetsTag),
                                counts = check.Numbers(parts.countsTag);
    const size_t both = std::min({offsets.size(), counts.size(), static_cast<size_t>(parts.wanted)});
    size_t outside = 0, empty = 0;
    for (size_t index = 0; index < both; ++index) {
        const uint64_t end = uint64_t{offsets[index]} + counts[index];
        const std::string which =
            noun + " " + std::to_string(index + 1) + " of " + std::to_string(parts.wanted);
        if (counts[index] == 0 && empty++ == 0) {
            check.Wrong(which + " has no bytes");
        } else if (counts[index] != 0 && end > check.fileSize && outside++ == 0) {
            check.Wrong(which + " would end at " + std::to_string(end) + ", outside the file of " +
                        Counted(check.fileSize, "byte"));
        }
    }
    if (outside > 1) {
        check.Wrong(Counted(outside - 1, (noun + " more").c_str()) + (outside == 2 ? " does" : " do") +
                    " so too");
    }
    if (empty > 1) {
        check.Wrong(std::to_string(empty) + " " + noun + "s in all have no bytes");
    }
    NoteOverlaps(check, noun, std::span(offsets).first(both), std::span(counts).first(both));
}

intptr_t CountRow(void*, uint32_t, void* rows)
{
    ++*static_cast<uint32_t*>(rows);
    return 0;
}

} // namespace

void CheckDirectory(RawFile& raw, const Directory& directory, PageVerdict& verdict)
{
    Checker check = {raw, directory, verdict, SizeOf(raw), {}};
    if (directory.claimedEntries == 0) {
        check.Wrong("the directory has no tags");
        return;
    }
    CheckEntries(check);
    CheckCounts(check);
    CheckValues(check);
    if (check.Number(tag::Compression, 1) != OLD_JPEG) { // whose picture may lie in one stream without strips
        CheckParts(check);
    }
}

uint32_t CountRows(HGLOBAL file, uint32_t page, const PageFacts& facts, uint32_t& rows)
{
    rows = 0;
    if (facts.compression == JPEG) {
        const OwnedBlock dib(LoadTiffChainIntoDIB(file, page));
        const uint32_t error = TiffError();
        rows = dib.bytes && error == 0 ? facts.length : 0;
        return error;
    }
    SetTiffError(0);
    return DecodeTiffImage(file, page, 0, 0, &rows, CountRow) ? 0 : TiffError();
}

void CheckPicture(HGLOBAL file, uint32_t page, PageVerdict& verdict)
{
    constexpr uint32_t ENDS_EARLY = 5, DAMAGED = 12;
    if (!GetTiffImage(file, page)) {
        verdict.wrong.push_back("its tags cannot be loaded: " + DescribeError(TiffError()));
        return;
    }
    verdict.isLoaded = true;
    verdict.facts = ReadPageFacts(file, page);
    if (const std::string reason = WhyNotSupported(verdict.facts); !reason.empty()) {
        verdict.notes.push_back("not decoded here: " + reason);
        return;
    }
    const uint32_t error = CountRows(file, page, verdict.facts, verdict.rows);
    verdict.isWhole = verdict.rows >= verdict.facts.length && verdict.facts.length != 0;
    TiffDecodeQuality quality = {};
    if (GetTiffDecodeQuality(&quality) && quality.badRows != 0) {
        verdict.wrong.push_back(DescribeDamage(quality.badRows, quality.longestBadRun));
    }
    if (verdict.isWhole || verdict.facts.length == 0) {
        return;
    }
    const std::string there = verdict.facts.compression == JPEG
                                  ? ""
                                  : ": " + std::to_string(verdict.rows) + " of " +
                                        Counted(verdict.facts.length, "row") + " can be decoded";
    verdict.wrong.push_back(error == ENDS_EARLY ? "the data end early" + there
                            : error == DAMAGED  ? "the code is damaged" + there
                                                : DescribeError(error) + there);
}

} // namespace tifftool
