// Streams inside the library: opening them, and a guard that closes them.
#pragma once

#include "core/win32.h"
#include "tiff/streams.h"

#include <utility>

namespace tiff {

inline constexpr TiffStream NO_STREAM = -1;

// Takes a free slot of the calling thread, at position 0; NO_STREAM when all are taken. The
// block stays its owner's and may be null for a new, empty file.
TiffStream OpenMemoryStream(HGLOBAL block, uint32_t size);

// The block as writing has left it; null for anything but a memory stream.
HGLOBAL MemoryStreamBlock(TiffStream stream);

class Stream {
public:
    explicit Stream(TiffStream handle) : handle(handle)
    {
    }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;
    ~Stream()
    {
        if (*this)
            mClose(handle);
    }

    explicit operator bool() const
    {
        return handle != NO_STREAM;
    }
    TiffStream Get() const
    {
        return handle;
    }

private:
    TiffStream handle;
};

// NO_STREAM when the file cannot be opened. Access and disposition are CreateFile's.
TiffStream OpenDiskStream(const char* path, DWORD access, DWORD disposition);

inline TiffStream OpenForReading(const char* path)
{
    return OpenDiskStream(path, GENERIC_READ, OPEN_EXISTING);
}

} // namespace tiff
