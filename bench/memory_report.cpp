// The memory that a load needs besides its picture: JSON lines of scheme, page, bytes of the DIB, and the
// most other bytes.
#include "bench/jobs.h"
#include "bench/lean_memory.h"
#include "bench/library.h"

#include <cstdio>

void PrintMemory(const std::vector<Picture>& pictures)
{
    for (const Picture& picture : pictures)
        for (const Scheme& scheme : schemes) {
            if (!Suits(scheme, picture))
                continue;
            const OpenPage page(WriteTiff(picture, scheme, RowsPerStrip(scheme, picture)));
            const size_t before = LiveBytes();
            ResetPeakBytes();
            HGLOBAL dib = LoadTiffChainIntoDIB(page.file, 0);
            const size_t peak = PeakBytes() - before, dibBytes = GlobalSize(dib);
            std::printf("{\"scheme\": \"%s\", \"page\": \"%s\", \"dib\": %zu, \"besides\": %zu}\n",
                        scheme.name, picture.name.c_str(), dibBytes, peak - dibBytes);
            GlobalFree(dib);
        }
}
