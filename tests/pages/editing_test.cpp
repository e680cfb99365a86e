#include "support/leaks.h"
#include "support/numbered_pages.h"
#include "support/tiff_dump.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <gtest/gtest.h>

namespace {

constexpr uint16_t byteOrders[] = {TIFF_INTEL, TIFF_MOTOROLA};

// Deletes the files at the end of the scope.
struct NamedFiles {
    std::vector<std::string> paths;
    ~NamedFiles()
    {
        for (const std::string& path : paths)
            DeleteFileA(path.c_str());
    }
};

// Counts its calls and stops at one.
struct Listener {
    uint32_t stopAt = 0;
    uint32_t calls = 0, total = 0;

    static int32_t Hear(uint32_t total, uint32_t done, uint64_t user)
    {
        auto& listener = *reinterpret_cast<Listener*>(user);
        EXPECT_EQ(done, ++listener.calls);
        listener.total = total;
        return done != listener.stopAt;
    }
    uint64_t User()
    {
        return reinterpret_cast<uintptr_t>(this);
    }
};

} // namespace

TEST(PageEditing, EveryOperationLeavesThePagesItShould)
{
    const auto insert = [](int32_t position, int32_t inPlace, int32_t replace) {
        return [=](const char* path) {
            return InsertTiffImage(path, NewDib().Get(), 201, 0, 1, position, inPlace, replace);
        };
    };
    const auto erase = [](int32_t page, int32_t inPlace) {
        return [=](const char* path) { return DeleteTiffImage(path, page, inPlace); };
    };
    const struct {
        const char* row;
        std::function<int32_t(const char*)> edit;
        Order order;
        bool intelOnly = false;
    } rows[] = {
        {"delete the first", erase(0, 0), {1, 2, 3}},
        {"delete from the middle", erase(2, 0), {0, 1, 3}},
        {"delete the last by -1", erase(-1, 0), {0, 1, 2}},
        {"delete the first in place", erase(0, 1), {1, 2, 3}},
        {"delete from the middle in place", erase(1, 1), {0, 2, 3}},
        {"delete the last in place", erase(-1, 1), {0, 1, 2}},
        {"reorder", ReorderTiffFile, {0, 1, 2, 3}},
        {"insert at the front", insert(0, 0, 0), {NEW, 0, 1, 2, 3}, true},
        {"insert in the middle", insert(2, 0, 0), {0, 1, NEW, 2, 3}, true},
        {"insert behind the end", insert(4, 0, 0), {0, 1, 2, 3, NEW}, true},
        {"replace the first", insert(0, 0, 1), {NEW, 1, 2, 3}, true},
        {"replace the last", insert(3, 0, 1), {0, 1, 2, NEW}, true},
        {"replace behind the end", insert(9, 0, 1), {0, 1, 2, 3, NEW}, true},
        {"insert at the front in place", insert(0, 1, 0), {NEW, 0, 1, 2, 3}, true},
        {"insert in the middle in place", insert(2, 1, 0), {0, 1, NEW, 2, 3}, true},
        {"insert before the last in place", insert(3, 1, 0), {0, 1, 2, NEW, 3}, true},
        {"insert behind the end in place", insert(4, 1, 0), {0, 1, 2, 3, NEW}, true},
        {"replace the first in place", insert(0, 1, 1), {NEW, 1, 2, 3}, true},
        {"replace the last in place", insert(3, 1, 1), {0, 1, 2, NEW}, true},
    };
    for (const uint16_t byteOrder : byteOrders) {
        const Bytes original = Pages(4, byteOrder);
        for (const auto& [row, edit, order, intelOnly] : rows) {
            SCOPED_TRACE(testing::Message() << row << (byteOrder == TIFF_INTEL ? ", II" : ", MM"));
            NoLeaks leaks;
            TempFile file(original);
            const bool refused = intelOnly && byteOrder == TIFF_MOTOROLA;
            EXPECT_EQ(edit(file.Path()), refused ? 0 : 1);
            if (refused) {
                EXPECT_EQ(TiffError(), 35u);
                EXPECT_EQ(ReadFileBytes(file.Path()), original);
            } else {
                ExpectPages(file.Path(), original, order);
            }
        }
    }
}

