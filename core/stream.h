// Streams inside the library: opening them, and a guard that closes them.
#pragma once

#include "core/win32.h"
#include "tiff/streams.h"

#include <utility>

namespace tiff {

inline constexpr TiffStream NO_STREAM = -1;

// Takes a free slot of the calling thread, at position 0; NO_STREAM when all are taken. The block still
// belongs to its owner and may be null for a new, empty file.
TiffStream OpenMemoryStream(HGLOBAL block, uint32_t size);

// The same over bytes that do not change. They must live as long as the stream; writing to it fails.
TiffStream OpenByteStream(const void* bytes, uint32_t size);

// The block after writing; null for anything but a memory stream. It may have more room than the file has
// bytes.
HGLOBAL MemoryStreamBlock(TiffStream stream);

// Cuts the block of a memory stream to the size of the file.
void GiveBackRoom(TiffStream stream);

// The bytes within reach of 32-bit offsets: a file of 4 GiB and more counts as 0xFFFFFFFF. False when the
// size is unknown.
[[nodiscard]] bool SizeToRead(TiffStream stream, uint32_t& bytes);

// As mRead and mWrite, which leave no facts behind: for an application they belong to no function that fails.
uint32_t ReadStream(TiffStream stream, void* buffer, uint32_t count);
uint32_t WriteStream(TiffStream stream, const void* buffer, uint32_t count);

// As LongRead and LongWrite, inside other work: its facts stay open.
bool ReadArray(TiffStream stream, uint32_t type, uint32_t count, void* buffer, uint32_t byteOrder,
               uint32_t fillOrder);
bool WriteArray(TiffStream stream, uint32_t type, uint32_t count, void* buffer, uint32_t byteOrder,
                uint32_t fillOrder);

// Cuts the file back to this size. False when that fails.
bool CutStream(TiffStream stream, uint32_t bytes);

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
