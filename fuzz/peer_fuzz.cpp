// What libtiff decodes without a word is decoded to the same rows; what it codes, too. What is saved, libtiff
// decodes without a word, to the same rows.
#include "made_picture.h"
#include "made_tiff.h"
#include "peer_decoder.h"

#include <algorithm>
#include <cstring>

using namespace fuzz;

namespace {

constexpr uint64_t LARGEST_BLOCK = 16 << 20;

struct Rows {
    size_t lineBytes;
    uint32_t restBits; // of the last byte; 0 for all
    Bytes bytes;
};

void MaskRest(Bytes& rows, size_t lineBytes, uint32_t restBits)
{
    for (size_t end = lineBytes; restBits != 0 && end <= rows.size(); end += lineBytes)
        rows[end - 1] &= static_cast<uint8_t>(0xFF00 >> restBits);
}

intptr_t TakeLine(void* line, uint32_t, void* user)
{
    auto& rows = *static_cast<Rows*>(user);
    const auto* bytes = static_cast<const uint8_t*>(line);
    rows.bytes.insert(rows.bytes.end(), bytes, bytes + rows.lineBytes);
    return 0;
}

void DemandRows(HGLOBAL file, uint32_t page, Bytes wanted)
{
    Demand(GetTiffImage(file, page));
    BITMAPINFOHEADER header;
    Demand(GetTiffDimensions(file, page, &header) == 0);
    const auto bits = static_cast<size_t>(header.biWidth) * header.biBitCount;
    Rows rows = {(bits + 7) / 8, static_cast<uint32_t>(bits % 8), {}};
    const bool done = DecodeTiffImage(file, page, 0, 0, &rows, TakeLine);
    MaskRest(wanted, rows.lineBytes, rows.restBits);
    MaskRest(rows.bytes, rows.lineBytes, rows.restBits);
    Demand(done);
    Demand(rows.bytes == wanted);
}

void CompareBytes(Choices& choices)
{
    const Bytes file = MakeTiff(choices, Pages::Sound);
    Keep(file);
    const OpenTiff tiff(file);
    Demand(tiff.handle);
    const uint32_t pages = NumberOfTiffImages(tiff.handle, TIFF_ALL_PAGES);
    for (uint32_t page = 0; page < pages; ++page)
        if (Bytes theirs; DecodeByPeer(file, page, theirs))
            DemandRows(tiff.handle, page, theirs);
}

void ReadTheirs(Choices& choices)
{
    static constexpr PeerScheme fax[] = {{2, 1, 0, 1, 0}, {3, 1, 0, 1, 0}, {3, 1, 1, 1, 0}, {3, 1, 4, 1, 0},
                                         {3, 1, 5, 1, 0}, {4, 1, 0, 1, 0}, {4, 1, 0, 1, 0}};
    static constexpr PeerScheme others[] = {
        {1, 1, 0, 1, 0}, {5, 1, 0, 1, 0}, {5, 2, 0, 1, 0}, {32773, 1, 0, 1, 0}};
    const PeerScheme coded[] = {choices.OneOf(fax), choices.OneOf(others)};
    const uint8_t form = choices.Byte();
    const Picture picture = PictureOf(choices);
    PeerScheme scheme = coded[picture.bits == 1 ? form & 1 : 1];
    if (picture.bits < 8)
        scheme.predictor = 1;
    scheme.fillOrder = form & 2 ? 2 : 1;
    scheme.rowsPerStrip = 1 + (form >> 2) % picture.height;
    const Bytes file = EncodeByPeer(picture.rows, picture.width, picture.height, picture.bits, scheme);
    Keep(file);
    const OpenTiff tiff(file);
    Demand(tiff.handle);
    DemandRows(tiff.handle, 0, picture.rows);
}

// libtiff takes zeros behind a strip for bits of it, and so loses its place before a last row of modified
// Huffman in one byte. Here it reads on into the values behind the strip.
Bytes WithLongerStrip(Bytes file)
{
    constexpr size_t COUNT = 2, ENTRY = 12, VALUE = 8;
    constexpr uint8_t STRIP_BYTE_COUNTS[] = {279 & 0xFF, 279 >> 8, 4, 0, 1, 0, 0, 0};
    uint32_t directory;
    std::memcpy(&directory, &file[4], sizeof(directory));
    for (size_t at = directory + COUNT; at + ENTRY <= file.size(); at += ENTRY)
        if (std::memcmp(&file[at], STRIP_BYTE_COUNTS, VALUE) == 0) {
            uint32_t bytes;
            std::memcpy(&bytes, &file[at + VALUE], sizeof(bytes));
            bytes += 2;
            std::memcpy(&file[at + VALUE], &bytes, sizeof(bytes));
            break;
        }
    return file;
}

// A row that alternates from a black pixel has one run more than pixels: the white one of no length before
// it. libtiff has room for as many runs as pixels, rounded to 32.
bool OverflowsPeer(const Picture& picture)
{
    const auto alternates = [](Input row) {
        return (row[0] == 0xAA || row[0] == 0x55) &&
               std::ranges::all_of(row, [&](uint8_t byte) { return byte == row[0]; });
    };
    const size_t rowBytes = picture.width / 8;
    bool overflows = false;
    for (size_t at = 0; picture.width % 32 == 0 && at + rowBytes <= picture.rows.size(); at += rowBytes)
        overflows |= alternates(Input(picture.rows).subspan(at, rowBytes));
    return overflows;
}

// Bilevel pages. LZW with differences is left out: libtiff takes them of whole bytes only.
void ShowOurs(Choices& choices)
{
    static constexpr uint32_t selectors[] = {TIFF_SAVE_STORED, TIFF_SAVE_PACKBITS,
                                             TIFF_SAVE_LZW,    TIFF_SAVE_MODIFIED_HUFFMAN,
                                             TIFF_SAVE_GROUP3, TIFF_SAVE_GROUP3_TWO_DIMENSIONAL,
                                             TIFF_SAVE_GROUP4};
    const uint32_t selector = choices.OneOf(selectors), fillOrder = 1 + choices.Below(2);
    SetKfactor(2 + static_cast<int32_t>(choices.Below(4)));
    const Picture picture = PictureOf(choices);
    if (picture.bits != 1 || OverflowsPeer(picture))
        return;
    const Bytes dib = DibOf(picture);
    const Block block(dib);
    const Bytes saved = TakeBlock(SaveTiffToMemory(nullptr, block.Get(), selector, fillOrder));
    if (saved.empty()) {
        Demand(TiffError() != 0);
        return;
    }
    Keep(saved);
    const OpenTiff tiff(saved);
    Bytes theirs;
    const bool isHuffman = selector == TIFF_SAVE_MODIFIED_HUFFMAN;
    Demand(DecodeByPeer(isHuffman ? WithLongerStrip(saved) : saved, 0, theirs));
    DemandRows(tiff.handle, 0, theirs);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const Run run(LARGEST_BLOCK);
    Choices choices{{data, size}};
    switch (choices.Below(3)) {
    case 0:
        CompareBytes(choices);
        break;
    case 1:
        ReadTheirs(choices);
        break;
    default:
        ShowOurs(choices);
    }
    return 0;
}
