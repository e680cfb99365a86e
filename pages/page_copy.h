// Copies pages from file to file without decoding them: a page is its directory, then the
// values that the directory points to, then its strips, without gaps and from an even offset
// on. Both files stay open for a whole run of pages.
#pragma once

#include "core/desktop.h"
#include "pages/copy_output.h"
#include "pages/copy_source.h"
#include "tiff/editing.h"
#include "tiff/files.h"

#include <optional>

namespace tiff {

// From first up to, not including, end.
struct PageRange {
    uint32_t first, end;
};

// Who gets a call after each page, and may stop the work.
struct Progress {
    TiffProgress callback; // may be null
    uint64_t user;
    uint32_t total;
    uint32_t done = 0;
};

// Counts a step; false when the caller wants to stop.
[[nodiscard]] bool ReportStep(Progress& progress);

// The pages that go from one file to another. Both must be closed later than the run.
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

    // The destination is opened when there is something to write.
    CopyRun(CopySource& source, HGLOBAL destination);
};

// Opens the destination, and begins it with a header if it is new. Nothing happens when it is
// open already. Deliberate: a file that is added to is from here on taken to have the source's byte
// order; nobody compares. Fails with 1, 6, or 29 when both files are one and it would be emptied.
[[nodiscard]] Status OpenOutput(CopyRun& run);

// Loads a page's tags, all that the file has of them: what cannot be read now must not be left out
// of a file for good. 6, or the errors of GetTiffImage.
[[nodiscard]] Status LoadForCopy(CopySource& source, uint32_t page);

// Appends pages. Tags of the source that are loaded are taken as they are in memory; they are
// dropped afterwards.
[[nodiscard]] Status CopyPages(CopyRun& run, PageRange range, Progress* progress = nullptr);

// Appends pages to a file on disk, which is opened and closed for it.
[[nodiscard]] Status CopyPagesToFile(CopySource& source, PageRange range, const char* path, uint32_t mode,
                                     Progress* progress = nullptr);

// Ends the run: pages that were copied before a failure reach the file too, and nothing else does.
// Passes a failed status on.
[[nodiscard]] Status FinishCopy(CopyRun& run, Status status);

// The pages of a file up to the first whose directory came before: all of them, unless the chain leads
// back into itself.
uint32_t PagesBeforeRepeat(HGLOBAL file);

inline bool IsRing(HGLOBAL file)
{
    return PagesBeforeRepeat(file) < NumberOfTiffImages(file, TIFF_ALL_PAGES);
}

} // namespace tiff
