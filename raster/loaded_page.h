// A file opened by its name, with the tags of one page loaded, for a scope.
#pragma once

#include "core/directory_reader.h"
#include "core/open_file.h"
#include "tiff/files.h"

namespace tiff {

class LoadedPage {
public:
    LoadedPage(const char* path, uint32_t page) : file(OpenFile(path, T_READ, status))
    {
        Load(page);
    }
    LoadedPage(const void* bytes, uint32_t size, uint32_t page) : file(OpenBytes(bytes, size, status))
    {
        Load(page);
    }
    LoadedPage(const LoadedPage&) = delete;
    LoadedPage& operator=(const LoadedPage&) = delete;
    ~LoadedPage()
    {
        CloseTiffFile(file);
    }

    // 0, or the reason why no page is loaded.
    Status LoadStatus() const
    {
        return status;
    }
    HGLOBAL File() const
    {
        return file;
    }

private:
    void Load(uint32_t page)
    {
        const bool broken = status != error::None;
        if (file)
            status = LoadTags(file, page);
        if (broken && status == error::IndexOutOfRange)
            status = error::InputOutput; // the page lies behind the break
    }

    Status status = error::None; // before the file: opening it sets this
    HGLOBAL file;
};

} // namespace tiff
