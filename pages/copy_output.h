// The end of a file that pages are appended to. What is appended collects in a buffer; links lead
// only to pages that are in the file whole.
#pragma once

#include "core/vocabulary.h"
#include "tiff/streams.h"

#include <span>

namespace tiff {

// What has come into the file or the buffer whole.
struct CopiedEnd {
    uint32_t end;          // of the last page
    uint32_t linkPosition; // of the link that the next page hangs on
};

struct CopyOutput {
    TiffStream stream; // stands at what is flushed
    uint32_t byteOrder;
    bool isNew; // nothing was there before
    CopiedEnd whole;
    CopiedEnd safe; // what of it is in the file
    // A link that lies in the file already, and leads to a page that is still on its way.
    uint32_t waitingLink; // its position; 0 without one
    uint32_t waitingDirectory;
    uint32_t flushed; // bytes of the file that are not in the buffer
    uint32_t filled;  // bytes that are
    std::span<uint8_t> buffer;
};

inline uint32_t EndOf(const CopyOutput& output)
{
    return output.flushed + output.filled;
}

// The rest set the error when they fail.
[[nodiscard]] Status Flush(CopyOutput& output);
[[nodiscard]] Status Append(CopyOutput& output, std::span<const uint8_t> bytes);

// Appends bytes of another file, which exist: those that do not arrive are an error.
[[nodiscard]] Status AppendFrom(CopyOutput& output, TiffStream source, uint32_t offset, uint32_t bytes);

// A page is complete: the chain goes on to its directory and ends with its link.
[[nodiscard]] Status EndPage(CopyOutput& output, uint32_t directoryOffset, uint32_t linkPosition);

// Takes back a page that did not come through, and what of the others cannot be written. The file is
// cut back as far as that can be done.
void TakeBack(CopyOutput& output);

} // namespace tiff
