// A program with guards, in a folder whose name no code page has. It ends with 0 when all is well.
#include "tiff/tiff.hpp"

namespace fs = std::filesystem;

static int Run(const fs::path& folder)
{
    const fs::path copy = folder / fs::u8path("\xCE\xB1.tif");
    fs::copy_file("fax-g4.tif", copy);
    const auto page = tiffdll::LoadPage(copy, 2);
    if (!page || page.error() || tiffdll::Lock<>(page.value())->biWidth != 1728)
        return 1;
    if (!tiffdll::SavePage(copy, page.value(), TIFF_SAVE_GROUP4) ||
        tiffdll::Call(DeleteTiffImage, copy, 9, 0))
        return 2;
    auto file = tiffdll::OpenFile(copy);
    if (!file || NumberOfTiffImages(file.value().get(), TIFF_ALL_PAGES) != 4)
        return 3;
    const tiffdll::File moved = std::move(file).value();
    if (file || !tiffdll::LoadPage(moved, 3) || !tiffdll::LoadBitmap(copy, 0))
        return 4;
    const auto missing = tiffdll::LoadPage(folder / "none.tif", 0);
    if (missing || missing.error().code() != TIFF_ERROR_INPUT_OUTPUT || missing.error().text()[0] != 'G')
        return 5;
    return GetTiffPathCodePage() == TIFF_PATHS_ANSI ? 0 : 6;
}

int main()
{
    const fs::path folder = fs::temp_directory_path() / fs::u8path("\xD0\x96-\xE5\xAD\x97");
    fs::remove_all(folder);
    fs::create_directory(folder);
    const int result = Run(folder);
    fs::remove_all(folder);
    return result;
}
