// Pictures, companion libraries and handle counts for the tests on a desktop.
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

// These take their argument and free it. Null gives an empty result.
Picture TakeBitmap(HBITMAP bitmap);
Picture TakeDib(HGLOBAL dib);

Picture Look(HBITMAP bitmap);

// A folder for a scope, with copies of files from the build.
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
std::string JpegLibraryFile(); // in a folder that the system does not search
std::string SiblingsFolder();

// Adds this folder to those that the system searches for libraries, for a scope.
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

// The highest place of each kind of handle: a leak raises it.
struct HandleMarks {
    uint32_t gdi, deviceContexts, blocks, handles, temporaryFiles;
};

HandleMarks TakeMarks();

// Expects that the calls have leaked no handle.
void ExpectNoGrowth(const HandleMarks& before, uint32_t calls);

// The clipboard's picture as another process reads it.
Picture ClipboardOfAnotherProcess();

// The code of that process; returns its exit code.
int WriteClipboard(const char* path);

HCURSOR WaitCursor();
