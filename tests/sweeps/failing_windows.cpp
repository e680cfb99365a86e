// TIFF.DLL's own imports lead here: a table names each call, how it fails and what it takes or gives back.
// The test's calls do not pass this way.
#include "gdi/desktop.h"
#include "sweeps/answers.h"
#include "sweeps/failing.h"

#include <cstring>
#include <gtest/gtest.h>
#include <map>
#include <memory>

namespace sweeps {

namespace {

// What a call does with handles. The first four take or make the result, the others use an argument.
enum class Effect { None, Block, Handle, Object, Free, FreeSecond, GiveSecond, Resize, Lock, Unlock };

struct Injection {
    unsigned kinds = 0, laterKinds = 0, seen = 0, target = 0;
    bool torn = false;
    const char* refused = nullptr;
};

Injection injection;
// What the library holds: each value with what made it, and the locks of each block.
std::map<uintptr_t, Effect> held;
std::map<uintptr_t, int64_t> locks;

const DWORD testThread = GetCurrentThreadId(); // the system has others, which attach to the library, too

bool Refuse(unsigned kind, const char* name)
{
    if (injection.refused && (injection.laterKinds & kind))
        return true;
    const bool refused = (injection.kinds & kind) && ++injection.seen == injection.target;
    if (refused)
        injection.refused = name;
    return refused;
}

template <class Value>
uintptr_t Number(Value value)
{
    if constexpr (std::is_pointer_v<Value>)
        return reinterpret_cast<uintptr_t>(value);
    else if constexpr (std::is_integral_v<Value>)
        return static_cast<uintptr_t>(value);
    else
        return 0; // a record
}

template <class Value>
Value FromNumber(intptr_t number)
{
    if constexpr (std::is_pointer_v<Value>)
        return reinterpret_cast<Value>(number);
    else
        return static_cast<Value>(number);
}

void Note(Effect effect, uintptr_t result, uintptr_t first, uintptr_t second)
{
    if (effect == Effect::Block || effect == Effect::Handle || effect == Effect::Object) {
        if (result != 0 && result != Number(INVALID_HANDLE_VALUE))
            held[result] = effect;
    } else if (effect == Effect::Free) {
        held.erase(first);
    } else if (effect == Effect::FreeSecond || (effect == Effect::GiveSecond && result != 0)) {
        held.erase(second);
    } else if (effect == Effect::Resize && result != 0 && held.erase(first)) {
        held[result] = Effect::Block;
    } else if (effect == Effect::Lock && result != 0) {
        ++locks[first];
    } else if (effect == Effect::Unlock && --locks[first] == 0) {
        locks.erase(first);
    }
}

struct Import {
    const char* name;
    unsigned kind; // 0 is never refused
    intptr_t failure;
    Effect effect;
};

extern const Import imports[];

template <size_t INDEX, class Routine>
struct Call;

template <size_t INDEX, class Result, class... Arguments>
struct Call<INDEX, Result (*)(Arguments...)> {
    static inline Result (*real)(Arguments...) = nullptr;