TEST(PageEditing, RefusesARing)
{
    NoLeaks leaks;
    TiffBuilder builder;
    Bytes ring = builder.Add(Page(0)).Add(Page(1)).Build();
    std::memcpy(&ring[builder.links[1]], &builder.directories[0], 4);
    TempFile file(ring);
    NewFile other;
    const std::function<int32_t()> edits[] = {
        [&] { return DeleteTiffImage(file.Path(), 1, 0); },
        [&] { return DeleteTiffImage(file.Path(), 1, 1); },
        [&] { return InsertTiffImage(file.Path(), NewDib().Get(), 201, 0, 1, 0, 0, 0); },
        [&] { return ReorderTiffFile(file.Path()); },
        [&] { return MergeTiffFiles(other.Path(), file.Path(), nullptr, 0); },
        [&] { return MergeTiffFiles(file.Path(), file.Path(), nullptr, 0); },
        [&] { return CopyTiffImageInFile(file.Path(), 0, file.Path(), T_APPEND); },
        [&] { return SplitTiffFile(file.Path(), other.Path(), 1, nullptr, 0); },
        [&] { return DeleteTiffTagOfImage(file.Path(), 0, 270); },
    };
    for (const auto& edit : edits) {
        EXPECT_EQ(edit(), 0);
        EXPECT_EQ(TiffError(), 6u);
        EXPECT_EQ(ReadFileBytes(file.Path()), ring);
        EXPECT_FALSE(Exists(other.Path()));
    }
    EXPECT_EQ(CopyTiffImageInFile(file.Path(), 5, other.Path(), T_CREAT), 1);
    EXPECT_EQ(PagesOf(ReadFileBytes(other.Path()))[0], PagesOf(Pages(2))[1]);
}

TEST(PageEditing, ReorderRemovesWhatNoPageRefersTo)
{
    const Bytes original = Pages(3);
    TempFile file(original), twice(original);
    EXPECT_EQ(DeleteTiffImage(file.Path(), 1, 1), 1);
    EXPECT_EQ(ReadFileBytes(file.Path()).size(), original.size());
    EXPECT_EQ(ReorderTiffFile(file.Path()), 1);
    EXPECT_LT(ReadFileBytes(file.Path()).size(), original.size());
    ExpectPages(file.Path(), original, {0, 2});
    // Deleting pages one by one gives the same result as one rewrite.
    EXPECT_EQ(DeleteTiffImage(twice.Path(), 1, 0), 1);
    EXPECT_EQ(ReadFileBytes(twice.Path()), ReadFileBytes(file.Path()));
}

TEST(PageEditing, FilesOfOnePageAndPagesThatAreNotThere)
{
    NoLeaks leaks;
    const Bytes one = Pages(1);
    TempFile file(one);
    EXPECT_EQ(ReorderTiffFile(file.Path()), 1);
    EXPECT_EQ(ReadFileBytes(file.Path()), one);
    for (const int32_t page : {-2, 1}) {
        EXPECT_EQ(DeleteTiffImage(file.Path(), page, 0), 0);
        EXPECT_EQ(TiffError(), 3u);
    }
    EXPECT_EQ(InsertTiffImage(file.Path(), NewDib().Get(), 201, 0, 1, -1, 0, 0), 0);
    EXPECT_EQ(TiffError(), 3u);
    EXPECT_EQ(InsertTiffImage(file.Path(), NewDib().Get(), 99, 0, 1, 0, 0, 0), 0);
    EXPECT_EQ(TiffError(), 11u);
    EXPECT_EQ(ReadFileBytes(file.Path()), one);
    EXPECT_EQ(DeleteTiffImage(file.Path(), 0, 1), 1);
    EXPECT_FALSE(Exists(file.Path()));
    EXPECT_EQ(DeleteTiffImage(file.Path(), 0, 0), 0);
    EXPECT_EQ(TiffError(), 6u);
    EXPECT_EQ(InsertTiffImage(file.Path(), NewDib().Get(), 201, 0, 1, 5, 1, 1), 1);
    ExpectPages(file.Path(), one, {NEW});
}

TEST(MovingPages, MergeAppendsAndKeepsWhatIsAppended)
{
    NoLeaks leaks;
    const Bytes pages = Pages(4);
    TempFile source(pages);
    NewFile made;
    Listener all, stopping{.stopAt = 2};
    EXPECT_EQ(MergeTiffFiles(made.Path(), source.Path(), Listener::Hear, all.User()), 1);
    EXPECT_EQ(all.calls, 4u);
    EXPECT_EQ(all.total, 4u);
    EXPECT_EQ(MergeTiffFiles(made.Path(), source.Path(), Listener::Hear, stopping.User()), 0);
    ExpectPages(made.Path(), pages, {0, 1, 2, 3, 0, 1});
    EXPECT_EQ(MergeTiffFiles(source.Path(), source.Path(), nullptr, 0), 1) << "a file to itself";
    ExpectPages(source.Path(), pages, {0, 1, 2, 3, 0, 1, 2, 3});
    EXPECT_EQ(MergeTiffFiles(nullptr, source.Path(), nullptr, 0), 0);
    EXPECT_EQ(TiffError(), 29u);
}

