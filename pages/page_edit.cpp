#include "pages/page_edit.h"

#include "core/errors.h"
#include "core/file_names.h"
#include "core/file_rewrite.h"
#include "core/registry.h"
#include "tiff/files.h"

namespace tiff {

OpenedTiff::OpenedTiff(const char* path, uint32_t mode)
    : file(OpenFile(path, mode, status)), whole(file && status == error::None && !IsRing(file))
{
}

OpenedTiff::~OpenedTiff()
{
    CloseTiffFile(file);
}

uint32_t OpenedTiff::PageCount() const
{
    return NumberOfTiffImages(file, TIFF_ALL_PAGES);
}

uint32_t OpenedTiff::ByteOrder() const
{
    const Locked<TiffFileRecord> record(file);
    return record ? record->byteOrder : uint32_t{0};
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
