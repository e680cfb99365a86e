// A memory stream over bytes, or an empty one that grows, for a scope.
#pragma once

#include "core/stream.h"
#include "support/bytes.h"

class RawStream {
public:
    explicit RawStream(const Bytes& bytes = {})
        : stream(bytes.empty() ? tiff::OpenMemoryStream(nullptr, 0)
                               : tiff::OpenMemoryStream(NewBlock(bytes), static_cast<uint32_t>(bytes.size())))
    {
    }
    RawStream(const RawStream&) = delete;
    RawStream& operator=(const RawStream&) = delete;
    ~RawStream()
    {
        GlobalFree(tiff::MemoryStreamBlock(stream));
        mClose(stream);
    }
    Bytes Written() const
    {
        return Content(tiff::MemoryStreamBlock(stream), mSize(stream));
    }
    const TiffStream stream;
};
