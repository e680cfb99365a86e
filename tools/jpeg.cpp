/* tifftool tojpeg and fromjpeg: pages as JPEG files and back. Streams are moved without coding again where
 * the two formats allow it.
 */
#include "jpeg_stream.h"

#include "chain.h"
#include "describe.h"
#include "extension.h"
#include "options.h"
#include "pages.h"
#include "source.h"
#include "whole_file.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace tifftool {

namespace {

using Bytes = std::vector<uint8_t>;

void Put(Bytes& target, std::span<const uint8_t> bytes)
{
    const size_t at = target.size();
    target.resize(at + bytes.size());
    std::ranges::copy(bytes, target.begin() + static_cast<ptrdiff_t>(at));
}

bool WriteBytes(const char* path, const Bytes& bytes)
{
    FILE* const file = fopen(path, "wb");
    const bool written = file && fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return file && fclose(file) == 0 && written;
}

// APP0 with the resolution, and Exif when the picture is turned.
Bytes Heads(uint32_t dotsPerInch, uint32_t orientation)
{
    const auto high = [](uint32_t number) { return static_cast<uint8_t>(number >> 8); };
    const auto low = [](uint32_t number) { return static_cast<uint8_t>(number); };
    const uint32_t across = dotsPerInch & 0xFFFF, down = dotsPerInch >> 16;
    const uint8_t known = across != 0 && down != 0;
    Bytes heads = {0xFF,
                   0xE0,
                   0,
                   16,
                   'J',
                   'F',
                   'I',
                   'F',
                   0,
                   1,
                   1,
                   known,
                   high(known ? across : 1),
                   low(known ? across : 1),
                   high(known ? down : 1),
                   low(known ? down : 1),
                   0,
                   0};
    if (orientation != 1) {
        const uint8_t exif[] = {0xFF,
                                0xE1,
                                0,
                                34,
                                'E',
                                'x',
                                'i',
                                'f',
                                0,
                                0,
                                'I',
                                'I',
                                42,
                                0,
                                8,
                                0,
                                0,
                                0,
                                1,
                                0,
                                0x12,
                                1,
                                3,
                                0,
                                1,
                                0,
                                0,
                                0,
                                low(orientation),
                                0,
                                0,
                                0,
                                0,
                                0,
                                0,
                                0};
        Put(heads, exif);
    }
    return heads;
}

// The stream behind its SOI, with all tables in front.
Bytes JfifOf(const JpegStream& stream, const Bytes& heads)
{
    Bytes file = {0xFF, 0xD8};
    Put(file, heads);
    Put(file, stream.tables);
    Put(file, std::span(stream.otherwise).subspan(2));
    return file;
}

// Grey or YCbCr in one strip, as its only rows.
bool CanBeMoved(HGLOBAL file, uint32_t page, const PageFacts& facts, const JpegStream& stream)
{
    const bool colours = (facts.samplesPerPixel == 1 && facts.photometric == 1) ||
                         (facts.samplesPerPixel == 3 && facts.photometric == 6);
    return facts.compression == 7 && colours && GetTiffStripCount(file, page) == 1 && stream.fault.empty() &&
           stream.width == facts.width && stream.height == facts.length &&
           stream.components.size() == facts.samplesPerPixel;
}

// The page is coded in memory, with one strip.
int CodeAnew(const Picture& picture, const char* unfinished, const char* output, uint32_t orientation)
{
    const OwnedBlock saved(SaveTiffToMemory(nullptr, picture.dib.handle, TIFF_SAVE_JPEG, 1));
    if (!saved.handle) {
        return ReportError(picture.where, TiffError());
    }
    const OpenFile page(OpenTiffInMemory(saved.handle, static_cast<uint32_t>(saved.size), T_READ));
    uint32_t offset = 0, bytes = 0, dots = 0;
    if (!GetTiffImage(page.handle, 0) || GetTiffStripCount(page.handle, 0) != 1) {
        return ReportSentence(picture.where, "is too high for a JPEG file");
    }
    GetTiffImageInfo(page.handle, 0, tag::StripOffsets, &offset);
    GetTiffImageInfo(page.handle, 0, 279, &bytes);
    GetTiffImageDPI(page.handle, 0, &dots);
    HGLOBAL block = nullptr;
    GetTiffImageInfoBuffer(page.handle, 0, 347, &block, nullptr, nullptr);
    const OwnedBlock tables(block);
    JpegStream stream = ReadJpeg({saved.bytes + offset, bytes});
    stream.tables = ReadJpeg({tables.bytes, tables.size}).tables;
    return WriteBytes(unfinished, JfifOf(stream, Heads(dots, orientation))) ? ALL_FINE
                                                                            : ReportUnwritten(output);
}

// Loading turns pages whose rows come from the bottom, but no others.
uint32_t TurnLeft(uint32_t orientation)
{
    return orientation == 4 ? 1 : orientation;
}

int WriteJpeg(const Input& input, const char* output)
{
    uint32_t orientation = 1;
    Bytes moved;
    std::vector<uint32_t> pages;
    if (const Source source(input.path.c_str());
        source.file.handle && ListPages(input.pages, source.pages, pages) == 0) {
        const HGLOBAL file = source.file.handle;
        const uint32_t page = pages[0];
        if (GetTiffImage(file, page - 1)) {
            const PageFacts facts = ReadPageFacts(file, page - 1);
            orientation = facts.orientation;
            const JpegStream stream =
                facts.compression == 7 ? ReadJpeg(FirstStream(file, input.path, page - 1)) : JpegStream{};
            uint32_t dots = 0;
            if (CanBeMoved(file, page - 1, facts, stream) && GetTiffImageDPI(file, page - 1, &dots) == 0) {
                moved = JfifOf(stream, Heads(facts.hasResolution ? dots : 0, orientation));
            }
        }
    }
    return WriteWhole(output, false, [&](const char* unfinished) {
        if (!moved.empty()) {
            return WriteBytes(unfinished, moved) ? int{ALL_FINE} : ReportUnwritten(output);
        }
        return ForEachPicture(input, Damage::Refused, [&](const Picture& picture) {
            return CodeAnew(picture, unfinished, output, TurnLeft(orientation));
        });
    });
}

int RunToJpeg(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {"--page", "--quality"}, {});
    if (!CheckOptions(tojpegCommand, options, 2, 2)) {
        return WRONG_USAGE;
    }
    Input input;
    const uint32_t quality = NumberOption(tojpegCommand, options, "--quality", 100, "75");
    if (quality == 0 || !ReadOnePage(tojpegCommand, options, options.others[0], input)) {
        return WRONG_USAGE;
    }
    SetTiffJpegQuality(quality);
    if (IsSameFile(input.path, options.others[1])) {
        return ReportSentence(options.others[1],
                              "the picture would take the place of the file that it is in");
    }
    return SuitsContent(options.others[1], ".jpg") && CheckOutput(options.others[1])
               ? WriteJpeg(input, options.others[1])
               : FAILED;
}