TEST(MovingPages, SplitMovesTheEndOfAFile)
{
    const Bytes pages = Pages(4);
    for (const int32_t first : {1, 3, 4, 5, -1}) {
        SCOPED_TRACE(first);
        NoLeaks leaks;
        TempFile source(pages);
        NewFile moved;
        Listener listener;
        const int32_t result =
            SplitTiffFile(source.Path(), moved.Path(), first, Listener::Hear, listener.User());
        EXPECT_EQ(result, first >= 0 && first <= 4 ? 1 : 0);
        if (first < 1 || first > 3) {
            EXPECT_EQ(ReadFileBytes(source.Path()), pages);
            EXPECT_FALSE(Exists(moved.Path()));
            continue;
        }
        EXPECT_EQ(listener.calls, static_cast<uint32_t>(4 - first));
        EXPECT_EQ(listener.total, listener.calls);
        Order kept, gone;
        for (int page = 0; page < 4; ++page)
            (page < first ? kept : gone).push_back(page);
        ExpectPages(source.Path(), pages, kept);
        ExpectPages(moved.Path(), pages, gone);
    }
    TempFile source(pages), taken(pages);
    NewFile moved;
    Listener listener{.stopAt = 2};
    EXPECT_EQ(SplitTiffFile(source.Path(), moved.Path(), 1, Listener::Hear, listener.User()), 0);
    EXPECT_FALSE(Exists(moved.Path()));
    EXPECT_EQ(SplitTiffFile(source.Path(), source.Path(), 1, nullptr, 0), 0);
    EXPECT_EQ(TiffError(), 29u);
    EXPECT_EQ(SplitTiffFile(source.Path(), taken.Path(), 0, nullptr, 0), 0) << "the name is taken";
    EXPECT_EQ(ReadFileBytes(source.Path()), pages);
    EXPECT_EQ(SplitTiffFile(source.Path(), moved.Path(), 0, nullptr, 0), 1);
    EXPECT_EQ(ReadFileBytes(moved.Path()), pages);
    EXPECT_FALSE(Exists(source.Path()));

    // No page is moved out of a file with a broken chain, but the whole file can be moved.
    Bytes broken = pages;
    broken.resize(broken.size() - 60);
    TempFile damaged(broken);
    NewFile whole;
    EXPECT_EQ(SplitTiffFile(damaged.Path(), whole.Path(), 1, nullptr, 0), 0);
    EXPECT_EQ(TiffError(), 6u);
    EXPECT_EQ(ReadFileBytes(damaged.Path()), broken);
    EXPECT_EQ(SplitTiffFile(damaged.Path(), whole.Path(), 0, nullptr, 0), 1);
    EXPECT_EQ(ReadFileBytes(whole.Path()), broken);
}

TEST(MovingPages, CutMovesTheBeginningIntoSinglePages)
{
    const Bytes pages = Pages(12);
    const struct {
        const char* row;
        int32_t count;
        uint32_t stopAt;
        int32_t result;
        int written, deleted;
    } rows[] = {
        {"some", 10, 0, 1, 10, 10},
        {"all", 12, 0, 1, 12, 12},
        {"stopped while copying", 10, 3, 0, 3, 0},
        {"stopped while deleting", 10, 13, 0, 10, 3},
        {"stopped behind the last", 10, 20, 0, 10, 10},
        {"none", 0, 0, 0, 0, 0},
        {"too many", 13, 0, 0, 0, 0},
    };
    for (const auto& [row, count, stopAt, result, written, deleted] : rows) {
        SCOPED_TRACE(row);
        NoLeaks leaks;
        TempFile source(pages);
        const NewFile base;
        NamedFiles outputs;
        for (int number = 1; number <= 12; ++number) {
            char ending[16];
            std::snprintf(ending, sizeof(ending), "%04d.tif", number);
            outputs.paths.push_back(std::string(base.Path()) + ending);
        }
        Listener listener{.stopAt = stopAt};
        EXPECT_EQ(CutTiffFile(source.Path(), base.Path(), count, Listener::Hear, listener.User()), result);
        for (int number = 0; number < written; ++number)
            ExpectPages(outputs.paths[static_cast<size_t>(number)].c_str(), pages, {number});
        EXPECT_EQ(Exists(outputs.paths.back()), written == 12);
        if (result) {
            EXPECT_EQ(listener.calls, 2u * static_cast<uint32_t>(count));
            EXPECT_EQ(listener.total, listener.calls);
        }
        Order rest;
        for (int page = deleted; page < 12; ++page)
            rest.push_back(page);
        EXPECT_EQ(Exists(source.Path()), !rest.empty());
        if (!rest.empty())
            ExpectPages(source.Path(), pages, rest);
    }
}

