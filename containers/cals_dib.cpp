// CALS files to packed DIBs and back, and their headers for callers.
#include "containers/cals_dialogs.h"
#include "containers/cals_rows.h"
#include "core/desktop.h"
#include "core/errors.h"
#include "core/file_rewrite.h"
#include "core/global_block.h"
#include "core/stream.h"
#include "raster/dib.h"
#include "raster/dib_sink.h"
#include "raster/load_dialog.h"
#include "raster/save_page.h"
#include "tiff/lines.h"

#include <algorithm>
#include <array>

namespace tiff::cals {

namespace {

using HeaderBytes = std::array<uint8_t, HEADER_BYTES>;

// A new block of BLOCK_BYTES that a step fills; null with an error when it fails.
template <class Fill>
HGLOBAL FilledBlock(Fill fill)
{
    GlobalBlock block(BLOCK_BYTES);
    Locked<uint8_t> memory(block.Get());
    const Status status = memory ? fill(memory.Get()) : Status{error::NotEnoughMemory};
    memory.Unlock();
    if (status == error::None)
        return block.Release();
    StoreLastError(status);
    return nullptr;
}

HGLOBAL LoadDib(const char* path, int32_t dialog, Status& status)
{
    HeaderBytes header;
    status = ReadHeaderOfFile(path, header);
    if (status == error::None && dialog)
        status = ShowHeader({nullptr, path, header.data()});
    if (status != error::None)
        return nullptr;
    const BusyCursor busy;
    const Stream file(OpenForReading(path));
    RowSource source{};
    status = file ? OpenRows(file.Get(), source) : Status{error::InputOutput};
    return status == error::None ? RowsToDib(source, status) : nullptr;
}

// Rows from the top are asked for in the other order.
struct DibLines {
    TiffEncodeLineContext context;
    bool topDown;
};

intptr_t FillFromDib(void* line, uint32_t row, void* lines)
{
    auto* from = static_cast<DibLines*>(lines);
    return DllFillCALSLineDIB(line, from->topDown ? from->context.height - 1 - row : row, &from->context);
}

bool IsBlack(std::span<const uint8_t> colours)
{
    return std::ranges::all_of(colours.first(3), [](uint8_t level) { return level == 0; });
}

DibLines LinesOf(const DibView& view)
{
    DibLines lines{};
    lines.context.pixelBits = view.pixels;
    lines.context.height = view.height;
    lines.context.lineBytes = (view.width + 7) / 8;
    lines.context.strideOrColourUse = view.stride;
    lines.context.invert = IsBlack(view.colours);
    lines.topDown = view.topDown;
    return lines;
}

TiffCalsInformation InformationOf(const DibView& view, const uint32_t* orientation)
{
    return {.rasterType = 1,
            .orientation = {orientation ? orientation[0] : 90, orientation ? orientation[1] : 270},
            .pixelsPerLine = view.width,
            .lines = view.height,
            .dotsPerInch = ToDotsPerInch(view.dotsPerMetreX)};
}

Status WriteFile(const char* path, Header header, const DibView& view)
{
    const Stream file(OpenDiskStream(path, GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS));
    if (!file || WriteStream(file.Get(), header.data(), HEADER_BYTES) != HEADER_BYTES)
        return error::InputOutput;
    DibLines lines = LinesOf(view);
    return EncodeRawImage({.stream = file.Get(),
                           .width = view.width,
                           .rows = view.height,
                           .compression = compression::Group4,
                           .fillOrder = TIFF_MSB_FIRST,
                           .byteOrder = TIFF_INTEL},
                          {FillFromDib, &lines});
}

// Nothing is deleted before the new file has its place: an old one is back when that fails.
Status ReplaceFile(const char* path, Header header, const DibView& view)
{
    const BusyCursor busy;
    Replacement target(path, Naming::InFolder, OnFailure::DeleteNew);
    if (!target)
        return target.NameStatus();
    if (const Status status = WriteFile(target.Name(), header, view); status != error::None)
        return status;
    SetAside before(path);
    if (before.MoveStatus() != error::None)
        return before.MoveStatus();
    const Status status = target.Place();
    if (status == error::None)
        before.Drop();
    return status;
}

struct SaveOrder {
    const char* path;
    const TiffCalsNotes* notes;
    const uint32_t* orientation;
    int32_t edit;
};

Status SaveDib(const SaveOrder& order, HGLOBAL dib)
{
    if (!order.path || !*order.path)
        return error::InvalidParameters;
    Locked<uint8_t> block(dib);
    if (!block)
        return error::NotEnoughMemory;
    DibView view;
    if (const Status status = CompleteDib({block.Get(), GlobalSize(dib)}, view); status != error::None)
        return status;
    if (view.bitCount != 1)
        return error::ColourFormat;
    HeaderBytes header;
    WriteHeader(header, InformationOf(view, order.orientation), order.notes ? *order.notes : TiffCalsNotes{});
    if (order.edit) {
        const Status status = EditHeader({nullptr, order.path, header.data()});
        if (status != error::None)
            return status;
    }
    return ReplaceFile(order.path, header, view);
}

} // namespace

} // namespace tiff::cals