// A TIFF of one page around a stream, Intel byte order.
class PageBuilder {
public:
    Bytes bytes = {'I', 'I', 42, 0, 0, 0, 0, 0};

    // Puts bytes at an even place and gives it.
    uint32_t Place(std::span<const uint8_t> content)
    {
        const auto at = static_cast<uint32_t>(bytes.size());
        Put(bytes, content);
        bytes.resize((bytes.size() + 1) / 2 * 2);
        return at;
    }
    uint32_t PlaceNumbers(std::span<const uint32_t> numbers)
    {
        return Place({reinterpret_cast<const uint8_t*>(numbers.data()), numbers.size_bytes()});
    }
    // In ascending order of tags; a value that fits, or where the values are.
    void Tag(uint32_t tag, uint32_t type, uint32_t count, uint32_t value)
    {
        entries.push_back({tag | type << 16, count, value});
    }
    Bytes& Finish()
    {
        const auto directory = static_cast<uint32_t>(bytes.size());
        std::memcpy(&bytes[4], &directory, 4);
        bytes.push_back(static_cast<uint8_t>(entries.size()));
        bytes.push_back(0);
        for (const auto& entry : entries) {
            Put(bytes, {reinterpret_cast<const uint8_t*>(entry.words), sizeof entry.words});
        }
        bytes.resize(bytes.size() + 4);
        return bytes;
    }

private:
    struct Entry {
        uint32_t words[3];
    };
    std::vector<Entry> entries;
};

