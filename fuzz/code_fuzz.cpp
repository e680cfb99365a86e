// Decodes any bytes as a bare stream: the first four choose scheme, width and fill order. CCITT code is
// decoded again with the careful loops alone; the results must be equal.
#include "core/stream.h"
#include "scaffold.h"
#include "support/ccitt_loops.h"
#include "tiff/tiff.h"

static intptr_t IgnoreLine(void*, uint32_t, void*)
{
    return 0;
}

static HGLOBAL Copy(const uint8_t* head, size_t headBytes, const uint8_t* data, size_t bytes)
{
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, headBytes + bytes);
    auto* to = static_cast<uint8_t*>(GlobalLock(block));
    std::memcpy(to, head, headBytes);
    std::memcpy(to + headBytes, data, bytes);
    GlobalUnlock(block);
    return block;
}

// For records, adds a header that covers all bytes.
static void CompareLoops(const uint8_t* data, size_t bytes, tiff::CcittScheme scheme, uint32_t width,
                         uint32_t rows)
{
    static constexpr uint8_t record[] = {0xFE, 0x92, 0, 0};
    const size_t headBytes = scheme == tiff::CcittScheme::MmrRecords ? sizeof(record) : 0;
    HGLOBAL block = Copy(record, headBytes, data, bytes);
    const auto decode = [=](tiff::CcittLoops loops) {
        return DecodeWith(loops, block, static_cast<uint32_t>(headBytes + bytes), scheme, width, rows);
    };
    fuzz::Demand(decode(tiff::CcittLoops::All) == decode(tiff::CcittLoops::CarefulOnly));
    GlobalFree(block);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static constexpr uint32_t schemes[] = {1, 2, 3, 4, 0x10003, 0x40003, 0x50003, 0x10005, 0x20005, 32773};
    if (size < 5)
        return 0;
    const fuzz::Run run(64u << 20);
    const fuzz::Block block({data, size});
    const TiffStream stream = tiff::OpenMemoryStream(block.Get(), static_cast<uint32_t>(size));
    const uint32_t width = 1u + data[1] + (data[2] & 0x0Fu) * 256u, fillOrder = data[3] & 3u;
    static constexpr uint32_t HEADER = 4, ROWS = 2000;
    if (const size_t scheme = data[0] % 11; scheme < std::size(schemes))
        DecodeCcittImageFrom(stream, HEADER, width, ROWS, schemes[scheme], fillOrder, TIFF_INTEL, nullptr,
                             IgnoreLine);
    else
        DecodeMMRImage(stream, HEADER, width, ROWS, 0, fillOrder, TIFF_INTEL, nullptr, IgnoreLine);
    mClose(stream);
    CompareLoops(data + HEADER, size - HEADER, static_cast<tiff::CcittScheme>((data[3] >> 2) % 6u), width,
                 ROWS);
    return 0;
}
