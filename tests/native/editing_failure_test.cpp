// Every system call of every operation on pages fails once. The file is then the old one or the new one, and
// no other file remains, except when a failed swap leaves the new content under its temporary name.
#include "standin/standin.h"
#include "support/numbered_pages.h"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>

namespace {

constexpr unsigned CALLS = standin::AnyCall & ~standin::Lock;

std::vector<std::string> TemporaryFiles()
{
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(standin::TempFolder()))
        if (const std::string name = entry.path().filename();
            name.starts_with("TMP") || name.starts_with("tmp"))
            found.push_back(entry.path());
    return found;
}

// The call fails only inside the operation, not while its files are prepared or checked.
template <class Operation>
auto WithFailing(unsigned n, Operation operation, bool andAllLater = false)
{
    standin::FailNth(n, CALLS, andAllLater);
    const auto result = operation();
    standin::StopFailing();
    return result;
}

void DeleteAll(const std::vector<std::string>& paths)
{
    for (const std::string& path : paths)
        std::filesystem::remove(path);
}

struct Case {
    const char* row;
    std::function<int32_t(const char*)> edit;
    Order order;
};

void PrintTo(const Case& given, std::ostream* stream)
{
    *stream << given.row;
}

class Editing : public testing::TestWithParam<Case> {
    void SetUp() override;
};

HGLOBAL Dib()
{
    static const NewDib dib;
    return dib.Get();
}

int32_t Insert(const char* path, int32_t position, int32_t inPlace, int32_t replace)
{
    return InsertTiffImage(path, Dib(), 201, 0, 1, position, inPlace, replace);
}

void Editing::SetUp()
{
    Dib();
}

const Bytes& Original()
{
    static const Bytes pages = Pages(4);
    return pages;
}

} // namespace

class RewritingAFile : public Editing {};

TEST_P(RewritingAFile, KeepsTheOldOneUntilTheNewOneIsWhole)
{
    const auto& [row, edit, order] = GetParam();
    standin::FailEach(CALLS, [&](unsigned n) {
        standin::StopFailing();
        TempFile file(Original());
        standin::LeakCheck leaks;
        const int32_t result = WithFailing(n, [&] { return edit(file.Path()); });
        const uint32_t error = TiffError();
        const auto left = TemporaryFiles();
        if (result) {
            ExpectPages(file.Path(), Original(), order);
            EXPECT_TRUE(left.empty());
        } else {
            EXPECT_NE(error, 0u);
            if (left.empty()) {
                EXPECT_EQ(ReadFileBytes(file.Path()), Original());
            } else {
                // The swap failed: the old file is deleted, the new content still exists.
                EXPECT_EQ(error, 6u);
                EXPECT_FALSE(Exists(file.Path()));
                ExpectPages(left.front().c_str(), Original(), order);
            }
        }
        DeleteAll(left);
    });
}

// From one call on every call fails, as for a program that is killed.
TEST_P(RewritingAFile, LosesNothingWhenItIsKilled)
{
    const auto& [row, edit, order] = GetParam();
    standin::FailEach(CALLS, [&](unsigned n) {
        standin::StopFailing();
        TempFile file(Original());
        WithFailing(
            n, [&] { return edit(file.Path()); }, true);
        const auto left = TemporaryFiles();
        if (!Exists(file.Path())) {
            ASSERT_FALSE(left.empty());
            ExpectPages(left.front().c_str(), Original(), order);
        } else if (ReadFileBytes(file.Path()) != Original()) {
            ExpectPages(file.Path(), Original(), order);
        }
        DeleteAll(left);
    });
}

INSTANTIATE_TEST_SUITE_P(
    Pages, RewritingAFile,
    testing::Values(Case{"delete", [](const char* path) { return DeleteTiffImage(path, 1, 0); }, {0, 2, 3}},
                    Case{"reorder", ReorderTiffFile, {0, 1, 2, 3}},
                    Case{"insert", [](const char* path) { return Insert(path, 2, 0, 0); }, {0, 1, NEW, 2, 3}},
                    Case{"replace", [](const char* path) { return Insert(path, 0, 0, 1); }, {NEW, 1, 2, 3}}),
    [](const auto& info) { return info.param.row; });

class RelinkingAFile : public Editing {};

