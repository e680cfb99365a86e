// The copy on disk that a JPEG page of a TIFF in memory is loaded from.
#include "standin/standin.h"
#include "support/tiff_builder.h"

#include "raster/whole_jpeg.h"

#include <filesystem>
#include <gtest/gtest.h>

using namespace tiff;

namespace {

Bytes JpegFile()
{
    return OnePage(TiffPage::Picture(8, 1, 8, 7).Strips({Bytes(300, 0x5A)}));
}

ptrdiff_t TemporaryFiles()
{
    const std::filesystem::directory_iterator folder(standin::TempFolder());
    return std::distance(begin(folder), end(folder));
}

} // namespace

TEST(NamedTiff, ACopyIsWholeAndGoesAgain)
{
    const MemoryTiff memory(JpegFile());
    std::string path;
    {
        const NamedTiff named(memory.file);
        ASSERT_TRUE(named);
        path = named.Path();
        EXPECT_EQ(ReadFileBytes(path), JpegFile());
    }
    EXPECT_EQ(GetFileAttributesA(path.c_str()), INVALID_FILE_ATTRIBUTES);
}

TEST(NamedTiff, AFileOnDiskKeepsItsNameAndStays)
{
    const TempFile disk(JpegFile());
    HGLOBAL file = OpenTiffFile(disk.Path(), T_READ);
    {
        const NamedTiff named(file);
        EXPECT_STREQ(named.Path(), disk.Path());
    }
    CloseTiffFile(file);
    EXPECT_EQ(ReadFileBytes(disk.Path()), JpegFile());
}

TEST(NamedTiff, ACopyThatCannotBeWrittenIsError30)
{
    const MemoryTiff memory(JpegFile());
    const ptrdiff_t before = TemporaryFiles();
    standin::FailEach(standin::Open | standin::Write, [&](unsigned) {
        standin::LeakCheck leaks;
        EXPECT_EQ(LoadTiffChainIntoDIB(memory.file, 0), nullptr);
        EXPECT_EQ(TiffError(), standin::InjectionFired() ? 30u : 11u);
        EXPECT_EQ(TemporaryFiles(), before);
    });
    standin::LimitDisk(100);
    EXPECT_EQ(LoadTiffChainIntoDIB(memory.file, 0), nullptr);
    EXPECT_EQ(TiffError(), 30u);
    EXPECT_EQ(TemporaryFiles(), before);
    standin::StopFailing();
}
