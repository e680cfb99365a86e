// The properties of the stand-in that other tests rely on.
#include "standin.h"

#include <cstring>
#include <fstream>
#include <thread>

namespace {

std::string NewFile(const char* name, const char* text = "12345678")
{
    const std::string path = standin::TempFolder() + '/' + name;
    std::ofstream(path) << text;
    return path;
}

HANDLE OpenToWrite(const std::string& path, DWORD share = 0, DWORD disposition = OPEN_EXISTING)
{
    return CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, share, nullptr, disposition, 0, nullptr);
}

} // namespace

TEST(Standin, ReallocationMovesTheDataKeepsTheHandleAndRefusesALockedBlock)
{
    const standin::LeakCheck leaks;
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 3);
    auto* data = static_cast<unsigned char*>(GlobalLock(block));
    EXPECT_EQ(data[2], 0xCD);
    memcpy(data, "abc", 3);
    EXPECT_EQ(GlobalReAlloc(block, 2, GMEM_MOVEABLE), nullptr);
    EXPECT_EQ(GlobalSize(block), 3u);
    GlobalUnlock(block);
    ASSERT_EQ(GlobalReAlloc(block, 6, GHND), block);
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
    const HGLOBAL movable = GlobalAlloc(GHND, 10), fixed = GlobalAlloc(GPTR, 10);
    EXPECT_EQ(GlobalLock(fixed), fixed);
    EXPECT_NE(GlobalLock(movable), movable);
    const HANDLE file = OpenToWrite(NewFile("counted"));
    EXPECT_EQ(standin::Live().blocks, before.blocks + 2);
    EXPECT_EQ(standin::Live().locks, before.locks + 1);
    EXPECT_EQ(standin::Live().handles, before.handles + 1);
    GlobalFree(movable); // still locked
    EXPECT_EQ(GlobalLock(movable), nullptr);
    EXPECT_EQ(GlobalFree(movable), movable);
    GlobalFree(fixed);
    EXPECT_EQ(GlobalFree(fixed), fixed);
    EXPECT_TRUE(CloseHandle(file));
    EXPECT_FALSE(CloseHandle(file));
    EXPECT_FALSE(CloseHandle(INVALID_HANDLE_VALUE));
    EXPECT_EQ(GlobalLock(nullptr), nullptr);
    EXPECT_EQ(standin::Faults(), faults + 5);
    EXPECT_EQ(standin::Live().locks, before.locks);
}

TEST(Standin, AnOpenFileIsNeitherDeletedNorReplacedNorRenamed)
{
    const standin::LeakCheck leaks;
    const std::string held = NewFile("held"), other = NewFile("other");
    const std::string free = standin::TempFolder() + "\\free";
    const HANDLE file = OpenToWrite(held);
    const auto violates = [](BOOL done) { return !done && GetLastError() == ERROR_SHARING_VIOLATION; };
    EXPECT_TRUE(violates(DeleteFileA(held.c_str())));
    EXPECT_TRUE(violates(MoveFileA(held.c_str(), free.c_str())));
    EXPECT_TRUE(violates(MoveFileA(other.c_str(), held.c_str())));
    EXPECT_TRUE(violates(OpenToWrite(held, FILE_SHARE_WRITE, CREATE_ALWAYS) != INVALID_HANDLE_VALUE));
    EXPECT_EQ(GetFileSize(file, nullptr), 8u);
    CloseHandle(file);
    EXPECT_FALSE(MoveFileA(other.c_str(), held.c_str()));
    EXPECT_EQ(GetLastError(), ERROR_ALREADY_EXISTS);
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
        const HGLOBAL first = GlobalAlloc(GHND, 1), second = GlobalAlloc(GHND, 1);
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
    EXPECT_EQ(GetLastError(), ERROR_DISK_FULL);
    EXPECT_EQ(standin::CallsMade(standin::Write), 2u);
    standin::StopFailing();
    CloseHandle(file);
}

TEST(Standin, ExitThreadEndsOnlyItsThread)
{
    std::thread([] { ExitThread(7); }).join();
    EXPECT_EQ(standin::LastThreadExitCode(), 7u);
}