TEST_P(RelinkingAFile, LosesNoPageThatIsToStay)
{
    const auto& [row, edit, order] = GetParam();
    const Order old = {0, 1, 2, 3}, appended = {0, 1, 2, 3, NEW};
    standin::FailEach(CALLS, [&](unsigned n) {
        standin::StopFailing();
        for (const bool killed : {false, true}) {
            TempFile file(Original());
            standin::LeakCheck leaks;
            if (WithFailing(
                    n, [&] { return edit(file.Path()); }, killed)) {
                ExpectPages(file.Path(), Original(), order);
                continue;
            }
            EXPECT_NE(TiffError(), 0u);
            // The new page may be missing, or be the last.
            if (!PagesDiffer(file.Path(), Original(), old).empty())
                ExpectPages(file.Path(), Original(), appended);
        }
    });
}

INSTANTIATE_TEST_SUITE_P(
    Pages, RelinkingAFile,
    testing::Values(Case{"delete", [](const char* path) { return DeleteTiffImage(path, 1, 1); }, {0, 2, 3}},
                    Case{"append", [](const char* path) { return Insert(path, 4, 0, 0); }, {0, 1, 2, 3, NEW}},
                    Case{"insert", [](const char* path) { return Insert(path, 1, 1, 0); }, {0, NEW, 1, 2, 3}},
                    Case{"replace", [](const char* path) { return Insert(path, 3, 1, 1); }, {0, 1, 2, NEW}}),
    [](const auto& info) { return info.param.row; });

TEST(MovingFailures, NoPageIsLost)
{
    DeleteAll(TemporaryFiles());
    standin::FailEach(CALLS, [&](unsigned n) {
        standin::StopFailing();
        TempFile file(Original()), moved(Hex("77"));
        standin::LeakCheck leaks;
        const int32_t result =
            WithFailing(n, [&] { return SplitTiffFile(file.Path(), moved.Path(), 2, nullptr, 0); });
        const auto left = TemporaryFiles();
        if (result) {
            ExpectPages(file.Path(), Original(), {0, 1});
        } else if (!Exists(file.Path())) {
            ASSERT_FALSE(left.empty());
            ExpectPages(left.front().c_str(), Original(), {0, 1});
        } else {
            EXPECT_NE(TiffError(), 0u);
            EXPECT_EQ(ReadFileBytes(file.Path()), Original());
            EXPECT_EQ(ReadFileBytes(moved.Path()), Hex("77"));
            for (const std::string& path : left)
                EXPECT_EQ(ReadFileBytes(path), Bytes()) << "no more than a name's reservation";
        }
        if (result || !Exists(file.Path()))
            ExpectPages(moved.Path(), Original(), {2, 3});
        DeleteAll(left);
    });
    standin::FailEach(CALLS, [&](unsigned n) {
        standin::StopFailing();
        TempFile file(Original());
        NewFile base;
        standin::LeakCheck leaks;
        const std::string outputs[] = {std::string(base.Path()) + "0001.tif",
                                       std::string(base.Path()) + "0002.tif"};
        const int32_t result =
            WithFailing(n, [&] { return CutTiffFile(file.Path(), base.Path(), 2, nullptr, 0); });
        const auto left = TemporaryFiles();
        const bool cut = result || !Exists(file.Path());
        if (cut) {
            ExpectPages(result ? file.Path() : left.front().c_str(), Original(), {2, 3});
            ExpectPages(outputs[0].c_str(), Original(), {0});
            ExpectPages(outputs[1].c_str(), Original(), {1});
        } else {
            EXPECT_NE(TiffError(), 0u);
            EXPECT_EQ(ReadFileBytes(file.Path()), Original());
        }
        DeleteAll(left);
        DeleteAll({outputs[0], outputs[1]});
    });
}

