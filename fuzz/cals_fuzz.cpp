// Takes any bytes for a CALS file in memory: its numbers, its notes and its picture.
#include "containers/cals_rows.h"
#include "core/stream.h"
#include "raster/dib_sink.h"
#include "scaffold.h"

#include <array>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const fuzz::Run run(64u << 20);
    const fuzz::Block block({data, size});
    {
        const tiff::Stream stream(tiff::OpenMemoryStream(block.Get(), static_cast<uint32_t>(size)));
        std::array<uint8_t, tiff::cals::HEADER_BYTES> header;
        if (tiff::cals::ReadHeader(stream.Get(), header) == 0) {
            std::array<char, tiff::cals::BLOCK_BYTES> texts{};
            TiffCalsNotes notes;
            tiff::cals::ReadNotes(header, texts.data(), notes);
            fuzz::Demand(texts.back() == 0);
        }
        mSeek(stream.Get(), 0, 0);
        tiff::RowSource source{};
        tiff::Status status = tiff::cals::OpenRows(stream.Get(), source);
        if (status == 0)
            GlobalFree(tiff::RowsToDib(source, status));
    }
    return 0;
}
