#include "pages.h"

#include "bmp.h"
#include "diagnosis.h"
#include "progress.h"

#include <cstring>

namespace tifftool {

namespace {

// Half a picture is not passed on as a whole one.
int HandlePage(HGLOBAL file, uint32_t page, const std::string& where, const PictureHandler& handle)
{
    const HGLOBAL loaded = LoadTiffChainIntoDIB(file, page);
    const uint32_t error = TiffError();
    DropTiffImage(file, page);
    const OwnedBlock dib(loaded);
    return loaded && error == 0 ? handle(dib, where) : ReportError(where, error);
}

int HandlePages(const char* path, uint32_t first, uint32_t last, const PictureHandler& handle)
{
    const OpenFile file(OpenTiffFile(path, T_READ));
    const uint32_t openError = TiffError();
    if (!file.handle || openError != 0) {
        return ReportOpenFailure(path, openError);
    }
    const uint32_t pages = NumberOfTiffImages(file.handle, TIFF_ALL_PAGES);
    if (pages == 0) {
        return ReportSentence(path, "has no pages");
    }
    if (last == 0) {
        last = pages;
    }
    for (uint32_t page = first; page <= last; ++page) {
        const std::string where = std::string(path) + ", page " + std::to_string(page);
        if (const int result = HandlePage(file.handle, page - 1, where, handle); result != ALL_FINE) {
            return result;
        }
        DrawProgress(last - first + 1, page - first + 1, 0);
    }
    return ALL_FINE;
}

int HandlePictures(const char* path, uint32_t first, uint32_t last, const PictureHandler& handle)
{
    HGLOBAL picture = nullptr;
    if (const std::string failure = ReadBmp(path, picture); !failure.empty()) {
        return ReportSentence(path, failure);
    }
    return picture ? handle(OwnedBlock(picture), path) : HandlePages(path, first, last, handle);
}

} // namespace

int ForEachPicture(const char* path, const PictureHandler& handle)
{
    return HandlePictures(path, 1, 0, handle);
}

int WithPicture(const char* path, uint32_t page, const PictureHandler& handle)
{
    return HandlePictures(path, page, page, handle);
}

int CheckDepth(const OwnedBlock& dib, uint32_t selector, const std::string& where)
{
    BITMAPINFOHEADER header = {};
    memcpy(&header, dib.bytes, sizeof header);
    if (selector < FIRST_BILEVEL || header.biBitCount == 1) {
        return ALL_FINE;
    }
    return ReportSentence(where, "has " + std::to_string(header.biBitCount) +
                                     " bits per pixel; this compression takes black and white pages only");
}

} // namespace tifftool
