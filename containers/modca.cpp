// The Image Picture Data field of MO:DCA around an image segment.
#include "containers/ioca.h"
#include "core/errors.h"

namespace tiff::modca {

namespace {

constexpr uint8_t PICTURE_DATA[] = {0xD3, 0xEE, 0xFB};
constexpr uint8_t END_OF_ENVIRONMENT[] = {0xD3, 0xA9, 0xC7};
constexpr uint32_t MOST_CANDIDATES = 2048;
constexpr int64_t LENGTH_OFFSET = 28;

Status WriteStart(HANDLE file, const TiffIocaDescription* description)
{
    if (!description)
        return error::InvalidParameters;
    const Status status = ioca::WritePiece(file, PICTURE_DATA);
    return status == error::None ? ioca::WriteSegmentStart(file, *description) : status;
}

// Deliberate: the length has a fixed place, whatever the caller has put there, and counts the bytes up to
// the tail from that place on.
Status PatchLength(HANDLE file)
{
    int64_t end;
    if (!ioca::Position(file, end) || !ioca::MovePosition(file, LENGTH_OFFSET, FILE_BEGIN))
        return error::InputOutput;
    const Status status = ioca::WriteNumber(file, static_cast<uint16_t>(end - LENGTH_OFFSET));
    return ioca::MovePosition(file, end, FILE_BEGIN) ? status : Status{error::InputOutput};
}

Status WriteEnd(HANDLE file)
{
    Status status = PatchLength(file);
    if (status == error::None)
        status = ioca::WritePiece(file, ioca::TAIL);
    return status == error::None ? ioca::WritePiece(file, END_OF_ENVIRONMENT) : status;
}

// Deliberate: only first bytes count as candidates, and a byte that does not match is none itself: D3 D3 EE
// FB is passed over.
bool FindPictureData(ioca::Reader& reader)
{
    for (uint32_t candidate = 0; candidate < MOST_CANDIDATES; ++candidate) {
        size_t matched = 0;
        uint8_t byte;
        do {
            if (!reader.Take(byte))
                return false;
        } while (byte == PICTURE_DATA[matched] && ++matched < std::size(PICTURE_DATA));
        if (matched == std::size(PICTURE_DATA))
            return true;
    }
    return false;
}

int32_t ResultOf(Status status)
{
    if (status != error::None)
        StoreLastError(status);
    return status == error::None;
}

} // namespace

} // namespace tiff::modca

using namespace tiff;

extern "C" int32_t WriteMODCAHeader(HANDLE file, const TiffIocaDescription* description) noexcept
{
    return modca::ResultOf(modca::WriteStart(file, description));
}

extern "C" int32_t WriteMODCATail(HANDLE file) noexcept
{
    return modca::ResultOf(modca::WriteEnd(file));
}

extern "C" int32_t ReadMODCAHeader(HANDLE file, TiffIocaDescription* description) noexcept
{
    if (!description)
        return 0;
    *description = {};
    ioca::Reader reader(file);
    const bool read = modca::FindPictureData(reader) && ioca::ReadSegmentStart(reader, *description);
    return reader.Finish() && read;
}
