#include "pages/page_edit.h"

#include "core/errors.h"
#include "core/file_names.h"
#include "core/file_rewrite.h"
#include "core/registry.h"
#include "tiff/files.h"

namespace tiff {

// What the record says is taken here: one that could not be locked later would seem to have no pages, and the
// file would be deleted as empty.
OpenedTiff::OpenedTiff(const char* path, uint32_t mode) : file(OpenFile(path, mode, status))
{
    if (!file)
        return;
    if (const Locked<TiffFileRecord> record(file); record) {
        pageCount = record->pageCount;
        byteOrder = record->byteOrder;
        whole = status == error::None && !IsRing(file);
        return;
    }
    CloseTiffFile(file);
    file = nullptr;
    status = error::NotEnoughMemory;
}

OpenedTiff::~OpenedTiff()
{
    CloseTiffFile(file);
}

Status BuildWithout(const OpenedTiff& file, PageRange range, const char* path)
{
    const OpenedTiff built(path, T_APPEND);
    if (!built)
        return built.OpenStatus();
    CopySource source(file.Get(), BrokenBranch::Refused);
    CopyRun run(source, built.Get());
    Status status = CopyPages(run, {0, range.first});
    if (status == error::None)
        status = CopyPages(run, {range.end, file.PageCount()});
    return FinishCopy(run, status);
}

Status DeletePages(const char* path, const OpenedTiff& file, PageRange range)
{
    if (range.first == 0 && range.end >= file.PageCount())
        return DeleteNamedFile(path) ? error::None : error::InputOutput;
    Replacement rewritten(path, Naming::TempFolder, OnFailure::DeleteNew);
    if (!rewritten)
        return rewritten.NameStatus();
    const Status status = BuildWithout(file, range, rewritten.Name());
    return status == error::None ? rewritten.Commit() : status;
}

int32_t FinishEdit(Status status)
{
    StoreLastError(status == CANCELLED ? error::None : status);
    return status == error::None;
}

} // namespace tiff
