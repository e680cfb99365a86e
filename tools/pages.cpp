#include "pages.h"

#include "bmp.h"
#include "cals.h"
#include "describe.h"
#include "jpeg_stream.h"
#include "progress.h"
#include "raster_files.h"
#include "source.h"
#include "unfinished.h"

#include <algorithm>

namespace tifftool {

namespace {

// The library's text, or which kind of JPEG it is that the library does not decode. The page is loaded.
std::string WhyNotWhole(const Source& source, uint32_t page, uint32_t error)
{
    constexpr uint32_t UNKNOWN_COMPRESSION = 11, JPEG = 7;
    std::string fault;
    if (error == UNKNOWN_COMPRESSION && ReadPageFacts(source.file.handle, page).compression == JPEG) {
        DescribeJpeg(source.file.handle, source.path, page, fault);
    }
    return fault.empty() ? DescribeError(error) : fault + " (error " + std::to_string(error) + ")";
}

// A picture that was decoded in part is not passed on as a whole one.
int HandlePage(const Source& source, uint32_t page, uint32_t count, Damage damage,
               const PictureHandler& handle)
{
    const std::string where = PageName(source.path, page);
    const HGLOBAL loaded = LoadPage(source.file.handle, page - 1);
    const uint32_t error = TiffError();
    const std::string why = WhyNotWhole(source, page - 1, error);
    const OwnedBlock dib(loaded);
    const int result = loaded && (error == 0 || damage == Damage::Tolerated)
                           ? handle({dib, where, page, count, error, &source})
                           : ReportSentence(where, why);
    DropTiffImage(source.file.handle, page - 1);
    return result;
}

// A picture by itself is page 1 of its file.
int OpenSingle(const Input& input, const char* kind, HGLOBAL picture, PictureFile& file)
{
    file.single = std::make_unique<const OwnedBlock>(picture);
    return ListPages(input.pages, 1, file.pages) == 0
               ? int{ALL_FINE}
               : ReportSentence(input.path, std::string("is a ") + kind + ", which has one page only");
}

// With tolerated damage the pages before a fault in the chain are handled.
int OpenTiff(const Input& input, Damage damage, PictureFile& file)
{
    file.source = std::make_unique<const Source>(input.path.c_str());
    return HasPages(*file.source) && SelectPages(*file.source, input.pages, file.pages) &&
                   (damage == Damage::Tolerated || ReportChain(*file.source) == ALL_FINE)
               ? ALL_FINE
               : FAILED;
}

// Loading takes 16-bit greys without a MaxSampleValue for 12-bit ones and cuts the others off. Other programs
// take them for what the format says, the full range. Only the loaded tags change.
void SetFullRange(HGLOBAL file, uint32_t page, const PageFacts& facts)
{
    constexpr uint32_t MAX_SAMPLE_VALUE = 281, SHORT_TYPE = 3, BLACK_IS_ZERO = 1;
    uint32_t most = 0;
    if (facts.samplesPerPixel == 1 && facts.bitsPerSample == 16 && facts.photometric <= BLACK_IS_ZERO &&
        !GetTiffImageInfo(file, page, MAX_SAMPLE_VALUE, &most)) {
        DefineTiffImageInfo(file, page, MAX_SAMPLE_VALUE, SHORT_TYPE, 0xFFFF);
    }
}

// Loading gives 4-bit greys levels that do not reach from black to white. Here they are those of the page.
void SetPageGreys(const PageFacts& facts, HGLOBAL dib)
{
    constexpr uint32_t BLACK_IS_ZERO = 1;
    auto* const header = static_cast<BITMAPINFOHEADER*>(GlobalLock(dib));
    if (header && header->biBitCount == 4 && facts.samplesPerPixel == 1 && facts.bitsPerSample == 4 &&
        facts.photometric <= BLACK_IS_ZERO) {
        auto* const colours = reinterpret_cast<RGBQUAD*>(header + 1);
        for (uint32_t index = 0; index < 16; ++index) {
            const auto level =
                static_cast<uint8_t>((facts.photometric == BLACK_IS_ZERO ? index : 15 - index) * 17);
            colours[index] = {level, level, level, 0};
        }
    }
    GlobalUnlock(dib);
}

} // namespace

HGLOBAL LoadPage(HGLOBAL file, uint32_t page)
{
    constexpr uint32_t UNSUPPORTED = 16;
    if (GetTiffImage(file, page)) {
        const PageFacts facts = ReadPageFacts(file, page);
        if (facts.hasFractions) {
            SetTiffError(UNSUPPORTED);
            return nullptr;
        }
        SetFullRange(file, page, facts);
    }
    const HGLOBAL loaded = LoadTiffChainIntoDIB(file, page);
    if (const uint32_t error = TiffError(); loaded) {
        SetPageGreys(ReadPageFacts(file, page), loaded);
        SetTiffError(error);
    }
    return loaded;
}

int OpenPictures(const Input& input, Damage damage, PictureFile& file)
{
    file.path = input.path;
    HGLOBAL picture = nullptr;
    if (const std::string failure = ReadBmp(input.path.c_str(), picture); !failure.empty()) {
        return ReportSentence(input.path, failure);
    }
    if (picture) {
        return OpenSingle(input, "BMP picture", picture, file);
    }
    if (const std::string failure = ReadRasterFile(input.path, picture); !failure.empty()) {
        return ReportSentence(input.path, failure);
    }
    if (picture) {
        return OpenSingle(input, "single picture", picture, file);
    }
    if (!IsCals(input.path.c_str())) {
        return OpenTiff(input, damage, file);
    }
    picture = LoadCALSIntoDIB(input.path.c_str(), 0);
    file.error = TiffError();
    const int result = OpenSingle(input, "CALS file", picture, file);
    return picture && (file.error == 0 || damage == Damage::Tolerated) ? result
                                                                       : ReportCals(input.path, file.error);
}

int HandlePicture(PictureFile& file, size_t index, Damage damage, const PictureHandler& handle)
{
    const auto count = static_cast<uint32_t>(file.pages.size());
    if (file.source) {
        return HandlePage(*file.source, file.pages[index], count, damage, handle);
    }
    return handle({*file.single, file.path, 1, count, file.error, nullptr});
}

int ForEachPicture(const Input& input, Damage damage, const PictureHandler& handle)
{
    PictureFile file;
    int result = OpenPictures(input, damage, file);
    if (result != ALL_FINE) {
        return result;
    }
    const auto count = static_cast<uint32_t>(file.pages.size());
    for (uint32_t index = 0; index < count; ++index) {
        result = std::max(result, HandlePicture(file, index, damage, handle));
        if (IsInterrupted() || (damage == Damage::Refused && result != ALL_FINE)) {
            return std::max<int>(result, FAILED);
        }
        DrawProgress(count, index + 1, 0);
    }
    return file.source ? std::max(result, ReportChain(*file.source)) : result;
}

int ForEachPicture(std::span<const Input> inputs, Damage damage, const PictureHandler& handle)
{
    int result = ALL_FINE;
    for (const Input& input : inputs) {
        result = std::max(result, ForEachPicture(input, damage, handle));
        if (damage == Damage::Refused && result != ALL_FINE) {
            break;
        }
    }
    return result;
}

int CheckDepth(const Picture& picture, uint32_t selector)
{
    const uint32_t depth = DepthOf({picture.dib.bytes, picture.dib.size});
    return !IsBilevel(selector) || depth == 1
               ? ALL_FINE
               : ReportSentence(picture.where,
                                "has " + std::to_string(depth) +
                                    " bits per pixel; this compression takes black and white pages only");
}

} // namespace tifftool
