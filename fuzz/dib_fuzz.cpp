// Takes any bytes for a packed DIB: cuts, stretches, turns and dithers it, saves it as a page, and loads what
// was saved. The first bytes choose how.
#include "scaffold.h"

namespace {

constexpr size_t ORDER_BYTES = 8;

// A page that was saved loads in its size.
void DemandPage(HGLOBAL saved, const BITMAPINFOHEADER& header)
{
    HGLOBAL file = OpenTiffInMemory(saved, static_cast<uint32_t>(GlobalSize(saved)), T_READ);
    HGLOBAL dib = file && GetTiffImage(file, 0) ? LoadTiffChainIntoDIB(file, 0) : nullptr;
    const auto* loaded = static_cast<const BITMAPINFOHEADER*>(dib ? GlobalLock(dib) : nullptr);
    fuzz::Demand(loaded ? loaded->biWidth == header.biWidth && loaded->biHeight == std::abs(header.biHeight)
                        : TiffError() == TIFF_ERROR_MEMORY);
    if (dib)
        GlobalUnlock(dib);
    GlobalFree(dib);
    CloseTiffFile(file);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < ORDER_BYTES + sizeof(BITMAPINFOHEADER))
        return 0;
    const fuzz::Run run(16u << 20);
    BITMAPINFOHEADER header;
    std::memcpy(&header, data + ORDER_BYTES, sizeof(header));
    const fuzz::Block block({data + ORDER_BYTES, size - ORDER_BYTES});
    HGLOBAL dib = block.Get();
    GlobalFree(CropDIB(dib, data[0], data[1], data[2], data[3]));
    GlobalFree(StretchDIB(dib, data[2], data[3], data[4] & TIFF_SMOOTH));
    const RECT part = {data[0], data[1], data[0] + data[5], data[1] + data[6]};
    GlobalFree(CropStretchDIB(dib, &part, data[2], data[3], data[4] & TIFF_SMOOTH));
    GlobalFree(RotateDIB(dib, static_cast<int8_t>(data[0])));
    GlobalFree(DitherDIB(dib, data[4] % 4, data[5]));
    if (HGLOBAL saved =
            SaveTiffToMemory(nullptr, dib, TIFF_SAVE_STORED + data[7] % 8u, 1 + (data[4] >> 1 & 1))) {
        if (header.biSize != sizeof(BITMAPCOREHEADER))
            DemandPage(saved, header);
        GlobalFree(saved);
    }
    return 0;
}
