// Annotation bytes between the annotation library and a tag. They may be large: they lie in one block and are
// written once.
#include "tiff/annotations.h"
#include "core/errors.h"
#include "core/sibling_library.h"
#include "core/tag_block.h"
#include "pages/page_edit.h"
#include "raster/loaded_page.h"
#include "tiff/directory.h"
#include "tiff/editing.h"
#include "tiff/files.h"

#include <cstring>

namespace tiff {

namespace {

constexpr uint32_t ANNOTATION_TAG = 32768;

uint32_t TagOr(uint32_t tag)
{
    return tag ? tag : ANNOTATION_TAG;
}

Module LoadAnnotationLibrary()
{
    return LoadSibling("kvanno.dll");
}

template <class Function>
Function Find(const Module& library, const char* name)
{
    const FARPROC found = library ? GetProcAddress(library.Get(), name) : nullptr;
    return reinterpret_cast<Function>(reinterpret_cast<void*>(found));
}

struct AnnotationBytes {
    GlobalBlock block; // one byte more than needed
    uint32_t kept = 0; // the file's own, before the new ones
};

// Room for so many new bytes.
Status MakeRoom(AnnotationBytes& bytes, uint32_t added)
{
    if (added > UINT32_MAX - bytes.kept)
        return error::NotEnoughMemory;
    bytes.block = GlobalBlock(uint64_t{bytes.kept} + added + 1);
    return bytes.block ? error::None : error::NotEnoughMemory;
}

// The same behind the bytes that the file has. A tag that cannot be read must not count as missing: its bytes
// would be replaced.
Status MakeRoomBehind(const char* path, uint32_t tag, AnnotationBytes& bytes, uint32_t added)
{
    const OpenedTiff file(path, T_READ);
    if (!file)
        return file.OpenStatus();
    CopySource source(file.Get(), BrokenBranch::Refused);
    if (const Status status = LoadForCopy(source, 0); status != error::None)
        return status;
    const PageTags tags(file.Get(), 0);
    if (!tags)
        return error::NotEnoughMemory;
    const auto found = tags.Find(tag);
    const bool keeps = found && found->type == fieldtype::Byte;
    bytes.kept = keeps ? found->count : 0;
    if (const Status status = MakeRoom(bytes, added); status != error::None)
        return status;
    const Locked<uint8_t> block(bytes.block.Get());
    if (!block)
        return error::NotEnoughMemory;
    if (keeps)
        std::memcpy(block.Get(), found->values.data(), bytes.kept);
    return error::None;
}

// Lets `fill` add its bytes behind the kept ones, and writes all of them.
template <class Fill>
int32_t WriteBytes(const char* path, uint32_t tag, const AnnotationBytes& bytes, uint32_t added, Fill fill)
{
    const Locked<uint8_t> block(bytes.block.Get());
    return block && fill(block.Get() + bytes.kept) &&
           AddTiffTagToImage(path, 0, tag, fieldtype::Byte, block.Get(), bytes.kept + added);
}

bool IsGiven(const char* path)
{
    if (!path)
        SetTiffError(error::InvalidParameters);
    return path;
}

bool IsPageOf(const char* path, int32_t page)
{
    const uint32_t pages = GetNumberOfImagesInTiffFile(path);
    return page >= 0 && pages <= TIFF_MAX_PAGES && static_cast<uint32_t>(page) < pages;
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" TiffAnnotation LoadAnnotationFromTiff(const char* path, uint32_t tag) noexcept
{
    if (!IsGiven(path))
        return 0;
    const Module library = LoadAnnotationLibrary();
    if (!library)
        return 0;
    const LoadedPage page(path, 0);
    SetTiffError(page.LoadStatus());
    const auto create = Find<TiffAnnoCreateOnLoad>(library, "AnnoCreateOnLoad");
    GlobalBlock values;
    uint32_t type = 0, count = 0;
    if (!create || page.LoadStatus() != error::None ||
        !GetTiffImageInfoBuffer(page.File(), 0, TagOr(tag), values.Receive(), &type, &count) ||
        type != fieldtype::Byte)
        return 0;
    const Locked<uint8_t> bytes(values.Get());
    return bytes ? create(bytes.Get(), count) : 0;
}

extern "C" int32_t SaveAnnotationIntoTiff(const char* path, TiffAnnotation annotation, uint32_t tag) noexcept
{
    if (!IsGiven(path) || !annotation)
        return 0;
    const Module library = LoadAnnotationLibrary();
    const auto countBytes = Find<TiffAnnoGetSaveCount>(library, "AnnoGetSaveCount");
    const auto save = Find<TiffAnnoGetSaveData>(library, "AnnoGetSaveData");
    if (!countBytes || !save)
        return 0;
    const uint32_t count = countBytes(annotation);
    if (count == 0) {
        // Deliberate: without bytes the result is 0 although the tag is gone.
        DeleteTiffTagOfImage(path, 0, TagOr(tag));
        return 0;
    }
    AnnotationBytes bytes;
    return MakeRoom(bytes, count) == error::None &&
           WriteBytes(path, TagOr(tag), bytes, count,
                      [&](void* buffer) { return save(annotation, buffer, count) != 0; });
}

extern "C" int32_t SaveAnnotationIntoTiffExt(const char* path, TiffAnnotation annotation, uint32_t tag,
                                             int32_t mode, int32_t annotationPage, int32_t filePage) noexcept
{
    const bool append = mode == TIFF_ANNOTATION_APPEND;
    if (!IsGiven(path) || (!append && mode != TIFF_ANNOTATION_REPLACE) || annotationPage < -1 ||
        !IsPageOf(path, filePage) || !annotation)
        return 0;
    const Module library = LoadAnnotationLibrary();
    const auto countBytes = Find<TiffAnnoGetSaveCountOnPage>(library, "AnnoGetSaveCountOnPage");
    const auto save = Find<TiffAnnoGetSaveDataExt>(library, "AnnoGetSaveDataExt");
    if (!countBytes || !save)
        return 0;
    const uint32_t count = countBytes(annotation, annotationPage);
    if (count == 0) {
        // Deliberate: the result does not depend on the deletion.
        if (!append)
            DeleteTiffTagOfImage(path, 0, TagOr(tag));
        return 1;
    }
    AnnotationBytes bytes;
    const Status status = append ? MakeRoomBehind(path, TagOr(tag), bytes, count) : MakeRoom(bytes, count);
    if (status != error::None) {
        SetTiffError(status);
        return 0;
    }
    return WriteBytes(path, TagOr(tag), bytes, count, [&](void* buffer) {
        return save(annotation, buffer, count, annotationPage, filePage) != 0;
    });
}
