// The properties of the stand-in that other tests rely on.
#include "standin.h"

#include <cstring>
#include <fstream>

namespace {

std::string NewFile(const char* name)
{
    const std::string path = standin::TempFolder() + '/' + name;
    std::ofstream(path) << "12345678";
    return path;
}

HANDLE OpenToWrite(const std::string& path)
{
    return CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
}

} // namespace

TEST(Standin, ReallocationMovesTheDataKeepsTheHandleAndRefusesALockedBlock)
{
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 3);
    auto* data = static_cast<unsigned char*>(GlobalLock(block));
    EXPECT_EQ(data[2], 0xCD);
    memcpy(data, "abc", 3);
    EXPECT_EQ(GlobalReAlloc(block, 2, GMEM_MOVEABLE), nullptr);
    EXPECT_EQ(GlobalSize(block), 3u);
    GlobalUnlock(block);
    ASSERT_EQ(GlobalReAlloc(block, 6, GMEM_MOVEABLE | GMEM_ZEROINIT), block);
    const void* moved = GlobalLock(block);
    EXPECT_NE(moved, data);
    EXPECT_EQ(memcmp(moved, "abc\0\0\0", 6), 0);
    GlobalUnlock(block);
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(Standin, CountsWhatIsHeldAndNoticesMisuse)
{
    const standin::Counts before = standin::Live();
    const uint64_t faults = standin::Faults();
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 10);
    EXPECT_NE(GlobalLock(block), block);
    const HANDLE file = OpenToWrite(NewFile("counted"));
    EXPECT_EQ(standin::Live().blocks, before.blocks + 1);
    EXPECT_EQ(standin::Live().locks, before.locks + 1);
    EXPECT_EQ(standin::Live().handles, before.handles + 1);
    GlobalFree(block); // still locked
    EXPECT_EQ(GlobalLock(block), nullptr);
    EXPECT_EQ(GlobalFree(block), block);
    EXPECT_TRUE(CloseHandle(file));
    EXPECT_FALSE(CloseHandle(file));
    EXPECT_FALSE(CloseHandle(INVALID_HANDLE_VALUE));
    EXPECT_EQ(GlobalLock(nullptr), nullptr);
    EXPECT_EQ(standin::Faults(), faults + 4);
    EXPECT_EQ(standin::Live().locks, before.locks);
}

TEST(Standin, AnOpenFileIsNeitherDeletedNorReplacedNorRenamed)
{
    const std::string held = NewFile("held"), other = NewFile("other");
    const std::string free = standin::TempFolder() + "\\free";
    const HANDLE file = OpenToWrite(held);
    EXPECT_FALSE(DeleteFileA(held.c_str()));
    EXPECT_FALSE(MoveFileA(held.c_str(), free.c_str()));
    CloseHandle(file);
    EXPECT_FALSE(MoveFileA(other.c_str(), held.c_str()));
    EXPECT_TRUE(DeleteFileA(held.c_str()));
    EXPECT_TRUE(MoveFileA(other.c_str(), free.c_str()));
    EXPECT_TRUE(DeleteFileA(free.c_str()));
}

TEST(Standin, FailsExactlyTheCallAskedForAndWritesOnlyWhatFits)
{
    const standin::LeakCheck leaks;
    unsigned rounds = 0;
    standin::FailEach(standin::Allocation | standin::Lock, [&](unsigned n) {
        ++rounds;
        const HGLOBAL first = GlobalAlloc(GMEM_MOVEABLE, 1), second = GlobalAlloc(GMEM_MOVEABLE, 1);
        const bool locked = GlobalLock(second) && (GlobalUnlock(second), true);
        EXPECT_EQ(first != nullptr, n != 1);
        EXPECT_EQ(second != nullptr, n != 2);
        EXPECT_EQ(locked, n != 2 && n != 3);
        GlobalFree(second);
        GlobalFree(first);
    });
    EXPECT_EQ(rounds, 4u);
    const HANDLE file = OpenToWrite(NewFile("limited")); // 8 bytes already there
    DWORD written = 0;
    standin::ResetCalls();
    standin::LimitDisk(3);
    EXPECT_TRUE(WriteFile(file, "0123456789ABCDEF", 16, &written, nullptr));
    EXPECT_EQ(written, 11u);
    EXPECT_FALSE(WriteFile(file, "0", 1, &written, nullptr));
    EXPECT_EQ(standin::CallsMade(standin::Write), 2u);
    standin::StopFailing();
    CloseHandle(file);
}
