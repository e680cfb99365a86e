// Image segments on a full disk, and in files made to cost time.
#include "standin/standin.h"
#include "support/open_file.h"
#include "tiff/ioca.h"

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
