#include "pages/copy_output.h"

#include "core/byte_order.h"
#include "core/directory_writer.h"
#include "core/errors.h"
#include "core/open_file.h"

#include <algorithm>

namespace tiff {

namespace {

// The pages first, then the link to them. Until the link is written, the file reads as before.
Status SettleLink(CopyOutput& output)
{
    if (output.waitingLink == 0)
        return error::None;
    if (const Status status =
            PatchLink(output.stream, output.waitingLink, output.waitingDirectory, output.byteOrder);
        status != error::None) {
        output.failed = true;
        return status;
    }
    output.waitingLink = 0;
    output.safe = output.whole;
    const bool back = mSeek(output.stream, output.flushed, 0) != STREAM_FAILED;
    return back ? error::None : error::InputOutput;
}

} // namespace

Status Flush(CopyOutput& output)
{
    if (output.filled && WriteStream(output.stream, output.buffer.data(), output.filled) != output.filled) {
        output.failed = true;
        return error::InputOutput;
    }
    output.flushed += output.filled;
    output.filled = 0;
    if (const Status status = SettleLink(output); status != error::None)
        return status;
    output.safe = output.whole;
    return error::None;
}

Status Append(CopyOutput& output, std::span<const uint8_t> bytes)
{
    while (!bytes.empty()) {
        if (output.filled == output.buffer.size())
            if (const Status status = Flush(output); status != error::None)
                return status;
        const auto part = bytes.first(std::min(bytes.size(), output.buffer.size() - output.filled));
        std::memcpy(&output.buffer[output.filled], part.data(), part.size());
        output.filled += static_cast<uint32_t>(part.size());
        bytes = bytes.subspan(part.size());
    }
    return error::None;
}

Status AppendFrom(CopyOutput& output, TiffStream source, uint32_t offset, uint32_t bytes)
{
    if (mSeek(source, offset, 0) == STREAM_FAILED)
        return error::InputOutput;
    while (bytes > 0) {
        if (output.filled == output.buffer.size())
            if (const Status status = Flush(output); status != error::None)
                return status;
        const auto room = static_cast<uint32_t>(output.buffer.size()) - output.filled;
        const uint32_t arrived = ReadStream(source, &output.buffer[output.filled], std::min(bytes, room));
        if (arrived == 0 || arrived == STREAM_FAILED)
            return error::InputOutput;
        output.filled += arrived;
        bytes -= arrived;
    }
    return error::None;
}

Status EndPage(CopyOutput& output, uint32_t directoryOffset, uint32_t linkPosition)
{
    const uint32_t link = output.whole.linkPosition;
    if (link >= output.flushed) {
        Store32(&output.buffer[link - output.flushed], directoryOffset, output.byteOrder);
        output.whole = {EndOf(output), linkPosition};
        return error::None;
    }
    // Only one link can wait. When a link is partly in the buffer, its rest must go to the file first.
    const bool now = output.waitingLink != 0 || output.flushed - link < 4;
    if (now)
        if (const Status status = Flush(output); status != error::None)
            return status;
    output.waitingLink = link;
    output.waitingDirectory = directoryOffset;
    output.whole = {EndOf(output), linkPosition};
    // With everything in the file this link need not wait; else every later page's link would have to.
    return now ? Flush(output) : error::None;
}

void TakeBack(CopyOutput& output)
{
    // Writes the complete pages again: the failure may have been lack of room for this one.
    output.filled = output.whole.end > output.flushed ? output.whole.end - output.flushed : 0;
    const bool written =
        mSeek(output.stream, output.flushed, 0) != STREAM_FAILED && Flush(output) == error::None;
    const CopiedEnd& kept = written ? output.whole : output.safe;
    if (CutStream(output.stream, kept.end) || !output.isNew || kept.end != 0)
        return;
    // A new file without a page: no link may lead to bytes that cannot be cut off.
    static_cast<void>(PatchLink(output.stream, FIRST_LINK, 0, output.byteOrder));
}

} // namespace tiff
