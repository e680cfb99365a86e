// Every allocation and file call of a load fails once; the picture comes back whole or
// not at all, with a cause, and nothing is left behind.
#include "standin/standin.h"
#include "support/pictures.h"

#include <gtest/gtest.h>

namespace {

const Bytes& Fax()
{
    static const Bytes file = OnePage(TiffPage::Picture(8, 4, 1, 4)
                                          .Short(278, {2})
                                          .Ascii(270, "a text of some length")
                                          .Rational(282, 200, 1)
                                          .Rational(283, 200, 1)
                                          .Strips({Bits("001 1000 11 1 111"), Bits("001 1000 11 1 111")}));
    return file;
}

// A block that is there can be locked.
constexpr unsigned CALLS = standin::AnyCall & ~standin::Lock;

void ExpectCauseOrPicture(HGLOBAL dib)
{
    if (dib)
        GlobalFree(dib);
    else
        EXPECT_NE(TiffError(), 0u);
}

} // namespace

TEST(Failures, ALoadFromDiskSurvivesEveryCall)
{
    TempFile file(Fax());
    standin::FailEach(CALLS, [&](unsigned) {
        standin::LeakCheck leaks;
        ExpectCauseOrPicture(LoadTiffIntoDIB(file.Path(), 0, 0));
    });
    EXPECT_EQ(ReadFileBytes(file.Path()), Fax());
}

TEST(Failures, ALoadFromMemorySurvivesEveryAllocation)
{
    Block block(Fax());
    standin::FailEach(standin::Allocation, [&](unsigned) {
        standin::LeakCheck leaks;
        HGLOBAL file = OpenTiffInMemory(block.Get(), static_cast<uint32_t>(Fax().size()), T_READ);
        if (file) {
            ExpectCauseOrPicture(LoadTiffChainIntoDIB(file, 0));
            CloseTiffFile(file);
        } else {
            EXPECT_NE(TiffError(), 0u);
        }
    });
}

TEST(Failures, EveryCodecReportsMissingMemory)
{
    for (const uint32_t compression : {1u, 2u, 3u, 4u, 5u, 32773u}) {
        SCOPED_TRACE(compression);
        MemoryTiff opened(OnePage(TiffPage::Picture(8, 1, 1, compression).Strips({Bytes(64, 0xAA)})));
        RowCollector collector{1};
        standin::FailEach(standin::Allocation, [&](unsigned) {
            standin::LeakCheck leaks;
            const int32_t result = DecodeTiffImage(opened.file, 0, 0, 0, &collector, CollectRow);
            if (standin::InjectionFired()) {
                EXPECT_EQ(result, 0);
                EXPECT_TRUE(TiffError() == 1 || TiffError() == 10) << TiffError();
            }
        });
    }
}

TEST(Costs, ADirectoryIsOneRead)
{
    TiffBuilder builder;
    for (int page = 0; page < 40; ++page)
        builder.Add(TiffPage::Picture(8, 1, 1, 1).Strips({Bytes(5000)}));
    TempFile file(builder.Build());
    standin::ResetCalls();
    HGLOBAL tiff = OpenTiffFile(file.Path(), T_READ);
    EXPECT_LE(standin::CallsMade(standin::Read), 42u);
    EXPECT_LE(standin::CallsMade(standin::Seek), 42u);
    CloseTiffFile(tiff);
}

TEST(Costs, AnOpenFileTakesNoMoreMemoryThanItsPages)
{
    TempFile file(TiffBuilder().Add(TiffPage::Picture(8, 1, 1, 1).Strips({{0}})).Build());
    standin::ResetPeak();
    const uint64_t before = standin::BytesAllocatedPeak();
    HGLOBAL tiff = OpenTiffFile(file.Path(), T_READ);
    EXPECT_LT(standin::BytesAllocatedPeak() - before, 4096u);
    CloseTiffFile(tiff);
}

TEST(Costs, ALoadTakesThePictureAndItsBuffers)
{
    TempFile file(
        OnePage(TiffPage().Long(256, {1728}).Long(257, {2200}).Short(259, {4}).Strips({Bytes(60000, 0xFF)})));
    standin::ResetPeak();
    const uint64_t before = standin::BytesAllocatedPeak();
    GlobalFree(LoadTiffIntoDIB(file.Path(), 0, 0));
    EXPECT_LT(standin::BytesAllocatedPeak() - before, 216u * 2200 + 70000);
}