TEST(RawAppend, WritesTheStripsAsTheyAre)
{
    NoLeaks leaks;
    const Bytes pages = Pages(3);
    TempFile source(pages), raw(Hex("FFFEFD"));
    EXPECT_STREQ(AppendCCITTImageFile(raw.Path(), source.Path(), 2, 0), raw.Path());
    EXPECT_EQ(ReadFileBytes(raw.Path()), Hex("FFFEFD 020202 55"));
    EXPECT_NE(AppendCCITTImageFile(raw.Path(), source.Path(), 0, -2), nullptr);
    EXPECT_EQ(ReadFileBytes(raw.Path()), Hex("FFFEFD 0202 00 55"));
    const Bytes before = ReadFileBytes(raw.Path());
    TempFile without(OnePage(TiffPage::Picture(8, 1, 1, 1)));
    NewFile missing;
    EXPECT_EQ(AppendCCITTImageFile(missing.Path(), source.Path(), 0, 0), nullptr);
    EXPECT_FALSE(Exists(missing.Path()));
    EXPECT_EQ(AppendCCITTImageFile(raw.Path(), source.Path(), 3, 0), nullptr);
    EXPECT_EQ(AppendCCITTImageFile(raw.Path(), without.Path(), 0, 0), nullptr);
    EXPECT_EQ(AppendCCITTImageFile(raw.Path(), source.Path(), 0, -8), nullptr);
    EXPECT_EQ(AppendCCITTImageFile(source.Path(), source.Path(), 0, 0), nullptr);
    EXPECT_EQ(ReadFileBytes(raw.Path()), before);
    EXPECT_EQ(ReadFileBytes(source.Path()), pages);
}

TEST(PageNumbers, SetTheTotalWhereverThereIsOne)
{
    NoLeaks leaks;
    TiffPage many = Page(7);
    for (uint32_t tag = 60000; tag < 60040; ++tag)
        many.Long(static_cast<uint16_t>(tag), {tag});
    const Bytes pages =
        TiffBuilder().Add(Page(3)).Add(TiffPage::Picture(8, 1, 1, 1).Strips({Hex("01")})).Add(many).Build();
    Bytes wanted = pages;
    size_t changed = 0;
    for (size_t at = 0; at + 12 <= wanted.size(); at += 2)
        if (std::memcmp(&wanted[at], "\x29\x01\x03\x00\x02\x00\x00\x00", 8) == 0) {
            wanted[at + 10] = 0xCD;
            wanted[at + 11] = 0xAB;
            ++changed;
        }
    ASSERT_EQ(changed, 2u);
    TempFile file(pages);
    EXPECT_EQ(UpdatePageNumbers(file.Path(), 0x1ABCD), 1);
    EXPECT_EQ(ReadFileBytes(file.Path()), wanted);

    MemoryTiff memory(pages);
    EXPECT_EQ(UpdatePageNumbersInMemory(memory.file, 0xABCD), 1);
    EXPECT_EQ(Content(GetMemoryTiffHandle(memory.file), pages.size()), wanted);
    EXPECT_EQ(UpdatePageNumbersInMemory(nullptr, 1), 0);

    // A chain that loops, or leads out of the file, comes to an end.
    TiffBuilder builder;
    Bytes circle = builder.Add(Page(0)).Add(Page(1)).Build();
    std::memcpy(&circle[builder.links[1]], &builder.directories[0], 4);
    Bytes outside = circle;
    outside[builder.links[1]] = 0xF0;
    outside[builder.links[1] + 2] = 0x01;
    for (const Bytes& bad : {circle, outside, Pages(2, TIFF_MOTOROLA)}) {
        TempFile broken(bad);
        EXPECT_EQ(UpdatePageNumbers(broken.Path(), 5), 0);
        MemoryTiff held(bad);
        EXPECT_EQ(UpdatePageNumbersInMemory(held.file, 5), 0);
    }
}