    static Result Made(Arguments... arguments)
    {
        const Import& import = imports[INDEX];
        if (GetCurrentThreadId() != testThread)
            return real(arguments...);
        if (Refuse(import.kind, import.name))
            return FromNumber<Result>(import.failure);
        const uintptr_t numbers[] = {Number(arguments)..., 0, 0};
        const Result result = real(arguments...);
        Note(import.effect, Number(result), numbers[0], numbers[1]);
        return result;
    }
};

// clang-format off
#define IMPORTS(ROW) \
    ROW(GlobalAlloc, Allocation, 0, Block) ROW(GlobalReAlloc, Allocation, 0, Resize) \
    ROW(GlobalFree, 0, 0, Free) ROW(GlobalLock, Lock, 0, Lock) ROW(GlobalUnlock, 0, 0, Unlock) \
    ROW(CreateFileA, Open, -1, Handle) ROW(CloseHandle, 0, 0, Free) ROW(ReadFile, Read, 0, None)  \
    ROW(SetEndOfFile, Write, 0, None) ROW(SetFilePointerEx, Seek, 0, None) \
    ROW(GetFileSizeEx, Seek, 0, None) ROW(DeleteFileA, Delete, 0, None) ROW(MoveFileA, Move, 0, None) \
    ROW(LoadLibraryA, Library, 0, Handle) ROW(LoadLibraryW, Library, 0, Handle) ROW(GetProcAddress, Library, 0, None) ROW(FreeLibrary, 0, 0, Free) \
    ROW(CreateBitmap, Draw, 0, Object) ROW(CreateBitmapIndirect, Draw, 0, Object) \
    ROW(CreateCompatibleBitmap, Draw, 0, Object) ROW(CreateCompatibleDC, Draw, 0, Object) \
    ROW(CreateDIBSection, Draw, 0, Object) ROW(CreateFontIndirectA, Draw, 0, Object) \
    ROW(CreatePalette, Draw, 0, Object) ROW(CreatePen, Draw, 0, Object) ROW(GetDC, Draw, 0, Object) \
    ROW(DeleteDC, 0, 0, Free) ROW(DeleteObject, 0, 0, Free) ROW(ReleaseDC, 0, 0, FreeSecond) \
    ROW(ExtTextOutA, Draw, 0, None) ROW(TextOutA, Draw, 0, None) ROW(GetBitmapBits, Draw, 0, None) \
    ROW(GetDIBits, Draw, 0, None) ROW(SetDIBits, Draw, 0, None) ROW(SetDIBitsToDevice, Draw, 0, None) \
    ROW(GetObjectA, Draw, 0, None) ROW(GetCharWidth32A, Draw, 0, None) ROW(GetTextExtentExPointA, Draw, 0, None) \
    ROW(GetTextExtentPoint32A, Draw, 0, None) ROW(GetTextMetricsA, Draw, 0, None) ROW(SelectObject, Draw, 0, None) \
    ROW(SelectPalette, Draw, 0, None) ROW(SaveDC, Draw, 0, None) ROW(ModifyWorldTransform, Draw, 0, None) \
    ROW(SetGraphicsMode, Draw, 0, None) ROW(PatBlt, Draw, 0, None) ROW(Polygon, Draw, 0, None) \
    ROW(FillRect, Draw, 0, None) ROW(GetClientRect, Draw, 0, None) ROW(GetClipBox, Draw, 0, None) \
    ROW(OpenClipboard, Draw, 0, None) ROW(EmptyClipboard, Draw, 0, None) ROW(GetClipboardData, Draw, 0, None) \
    ROW(SetClipboardData, Draw, 0, GiveSecond) ROW(DialogBoxParamW, Draw, -1, None)

#define IMPORT(NAME, KIND, FAILURE, EFFECT) {#NAME, KIND, FAILURE, Effect::EFFECT},
#define PLACE(NAME, KIND, FAILURE, EFFECT) NAME##_PLACE,
#define LEAD(NAME, KIND, FAILURE, EFFECT) Lead<NAME##_PLACE, decltype(&NAME)>(#NAME);
// clang-format on

const Import imports[] = {IMPORTS(IMPORT)};
enum Place : size_t { IMPORTS(PLACE) };

// The slot of the table that the loader filled.
void** SlotOf(const char* name)
{
    auto* base = reinterpret_cast<uint8_t*>(GetModuleHandleA("TIFF.DLL"));
    const auto* header = reinterpret_cast<const IMAGE_NT_HEADERS*>(
        base + reinterpret_cast<const IMAGE_DOS_HEADER*>(base)->e_lfanew);
    const auto* library = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(
        base + header->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
    for (; library->Name; ++library) {
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + library->OriginalFirstThunk);
        auto* slots = reinterpret_cast<IMAGE_THUNK_DATA*>(base + library->FirstThunk);
        for (; names->u1.AddressOfData; ++names, ++slots) {
            const auto* imported =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(imported->Name), name) == 0)
                return reinterpret_cast<void**>(&slots->u1.Function);
        }
    }
    return nullptr;
}

