#include "sweeps/scene.h"

#include "support/target.h"
#include "support/tiff_dump.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <set>

namespace sweeps {

namespace {

const std::string& Folder()
{
    static const std::string folder = [] {
        const std::string made = TempFolder() + "/sweep";
        std::filesystem::create_directories(made);
        return made;
    }();
    return folder;
}

Bytes NotedPages()
{
    const std::string notes = "~,1,F,1,1,38,18,9,old~,1,T,3,3,38,18,12,too";
    return TiffBuilder()
        .Add(Page(0))
        .Add(TiffPage::Picture(40, 20, 1, 1).Strips({Bytes(100)}).Ascii(316, notes + '\0'))
        .Build();
}

Bytes Text()
{
    const std::string text = "A line of text\r\nand another\ttab\r\n" + std::string(600, 'x');
    return Bytes(text.begin(), text.end());
}

Bytes Segment()
{
    return Hex("D3EEFB 7000 9101FF 940900 07D0 07D0 06C0 0898 95020101 960101 970100 FE920002 1234 93007100");
}

// A page of each compression, made by the library.
Bytes Coded()
{
    Bytes pixels;
    for (uint32_t at = 0; at < 24 * 20; ++at)
        pixels.push_back(static_cast<uint8_t>(at * 37));
    const Block bilevel(PackedDib({24, 6, 1, {0xFFFFFF, 0}, Part(pixels, 0, 24)})),
        colour(PackedDib({8, 20, 24, {}, pixels}));
    HGLOBAL memory = nullptr;
    for (uint32_t selector = 201; selector <= 209; ++selector)
        memory = SaveTiffToMemory(memory, selector < 205 || selector == 209 ? colour.Get() : bilevel.Get(),
                                  selector, 1);
    Bytes file = Content(memory, GlobalSize(memory));
    GlobalFree(memory);
    Forget(memory);
    return file;
}

Bytes Palette()
{
    return OnePage(TiffPage::Picture(4, 2, 4, 1, 3)
                       .Short(320, std::vector<uint32_t>(48, 0x8000))
                       .Strips({Hex("1234 5678")}));
}

// One tile for the JPEG library's substitute.
Bytes OldJpeg()
{
    return OnePage(TiffPage::Picture(8, 2, 8, 6, 6)
                       .Short(277, {3})
                       .Short(512, {1})
                       .Short(322, {16})
                       .Short(323, {16})
                       .Long(324, {1111})
                       .Long(325, {22})
                       .Long(519, {301, 302, 303})
                       .Long(520, {401, 402, 403})
                       .Long(521, {501, 502, 503})
                       .Short(515, {7})
                       .Short(530, {1, 1}));
}

// A whole JPEG stream that ends at the next page.
Bytes OpenEnded()
{
    return TiffBuilder()
        .Add(TiffPage::Picture(8, 8, 8, 6, 6).Data(513, 0, {Hex("FFD8 010203 FFD9")}))
        .Add(Page(1))
        .Build();
}

Bytes Nested()
{
    return TiffBuilder()
        .Add(Page(0)
                 .Entry(32768, 1, 6, {1, 2, 3, 4, 5, 6})
                 .Directories(330, {Page(7)})
                 .Directories(34665, {TiffPage().Short(40960, {1}).Ascii(37510, "comment")}))
        .Add(Page(1))
        .Build();
}

// From the Motorola side, and too far apart to be read at once.
Bytes Far()
{
    return TiffBuilder(TIFF_MOTOROLA)
        .Add(TiffPage::Picture(8, 1, 1, 1).Strips({Hex("01")}))
        .Add(TiffPage::Picture(8, 1, 1, 1).Strips({Hex("02") + Bytes(40000)}))
        .Build();
}

Bytes Cals()
{
    const std::string path = Folder() + "/made.cal";
    const Block dib(PackedDib({8, 2, 1, {0xFFFFFF, 0}, Hex("18000000 18000000")}));
    SaveDIBInCALSFormat(path.c_str(), dib.Get(), nullptr, nullptr, 0);
    Bytes file = ReadFileBytes(path);
    std::filesystem::remove(path);
    return file;
}

const Bytes& Fixture(const std::string& name)
{
    static const std::map<std::string, Bytes (*)()> makers = {
        {"pages.tif", [] { return Pages(4); }},
        {"two.tif", [] { return Pages(2); }},
        {"one.tif", [] { return Pages(1); }},
        {"empty.tif", [] { return Bytes(); }},
        {"raw.g3", [] { return Hex("FFFEFD"); }},
        {"0002.tif", [] { return Hex("77"); }},
        {"notes.tif", NotedPages},
        {"many.tif", [] { return Pages(20); }},
        {"six.tif", [] { return Pages(6); }},
        {"nested.tif", Nested},
        {"far.tif", Far},
        {"text.txt", Text},
        {"coded.tif", Coded},
        {"palette.tif", Palette},
        {"oldjpeg.tif", OldJpeg},
        {"stream.tif", OpenEnded},
        {"segment.ioca", Segment},
        {"page.cal", Cals},
    };
    static std::map<std::string, Bytes> made;
    if (!made.contains(name))
        made[name] = makers.at(name)();
    return made[name];
}

void WriteFileBytes(const std::string& path, const Bytes& bytes)
{
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

bool IsTemporary(const std::string& name)
{
    return name.starts_with("TMP") || name.starts_with("tmp");
}

template <class Use>
void ForEachFile(Use use)
{
    for (const std::string& folder : {Folder(), TempFolder()})
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            if (const std::string name = entry.path().filename().string();
                entry.is_regular_file() && (folder == Folder() || IsTemporary(name)))
                use(entry.path(), name);
}

void DeleteFiles()
{
    std::vector<std::filesystem::path> found;
    ForEachFile([&](const std::filesystem::path& path, const std::string&) { found.push_back(path); });
    for (const auto& path : found)
        std::filesystem::remove(path);
}

} // namespace

Scene::Scene(const std::vector<const char*>& names)
{
    DeleteFiles();
    for (const char* name : names)
        WriteFileBytes(At(name), Fixture(name));
    SetTiffError(0);
}

Scene::~Scene()
{
    for (HGLOBAL file : opened)
        CloseTiffFile(file);
    for (HANDLE stream : streams)
        CloseHandle(stream);
    for (HGLOBAL block : blocks) {
        GlobalFree(block);
        Forget(block);
    }
    DeleteFiles();
}

const char* Scene::At(const std::string& name)
{
    return paths.try_emplace(name, Folder() + '/' + name).first->second.c_str();
}

HGLOBAL Scene::OnDisk(const char* name, uint32_t mode)
{
    opened.push_back(OpenTiffFile(At(name), mode));
    if (mode != T_CREAT)
        LoadPages(opened.back());
    return opened.back();
}

HGLOBAL Scene::InMemory(const char* name, uint32_t mode)
{
    const Bytes& bytes = Fixture(name);
    blocks.push_back(NewBlock(bytes));
    opened.push_back(OpenTiffInMemory(blocks.back(), static_cast<uint32_t>(bytes.size()), mode));
    LoadPages(opened.back());
    return opened.back();
}

HANDLE Scene::Stream(const char* name)
{
    streams.push_back(CreateFileA(At(name), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    return streams.back();
}

HGLOBAL Scene::Dib(const DibPicture& picture)
{
    blocks.push_back(NewBlock(PackedDib(picture)));
    return blocks.back();
}

void Scene::Arm()
{
    before = Snapshot();
    SetTiffError(0);
    FailNth(n, kinds, laterKinds, torn);
}

static std::string TextOf(const Bytes& bytes)
{
    return {bytes.begin(), bytes.end()};
}

// Temporary files go by their content, as their names are new each time. Room at the end of memory is none of
// the file.
Files Scene::Snapshot() const
{
    Files files;
    std::multiset<std::string> temporary;
    ForEachFile([&](const std::filesystem::path& path, const std::string& name) {
        if (IsTemporary(name))
            temporary.insert(TextOf(ReadFileBytes(path.string())));
        else
            files[name] = ReadFileBytes(path.string());
    });
    for (const std::string& content : temporary)
        files["TMP" + std::to_string(files.size())] = Bytes(content.begin(), content.end());
    for (size_t index = 0; index < opened.size(); ++index)
        if (HGLOBAL memory = GetMemoryTiffHandle(opened[index])) {
            Bytes& bytes = files["memory " + std::to_string(index)] = Content(memory, GlobalSize(memory));
            while (!bytes.empty() && bytes.back() == 0)
                bytes.pop_back();
        }
    return files;
}

Outcome Result(bool done, const Bytes& value)
{
    StopFailing();
    return {done, value, TiffError()};
}

Outcome Answer(int64_t result, int64_t failure)
{
    Bytes value;
    for (int byte = 0; byte < 8; ++byte)
        value.push_back(static_cast<uint8_t>(result >> byte * 8));
    return Result(result != failure, value);
}

Outcome TakeBlock(HGLOBAL block)
{
    StopFailing();
    const Bytes value = block ? Content(block, GlobalSize(block)) : Bytes();
    GlobalFree(block);
    Forget(block);
    return Result(block != nullptr, value);
}

Outcome TakeFile(HGLOBAL file)
{
    constexpr uint32_t INVALID_HANDLE = 34;
    const uint32_t pages = NumberOfTiffImages(file, TIFF_ALL_PAGES);
    const Outcome outcome = Answer(file && TiffError() != INVALID_HANDLE ? pages + 1 : 0);
    CloseTiffFile(file);
    return outcome;
}

Outcome Rows(int32_t result, const RowCollector& rows)
{
    return Result(result != 0, rows.decoded.Joined());
}

} // namespace sweeps
