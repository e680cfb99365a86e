// Eight threads at work, each on files of its own, while others come and go by the thousand. Natively under
// ThreadSanitizer, under Windows in the library itself.
#include "support/numbered_pages.h"
#include "support/pictures.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstring>
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

// The pixels at the end of a DIB; a bilevel page comes with its colours the other way round.
bool HasPixels(HGLOBAL dib, const Bytes& pixels, bool reversed)
{
    const Bytes content = dib ? Content(dib, GlobalSize(dib)) : Bytes();
    return content.size() >= pixels.size() &&
           std::equal(pixels.rbegin(), pixels.rend(), content.rbegin(), [=](uint8_t one, uint8_t other) {
               return one == (reversed ? static_cast<uint8_t>(~other) : other);
           });
}

// A bitmap of a page, and a page of text.
bool Draw([[maybe_unused]] const char* path)
{
#ifdef _WIN32
    const TempFile text(Bytes(500, 'x'));
    TiffTextPageSettings settings = {
        .pageWidth = 50, .pageHeight = 50, .horizontalDpi = 204, .verticalDpi = 98};
    settings.fontSize = 12;
    std::strcpy(settings.path, text.Path());
    HANDLE page = nullptr;
    const bool drawn = CreateDIBFaxPageFromASCII(&settings, 1, &page, nullptr) == 1;
    GlobalFree(page);
    HBITMAP bitmap = LoadTiffIntoBitmap(path, 0, 0);
    return DeleteObject(bitmap) && drawn;
#else
    return true;
#endif
}

// The first step that failed, and the error that it left.
struct Worker {
    int line = 0;
    uint32_t error = 0;

    void Expect(bool holds, int from = __builtin_LINE())
    {
        if (!holds && line == 0) {
            error = TiffError();
            line = from;
        }
    }
};

// All that was saved comes back.
void SaveLoadEdit(uint32_t number, Worker& worker)
{
    static constexpr uint32_t selectors[] = {TIFF_SAVE_STORED,
                                             TIFF_SAVE_PACKBITS,
                                             TIFF_SAVE_LZW,
                                             TIFF_SAVE_GROUP4,
                                             TIFF_SAVE_GROUP3_TWO_DIMENSIONAL,
                                             TIFF_SAVE_MODIFIED_HUFFMAN};
    const TempFile file({}), other({}); // a name that is only free could be taken by another thread
    for (uint32_t round = 0; round < ROUNDS; ++round) {
        const uint32_t selector = selectors[(round + number) % std::size(selectors)];
        const uint32_t bits = selector <= TIFF_SAVE_LZW && round % 2 ? 8 : 1;
        const Bytes pixels = Pattern(number, round);
        const Block dib(DibOf(bits, pixels));
        SetTiffJpegQuality(number + 1);
        SetTiffError(number);
        worker.Expect(TiffError() == number && GetTiffJpegQuality() == number + 1);
        worker.Expect(SaveDIBInTiffFile(file.Path(), dib.Get(), selector, 0) == 1);
        HGLOBAL loaded = LoadTiffIntoDIB(file.Path(), round, 0);
        worker.Expect(HasPixels(loaded, pixels, bits == 1));
        if (loaded)
            GlobalFree(loaded);
        HGLOBAL saved = SaveTiffToMemory(nullptr, dib.Get(), TIFF_SAVE_JPEG, 1);
        worker.Expect(saved != nullptr);
        GlobalFree(saved);
        worker.Expect(Draw(file.Path()));
    }
    worker.Expect(CopyTiffImageInFile(file.Path(), 0, other.Path(), T_CREAT) == 1);
    worker.Expect(MergeTiffFiles(other.Path(), file.Path(), nullptr, 0) == 1);
    worker.Expect(DeleteTiffImage(other.Path(), 0, number % 2 == 0) == 1 &&
                  ReorderTiffFile(other.Path()) == 1);
    worker.Expect(AddTiffTagToImage(other.Path(), 1, 270, 2, "worker", 7) == 1);
    worker.Expect(GetNumberOfImagesInTiffFile(other.Path()) == ROUNDS);
}

} // namespace

TEST(Threads, WorkOnTheirOwnFilesWhileOthersComeAndGo)
{
    std::array<Worker, WORKERS> work;
    std::vector<std::thread> workers;
    for (uint32_t worker = 0; worker < WORKERS; ++worker)
        workers.emplace_back([&, worker] {
            SaveLoadEdit(worker, work[worker]);
            LeaveThread();
        });
    std::atomic<uint32_t> strangers = 0;
    for (uint32_t visitor = 0; visitor < VISITORS; ++visitor)
        std::thread([&, visitor] {
            strangers += TiffError() != 0 || GetTiffJpegQuality() != 75;
            SetTiffError(visitor % 20);
            strangers += TiffError() != visitor % 20;
            LeaveThread();
        }).join();
    for (std::thread& worker : workers)
        worker.join();
    for (uint32_t worker = 0; worker < WORKERS; ++worker)
        EXPECT_EQ(work[worker].line, 0) << "worker " << worker << ", error " << work[worker].error;
    EXPECT_EQ(strangers, 0u);
}
