// Notes as records of a tag: what is read of any value, and what a change makes of it, byte for byte.
#include "support/numbered_pages.h"
#include "support/tiff_dump.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <deque>
#include <random>

static_assert(offsetof(TiffNote, textBytes) == 24 && offsetof(TiffNote, text) == 32 &&
              sizeof(TiffNote) == 40);

namespace {

constexpr uint16_t NOTES = 316, ASCII = 2, UNDEFINED = 7;

std::vector<uint32_t> Values(std::string_view text)
{
    std::vector<uint32_t> values;
    for (const char letter : text)
        values.push_back(static_cast<uint8_t>(letter));
    return values;
}

// Three pages; the second has this value.
Bytes FileWith(std::string_view value, uint16_t type = ASCII, uint16_t byteOrder = TIFF_INTEL)
{
    TiffPage page = Page(1);
    if (!value.empty())
        page.Entry(NOTES, type, static_cast<uint32_t>(value.size()), Values(value));
    return TiffBuilder(byteOrder).Add(Page(0)).Add(page).Add(Page(2)).Build();
}

struct Loaded {
    HGLOBAL file;
    explicit Loaded(const char* path) : file(OpenTiffFile(path, T_READ))
    {
        GetTiffImage(file, 1);
    }
    Loaded(const Loaded&) = delete;
    Loaded& operator=(const Loaded&) = delete;
    ~Loaded()
    {
        CloseTiffFile(file);
    }
};

// The tag's bytes, or "-" without it.
std::string ValueIn(const char* path)
{
    const Loaded loaded(path);
    HGLOBAL block = nullptr;
    uint32_t type = 0, count = 0;
    if (!GetTiffImageInfoBuffer(loaded.file, 1, NOTES, &block, &type, &count))
        return "-";
    const Bytes bytes = Content(block, count);
    GlobalFree(block);
    EXPECT_EQ(type, ASCII);
    return {bytes.begin(), bytes.end()};
}

std::string TextOf(HGLOBAL file, uint32_t index)
{
    TiffNote note{};
    if (!GetTiffNote(file, 1, index, &note, nullptr, 0))
        return "error " + std::to_string(TiffError());
    std::string text(size_t{note.textBytes} + 1, '?');
    GetTiffNote(file, 1, index, &note, text.data(), static_cast<uint32_t>(text.size()));
    EXPECT_EQ(note.text, text.data());
    EXPECT_EQ(text.back(), 0);
    text.pop_back();
    return text;
}

// "T 1 2 3 4 5 text|F 6 7 8 9 10 more"
std::string NotesIn(const char* path)
{
    const Loaded loaded(path);
    const int32_t count = GetTiffNoteCount(loaded.file, 1);
    EXPECT_EQ(TiffError(), 0u);
    std::string notes;
    for (uint32_t index = 0; index < static_cast<uint32_t>(count); ++index) {
        TiffNote note{};
        EXPECT_EQ(GetTiffNote(loaded.file, 1, index, &note, nullptr, 9), 1);
        EXPECT_EQ(note.text, nullptr);
        notes += index ? "|" : "";
        notes += static_cast<char>(note.kind);
        for (const int32_t number : {note.left, note.top, note.right, note.bottom, note.letterHeight})
            notes += ' ' + std::to_string(number);
        notes += ' ' + TextOf(loaded.file, index);
    }
    EXPECT_EQ(TextOf(loaded.file, static_cast<uint32_t>(count)), "error 3");
    EXPECT_EQ(TextOf(loaded.file, UINT32_MAX), "error 3");
    return notes;
}

// Its text stays for the program's life.
TiffNote Note(std::string_view text, uint32_t kind = 'T', int32_t letterHeight = 5)
{
    static std::deque<std::string> texts;
    texts.emplace_back(text);
    return {kind, 1, 2, 30, 40, letterHeight, static_cast<uint32_t>(text.size()), texts.back().data()};
}

const std::string HEAD = "~,1,T,1,2,30,40,5,", READ = "T 1 2 30 40 5 ";
using namespace std::string_literals;

} // namespace

