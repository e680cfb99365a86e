// The end of a file that pages are appended to. Appended bytes collect in a buffer; links lead only to pages
// that are completely in the file.
#pragma once

#include "core/vocabulary.h"
#include "tiff/streams.h"

#include <span>

namespace tiff {

// The end of the complete pages in the file or the buffer.
struct CopiedEnd {
    uint32_t end;          // of the last page
    uint32_t linkPosition; // of the link for the next page
};

struct CopyOutput {
    TiffStream stream; // its position is `flushed`
    uint32_t byteOrder;
    bool isNew; // the file was empty before
    CopiedEnd whole;
    CopiedEnd safe; // the part of `whole` that is in the file
    // A link that is already in the file, to a page that is still in the buffer.
    uint32_t waitingLink; // its position; 0 without one
    uint32_t waitingDirectory;
    uint32_t flushed; // bytes in the file
    uint32_t filled;  // bytes in the buffer
    bool failed;      // the stream could not be written
    std::span<uint8_t> buffer;
};

inline uint32_t EndOf(const CopyOutput& output)
{
    return output.flushed + output.filled;
}

// The functions below set the error when they fail.
[[nodiscard]] Status Flush(CopyOutput& output);
[[nodiscard]] Status Append(CopyOutput& output, std::span<const uint8_t> bytes);

// Appends bytes of another file. They must exist: a short read is an error.
[[nodiscard]] Status AppendFrom(CopyOutput& output, TiffStream source, uint32_t offset, uint32_t bytes);

// Ends a page: links its directory, and its own link becomes the last.
[[nodiscard]] Status EndPage(CopyOutput& output, uint32_t directoryOffset, uint32_t linkPosition);

// Drops an incomplete page, and complete ones that cannot be written. Cuts the file back as far as possible.
void TakeBack(CopyOutput& output);

} // namespace tiff
