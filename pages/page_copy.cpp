#include "pages/page_copy.h"

#include "core/directory_reader.h"
#include "core/directory_writer.h"
#include "core/errors.h"
#include "core/registry.h"
#include "pages/file_rewrite.h"
#include "pages/foreign_values.h"
#include "pages/page_content.h"
#include "tiff/files.h"
#include "tiff/pages.h"

#include <algorithm>

namespace tiff {

namespace {

// What is copied is at most the source, and some bytes of directories.
constexpr uint32_t BufferBytes(uint32_t sourceBytes)
{
    constexpr uint32_t LEAST = 4096, MOST = 256 * 1024;
    return std::clamp(sourceBytes, LEAST, MOST);
}

Status Flush(CopyOutput& output)
{
    if (output.filled && mWrite(output.stream, output.buffer.data(), output.filled) != output.filled)
        return Fail(error::InputOutput);
    output.flushed += output.filled;
    output.filled = 0;
    return error::None;
}

uint32_t EndOf(const CopyOutput& output)
{
    return output.flushed + output.filled;
}

Status Append(CopyOutput& output, std::span<const uint8_t> bytes)
{
    while (!bytes.empty()) {
        if (output.filled == output.buffer.size())
            if (const Status status = Flush(output); status != error::None)
                return status;
        const auto part = bytes.first(std::min(bytes.size(), output.buffer.size() - output.filled));
        std::memcpy(&output.buffer[output.filled], part.data(), part.size());
        output.filled += static_cast<uint32_t>(part.size());
        bytes = bytes.subspan(part.size());
    }
    return error::None;
}

// Reads straight into the buffer. The segment exists: bytes that do not arrive are an error.
Status AppendSegment(CopyOutput& output, TiffStream source, Segment segment)
{
    if (mSeek(source, segment.offset, 0) == STREAM_FAILED)
        return Fail(error::InputOutput);
    while (segment.bytes > 0) {
        if (output.filled == output.buffer.size())
            if (const Status status = Flush(output); status != error::None)
                return status;
        const auto room = static_cast<uint32_t>(output.buffer.size()) - output.filled;
        const uint32_t arrived = mRead(source, &output.buffer[output.filled], std::min(segment.bytes, room));
        if (arrived == 0 || arrived == STREAM_FAILED)
            return Fail(error::InputOutput);
        output.filled += arrived;
        segment.bytes -= arrived;
    }
    return error::None;
}

// Writes a link where it lies: in the buffer, or in the file in front of it.
Status PutLink(CopyOutput& output, uint32_t directoryOffset)
{
    if (output.linkPosition >= output.flushed) {
        Store32(&output.buffer[output.linkPosition - output.flushed], directoryOffset, output.byteOrder);
        return error::None;
    }
    if (output.flushed - output.linkPosition < 4)
        if (const Status status = Flush(output); status != error::None)
            return status;
    if (const Status status =
            PatchLink(output.stream, output.linkPosition, directoryOffset, output.byteOrder);
        status != error::None)
        return status;
    const bool back = mSeek(output.stream, output.flushed, 0) != STREAM_FAILED;
    return back ? error::None : Fail(error::InputOutput);
}

// The link goes first here. Wanted: a copy that breaks off shows as a page that cannot be read,
// not as bytes that nobody knows of.
Status AppendContent(CopyRun& run, const PageContent& content)
{
    CopyOutput& output = run.output;
    const DirectoryLayout& layout = content.layout;
    const GlobalBlock block(layout.end - layout.start);
    Locked<uint8_t> directory(block.Get());
    if (!directory)
        return Fail(error::NotEnoughMemory);
    AssembleDirectory(content.tags, layout, output.byteOrder, directory.Get());
    Status status = PutLink(output, layout.directoryOffset);
    if (status == error::None)
        status = Append(output, {directory.Get(), layout.end - layout.start});
    for (const Segment& segment : content.segments)
        if (status == error::None)
            status = AppendSegment(output, run.sourceStream.Get(), segment);
    output.directoryOffset = layout.directoryOffset;
    output.directoryBytes = layout.valueBytes + layout.entryBytes;
    output.linkPosition = layout.linkPosition;
    return status;
}

// A page in order is planned whole before the destination is touched.
Status CopyPage(CopyRun& run, uint32_t page)
{
    const PageTags tags(run.source, page);
    if (!tags)
        return Fail(PageStatus(run.source, page));
    const uint64_t roomBytes = ContentBytes(tags);
    const GlobalBlock block(roomBytes);
    Locked<uint8_t> room(block.Get());
    if (!room)
        return Fail(error::NotEnoughMemory);
    PageContent content;
    Status status = FindContent(tags, run.window, run.sourceBytes, {room.Get(), roomBytes}, content);
    if (status != error::None)
        return Fail(status);
    const uint32_t directory = FindPage(run.source, page)->directoryOffset;
    const uint64_t foreignBytes = ForeignBytes(run.window, run.sourceBytes, directory);
    const GlobalBlock foreignBlock(foreignBytes);
    Locked<uint8_t> foreign(foreignBlock.Get());
    if (!foreign)
        return Fail(error::NotEnoughMemory);
    RestoreForeignTypes(run.window, directory, {foreign.Get(), foreignBytes}, content.tags);
    if (run.window.failed)
        return Fail(error::InputOutput);
    status = OpenOutput(run);
    if (status != error::None)
        return status;
    status = PlaceContent(content, EndOf(run.output));
    return status == error::None ? AppendContent(run, content) : Fail(status);
}

Status CopyAndReport(CopyRun& run, uint32_t page, Progress* progress)
{
    Status status = LoadForCopy(run, page);
    if (status == error::None)
        status = CopyPage(run, page);
    DropTiffImage(run.source, page);
    if (status != error::None || !progress || !progress->callback)
        return status;
    // Whoever is told of a page finds it in the file.
    status = Flush(run.output);
    if (status == error::None && !ReportStep(*progress))
        status = STOPPED;
    return status;
}

} // namespace

bool ReportStep(Progress& progress)
{
    ++progress.done;
    return !progress.callback || progress.callback(progress.total, progress.done, progress.user) != 0;
}

static uint32_t ByteOrderOf(HGLOBAL file)
{
    return Locked<TiffFileRecord>(file)->byteOrder;
}

CopyRun::CopyRun(HGLOBAL source, HGLOBAL destination)
    : source(source), destination(destination), sourceStream(OpenRecord(*Locked<TiffFileRecord>(source))),
      sourceBytes(mSize(sourceStream.Get())), window{.stream = sourceStream.Get(),
                                                     .byteOrder = ByteOrderOf(source),
                                                     .bytes{}},
      bufferBlock(BufferBytes(sourceBytes)), buffer(bufferBlock.Get()), output{}
{
}

bool IsBegun(const CopyRun& run)
{
    return !run.output.buffer.empty();
}

Status LoadForCopy(CopyRun& run, uint32_t page)
{
    bool whole = false;
    if (const Status status = LoadTags(run.source, page, run.window, run.sourceBytes, whole);
        status != error::None)
        return Fail(status);
    if (whole)
        return error::None;
    DropTiffImage(run.source, page);
    return Fail(error::InputOutput);
}

Status OpenOutput(CopyRun& run)
{
    if (run.target)
        return error::None;
    if (!run.buffer)
        return Fail(error::NotEnoughMemory);
    CopyOutput& output = run.output;
    bool isNew;
    {
        Locked<TiffFileRecord> record(run.destination);
        isNew = record->openFlags & openflag::NoHeader;
        if (isNew && record->path[0] && IsSameFile(run.sourceStream.Get(), record->path))
            return Fail(error::InvalidParameters);
        record->byteOrder = static_cast<uint16_t>(run.window.byteOrder);
        output.byteOrder = record->byteOrder;
        output.linkPosition = isNew ? FIRST_LINK : record->linkPosition;
    }
    run.target.emplace(run.destination);
    if (!*run.target)
        return Fail(run.target->OpenStatus());
    output.buffer = {run.buffer.Get(), BufferBytes(run.sourceBytes)};
    output.stream = run.target->Get();
    if (isNew)
        return Append(output, FileHeader(output.byteOrder));
    const Status status = BeginPage(output.stream, run.destination);
    output.flushed = mTell(output.stream);
    return status == error::None && output.flushed != STREAM_FAILED ? error::None : Fail(error::InputOutput);
}

Status CopyPages(CopyRun& run, PageRange range, Progress* progress)
{
    if (run.sourceBytes == STREAM_FAILED)
        return Fail(error::InputOutput);
    for (uint32_t page = range.first; page < range.end; ++page)
        if (const Status status = CopyAndReport(run, page, progress); status != error::None)
            return status;
    return error::None;
}

Status FinishCopy(CopyRun& run, Status status)
{
    if (!run.target || !*run.target)
        return status;
    const Status flushed = Flush(run.output);
    if (status == error::None)
        status = flushed;
    if (status == error::None)
        run.target->Commit();
    run.target.reset();
    return status;
}

Status CopyPagesToFile(HGLOBAL source, PageRange range, const char* path, uint32_t mode, Progress* progress)
{
    HGLOBAL destination = OpenTiffFile(path, mode);
    if (!destination)
        return TiffError();
    Status status;
    {
        CopyRun run(source, destination);
        status = FinishCopy(run, CopyPages(run, range, progress));
    }
    CloseTiffFile(destination);
    return status;
}

namespace {

// The page that a caller's handle gets for the copy, and what was in its place before.
struct AddedPage {
    HGLOBAL file;
    uint32_t page, pageCount;
    PageEntry before;
};

void KeepPage(const AddedPage& added, const CopyOutput& output)
{
    Locked<TiffFileRecord> record(added.file);
    PageEntry& entry = Pages(record.Get())[added.page];
    entry.directoryOffset = output.directoryOffset;
    entry.tagBlockBytes = output.directoryBytes;
    record->linkPosition = output.linkPosition;
    record->openFlags = openflag::Existing;
}

void TakePageBack(const AddedPage& added)
{
    Locked<TiffFileRecord> record(added.file);
    Pages(record.Get())[added.page] = added.before;
    record->pageCount = added.pageCount;
}

Status CopyBetweenHandles(HGLOBAL source, uint32_t page, HGLOBAL destination)
{
    // Nothing is made in the destination for a page that there is not.
    CopyRun run(source, destination);
    if (const Status status = LoadForCopy(run, page); status != error::None)
        return status;
    const uint32_t pageCount = NumberOfTiffImages(destination, TIFF_ALL_PAGES);
    const int32_t defined = DefineTiffImage(destination);
    if (defined < 0)
        return TiffError();
    AddedPage added{destination, static_cast<uint32_t>(defined), pageCount, {}};
    added.before = *FindPage(destination, added.page);
    added.before.tagBlock = nullptr;
    added.before.kind &= static_cast<uint16_t>(~PAGE_REGISTERED);
    const Status status = FinishCopy(run, CopyPages(run, {page, page + 1}));
    DropTiffImage(destination, added.page);
    if (status == error::None)
        KeepPage(added, run.output);
    else if (!IsBegun(run))
        TakePageBack(added);
    return status;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" int32_t CopyTiffImage(HGLOBAL source, uint32_t page, HGLOBAL destination) noexcept
{
    if (!Locked<TiffFileRecord>(source) || !Locked<TiffFileRecord>(destination)) {
        SetTiffError(error::InvalidHandle);
        return 0;
    }
    return CopyBetweenHandles(source, page, destination) == error::None;
}

extern "C" int32_t CopyTiffImageInFile(const char* sourcePath, uint32_t page, const char* destinationPath,
                                       uint32_t mode) noexcept
{
    HGLOBAL source = OpenTiffFile(sourcePath, T_READ);
    if (!source)
        return 0;
    const Status status = CopyPagesToFile(source, {page, page + 1}, destinationPath, mode);
    CloseTiffFile(source);
    return status == error::None;
}
