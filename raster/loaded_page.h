// A file opened by its name with one page's tags loaded, for a scope. Closing it leaves the last
// error alone.
#pragma once

#include "tiff/directory.h"
#include "tiff/files.h"

namespace tiff {

class LoadedPage {
public:
    LoadedPage(const char* path, uint32_t page)
        : file(OpenTiffFile(path, T_READ)), loaded(file && GetTiffImage(file, page))
    {
    }
    LoadedPage(const LoadedPage&) = delete;
    LoadedPage& operator=(const LoadedPage&) = delete;
    ~LoadedPage()
    {
        if (file)
            CloseTiffFile(file);
    }

    explicit operator bool() const
    {
        return loaded;
    }
    HGLOBAL File() const
    {
        return file;
    }

private:
    HGLOBAL file;
    bool loaded;
};

} // namespace tiff
