#include "support/numbered_pages.h"
#include "support/target.h"
#include "support/tiff_dump.h"

#include <gtest/gtest.h>

// What is copied collects in a buffer. A page's link may lie before, behind and across its end.
TEST(PageCopy, LinksAcrossTheEndOfTheBufferAreWhole)
{
    constexpr uint32_t BUFFER_BYTES = 256 * 1024;
    for (uint32_t bytes = BUFFER_BYTES - 500; bytes < BUFFER_BYTES; bytes += 2) {
        SCOPED_TRACE(bytes);
        const Bytes pages = TiffBuilder()
                                .Add(TiffPage::Picture(8, 1, 1, 1).Strips({Bytes(bytes)}))
                                .Add(Page(1))
                                .Add(Page(2))
                                .Build();
        TempFile source(pages);
        NewFile copy;
        EXPECT_EQ(MergeTiffFiles(copy.Path(), source.Path(), nullptr, 0), 1);
        EXPECT_EQ(GetNumberOfImagesInTiffFile(copy.Path()), 3u);
        EXPECT_EQ(TiffError(), 0u);
    }
}

// A type that pages in memory do not have is put back where nobody has changed the values.
TEST(PageCopy, ChangedValuesStayChanged)
{
    const std::vector<uint32_t> values = {1, 2, 3, 4, 5, 6, 7, 8};
    const Target source(false, OnePage(Page(0).Entry(60001, 7, 8, values).Entry(60002, 7, 8, values))), copy;
    LoadPages(source.file);
    EXPECT_EQ(DefineTiffImageInfoBuffer(source.file, 0, 60001, "ABCDEFGH", 1, 8), 1);
    EXPECT_EQ(CopyTiffImage(source.file, 0, copy.file), 1);
    const std::string page = PagesOf(copy.Written()).at(0);
    EXPECT_NE(page.find("60001 1 8: 65 66 67 68"), std::string::npos) << page;
    EXPECT_NE(page.find("60002 7 8: 1 2 3 4"), std::string::npos) << page;
}
