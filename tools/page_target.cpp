#include "page_target.h"

namespace tifftool {

namespace {

constexpr uint32_t MOTOROLA_FILE = 35;
constexpr size_t LARGE_PICTURE = 64u << 20;

// The page is made in memory and appended to the open file.
int SaveByMemory(PageTarget& target, const OwnedBlock& dib, const std::string& where, uint32_t selector,
                 uint32_t fillOrder)
{
    if (const int result = OpenTarget(target); result != ALL_FINE) {
        return result;
    }
    const OwnedBlock saved(SaveTiffToMemory(nullptr, dib.handle, selector, fillOrder));
    if (!saved.handle) {
        return ReportError(where, TiffError());
    }
    const OpenFile page(OpenTiffInMemory(saved.handle, static_cast<uint32_t>(saved.size), T_READ));
    return CopyTiffImage(page.handle, 0, target.file->handle) ? ALL_FINE
                                                              : ReportError(target.name, TiffError());
}

} // namespace

int OpenTarget(PageTarget& target)
{
    if (!target.file) {
        target.file = std::make_unique<OpenFile>(OpenTiffFile(target.path, T_APPEND));
    }
    TiffFileInformation facts{};
    if (!target.file->handle || !GetTiffFileInfo(target.file->handle, &facts)) {
        return ReportError(target.name, TiffError());
    }
    const bool mixed = facts.pageCount != 0 && facts.byteOrder == TIFF_MOTOROLA;
    return mixed ? ReportError(target.name, MOTOROLA_FILE) : ALL_FINE;
}

int AppendDib(PageTarget& target, const OwnedBlock& dib, const std::string& where, uint32_t selector,
              uint32_t fillOrder)
{
    if (dib.size < LARGE_PICTURE) {
        return SaveByMemory(target, dib, where, selector, fillOrder);
    }
    target.file.reset();
    return SaveDIBInTiffFileExt(target.path, dib.handle, selector, 0, fillOrder)
               ? ALL_FINE
               : ReportError(where, TiffError());
}

} // namespace tifftool
