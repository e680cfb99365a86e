#include "redraw.h"

#include "chain.h"
#include "describe.h"
#include "extension.h"
#include "pages.h"
#include "progress.h"
#include "source.h"
#include "standard_streams.h"
#include "whole_file.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace tifftool {

namespace {

constexpr uint32_t MOTOROLA_FILE = 35;
constexpr uint32_t JPEG = 7;
constexpr uint32_t LAST_KEPT_TYPE = 7; // the library holds values of larger types in part

// Tags of the picture's code, which is new, and DateTime. 0 is the list of all.
constexpr uint32_t codeTags[] = {256, 257, 258, 259, 262, 266, 273, 274, 277, 278, 279,
                                 284, 292, 293, 306, 317, 320, 322, 323, 324, 325, 326,
                                 327, 328, 338, 339, 340, 341, 347, 529, 530, 531, 532};

// Offsets of further directories, whose content a new page would not have.
constexpr uint32_t directoryTags[] = {330, 34665, 34853, 40965};

constexpr struct {
    uint32_t compression, variant, selector;
} selectors[] = {
    {1, 0, TIFF_SAVE_STORED},
    {32773, 0, TIFF_SAVE_PACKBITS},
    {5, 1, TIFF_SAVE_LZW},
    {2, 0, TIFF_SAVE_MODIFIED_HUFFMAN},
    {5, 2, TIFF_SAVE_LZW_DIFFERENCES},
    {3, 0, TIFF_SAVE_GROUP3},
    {3, 1, TIFF_SAVE_GROUP3_TWO_DIMENSIONAL},
    {4, 0, TIFF_SAVE_GROUP4},
};

uint32_t OwnSelector(const PageFacts& facts)
{
    const uint32_t variant = facts.compression == 5   ? facts.predictor
                             : facts.compression == 3 ? facts.group3Options & 1
                                                      : 0;
    for (const auto& choice : selectors) {
        if (choice.compression == facts.compression && choice.variant == variant) {
            return choice.selector;
        }
    }
    return 0;
}

bool IsAmong(uint32_t tag, std::span<const uint32_t> tags)
{
    return std::ranges::find(tags, tag) != tags.end();
}

std::vector<uint32_t> TagsOf(HGLOBAL file, uint32_t page)
{
    HGLOBAL list = nullptr;
    uint32_t count = 0;
    GetTiffImageInfoBuffer(file, page, 0, &list, nullptr, &count);
    const OwnedBlock block(list);
    std::vector<uint32_t> tags(block.bytes ? count : 0);
    memcpy(tags.data(), block.bytes, tags.size() * sizeof(uint32_t));
    return tags;
}

// What the orientation adds to a turn, by its number less 1. Loading turns mirrored rows only where they run
// from the bottom.
constexpr uint32_t MIRRORED = 4;
constexpr uint32_t orientationQuarters[] = {0, MIRRORED, 2, 0, MIRRORED, 1, MIRRORED, 3};

uint32_t OrientationQuarters(uint32_t orientation)
{
    return orientation - 1 < std::size(orientationQuarters) ? orientationQuarters[orientation - 1] : 0;
}

// A page that cannot be coded again without loss gets a scheme that loses nothing.
uint32_t SelectorFor(const RedrawOrder& order, const PageFacts& facts)
{
    return order.turns && facts.compression == JPEG && facts.bitsPerSample == 8 ? uint32_t{TIFF_SAVE_LZW}
                                                                                : OwnSelector(facts);
}

// Why the page cannot be drawn upon without loss; empty when it can.
std::string WhyNot(const RedrawOrder& order, Source& source, uint32_t page, const PageFacts& facts)
{
    const bool isStraight = facts.orientation <= 1 || facts.orientation == 4;
    if (order.turns ? OrientationQuarters(facts.orientation) == MIRRORED : !isStraight) {
        return order.turns ? "is stored mirrored" : "is stored turned";
    }
    if (!(order.turns && facts.compression == JPEG) &&
        (facts.bitsPerSample > 8 || facts.photometric > 3 ||
         (facts.bitsPerSample * facts.samplesPerPixel == 1 && facts.photometric > 1))) {
        return order.turns ? "has colours that coding it anew would change"
                           : "has colours that drawing would change";
    }
    if (order.turns && GetTiffNoteCount(source.file.handle, page - 1) > 0) {
        return "has notes, which would no longer stand where they belong";
    }
    if (SelectorFor(order, facts) == 0) {
        return "has a compression that cannot be written";
    }
    RawFile raw(source.path);
    for (const uint32_t tag : TagsOf(source.file.handle, page - 1)) {
        TagEntry entry;
        if (IsAmong(tag, directoryTags) || (FindEntry(raw, DirectoryOf(source, page - 1), tag, entry) &&
                                            entry.type > LAST_KEPT_TYPE && !IsAmong(tag, codeTags))) {
            return "has a tag that drawing would lose: " + TagName(tag);
        }
    }
    return "";
}

LONG HeightOf(const OwnedBlock& dib)
{
    return reinterpret_cast<const BITMAPINFOHEADER*>(dib.bytes)->biHeight;
}

int RedrawPage(const RedrawOrder& order, Source& source, uint32_t page, HGLOBAL output, const DrawPage& draw)
{
    const std::string where = PageName(source.path, page);
    const HGLOBAL file = source.file.handle;
    if (!GetTiffImage(file, page - 1)) {
        return ReportError(where, TiffError());
    }
    const PageFacts facts = ReadPageFacts(file, page - 1);
    if (const std::string fault = WhyNot(order, source, page, facts); !fault.empty()) {
        return ReportSentence(where, fault);
    }
    const OwnedBlock loaded(LoadPage(file, page - 1));
    if (const uint32_t error = TiffError(); !loaded.handle || error != 0) {
        return ReportError(where, error);
    }
    const uint32_t quarters = order.turns ? (order.quarters + OrientationQuarters(facts.orientation)) % 4 : 0;
    const OwnedBlock drawn(draw({loaded, page, source.pages, quarters}));
    if (!drawn.handle && order.turns) {
        return ReportError(where, TiffError());
    }
    if (!drawn.handle) {
        return ReportSentence(where, "cannot be drawn upon: memory or the font is missing");
    }
    // Their places count from the top.
    if (!order.turns && HeightOf(drawn) != HeightOf(loaded) && GetTiffNoteCount(file, page - 1) > 0) {
        return ReportSentence(
            where, "has notes, which would no longer stand where they belong; --over adds no rows");
    }
    const OwnedBlock saved(
        SaveTiffToMemory(nullptr, drawn.handle, SelectorFor(order, facts), facts.fillOrder));
    const OpenFile made(
        saved.handle ? OpenTiffInMemory(saved.handle, static_cast<uint32_t>(saved.size), T_READ) : nullptr);
    const bool done = made.handle && GetTiffImage(made.handle, 0) &&
                      CarryTags(file, page - 1, made.handle, quarters % 2 != 0) &&
                      CopyTiffImage(made.handle, 0, output);
    const uint32_t error = TiffError();
    DropTiffImage(file, page - 1);
    return done ? int{ALL_FINE} : ReportError(where, error);
}

int WritePages(const RedrawOrder& order, Source& source, const std::vector<bool>& drawn, HGLOBAL output,
               const DrawPage& draw)
{
    for (uint32_t page = 1; page <= source.pages; ++page) {
        int result = ALL_FINE;
        if (drawn[page]) {
            result = RedrawPage(order, source, page, output, draw);
        } else if (!CopyTiffImage(source.file.handle, page - 1, output)) {
            result = ReportError(PageName(source.path, page), TiffError());
        }
        if (result != ALL_FINE) {
            return result;
        }
        if (!DrawProgress(source.pages, page, 0)) {
            return FAILED;
        }
    }
    return ALL_FINE;
}

} // namespace

