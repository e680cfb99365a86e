#include "view_save.h"

#include "bmp.h"
#include "diagnosis.h"

#include <functional>

namespace tiffview {

namespace {

constexpr const char* NOT_SAVED = "The page was not saved. ";

bool EndsWith(const std::string& path, const char* extension)
{
    const size_t dot = path.find_last_of("./\\");
    return dot != std::string::npos && lstrcmpiA(path.c_str() + dot, extension) == 0;
}

// Of the library's last call.
std::string Cause(bool done)
{
    return done ? "" : ErrorText(TiffError());
}

// Lets `write` write a file of a new name beside the path, which then takes the path's place.
std::string WriteBeside(const std::string& path,
                        const std::function<std::string(const char* unfinished)>& write)
{
    const size_t separator = path.find_last_of("/\\:");
    const std::string folder = separator == std::string::npos ? "." : path.substr(0, separator + 1);
    char unfinished[MAX_PATH];
    if (!GetTempFileNameA(folder.c_str(), "tif", 0, unfinished)) {
        return tifftool::SystemCause(GetLastError());
    }
    std::string failure = write(unfinished);
    if (failure.empty() && !MoveFileExA(unfinished, path.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        failure = tifftool::SystemCause(GetLastError());
    }
    if (!failure.empty()) {
        DeleteFileA(unfinished);
    }
    return failure;
}

std::string WriteBmp(HGLOBAL dib, const char* path)
{
    const auto* bytes = static_cast<const uint8_t*>(GlobalLock(dib));
    const uint32_t cause = tifftool::WriteBmp(path, {bytes, GlobalSize(dib)}, false);
    GlobalUnlock(dib);
    return cause ? tifftool::SystemCause(cause) : "";
}

std::string SaveDib(HGLOBAL dib, const std::string& path, Existing existing)
{
    const auto saveTiff = [dib](const char* file) {
        return Cause(SaveDIBInTiffFile(file, dib, TIFF_SAVE_GROUP4, 0) != 0);
    };
    switch (SavedAsOf(path)) {
    case SavedAs::Bmp:
        return WriteBeside(path, [dib](const char* file) { return WriteBmp(dib, file); });
    case SavedAs::Cals:
        // The user may have cancelled the dialog.
        return Cause(SaveDIBInCALSFormat(path.c_str(), dib, nullptr, nullptr, 1) || TiffError() == 0);
    default:
        return existing == Existing::Extended ? saveTiff(path.c_str()) : WriteBeside(path, saveTiff);
    }
}

std::string SaveDecoded(const Document& document, const std::string& path, Existing existing)
{
    HGLOBAL dib = LoadPage(document);
    const uint32_t damage = TiffError();
    if (!dib) {
        return NOT_SAVED + ErrorText(damage);
    }
    const std::string failure = SaveDib(dib, path, existing);
    GlobalFree(dib);
    if (!failure.empty()) {
        return NOT_SAVED + failure;
    }
    return damage ? "Only a part of the page could be read and saved. " + ErrorText(damage) : "";
}

std::string MovePage(const Document& document, const std::string& path, Existing existing)
{
    const auto append = [&document](const char* file) {
        return Cause(CopyTiffImageInFile(document.path.c_str(), document.page, file, T_APPEND) != 0);
    };
    const std::string failure =
        existing == Existing::Extended ? append(path.c_str()) : WriteBeside(path, append);
    return failure.empty() ? "" : NOT_SAVED + failure;
}

} // namespace

SavedAs SavedAsOf(const std::string& path)
{
    return EndsWith(path, ".bmp")                              ? SavedAs::Bmp
           : EndsWith(path, ".cal") || EndsWith(path, ".cals") ? SavedAs::Cals
                                                               : SavedAs::Tiff;
}

std::string SavePage(const Document& document, const std::string& path, Existing existing)
{
    const bool extends = existing == Existing::Extended && SavedAsOf(path) == SavedAs::Tiff;
    // Its other pages, or its notes, would be lost.
    if (!extends && tifftool::IsSameFile(document.path, path)) {
        return std::string(NOT_SAVED) + "It would take the place of the file that it is in.";
    }
    const bool moves = document.format == TIFF_FORMAT_TIFF && SavedAsOf(path) == SavedAs::Tiff;
    return moves ? MovePage(document, path, existing) : SaveDecoded(document, path, existing);
}

} // namespace tiffview
