// Pages on the clipboard.
#include "raster/gdi_guards.h"
#include "raster/load_dialog.h"
#include "raster/loaded_page.h"
#include "tiff/load.h"

using namespace tiff;

extern "C" int32_t LoadTiffFileIntoClipboard(const char* path, uint32_t page, int32_t dialog) noexcept
{
    const LoadedPage loaded(path, page);
    // Deliberate: a page that cannot be loaded counts as done, and the clipboard stays: callers paste what it
    // holds.
    if (loaded.LoadStatus() != error::None) {
        RefuseLoad(loaded.LoadStatus());
        return 1;
    }
    if (const Status status = ShowLoadDialog(dialog, loaded.File(), page); status != error::None) {
        RefuseLoad(status);
        return 0;
    }
    GdiObject<HBITMAP> bitmap(LoadTiffChainIntoBitmap(loaded.File(), page));
    const OpenedClipboard clipboard;
    if (!clipboard || !EmptyClipboard())
        return 0;
    // Deliberate: without a bitmap too, so that the clipboard becomes empty.
    if (SetClipboardData(CF_BITMAP, bitmap.Get()))
        bitmap.Release();
    return !bitmap;
}
