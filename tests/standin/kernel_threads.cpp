// Threads, time and modules, and the records of the whole stand-in: which call must fail, how many calls were
// made, which faults occurred.
#include "standin.h"

#include <pthread.h>
#include <strings.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <list>
#include <map>
#include <mutex>

namespace {

constexpr unsigned TLS_SLOTS = 64;
constexpr unsigned CALL_KINDS = 8;

struct Injection {
    std::atomic<unsigned> kinds{0}, target{0}, seen{0};
    std::atomic<bool> andAllLater{false}, fired{false};
};

struct FakeModule {
    std::string name;
    std::map<std::string, FARPROC> functions;
    int references = 0;
};

struct TlsValue {
    void* value;
    uint32_t generation;
};

constinit Injection injection;
constinit std::array<std::atomic<uint64_t>, CALL_KINDS> callsMade{};
constinit std::atomic<uint64_t> faults{0};
constinit std::atomic<const char*> lastFault{"none"};

constinit thread_local DWORD lastError = 0;
constinit std::atomic<int> threadExits{0};
constinit std::atomic<DWORD> threadExitCode{0};

// Odd while the slot is taken. A value set under an older number reads as null, so a slot comes back empty on
// every thread.
constinit std::array<std::atomic<uint32_t>, TLS_SLOTS> slotGenerations{};
constinit thread_local std::array<TlsValue, TLS_SLOTS> slotValues{};

std::mutex modulesMutex;
int moduleLoads = 0, moduleFrees = 0;

// A list, because handles are the addresses of its records. Never destroyed: a library may still release its
// modules while the process ends.
std::list<FakeModule>& Modules()
{
    static auto& modules = *new std::list<FakeModule>;
    return modules;
}

std::string WithExtension(std::string name)
{
    std::replace(name.begin(), name.end(), '\\', '/');
    const size_t slash = name.rfind('/');
    return name.find('.', slash == std::string::npos ? 0 : slash) == std::string::npos ? name + ".dll" : name;
}

bool SameModule(const std::string& registered, const std::string& asked)
{
    if (registered.find('/') != std::string::npos)
        return strcasecmp(registered.c_str(), asked.c_str()) == 0;
    const size_t slash = asked.rfind('/');
    return strcasecmp(registered.c_str(), asked.c_str() + (slash == std::string::npos ? 0 : slash + 1)) == 0;
}

FakeModule* FindModule(HMODULE handle)
{
    for (FakeModule& module : Modules())
        if (reinterpret_cast<HMODULE>(&module) == handle && module.references > 0)
            return &module;
    return nullptr;
}

bool SlotTaken(DWORD slot)
{
    return slot < TLS_SLOTS && slotGenerations[slot].load(std::memory_order_acquire) % 2 == 1;
}

} // namespace

namespace standin {

namespace kernel {

bool Refuse(Call kind, DWORD error)
{
    const auto row = static_cast<size_t>(std::countr_zero(static_cast<unsigned>(kind))) % CALL_KINDS;
    callsMade[row].fetch_add(1, std::memory_order_relaxed);
    if (!(injection.kinds.load(std::memory_order_acquire) & kind))
        return false;
    const unsigned n = injection.seen.fetch_add(1) + 1;
    if (n != injection.target && !(injection.andAllLater && n > injection.target))
        return false;
    injection.fired = true;
    lastError = error;
    return true;
}

void Fault(const char* what)
{
    lastFault = what;
    ++faults;
}

BOOL Fail(DWORD error)
{
    lastError = error;
    return FALSE;
}

} // namespace kernel

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
    injection.kinds = 0;
    injection.target = n;
    injection.seen = 0;
    injection.andAllLater = andAllLater;
    injection.fired = false;
    injection.kinds.store(kinds, std::memory_order_release);
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

uint64_t CallsMade(unsigned kinds)
{
    uint64_t sum = 0;
    for (unsigned kind = 0; kind < CALL_KINDS; ++kind)
        if (kinds >> kind & 1)
            sum += callsMade[kind];
    return sum;
}

void ResetCalls()
{
    for (auto& made : callsMade)
        made = 0;
}

void RegisterModule(const char* name, std::initializer_list<std::pair<const char*, FARPROC>> functions)
{
    const std::lock_guard guard(modulesMutex);
    FakeModule& module = Modules().emplace_front();
    module.name = WithExtension(name);
    for (const auto& [function, address] : functions)
        module.functions[function] = address;
}

void ForgetModules()
{
    const std::lock_guard guard(modulesMutex);
    Modules().clear();
    moduleLoads = moduleFrees = 0;
}

int ModuleLoads()
{
    const std::lock_guard guard(modulesMutex);
    return moduleLoads;
}

int ModuleFrees()
{
    const std::lock_guard guard(modulesMutex);
    return moduleFrees;
}

int ThreadExits()
{
    return threadExits;
}

DWORD LastThreadExitCode()
{
    return threadExitCode;
}

} // namespace standin

using standin::kernel::Fail;

