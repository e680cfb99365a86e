#include "pages/page_copy.h"

#include "core/directory_reader.h"
#include "core/error_detail.h"
#include "core/errors.h"
#include "core/file_rewrite.h"
#include "core/registry.h"
#include "pages/page_edit.h"
#include "pages/sub_directories.h"
#include "tiff/define.h"
#include "tiff/files.h"

#include <algorithm>

namespace tiff {

namespace {

// A copy is at most as long as the source and some bytes of directories.
constexpr uint32_t BufferBytes(uint32_t sourceBytes)
{
    constexpr uint32_t LEAST = 4096, MOST = 256 * 1024;
    return std::clamp(sourceBytes, LEAST, MOST);
}

// Appends a directory, with the link to the next one, and its data.
Status AppendContent(CopyRun& run, const PageContent& content, uint32_t link)
{
    const DirectoryLayout& layout = content.layout;
    const auto directory = run.source.scratch.TakeSpan<uint8_t>(layout.end - layout.start);
    if (directory.empty())
        return error::NotEnoughMemory;
    AssembleDirectory(content.tags, layout, run.output.byteOrder, directory.data());
    Store32(&directory[layout.linkPosition - layout.start], link, run.output.byteOrder);
    Status status = Append(run.output, directory);
    for (const Segment& segment : content.segments)
        if (status == error::None)
            status = AppendFrom(run.output, run.source.stream.Get(), segment.offset, segment.bytes);
    return status;
}

Status AppendPlan(CopyRun& run, const CopyPlan& plan)
{
    const DirectoryLayout& layout = plan.page.layout;
    Status status = AppendContent(run, plan.page, 0);
    for (const SubDirectory* directory = plan.first; directory && status == error::None;
         directory = directory->next)
        status = AppendContent(run, directory->content,
                               directory->follower ? directory->follower->content.layout.directoryOffset : 0);
    if (status != error::None)
        return status;
    run.directoryOffset = layout.directoryOffset;
    run.directoryBytes = layout.valueBytes + layout.entryBytes;
    return EndPage(run.output, layout.directoryOffset, layout.linkPosition);
}

Status PlanPage(CopySource& source, uint32_t page, const PageTags& tags, CopyPlan& plan)
{
    source.scratch.GiveBack();
    const auto entry = FindPage(source.file, page);
    if (!entry)
        return error::NotEnoughMemory;
    plan.offset = entry->directoryOffset;
    Status status = DescribePage(source, page, tags, plan.page);
    if (status == error::None)
        status = FindContent(source, plan.page);
    if (status == error::None)
        status = FindSubDirectories(source, plan);
    if (status == error::None && !plan.whole && source.brokenBranch == BrokenBranch::Refused)
        status = error::InputOutput;
    return status;
}

// A page is planned completely before the destination is touched.
Status CopyPage(CopyRun& run, uint32_t page)
{
    const PageTags tags(run.source.file, page);
    if (!tags)
        return TagsStatus(run.source.file, page);
    CopyPlan plan;
    if (const Status status = PlanPage(run.source, page, tags, plan); status != error::None)
        return status;
    if (const Status status = OpenOutput(run); status != error::None)
        return status;
    if (const Status status = PlacePlan(plan, EndOf(run.output), run.output.byteOrder); status != error::None)
        return status;
    return AppendPlan(run, plan);
}

Status CopyAndReport(CopyRun& run, uint32_t page, Progress* progress)
{
    Status status = LoadForCopy(run.source, page);
    if (status == error::None)
        status = CopyPage(run, page);
    DropTiffImage(run.source.file, page);
    if (status != error::None || !progress || !progress->callback)
        return status;
    // A page is in the file before it is reported.
    status = Flush(run.output);
    if (status == error::None && !ReportStep(*progress))
        status = CANCELLED;
    return status;
}

// Goes to the end of a file with pages.
Status ContinueOutput(CopyRun& run, uint32_t linkPosition)
{
    CopyOutput& output = run.output;
    const Status status = BeginPage(output.stream, run.destination);
    output.flushed = mTell(output.stream);
    if (status != error::None || output.flushed == STREAM_FAILED)
        return error::InputOutput;
    output.whole = output.safe = {output.flushed, linkPosition};
    output.buffer = {run.buffer.Get(), BufferBytes(run.source.bytes)};
    return error::None;
}

Status BeginOutput(CopyRun& run)
{
    CopyOutput& output = run.output;
    output.isNew = true;
    output.whole = output.safe = {0, FIRST_LINK};
    output.buffer = {run.buffer.Get(), BufferBytes(run.source.bytes)};
    return Append(output, FileHeader(output.byteOrder));
}

} // namespace

bool ReportStep(Progress& progress)
{
    ++progress.done;
    return !progress.callback || progress.callback(progress.total, progress.done, progress.user) != 0;
}

CopyRun::CopyRun(CopySource& source, HGLOBAL destination)
    : source(source), destination(destination), bufferBlock(BufferBytes(source.bytes)),
      buffer(bufferBlock.Get()), output{}, directoryOffset(0), directoryBytes(0)
{
}

Status LoadForCopy(CopySource& source, uint32_t page)
{
    bool whole = false;
    if (const Status status = LoadTags(source.file, page, source.window, source.bytes, whole);
        status != error::None)
        return status;
    if (whole)
        return error::None;
    DropTiffImage(source.file, page);
    NotePage(error::InputOutput, source.file, page);
    return error::InputOutput;
}

Status OpenOutput(CopyRun& run)
{
    if (run.target)
        return error::None;
    if (!run.buffer)
        return error::NotEnoughMemory;
    bool isNew;
    uint32_t linkPosition;
    {
        Locked<TiffFileRecord> record(run.destination);
        if (!record)
            return error::NotEnoughMemory;
        isNew = record->openFlags & openflag::NoHeader;
        if (isNew && record->path[0] && IsSameFile(run.source.stream.Get(), record->path))
            return error::InvalidParameters;
        if (record->pageCount >= TIFF_MAX_PAGES)
            return IsRing(run.destination) ? error::InputOutput : error::NotEnoughMemory;
        record->byteOrder = static_cast<uint16_t>(run.source.window.byteOrder);
        run.output.byteOrder = record->byteOrder;
        linkPosition = record->linkPosition;
    }
    run.target.emplace(run.destination);
    if (!*run.target)
        return run.target->OpenStatus();
    run.output.stream = run.target->Get();
    return isNew ? BeginOutput(run) : ContinueOutput(run, linkPosition);
}

Status CopyPages(CopyRun& run, PageRange range, Progress* progress)
{
    if (run.source.bytes == STREAM_FAILED) {
        NoteFile(error::InputOutput, run.source.file);
        return error::InputOutput;
    }
    for (uint32_t page = range.first; page < range.end; ++page)
        if (const Status status = CopyAndReport(run, page, progress); status != error::None)
            return status;
    return error::None;
}

Status FinishCopy(CopyRun& run, Status status)
{
    if (run.output.buffer.empty())
        return status; // nothing was written
    if (status == error::None)
        status = Flush(run.output);
    if (status == error::InputOutput)
        NoteFile(status, run.output.failed ? run.destination : run.source.file);
    const KeptFacts facts;
    if (status == error::None)
        run.target->Commit();
    else
        TakeBack(run.output);
    run.target.reset();
    return status;
}

Status CopyPagesToFile(CopySource& source, PageRange range, const char* path, uint32_t mode,
                       Progress* progress)
{
    Status status;
    HGLOBAL destination = OpenFile(path, mode, status);
    if (!destination)
        return status;
    {
        CopyRun run(source, destination);
        status = FinishCopy(run, CopyPages(run, range, progress));
    }
    CloseTiffFile(destination);
    return status;
}

// A chain with a loop is repeated up to the largest number of pages.
uint32_t PagesBeforeRepeat(HGLOBAL file)
{
    const Locked<TiffFileRecord> record(file);
    const uint32_t pageCount = record ? record->pageCount : 0;
    if (pageCount < TIFF_MAX_PAGES)
        return pageCount;
    const GlobalBlock block(uint64_t{pageCount} * sizeof(uint64_t));
    const Locked<uint64_t> places(block.Get());
    if (!places)
        return 0; // cannot be excluded
    // Sorts by directory, and pages with equal directories by number.
    const PageEntry* pages = Pages(record.Get());
    for (uint32_t page = 0; page < pageCount; ++page)
        places[page] = uint64_t{pages[page].directoryOffset} << 32 | page;
    const std::span sorted(places.Get(), pageCount);
    std::ranges::sort(sorted);
    uint64_t distinct = pageCount;
    for (size_t at = 1; at < sorted.size(); ++at)
        if (sorted[at] >> 32 == sorted[at - 1] >> 32)
            distinct = std::min(distinct, sorted[at] & UINT32_MAX);
    return static_cast<uint32_t>(distinct);
}

bool IsRing(HGLOBAL file)
{
    const auto pageCount = CountPages(file);
    return !pageCount || PagesBeforeRepeat(file) < *pageCount;
}

namespace {

// Makes the page appended last the record's last. Its entry counts as used: its tags were dropped.
void EnterPage(const CopyRun& run, uint16_t kind, TiffFileRecord* record)
{
    PageEntry& entry = Pages(record)[record->pageCount++];
    entry = {run.directoryOffset, run.directoryBytes, run.destination,
             static_cast<uint16_t>(kind & ~PAGE_REGISTERED)};
    record->linkPosition = run.output.whole.linkPosition;
    record->openFlags = openflag::Existing;
}

Status CopyBetweenHandles(HGLOBAL file, uint32_t page, HGLOBAL destination)
{
    // A missing page must not create anything in the destination.
    CopySource source(file, BrokenBranch::Ends, destination);
    CopyRun run(source, destination);
    if (const Status status = LoadForCopy(source, page); status != error::None)
        return status;
    if (!MakeRoomForPage(destination)) {
        DropTiffImage(file, page);
        return error::NotEnoughMemory;
    }
    const auto entry = FindPage(file, page);
    const Locked<TiffFileRecord> record(destination);
    if (!entry || !record) {
        DropTiffImage(file, page);
        return error::NotEnoughMemory;
    }
    const uint16_t byteOrder = record->byteOrder;
    const Status status = FinishCopy(run, CopyPages(run, {page, page + 1}));
    if (status == error::None)
        EnterPage(run, entry->kind, record.Get());
    else
        record->byteOrder = byteOrder;
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
    return FinishEdit(CopyBetweenHandles(source, page, destination));
}

extern "C" int32_t CopyTiffImageInFile(const char* sourcePath, uint32_t page, const char* destinationPath,
                                       uint32_t mode) noexcept
{
    const OpenedTiff file(sourcePath, T_READ);
    if (!file)
        return FinishEdit(file.OpenStatus());
    CopySource source(file.Get(), BrokenBranch::Ends);
    return FinishEdit(CopyPagesToFile(source, {page, page + 1}, destinationPath, mode));
}
