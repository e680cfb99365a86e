// Decodes any bytes as a bare stream: the first four choose scheme, width and fill order.
#include "core/process_state.h"
#include "core/stream.h"
#include "standin/standin.h"
#include "tiff/tiff.h"

#include <cstring>

static intptr_t IgnoreLine(void*, uint32_t, void*)
{
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const bool attached = tiff::AttachProcess(nullptr);
    static constexpr uint32_t schemes[] = {1, 2, 3, 4, 0x10003, 0x40003, 0x50003, 0x10005, 0x20005, 32773};
    if (!attached || size < 5)
        return 0;
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, size);
    std::memcpy(GlobalLock(block), data, size);
    GlobalUnlock(block);
    const TiffStream stream = tiff::OpenMemoryStream(block, static_cast<uint32_t>(size));
    const uint32_t width = 1u + data[1] + (data[2] & 0x0Fu) * 256u, fillOrder = data[3] & 3u;
    static constexpr uint32_t HEADER = 4, ROWS = 2000;
    if (const size_t scheme = data[0] % 11; scheme < std::size(schemes))
        DecodeCcittImageFrom(stream, HEADER, width, ROWS, schemes[scheme], fillOrder, TIFF_INTEL, nullptr,
                             IgnoreLine);
    else
        DecodeMMRImage(stream, HEADER, width, ROWS, 0, fillOrder, TIFF_INTEL, nullptr, IgnoreLine);
    mClose(stream);
    GlobalFree(block);
    return 0;
}
