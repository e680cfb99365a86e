// Saving for a fax server that needs every page's directory before its data.
#include "core/errors.h"
#include "core/file_rewrite.h"
#include "pages/page_edit.h"
#include "raster/save_dib.h"
#include "tiff/fax_boards.h"
#include "tiff/files.h"

namespace tiff {

namespace {

Status ConvertForCisco(const char* path)
{
    if (!path || !*path)
        return error::InvalidParameters;
    const OpenedTiff file(path, T_READ);
    if (!file)
        return file.OpenStatus();
    if (!file.IsWhole() || file.PageCount() == 0)
        return error::InputOutput;
    // Deliberate: when a page cannot be copied, the file is deleted too, or it would be sent in part.
    Replacement rewritten(path, Naming::TempTiff, OnFailure::DeleteBoth);
    if (!rewritten)
        return rewritten.NameStatus();
    Status status;
    {
        CopySource source(file.Get(), BrokenBranch::Refused);
        status = CopyPagesToFile(source, {0, file.PageCount()}, rewritten.Name(), T_APPEND);
    }
    return status == error::None ? rewritten.Commit() : status;
}

} // namespace

} // namespace tiff

extern "C" int32_t ConvertTiffToCiscoFormat(const char* path) noexcept
{
    return tiff::FinishEdit(tiff::ConvertForCisco(path));
}

extern "C" int32_t SaveTiffForCiscoFormat(const char* path, HGLOBAL dib, uint32_t selector, int32_t dialog,
                                          uint32_t fillOrder) noexcept
{
    using namespace tiff;
    if (!path || !*path || (fillOrder != TIFF_MSB_FIRST && fillOrder != TIFF_LSB_FIRST))
        return FinishEdit(error::InvalidParameters);
    const Status status = SaveDib(dib, {path, selector, dialog, fillOrder, plainSave});
    return FinishEdit(status == error::None ? ConvertForCisco(path) : status);
}
