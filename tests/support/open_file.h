// A temporary file that lies open for reading and writing, and closes at the end of the scope unless the
// library has closed it.
#pragma once

#include "support/bytes.h"
#include "tiff/streams.h"

class OpenedFile {
public:
    explicit OpenedFile(const Bytes& content, bool writes = true)
        : file(content), handle(CreateFileA(file.Path(), GENERIC_READ | (writes ? GENERIC_WRITE : 0),
                                            FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                            FILE_ATTRIBUTE_NORMAL, nullptr))
    {
    }
    OpenedFile(const OpenedFile&) = delete;
    OpenedFile& operator=(const OpenedFile&) = delete;
    ~OpenedFile()
    {
        if (!closed)
            CloseHandle(handle);
    }
    TiffStream Stream() const
    {
        return static_cast<TiffStream>(reinterpret_cast<intptr_t>(handle));
    }
    Bytes Content() const
    {
        return ReadFileBytes(file.Path());
    }

private:
    TempFile file;

public:
    const HANDLE handle;
    bool closed = false;
};
