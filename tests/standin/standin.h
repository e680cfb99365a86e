// The tests' control of the stand-in kernel: open handles and blocks, counts of calls, the call that must
// fail, the room on the disk, the modules that can be loaded. A fault is a use of something that was valid
// once: a second free, a closed handle. A handle that never existed is only refused, because callers may pass
// one on purpose.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>

namespace standin {

struct Counts {
    int64_t blocks, locks, handles;
};

Counts Live();
uint64_t Faults();
const char* LastFault();

// Open counts GetTempFileNameA too, Allocation GlobalReAlloc, Seek also GetFileSize, Write
// also FlushFileBuffers and SetEndOfFile. CopyFileA counts as the opens, reads and writes it is made of.
enum Call : unsigned {
    Allocation = 1,
    Lock = 2,
    Open = 4,
    Read = 8,
    Write = 16,
    Seek = 32,
    Delete = 64,
    Move = 128,
    AnyCall = 255
};

// Counts from 1 over the calls of these kinds on all threads.
void FailNth(unsigned n, unsigned kinds, bool andAllLater = false);
// Keeps its value after StopFailing, until the next FailNth.
bool InjectionFired();
// Disarms FailNth and lifts LimitDisk.
void StopFailing();

// Files may grow by this many bytes in all. The write that meets the limit succeeds with
// a short count; every growing write after it fails. SetEndOfFile grows whole or not at all.
void LimitDisk(uint64_t bytes);

uint64_t CallsMade(unsigned kinds);
void ResetCalls();

// The largest single block available, 1 GiB at the start.
void LimitAllocation(uint64_t bytes);
uint64_t BytesAllocatedPeak();
// The largest size requested since ResetPeak, granted or not.
uint64_t LargestAllocation();
void ResetPeak();

// A name without a folder stands for that file in any folder; case does not matter.
void RegisterModule(const char* name, std::initializer_list<std::pair<const char*, FARPROC>> functions);
// Also sets both counts to 0.
void ForgetModules();
int ModuleLoads();
int ModuleFrees();

// ExitThread ends the calling thread and runs no destructors of code built without exceptions, so call it on
// a thread of its own.
int ThreadExits();
DWORD LastThreadExitCode();

// Without a separator at the end. Also what GetTempPathA answers, with one.
std::string TempFolder();

class LeakCheck {
public:
    LeakCheck() : before(Live()), faultsBefore(Faults())
    {
    }
    ~LeakCheck()
    {
        if (!checked)
            Expect();
    }
    LeakCheck(const LeakCheck&) = delete;
    LeakCheck& operator=(const LeakCheck&) = delete;

    void Expect()
    {
        checked = true;
        const Counts after = Live();
        EXPECT_EQ(after.blocks, before.blocks) << "global blocks leaked";
        EXPECT_EQ(after.locks, before.locks) << "locks left behind";
        EXPECT_EQ(after.handles, before.handles) << "file handles leaked";
        EXPECT_EQ(Faults(), faultsBefore) << "last fault: " << LastFault();
    }

private:
    Counts before;
    uint64_t faultsBefore;
    bool checked = false;
};

// Runs the operation with its first call failing, then its second, until no call fails. That last run is the
// plain success.
template <class Operation>
void FailEach(unsigned kinds, Operation operation)
{
    constexpr unsigned mostRounds = 20'000;
    const bool failedBefore = testing::Test::HasFailure();
    for (unsigned n = 1; n <= mostRounds; ++n) {
        SCOPED_TRACE(testing::Message() << "failing call " << n << " of kinds " << kinds);
        FailNth(n, kinds);
        operation(n);
        const bool fired = InjectionFired();
        StopFailing();
        if (!fired || testing::Test::HasFailure() != failedBefore)
            return;
    }
    ADD_FAILURE() << "still failing after " << mostRounds << " rounds";
}

// Shared by the kernel files, not for tests.
namespace kernel {
int64_t LiveBlocks();
int64_t LiveLocks();
int64_t LiveHandles();
bool Refuse(Call kind, DWORD error);
void Fault(const char* what);
BOOL Fail(DWORD error);
void LiftDiskLimit();
} // namespace kernel

} // namespace standin