TEST(TagEditing, ChangesOnePageAndKeepsTheRest)
{
    for (const uint16_t order : byteOrders) {
        NoLeaks leaks;
        const Bytes pages = Pages(3, order);
        TempFile file(pages);
        const uint16_t totals[] = {1, 30};
        EXPECT_EQ(AddTiffTagToImage(file.Path(), 1, 297, 3, totals, 2), 1);
        EXPECT_EQ(AddTiffTagToImage(file.Path(), 1, 65000, 7, "abcdefg", 7), 1);
        EXPECT_EQ(DeleteTiffTagOfImage(file.Path(), 2, 270), 1);
        EXPECT_EQ(DeleteTiffTagOfImage(file.Path(), 0, 270), 1);
        EXPECT_EQ(DeleteTiffTagOfImage(file.Path(), 0, 12345), 1);
        auto wanted = PagesOf(pages);
        wanted[1].replace(wanted[1].find("297 3 2: 1 9"), 12, "297 3 2: 1 30");
        wanted[1].insert(wanted[1].find("data 273"), "65000 7 7: 97 98 99 100 101 102 103\n");
        for (const size_t page : {0u, 2u}) {
            const size_t at = wanted[page].find("270 ");
            wanted[page].erase(at, wanted[page].find('\n', at) + 1 - at);
        }
        const Bytes edited = ReadFileBytes(file.Path());
        EXPECT_EQ(PagesOf(edited), wanted);
        EXPECT_EQ(Complaints(edited), "");
        EXPECT_EQ(edited[0], pages[0]);
    }
}

TEST(TagEditing, WorksBesideTheFileAndSaysWhatIsWrong)
{
    NoLeaks leaks;
    const Bytes pages = Pages(2);
    TempFile file(pages);
    std::string beside = file.Path();
    beside = beside.substr(0, beside.rfind('.')) + ".~~~";
    EXPECT_EQ(AddTiffTagToImage(file.Path(), 2, 270, 2, "x", 2), 0);
    EXPECT_EQ(TiffError(), 3u);
    EXPECT_EQ(DeleteTiffTagOfImage(file.Path(), -1, 270), 0);
    EXPECT_EQ(TiffError(), 3u);
    EXPECT_EQ(DeleteTiffTagOfImage(file.Path(), 0, 65536 + 270), 0);
    EXPECT_EQ(TiffError(), 29u);
    EXPECT_EQ(AddTiffTagToImage(file.Path(), 0, 65536 + 270, 2, "x", 2), 0);
    EXPECT_EQ(TiffError(), 29u);
    HGLOBAL made = OpenTiffFile(file.Path(), T_CREAT);
    EXPECT_EQ(DefineTiffImage(made), 0);
    EXPECT_EQ(DefineTiffImageInfo(made, 0, 65536 + 256, 3, 1), 0);
    EXPECT_EQ(TiffError(), 29u);
    CloseTiffFile(made);
    EXPECT_FALSE(Exists(beside));
    EXPECT_EQ(AddTiffTagToImage(file.Path(), 1, 270, 2, nullptr, 2), 0);
    EXPECT_EQ(TiffError(), 29u);
    EXPECT_TRUE(Exists(beside)) << "what was written stays";
    EXPECT_EQ(ReadFileBytes(file.Path()), pages);
    EXPECT_EQ(DeleteTiffTagOfImage(file.Path(), 0, 12345), 1) << "a file of the name is overwritten";
    EXPECT_FALSE(Exists(beside));
    ExpectPages(file.Path(), pages, {0, 1});

    ASSERT_TRUE(MoveFileA(file.Path(), beside.c_str()));
    EXPECT_EQ(DeleteTiffTagOfImage(beside.c_str(), 0, 270), 0) << "the file is its own temporary one";
    EXPECT_EQ(TiffError(), 29u);
    ExpectPages(beside.c_str(), pages, {0, 1});
    ASSERT_TRUE(MoveFileA(beside.c_str(), file.Path()));

    NewFile missing;
    EXPECT_EQ(DeleteTiffTagOfImage(missing.Path(), 0, 270), 0);
    EXPECT_EQ(TiffError(), 6u);
    TempFile text(Hex("6869"));
    EXPECT_EQ(DeleteTiffTagOfImage(text.Path(), 0, 270), 0);
    EXPECT_EQ(TiffError(), 1u);
}
