// Codes any picture in every scheme, as a page and as a bare stream, and decodes it again: the same pixels.
#include "core/stream.h"
#include "made_picture.h"

using namespace fuzz;

namespace {

constexpr uint64_t LARGEST_BLOCK = 16 << 20;

void TripAsPage(const Picture& picture, uint32_t selector, uint32_t fillOrder)
{
    const Bytes dib = DibOf(picture);
    const Block block(dib);
    const Bytes saved = TakeBlock(SaveTiffToMemory(nullptr, block.Get(), selector, fillOrder));
    if (saved.empty()) {
        Demand(picture.bits != 1 && TiffError() != 0);
        return;
    }
    const OpenTiff tiff(saved);
    Demand(tiff.handle && GetTiffImage(tiff.handle, 0));
    const Bytes loaded = TakeBlock(LoadTiffChainIntoDIB(tiff.handle, 0));
    Demand(TiffError() == 0);
    // Facsimile pages have one bit a pixel, whatever the picture has.
    const bool isFax = selector >= TIFF_SAVE_MODIFIED_HUFFMAN && selector <= TIFF_SAVE_GROUP4;
    if (selector != TIFF_SAVE_JPEG && (!isFax || picture.bits == 1))
        Demand(SamplesOf(picture, loaded) == SamplesOf(picture, dib));
}

struct Lines {
    const Picture* picture;
    uint32_t count = 0;
    bool same = true;
};

intptr_t GiveLine(void* line, uint32_t row, void* user)
{
    const Picture& picture = *static_cast<Lines*>(user)->picture;
    std::memcpy(line, &picture.rows[row * picture.RowBytes()], picture.RowBytes());
    return 0;
}

intptr_t TakeLine(void* line, uint32_t row, void* user)
{
    auto& lines = *static_cast<Lines*>(user);
    const Picture& picture = *lines.picture;
    const Bytes wanted(picture.rows.begin() + static_cast<ptrdiff_t>(row * picture.RowBytes()),
                       picture.rows.begin() + static_cast<ptrdiff_t>((row + 1) * picture.RowBytes()));
    Bytes got(static_cast<uint8_t*>(line), static_cast<uint8_t*>(line) + picture.RowBytes());
    if (const uint32_t rest = picture.width % 8)
        got.back() &= static_cast<uint8_t>(0xFF00 >> rest);
    lines.same &= got == wanted;
    ++lines.count;
    return 0;
}

void TripAsStream(const Picture& picture, uint32_t compression, uint32_t fillOrder, bool records)
{
    const TiffStream stream = tiff::OpenMemoryStream(nullptr, 0);
    Lines lines{&picture};
    const bool coded =
        records ? EncodeMMRImage(stream, picture.width, picture.height, compression, &lines, GiveLine)
                : EncodeCcittImageTo(stream, picture.width, picture.height, fillOrder, TIFF_INTEL,
                                     compression, &lines, GiveLine);
    Demand(coded);
    mSeek(stream, 0, 0);
    auto* decode = records ? DecodeMMRImage : DecodeCcittImageFrom;
    const bool decoded = decode(stream, 0, picture.width, picture.height, compression,
                                records ? 1 : fillOrder, TIFF_INTEL, &lines, TakeLine);
    Demand(lines.same && lines.count == picture.height);
    Demand(decoded);
    const HGLOBAL written = tiff::MemoryStreamBlock(stream);
    mClose(stream);
    GlobalFree(written);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const Run run(LARGEST_BLOCK);
    static constexpr uint32_t schemes[] = {4, 2, 3, 0x10003, 0x40003, 0x50003};
    Choices choices{{data, size}};
    const uint32_t selector = TIFF_SAVE_STORED + choices.Below(9), fillOrder = 1 + choices.Below(2);
    const uint32_t scheme = choices.OneOf(schemes);
    const bool records = choices.Byte() & 1;
    const Picture picture = PictureOf(choices);
    SetKfactor(2 + static_cast<int32_t>(choices.Below(4)));
    TripAsPage(picture, selector, fillOrder);
    if (picture.bits == 1)
        TripAsStream(picture, scheme, fillOrder, records);
    return 0;
}
