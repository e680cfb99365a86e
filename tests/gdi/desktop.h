// Pictures, companion libraries and what a process holds, as the desktop's tests need them.
#pragma once

#include "support/tiff_builder.h"

#include <string>
#include <vector>

// 0x00RRGGBB from the top left.
struct Picture {
    int32_t width = 0, height = 0;
    std::vector<uint32_t> pixels{};

    bool operator==(const Picture&) const = default;
    Picture UpsideDown() const;
};

// These take their argument and free it; nothing of null.
Picture TakeBitmap(HBITMAP bitmap);
Picture TakeDib(HGLOBAL dib);

Picture Look(HBITMAP bitmap);

// A folder of its own, with copies of files of the build, for a scope.
class Folder {
public:
    Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder();

    std::string Copy(const std::string& from, const char* name);
    const std::string& Path() const
    {
        return path;
    }

private:
    std::string path;
    std::vector<std::string> files;
};

std::string LibraryFile();     // TIFF.DLL
std::string DialogsFile();     // the companions for tests
std::string JpegLibraryFile(); // in a folder where nothing is found by chance
std::string SiblingsFolder();

// The system also finds libraries in this folder, for a scope.
class SearchedFolder {
public:
    explicit SearchedFolder(const std::string& folder)
    {
        SetDllDirectoryA(folder.c_str());
    }
    SearchedFolder(const SearchedFolder&) = delete;
    SearchedFolder& operator=(const SearchedFolder&) = delete;
    ~SearchedFolder()
    {
        SetDllDirectoryA(nullptr);
    }
};

// A library held for a scope, with its functions by name.
class HeldLibrary {
public:
    explicit HeldLibrary(const std::string& file) : module(LoadLibraryA(file.c_str()))
    {
    }
    HeldLibrary(const HeldLibrary&) = delete;
    HeldLibrary& operator=(const HeldLibrary&) = delete;
    ~HeldLibrary()
    {
        FreeLibrary(module);
    }
    template <class Function>
    Function* Find(const char* name) const
    {
        return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    }

private:
    HMODULE module;
};

// How far each kind of handle has come: a leak moves it on.
struct HandleMarks {
    uint32_t gdi, deviceContexts, blocks, handles;
};

HandleMarks TakeMarks();

// Expects that the calls have left nothing behind.
void ExpectNoGrowth(const HandleMarks& before, uint32_t calls);

Picture OnClipboard();

HCURSOR WaitCursor();
