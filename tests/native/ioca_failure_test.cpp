// Image segments when the system fails, and in files made to cost time.
#include "standin/standin.h"
#include "support/open_file.h"
#include "tiff/ioca.h"

namespace {

const Bytes segment = Hex("7000 9101FF 940900 07D0 07D0 06C0 0898 95020101 960101 970100 FE921234");

} // namespace

TEST(IocaFailure, AFailedCallGivesZeroAndLeavesTheFileOpen)
{
    standin::LeakCheck leaks;
    standin::FailEach(standin::AnyCall, [](unsigned) {
        OpenedFile file(Bytes(5000) + Hex("D3EEFB") + segment);
        if (file.handle == INVALID_HANDLE_VALUE)
            return;
        mSeek(file.Stream(), 4999, 0);
        TiffIocaDescription read{};
        const bool done = ReadMODCAHeader(file.handle, &read);
        standin::StopFailing();
        if (done) {
            EXPECT_EQ(uint32_t{read.dataOffset}, 5029u);
            EXPECT_EQ(mTell(file.Stream()), 5033u);
        } else {
            EXPECT_TRUE(standin::InjectionFired());
        }
    });
    standin::FailEach(standin::Write | standin::Seek, [](unsigned) {
        OpenedFile file(Bytes(30));
        const TiffIocaDescription page{};
        SetTiffError(0);
        mSeek(file.Stream(), 30, 0);
        const bool fired = standin::InjectionFired();
        const bool done = WriteMODCAHeader(file.handle, &page) && WriteMODCATail(file.handle);
        EXPECT_EQ(done, fired || !standin::InjectionFired());
        EXPECT_EQ(TiffError(), done ? 0u : 6u);
    });
}

TEST(IocaFailure, AFullDiskEndsTheWriting)
{
    standin::LeakCheck leaks;
    const TiffIocaDescription page{};
    for (uint64_t room = 0; room <= 26; ++room) {
        OpenedFile file({});
        standin::LimitDisk(room);
        EXPECT_EQ(WriteIOCAHeader(file.handle, &page), room == 26);
        standin::StopFailing();
        EXPECT_EQ(file.Content().size(), room);
    }
}

TEST(IocaFailure, FilesWithoutASegmentAreReadOnceInBlocks)
{
    standin::LeakCheck leaks;
    for (const uint8_t byte : {uint8_t{0}, uint8_t{0xD3}, uint8_t{0x71}}) {
        OpenedFile file(Bytes(1 << 20, byte));
        standin::ResetCalls();
        TiffIocaDescription read{};
        EXPECT_EQ(ReadMODCAHeader(file.handle, &read), 0);
        EXPECT_LE(standin::CallsMade(standin::Read), 1u);
        mSeek(file.Stream(), 0, 0);
        standin::ResetCalls();
        EXPECT_EQ(ReadIOCAHeader(file.handle, &read), 0);
        EXPECT_LE(standin::CallsMade(standin::Read), (1u << 20) / 4096 + 2);
        file.closed = true;
    }
}
