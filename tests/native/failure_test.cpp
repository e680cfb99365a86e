// Full disks and huge files: old pages stay readable. What calls and memory the operations take.
#include "standin/standin.h"
#include "support/numbered_pages.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>

namespace {

intptr_t FillWithNoise(void* line, uint32_t row, void* rowBytes)
{
    std::minstd_rand random(row);
    std::generate_n(static_cast<uint8_t*>(line), reinterpret_cast<uintptr_t>(rowBytes),
                    [&] { return static_cast<uint8_t>(random()); });
    return 0;
}

// False when some step of it failed.
bool SavePage(HGLOBAL file, uint32_t& page, uint32_t compression = 1, uint32_t rowBytes = 200,
              uint32_t rows = 50)
{
    page = static_cast<uint32_t>(DefineTiffImage(file));
    const TiffPageGeometry geometry = {
        0, static_cast<int32_t>(rowBytes * 8), static_cast<int32_t>(rows), rowBytes, 1, 1};
    return page != UINT32_MAX && DefineTiffImageInfo(file, page, 259, 3, compression) &&
           DefineGeneralTags(file, page, &geometry) == 0 && DefineTiffImageInfo(file, page, 278, 3, 20) &&
           DefineTiffImageInfo(file, page, 256, 4, rowBytes * 8) &&
           SetTiffImageDPI(file, page, 200u << 16 | 200) == 0 &&
           EncodeTiffImage(file, page, reinterpret_cast<void*>(uintptr_t{rowBytes}), FillWithNoise);
}

// A page without strips.
bool SaveDirectory(HGLOBAL file)
{
    const auto page = static_cast<uint32_t>(DefineTiffImage(file));
    const Bytes values(5000);
    return DefineTiffImageInfoBuffer(file, page, 700, values.data(), 1, 5000) &&
           WriteTiffImageDirectory(file, page) == 0;
}

TiffBuilder TwoPages()
{
    TiffBuilder builder(TIFF_MOTOROLA);
    builder.Add(TiffPage::Picture(8, 1, 1, 1).Strips({Hex("01")}));
    // Too far from the first to be read with it.
    builder.Add(TiffPage::Picture(8, 1, 1, 1).Strips({Hex("02") + Bytes(40000)}));
    return builder;
}

void ExpectOldPages(HGLOBAL file, uint32_t pageCount)
{
    EXPECT_EQ(NumberOfTiffImages(file, TIFF_ALL_PAGES), pageCount);
    EXPECT_EQ(DecodePage(file, 0).Joined(), Hex("01"));
    EXPECT_EQ(DecodePage(file, 1).Joined(), Hex("02"));
}

} // namespace

// Offsets end at 4 GiB, and so does what may be added.
TEST(Failures, FilesOfFourGigabytesKeepTheirPages)
{
    constexpr uint64_t FOUR = uint64_t{1} << 32;
    const Bytes old = TwoPages().Build();
    const TempFile large(OnePage(TiffPage::Picture(8, 200, 1, 1).Strips({Bytes(200)}), TIFF_MOTOROLA));
    for (const uint64_t size : {FOUR - 100, FOUR - 1, FOUR, FOUR + 5}) {
        SCOPED_TRACE(size);
        TempFile disk(old);
        std::filesystem::resize_file(disk.Path(), size); // without taking room on the disk
        HGLOBAL file = OpenTiffFile(disk.Path(), T_APPEND);
        GetTiffImage(file, 0);
        GetTiffImage(file, 1);
        ExpectOldPages(file, 2);
        uint32_t page = 0;
        EXPECT_EQ(Refusal(SavePage(file, page)), 6u);
        CloseTiffFile(file);
        EXPECT_EQ(std::filesystem::file_size(disk.Path()), size);
        EXPECT_EQ(CopyTiffImageInFile(large.Path(), 0, disk.Path(), T_APPEND), 0);
        EXPECT_EQ(TiffError(), 6u);
        EXPECT_EQ(std::filesystem::file_size(disk.Path()), size);
        EXPECT_EQ(GetNumberOfImagesInTiffFile(disk.Path()), 2u);
    }
}

