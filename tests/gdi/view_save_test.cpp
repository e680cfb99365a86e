// Where the viewer's pages go: nothing that exists is lost for them.
#include "gdi/desktop.h"
#include "tools/view_save.h"

#include <gtest/gtest.h>

using namespace tiffview;

namespace {

const std::string SAMPLES = TIFF_SOURCE_DIR "/samples/";

uint32_t PagesOf(const std::string& path)
{
    return GetNumberOfImagesInTiffFile(path.c_str());
}

} // namespace

TEST(ViewSave, ReplacesExtendsOrRefuses)
{
    Folder folder;
    const std::string source = folder.Copy(SAMPLES + "fax-g4.tif", "source.tif");
    const std::string target = folder.Copy(SAMPLES + "fax-g3-1d.tif", "target.tif");
    const std::string part = folder.Copy(SAMPLES + "drawing.cal", "target.tif.part");
    const std::string picture = folder.Copy(SAMPLES + "drawing.cal", "picture.bmp");
    const Bytes partBefore = ReadFileBytes(part.c_str()), sourceBefore = ReadFileBytes(source.c_str());
    Document page = OpenDocument(source);
    GoToPage(page, 1);

    EXPECT_EQ(SavePage(page, target, Existing::Extended), "");
    EXPECT_EQ(PagesOf(target), 3u);
    EXPECT_EQ(SavePage(page, target, Existing::Replaced), "");
    EXPECT_EQ(PagesOf(target), 1u);
    EXPECT_EQ(ReadFileBytes(part.c_str()), partBefore);
    EXPECT_NE(SavePage(page, source, Existing::Replaced), "");
    EXPECT_EQ(ReadFileBytes(source.c_str()), sourceBefore);
    EXPECT_EQ(SavePage(page, picture, Existing::Replaced), "");
    EXPECT_EQ(ReadFileBytes(picture.c_str())[0], 'B');

    const Document damaged = OpenDocument(SAMPLES + "truncated-g4.tif");
    EXPECT_EQ(SavePage(damaged, picture, Existing::Replaced).substr(0, 11), "Only a part");
    // A page that cannot be decoded leaves the old file.
    Document lost = page;
    lost.page = 99;
    const Bytes pictureBefore = ReadFileBytes(picture.c_str());
    EXPECT_NE(SavePage(lost, picture, Existing::Replaced), "");
    EXPECT_EQ(ReadFileBytes(picture.c_str()), pictureBefore);
    EXPECT_NE(SavePage(lost, target, Existing::Replaced), "");
    EXPECT_EQ(PagesOf(target), 1u);
}