TEST(PageNotes, AreReadFromAnyValue)
{
    static const struct {
        std::string value, notes;
    } rows[] = {
        {"", ""},
        {"\0"s, ""},
        {"machine 7", ""}, // another program's
        {"~~,1,T,1,2,3,4,5,x", ""},
        {HEAD + "hi", READ + "hi"}, // no zero at the end
        {HEAD + "hi\0~,1,T,1,2,3,4,5,behind"s, READ + "hi"},
        {"~,1,F,-1,-2147483648,2147483647,4,0,a,b" + HEAD, "F -1 -2147483648 2147483647 4 0 a,b|" + READ},
        {"before" + HEAD + "x", READ + "x"},
        {"~~" + HEAD + "x", READ + "x"},
        {HEAD + "a~~b~c~~~d~", READ + "a~b~c~~d~"},
        {HEAD + "a~~,1,T,1,2,3,4,5,~~" + HEAD + "b", READ + "a~,1,T,1,2,3,4,5,~|" + READ + "b"},
        {HEAD + "a~,2,T,1,2,3,4,5,", READ + "a~,2,T,1,2,3,4,5,"},
        {HEAD + "a~,1", READ + "a~,1"},
        {"~,1,\xE9,1,2,3,4,-5,\t\x01", "\xE9 1 2 3 4 -5 \t\x01"},
        // Damaged ones end the text before them.
        {HEAD + "a~,1," + HEAD + "b~,1,", READ + "a|" + READ + "b"},
        {HEAD + "a~,1,T,1,2,,4,5,no" + HEAD + "b", READ + "a|" + READ + "b"},
        {"~,1,T,1,2,3,4,5", ""},
        {"~,1,T,1,2,3,4,2147483648,no", ""},
        {"~,1,T,-2147483649,2,3,4,5,no", ""},
        {"~,1,T,1,2,3,4,5x,no", ""},
        {"~,1,,1,2,3,4,5,no~,1,TT,1,2,3,4,5,no~,1,~~,1,T,1,2,3,4,5,no", ""},
        {"~,1,T,1,2,3,4," + std::string(400, '9') + ",no" + HEAD + "b", READ + "b"},
        {"~,1,T,1,2,30,40," + std::string(400, '0') + "5,b", READ + "b"},
    };
    for (const auto& [value, notes] : rows) {
        SCOPED_TRACE(value);
        for (const uint16_t order : {uint16_t{TIFF_INTEL}, uint16_t{TIFF_MOTOROLA}}) {
            const TempFile file(FileWith(value, ASCII, order));
            EXPECT_EQ(NotesIn(file.Path()), notes);
            const TempFile other(FileWith(value, UNDEFINED, order));
            EXPECT_EQ(NotesIn(other.Path()), "");
        }
    }
}

TEST(PageNotes, AreCutToTheRoom)
{
    const TempFile file(FileWith(HEAD + "a~~b"));
    const Loaded loaded(file.Path());
    for (uint32_t room = 0; room < 6; ++room) {
        TiffNote note{};
        std::string text = "??????";
        EXPECT_EQ(GetTiffNote(loaded.file, 1, 0, &note, text.data(), room), 1);
        EXPECT_EQ(note.textBytes, 3u);
        const std::string kept = room ? std::string("a~b").substr(0, room - 1) + '\0' : "";
        EXPECT_EQ(text, kept + std::string(6 - kept.size(), '?'));
    }
}

