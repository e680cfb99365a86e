// Appends a page's strips to a file of bare fax code.
#include "core/directory_reader.h"
#include "core/errors.h"
#include "core/file_names.h"
#include "core/file_rewrite.h"
#include "core/global_block.h"
#include "core/handles.h"
#include "core/stream.h"
#include "core/thread_state.h"
#include "pages/page_content.h"
#include "pages/page_edit.h"
#include "tiff/directory.h"
#include "tiff/files.h"

#include <algorithm>
#include <cstring>

namespace tiff {

namespace {

constexpr uint32_t BUFFER_BYTES = 65534;

struct EditSettings {
    char rawFileName[MAX_PATH_BYTES]; // the last bare fax file that this thread appended to
};

// Finds the strips of a page in their file.
Status FindStrips(CopySource& source, uint32_t page, PageContent& content)
{
    if (const Status status = LoadTags(source.file, page); status != error::None)
        return status;
    const PageTags tags(source.file, page);
    if (!tags)
        return error::NotEnoughMemory;
    Status status = DescribePage(source, page, tags, content);
    if (status == error::None)
        status = FindReference(source, content, stripReference);
    if (status == error::None && source.window.failed)
        status = error::InputOutput;
    return status;
}

Status AppendSegment(HANDLE raw, TiffStream source, std::span<uint8_t> buffer, Segment segment)
{
    if (mSeek(source, segment.offset, 0) == STREAM_FAILED)
        return error::InputOutput;
    while (segment.bytes > 0) {
        const uint32_t arrived =
            ReadStream(source, buffer.data(), std::min(segment.bytes, static_cast<uint32_t>(buffer.size())));
        DWORD written = 0;
        if (arrived == 0 || arrived == STREAM_FAILED ||
            !WriteFile(raw, buffer.data(), arrived, &written, nullptr) || written != arrived)
            return error::InputOutput;
        segment.bytes -= arrived;
    }
    return error::None;
}

Status AppendStrips(HANDLE raw, TiffStream source, const PageContent& content)
{
    const GlobalBlock block(BUFFER_BYTES);
    Locked<uint8_t> buffer(block.Get());
    if (!buffer)
        return error::NotEnoughMemory;
    for (const Segment& segment : content.segments)
        if (const Status status = AppendSegment(raw, source, {buffer.Get(), BUFFER_BYTES}, segment);
            status != error::None)
            return status;
    return error::None;
}

// Checks everything that can be checked before the raw file is opened for writing.
Status CheckRawFile(const char* path, TiffStream source, int32_t offset)
{
    if (strnlen(path, MAX_PATH_BYTES) == MAX_PATH_BYTES)
        return error::PathTooLong;
    const FileHandle file(path, GENERIC_READ, OPEN_EXISTING);
    LARGE_INTEGER size;
    if (!file || !GetFileSizeEx(file.Get(), &size))
        return error::InputOutput;
    if (size.QuadPart + offset < 0 || IsSameFile(source, path))
        return error::InvalidParameters;
    return error::None;
}

Status WriteRawFile(const char* path, TiffStream source, const PageContent& content, int32_t offset)
{
    Status status;
    {
        const FileHandle raw(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
        if (!raw)
            return error::InputOutput;
        LARGE_INTEGER distance;
        distance.QuadPart = offset;
        status = SetFilePointerEx(raw.Get(), distance, nullptr, FILE_END)
                     ? AppendStrips(raw.Get(), source, content)
                     : error::InputOutput;
    }
    // Deliberate: the whole file is deleted, with its old content. Half a page at its end would be sent as a
    // whole one.
    if (status != error::None)
        DeleteNamedFile(path);
    return status;
}

Status AppendRawPage(const char* rawPath, const char* tiffPath, uint32_t page, int32_t offset)
{
    const OpenedTiff file(tiffPath, T_READ);
    if (!file)
        return file.OpenStatus();
    const BusyCursor cursor;
    CopySource source(file.Get(), BrokenBranch::Ends);
    if (source.bytes == STREAM_FAILED)
        return error::InputOutput;
    PageContent content;
    if (const Status status = FindStrips(source, page, content); status != error::None)
        return status;
    const Status status = CheckRawFile(rawPath, source.stream.Get(), offset);
    return status == error::None ? WriteRawFile(rawPath, source.stream.Get(), content, offset) : status;
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
    char* name = SettingsIn<EditSettings>(ThreadState().pages).rawFileName;
    std::strcpy(name, rawPath);
    return name;
}
