// Threads, time and libraries, and the books that the whole stand-in keeps: which call is to
// fail, how many were made, what went wrong. Calls of several threads wait for each other.
#include "standin.h"

#include <pthread.h>
#include <time.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <map>

namespace {

struct Injection {
    unsigned kinds = 0, target = 0, seen = 0, laterKinds = 0;
    bool torn = false, fired = false;
};

Injection injection;
std::map<standin::Call, uint64_t> callsMade;
uint64_t faults = 0;
const char* lastFault = "none";
DWORD slotsTaken = 0;
thread_local std::array<void*, 4> slotValues{};

using FindFunction = FARPROC (*)(const std::string& name);
std::map<std::string, FindFunction> libraries;
int64_t librariesHeld = 0;

} // namespace

namespace standin {

std::unique_lock<std::recursive_mutex> kernel::Guard()
{
    static auto& mutex = *new std::recursive_mutex; // outlives everything that is destroyed at exit
    return std::unique_lock(mutex);
}

bool kernel::Refuse(Call kind)
{
    ++callsMade[kind];
    if (injection.fired && (injection.laterKinds & kind))
        return true;
    const bool refused = (injection.kinds & kind) && ++injection.seen == injection.target;
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
    return {kernel::LiveBlocks(), kernel::LiveLocks(), kernel::LiveHandles() + librariesHeld};
}

uint64_t Faults()
{
    return faults;
}

const char* LastFault()
{
    return lastFault;
}

bool kernel::TearsWrites()
{
    return injection.torn && injection.seen == injection.target;
}

void FailNth(unsigned n, unsigned kinds, unsigned laterKinds, bool torn)
{
    injection = {kinds, n, 0, laterKinds, torn, false};
}

bool InjectionFired()
{
    return injection.fired;
}

void StopFailing()
{
    injection.kinds = injection.laterKinds = 0;
    kernel::LiftDiskLimit();
}

void ProvideLibrary(const char* fileName, FARPROC (*find)(const std::string& name))
{
    libraries[fileName] = find;
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

// Libraries are those that a test provides, and lie beside a library of our own.
DWORD GetModuleFileNameW(HMODULE, LPWSTR path, DWORD)
{
    constexpr char16_t OURS[] = u"C:\\TIFF.DLL";
    std::copy(std::begin(OURS), std::end(OURS), path);
    return std::size(OURS) - 1;
}

HMODULE LoadLibraryA(LPCSTR path)
{
    const auto guard = standin::kernel::Guard();
    const std::string name = path;
    const auto found = libraries.find(name.substr(name.rfind('\\') + 1));
    if (standin::kernel::Refuse(standin::Library) || found == libraries.end())
        return nullptr;
    ++librariesHeld;
    return reinterpret_cast<HMODULE>(&found->second);
}

HMODULE LoadLibraryW(LPCWSTR path)
{
    const std::u16string name = path;
    return LoadLibraryA(std::string(name.begin(), name.end()).c_str());
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name)
{
    const auto guard = standin::kernel::Guard();
    return standin::kernel::Refuse(standin::Library) ? nullptr
                                                     : (*reinterpret_cast<const FindFunction*>(module))(name);
}

BOOL FreeLibrary(HMODULE)
{
    const auto guard = standin::kernel::Guard();
    --librariesHeld;
    return TRUE;
}
}
