// A page's strips behind other bare fax code.
#include "core/errors.h"
#include "core/global_block.h"
#include "core/handles.h"
#include "core/tag_block.h"
#include "core/thread_state.h"
#include "pages/file_rewrite.h"
#include "pages/page_edit.h"
#include "tiff/directory.h"
#include "tiff/files.h"

#include <algorithm>
#include <cstring>

namespace tiff {

namespace {

constexpr uint32_t BUFFER_BYTES = 65534;

Status CheckStrips(const PageTags& tags)
{
    if (!tags)
        return Fail(error::NotRegistered);
    const auto offsets = tags.Find(tag::StripOffsets);
    const auto lengths = tags.Find(tag::StripByteCounts);
    if (!offsets || !lengths)
        return Fail(error::TagsMissing);
    return offsets->count == lengths->count ? error::None : Fail(error::BadTag);
}

// Of a strip that reaches beyond the end of its file, what is there is copied.
Status AppendStrip(HANDLE raw, TiffStream source, std::span<uint8_t> buffer, uint32_t offset, uint32_t bytes)
{
    const uint32_t size = mSize(source);
    bytes = std::min(bytes, size - std::min(offset, size));
    if (size == STREAM_FAILED || mSeek(source, offset, 0) == STREAM_FAILED)
        return Fail(error::InputOutput);
    while (bytes > 0) {
        const uint32_t arrived =
            mRead(source, buffer.data(), std::min(bytes, static_cast<uint32_t>(buffer.size())));
        DWORD written = 0;
        if (arrived == 0 || arrived == STREAM_FAILED ||
            !WriteFile(raw, buffer.data(), arrived, &written, nullptr) || written != arrived)
            return Fail(error::InputOutput);
        bytes -= arrived;
    }
    return error::None;
}

Status AppendStrips(HANDLE raw, TiffStream source, const PageTags& tags)
{
    const GlobalBlock block(BUFFER_BYTES);
    Locked<uint8_t> buffer(block.Get());
    if (!buffer)
        return Fail(error::NotEnoughMemory);
    const auto offsets = tags.Find(tag::StripOffsets);
    const auto lengths = tags.Find(tag::StripByteCounts);
    for (uint32_t strip = 0; strip < offsets->count; ++strip) {
        const auto offset = offsets->Number(strip);
        const auto bytes = lengths->Number(strip);
        if (!offset || !bytes)
            return Fail(error::BadTag);
        if (const Status status = AppendStrip(raw, source, {buffer.Get(), BUFFER_BYTES}, *offset, *bytes);
            status != error::None)
            return status;
    }
    return error::None;
}

// Everything that can be known to be wrong is found out before the raw file is opened for
// writing.
Status CheckRawFile(const char* path, TiffStream source, int32_t offset)
{
    if (strnlen(path, MAX_PATH_BYTES) == MAX_PATH_BYTES)
        return Fail(error::PathTooLong);
    const FileHandle file(path, GENERIC_READ, OPEN_EXISTING);
    LARGE_INTEGER size;
    if (!file || !GetFileSizeEx(file.Get(), &size))
        return Fail(error::InputOutput);
    if (size.QuadPart + offset < 0 || IsSameFile(source, path))
        return Fail(error::InvalidParameters);
    return error::None;
}

Status WriteRawFile(const char* path, TiffStream source, const PageTags& tags, int32_t offset)
{
    Status status;
    {
        const FileHandle raw(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
        if (!raw)
            return Fail(error::InputOutput);
        LARGE_INTEGER distance;
        distance.QuadPart = offset;
        status = SetFilePointerEx(raw.Get(), distance, nullptr, FILE_END)
                     ? AppendStrips(raw.Get(), source, tags)
                     : Fail(error::InputOutput);
    }
    // Wanted: the whole file goes, with what it held before. Half a page at its end would be
    // sent as a whole one.
    if (status != error::None)
        DeleteFileA(path);
    return status;
}

Status AppendRawPage(const char* rawPath, const char* tiffPath, uint32_t page, int32_t offset)
{
    const OpenedTiff file(tiffPath, T_READ);
    if (!file || !GetTiffImage(file.Get(), page))
        return TiffError();
    const PageTags tags(file.Get(), page);
    if (const Status status = CheckStrips(tags); status != error::None)
        return status;
    const Stream source(OpenForReading(tiffPath));
    if (!source)
        return Fail(error::InputOutput);
    const Status status = CheckRawFile(rawPath, source.Get(), offset);
    return status == error::None ? WriteRawFile(rawPath, source.Get(), tags, offset) : status;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" const char* AppendCCITTImageFile(const char* rawPath, const char* tiffPath, uint32_t page,
                                            int32_t offset) noexcept
{
    if (!rawPath || !tiffPath) {
        SetTiffError(error::InvalidParameters);
        return nullptr;
    }
    if (!FinishEdit(AppendRawPage(rawPath, tiffPath, page, offset)))
        return nullptr;
    char* name = ThreadState().rawFileName;
    std::strcpy(name, rawPath);
    return name;
}
