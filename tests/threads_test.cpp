// Eight threads at work, each on files of its own, while others come and go by the thousand. Natively under
// ThreadSanitizer, under Windows in the library itself.
#include "support/numbered_pages.h"
#include "support/pictures.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <thread>

#ifndef _WIN32
#include "core/thread_state.h"
#endif

namespace {

constexpr uint32_t WORKERS = 8, ROUNDS = 12, VISITORS = 2000;

// What a thread leaves when it ends. The library under Windows is told by the system.
void LeaveThread()
{
#ifndef _WIN32
    tiff::FreeThreadState();
#endif
}

Bytes Pattern(uint32_t worker, uint32_t round)
{
    Bytes pixels(40 * 30);
    for (size_t at = 0; at < pixels.size(); ++at)
        pixels[at] = static_cast<uint8_t>(at * (2 * worker + 1) + round * 7);
    return pixels;
}

Bytes DibOf(uint32_t bits, const Bytes& pixels)
{
    const uint32_t width = 320 / bits;
    std::vector<uint32_t> colours;
    for (uint32_t colour = 0; bits <= 8 && colour < 1u << bits; ++colour)
        colours.push_back(colour * 0x10101 * (255 / ((1u << bits) - 1)));
    return PackedDib({.width = width,
                      .height = 30,
                      .bits = static_cast<uint16_t>(bits),
                      .colours = colours,
                      .pixels = pixels});
}

// True when all that was saved came back.
bool SaveLoadEdit(uint32_t worker)
{
    static constexpr uint32_t selectors[] = {TIFF_SAVE_STORED,
                                             TIFF_SAVE_PACKBITS,
                                             TIFF_SAVE_LZW,
                                             TIFF_SAVE_GROUP4,
                                             TIFF_SAVE_GROUP3_TWO_DIMENSIONAL,
                                             TIFF_SAVE_MODIFIED_HUFFMAN};
    const NewFile file, other;
    bool good = true;
    for (uint32_t round = 0; round < ROUNDS; ++round) {
        const uint32_t selector = selectors[(round + worker) % std::size(selectors)];
        const uint32_t bits = selector <= TIFF_SAVE_LZW && round % 2 ? 8 : 1;
        const Bytes pixels = Pattern(worker, round);
        const Block dib(DibOf(bits, pixels));
        SetTiffJpegQuality(worker + 1);
        SetTiffError(worker);
        good &= TiffError() == worker && GetTiffJpegQuality() == worker + 1;
        good &= SaveDIBInTiffFile(file.Path(), dib.Get(), selector, 0) == 1;
        HGLOBAL loaded = LoadTiffIntoDIB(file.Path(), round, 0);
        const Bytes content = loaded ? Content(loaded, GlobalSize(loaded)) : Bytes();
        good &=
            content.size() >= pixels.size() && std::equal(pixels.rbegin(), pixels.rend(), content.rbegin());
        if (loaded)
            GlobalFree(loaded);
        HGLOBAL saved = SaveTiffToMemory(nullptr, dib.Get(), TIFF_SAVE_JPEG, 1);
        good &= saved != nullptr;
        GlobalFree(saved);
    }
    good &= CopyTiffImageInFile(file.Path(), 0, other.Path(), T_CREAT) == 1;
    good &= MergeTiffFiles(other.Path(), file.Path(), nullptr, 0) == 1;
    good &= DeleteTiffImage(other.Path(), 0, worker % 2 == 0) == 1 && ReorderTiffFile(other.Path()) == 1;
    good &= AddTiffTagToImage(other.Path(), 1, 270, 2, "worker", 7) == 1;
    return good && GetNumberOfImagesInTiffFile(other.Path()) == ROUNDS;
}

} // namespace

TEST(Threads, WorkOnTheirOwnFilesWhileOthersComeAndGo)
{
    std::array<bool, WORKERS> good{};
    std::vector<std::thread> workers;
    for (uint32_t worker = 0; worker < WORKERS; ++worker)
        workers.emplace_back([&, worker] {
            good[worker] = SaveLoadEdit(worker);
            LeaveThread();
        });
    std::atomic<uint32_t> strangers = 0;
    for (uint32_t visitor = 0; visitor < VISITORS; ++visitor)
        std::thread([&, visitor] {
            strangers += TiffError() != 0 || GetTiffJpegQuality() != 75;
            SetTiffError(visitor);
            strangers += TiffError() != visitor;
            LeaveThread();
        }).join();
    for (std::thread& worker : workers)
        worker.join();
    for (uint32_t worker = 0; worker < WORKERS; ++worker)
        EXPECT_TRUE(good[worker]) << worker;
    EXPECT_EQ(strangers, 0u);
}