extern "C" {

DWORD TlsAlloc()
{
    for (DWORD slot = 0; slot < TLS_SLOTS; ++slot) {
        uint32_t generation = slotGenerations[slot];
        if (generation % 2 == 0 && slotGenerations[slot].compare_exchange_strong(generation, generation + 1))
            return slot;
    }
    lastError = ERROR_NOT_ENOUGH_MEMORY;
    return TLS_OUT_OF_INDEXES;
}

LPVOID TlsGetValue(DWORD slot)
{
    if (!SlotTaken(slot)) {
        lastError = ERROR_INVALID_PARAMETER;
        return nullptr;
    }
    lastError = ERROR_SUCCESS;
    const TlsValue& held = slotValues[slot];
    return held.generation == slotGenerations[slot] ? held.value : nullptr;
}

BOOL TlsSetValue(DWORD slot, LPVOID value)
{
    if (!SlotTaken(slot))
        return Fail(ERROR_INVALID_PARAMETER);
    slotValues[slot] = {value, slotGenerations[slot]};
    return TRUE;
}

BOOL TlsFree(DWORD slot)
{
    if (!SlotTaken(slot)) {
        if (slot < TLS_SLOTS && slotGenerations[slot] != 0)
            standin::kernel::Fault("TlsFree of a freed slot");
        return Fail(ERROR_INVALID_PARAMETER);
    }
    ++slotGenerations[slot];
    return TRUE;
}

void ExitThread(DWORD code)
{
    threadExitCode = code;
    ++threadExits;
    pthread_exit(nullptr);
}

DWORD GetCurrentThreadId()
{
    return static_cast<DWORD>(syscall(SYS_gettid));
}

DWORD GetLastError()
{
    return lastError;
}

void SetLastError(DWORD error)
{
    lastError = error;
}

void Sleep(DWORD milliseconds)
{
    timespec left{.tv_sec = milliseconds / 1000, .tv_nsec = milliseconds % 1000 * 1'000'000L};
    while (nanosleep(&left, &left) != 0) {
    }
}

UINT SetHandleCount(UINT count)
{
    return count;
}

DWORD GetTickCount()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<DWORD>(now.tv_sec * 1000 + now.tv_nsec / 1000000);
}

void GetLocalTime(LPSYSTEMTIME time)
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    *time = {.wYear = static_cast<WORD>(local.tm_year + 1900),
             .wMonth = static_cast<WORD>(local.tm_mon + 1),
             .wDayOfWeek = static_cast<WORD>(local.tm_wday),
             .wDay = static_cast<WORD>(local.tm_mday),
             .wHour = static_cast<WORD>(local.tm_hour),
             .wMinute = static_cast<WORD>(local.tm_min),
             .wSecond = static_cast<WORD>(local.tm_sec),
             .wMilliseconds = static_cast<WORD>(now.tv_nsec / 1'000'000)};
}

DWORD GetModuleFileNameA(HMODULE handle, LPSTR buffer, DWORD bufferBytes)
{
    std::array<char, 4096> own{};
    std::string path;
    {
        const std::lock_guard guard(modulesMutex);
        if (const FakeModule* module = FindModule(handle))
            path = module->name;
        else if (readlink("/proc/self/exe", own.data(), own.size() - 1) > 0)
            path = own.data();
    }
    if (bufferBytes == 0)
        return 0;
    const size_t copied = std::min<size_t>(path.size(), bufferBytes - 1);
    buffer[path.copy(buffer, copied)] = 0;
    if (copied == path.size())
        return static_cast<DWORD>(copied);
    lastError = ERROR_INSUFFICIENT_BUFFER;
    return bufferBytes;
}

HMODULE LoadLibraryA(LPCSTR name)
{
    const std::lock_guard guard(modulesMutex);
    const std::string asked = WithExtension(name ? name : "");
    for (FakeModule& module : Modules()) {
        if (SameModule(module.name, asked)) {
            ++module.references;
            ++moduleLoads;
            return reinterpret_cast<HMODULE>(&module);
        }
    }
    lastError = ERROR_MOD_NOT_FOUND;
    return nullptr;
}

FARPROC GetProcAddress(HMODULE handle, LPCSTR name)
{
    const std::lock_guard guard(modulesMutex);
    const FakeModule* module = FindModule(handle);
    constexpr uintptr_t lastOrdinal = 0xFFFF;
    if (module && reinterpret_cast<uintptr_t>(name) > lastOrdinal)
        if (const auto found = module->functions.find(name); found != module->functions.end())
            return found->second;
    lastError = ERROR_PROC_NOT_FOUND;
    return nullptr;
}

BOOL FreeLibrary(HMODULE handle)
{
    const std::lock_guard guard(modulesMutex);
    FakeModule* module = FindModule(handle);
    if (!module) {
        if (handle)
            standin::kernel::Fault("FreeLibrary of a module that is not loaded");
        return Fail(ERROR_INVALID_HANDLE);
    }
    --module->references;
    ++moduleFrees;
    return TRUE;
}
}
