// Annotation bytes in a file's first page, and what the annotation library is asked.
#include "gdi/desktop.h"
#include "siblings/annotations.h"
#include "support/numbered_pages.h"
#include "support/target.h"

#include <fstream>
#include <functional>
#include <gtest/gtest.h>

namespace {

constexpr uint32_t OBJECT = 0x8765, CREATED = 0x4321;

// The test's annotation library, held for a scope, with bytes to save.
struct Library {
    const SearchedFolder searched{SiblingsFolder()};
    const HeldLibrary module{SiblingsFolder() + "\\kvanno.dll"};
    Bytes bytes;

    explicit Library(const Bytes& toSave = {}, int32_t saved = 1)
    {
        Answer(toSave, saved);
    }
    void Answer(const Bytes& toSave, int32_t saved = 1)
    {
        bytes = toSave;
        const AnnotationAnswers answers = {CREATED, bytes.data(), static_cast<uint32_t>(bytes.size()), saved};
        module.Find<decltype(AnswerAnnotations)>("AnswerAnnotations")(&answers);
    }
    const AnnotationCalls& Calls() const
    {
        return *module.Find<decltype(LastAnnotationCalls)>("LastAnnotationCalls")();
    }
};

// The tag of a file's first page; nothing else may have it.
Bytes Stored(const char* path, uint32_t tag = 32768)
{
    HGLOBAL file = OpenTiffFile(path, T_READ);
    EXPECT_EQ(LoadPages(file), 2u);
    EXPECT_EQ(TagValues(file, 1, tag), Bytes());
    uint32_t type = 1;
    const Bytes values = TagValues(file, 0, tag, &type);
    EXPECT_EQ(type, 1u);
    CloseTiffFile(file);
    return values;
}

} // namespace

TEST(Annotations, AreSavedAndLoaded)
{
    Library library(Hex("01020304 05"));
    const TempFile file(Pages(2));
    EXPECT_EQ(SaveAnnotationIntoTiff(file.Path(), OBJECT, 0), 1);
    EXPECT_EQ(library.Calls().annotation, OBJECT);
    EXPECT_EQ(Stored(file.Path()), Hex("0102030405"));
    EXPECT_EQ(LoadAnnotationFromTiff(file.Path(), 0), CREATED);
    ASSERT_EQ(library.Calls().loadedCount, 5u);
    EXPECT_EQ(memcmp(library.Calls().loaded, library.bytes.data(), 5), 0);
    EXPECT_EQ(LoadAnnotationFromTiff(file.Path(), 40000), 0u);

    EXPECT_EQ(SaveAnnotationIntoTiffExt(file.Path(), OBJECT, 40000, 1, -1, 1), 1);
    EXPECT_EQ(library.Calls().annotationPage, -1);
    EXPECT_EQ(library.Calls().filePage, 1);
    EXPECT_EQ(Stored(file.Path(), 40000), Hex("0102030405"));
    library.Answer({});
    EXPECT_EQ(SaveAnnotationIntoTiff(file.Path(), OBJECT, 40000), 0);
    EXPECT_EQ(Stored(file.Path(), 40000), Bytes());
    EXPECT_EQ(Stored(file.Path()), Hex("0102030405"));
    EXPECT_EQ(LoadAnnotationFromTiff(file.Path(), 256), 0u); // not of type BYTE
    EXPECT_EQ(library.Calls().created, 0u);
}

TEST(Annotations, AreReplacedAndAppended)
{
    Library library(Hex("0102"));
    const TempFile file(Pages(2));
    const Bytes large(5'000'000, 7);
    const auto save = [&](int32_t mode, uint32_t tag = 0) {
        return SaveAnnotationIntoTiffExt(file.Path(), OBJECT, tag, mode, 0, 0);
    };
    EXPECT_EQ(save(2), 1);
    EXPECT_EQ(save(2), 1);
    EXPECT_EQ(Stored(file.Path()), Hex("01020102"));
    library.Answer(large);
    EXPECT_EQ(save(2), 1);
    EXPECT_EQ(Stored(file.Path()), Hex("01020102") + large);
    library.Answer(Hex("09"));
    EXPECT_EQ(save(1), 1);
    EXPECT_EQ(Part(Stored(file.Path()), 0, 1), Hex("09"));
    library.Answer({});
    EXPECT_EQ(save(2), 1);
    EXPECT_EQ(Part(Stored(file.Path()), 0, 1), Hex("09"));
    EXPECT_EQ(save(1), 1);
    EXPECT_EQ(Stored(file.Path()), Bytes());
    // Values of another type are not kept.
    library.Answer(Hex("0A0B0C0D0E"));
    ASSERT_EQ(AddTiffTagToImage(file.Path(), 0, 40000, 2, "ascii", 6), 1);
    EXPECT_EQ(save(2, 40000), 1);
    EXPECT_EQ(Stored(file.Path(), 40000), Hex("0A0B0C0D0E"));
}

