// Changes the tags of a page: a copy of the file is written beside it, page by page, and then replaces it.
#include "core/file_names.h"
#include "core/file_rewrite.h"
#include "core/page_tags.h"
#include "core/registry.h"
#include "core/tag_block.h"
#include "pages/page_edit.h"
#include "tiff/define.h"
#include "tiff/files.h"

namespace tiff {

namespace {

// A tag to give to a page, or to remove from it.
struct TagEdit {
    uint32_t tag;
    bool remove;
    uint32_t type;
    const void* values;
    uint32_t count;
};

// Changes the page's tags in memory; the copy takes them from there.
Status EditTags(CopyRun& run, uint32_t page, const TagEdit& edit)
{
    HGLOBAL file = run.source.file;
    if (const Status status = LoadForCopy(run.source, page); status != error::None)
        return status;
    if (edit.remove) {
        const auto entry = FindPage(file, page);
        const Locked<TagBlock> tags(entry ? entry->tagBlock : nullptr);
        if (!tags)
            return error::NotEnoughMemory;
        RemoveRecord(tags.Get(), edit.tag);
        return error::None;
    }
    return DefineTag(file, page, {edit.tag, edit.type, edit.count, edit.values});
}

Status CopyEdited(const OpenedTiff& file, uint32_t page, const TagEdit& edit, const char* path)
{
    const OpenedTiff built(path, T_CREAT);
    if (!built)
        return error::NotEnoughMemory;
    CopySource source(file.Get(), BrokenBranch::Refused);
    CopyRun run(source, built.Get());
    Status status = OpenOutput(run);
    if (status == error::None)
        status = CopyPages(run, {0, page});
    if (status == error::None)
        status = EditTags(run, page, edit);
    if (status == error::None)
        status = CopyPages(run, {page, file.PageCount()});
    return FinishCopy(run, status);
}

Status EditPage(const char* path, int32_t page, const TagEdit& edit)
{
    if (!path || edit.tag > UINT16_MAX)
        return error::InvalidParameters;
    if (AttributesOf(path) == INVALID_FILE_ATTRIBUTES)
        return error::InputOutput;
    Replacement rewritten(path, Naming::BesideFile, OnFailure::LeaveNew);
    if (!rewritten)
        return rewritten.NameStatus();
    const OpenedTiff file(path, T_READ);
    // Deliberate: a file that cannot be opened is reported as error 1, memory.
    if (!file)
        return error::NotEnoughMemory;
    if (!file.IsWhole())
        return error::InputOutput;
    if (page < 0 || static_cast<uint32_t>(page) >= file.PageCount())
        return error::IndexOutOfRange;
    const Status status = CopyEdited(file, static_cast<uint32_t>(page), edit, rewritten.Name());
    return status == error::None ? rewritten.Commit() : status;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" int32_t AddTiffTagToImage(const char* path, int32_t page, uint32_t tag, uint32_t type,
                                     const void* values, uint32_t count) noexcept
{
    return FinishEdit(EditPage(path, page, {tag, false, type, values, count}));
}

extern "C" int32_t DeleteTiffTagOfImage(const char* path, int32_t page, uint32_t tag) noexcept
{
    return FinishEdit(EditPage(path, page, {tag, true, 0, nullptr, 0}));
}
