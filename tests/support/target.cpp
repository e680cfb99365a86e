#include "support/target.h"

#include <gtest/gtest.h>

Target::Target(bool onDisk, const Bytes& content, uint32_t mode)
    : onDisk(onDisk), disk(content),
      file(onDisk ? OpenTiffFile(disk.Path(), mode)
                  : OpenTiffInMemory(content.empty() ? nullptr : NewBlock(content),
                                     static_cast<uint32_t>(content.size()), content.empty() ? T_CREAT : mode))
{
}

Target::~Target()
{
    GlobalFree(GetMemoryTiffHandle(file));
    CloseTiffFile(file);
}

Bytes Target::Written() const
{
    HGLOBAL memory = GetMemoryTiffHandle(file);
    return onDisk ? ReadFileBytes(disk.Path()) : Content(memory, GlobalSize(memory));
}

uint32_t DefinePage(HGLOBAL file, std::initializer_list<std::pair<uint32_t, uint32_t>> tags)
{
    const auto page = static_cast<uint32_t>(DefineTiffImage(file));
    for (const auto& [tag, value] : tags)
        EXPECT_EQ(DefineTiffImageInfo(file, page, tag, 4, value), 1) << tag;
    return page;
}

uint32_t LoadPages(HGLOBAL file)
{
    const uint32_t count = NumberOfTiffImages(file, TIFF_ALL_PAGES);
    for (uint32_t page = 0; page < count; ++page)
        GetTiffImage(file, page);
    return count;
}

uint32_t TagNumber(HGLOBAL file, uint32_t page, uint32_t tag)
{
    uint32_t value[2] = {0xFFFFFFFF, 0};
    GetTiffImageInfo(file, page, tag, value);
    return value[0];
}

Bytes TagValues(HGLOBAL file, uint32_t page, uint32_t tag, uint32_t* type, uint32_t* count)
{
    HGLOBAL block = nullptr;
    if (!GetTiffImageInfoBuffer(file, page, tag, &block, type, count))
        return {};
    const Bytes values = Content(block, GlobalSize(block));
    GlobalFree(block);
    return values;
}