static uint32_t TurnedTag(uint32_t tag)
{
    return tag == tag::XResolution ? tag::YResolution : tag == tag::YResolution ? tag::XResolution : tag;
}

bool CarryTags(HGLOBAL from, uint32_t page, HGLOBAL to, bool turned)
{
    for (const uint32_t tag : TagsOf(from, page)) {
        HGLOBAL values = nullptr;
        uint32_t type = 0, count = 0;
        if (IsAmong(tag, codeTags)) {
            continue;
        }
        const bool found = GetTiffImageInfoBuffer(from, page, tag, &values, &type, &count);
        const OwnedBlock block(values);
        if (!found ||
            !DefineTiffImageInfoBuffer(to, 0, turned ? TurnedTag(tag) : tag, block.bytes, type, count)) {
            return false;
        }
    }
    return true;
}

bool ReadRedrawOrders(const Command& command, const Options& options, std::span<const char* const> files,
                      std::vector<RedrawOrder>& orders)
{
    std::vector<Input> inputs;
    if (!ReadInputs(command, options, files, inputs)) {
        return false;
    }
    if (options.Has("-o") && inputs.size() != 1) {
        UsageError(command, "-o goes with one file");
        return false;
    }
    for (const Input& input : inputs) {
        const bool isStream = ShownName(input.path) != input.path;
        const char* const place = isStream ? STANDARD_STREAM : input.path.c_str();
        orders.push_back({input.path, options.Value("-o", place), input.pages});
    }
    return true;
}

