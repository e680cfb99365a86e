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
        const bool broken = status != error::None;
        if (file)
            status = LoadTags(file, page);
        if (broken && status == error::IndexOutOfRange)
            status = error::InputOutput; // the page lies behind the break
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
    Status status = error::None; // before the file: opening it sets this
    HGLOBAL file;
};

} // namespace tiff
