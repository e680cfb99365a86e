// Arrays of TIFF values to and from a stream, in the file's byte and bit order.
#include "core/byte_order.h"
#include "core/error_detail.h"
#include "core/errors.h"
#include "core/global_block.h"
#include "core/stream.h"
#include "core/thread_state.h"
#include "tiff/streams.h"

#include <algorithm>

namespace tiff {

// No transfer is larger: callers with small buffers behind their files rely on it.
static constexpr uint32_t CHUNK_BYTES = 32000;
static constexpr uint32_t SCRATCH_SLACK = 50;

static bool NeedsSwap(uint32_t type, uint32_t byteOrder)
{
    return byteOrder == TIFF_MOTOROLA && ElementBytes(type) >= 2;
}

template <class Transfer>
static bool TransferAll(uint8_t* bytes, uint64_t count, Transfer transfer)
{
    while (count > 0) {
        const uint32_t done = transfer(bytes, static_cast<uint32_t>(std::min<uint64_t>(count, CHUNK_BYTES)));
        if (done == 0 || done == STREAM_FAILED)
            return false;
        bytes += done;
        count -= done;
    }
    return true;
}

// The work that this is a part of may have more to say about the failure, so the facts stay open.
static bool Failed()
{
    ThreadState().lastError = error::InputOutput;
    return false;
}

bool ReadArray(TiffStream stream, uint32_t type, uint32_t count, void* buffer, uint32_t byteOrder,
               uint32_t fillOrder)
{
    ForgetFacts();
    const uint64_t bytes = uint64_t{count} * ElementBytes(type);
    auto* target = static_cast<uint8_t*>(buffer);
    if (!TransferAll(target, bytes,
                     [=](uint8_t* at, uint32_t part) { return ReadStream(stream, at, part); })) {
        return Failed();
    }
    if (NeedsSwap(type, byteOrder))
        SwapElements({target, static_cast<size_t>(bytes)}, type);
    if (fillOrder == TIFF_LSB_FIRST)
        ReverseBits({target, static_cast<size_t>(bytes)});
    return true;
}

bool WriteArray(TiffStream stream, uint32_t type, uint32_t count, void* buffer, uint32_t byteOrder,
                uint32_t fillOrder)
{
    ForgetFacts();
    const uint64_t bytes = uint64_t{count} * ElementBytes(type);
    const bool swap = NeedsSwap(type, byteOrder);
    auto* source = static_cast<uint8_t*>(buffer);

    GlobalBlock block;
    if (swap || fillOrder == TIFF_LSB_FIRST)
        block = GlobalBlock(bytes + SCRATCH_SLACK);
    Locked<uint8_t> scratch(block.Get());
    if (scratch) {
        std::memcpy(scratch.Get(), source, static_cast<size_t>(bytes));
        source = scratch.Get();
    }
    if (swap)
        SwapElements({source, static_cast<size_t>(bytes)}, type);
    if (fillOrder == TIFF_LSB_FIRST)
        ReverseBits({source, static_cast<size_t>(bytes)});

    if (!TransferAll(source, bytes,
                     [=](uint8_t* at, uint32_t part) { return WriteStream(stream, at, part); })) {
        return Failed();
    }
    return true;
}

// For an application the work ends here.
static int32_t Finish(bool done)
{
    if (!done)
        SealFacts(error::InputOutput);
    return done;
}

} // namespace tiff

using namespace tiff;

extern "C" int32_t LongRead(TiffStream stream, uint32_t type, uint32_t count, void* buffer,
                            uint32_t byteOrder, uint32_t fillOrder) noexcept
{
    return Finish(ReadArray(stream, type, count, buffer, byteOrder, fillOrder));
}

extern "C" int32_t LongWrite(TiffStream stream, uint32_t type, uint32_t count, void* buffer,
                             uint32_t byteOrder, uint32_t fillOrder) noexcept
{
    return Finish(WriteArray(stream, type, count, buffer, byteOrder, fillOrder));
}

extern "C" uint32_t SetTiffDllFileHandle(uint32_t count) noexcept
{
    return SetHandleCount(count);
}
