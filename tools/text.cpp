/* tifftool text: a text file as fax pages, on a form if there is one. */
#include "bmp.h"
#include "describe.h"
#include "diagnosis.h"
#include "extension.h"
#include "faxable.h"
#include "lengths.h"
#include "page_target.h"
#include "pages.h"
#include "progress.h"
#include "source.h"
#include "system_text.h"
#include "whole_file.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <utility>
#include <vector>

namespace tifftool {

namespace {

constexpr struct {
    const char* name;
    uint32_t width, height; // hundredths of an inch
} papers[] = {{"a4", 826, 1169}, {"letter", 850, 1100}, {"legal", 850, 1400}};

constexpr uint32_t TAB_DISTANCE = 50;
constexpr uint32_t MOST_DOTS = 9600;
constexpr size_t MOST_BYTES = 1u << 30;

struct TextOrder {
    std::string input, output;
    TiffTextPageSettings settings{};
    uint32_t selector = 0, fillOrder = 1;
    std::string form;
    bool append = false;
};

// A file in the temporary folder, for a scope.
struct TemporaryFile {
    char path[MAX_PATH] = {};

    TemporaryFile()
    {
        char folder[MAX_PATH];
        if (!GetTempPathA(sizeof folder, folder) || !GetTempFileNameA(folder, "txt", 0, path)) {
            path[0] = '\0';
        }
    }
    ~TemporaryFile()
    {
        DeleteFileA(path);
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
};

struct Handles {
    std::vector<HANDLE> dibs = std::vector<HANDLE>(TIFF_MAX_PAGES);

    Handles() = default;
    ~Handles()
    {
        for (HANDLE dib : dibs) {
            if (dib) {
                GlobalFree(dib);
            }
        }
    }
    Handles(const Handles&) = delete;
    Handles& operator=(const Handles&) = delete;
};

struct Bitmap {
    HBITMAP handle = nullptr;