TEST(Failures, AFullDiskKeepsTheEarlierPagesWhole)
{
    const Bytes old = TwoPages().Build();
    constexpr uint64_t pageBytes = 50 * 200 + 300;
    for (const bool directoryOnly : {false, true})
        for (uint64_t room = 0; room < pageBytes; room += 111) {
            SCOPED_TRACE(room);
            standin::LeakCheck leaks;
            TempFile disk(old);
            HGLOBAL file = OpenTiffFile(disk.Path(), T_APPEND);
            GetTiffImage(file, 0);
            GetTiffImage(file, 1);
            uint32_t page = 0;
            standin::LimitDisk(room);
            const bool saved = directoryOnly ? SaveDirectory(file) : SavePage(file, page);
            if (!saved) {
                EXPECT_EQ(TiffError(), 6u);
            }
            standin::StopFailing();
            Bytes written = ReadFileBytes(disk.Path());
            MemoryTiff again(written);
            ExpectOldPages(again.file, saved ? 3 : 2);
            EXPECT_TRUE(saved || written == old);
            EXPECT_TRUE(saved || SavePage(file, page)) << "there is room again";
            CloseTiffFile(file);
        }
}

static std::string Detail()
{
    char detail[512];
    TiffErrorDetail(detail, sizeof(detail));
    return detail;
}

TEST(Failures, AFullDiskNeitherHarmsACopyNorLeavesHalfAFax)
{
    const Bytes pages = Pages(4), two = Pages(2);
    for (const uint64_t room : {0u, 3u, 100u}) {
        SCOPED_TRACE(room);
        const TempFile source(pages), file(two);
        HGLOBAL from = OpenTiffFile(source.Path(), T_READ), to = OpenTiffFile(file.Path(), T_APPEND);
        standin::LimitDisk(room);
        EXPECT_EQ(Refusal(CopyTiffImage(from, 0, to)), 6u);
        EXPECT_EQ(Detail(), file.Path() + std::string(room ? "" : ", system error 112 (disk full)"));
        standin::StopFailing();
        EXPECT_EQ(NumberOfTiffImages(to, TIFF_ALL_PAGES), 2u);
        CloseTiffFile(to);
        CloseTiffFile(from);
        EXPECT_EQ(ReadFileBytes(file.Path()), two);
    }
    const TempFile source(pages), file(two), raw(Hex("FFFEFD")), fax(pages);
    HGLOBAL loaded = OpenTiffFile(source.Path(), T_READ), to = OpenTiffFile(file.Path(), T_APPEND);
    GetTiffImage(loaded, 1);
    standin::FailNth(1, standin::Open);
    EXPECT_EQ(Refusal(CopyTiffImage(loaded, 1, to)), 6u);
    EXPECT_EQ(Detail(), source.Path());
    DropTiffImage(loaded, 1);
    standin::FailNth(1, standin::Read);
    EXPECT_EQ(Refusal(CopyTiffImage(loaded, 1, to)), 6u);
    EXPECT_EQ(Detail(), source.Path() + std::string(", page index 1, system error 5 (access denied)"));
    CloseTiffFile(to);
    CloseTiffFile(loaded);
    standin::FailNth(1, standin::Write); // what takes the copy back finds nothing wrong
    EXPECT_EQ(Refusal(CopyTiffImageInFile(source.Path(), 0, file.Path(), T_APPEND)), 6u);
    EXPECT_EQ(Detail(), file.Path() + std::string(", system error 5 (access denied)"));
    standin::StopFailing();
    standin::LimitDisk(0);
    EXPECT_EQ(AppendCCITTImageFile(raw.Path(), source.Path(), 0, 0), nullptr);
    standin::LimitDisk(10);
    EXPECT_EQ(ConvertTiffToCiscoFormat(fax.Path()), 0);
    standin::StopFailing();
    EXPECT_FALSE(Exists(raw.Path()));
    EXPECT_FALSE(Exists(fax.Path()));
}

TEST(Costs, ADirectoryIsWrittenInTwoPieces)
{
    TempFile disk({});
    HGLOBAL file = OpenTiffFile(disk.Path(), T_CREAT);
    const auto page = static_cast<uint32_t>(DefineTiffImage(file));
    for (uint32_t tag = 1; tag < 200; ++tag)
        DefineTiffImageInfo(file, page, tag, 5, tag);
    standin::ResetCalls();
    EXPECT_EQ(WriteTiffImageDirectory(file, page), 0u);
    EXPECT_EQ(standin::CallsMade(standin::Write), 3u) << "with the header";
    CloseTiffFile(file);
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
