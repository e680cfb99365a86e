#include "faxable.h"

#include "pixels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace tifftool {

namespace {

constexpr uint32_t MOST_COLUMNS = 20000;
constexpr double INCHES_PER_METRE = 39.37;

constexpr struct {
    const char* name;
    uint32_t down;
} resolutions[] = {{"standard", 98}, {"fine", 196}, {"superfine", 391}};

constexpr struct {
    const char* name;
    uint32_t method;
} methods[] = {{"diffusion", TIFF_DITHER_DIFFUSION},
               {"ordered", TIFF_DITHER_ORDERED},
               {"threshold", TIFF_DITHER_THRESHOLD}};

LONG DotsPerMetre(uint32_t dotsPerInch)
{
    return static_cast<LONG>(dotsPerInch * INCHES_PER_METRE + 0.5);
}

// As many rows as leave the picture's proportions on paper what they are. Pixels are square unless it says
// otherwise.
uint32_t RowsFor(const FaxForm& form, const Pixels& pixels)
{
    const double aspect =
        pixels.dotsAcross && pixels.dotsDown ? pixels.dotsAcross / static_cast<double>(pixels.dotsDown) : 1;
    const double rows =
        std::floor(pixels.height * aspect * form.width / pixels.width * form.down / FAX_ACROSS + 0.5);
    return static_cast<uint32_t>(std::clamp(rows, 1.0, static_cast<double>(INT32_MAX)));
}

// Stretching takes three bytes a pixel.
HGLOBAL WithoutFourthByte(const Pixels& pixels)
{
    const size_t stride = (size_t{pixels.width} * 3 + 3) / 4 * 4;
    const HGLOBAL made =
        GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, sizeof(BITMAPINFOHEADER) + stride * pixels.height);
    auto* const bytes = made ? static_cast<uint8_t*>(GlobalLock(made)) : nullptr;
    if (!bytes) {
        SetTiffError(TIFF_ERROR_MEMORY);
        return nullptr;
    }
    BITMAPINFOHEADER header = {.biSize = sizeof header,
                               .biWidth = static_cast<LONG>(pixels.width),
                               .biHeight = static_cast<LONG>(pixels.height),
                               .biPlanes = 1,
                               .biBitCount = 24};
    memcpy(bytes, &header, sizeof header);
    for (uint32_t row = 0; row < pixels.height; ++row) {
        const uint8_t* from = StoredRow(pixels, row).data();
        uint8_t* to = bytes + sizeof header + stride * (pixels.height - 1 - row);
        for (uint32_t column = 0; column < pixels.width; ++column, from += 4, to += 3) {
            memcpy(to, from, 3);
        }
    }
    GlobalUnlock(made);
    return made;
}

void SetResolution(HGLOBAL dib, uint32_t down)
{
    auto* const header = static_cast<BITMAPINFOHEADER*>(GlobalLock(dib));
    header->biXPelsPerMeter = DotsPerMetre(FAX_ACROSS);
    header->biYPelsPerMeter = DotsPerMetre(down);
    GlobalUnlock(dib);
}

HGLOBAL Fitted(const FaxForm& form, HGLOBAL dib, const Pixels& pixels)
{
    const auto width = static_cast<int32_t>(form.width), rows = static_cast<int32_t>(RowsFor(form, pixels));
    const bool isInSize = pixels.width == form.width && pixels.height == static_cast<uint32_t>(rows);
    // Bilevel pages become greys only where those become dots again.
    const uint32_t flags = !isInSize && (form.dithers || pixels.depth != 1) ? TIFF_SMOOTH : 0u;
    const OwnedBlock narrow(pixels.depth == 32 ? WithoutFourthByte(pixels) : nullptr);
    const HGLOBAL fitted = pixels.depth == 32 && !narrow.handle
                               ? nullptr
                               : StretchDIB(narrow.handle ? narrow.handle : dib, width, rows, flags);
    if (fitted) {
        SetResolution(fitted, form.down);
    }
    return fitted;
}

} // namespace

uint32_t FaxResolution(const std::string& name)
{
    const auto* const found = std::ranges::find_if(
        resolutions, [&name](const auto& resolution) { return name == resolution.name; });
    return found == std::end(resolutions) ? 0 : found->down;
}

bool ReadFaxForm(const Command& command, const Options& options, FaxForm& form)
{
    const std::string name = options.Value("--dither", ""),
                      resolution = options.Value("--resolution", "fine");
    const auto* const method = std::ranges::find_if(
        methods, [&name](const auto& each) { return name.empty() || name == each.name; });
    form.down = FaxResolution(resolution);
    form.dithers = options.Has("--dither");
    if (method == std::end(methods)) {
        UsageError(command,
                   "unknown way to dither \"" + name + "\"; there are diffusion, ordered, threshold");
        return false;
    }
    form.method = method->method;
    if (form.down == 0 || (options.Has("--resolution") && !options.Has("--fit"))) {
        UsageError(command, form.down == 0 ? "unknown resolution \"" + resolution +
                                                 "\"; there are standard, fine, superfine"
                                           : "--resolution goes with --fit");
        return false;
    }
    if (options.Has("--threshold") && (!form.dithers || form.method != TIFF_DITHER_THRESHOLD)) {
        UsageError(command, "--threshold goes with --dither=threshold");
        return false;
    }
    form.threshold = NumberOption(command, options, "--threshold", 255, "128");
    form.width = options.Has("--fit") ? NumberOption(command, options, "--fit", MOST_COLUMNS) : 0;
    return form.threshold != 0 && (form.width != 0 || !options.Has("--fit"));
}

HGLOBAL MakeFaxable(const FaxForm& form, const OwnedBlock& dib)
{
    const Pixels pixels = ReadPixels({dib.bytes, dib.size});
    if (form.width == 0 || pixels.depth == 0) {
        return DitherDIB(dib.handle, form.method, form.threshold);
    }
    const HGLOBAL fitted = Fitted(form, dib.handle, pixels);
    if (!form.dithers || !fitted) {
        return fitted;
    }
    const OwnedBlock grey(fitted);
    return DitherDIB(grey.handle, form.method, form.threshold);
}

} // namespace tifftool
