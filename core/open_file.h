// Where an open file's bytes are.
#pragma once

#include "core/global_block.h"
#include "core/records.h"
#include "core/stream.h"
#include "core/vocabulary.h"

#include <array>

namespace tiff {

// The header ends with the link to the first page.
inline constexpr uint32_t FIRST_LINK = 4;

// The header of a file without pages.
std::array<uint8_t, 8> FileHeader(uint32_t byteOrder);

// The file on disk, or a memory stream over the record's block, for reading.
TiffStream OpenRecord(const TiffFileRecord& record);

// A stream to write a page through: the file on disk, opened as the open flags say, or a memory stream over
// the record's block, which is emptied for a new file.
class WritingStream {
public:
    // If a disk file cannot be opened, tries again up to `retries` times, each after a pause.
    explicit WritingStream(HGLOBAL file, uint32_t retries = 0);
    WritingStream(const WritingStream&) = delete;
    WritingStream& operator=(const WritingStream&) = delete;
    ~WritingStream();

    explicit operator bool() const
    {
        return static_cast<bool>(stream);
    }
    // 0, or why there is no stream: 1 or 6.
    [[nodiscard]] Status OpenStatus() const;
    TiffStream Get() const
    {
        return stream.Get();
    }
    // Call when the page is whole: a TIFF in memory then extends to the end of the written bytes. Without
    // this it keeps its old size, and the next page overwrites the rest.
    void Commit();

    // Call when the page failed and nothing links to it: the file gets its old end again.
    void TakeBack();

private:
    HGLOBAL file;
    Locked<TiffFileRecord> record; // while the file is written, its end must be able to be noted
    GlobalBlock fresh;             // of a TIFF in memory that had no block, until it has a page
    Stream stream;
    uint32_t end = 0; // of the file as it was opened
    bool knowsEnd;
};

// Writes the header of a file that has none yet, or moves to the end of one that has.
[[nodiscard]] Status BeginPage(TiffStream stream, HGLOBAL file);

// A TIFF in the caller's memory, for reading. The bytes must live as long as the handle, which no caller of
// the library may get: functions for files in memory would take their address for a block.
HGLOBAL OpenBytes(const void* bytes, uint32_t size, Status& status);

// As OpenTiffFile, and says why: a file whose chain of pages is broken opens with status 6.
HGLOBAL OpenFile(const char* path, uint32_t mode, Status& status);

} // namespace tiff
