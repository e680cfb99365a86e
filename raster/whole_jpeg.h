// Pictures that are not coded line by line. The JPEG codec works on whole files: everything else
// reaches it through these functions only.
#pragma once

#include "core/vocabulary.h"
#include "core/win32.h"

namespace tiff {

// A page of a TIFF file as a packed DIB or as a bitmap, and how it went. A picture may come with
// a status other than 0.
HGLOBAL LoadWholeJpegDib(const char* path, uint32_t page, Status& status);
HBITMAP LoadWholeJpegBitmap(const char* path, uint32_t page, Status& status);

// Writes a picture as this page of a TIFF file, behind those it has.
[[nodiscard]] Status SaveWholeJpegDib(HGLOBAL dib, const char* path, uint32_t page);
[[nodiscard]] Status SaveWholeJpegBitmap(HBITMAP bitmap, const char* path, uint32_t page);

// Whether the decode driver has just left a page to the loaders above.
bool IsLeftToJpegCodec();

// An open file under a name: its own, or for a TIFF in memory that of a temporary copy, which is
// deleted at the end of the scope. False when the copy cannot be written.
class NamedTiff {
public:
    explicit NamedTiff(HGLOBAL file);
    NamedTiff(const NamedTiff&) = delete;
    NamedTiff& operator=(const NamedTiff&) = delete;
    ~NamedTiff();

    explicit operator bool() const
    {
        return complete;
    }
    const char* Path() const
    {
        return path;
    }

private:
    char path[MAX_PATH_BYTES] = {};
    bool temporary = false;
    bool complete = false;
};

} // namespace tiff
