// Moves pages between files: merges, splits, cuts into single pages.
#include "core/errors.h"
#include "core/file_names.h"
#include "core/file_rewrite.h"
#include "core/handles.h"
#include "pages/page_edit.h"
#include "tiff/files.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace tiff {

namespace {

constexpr int NUMBER_LIMIT = 1000000; // at most 6 characters
constexpr uint32_t MOST_NAMES = 1000;

// Refuses a file of which a page could be left behind.
Status CheckWhole(const OpenedTiff& file)
{
    if (!file)
        return file.OpenStatus();
    return file.IsWhole() ? error::None : error::InputOutput;
}

Status Merge(const char* destination, const char* source, TiffProgress callback, uint64_t user)
{
    const OpenedTiff from(source, T_READ);
    if (const Status status = CheckWhole(from); status != error::None)
        return status;
    if (from.PageCount() == 0)
        return error::IndexOutOfRange;
    const OpenedTiff to(destination, T_APPEND);
    if (!to)
        return to.OpenStatus();
    // A chain with a loop has no end to link the pages to.
    if (IsRing(to.Get()))
        return error::InputOutput;
    // The copy assumes the source's byte order for the destination; in a file of the other order the old
    // pages would be lost.
    if (to.PageCount() > 0 && to.ByteOrder() != from.ByteOrder())
        return error::MixedByteOrders;
    Progress progress{callback, user, from.PageCount()};
    CopySource pages(from.Get(), BrokenBranch::Ends);
    CopyRun run(pages, to.Get());
    return FinishCopy(run, CopyPages(run, {0, from.PageCount()}, &progress));
}

Status BuildMoved(const OpenedTiff& from, PageRange range, const char* destination, const char* path,
                  Progress& progress)
{
    CopySource source(from.Get(), BrokenBranch::Refused);
    if (IsSameFile(source.stream.Get(), destination))
        return error::InvalidParameters;
    return CopyPagesToFile(source, range, path, T_CREAT, &progress);
}

// Both files are built aside and swapped at the end: a failure before that leaves the destination. When the
// old file is deleted and cannot be replaced, the moved pages stay at the destination: they exist nowhere
// else.
Status MovePages(const char* source, const OpenedTiff& from, const char* destination, uint32_t first,
                 Progress progress)
{
    const PageRange moved{first, from.PageCount()};
    Replacement target(destination, Naming::InFolder, OnFailure::DeleteNew);
    if (!target)
        return target.NameStatus();
    if (const Status status = BuildMoved(from, moved, destination, target.Name(), progress);
        status != error::None)
        return status;
    Replacement rest(source, Naming::TempFolder, OnFailure::DeleteNew);
    if (!rest)
        return rest.NameStatus();
    if (const Status status = BuildWithout(from, moved, rest.Name()); status != error::None)
        return status;
    SetAside before(destination);
    if (before.MoveStatus() != error::None)
        return before.MoveStatus();
    if (const Status status = target.Place(); status != error::None)
        return status;
    const Status status = rest.Commit();
    if (status == error::None || rest.IsStranded())
        before.Drop();
    else
        DeleteNamedFile(destination);
    return status;
}

Status Split(const char* source, const char* destination, int32_t firstPage, TiffProgress callback,
             uint64_t user)
{
    const OpenedTiff from(source, T_READ);
    if (!from)
        return from.OpenStatus();
    if (from.PageCount() < 2 || firstPage < 0 || static_cast<uint32_t>(firstPage) > from.PageCount())
        return error::IndexOutOfRange;
    const auto first = static_cast<uint32_t>(firstPage);
    if (first == 0)
        return RenameFile(source, destination) ? error::None : error::InputOutput;
    if (first == from.PageCount())
        return error::None;
    if (const Status status = CheckWhole(from); status != error::None)
        return status;
    return MovePages(source, from, destination, first, {callback, user, from.PageCount() - first});
}

bool MakePageName(FileName name, const char* base, uint32_t number)
{
    const int length = std::snprintf(name, sizeof(name), "%s%04u.tif", base, number);
    return length > 0 && static_cast<size_t>(length) < sizeof(name);
}

// In a folder, finds a beginning for the names that no earlier cut has used.
Status MakeNameBase(FileName base, const char* given)
{
    const size_t length = strnlen(given, sizeof(base));
    if (length == sizeof(base))
        return error::PathTooLong;
    std::strcpy(base, given);
    if (length == 0 || given[length - 1] != '\\')
        return error::None;
    std::srand(GetTickCount());
    for (uint32_t round = 0; round < MOST_NAMES; ++round) {
        char name[MAX_PATH_BYTES];
        const int written =
            std::snprintf(base + length, sizeof(base) - length, "~%d_", std::rand() % NUMBER_LIMIT);
        if (static_cast<size_t>(written) >= sizeof(base) - length || !MakePageName(name, base, 1))
            return error::PathTooLong;
        if (AttributesOf(name) == INVALID_FILE_ATTRIBUTES)
            return error::None;
    }
    return error::InputOutput;
}

// An old file of this name goes when the new one is whole.
Status WritePageFile(CopySource& source, uint32_t page, const char* path)
{
    if (IsSameFile(source.stream.Get(), path))
        return error::InvalidParameters;
    Replacement file(path, Naming::InFolder, OnFailure::DeleteNew);
    if (!file)
        return file.NameStatus();
    const Status status = CopyPagesToFile(source, {page, page + 1}, file.Name(), T_CREAT);
    return status == error::None ? file.Commit() : status;
}

Status WritePageFiles(const OpenedTiff& from, const char* nameBase, uint32_t pageCount, Progress& progress)
{
    char base[MAX_PATH_BYTES], name[MAX_PATH_BYTES];
    if (const Status status = MakeNameBase(base, nameBase); status != error::None)
        return status;
    CopySource source(from.Get(), BrokenBranch::Refused);
    for (uint32_t page = 0; page < pageCount; ++page) {
        if (!MakePageName(name, base, page + 1))
            return error::PathTooLong;
        if (const Status status = WritePageFile(source, page, name); status != error::None)
            return status;
        if (!ReportStep(progress))
            return CANCELLED;
    }
    return error::None;
}

// One rewrite deletes all pages. So every deletion but the last is reported before it, and the last one after
// it. After a stop exactly the reported pages are gone.
Status DeleteCutPages(const char* path, const OpenedTiff& from, uint32_t pageCount, Progress& progress)
{
    uint32_t deleted = 1;
    while (deleted < pageCount && ReportStep(progress))
        ++deleted;
    const bool stopped = deleted < pageCount;
    if (const Status status = DeletePages(path, from, {0, deleted}); status != error::None)
        return status;
    return stopped || !ReportStep(progress) ? CANCELLED : error::None;
}

Status Cut(const char* path, const char* nameBase, int32_t pageCount, TiffProgress callback, uint64_t user)
{
    const OpenedTiff from(path, T_READ);
    if (const Status status = CheckWhole(from); status != error::None)
        return status;
    if (from.PageCount() < 2 || pageCount < 1 || static_cast<uint32_t>(pageCount) > from.PageCount())
        return error::IndexOutOfRange;
    const auto pages = static_cast<uint32_t>(pageCount);
    Progress progress{callback, user, 2 * pages};
    if (const Status status = WritePageFiles(from, nameBase, pages, progress); status != error::None)
        return status;
    return DeleteCutPages(path, from, pages, progress);
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" int32_t MergeTiffFiles(const char* destinationPath, const char* sourcePath, TiffProgress callback,
                                  uint64_t user) noexcept
{
    if (!destinationPath || !sourcePath)
        return FinishEdit(error::InvalidParameters);
    return FinishEdit(Merge(destinationPath, sourcePath, callback, user));
}

extern "C" int32_t SplitTiffFile(const char* sourcePath, const char* destinationPath, int32_t firstPage,
                                 TiffProgress callback, uint64_t user) noexcept
{
    if (!sourcePath || !destinationPath)
        return FinishEdit(error::InvalidParameters);
    return FinishEdit(Split(sourcePath, destinationPath, firstPage, callback, user));
}

extern "C" int32_t CutTiffFile(const char* sourcePath, const char* nameBase, int32_t pageCount,
                               TiffProgress callback, uint64_t user) noexcept
{
    if (!sourcePath || !nameBase)
        return FinishEdit(error::InvalidParameters);
    return FinishEdit(Cut(sourcePath, nameBase, pageCount, callback, user));
}
