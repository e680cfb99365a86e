// Every system call of a change of notes fails once: the file has the old notes or the new ones.
#include "standin/standin.h"
#include "support/numbered_pages.h"

#include <filesystem>
#include <functional>

constexpr unsigned CALLS = standin::AnyCall & ~standin::Lock;

TEST(NotesFailure, LeavesTheFileOldOrNew)
{
    static const TiffNote note = {'F', 1, 2, 3, 4, 0, 3, "new"};
    static const struct {
        const char* row;
        std::function<int32_t(const char*)> change;
    } rows[] = {
        {"add", [](const char* path) { return AddTiffNote(path, 1, &note); }},
        {"replace", [](const char* path) { return ReplaceTiffNote(path, 1, 0, &note); }},
        {"delete", [](const char* path) { return DeleteTiffNote(path, 1, 0); }},
    };
    const Bytes original =
        TiffBuilder().Add(Page(0)).Add(Page(1).Ascii(316, std::string("~,1,T,1,2,3,4,5,old") + '\0')).Build();
    for (const auto& [row, change] : rows) {
        SCOPED_TRACE(row);
        const TempFile model(original);
        ASSERT_EQ(change(model.Path()), 1);
        const Bytes changed = ReadFileBytes(model.Path());
        standin::FailEach(CALLS, [&](unsigned n) {
            standin::StopFailing();
            const TempFile file(original);
            const standin::LeakCheck leaks;
            std::string beside = file.Path();
            beside = beside.substr(0, beside.rfind('.')) + ".~~~";
            standin::FailNth(n, CALLS);
            const int32_t result = change(file.Path());
            const bool fired = standin::InjectionFired();
            standin::StopFailing();
            if (result)
                EXPECT_EQ(ReadFileBytes(file.Path()), changed);
            else if (Exists(file.Path()))
                EXPECT_EQ(ReadFileBytes(file.Path()), original);
            else
                EXPECT_EQ(ReadFileBytes(beside), changed); // the swap failed half-way
            EXPECT_TRUE(result || (fired && TiffError() != 0));
            std::filesystem::remove(beside);
        });
    }
}
