// A second copy of the library, loaded late, so that some threads are older than it.
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <windows.h>

namespace {

using TiffErrorRoutine = uint32_t (*)();
using SetTiffErrorRoutine = uint32_t (*)(uint32_t);

class LateLibrary {
public:
    LateLibrary()
    {
        char own[MAX_PATH], folder[MAX_PATH];
        GetModuleFileNameA(GetModuleHandleA("TIFF.DLL"), own, MAX_PATH);
        GetTempPathA(MAX_PATH, folder);
        path = std::string(folder) + "TIFFLATE.DLL";
        CopyFileA(own, path.c_str(), FALSE);
        module = LoadLibraryA(path.c_str());
    }
    ~LateLibrary()
    {
        FreeLibrary(module);
        DeleteFileA(path.c_str());
    }
    template <class Routine>
    Routine Find(const char* name) const
    {
        return reinterpret_cast<Routine>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    }

private:
    std::string path;
    HMODULE module;
};

} // namespace

TEST(Attach, ThreadsOlderThanTheLibraryHaveAnErrorOfTheirOwn)
{
    HANDLE loaded = CreateEventA(nullptr, TRUE, FALSE, nullptr);
    const LateLibrary* library = nullptr;
    uint32_t first = 99, second = 99;
    std::thread older([&] {
        WaitForSingleObject(loaded, INFINITE);
        first = library->Find<TiffErrorRoutine>("TiffError")();
        library->Find<SetTiffErrorRoutine>("SetTiffError")(12);
        second = library->Find<TiffErrorRoutine>("TiffError")();
    });
    const LateLibrary late;
    library = &late;
    late.Find<SetTiffErrorRoutine>("SetTiffError")(6);
    SetEvent(loaded);
    older.join();
    CloseHandle(loaded);
    EXPECT_EQ(first, 0u);
    EXPECT_EQ(second, 12u);
    EXPECT_EQ(late.Find<TiffErrorRoutine>("TiffError")(), 6u);
}

TEST(Attach, ThreadSlotsAreGivenBack)
{
    // Loads it more often than a process has slots.
    for (int load = 0; load < 1200; ++load) {
        const LateLibrary late;
        ASSERT_NE(late.Find<TiffErrorRoutine>("TiffError"), nullptr) << load;
        late.Find<SetTiffErrorRoutine>("SetTiffError")(6);
    }
}
