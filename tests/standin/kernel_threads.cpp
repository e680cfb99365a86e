// Threads, time and libraries, and the books that the whole stand-in keeps: which call is to
// fail, how many were made, what went wrong. One thread at a time calls the library here.
#include "standin.h"

#include <pthread.h>
#include <time.h>

#include <array>
#include <map>

namespace {

struct Injection {
    unsigned kinds = 0, target = 0, seen = 0;
    bool andAllLater = false, fired = false;
};

Injection injection;
std::map<standin::Call, uint64_t> callsMade;
uint64_t faults = 0;
const char* lastFault = "none";
DWORD slotsTaken = 0;
thread_local std::array<void*, 4> slotValues{};

} // namespace

namespace standin {

bool kernel::Refuse(Call kind)
{
    ++callsMade[kind];
    if (!(injection.kinds & kind))
        return false;
    const unsigned n = ++injection.seen;
    const bool refused = n == injection.target || (injection.andAllLater && n > injection.target);
    injection.fired |= refused;
    return refused;
}

void kernel::Fault(const char* what)
{
    lastFault = what;
    ++faults;
}

Counts Live()
{
    return {kernel::LiveBlocks(), kernel::LiveLocks(), kernel::LiveHandles()};
}

uint64_t Faults()
{
    return faults;
}

const char* LastFault()
{
    return lastFault;
}

void FailNth(unsigned n, unsigned kinds, bool andAllLater)
{
    injection = {kinds, n, 0, andAllLater, false};
}

bool InjectionFired()
{
    return injection.fired;
}

void StopFailing()
{
    injection.kinds = 0;
    kernel::LiftDiskLimit();
}

uint64_t CallsMade(Call kind)
{
    return callsMade[kind];
}

void ResetCalls()
{
    callsMade = {};
}

} // namespace standin

extern "C" {

DWORD TlsAlloc()
{
    return slotsTaken < slotValues.size() ? slotsTaken++ : TLS_OUT_OF_INDEXES;
}

LPVOID TlsGetValue(DWORD slot)
{
    return slotValues[slot];
}

BOOL TlsSetValue(DWORD slot, LPVOID value)
{
    slotValues[slot] = value;
    return TRUE;
}

BOOL TlsFree(DWORD)
{
    return TRUE;
}

void ExitThread(DWORD)
{
    pthread_exit(nullptr);
}

// Nobody waits in tests.
void Sleep(DWORD)
{
}

UINT SetHandleCount(UINT count)
{
    return count;
}

DWORD GetTickCount()
{
    return static_cast<DWORD>(clock());
}

void GetLocalTime(SYSTEMTIME* now)
{
    *now = {2024, 2, 4, 29, 23, 59, 58, 0};
}

// Here are no other libraries.
DWORD GetModuleFileNameW(HMODULE, LPWSTR, DWORD)
{
    return 0;
}

HMODULE LoadLibraryA(LPCSTR)
{
    return nullptr;
}

HMODULE LoadLibraryW(LPCWSTR)
{
    return nullptr;
}

FARPROC GetProcAddress(HMODULE, LPCSTR)
{
    return nullptr;
}

BOOL FreeLibrary(HMODULE)
{
    return FALSE;
}
}