TEST(MovingFailures, MergingAndCopyingKeepWhatIsThere)
{
    const Bytes two = Pages(2);
    standin::FailEach(CALLS, [&](unsigned n) {
        standin::StopFailing();
        TempFile source(Original()), file(two);
        standin::LeakCheck leaks;
        const int32_t result =
            WithFailing(n, [&] { return MergeTiffFiles(file.Path(), source.Path(), nullptr, 0); });
        const uint32_t error = TiffError();
        if (result)
            return ExpectPages(file.Path(), Original(), {0, 1, 0, 1, 2, 3});
        EXPECT_NE(error, 0u);
        HGLOBAL opened = OpenTiffFile(file.Path(), T_READ);
        EXPECT_GE(NumberOfTiffImages(opened, TIFF_ALL_PAGES), 2u);
        CloseTiffFile(opened);
        // The next page replaces the incomplete one.
        EXPECT_EQ(CopyTiffImageInFile(source.Path(), 3, file.Path(), T_APPEND), 1);
        const uint32_t pages = GetNumberOfImagesInTiffFile(file.Path());
        EXPECT_EQ(TiffError(), 0u);
        EXPECT_GE(pages, 3u);
    });
    for (const uint64_t room : {0u, 3u, 100u}) {
        SCOPED_TRACE(room);
        TempFile source(Original()), file(two);
        HGLOBAL from = OpenTiffFile(source.Path(), T_READ), to = OpenTiffFile(file.Path(), T_APPEND);
        standin::LimitDisk(room);
        EXPECT_EQ(CopyTiffImage(from, 0, to), 0);
        EXPECT_EQ(TiffError(), 6u);
        standin::StopFailing();
        EXPECT_EQ(NumberOfTiffImages(to, TIFF_ALL_PAGES), 2u);
        CloseTiffFile(to);
        CloseTiffFile(from);
        EXPECT_EQ(ReadFileBytes(file.Path()), two);
    }
}

TEST(RawFailures, DeleteTheRawFileOnlyOnceItIsBeingWritten)
{
    const Bytes before = Hex("FFFEFD");
    standin::FailEach(CALLS, [&](unsigned n) {
        standin::StopFailing();
        TempFile source(Original()), raw(before);
        standin::LeakCheck leaks;
        const char* name =
            WithFailing(n, [&] { return AppendCCITTImageFile(raw.Path(), source.Path(), 0, 0); });
        const uint32_t error = TiffError();
        const bool kept = Exists(raw.Path());
        EXPECT_EQ(error == 0, name != nullptr);
        EXPECT_TRUE(kept || !name);
        EXPECT_TRUE(!kept || ReadFileBytes(raw.Path()) == (name ? before + Hex("0055") : before));
    });
    TempFile source(Original()), raw(before);
    standin::LimitDisk(0);
    EXPECT_EQ(AppendCCITTImageFile(raw.Path(), source.Path(), 0, 0), nullptr);
    standin::StopFailing();
    EXPECT_FALSE(Exists(raw.Path()));
}

TEST(CiscoFailures, EitherLeaveTheFileAloneOrDeleteIt)
{
    standin::FailEach(CALLS, [&](unsigned n) {
        standin::StopFailing();
        TempFile file(Original());
        standin::LeakCheck leaks;
        const int32_t result = WithFailing(n, [&] { return ConvertTiffToCiscoFormat(file.Path()); });
        const auto left = TemporaryFiles();
        EXPECT_EQ(TiffError() == 0, result != 0);
        if (result) {
            ExpectPages(file.Path(), Original(), {0, 1, 2, 3});
            EXPECT_EQ(left.size(), 1u) << "the name's reservation";
        } else if (Exists(file.Path())) {
            EXPECT_EQ(ReadFileBytes(file.Path()), Original());
        }
        DeleteAll(left);
    });
    TempFile file(Original());
    standin::LimitDisk(10);
    EXPECT_EQ(ConvertTiffToCiscoFormat(file.Path()), 0);
    standin::StopFailing();
    EXPECT_FALSE(Exists(file.Path()));
    DeleteAll(TemporaryFiles());
}

TEST(TagFailures, LeaveTheFileAndWhatWasWrittenBesideIt)
{
    standin::FailEach(CALLS, [&](unsigned n) {
        standin::StopFailing();
        TempFile file(Original());
        standin::LeakCheck leaks;
        std::string beside = file.Path();
        beside = beside.substr(0, beside.rfind('.')) + ".~~~";
        const int32_t result = WithFailing(n, [&] { return DeleteTiffTagOfImage(file.Path(), 1, 270); });
        if (!result && !Exists(file.Path())) {
            EXPECT_EQ(GetNumberOfImagesInTiffFile(beside.c_str()), 4u);
        } else if (!result) {
            EXPECT_EQ(ReadFileBytes(file.Path()), Original());
        } else {
            EXPECT_EQ(GetNumberOfImagesInTiffFile(file.Path()), 4u);
            EXPECT_FALSE(Exists(beside));
        }
        std::filesystem::remove(beside);
    });
}
