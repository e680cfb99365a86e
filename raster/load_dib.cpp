// Pages to packed DIBs.
#include "codecs/decode_quality.h"
#include "core/desktop.h"
#include "core/errors.h"
#include "raster/dib_sink.h"
#include "raster/load_dialog.h"
#include "raster/loaded_page.h"
#include "tiff/load.h"

namespace tiff {

// Loads a page whose tags are loaded; a status other than 0 is passed on.
static HGLOBAL LoadDib(HGLOBAL file, uint32_t page, PageRows rows, Status status)
{
    ForgetQuality(); // also when there is no page
    RowSource source{};
    if (status == error::None)
        status = OpenPageRows(file, page, rows, source);
    HGLOBAL dib = nullptr;
    if (status == error::None) {
        const BusyCursor busy;
        dib = RowsToDib(source, status);
    }
    RefuseLoad(status);
    return dib;
}

} // namespace tiff

using namespace tiff;

extern "C" HGLOBAL LoadTiffIntoDIB(const char* path, uint32_t page, int32_t dialog) noexcept
{
    const LoadedPage loaded(path, page);
    Status status = loaded.LoadStatus();
    if (status == error::None)
        status = ShowLoadDialog(dialog, loaded.File(), page);
    return LoadDib(loaded.File(), page, PageRows::Any, status);
}

extern "C" HGLOBAL LoadTiffChainIntoDIB(HGLOBAL file, uint32_t page) noexcept
{
    return file ? LoadDib(file, page, PageRows::Any, LoadTags(file, page)) : nullptr;
}

extern "C" HGLOBAL LoadTiffFromMemory(const void* bytes, uint32_t size, uint32_t page) noexcept
{
    const LoadedPage loaded(bytes, size, page);
    return LoadDib(loaded.File(), page, PageRows::Any, loaded.LoadStatus());
}

extern "C" HGLOBAL LoadNonRGBTiffIntoDIB(const char* path, uint32_t page) noexcept
{
    const LoadedPage loaded(path, page);
    return LoadDib(loaded.File(), page, PageRows::ColourSpace, loaded.LoadStatus());
}

extern "C" uint32_t GetTiffColorSpace(const char* path, int32_t page) noexcept
{
    static constexpr uint32_t UNKNOWN = 0xFFFFFFFF;
    if (!path || page < 0) {
        SetTiffError(path ? error::IndexOutOfRange : error::InvalidParameters);
        return UNKNOWN;
    }
    GlobalBlock block;
    block.Adopt(LoadNonRGBTiffIntoDIB(path, static_cast<uint32_t>(page)));
    Locked<BITMAPINFOHEADER> header(block.Get());
    return header ? header->biCompression : UNKNOWN;
}
