// Inserts and deletes pages. Either a new file is built from the pages that stay, or only the links between
// the directories are changed.
#include "core/directory_window.h"
#include "core/directory_writer.h"
#include "core/errors.h"
#include "core/file_rewrite.h"
#include "core/handles.h"
#include "core/registry.h"
#include "pages/page_edit.h"
#include "raster/save_dib.h"
#include "tiff/files.h"

namespace tiff {

namespace {

// A page to make, with the arguments of SaveDIBInTiffFileExt.
struct NewPage {
    HGLOBAL dib;
    uint32_t selector;
    int32_t dialog;
    uint32_t fillOrder;
};

Status AppendNewPage(const char* path, const NewPage& page)
{
    return SaveDib(page.dib, {path, page.selector, page.dialog, page.fillOrder, plainSave});
}

Status CopyUnlessEmpty(CopySource& source, PageRange range, const char* path)
{
    return range.first < range.end ? CopyPagesToFile(source, range, path, T_APPEND) : error::None;
}

// A file whose links are changed in place.
struct Relinking {
    HGLOBAL file;
    uint32_t pageCount;
    Stream stream;
    DirectoryWindow window;
};

// The position of the link to a page.
Status LinkPosition(Relinking& work, uint32_t page, uint32_t& position)
{
    position = FIRST_LINK;
    if (page == 0)
        return error::None;
    const auto before = FindPage(work.file, page - 1);
    if (!before)
        return error::NotEnoughMemory;
    const uint32_t directory = before->directoryOffset;
    const uint8_t* counted = Fetch(work.window, directory, 2);
    if (!counted)
        return error::InputOutput;
    position = directory + 2 + Load16(counted, work.window.byteOrder) * ENTRY_BYTES;
    return error::None;
}

// Changes the link to a page, to lead to `target` or, behind the last page, to end the chain.
Status Relink(Relinking& work, uint32_t page, uint32_t target)
{
    uint32_t position, directoryOffset = 0;
    if (const Status status = LinkPosition(work, page, position); status != error::None)
        return status;
    if (target < work.pageCount) {
        const auto entry = FindPage(work.file, target);
        if (!entry)
            return error::NotEnoughMemory;
        directoryOffset = entry->directoryOffset;
    }
    return PatchLink(work.stream.Get(), position, directoryOffset, work.window.byteOrder);
}

Relinking BeginRelinking(const char* path, const OpenedTiff& file)
{
    const TiffStream stream = OpenDiskStream(path, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
    return {file.Get(),
            file.PageCount(),
            Stream(stream),
            {.stream = stream, .byteOrder = file.ByteOrder(), .bytes{}}};
}

Status InsertInPlace(const char* path, const NewPage& page, uint32_t position, bool replace)
{
    if (const Status status = AppendNewPage(path, page); status != error::None)
        return status;
    const OpenedTiff file(path, T_READ);
    if (!file)
        return file.OpenStatus();
    const uint32_t last = file.PageCount() - 1;
    const uint32_t next = replace ? position + 1 : position;
    if (position >= last)
        return error::None;
    Relinking work = BeginRelinking(path, file);
    if (!work.stream)
        return error::InputOutput;
    // From the end of the chain to its beginning: at no moment has the chain a loop or lacks an old page that
    // stays.
    const uint32_t none = file.PageCount();
    Status status = Relink(work, last, none);
    if (status == error::None)
        status = Relink(work, last + 1, next == last ? none : next);
    if (status == error::None)
        status = Relink(work, position, last);
    return status;
}

// The page's bytes stay in the file; no link leads to them any more.
Status DeleteInPlace(const char* path, const OpenedTiff& file, uint32_t page)
{
    Relinking work = BeginRelinking(path, file);
    if (!work.stream)
        return error::InputOutput;
    return Relink(work, page, page + 1);
}

Status BuildInserted(const char* path, const OpenedTiff& file, const NewPage& page, uint32_t position,
                     bool replace)
{
    CopySource source(file.Get(), BrokenBranch::Refused);
    // Deliberate: whatever stops this copy is reported as 6.
    if (CopyUnlessEmpty(source, {0, position}, path) != error::None)
        return error::InputOutput;
    if (const Status status = AppendNewPage(path, page); status != error::None)
        return status;
    return CopyUnlessEmpty(source, {replace ? position + 1 : position, file.PageCount()}, path);
}

Status InsertByCopy(const char* path, const OpenedTiff& file, const NewPage& page, uint32_t position,
                    bool replace)
{
    Replacement rewritten(path, Naming::TempFolder, OnFailure::DeleteNew);
    if (!rewritten)
        return rewritten.NameStatus();
    const Status status = BuildInserted(rewritten.Name(), file, page, position, replace);
    return status == error::None ? rewritten.Commit() : status;
}

bool HasContent(const char* path)
{
    const FileHandle file(path, GENERIC_READ, OPEN_EXISTING);
    LARGE_INTEGER size;
    return file && (!GetFileSizeEx(file.Get(), &size) || size.QuadPart != 0);
}

// Status of a file that may open at the next try. Only a new file gets the page as its last: an old one that
// could not be read this time would get it in the wrong place.
bool MayOpenLater(Status status)
{
    return status == error::NotEnoughMemory || status == error::InputOutput;
}

Status InsertPage(const char* path, const NewPage& page, uint32_t position, bool inPlace, bool replace)
{
    const OpenedTiff file(path, T_READ);
    if (!file && HasContent(path) && MayOpenLater(file.OpenStatus()))
        return file.OpenStatus();
    if (!file || position >= file.PageCount())
        return AppendNewPage(path, page);
    // New pages are in Intel order, and a file has only one order.
    if (file.ByteOrder() == TIFF_MOTOROLA)
        return error::MixedByteOrders;
    if (!file.IsWhole())
        return error::InputOutput;
    return inPlace ? InsertInPlace(path, page, position, replace)
                   : InsertByCopy(path, file, page, position, replace);
}

Status DeletePage(const char* path, int32_t page, bool inPlace)
{
    const OpenedTiff file(path, T_READ);
    if (!file)
        return file.OpenStatus();
    const int64_t deleted = page == -1 ? int64_t{file.PageCount()} - 1 : page;
    if (deleted < 0 || deleted >= file.PageCount())
        return error::IndexOutOfRange;
    if (!file.IsWhole())
        return error::InputOutput;
    const auto first = static_cast<uint32_t>(deleted);
    return inPlace && file.PageCount() > 1 ? DeleteInPlace(path, file, first)
                                           : DeletePages(path, file, {first, first + 1});
}

Status Reorder(const char* path)
{
    const OpenedTiff file(path, T_READ);
    if (!file)
        return file.OpenStatus();
    if (!file.IsWhole())
        return error::InputOutput;
    return file.PageCount() > 1 ? DeletePages(path, file, {0, 0}) : error::None;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" int32_t InsertTiffImage(const char* path, HGLOBAL dib, uint32_t selector, int32_t dialog,
                                   uint32_t fillOrder, int32_t position, int32_t inPlace,
                                   int32_t replace) noexcept
{
    if (!path || position < 0)
        return FinishEdit(path ? error::IndexOutOfRange : error::InvalidParameters);
    return FinishEdit(InsertPage(path, {dib, selector, dialog, fillOrder}, static_cast<uint32_t>(position),
                                 inPlace != 0, replace != 0));
}

extern "C" int32_t DeleteTiffImage(const char* path, int32_t page, int32_t inPlace) noexcept
{
    return FinishEdit(DeletePage(path, page, inPlace != 0));
}

extern "C" int32_t ReorderTiffFile(const char* path) noexcept
{
    return FinishEdit(Reorder(path));
}