void* Exchange(const char* name, void* routine)
{
    void** slot = SlotOf(name);
    EXPECT_NE(slot, nullptr) << "the library does not import " << name;
    DWORD protection = 0;
    if (!slot || !VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection))
        return nullptr;
    void* real = *slot;
    *slot = routine;
    VirtualProtect(slot, sizeof(*slot), protection, &protection);
    return real;
}

template <size_t INDEX, class Routine>
void Lead(const char* name)
{
    using Made = Call<INDEX, Routine>;
    Made::real = reinterpret_cast<Routine>(Exchange(name, reinterpret_cast<void*>(Made::Made)));
}

// Where temporary files go is ours; nobody waits; pages are made at one moment.
DWORD TempPath(DWORD, LPSTR buffer) noexcept
{
    std::strcpy(buffer, (TempFolder() + "\\").c_str());
    return static_cast<DWORD>(std::strlen(buffer));
}

UINT TempName(LPCSTR folder, LPCSTR prefix, UINT unique, LPSTR name) noexcept
{
    return Refuse(Open, "GetTempFileNameA") ? 0 : GetTempFileNameA(folder, prefix, unique, name);
}

BOOL WriteTorn(HANDLE file, const void* bytes, DWORD count, DWORD* written, OVERLAPPED* overlapped) noexcept
{
    const bool first = !injection.refused;
    if (!Refuse(Write, "WriteFile"))
        return WriteFile(file, bytes, count, written, overlapped);
    if (first && injection.torn && count > 8)
        WriteFile(file, bytes, count / 2, written, nullptr);
    *written = 0;
    return FALSE;
}

void NoSleep(DWORD) noexcept
{
}

void OneMoment(SYSTEMTIME* now) noexcept
{
    *now = {2024, 2, 4, 29, 23, 59, 58, 0};
}

struct Imports {
    Imports()
    {
        IMPORTS(LEAD)
        Exchange("GetTempPathA", reinterpret_cast<void*>(TempPath));
        Exchange("GetTempFileNameA", reinterpret_cast<void*>(TempName));
        Exchange("WriteFile", reinterpret_cast<void*>(WriteTorn));
        Exchange("Sleep", reinterpret_cast<void*>(NoSleep));
        Exchange("GetLocalTime", reinterpret_cast<void*>(OneMoment));
    }
};

} // namespace

void FailNth(unsigned n, unsigned kinds, unsigned laterKinds, bool torn)
{
    injection = {kinds, laterKinds, 0, n, torn, nullptr};
}

bool StopFailing()
{
    injection.kinds = injection.laterKinds = 0;
    return injection.refused != nullptr;
}

const char* RefusedCall()
{
    return injection.refused;
}

Held Live()
{
    static const Imports led;
    Held live{};
    for (const auto& [value, effect] : held)
        ++(effect == Effect::Block ? live.blocks : effect == Effect::Handle ? live.handles : live.objects);
    for (const auto& [block, count] : locks)
        live.locks += count;
    return live;
}

void Forget(const void* handed)
{
    held.erase(Number(handed));
    locks.erase(Number(handed));
}

void ProvideSiblings()
{
    static const SearchedFolder searched(SiblingsFolder());
    static const HeldLibrary annotations(SiblingsFolder() + "\\kvanno.dll"), dialogs(DialogsFile()),
        jpeg(JpegLibraryFile());
    annotations.Find<decltype(AnswerAnnotations)>("AnswerAnnotations")(&annotationAnswers);
    dialogs.Find<decltype(AnswerSaveDialog)>("AnswerSaveDialog")(1, &saveAnswers);
}

std::string TempFolder()
{
    static const std::string folder = [] {
        char parent[MAX_PATH];
        GetTempPathA(MAX_PATH, parent);
        const std::string made = std::string(parent) + "sweeps" + std::to_string(GetCurrentProcessId());
        CreateDirectoryA(made.c_str(), nullptr);
        return made;
    }();
    return folder;
}

} // namespace sweeps
