#include "pages.h"

#include "bmp.h"
#include "cals.h"
#include "describe.h"
#include "jpeg_stream.h"
#include "progress.h"
#include "source.h"

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
int HandlePage(const Source& source, uint32_t page, Damage damage, const PictureHandler& handle)
{
    const std::string where = PageName(source.path, page);
    const HGLOBAL loaded = LoadTiffChainIntoDIB(source.file.handle, page - 1);
    const uint32_t error = TiffError();
    const std::string why = WhyNotWhole(source, page - 1, error);
    DropTiffImage(source.file.handle, page - 1);
    const OwnedBlock dib(loaded);
    return loaded && (error == 0 || damage == Damage::Tolerated)
               ? handle({dib, where, page, source.pages, error})
               : ReportSentence(where, why);
}

// Handles one page, or all when `only` is 0.
int HandlePages(const char* path, uint32_t only, Damage damage, const PictureHandler& handle)
{
    const Source source(path);
    if (!HasPages(source) || !HasPage(source, only)) {
        return FAILED;
    }
    if (damage == Damage::Refused && ReportChain(source) != ALL_FINE) {
        return FAILED;
    }
    if (only != 0) {
        return HandlePage(source, only, damage, handle);
    }
    int result = ALL_FINE;
    for (uint32_t page = 1; page <= source.pages; ++page) {
        result = std::max(result, HandlePage(source, page, damage, handle));
        if (damage == Damage::Refused && result != ALL_FINE) {
            return result;
        }
        DrawProgress(source.pages, page, 0);
    }
    return std::max(result, ReportChain(source));
}

// A CALS file is one page.
int HandleCals(const char* path, Damage damage, const PictureHandler& handle)
{
    const OwnedBlock dib(LoadCALSIntoDIB(path, 0));
    const uint32_t error = TiffError();
    return dib.bytes && (error == 0 || damage == Damage::Tolerated) ? handle({dib, path, 1, 1, error})
                                                                    : ReportCals(path, error);
}

int HandlePictures(const char* path, uint32_t only, Damage damage, const PictureHandler& handle)
{
    HGLOBAL block = nullptr;
    if (const std::string failure = ReadBmp(path, block); !failure.empty()) {
        return ReportSentence(path, failure);
    }
    const OwnedBlock dib(block);
    const bool isCals = !block && IsCals(path);
    if (!block && !isCals) {
        return HandlePages(path, only, damage, handle);
    }
    if (only > 1) {
        return ReportSentence(path, isCals ? "is a CALS file, which has one page only"
                                           : "is a BMP picture, which has one page only");
    }
    return isCals ? HandleCals(path, damage, handle) : handle({dib, path, 1, 1, 0});
}

} // namespace

int ForEachPicture(const char* path, Damage damage, const PictureHandler& handle)
{
    return HandlePictures(path, 0, damage, handle);
}

int WithPicture(const char* path, uint32_t page, Damage damage, const PictureHandler& handle)
{
    return HandlePictures(path, page, damage, handle);
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
