// Copies pages from file to file without decoding. A page is its directory, then the values outside it, then
// its strips, without gaps and from an even offset on. Both files stay open for a whole run of pages.
#pragma once

#include "core/desktop.h"
#include "pages/copy_output.h"
#include "pages/copy_source.h"
#include "tiff/editing.h"
#include "tiff/files.h"

#include <optional>

namespace tiff {

// From `first` to `end`, not including `end`.
struct PageRange {
    uint32_t first, end;
};

// The caller's callback, called after each page, which may stop the work.
struct Progress {
    TiffProgress callback; // may be null
    uint64_t user;
    uint32_t total;
    uint32_t done = 0;
};

// Counts a step; false when the callback stops the work.
[[nodiscard]] bool ReportStep(Progress& progress);

// The pages that are copied from one file to another. Close both files after the run.
struct CopyRun {
    CopySource& source;
    HGLOBAL destination;
    BusyCursor cursor;
    GlobalBlock bufferBlock;
    Locked<uint8_t> buffer;
    std::optional<WritingStream> target;
    CopyOutput output;
    uint32_t directoryOffset; // of the last page
    uint32_t directoryBytes;  // entries and values

    // The destination is opened when the first bytes are written.
    CopyRun(CopySource& source, HGLOBAL destination);
};

// Opens the destination, and writes a header if it is new. Does nothing when it is open already. Deliberate:
// a file that is appended to is taken to have the source's byte order, which is not compared. Fails with 1,
// 6, or 29 when both are one file and it would be emptied.
[[nodiscard]] Status OpenOutput(CopyRun& run);

// Loads all tags of a page that the file has: tags that cannot be read now must not be lost in the copy.
// Fails with 6, or the errors of GetTiffImage.
[[nodiscard]] Status LoadForCopy(CopySource& source, uint32_t page);

// Appends pages. Tags that are loaded in the source are taken from memory, and dropped afterwards.
[[nodiscard]] Status CopyPages(CopyRun& run, PageRange range, Progress* progress = nullptr);

// Opens a file on disk, appends pages, and closes it.
[[nodiscard]] Status CopyPagesToFile(CopySource& source, PageRange range, const char* path, uint32_t mode,
                                     Progress* progress = nullptr);

// Ends the run. Pages copied before a failure also reach the file; other bytes do not. Returns a failed
// status unchanged.
[[nodiscard]] Status FinishCopy(CopyRun& run, Status status);

// The number of pages before the first whose directory came earlier: all pages, unless the chain has a loop.
uint32_t PagesBeforeRepeat(HGLOBAL file);

// True also when that cannot be found out.
bool IsRing(HGLOBAL file);

} // namespace tiff
