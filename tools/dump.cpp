/* tifftool dump: directories as they lie in a file, with the offsets of everything. */
#include "anatomy.h"
#include "describe.h"
#include "diagnosis.h"
#include "options.h"
#include "standard_streams.h"
#include "tag_text.h"

#include <algorithm>
#include <cstdio>

namespace tifftool {

namespace {

constexpr uint32_t directoryTags[] = {330, 34665, 34853, 40965};
// Directories in tags may lead in a circle, or to more than anybody can read.
constexpr uint32_t MOST_LEVELS = 4, MOST_NESTED = 1000;

void DumpDirectory(RawFile& raw, uint32_t offset, const std::string& name, uint32_t level, uint32_t& nested)
{
    const std::string indent(2 * level, ' ');
    const Directory directory = ReadDirectory(raw, offset);
    printf("%s%s at %u: %s%s\n", indent.c_str(), name.c_str(), offset,
           Counted(directory.claimedEntries, "tag").c_str(),
           directory.entries.size() < directory.claimedEntries
               ? (", cut off after " + std::to_string(directory.entries.size())).c_str()
               : "");
    for (const DirectoryEntry& entry : directory.entries) {
        const Extent extent = ValuesOf(entry);
        const std::string at =
            extent.at == entry.position + 8 ? "in the entry" : "at " + std::to_string(extent.at);
        const bool isText = entry.type == 2;
        const std::vector<uint8_t> bytes = ReadValues(raw, entry, isText ? 4096 : MAX_SHOWN_VALUES);
        printf("%s  %8u  %5u  %-26s %-9s %6u  %-14s %s\n", indent.c_str(),
               static_cast<unsigned>(entry.position), entry.tag, TagName(entry.tag).c_str(),
               FieldTypeName(entry.type).c_str(), entry.count, at.c_str(),
               KnownElementBytes(entry.type) == 0  ? "unknown type"
               : bytes.empty() && entry.count != 0 ? "outside the file"
                                                   : FormatValues(entry.type, entry.count, bytes).c_str());
        if (level == MOST_LEVELS || std::ranges::find(directoryTags, entry.tag) == std::end(directoryTags)) {
            continue;
        }
        for (const uint32_t inner : ReadNumbers(raw, entry)) {
            if (++nested > MOST_NESTED) {
                break;
            }
            DumpDirectory(raw, inner, TagName(entry.tag) + " directory", level + 1, nested);
        }
    }
    if (directory.hasLink) {
        printf("%s  link %u\n", indent.c_str(), directory.link);
    }
}

int DumpFile(const Input& input)
{
    if (const std::string reason = WhyNotTiff(input.path); !reason.empty()) {
        return ReportSentence(input.path, reason);
    }
    RawFile raw(input.path);
    const Chain chain = WalkChain(raw);
    const auto count = static_cast<uint32_t>(chain.directories.size());
    std::vector<uint32_t> pages;
    printf("%s: %s, %s\n", ShownName(input.path).c_str(), raw.motorola ? "Motorola (MM)" : "Intel (II)",
           Counted(SizeOf(raw), "byte").c_str());
    if (const uint32_t missing = count == 0 ? 0 : ListPages(input.pages, count, pages)) {
        return ReportSentence(input.path,
                              "has no page " + std::to_string(missing) + ", only " + Counted(count, "page"));
    }
    uint32_t nested = 0;
    for (const uint32_t page : pages) {
        DumpDirectory(raw, chain.directories[page - 1], "page " + std::to_string(page), 0, nested);
    }
    if (chain.comesBackTo != 0) {
        printf("the last link leads back to page %u\n", chain.comesBackTo);
    }
    return ALL_FINE;
}

int RunDump(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--pages", "--page"}, {});
    std::vector<Input> inputs;
    if (!CheckOptions(dumpCommand, options, 1, SIZE_MAX) ||
        !ReadInputs(dumpCommand, options, options.others, inputs)) {
        return WRONG_USAGE;
    }
    int result = ALL_FINE;
    for (const Input& input : inputs) {
        result = std::max(result, DumpFile(input));
    }
    return result;
}

} // namespace

const Command dumpCommand = {
    .name = "dump",
    .arguments = "FILE.tif... [--pages LIST]",
    .summary = "Shows directories as they lie in files, with offsets.",
    .details =
        "  --pages LIST  such as 1,3-5,last; without it all pages\n"
        "\n"
        "A line has the place of the entry, the tag, its type and count, and where its values are. Further\n"
        "directories that a page names, such as Exif, come below their tag. Damaged files are shown as far\n"
        "as they go.\n",
    .example = "tifftool dump fax.tif:1",
    .run = RunDump,
};

} // namespace tifftool
