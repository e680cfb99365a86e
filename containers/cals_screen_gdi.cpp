// CALS files on the screen: the same drawing as for pages.
#include "containers/cals_rows.h"
#include "core/desktop.h"
#include "core/errors.h"
#include "core/stream.h"
#include "raster/screen.h"
#include "tiff/screen.h"

namespace tiff::cals {

static Status Draw(const ScreenOrder& order, const char* path)
{
    if (!path || !*path || !order.dc)
        return error::InvalidParameters;
    const Stream file(OpenForReading(path));
    if (!file)
        return error::InputOutput;
    const BusyCursor busy;
    RowSource source{};
    const Status status = OpenRows(file.Get(), source);
    return status == error::None ? DrawRows(source, order) : status;
}

} // namespace tiff::cals

using namespace tiff;

extern "C" int32_t DecompressCALSToScreen(HWND window, HDC dc, const char* path, const int32_t* zoom,
                                          uint32_t flags) noexcept
{
    const Status status = cals::Draw({window, dc, zoom, flags}, path);
    StoreLastError(status);
    return status == error::None;
}

extern "C" intptr_t FlushCALSLineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushMonoLineToScreen(line, row, context);
}

extern "C" intptr_t FlushCALS90LineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushMonoRotLineToScreen(line, row, context);
}

extern "C" intptr_t FlushCALS180LineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushMonoRot18LineToScreen(line, row, context);
}

extern "C" intptr_t FlushCALS270LineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushMonoRot27LineToScreen(line, row, context);
}