using namespace tiff;

extern "C" HGLOBAL ReadCALSHead(const char* path) noexcept
{
    return cals::FilledBlock([path](uint8_t* memory) {
        return cals::ReadHeaderOfFile(path, cals::NewHeader(memory, cals::HEADER_BYTES));
    });
}

extern "C" const char* FindCALSRecord(const char* header, const char* keyword) noexcept
{
    if (!header || !keyword)
        return nullptr;
    const cals::Header records(reinterpret_cast<const uint8_t*>(header), cals::HEADER_BYTES);
    const size_t at = cals::FindRecord(records, keyword);
    return at < cals::HEADER_BYTES ? header + at : nullptr;
}

extern "C" int32_t ReadCALSInfo(const char* path, TiffCalsInformation* information) noexcept
{
    cals::HeaderBytes header;
    Status status = information ? cals::ReadHeaderOfFile(path, header) : Status{error::InvalidParameters};
    if (status == error::None && !cals::ReadInformation(header, *information))
        status = error::NotCals;
    if (status != error::None)
        StoreLastError(status);
    return status == error::None;
}

extern "C" HGLOBAL ReadCALSNote(const char* path, TiffCalsNotes* notes) noexcept
{
    return cals::FilledBlock([path, notes](uint8_t* memory) -> Status {
        cals::HeaderBytes header;
        if (!notes)
            return error::InvalidParameters;
        if (const Status status = cals::ReadHeaderOfFile(path, header); status != error::None)
            return status;
        cals::ReadNotes(header, reinterpret_cast<char*>(memory), *notes);
        return error::None;
    });
}

extern "C" HGLOBAL DefineCALSHead(const TiffCalsInformation* information, const TiffCalsNotes* notes) noexcept
{
    return cals::FilledBlock([information, notes](uint8_t* memory) -> Status {
        if (!information)
            return error::InvalidParameters;
        cals::WriteHeader(cals::NewHeader(memory, cals::HEADER_BYTES), *information,
                          notes ? *notes : TiffCalsNotes{});
        return error::None;
    });
}

extern "C" HGLOBAL LoadCALSIntoDIB(const char* path, int32_t showInformation) noexcept
{
    Status status = error::None;
    HGLOBAL dib = cals::LoadDib(path, showInformation, status);
    RefuseLoad(status);
    return dib;
}

extern "C" int32_t SaveDIBInCALSFormat(const char* path, HGLOBAL dib, const TiffCalsNotes* notes,
                                       const uint32_t* orientation, int32_t edit) noexcept
{
    return FinishSave(cals::SaveDib({path, notes, orientation, edit}, dib));
}

extern "C" intptr_t DllFillCALSLineDIB(void* line, uint32_t row, void* context) noexcept
{
    return DllFillTiffLineDIB(line, row, context);
}

extern "C" intptr_t DllFlushCALSLineDIB(void* line, uint32_t row, void* context) noexcept
{
    return DllFlushTiffLineDIB(line, row, context);
}