    ~Bitmap()
    {
        if (handle) {
            DeleteObject(handle);
        }
    }
};

bool SetPath(TextOrder& order, const std::string& path)
{
    if (path.size() >= sizeof order.settings.path) {
        ReportSentence(path, "has too long a path for the library");
        return false;
    }
    memcpy(order.settings.path, path.c_str(), path.size() + 1);
    return true;
}

// The library wants CR LF: each CR, LF or CR LF becomes one.
std::string WithLineEnds(const std::string& text)
{
    std::string lines;
    lines.reserve(text.size() + text.size() / 16);
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\r' && text[i] != '\n') {
            lines += text[i];
            continue;
        }
        lines += "\r\n";
        i += text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n';
    }
    return lines;
}

// Copies the text in the library's form; false with a message.
bool CopyText(TextOrder& order, const TemporaryFile& copy)
{
    const HANDLE probe = CreateFileA(order.input.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (probe == INVALID_HANDLE_VALUE) {
        ReportSentence(order.input, "cannot be opened: " + SystemCause(GetLastError()));
        return false;
    }
    CloseHandle(probe);
    std::ifstream input(order.input, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
    if (text.size() > MOST_BYTES || !Utf8ToSystem(text)) {
        ReportSentence(order.input, text.size() > MOST_BYTES
                                        ? "is too large"
                                        : "has characters that the system's code page lacks");
        return false;
    }
    const std::string lines = WithLineEnds(text);
    std::ofstream output(copy.path, std::ios::binary | std::ios::trunc);
    output.write(lines.data(), static_cast<std::streamsize>(lines.size()));
    output.close();
    if (!output || input.bad()) {
        ReportSentence(order.input, "cannot be copied to the temporary folder");
        return false;
    }
    return SetPath(order, copy.path);
}

// The page gets the form's size and resolution; false with a message.
bool FollowForm(TextOrder& order)
{
    const Source form(order.form.c_str());
    BITMAPINFOHEADER header;
    if (!HasPages(form)) {
        return false;
    }
    if (!GetTiffImage(form.file.handle, 0) || GetTiffDimensions(form.file.handle, 0, &header) != 0) {
        ReportError(PageName(form.path, 1), TiffError());
        return false;
    }
    if (ReadPageFacts(form.file.handle, 0).orientation > 1) {
        ReportSentence(PageName(form.path, 1), "is stored turned, and cannot be a form");
        return false;
    }
    const auto dots = [](int32_t dotsPerMetre) {
        return std::max(static_cast<uint32_t>(dotsPerMetre / 39.37 + 0.5), 1u);
    };
    TiffTextPageSettings& settings = order.settings;
    settings.horizontalDpi = dots(header.biXPelsPerMeter);
    settings.verticalDpi = dots(header.biYPelsPerMeter);
    const auto length = [](int32_t pixels, uint32_t dpi) {
        return static_cast<uint32_t>((uint64_t{static_cast<uint32_t>(pixels)} * 100 + dpi - 1) / dpi);
    };
    settings.pageWidth = length(header.biWidth, settings.horizontalDpi);
    settings.pageHeight = length(header.biHeight, settings.verticalDpi);
    return true;
}

int ReportText(const TextOrder& order, uint32_t error)
{
    switch (error) {
    case TIFF_TEXT_PAGE_LIMIT:
        return ReportSentence(order.input, "has more pages than a TIFF file can");
    case TIFF_TEXT_NO_FILE:
        return ReportSentence(order.input, "cannot be read");
    default:
        return ReportSentence(order.input, "such pages cannot be made: the margins leave no room, or the "
                                           "paper or the font is too large for the memory");
    }
}

int SavePages(const TextOrder& order, Handles& pages, uint32_t count, const char* unfinished)
{
    PageTarget target = {order.output, unfinished};
    for (uint32_t page = 0; page < count; ++page) {
        const OwnedBlock dib(std::exchange(pages.dibs[page], nullptr));
        const std::string where = PageName(order.input, page + 1);
        int result = CheckDepth({dib, where, page + 1, count, 0}, order.selector);
        if (result == ALL_FINE) {
            result = AppendDib(target, dib, where, order.selector, order.fillOrder);
        }
        if (result != ALL_FINE) {
            return result;
        }
        DrawProgress(count, page + 1, 0);
    }
    return ALL_FINE;
}

int DrawPages(const TextOrder& order, const char* unfinished)
{
    Bitmap form;
    if (!order.form.empty()) {
        form.handle = LoadTiffIntoBitmap(order.form.c_str(), 0, 0);
        if (!form.handle || TiffError() != 0) {
            return ReportError(PageName(order.form, 1), TiffError());
        }
    }
    Handles pages;
    uint32_t error = 0;
    const auto count = static_cast<uint32_t>(WithClock("drawing " + order.input, [&] {
        return static_cast<int32_t>(CreateFaxPageFromASCII(&order.settings, TIFF_MAX_PAGES, pages.dibs.data(),
                                                           TIFF_TEXT_DIB, form.handle, &error));
    }));
    if (error != TIFF_TEXT_DONE) {
        return ReportText(order, error);
    }
    return SavePages(order, pages, count, unfinished);
}

bool ReadPaper(const Options& options, TiffTextPageSettings& settings)
{
    const char* const text = options.Value("--paper", "a4");
    for (const auto& paper : papers) {
        if (strcmp(text, paper.name) == 0) {
            settings.pageWidth = paper.width;
            settings.pageHeight = paper.height;
            return true;
        }
    }
    uint32_t size[2];
    if (ParseLengths(text, 'x', size, 2) != 2) {
        UsageError(textCommand, "--paper takes a4, letter, legal or a size such as 210x297 or 8.5inx11in");
        return false;
    }
    settings.pageWidth = size[0];
    settings.pageHeight = size[1];
    return true;
}

bool ReadResolution(const Options& options, TiffTextPageSettings& settings)
{
    const std::string text = options.Value("--resolution", "fine");
    if (const uint32_t down = FaxResolution(text)) {
        settings.horizontalDpi = FAX_ACROSS;
        settings.verticalDpi = down;
        return true;
    }
    const size_t cross = text.find('x');
    const std::string down = cross == std::string::npos ? text : text.substr(cross + 1);
    int64_t horizontal = 0, vertical = 0;
    if (!ParseNumber(text.substr(0, cross).c_str(), 1, MOST_DOTS, horizontal) ||
        !ParseNumber(down.c_str(), 1, MOST_DOTS, vertical)) {
        UsageError(textCommand,
                   "--resolution takes standard, fine, superfine or dots per inch such as 200 or "
                   "204x196");
        return false;
    }
    settings.horizontalDpi = static_cast<uint32_t>(horizontal);
    settings.verticalDpi = static_cast<uint32_t>(vertical);
    return true;
}

bool ReadLengths(const Options& options, TiffTextPageSettings& settings)
{
    uint32_t margins[2];
    const size_t given = ParseLengths(options.Value("--margins", "20x15"), 'x', margins, 2);
    if (given == 0) {
        UsageError(textCommand, "--margins takes one length, or two such as 20x15");
        return false;
    }
    settings.leftMargin = margins[0];
    settings.topMargin = margins[given - 1];
    if (ParseLengths(options.Value("--spacing", "0"), '\0', &settings.lineSpacing, 1) == 0) {
        UsageError(textCommand, "--spacing takes a length such as 1.5 or 0.1in");
        return false;
    }
    for (uint32_t stop = 0; stop < TIFF_TEXT_TAB_STOPS; ++stop) {
        settings.tabStops[stop] = (stop + 1) * TAB_DISTANCE;
    }
    if (!options.Has("--tabs")) {
        return true;
    }
    const size_t stops =
        ParseLengths(options.Value("--tabs", ""), ',', settings.tabStops, TIFF_TEXT_TAB_STOPS);
    if (stops == 0) {
        UsageError(textCommand, "--tabs takes up to 16 lengths such as 20,40,60");
        return false;
    }
    std::fill(settings.tabStops + stops, std::end(settings.tabStops), 0u);
    return true;
}

bool ReadFont(const Options& options, TiffTextPageSettings& settings)
{
    const char* const face = options.Value("--font", "Courier New");
    if (strlen(face) >= LF_FACESIZE) {
        UsageError(textCommand, "--font takes a name of at most 31 characters");
        return false;
    }
    memcpy(settings.faceName, face, strlen(face));
    settings.fontSize = NumberOption(textCommand, options, "--size", MOST_POINTS, "11");
    settings.flags = TIFF_TEXT_INCHES;
    if (options.Has("--italic")) {
        settings.flags |= TIFF_TEXT_ITALIC;
    }
    if (options.Has("--bold")) {
        settings.flags |= TIFF_TEXT_BOLD;
    }
    return settings.fontSize != 0;
}

int RunText(Arguments arguments)
{
    const Options options = ParseOptions(arguments,
                                         {"--paper", "--margins", "--font", "--size", "--spacing", "--tabs",
                                          "--resolution", "--compression", "--fill-order", "--form"},
                                         {"--bold", "--italic", "--append", "--force", "--bare-lf"});
    std::vector<Input> inputs;
    if (!CheckOptions(textCommand, options, 2, SIZE_MAX) ||
        !ReadWholeInputs(textCommand, options, std::span(options.others).first(options.others.size() - 1),
                         inputs)) {
        return WRONG_USAGE;
    }
    TextOrder order;
    order.output = options.others.back();
    order.form = options.Value("--form", "");
    order.append = options.Has("--append");
    if (options.Has("--form") && (options.Has("--paper") || options.Has("--resolution"))) {
        return UsageError(textCommand, "--form gives the page its size and resolution");
    }
    if (!ReadPaper(options, order.settings) || !ReadResolution(options, order.settings) ||
        !ReadLengths(options, order.settings) || !ReadFont(options, order.settings)) {
        return WRONG_USAGE;
    }
    order.selector = CompressionOption(textCommand, options, "g4");
    order.fillOrder = FillOrderOption(textCommand, options);
    if (order.selector == 0 || order.fillOrder == 0) {
        return WRONG_USAGE;
    }
    if (!CheckOutput(order.output) || !MayReplace(options, order.output.c_str(), inputs) ||
        !SuitsContent(order.output, ".tif") || (order.append && !CanBeAddedTo(order.output))) {
        return FAILED;
    }
    return WriteWhole(order.output, order.append, [&](const char* unfinished) {
        int result = ALL_FINE;
        for (size_t index = 0; index < inputs.size() && result == ALL_FINE; ++index) {
            order.input = inputs[index].path;
            const TemporaryFile copy;
            const bool ready = options.Has("--bare-lf") ? SetPath(order, order.input) : CopyText(order, copy);
            result = ready && (order.form.empty() || FollowForm(order)) ? DrawPages(order, unfinished)
                                                                        : int{FAILED};
        }
        return result;
    });
}

} // namespace

const Command textCommand = {
    .name = "text",
    .arguments = "IN.txt... OUT.tif [OPTION...]",
    .summary = "Draws text files as fax pages.",
    .details =
        "  --paper NAME|WxH    a4, letter, legal or a size; without it a4\n"
        "  --margins X[xY]     left and right, top and bottom; without it 20x15\n"
        "  --font NAME         without it Courier New; --size POINTS, without it 11\n"
        "  --bold, --italic\n"
        "  --spacing LENGTH    added between lines\n"
        "  --tabs L,L,...      up to 16 stops from the margin; without it every half inch\n"
        "  --resolution NAME|DPI|XxY\n"
        "                      standard, fine, superfine or dots per inch; without it fine\n"
        "  --compression NAME  none|packbits|lzw|lzw-pred|mh|g3|g3-2d|g4; without it g4\n"
        "  --fill-order 1|2    1 stores the most significant bit first, 2 the least\n"
        "  --form FORM.tif     draws page 1 on the first page of FORM.tif, in its size\n"
        "  --append            adds the pages to OUT.tif instead of replacing it\n"
        "  --force             lets several files replace OUT.tif\n"
        "  --bare-lf           takes the bytes as they are: LF without CR is left out, and so is the\n"
        "                      byte behind a CR; without it LF, CR and CR LF end lines\n"
        "\n"
        "Lengths are millimetres, or inches with \"in\" behind them. The text is UTF-8, or in the\n"
        "system's code page. All pages are written, or nothing is: OUT.tif changes when the result is\n"
        "whole.\n",
    .example = "tifftool text letter.txt fax.tif --form form.tif",
    .run = RunText,
};

} // namespace tifftool
