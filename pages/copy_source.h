// The file that pages are copied from.
#pragma once

#include "core/directory_window.h"
#include "core/open_file.h"
#include "pages/known_offsets.h"
#include "pages/scratch.h"

namespace tiff {

// How to treat a sub-directory that cannot be read whole. A copy that will replace the original is refused;
// any other copy ends the branch there.
enum class BrokenBranch { Ends, Refused };

// Stays open for all pages of an operation. Close the file after it.
struct CopySource {
    HGLOBAL file;
    BrokenBranch brokenBranch;
    GlobalBlock snapshot; // of a TIFF in memory that is also written to
    Stream stream;
    uint32_t bytes; // the part of the file that 32-bit offsets reach; STREAM_FAILED when unknown
    DirectoryWindow window;
    KnownOffsets known; // collected when first needed
    Scratch scratch;    // the plan of one page

    // The destination may be the source itself. Pass null when it cannot be.
    CopySource(HGLOBAL file, BrokenBranch brokenBranch, HGLOBAL destination = nullptr);
};

} // namespace tiff
