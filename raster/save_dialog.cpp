#include "raster/save_dialog.h"

#include "raster/dialogs.h"
#include "raster/save_page.h"
#include "tiff/save.h"

#include <cstddef>
#include <cstring>

namespace tiff {

namespace {

constexpr size_t TEXT_BYTES = SAVE_TEXT_BYTES - 1; // the most that a text in the options can hold

// The dialogs library is compiled against these.
static_assert(offsetof(TiffSavePicture, bits) == 24);
static_assert(sizeof(TiffSaveDialogOptions) == 2 * TEXT_BYTES + 16);

using SaveDialog = int32_t (*)(const char*, const TiffSavePicture*, TiffSaveDialogOptions*);

void CopyText(char (&target)[SAVE_TEXT_BYTES], const char* source)
{
    const size_t length = strnlen(source, TEXT_BYTES);
    std::memcpy(target, source, length);
    target[length] = 0;
}

TiffSavePicture DescribePicture(const PictureFormat& format)
{
    TiffSavePicture picture{};
    picture.geometry.width = format.stored.biWidth;
    picture.geometry.height = format.stored.biHeight;
    picture.geometry.rowBytes = format.lineBytes;
    picture.geometry.planes = 1;
    picture.geometry.bitsPerPlane = format.stored.biBitCount;
    return picture;
}

} // namespace

Status ShowSaveDialog(const char* path, const PictureFormat& format, SaveSettings& settings)
{
    Module library;
    const FARPROC function = FindDialog("TiffSaveDialog", library);
    if (!function)
        return error::DialogLibraryMissing;
    CopyText(settings.description, path);

    const TiffSavePicture picture = DescribePicture(format);
    TiffSaveDialogOptions options{};
    std::memcpy(options.description, settings.description, TEXT_BYTES);
    std::memcpy(options.artist, settings.artist, TEXT_BYTES);
    options.selector = settings.selector;
    options.fillOrder = settings.fillOrder;
    options.photometric = settings.photometric;
    options.colourCount = settings.colourCount;
    if (!reinterpret_cast<SaveDialog>(reinterpret_cast<void*>(function))(path, &picture, &options))
        return CANCELLED;

    CopyText(settings.description, options.description);
    CopyText(settings.artist, options.artist);
    settings.selector = options.selector;
    settings.fillOrder = options.fillOrder;
    settings.photometric = options.photometric;
    settings.colourCount = options.colourCount;
    return error::None;
}

} // namespace tiff
