// Takes any bytes for a CALS file in memory: its numbers, its notes and its picture.
#include "containers/cals_rows.h"
#include "core/process_state.h"
#include "core/stream.h"
#include "raster/dib_sink.h"
#include "standin/standin.h"

#include <array>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool attached = tiff::AttachProcess(nullptr);
    if (!attached || size == 0)
        return 0;
    standin::LimitAllocation(64u << 20);
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, size);
    std::memcpy(GlobalLock(block), data, size);
    GlobalUnlock(block);
    {
        const tiff::Stream stream(tiff::OpenMemoryStream(block, static_cast<uint32_t>(size)));
        std::array<uint8_t, tiff::cals::HEADER_BYTES> header;
        if (tiff::cals::ReadHeader(stream.Get(), header) == 0) {
            std::array<char, tiff::cals::BLOCK_BYTES> texts{};
            TiffCalsNotes notes;
            tiff::cals::ReadNotes(header, texts.data(), notes);
            if (texts.back() != 0)
                std::abort();
        }
        mSeek(stream.Get(), 0, 0);
        tiff::RowSource source{};
        tiff::Status status = tiff::cals::OpenRows(stream.Get(), source);
        if (status == 0)
            GlobalFree(tiff::RowsToDib(source, status));
    }
    GlobalFree(block);
    return 0;
}
