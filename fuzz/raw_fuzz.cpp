// Any bytes as raw fax code, of which the first four say what is known, appended to a file; and any bytes as
// a TIFF in plain memory. A page that was made must load with all its rows, and with the damage that was
// told.
#include "scaffold.h"

// Each byte may be eight rows, which are decoded in each way that is possible: ten times as often for any
// width.
static constexpr size_t MOST_BYTES = 600, MOST_BYTES_OF_ANY_WIDTH = 100;

static void AppendAndLoad(fuzz::Input code, TiffRawFax fax)
{
    const fuzz::DiskFile file({});
    const bool made = AppendRawFaxToTiff(file.Path(), code.data(), static_cast<uint32_t>(code.size()), &fax);
    const fuzz::Bytes written = file.Content();
    char detail[300];
    fuzz::Demand(TiffErrorDetail(detail, sizeof(detail)) > 0);
    fuzz::Demand(made || written.empty());
    if (!made)
        return;
    fuzz::Keep(written);
    const HGLOBAL dib = LoadTiffFromMemory(written.data(), static_cast<uint32_t>(written.size()), 0);
    fuzz::Demand(dib || TiffError() == TIFF_ERROR_MEMORY);
    if (!dib)
        return;
    GlobalFree(dib);
    TiffDecodeQuality quality = {};
    fuzz::Demand(GetTiffDecodeQuality(&quality));
    fuzz::Demand(quality.rows == fax.rows && quality.decodedRows == fax.rows);
    // A page that was encoded anew has no damage left.
    fuzz::Demand(!quality.isCounted ||
                 (quality.badRows == fax.badRows && quality.longestBadRun == fax.longestBadRun));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static constexpr uint32_t schemes[] = {0, 2, 3, 4, 0x10003, 0x20003};
    static constexpr uint32_t widths[] = {0, 8, 1728, 1, 300, 2500};
    const fuzz::Run run(64u << 20);
    fuzz::Choices choices{{data, size}};
    TiffRawFax fax = {};
    fax.width = choices.OneOf(widths);
    fax.scheme = choices.OneOf(schemes);
    fax.fillOrder = choices.Below(3);
    fax.alignment = choices.Below(3);
    const fuzz::Input bytes = choices.left.first(
        std::min(choices.left.size(), fax.width == 0 ? MOST_BYTES_OF_ANY_WIDTH : MOST_BYTES));
    if (bytes.empty())
        return 0;
    if (const HGLOBAL dib =
            LoadTiffFromMemory(bytes.data(), static_cast<uint32_t>(bytes.size()), bytes[0] % 3u))
        GlobalFree(dib);
    AppendAndLoad(bytes, fax);
    return 0;
}
