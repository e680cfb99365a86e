// The file that pages are copied out of.
#pragma once

#include "core/directory_window.h"
#include "core/open_file.h"
#include "pages/known_offsets.h"
#include "pages/scratch.h"

namespace tiff {

// What becomes of a page with a sub-directory that cannot be seen whole: the copy is refused when it
// is to take the original's place, else the branch ends there.
enum class BrokenBranch { Ends, Refused };

// Stays open for all pages of an operation. The file must be closed later.
struct CopySource {
    HGLOBAL file;
    BrokenBranch brokenBranch;
    GlobalBlock snapshot; // of a TIFF in memory that is written to meanwhile
    Stream stream;
    uint32_t bytes; // what 32-bit offsets reach of the file; STREAM_FAILED when unknown
    DirectoryWindow window;
    KnownOffsets known; // collected when they are needed
    Scratch scratch;    // what is planned of a page

    // The destination may be the source itself; null when it cannot be.
    CopySource(HGLOBAL file, BrokenBranch brokenBranch, HGLOBAL destination = nullptr);
};

} // namespace tiff
