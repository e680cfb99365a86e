// Decoding for applications. Our own line routines, when an application names them, are given less to
// do than others.
#include "codecs/decode_driver.h"
#include "raster/dib_lines.h"
#include "tiff/codecs.h"

namespace tiff {

static int32_t DecodeIntoDib(HGLOBAL file, uint32_t page, uint32_t firstStrip, uint32_t rowCount,
                             TiffDecodeLineContext& dib)
{
    const RowsInPlace rows = DibRows(dib, false);
    return DecodePage(file, page, firstStrip, rowCount, {DllFlushTiffLineDIB, &dib, dib.lineBytes, &rows});
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t DecodeTiffImage(HGLOBAL file, uint32_t page, uint32_t firstStrip, uint32_t rowCount,
                                   void* userData, TiffLineCallback lineCallback) noexcept
{
    auto* dib = static_cast<TiffDecodeLineContext*>(userData);
    if (dib && lineCallback == DllFlushTiffLineDIB)
        return DecodeIntoDib(file, page, firstStrip, rowCount, *dib);
    if (dib && lineCallback == DllFlushTiffLine24DIB)
        return DecodePage(file, page, firstStrip, rowCount, {FlushSwappedLine, dib, dib->lineBytes});
    return DecodePage(file, page, firstStrip, rowCount, {lineCallback, userData});
}
