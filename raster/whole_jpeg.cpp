#include "raster/whole_jpeg.h"

#include "core/errors.h"
#include "core/global_block.h"
#include "core/handles.h"
#include "core/records.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace tiff {

HGLOBAL LoadWholeJpegDib(const char*, uint32_t, Status& status)
{
    status = error::UnknownCompression;
    return nullptr;
}

HBITMAP LoadWholeJpegBitmap(const char*, uint32_t, Status& status)
{
    status = error::UnknownCompression;
    return nullptr;
}

Status SaveWholeJpegDib(HGLOBAL, const char*, uint32_t)
{
    return error::UnknownCompression;
}

Status SaveWholeJpegBitmap(HBITMAP, const char*, uint32_t)
{
    return error::UnknownCompression;
}

bool IsLeftToJpegCodec()
{
    const Status status = TiffError();
    return status == error::OldJpegPage || status == error::JpegPage;
}

static bool NameTemporaryFile(char (&path)[MAX_PATH_BYTES])
{
    char folder[MAX_PATH_BYTES];
    const DWORD length = GetTempPathA(sizeof(folder), folder);
    return length > 0 && length < sizeof(folder) && GetTempFileNameA(folder, "tmp", 0, path);
}

static bool WriteNewFile(const char* path, std::span<const uint8_t> content)
{
    const FileHandle file(path, GENERIC_WRITE, CREATE_NEW);
    const auto bytes = static_cast<DWORD>(content.size());
    DWORD written = 0;
    return file && WriteFile(file.Get(), content.data(), bytes, &written, nullptr) && written == bytes;
}

NamedTiff::NamedTiff(HGLOBAL file)
{
    const Locked<TiffFileRecord> record(file);
    if (!record)
        return;
    std::memcpy(path, record->path, sizeof(path));
    if (path[0]) {
        complete = true;
        return;
    }
    const Locked<uint8_t> content(record->memoryBlock);
    temporary = content && NameTemporaryFile(path);
    if (!temporary)
        return;
    // Taking the name has made an empty file, which must not be mistaken for the copy.
    DeleteFileA(path);
    const SIZE_T bytes = std::min<SIZE_T>(record->memoryBytes, GlobalSize(record->memoryBlock));
    complete = WriteNewFile(path, {content.Get(), bytes});
}

NamedTiff::~NamedTiff()
{
    if (temporary)
        DeleteFileA(path);
}

} // namespace tiff