TEST(PageNotes, AreChangedWithoutTouchingAnythingElse)
{
    enum Change { Add, Replace, Delete };
    static const struct {
        std::string before;
        Change change;
        uint32_t index;
        TiffNote note;
        uint32_t error; // 0 for none
        std::string after;
    } rows[] = {
        {"", Add, 0, Note("hi"), 0, HEAD + "hi\0"s},
        {"\0"s, Add, 0, Note(""), 0, HEAD + "\0"s},
        {"", Add, 0, Note("a\rb\nc\r\nd\n\re\t\0f~"s), 0, HEAD + "a\r\nb\r\nc\r\nd\r\n\r\nef~~\0"s},
        {"", Add, 0, Note("~,1,T,1,2,3,4,5,"), 0, HEAD + "~~,1,T,1,2,3,4,5,\0"s},
        {"", Add, 0, Note("x", '!', INT32_MAX), 0, "~,1,!,1,2,30,40,2147483647,x\0"s},
        {HEAD + "a", Add, 0, Note("b"), 0, HEAD + "a" + HEAD + "b\0"s},
        {HEAD + "a~~", Add, 0, Note("b"), 0, HEAD + "a~~" + HEAD + "b\0"s},
        {HEAD + "a~", Add, 0, Note("b"), 0, HEAD + "a~~" + HEAD + "b\0"s},
        {"pre" + HEAD + "a\0two\0"s, Add, 0, Note("b"), 0, "pre" + HEAD + "a" + HEAD + "b\0two\0"s},
        {"~,1,\0"s, Add, 0, Note("b"), 0, "~,1," + HEAD + "b\0"s},
        // A damaged record whose last byte would be taken for half of a pair.
        {HEAD + "a~,1,?~,1,T~\0"s, Add, 0, Note("b"), 0, HEAD + "a" + HEAD + "b~,1,?~,1,T~\0"s},
        {"host\0"s, Add, 0, Note("b"), 35, ""},
        {HEAD + "a~,1,?" + HEAD + "b\0"s, Replace, 1, Note("c", 'F'), 0,
         HEAD + "a~,1,?~,1,F,1,2,30,40,5,c\0"s},
        {"pre" + HEAD + "a~,1,?" + HEAD + "b\0"s, Replace, 0, Note("c~"), 0,
         "pre" + HEAD + "c~~~,1,?" + HEAD + "b\0"s},
        {"~,1,%,1,2,3,4,-5,a\0"s, Replace, 0, Note("b", '%', -5), 0, "~,1,%,1,2,30,40,-5,b\0"s},
        {HEAD + "a\0"s, Replace, 0, Note("b", '%'), 29, ""},
        {HEAD + "a\0"s, Replace, 1, Note("b"), 3, ""},
        {HEAD + "a~~" + HEAD + "b\0"s, Delete, 1, {}, 0, HEAD + "a~~\0"s},
        {"pre~~" + HEAD + "a~,1,?\0"s, Delete, 0, {}, 0, "pre~~~,1,?\0"s},
        {HEAD + "a\0"s, Delete, 0, {}, 0, "-"},
        {HEAD + "a\0two\0"s, Delete, 0, {}, 0, "\0two\0"s},
        {"host\0"s, Delete, 0, {}, 3, ""},
        {"~,1,\0"s, Delete, 0, {}, 3, ""},
    };
    for (const auto& [before, change, index, note, error, after] : rows)
        for (const uint16_t order : {uint16_t{TIFF_INTEL}, uint16_t{TIFF_MOTOROLA}}) {
            SCOPED_TRACE(before + " -> " + after);
            const Bytes original = FileWith(before, ASCII, order);
            const TempFile file(original);
            const int32_t result = change == Add       ? AddTiffNote(file.Path(), 1, &note)
                                   : change == Replace ? ReplaceTiffNote(file.Path(), 1, index, &note)
                                                       : DeleteTiffNote(file.Path(), 1, index);
            if (error) {
                EXPECT_EQ(Refusal(result), error);
                EXPECT_EQ(ReadFileBytes(file.Path()), original);
                continue;
            }
            EXPECT_EQ(result, 1);
            EXPECT_EQ(ValueIn(file.Path()), after);
            // All but the value is that of a file which never had another one.
            const Bytes wanted = FileWith(after == "-" ? "" : after, ASCII, order);
            EXPECT_EQ(PagesOf(ReadFileBytes(file.Path())), PagesOf(wanted));
            EXPECT_EQ(Complaints(ReadFileBytes(file.Path())), "");
        }
}

