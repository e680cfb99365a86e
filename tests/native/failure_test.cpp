// Every allocation and file call of a load or a save fails once; the picture comes back whole
// or not at all, with a cause, nothing is left behind, and the pages of a file stay readable.
#include "standin/standin.h"
#include "support/pictures.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>

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
                EXPECT_EQ(Refusal(result), 1u);
            }
        });
    }
}

// Code of long lines takes many flushes: those after one that failed must not harm what is there.
TEST(Failures, ASaveLeavesTheOldPagesAndMayTryAgain)
{
    static constexpr struct {
        const char* row;
        bool onDisk, isNew;
        uint32_t compression, rowBytes, rows;
    } rows[] = {
        {"to disk", true, false, 1, 200, 50},
        {"to memory", false, false, 1, 200, 50},
        {"to new memory", false, true, 1, 200, 50},
        {"long lines", false, false, 1, 40000, 3},
        {"long lines of Huffman", false, false, 2, 40000, 3},
        {"long lines of Group 4", false, false, 4, 32000, 3},
        {"long lines of LZW", false, false, 5, 40000, 3},
        {"long lines of PackBits", false, false, 32773, 40000, 3},
    };
    const Bytes old = TwoPages().Build();
    for (const auto& [row, onDisk, isNew, compression, rowBytes, rowCount] : rows)
        standin::FailEach(CALLS, [&](unsigned n) {
            SCOPED_TRACE(row);
            standin::LeakCheck leaks;
            standin::StopFailing();
            const TempFile disk(old);
            const Block block(old);
            standin::FailNth(n, CALLS);
            HGLOBAL file =
                onDisk ? OpenTiffFile(disk.Path(), T_APPEND)
                       : OpenTiffInMemory(isNew ? nullptr : block.Get(), static_cast<uint32_t>(old.size()),
                                          isNew ? T_CREAT : T_APPEND);
            if (file && !isNew) {
                EXPECT_EQ(NumberOfTiffImages(file, TIFF_ALL_PAGES), 2u) << "a page would be cut off";
            }
            uint32_t page = 0;
            const bool ready = file && (isNew || (GetTiffImage(file, 0) && GetTiffImage(file, 1)));
            const bool saved = ready && SavePage(file, page, compression, rowBytes, rowCount);
            EXPECT_TRUE(saved || TiffError() != 0);
            standin::StopFailing();
            if (!ready)
                return void(CloseTiffFile(file));
            HGLOBAL memory = GetMemoryTiffHandle(file);
            const Bytes written = onDisk ? ReadFileBytes(disk.Path()) : Content(memory, GlobalSize(memory));
            if (isNew) {
                EXPECT_EQ(memory != nullptr, saved);
            } else {
                EXPECT_EQ(Part(written, 0, old.size()) == old, !saved);
                EXPECT_TRUE(saved || written.size() == old.size());
                const MemoryTiff again(written);
                ExpectOldPages(again.file, saved ? 3 : 2);
            }
            EXPECT_TRUE(SavePage(file, page)) << TiffError();
            EXPECT_EQ(DecodePage(file, page).rows.size(), 50u);
            if (isNew)
                GlobalFree(GetMemoryTiffHandle(file));
            CloseTiffFile(file);
        });
}

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

TEST(Failures, ASavedDibIsAWholePageOrNone)
{
    const TempFile original(Fax()), file({});
    HGLOBAL dib = LoadTiffIntoDIB(original.Path(), 0, 0);
    ASSERT_NE(dib, nullptr);
    for (const uint32_t selector : {201u, 204u, 208u}) {
        SCOPED_TRACE(selector);
        standin::FailEach(CALLS, [&](unsigned) {
            std::filesystem::copy_file(original.Path(), file.Path(),
                                       std::filesystem::copy_options::overwrite_existing);
            int32_t saved;
            {
                standin::LeakCheck leaks;
                saved = SaveDIBInTiffFile(file.Path(), dib, selector, 0);
                EXPECT_EQ(saved == 0, TiffError() != 0);
            }
            standin::StopFailing();
            EXPECT_EQ(GetNumberOfImagesInTiffFile(file.Path()), saved ? 2u : 1u);
            HGLOBAL tiff = OpenTiffFile(file.Path(), T_READ);
            EXPECT_EQ(DecodePage(tiff, 0).rows.size(), 4u);
            CloseTiffFile(tiff);
        });
    }
    GlobalFree(dib);
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

TEST(Failures, ACalsFileIsReplacedWholeOrNotAtAll)
{
    const auto folder = std::filesystem::path(standin::TempFolder()) / "cals";
    std::filesystem::create_directory(folder);
    const std::string path = (folder / "page.cal").string();
    const Block dib(PackedDib({8, 2, 1, {0xFFFFFF, 0}, Hex("18000000 18000000")}));
    const Bytes old = {1, 2, 3};
    for (const unsigned kinds : {CALLS & ~standin::Delete, unsigned{standin::Delete}}) {
        standin::FailEach(kinds, [&](unsigned) {
            std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(old.data()), 3);
            standin::LeakCheck leaks;
            SetTiffError(0);
            const int32_t result = SaveDIBInCALSFormat(path.c_str(), dib.Get(), nullptr, nullptr, 0);
            standin::StopFailing();
            EXPECT_EQ(ReadFileBytes(path) == old, result == 0);
            EXPECT_EQ(TiffError() != 0, result == 0);
            if (kinds != standin::Delete) {
                EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder), {}), 1);
            }
        });
    }
    standin::FailEach(CALLS, [&](unsigned) {
        standin::LeakCheck leaks;
        ExpectCauseOrPicture(LoadCALSIntoDIB(path.c_str(), 0));
        TiffCalsNotes notes;
        ExpectCauseOrPicture(ReadCALSNote(path.c_str(), &notes));
    });
    std::filesystem::remove_all(folder);
}
