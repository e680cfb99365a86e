// What a test may ask of the stand-in kernel: what is still held, how many calls were
// made, which call is to fail, how much fits on the disk.
// A fault is a use of something that was alive once: a second free, a closed handle. A
// handle that never existed is only refused, as callers may pass one on purpose.
#pragma once

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
#include <mutex>
#include <string>

namespace standin {

struct Counts {
    int64_t blocks, locks, handles;
};

Counts Live();
uint64_t Faults();
const char* LastFault();

// Open counts GetTempFileNameA too, Allocation GlobalReAlloc, Seek also GetFileSize, Write also SetEndOfFile.
enum Call : unsigned {
    Allocation = 1,
    Lock = 2,
    Open = 4,
    Read = 8,
    Write = 16,
    Seek = 32,
    Delete = 64,
    Move = 128,
    AnyCall = 255,
    Library = 512 // beside them: loading a library, finding a function in it
};

// Counts from 1 over the calls of these kinds. From then on calls of the later kinds fail, too.
// A torn write has put half of its bytes into the file, unless it is as short as a link.
void FailNth(unsigned n, unsigned kinds, unsigned laterKinds = 0, bool torn = false);
// Keeps its answer after StopFailing, until the next FailNth.
bool InjectionFired();
// Disarms FailNth and lifts LimitDisk.
void StopFailing();

// Files may grow by this many bytes in all. The write that meets the limit succeeds with
// a short count; every growing write after it fails. SetEndOfFile grows whole or not at all.
void LimitDisk(uint64_t bytes);

uint64_t CallsMade(Call kind);
void ResetCalls();

// The largest single block that can be had, 1 GiB at the start.
void LimitAllocation(uint64_t bytes);
uint64_t BytesAllocatedPeak();
// The largest size asked for since ResetPeak, granted or not.
uint64_t LargestAllocation();
void ResetPeak();

// A library that LoadLibraryA finds, with the functions in it.
void ProvideLibrary(const char* fileName, FARPROC (*find)(const std::string& name));

// Without a separator at the end. Also what GetTempPathA answers, with one.
std::string TempFolder();

class LeakCheck {
public:
    LeakCheck() : before(Live()), faultsBefore(Faults())
    {
    }
    LeakCheck(const LeakCheck&) = delete;
    LeakCheck& operator=(const LeakCheck&) = delete;
    ~LeakCheck()
    {
        const Counts after = Live();
        EXPECT_EQ(after.blocks, before.blocks) << "global blocks leaked";
        EXPECT_EQ(after.locks, before.locks) << "locks left behind";
        EXPECT_EQ(after.handles, before.handles) << "file handles leaked";
        EXPECT_EQ(Faults(), faultsBefore) << "last fault: " << LastFault();
    }

private:
    Counts before;
    uint64_t faultsBefore;
};

// Runs the operation with its first call failing, then its second, until a run comes
// through untouched. That last run is the plain success.
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
std::unique_lock<std::recursive_mutex> Guard();
int64_t LiveBlocks();
int64_t LiveLocks();
int64_t LiveHandles();
bool Refuse(Call kind);
bool TearsWrites(); // the refused one
void Fault(const char* what);
void LiftDiskLimit();
} // namespace kernel

} // namespace standin