TEST(PageNotes, ComeBackWithEveryByte)
{
    std::mt19937 random(316);
    std::string text;
    for (uint32_t byte = 0; byte < 256; ++byte)
        text += static_cast<char>(byte);
    for (const size_t length : {size_t{256}, size_t{65535}, size_t{65536}, size_t{300'000}}) {
        SCOPED_TRACE(length);
        // Half of the text are the bytes that mean something.
        static constexpr char special[] = "~,1T\r\n\0";
        while (text.size() < length)
            text += random() % 2 ? special[random() % sizeof(special)] : static_cast<char>(random());
        std::string clean;
        for (size_t at = 0; at < text.size(); ++at)
            if (text[at] == '\r' || (text[at] == '\n' && (at == 0 || text[at - 1] != '\r')))
                clean += "\r\n";
            else if (static_cast<uint8_t>(text[at]) >= 32)
                clean += text[at];
        const TempFile file(FileWith(""));
        const TiffNote first = Note(text), second = Note("last");
        ASSERT_EQ(AddTiffNote(file.Path(), 1, &first), 1);
        ASSERT_EQ(AddTiffNote(file.Path(), 1, &second), 1);
        const Loaded loaded(file.Path());
        EXPECT_EQ(GetTiffNoteCount(loaded.file, 1), 2);
        EXPECT_EQ(TextOf(loaded.file, 0), clean);
        EXPECT_EQ(TextOf(loaded.file, 1), "last");
    }
}

// Work that grows with the square of the value would take hours.
TEST(PageNotes, CostTimeByTheirLength)
{
    const std::string digits(400, '0'), end(10'000'000, '~');
    std::string value;
    for (int record = 0; record < 10'000; ++record)
        value += "~,1,T,1,2," + digits + "30,40,5,x~,1,T,1,2,9" + digits + ",";
    const TempFile file(FileWith(value + HEAD + end));
    const TiffNote note = Note("new");
    EXPECT_EQ(ReplaceTiffNote(file.Path(), 1, 9'999, &note), 1);
    EXPECT_EQ(AddTiffNote(file.Path(), 1, &note), 1);
    const Loaded loaded(file.Path());
    EXPECT_EQ(GetTiffNoteCount(loaded.file, 1), 10'002);
    EXPECT_EQ(TextOf(loaded.file, 9'999), "new");
    EXPECT_EQ(TextOf(loaded.file, 10'000), end.substr(end.size() / 2));
    EXPECT_EQ(TextOf(loaded.file, 10'001), "new");
}

TEST(PageNotes, RefuseWhatCannotBe)
{
    const Bytes original = FileWith(HEAD + "a\0"s);
    const TempFile file(original), other(FileWith("x", UNDEFINED)), text(Bytes(20, 'x'));
    TiffNote good = Note("b"),
             bad[] = {Note("", '~'), Note("", '%'),     Note("", ','), Note("", 31), Note("", 127),
                      Note("", 256), Note("", 'T', -1), good,          good,         good};
    bad[7].right = bad[7].left;
    bad[8].bottom = bad[8].top - 1;
    bad[9].text = nullptr;
    for (const TiffNote& note : bad) {
        EXPECT_EQ(Refusal(AddTiffNote(file.Path(), 1, &note)), 29u);
        EXPECT_EQ(Refusal(ReplaceTiffNote(file.Path(), 1, 0, &note)), 29u);
    }
    EXPECT_EQ(Refusal(AddTiffNote(other.Path(), 1, &good)), 35u);
    EXPECT_EQ(Refusal(DeleteTiffNote(other.Path(), 1, 0)), 3u);
    for (const uint32_t page : {3u, 0x80000001u}) {
        EXPECT_EQ(Refusal(AddTiffNote(file.Path(), page, &good)), 3u);
        EXPECT_EQ(Refusal(DeleteTiffNote(file.Path(), page, 0)), 3u);
    }
    EXPECT_EQ(Refusal(AddTiffNote(nullptr, 1, &good)), 29u);
    EXPECT_EQ(Refusal(AddTiffNote(file.Path(), 1, nullptr)), 29u);
    EXPECT_EQ(Refusal(ReplaceTiffNote(file.Path(), 1, 0, nullptr)), 29u);
    EXPECT_EQ(Refusal(DeleteTiffNote(nullptr, 1, 0)), 29u);
    EXPECT_EQ(Refusal(AddTiffNote("no such file.tif", 1, &good)), 6u);
    EXPECT_NE(Refusal(AddTiffNote(text.Path(), 1, &good)), 0u);
    EXPECT_EQ(ReadFileBytes(text.Path()), Bytes(20, 'x'));
    EXPECT_EQ(ReadFileBytes(file.Path()), original);

    const Loaded loaded(file.Path());
    TiffNote note{};
    const struct {
        HGLOBAL file;
        uint32_t page, error;
    } missing[] = {{nullptr, 1, 34}, {loaded.file, 0, 27}, {loaded.file, 3, 3}};
    for (const auto& [handle, page, error] : missing) {
        EXPECT_EQ(Refusal(GetTiffNoteCount(handle, page)), error);
        EXPECT_EQ(Refusal(GetTiffNote(handle, page, 0, &note, nullptr, 0)), error);
    }
    EXPECT_EQ(Refusal(GetTiffNote(loaded.file, 1, 0, nullptr, nullptr, 0)), 29u);
}
