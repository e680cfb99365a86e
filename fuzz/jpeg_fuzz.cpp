// Decodes any bytes as a page's JPEG streams: the first four choose size, samples, photometric value and
// where the first stream ends; the tables come from the page, the stream or the standard.
#include "scaffold.h"

static constexpr uint64_t LARGEST_PICTURE = 16 << 20;

static void Put(std::vector<uint8_t>& file, uint32_t number, uint32_t bytes)
{
    for (; bytes > 0; --bytes, number >>= 8)
        file.push_back(static_cast<uint8_t>(number));
}

static void PutTag(std::vector<uint8_t>& file, uint32_t tag, uint32_t type, uint32_t count, uint32_t value)
{
    Put(file, tag, 2);
    Put(file, type, 2);
    Put(file, count, 4);
    Put(file, value, 4);
}

// The streams follow the header; the page's tables are the first bytes of the first stream once more.
static std::vector<uint8_t> PageOf(const uint8_t* head, const uint8_t* data, size_t size)
{
    static constexpr uint32_t samples[] = {1, 3, 4, 2}, photometrics[] = {1, 6, 2, 5};
    const uint32_t width = 1u + head[0], rows = 1u + head[1], count = samples[head[2] & 3];
    const auto bytes = static_cast<uint32_t>(size), first = bytes * (head[3] & 15u) / 15,
               tables = bytes * (head[3] >> 4) / 30;
    std::vector<uint8_t> file = {'I', 'I', 42, 0, 0, 0, 0, 0};
    file.insert(file.end(), data, data + size);
    const auto lists = static_cast<uint32_t>(file.size());
    for (const uint32_t number : {8u, 8 + first, first, bytes - first})
        Put(file, number, 4);
    for (int sample = 0; sample < 4; ++sample)
        Put(file, 8, 2);
    const auto directory = static_cast<uint32_t>(file.size());
    std::memcpy(&file[4], &directory, 4);
    Put(file, tables ? 11 : 10, 2);
    PutTag(file, 256, 4, 1, width);
    PutTag(file, 257, 4, 1, rows);
    PutTag(file, 258, 3, count, count == 1 ? 8 : count == 2 ? 0x80008 : lists + 16);
    PutTag(file, 259, 3, 1, 7);
    PutTag(file, 262, 3, 1, photometrics[head[2] >> 2 & 3]);
    PutTag(file, 273, 4, 2, lists);
    PutTag(file, 277, 3, 1, count);
    PutTag(file, 278, 4, 1, (rows + 1) / 2);
    PutTag(file, 279, 4, 2, lists + 8);
    PutTag(file, 284, 3, 1, 1);
    if (tables)
        PutTag(file, 347, 7, std::max(tables, 5u), 8);
    Put(file, 0, 4);
    return file;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static constexpr size_t HEADER = 4, MOST_BYTES = 1 << 20;
    if (size < HEADER || size > MOST_BYTES)
        return 0;
    const fuzz::Run run(LARGEST_PICTURE);
    const std::vector<uint8_t> page = PageOf(data, data + HEADER, size - HEADER);
    const fuzz::OpenTiff tiff(page);
    HGLOBAL dib = tiff.handle ? LoadTiffChainIntoDIB(tiff.handle, 0) : nullptr;
    if (!dib)
        return 0;
    GlobalFree(SaveTiffToMemory(nullptr, dib, TIFF_SAVE_JPEG, 1));
    GlobalFree(dib);
    return 0;
}
