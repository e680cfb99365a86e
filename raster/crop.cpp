// Parts and other sizes of packed DIBs, for callers.
#include "tiff/crop.h"
#include "core/errors.h"
#include "raster/resize.h"

namespace tiff {

namespace {

bool IsResizable(const DibView& view)
{
    return view.bitCount == 24 || StandardColours(view.bitCount) != 0;
}

bool IsInside(const RECT& part, const DibView& view)
{
    return part.left >= 0 && part.top >= 0 && part.right > part.left && part.bottom > part.top &&
           static_cast<uint32_t>(part.right) <= view.width &&
           static_cast<uint32_t>(part.bottom) <= view.height;
}

struct Size {
    int32_t width, height;
};

// Without a part the whole picture.
HGLOBAL Resize(HGLOBAL dib, const RECT* part, Size size, bool smooth, Status& status)
{
    const LockedDib locked(dib);
    const DibView& view = locked.view;
    status = locked.status;
    if (status != error::None)
        return nullptr;
    const RECT whole = {0, 0, static_cast<LONG>(view.width), static_cast<LONG>(view.height)};
    const RECT& area = part ? *part : whole;
    if (!IsResizable(view))
        status = error::ColourFormat;
    else if (!IsInside(area, view) || size.width < 1 || size.height < 1)
        status = error::InvalidParameters;
    if (status != error::None)
        return nullptr;
    const auto number = [](int64_t value) { return static_cast<uint32_t>(value); };
    return ResizeDib(view,
                     {.left = number(area.left),
                      .top = number(area.top),
                      .partWidth = number(area.right - area.left),
                      .partHeight = number(area.bottom - area.top),
                      .width = number(size.width),
                      .height = number(size.height),
                      .smooth = smooth},
                     status);
}

HGLOBAL Report(HGLOBAL dib, Status status)
{
    StoreLastError(status);
    return dib;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" HGLOBAL CropDIB(HGLOBAL dib, int32_t left, int32_t top, int32_t width, int32_t height) noexcept
{
    const int64_t right = int64_t{left} + width, bottom = int64_t{top} + height;
    if (right > INT32_MAX || bottom > INT32_MAX || right < left || bottom < top)
        return Report(nullptr, error::InvalidParameters);
    const RECT part = {left, top, static_cast<LONG>(right), static_cast<LONG>(bottom)};
    Status status;
    HGLOBAL result = Resize(dib, &part, {width, height}, false, status);
    return Report(result, status);
}

extern "C" HGLOBAL StretchDIB(HGLOBAL dib, int32_t width, int32_t height, uint32_t flags) noexcept
{
    Status status;
    HGLOBAL result = Resize(dib, nullptr, {width, height}, (flags & TIFF_SMOOTH) != 0, status);
    return Report(result, status);
}

extern "C" HGLOBAL CropStretchDIB(HGLOBAL dib, const RECT* part, int32_t width, int32_t height,
                                  uint32_t flags) noexcept
{
    if (!part)
        return Report(nullptr, error::InvalidParameters);
    Status status;
    HGLOBAL result = Resize(dib, part, {width, height}, (flags & TIFF_SMOOTH) != 0, status);
    return Report(result, status);
}
