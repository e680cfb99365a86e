// What the operations on whole pages share.
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
    // 0, or why there is no file; 6 also for one whose chain of pages is broken.
    Status OpenStatus() const
    {
        return status;
    }
    // Whether the chain of pages could be followed to its end, and has one. A file that cannot be seen whole
    // must not be replaced by what was seen of it.
    bool IsWhole() const
    {
        return whole;
    }
    HGLOBAL Get() const
    {
        return file;
    }
    uint32_t PageCount() const;
    uint32_t ByteOrder() const;

private:
    Status status; // before the file: opening it sets this
    HGLOBAL file;
    bool whole;
};

// Builds a new file of the pages of an opened one without those of a range.
[[nodiscard]] Status BuildWithout(const OpenedTiff& file, PageRange range, const char* path);

// Rewrites an opened file without the pages of a range; without any page the file is deleted.
[[nodiscard]] Status DeletePages(const char* path, const OpenedTiff& file, PageRange range);

// Makes a status the last error, and is an exported function's result. Work that was stopped leaves no
// error.
int32_t FinishEdit(Status status);

} // namespace tiff