// Three components are YCbCr unless Adobe's marker, or their names, say RGB.
uint32_t PhotometricOf(const JpegStream& stream)
{
    if (stream.components.size() == 1) {
        return 1;
    }
    const bool named = stream.components[0].identifier == 'R' && stream.components[1].identifier == 'G';
    return stream.adobeTransform == 0 || (named && stream.adobeTransform < 0) ? 2 : 6;
}

Bytes PageOf(const JpegStream& stream)
{
    enum : uint32_t { SHORT = 3, LONG = 4, RATIONAL = 5, UNDEFINED = 7 };
    PageBuilder page;
    const auto samples = static_cast<uint32_t>(stream.components.size());
    const uint32_t photometric = PhotometricOf(stream);
    const uint32_t strip = page.Place(stream.otherwise);
    Bytes tables = {0xFF, 0xD8};
    Put(tables, stream.tables);
    Put(tables, Bytes{0xFF, 0xD9});
    const uint32_t tablesAt = page.Place(tables);
    const uint32_t across[] = {stream.dots[0], 1000}, down[] = {stream.dots[1], 1000};
    const uint32_t acrossAt = page.PlaceNumbers(across), downAt = page.PlaceNumbers(down);
    const uint32_t eights[] = {8 | 8 << 16, 8}, fullRange[] = {0, 1, 255, 1, 128, 1, 255, 1, 128, 1, 255, 1};
    page.Tag(256, LONG, 1, stream.width);
    page.Tag(257, LONG, 1, stream.height);
    page.Tag(258, SHORT, samples, samples == 1 ? 8 : page.PlaceNumbers(eights));
    page.Tag(259, SHORT, 1, 7);
    page.Tag(262, SHORT, 1, photometric);
    page.Tag(273, LONG, 1, strip);
    page.Tag(274, SHORT, 1, stream.orientation);
    page.Tag(277, SHORT, 1, samples);
    page.Tag(278, LONG, 1, stream.height);
    page.Tag(279, LONG, 1, static_cast<uint32_t>(stream.otherwise.size()));
    if (stream.dots[0] != 0 && stream.dots[1] != 0) {
        page.Tag(282, RATIONAL, 1, acrossAt);
        page.Tag(283, RATIONAL, 1, downAt);
    }
    page.Tag(284, SHORT, 1, 1);
    page.Tag(296, SHORT, 1, stream.dots[0] == 0 ? 1 : stream.perCentimetre ? 3 : 2);
    page.Tag(347, UNDEFINED, static_cast<uint32_t>(tables.size()), tablesAt);
    if (photometric == 6) {
        const auto& first = stream.components[0];
        const auto& second = stream.components[1];
        const uint32_t ratios[] = {first.horizontal / std::max<uint32_t>(second.horizontal, 1),
                                   first.vertical / std::max<uint32_t>(second.vertical, 1)};
        page.Tag(530, SHORT, 2, ratios[0] | ratios[1] << 16);
        page.Tag(532, RATIONAL, 6, page.PlaceNumbers(fullRange));
    }
    return page.Finish();
}