TEST(Annotations, FailuresLeaveTheFile)
{
    const Bytes content = Pages(2);
    const TempFile file(content), text(Hex("414243"));
    const auto all = [&](const char* path) {
        return LoadAnnotationFromTiff(path, 0) +
               static_cast<uint32_t>(SaveAnnotationIntoTiff(path, OBJECT, 0)) +
               static_cast<uint32_t>(SaveAnnotationIntoTiffExt(path, OBJECT, 0, 1, 0, 0)) +
               static_cast<uint32_t>(SaveAnnotationIntoTiffExt(path, OBJECT, 0, 2, 0, 0));
    };
    EXPECT_EQ(all(file.Path()), 0u) << "without the library";
    {
        const Library library(Hex("0102"));
        const struct {
            TiffAnnotation annotation;
            int32_t mode, annotationPage, filePage;
        } rows[] = {{0, 1, 0, 0},       {OBJECT, 0, 0, 0},  {OBJECT, 3, 0, 0},
                    {OBJECT, 1, -2, 0}, {OBJECT, 1, 0, -1}, {OBJECT, 2, 0, 2}};
        for (const auto& [annotation, mode, annotationPage, filePage] : rows)
            EXPECT_EQ(SaveAnnotationIntoTiffExt(file.Path(), annotation, 0, mode, annotationPage, filePage),
                      0);
        EXPECT_EQ(SaveAnnotationIntoTiff(file.Path(), 0, 0), 0);
        EXPECT_EQ(library.Calls().counted, 0u);
        EXPECT_EQ(all("no such file.tif") + all(text.Path()) + all(nullptr), 0u);
        EXPECT_EQ(library.Calls().created, 0u);
    }
    {
        const Library library(Hex("0102"), 0);
        EXPECT_EQ(all(file.Path()), 0u) << "that does not save";
        EXPECT_EQ(library.Calls().saved, 3u);
    }
    EXPECT_EQ(GetModuleHandleA("kvanno.dll"), nullptr);
    EXPECT_EQ(ReadFileBytes(file.Path()), content);
}

// Each function in turn gets another name in a copy of the library.
TEST(Annotations, NeedAllFunctionsOfTheirLibrary)
{
    const Bytes content = Pages(2);
    const TempFile file(content);
    const auto load = [&] { return LoadAnnotationFromTiff(file.Path(), 0) != 0; };
    const auto save = [&] { return SaveAnnotationIntoTiff(file.Path(), OBJECT, 0) != 0; };
    const auto saveExt = [&] { return SaveAnnotationIntoTiffExt(file.Path(), OBJECT, 0, 1, 0, 0) != 0; };
    const struct {
        std::string name;
        std::function<bool()> call;
    } rows[] = {{"AnnoCreateOnLoad", load},
                {"AnnoGetSaveCount", save},
                {"AnnoGetSaveData", save},
                {"AnnoGetSaveCountOnPage", saveExt},
                {"AnnoGetSaveDataExt", saveExt}};
    for (const auto& [name, call] : rows) {
        SCOPED_TRACE(name);
        Folder folder;
        const std::string copy = folder.Copy(SiblingsFolder() + "\\kvanno.dll", "kvanno.dll");
        Bytes bytes = ReadFileBytes(copy);
        const std::string whole = name + '\0';
        const auto found = std::search(bytes.begin(), bytes.end(), whole.begin(), whole.end());
        ASSERT_NE(found, bytes.end());
        found[static_cast<ptrdiff_t>(name.size()) - 1] = '_';
        std::ofstream(copy, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        const SearchedFolder searched(folder.Path());
        EXPECT_FALSE(call());
        EXPECT_EQ(GetModuleHandleA("kvanno.dll"), nullptr);
    }
    EXPECT_EQ(ReadFileBytes(file.Path()), content);
}
