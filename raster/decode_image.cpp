// Decoding for applications. Replaces our own exported line routines by faster ones for the same pixels.
#include "codecs/decode_driver.h"
#include "core/errors.h"
#include "core/registry.h"
#include "raster/dib_lines.h"
#include "tiff/codecs.h"

namespace tiff {

static Status DecodeForCaller(HGLOBAL file, uint32_t page, uint32_t firstStrip, uint32_t rowCount,
                              void* userData, TiffLineCallback lineCallback)
{
    LineTarget target{lineCallback, userData};
    RowsInPlace rows;
    const DibRoutine* known = userData ? BehindExport(lineCallback) : nullptr;
    if (known) {
        const auto& dib = *static_cast<const TiffDecodeLineContext*>(userData);
        target.routine = known->routine;
        target.bytesRead = known->leavesLines ? dib.lineBytes : 0;
        rows = DibRows(dib, false);
        target.rows = known->copies ? &rows : nullptr;
    }
    return DecodePage(file, page, firstStrip, rowCount, target);
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t DecodeTiffImage(HGLOBAL file, uint32_t page, uint32_t firstStrip, uint32_t rowCount,
                                   void* userData, TiffLineCallback lineCallback) noexcept
{
    const Status loaded = PageStatus(file, page);
    if (file && loaded == error::InvalidHandle)
        SetTiffError(loaded);
    // Deliberate: without a loaded page the thread's last outcome is reported again.
    if (loaded != error::None)
        return TiffError() == error::None;
    const Status status = DecodeForCaller(file, page, firstStrip, rowCount, userData, lineCallback);
    StoreLastError(status);
    return status == error::None;
}