// What cannot be shown is not taken.
int AddPage(const char* input, const char* output, const char* unfinished, const Bytes& page)
{
    const OwnedBlock block(GlobalAlloc(GMEM_MOVEABLE, page.size()));
    if (!block.bytes) {
        return ReportError(input, 1);
    }
    std::memcpy(const_cast<uint8_t*>(block.bytes), page.data(), page.size());
    const OpenFile source(OpenTiffInMemory(block.handle, static_cast<uint32_t>(page.size()), T_READ));
    if (!GetTiffImage(source.handle, 0)) {
        return ReportError(input, TiffError());
    }
    const OwnedBlock picture(LoadTiffChainIntoDIB(source.handle, 0));
    const uint32_t error = TiffError();
    if (!picture.handle) {
        return ReportError(input, error);
    }
    const OpenFile target(OpenTiffFile(unfinished, T_APPEND));
    if (!target.handle || !CopyTiffImage(source.handle, 0, target.handle)) {
        return ReportError(output, TiffError());
    }
    if (error != 0) {
        ReportError(std::string(input) + ": warning, the picture is not whole", error);
    }
    return ALL_FINE;
}

int AddFile(const char* input, const char* output, const char* unfinished)
{
    WIN32_FILE_ATTRIBUTE_DATA facts = {};
    if (!GetFileAttributesExA(input, GetFileExInfoStandard, &facts)) {
        return ReportSentence(input, "there is no such file");
    }
    RawFile raw(input);
    const JpegStream stream = ReadJpeg(ReadBytes(raw, 0, facts.nFileSizeHigh ? 0 : facts.nFileSizeLow));
    if (!stream.fault.empty()) {
        return ReportSentence(input, "is " + stream.fault + ", which is not taken");
    }
    if (stream.components.size() != 1 && stream.components.size() != 3) {
        return ReportSentence(input, "has " + std::to_string(stream.components.size()) +
                                         " components; JFIF and Exif pictures have one or three");
    }
    return AddPage(input, output, unfinished, PageOf(stream));
}

int RunFromJpeg(Arguments arguments)
{
    const Options options = ParseOptions(arguments, {}, {"--append", "--force"});
    std::vector<Input> inputs;
    if (!CheckOptions(fromjpegCommand, options, 2, SIZE_MAX) ||
        !ReadWholeInputs(fromjpegCommand, options, std::span(options.others).first(options.others.size() - 1),
                         inputs)) {
        return WRONG_USAGE;
    }
    const char* const output = options.others.back();
    const bool append = options.Has("--append");
    if (!SuitsContent(output, ".tif") || !MayReplace(options, output, inputs) ||
        (append && !CanBeAddedTo(output))) {
        return FAILED;
    }
    return WriteWhole(output, append, [&](const char* unfinished) {
        int result = ALL_FINE;
        for (size_t index = 0; index < inputs.size() && result == ALL_FINE; ++index) {
            result = AddFile(inputs[index].path.c_str(), output, unfinished);
        }
        return result;
    });
}

} // namespace

const Command tojpegCommand = {
    .name = "tojpeg",
    .arguments = "IN.tif OUT.jpg [OPTION...]",
    .summary = "Writes one page as a JPEG file.",
    .details = "  --page N     the page, 1 by default\n"
               "  --quality Q  1 to 100, for pages that must be coded; 75 by default\n"
               "\n"
               "A JPEG page of one strip, grey or YCbCr, is moved without coding it again.\n",
    .example = "tifftool tojpeg album.tif photo.jpg --page 2",
    .run = RunToJpeg,
};

const Command fromjpegCommand = {
    .name = "fromjpeg",
    .arguments = "IN.jpg... OUT.tif [--append] [--force]",
    .summary = "Takes baseline JFIF or Exif files as pages, without coding them again.",
    .details = "  --append  adds the pages to OUT.tif instead of replacing it\n"
               "  --force   lets several files replace OUT.tif\n"
               "\n"
               "Resolution and orientation come from the file's markers. Its other notes are left out.\n",
    .example = "tifftool fromjpeg photo.jpg album.tif --append",
    .run = RunFromJpeg,
};

} // namespace tifftool
