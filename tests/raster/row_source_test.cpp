// Rows that come from elsewhere than a page.
#include "core/stream.h"
#include "raster/dib_sink.h"
#include "support/leaks.h"
#include "support/pictures.h"

#include <gtest/gtest.h>

using namespace tiff;

TEST(RowSource, BareCodeBecomesADib)
{
    NoLeaks leaks;
    const struct {
        const char* row;
        Bytes code;
        uint32_t status;
        Bytes pixels; // rows from the bottom; empty for no picture
    } rows[] = {
        {"whole", Bits("001 1000 11 1 111"), 0, Hex("18000000 18000000")},
        {"cut short", Bits("001 1000 11 1"), 5, Hex("00000000 18000000")},
        {"damaged", Bits("001 1000 11 1 00000001"), 12, {}},
    };
    for (const auto& [row, code, status, pixels] : rows) {
        SCOPED_TRACE(row);
        const Block block(code);
        const Stream stream(OpenMemoryStream(block.Get(), static_cast<uint32_t>(code.size())));
        Status ended;
        HGLOBAL dib = RowsToDib(OpenBareRows({stream.Get(), 8, 2, 4, TIFF_MSB_FIRST, TIFF_INTEL},
                                             BilevelFormat(8, 2, 8000, 4000)),
                                ended);
        EXPECT_EQ(ended, status);
        ASSERT_EQ(dib == nullptr, pixels.empty());
        if (dib) {
            const Bytes content = Content(dib, 56);
            EXPECT_EQ(Bytes(content.begin() + 40, content.end()), Hex("FFFFFF00 00000000") + pixels);
        }
        GlobalFree(dib);
    }
}
