// Rewrites a file for one fax server, which wants every page's directory before its data.
#include "core/errors.h"
#include "pages/file_rewrite.h"
#include "pages/page_edit.h"
#include "tiff/fax_boards.h"
#include "tiff/files.h"

namespace tiff {

namespace {

Status ConvertForCisco(const char* path)
{
    if (!path || !*path)
        return Fail(error::InvalidParameters);
    const OpenedTiff file(path, T_READ);
    if (!file)
        return TiffError();
    if (!file.IsWhole() || file.PageCount() == 0)
        return Fail(error::InputOutput);
    // Wanted: when a page cannot be copied, the file goes too. It would be sent as it is.
    Replacement rewritten(path, Naming::TempTiff, OnFailure::DeleteBoth);
    if (!rewritten)
        return TiffError();
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
