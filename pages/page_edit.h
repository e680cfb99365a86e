// Shared by the operations on whole pages.
#pragma once

#include "pages/page_copy.h"

namespace tiff {

// A TIFF file handle for a scope; null when the file cannot be opened.
class OpenedTiff {
public:
    OpenedTiff(const char* path, uint32_t mode);
    OpenedTiff(const OpenedTiff&) = delete;
    OpenedTiff& operator=(const OpenedTiff&) = delete;
    ~OpenedTiff();

    explicit operator bool() const
    {
        return file != nullptr;
    }
    // 0, or the reason why there is no file; 6 also when its chain of pages is broken.
    Status OpenStatus() const
    {
        return status;
    }
    // Whether the chain of pages was followed to its end, and has no loop. Any other file must not be
    // replaced: the pages that were not read would be lost.
    bool IsWhole() const
    {
        return whole;
    }
    HGLOBAL Get() const
    {
        return file;
    }
    // As it was opened.
    uint32_t PageCount() const
    {
        return pageCount;
    }
    uint32_t ByteOrder() const
    {
        return byteOrder;
    }

private:
    Status status = error::None;
    HGLOBAL file;
    uint32_t pageCount = 0, byteOrder = 0;
    bool whole = false;
};

// Builds a new file from the pages of an open one, without those in a range.
[[nodiscard]] Status BuildWithout(const OpenedTiff& file, PageRange range, const char* path);

// Rewrites an opened file without the pages of a range. Deletes a file that would have no pages.
[[nodiscard]] Status DeletePages(const char* path, const OpenedTiff& file, PageRange range);

// Makes a status the last error and the result of an exported function. Work that was stopped sets error 0.
int32_t FinishEdit(Status status);

} // namespace tiff
