/* tifftool repair: the rows and pages that are left of damaged files, in a new file. The damaged file is
 * copied, and what is wrong with a page is put right in the copy; then the pages are copied as they are.
 */
#include "anatomy.h"
#include "check_page.h"
#include "diagnosis.h"
#include "extension.h"
#include "inputs.h"
#include "progress.h"
#include "redraw.h"
#include "source.h"
#include "unfinished.h"
#include "whole_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tifftool {

namespace {

constexpr uint32_t LONG_TYPE = 4, JPEG = 7, ROWS_PER_STRIP = 278, STRIP_BYTE_COUNTS = 279, TILE_LENGTH = 323,
                   TILE_OFFSETS = 324, TILE_BYTE_COUNTS = 325;

// What the rows of a page depend on, besides its size.
constexpr uint32_t codingTags[] = {256, 258, 259, 262, 266, 277, 284, 292, 293, 317, 320};

struct Rows {
    size_t rowBytes;
    uint32_t count = 0;
    std::vector<uint8_t> bytes{};
};

intptr_t KeepRow(void* line, uint32_t, void* user)
{
    auto& rows = *static_cast<Rows*>(user);
    const auto* const bytes = static_cast<const uint8_t*>(line);
    rows.bytes.insert(rows.bytes.end(), bytes, bytes + rows.rowBytes);
    ++rows.count;
    return 0;
}

intptr_t GiveRow(void* line, uint32_t row, void* user)
{
    const auto& rows = *static_cast<const Rows*>(user);
    memcpy(line, &rows.bytes[row * rows.rowBytes], rows.rowBytes);
    return 0;
}

// Codes rows as the only page of a new file, in one strip and in the page's own way.
bool CodePage(HGLOBAL file, uint32_t page, Rows& rows, bool motorola, HGLOBAL made)
{
    if (motorola) {
        ModiTiffFileInfo(made, nullptr, TIFF_MOTOROLA);
    }
    bool done = DefineTiffImage(made) == 0;
    for (const uint32_t tag : codingTags) {
        HGLOBAL values = nullptr;
        uint32_t type = 0, count = 0;
        if (done && GetTiffImageInfoBuffer(file, page, tag, &values, &type, &count)) {
            const OwnedBlock block(values);
            done = DefineTiffImageInfoBuffer(made, 0, tag, block.bytes, type, count);
        }
    }
    return done && DefineTiffImageInfo(made, 0, tag::ImageLength, LONG_TYPE, rows.count) &&
           DefineTiffImageInfo(made, 0, ROWS_PER_STRIP, LONG_TYPE, rows.count) &&
           EncodeTiffImage(made, 0, &rows, GiveRow);
}

// Their code. Empty, with the library's error, when that fails.
std::vector<uint8_t> CodeRows(HGLOBAL file, uint32_t page, Rows& rows, bool motorola)
{
    const OpenFile made(OpenTiffInMemory(nullptr, 0, T_CREAT));
    const bool done = CodePage(file, page, rows, motorola, made.handle);
    const OwnedBlock block(GetMemoryTiffHandle(made.handle));
    uint32_t at = 0, bytes = 0;
    if (!done || !GetTiffImageInfo(made.handle, 0, tag::StripOffsets, &at) ||
        !GetTiffImageInfo(made.handle, 0, STRIP_BYTE_COUNTS, &bytes) || uint64_t{at} + bytes > block.size) {
        return {};
    }
    return {block.bytes + at, block.bytes + at + bytes};
}

void Append(const RawFile& raw, std::vector<uint8_t>& bytes, uint32_t number, uint32_t count)
{
    for (uint32_t index = 0; index < count; ++index) {
        bytes.push_back(static_cast<uint8_t>(number >> 8 * (raw.motorola ? count - 1 - index : index)));
    }
}

// Makes an entry a single LONG. A tag that is not there needs none.
bool SetEntry(RawFile& raw, uint32_t directory, uint32_t tag, uint32_t value)
{
    TagEntry entry;
    if (!FindEntry(raw, directory, tag, entry)) {
        return true;
    }
    std::vector<uint8_t> bytes;
    Append(raw, bytes, LONG_TYPE, 2);
    Append(raw, bytes, 1, 4);
    Append(raw, bytes, value, 4);
    return WriteBytes(raw, entry.position + 2, bytes);
}

// A directory that the end of the file cuts off keeps its whole entries, and is the last one.
bool MendLastDirectory(RawFile& raw)
{
    const Chain chain = WalkChain(raw);
    if (chain.directories.empty()) {
        return true;
    }
    const Directory directory = ReadDirectory(raw, chain.directories.back());
    if (directory.entries.empty() || directory.hasLink) {
        return true;
    }
    std::vector<uint8_t> count;
    const uint32_t noLink = 0;
    Append(raw, count, static_cast<uint32_t>(directory.entries.size()), 2);
    return WriteBytes(raw, directory.offset, count) &&
           WriteNumbers(raw, directory.entries.back().position + 12, {&noLink, 1});
}

struct Patient {
    std::string name; // for messages
    Source& source;   // the copy
    RawFile& raw;     // the same, for writing
    HGLOBAL output;
    uint64_t bytes; // of the damaged file; rows that are coded anew lie behind
};

// Codes the rows that are there anew, behind the end of the copy. Returns why not, or an empty text.
std::string ShortenPage(Patient& patient, uint32_t page, const PageVerdict& verdict)
{
    const PageFacts& facts = verdict.facts;
    const HGLOBAL file = patient.source.file.handle;
    Rows rows = {(size_t{facts.width} * facts.bitsPerSample * facts.samplesPerPixel + 7) / 8};
    DecodeTiffImage(file, page - 1, 0, 0, &rows, KeepRow);
    if (rows.count == 0) {
        return "no row of it is left";
    }
    const std::vector<uint8_t> code = CodeRows(file, page - 1, rows, patient.raw.motorola);
    const uint64_t end = (SizeOf(patient.raw) + 1) / 2 * 2;
    const uint32_t directory = DirectoryOf(patient.source, page - 1);
    if (code.empty() || end + code.size() > UINT32_MAX) {
        return "its rows cannot be coded: " + DescribeError(TiffError());
    }
    const auto at = static_cast<uint32_t>(end);
    const bool written =
        WriteBytes(patient.raw, end, code) &&
        SetEntry(patient.raw, directory, tag::ImageLength, rows.count) &&
        SetEntry(patient.raw, directory, ROWS_PER_STRIP, rows.count) &&
        SetEntry(patient.raw, directory, tag::StripOffsets, at) &&
        SetEntry(patient.raw, directory, STRIP_BYTE_COUNTS, static_cast<uint32_t>(code.size()));
    DropTiffImage(file, page - 1);
    return !written                                        ? "its rows cannot be written"
           : CopyTiffImage(file, page - 1, patient.output) ? ""
                                                           : DescribeError(TiffError());
}

// A picture that was decoded as a whole comes at its full height, what is missing in black, without loss.
std::string RecodePage(Patient& patient, uint32_t page)
{
    const HGLOBAL file = patient.source.file.handle;
    const OwnedBlock dib(LoadTiffChainIntoDIB(file, page - 1));
    if (!dib.bytes) {
        return DescribeError(TiffError());
    }
    const OwnedBlock saved(SaveTiffToMemory(nullptr, dib.handle, TIFF_SAVE_LZW, TIFF_MSB_FIRST));
    const OpenFile made(
        saved.handle ? OpenTiffInMemory(saved.handle, static_cast<uint32_t>(saved.size), T_READ) : nullptr);
    if (!made.handle || !GetTiffImage(made.handle, 0)) {
        return DescribeError(TiffError());
    }
    // The library saves in Intel order; a file has one order.
    const OpenFile turned(patient.raw.motorola ? OpenTiffInMemory(nullptr, 0, T_CREAT) : nullptr);
    const PageFacts facts = ReadPageFacts(made.handle, 0);
    Rows rows = {(size_t{facts.width} * facts.bitsPerSample * facts.samplesPerPixel + 7) / 8};
    const bool ready = !turned.handle || (DecodeTiffImage(made.handle, 0, 0, 0, &rows, KeepRow) &&
                                          CodePage(made.handle, 0, rows, true, turned.handle));
    const HGLOBAL saver = turned.handle ? turned.handle : made.handle;
    const bool done = ready && GetTiffImage(saver, 0) && CarryTags(file, page - 1, saver) &&
                      CopyTiffImage(saver, 0, patient.output);
    return done ? "" : DescribeError(TiffError());
}

// Writes LONGs behind the end of the copy, for the values of an entry that is there.
bool SetNumbers(RawFile& raw, uint32_t directory, uint32_t tag, std::span<const uint32_t> numbers)
{
    const uint64_t at = (SizeOf(raw) + 1) / 2 * 2;
    TagEntry entry;
    std::vector<uint8_t> bytes;
    for (const uint32_t number : numbers) {
        Append(raw, bytes, number, 4);
    }
    return SetEntry(raw, directory, tag, numbers.size() == 1 ? numbers[0] : static_cast<uint32_t>(at)) &&
           (numbers.size() == 1 || (at + bytes.size() <= UINT32_MAX && WriteBytes(raw, at, bytes) &&
                                    FindEntry(raw, directory, tag, entry) &&
                                    WriteCount(raw, entry, static_cast<uint32_t>(numbers.size()))));
}

// The strips, or rows of tiles, of a page that are whole in the file.
struct WholeParts {
    uint32_t offsetsTag, countsTag, rows = 0;
    bool lacksSome = false;
    std::vector<uint32_t> offsets, counts;
};

WholeParts FindWholeParts(Patient& patient, uint32_t directory, const PageFacts& facts)
{
    const auto numbers = [&](uint32_t tag) {
        DirectoryEntry entry;
        return FindEntry(patient.raw, directory, tag, entry) ? ReadNumbers(patient.raw, entry)
                                                             : std::vector<uint32_t>();
    };
    const auto number = [&](uint32_t tag) {
        const std::vector<uint32_t> values = numbers(tag);
        return values.empty() ? 0 : values[0];
    };
    WholeParts parts = {facts.isTiled ? TILE_OFFSETS : tag::StripOffsets,
                        facts.isTiled ? TILE_BYTE_COUNTS : STRIP_BYTE_COUNTS};
    const uint32_t width = facts.isTiled ? number(tag::TileWidth) : facts.width;
    const uint32_t given = number(facts.isTiled ? TILE_LENGTH : ROWS_PER_STRIP);
    const uint32_t length = facts.isTiled || given != 0 ? std::min(given, facts.length) : facts.length;
    if (width == 0 || length == 0) {
        return parts;
    }
    const std::vector<uint32_t> offsets = numbers(parts.offsetsTag), counts = numbers(parts.countsTag);
    const size_t all = std::min(offsets.size(), counts.size());
    const size_t across = (size_t{facts.width} + width - 1) / width;
    const size_t down = (size_t{facts.length} + length - 1) / length;
    const size_t planes = facts.planarConfiguration == 2 ? std::max(facts.samplesPerPixel, 1u) : 1;
    // Each plane has its own parts, one plane after the other; a row is whole where all have it.
    size_t rows = down;
    for (size_t plane = 0; plane < planes; ++plane) {
        const size_t first = plane * across * down, end = std::min(all, first + across * down);
        size_t part = first;
        while (part < end && uint64_t{offsets[part]} + counts[part] <= patient.bytes) {
            ++part;
        }
        parts.lacksSome = parts.lacksSome || part < end;
        rows = std::min(rows, (part - first) / across);
    }
    for (size_t plane = 0; plane < planes && rows > 0; ++plane) {
        const auto first = static_cast<ptrdiff_t>(plane * across * down);
        const auto kept = static_cast<ptrdiff_t>(rows * across);
        parts.offsets.insert(parts.offsets.end(), offsets.begin() + first, offsets.begin() + first + kept);
        parts.counts.insert(parts.counts.end(), counts.begin() + first, counts.begin() + first + kept);
    }
    parts.rows = static_cast<uint32_t>(std::min<uint64_t>(uint64_t{rows} * length, facts.length));
    return parts;
}

// Copies a page whose code is not decoded here: that of whole strips and tiles, as it is.
std::string KeepParts(Patient& patient, uint32_t page, PageVerdict& verdict)
{
    const HGLOBAL file = patient.source.file.handle;
    const uint32_t directory = DirectoryOf(patient.source, page - 1);
    const WholeParts parts = FindWholeParts(patient, directory, verdict.facts);
    verdict.isWhole = !parts.lacksSome;
    if (verdict.isWhole) {
        return CopyTiffImage(file, page - 1, patient.output) ? "" : DescribeError(TiffError());
    }
    if (parts.rows == 0) {
        return "no row of it is left";
    }
    const bool written = SetEntry(patient.raw, directory, tag::ImageLength, parts.rows) &&
                         SetNumbers(patient.raw, directory, parts.offsetsTag, parts.offsets) &&
                         SetNumbers(patient.raw, directory, parts.countsTag, parts.counts);
    verdict.rows = parts.rows;
    DropTiffImage(file, page - 1);
    return !written                                        ? "its rows cannot be written"
           : CopyTiffImage(file, page - 1, patient.output) ? ""
                                                           : DescribeError(TiffError());
}

// Returns an exit code: FAILED when the page is lost.
int RepairPage(Patient& patient, uint32_t page)
{
    const HGLOBAL file = patient.source.file.handle;
    const std::string where = PageName(patient.name, page);
    PageVerdict verdict;
    CheckPicture(file, page - 1, verdict);
    if (!verdict.isLoaded) {
        return ReportSentence(where, "is lost: " + verdict.wrong[0]);
    }
    const bool isKnown = WhyNotSupported(verdict.facts).empty();
    if (verdict.isWhole && CopyTiffImage(file, page - 1, patient.output)) {
        return ALL_FINE;
    }
    const bool isRecoded = isKnown && verdict.facts.compression == JPEG;
    const std::string why = isRecoded ? RecodePage(patient, page)
                            : isKnown ? ShortenPage(patient, page, verdict)
                                      : KeepParts(patient, page, verdict);
    if (!why.empty()) {
        return ReportSentence(where, "is lost: " + why);
    }
    if (verdict.isWhole && !isKnown) {
        return ALL_FINE;
    }
    printf("%s: %s of %s kept\n", where.c_str(),
           isRecoded ? "what is left" : std::to_string(verdict.rows).c_str(),
           Counted(verdict.facts.length, "row").c_str());
    return ALL_FINE;
}

int RepairPages(Patient& patient)
{
    int result = ALL_FINE;
    uint32_t kept = 0;
    const uint32_t pages = patient.source.pages;
    for (uint32_t page = 1; page <= pages; ++page) {
        const int repaired = RepairPage(patient, page);
        DropTiffImage(patient.source.file.handle, page - 1);
        kept += repaired == ALL_FINE;
        result = std::max(result, repaired);
        if (!DrawProgress(pages, page, 0)) {
            return WRONG_USAGE;
        }
    }
    if (kept == 0) {
        return WRONG_USAGE;
    }
    if (patient.source.openError != 0) {
        printf("%s: the chain of pages broke off after page %u\n", patient.name.c_str(), pages);
    }
    return result;
}

int Repair(const std::string& input, const std::string& output)
{
    const std::string copy = MakeUnfinishedFile(TemporaryFolder(), input.c_str());
    if (copy.empty()) {
        return ReportSentence(input,
                              "cannot be copied to the temporary folder: " + SystemCause(GetLastError()));
    }
    SetFileAttributesA(copy.c_str(), FILE_ATTRIBUTE_NORMAL);
    RawFile raw(copy, "r+b");
    const uint64_t damagedBytes = SizeOf(raw);
    if (!MendLastDirectory(raw)) {
        return ReportSentence(copy, "cannot be written: " + SystemCause(GetLastError()));
    }
    Source source(copy.c_str());
    if (source.pages == 0) {
        return ReportSentence(input, "no page of it can be reached");
    }
    int repaired = ALL_FINE;
    const int result = WriteWhole(output, false, [&](const char* unfinished) {
        const OpenFile target(OpenTiffFile(unfinished, T_CREAT));
        if (!target.handle || (raw.motorola && !ModiTiffFileInfo(target.handle, nullptr, TIFF_MOTOROLA))) {
            return ReportError(output, TiffError());
        }
        Patient patient = {input, source, raw, target.handle, damagedBytes};
        repaired = RepairPages(patient);
        return repaired == WRONG_USAGE ? ReportSentence(input, "nothing of it could be saved")
                                       : int{ALL_FINE};
    });
    return std::max(result, repaired == WRONG_USAGE ? int{FAILED} : repaired);
}

int RepairInto(const Input& input, const std::string& output, bool force)
{
    if (!input.pages.empty()) {
        return ReportSentence(input.path, "is repaired as a whole, without a selection of pages");
    }
    if (const std::string reason = WhyNotTiff(input.path); !reason.empty()) {
        return ReportSentence(input.path, reason);
    }
    if (IsSameFile(input.path, output)) {
        return ReportSentence(output, "is the damaged file, which is never changed");
    }
    if (Exists(output) && !force) {
        return ReportSentence(output, "is there already; --force replaces it");
    }
    return Repair(input.path, output);
}

int RunRepair(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {}, {"--force"});
    std::vector<Input> inputs;
    if (!CheckOptions(repairCommand, options, 2, SIZE_MAX) ||
        !ReadInputs(repairCommand, options, std::span(options.others).first(options.others.size() - 1),
                    inputs)) {
        return WRONG_USAGE;
    }
    const std::string output = options.others.back();
    const bool toFolder = IsFolder(output);
    if (inputs.size() > 1 && !toFolder) {
        return UsageError(repairCommand, "several files are repaired into a folder");
    }
    if (!toFolder && !SuitsContent(output, ".tif")) {
        return FAILED;
    }
    int result = ALL_FINE;
    for (const Input& input : inputs) {
        const std::string name = input.path.substr(FolderOf(input.path).size());
        result = std::max(result,
                          RepairInto(input, toFolder ? output + "/" + name : output, options.Has("--force")));
    }
    return result;
}

} // namespace

const Command repairCommand = {
    .name = "repair",
    .arguments = "DAMAGED.tif... OUT.tif|FOLDER [--force]",
    .summary = "Saves what is left of a damaged file as a new one.",
    .details =
        "  --force  replaces OUT.tif, or files of the same names in FOLDER\n"
        "\n"
        "Pages that are whole are copied as they are. Pages that are cut short get the rows that are left,\n"
        "in their own compression; JPEG pages come in lzw at their full height, with what is missing in\n"
        "black. Of tiles, and of compressions that are not decoded here, the whole ones are kept. Where the "
        "chain of pages is broken it ends. DAMAGED.tif is never changed. The exit code is\n"
        "1 when a page is lost, and OUT.tif is written when any page is left.\n",
    .example = "tifftool repair cut-off.tif saved.tif",
    .run = RunRepair,
};

} // namespace tifftool