int Redraw(const RedrawOrder& order, const DrawPage& draw)
{
    Source source(order.input.c_str());
    std::vector<uint32_t> pages;
    if (!IsWhole(source) || !SelectPages(source, order.selection, pages)) {
        return FAILED;
    }
    if (order.output != order.input && !SuitsContent(order.output, ".tif")) {
        return FAILED;
    }
    if (IsMotorola(source)) {
        return ReportError(source.path, MOTOROLA_FILE);
    }
    std::vector<bool> drawn(source.pages + size_t{1});
    for (const uint32_t page : pages) {
        drawn[page] = true;
    }
    return WriteWhole(order.output, false, [&](const char* unfinished) {
        const OpenFile output(OpenTiffFile(unfinished, T_CREAT));
        return output.handle ? WritePages(order, source, drawn, output.handle, draw)
                             : ReportError(order.output, TiffError());
    });
}

int Redraw(std::span<const RedrawOrder> orders, const DrawPage& draw)
{
    int result = ALL_FINE;
    for (const RedrawOrder& order : orders) {
        result = std::max(result, Redraw(order, draw));
    }
    return result;
}

DibParts PartsOf(void* dib)
{
    auto* const header = static_cast<BITMAPINFOHEADER*>(dib);
    auto* const colours = reinterpret_cast<RGBQUAD*>(header + 1);
    const uint32_t standard = header->biBitCount <= 8 ? 1u << header->biBitCount : 0;
    const uint32_t count = header->biClrUsed ? header->biClrUsed : standard;
    const size_t bits = static_cast<size_t>(header->biWidth) * header->biBitCount;
    return {header, colours, count, reinterpret_cast<uint8_t*>(colours + count), (bits + 31) / 32 * 4};
}

// Without a resolution in the header the library takes places as pixels and points as those of the screen.
HGLOBAL DrawString(HGLOBAL dib, const DrawnText& text)
{
    auto* header = static_cast<BITMAPINFOHEADER*>(GlobalLock(dib));
    const LONG across = header->biXPelsPerMeter, down = header->biYPelsPerMeter;
    header->biXPelsPerMeter = header->biYPelsPerMeter = 0;
    const HDC screen = GetDC(nullptr);
    const double dots = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    const auto points = static_cast<uint32_t>(text.points * (down / 39.37) / dots + 0.5);
    const HGLOBAL drawn = DIBTextOverlay(dib, text.x, text.y, text.text, text.faceName, std::max(points, 1u));
    header->biXPelsPerMeter = across;
    header->biYPelsPerMeter = down;
    GlobalUnlock(dib);
    if (drawn) {
        header = static_cast<BITMAPINFOHEADER*>(GlobalLock(drawn));
        header->biXPelsPerMeter = across;
        header->biYPelsPerMeter = down;
        GlobalUnlock(drawn);
    }
    return drawn;
}

} // namespace tifftool
