// The operations that draw, show dialogs or use the clipboard.
#include "gdi/desktop.h"
#include "sweeps/scene.h"
#include "tiff/cals.h"
#include "tiff/tiff.h"

#include <cstring>

namespace sweeps {

namespace {

Bytes BytesOf(const Picture& picture)
{
    const auto* first = reinterpret_cast<const uint8_t*>(picture.pixels.data());
    return Bytes(first, first + picture.pixels.size() * sizeof(uint32_t));
}

Outcome TakeDrawn(HBITMAP bitmap)
{
    StopFailing();
    const Outcome outcome = Result(bitmap != nullptr, BytesOf(TakeBitmap(bitmap)));
    Forget(bitmap);
    return outcome;
}

// A bitmap of the test's own, white, selected into a device context unless it is to be passed on.
struct Canvas {
    explicit Canvas(bool selected, int32_t bits = 1)
        : dc(CreateCompatibleDC(nullptr)),
          bitmap(bits == 1 ? CreateBitmap(40, 20, 1, 1, nullptr) : CreateForScreen())
    {
        const HGDIOBJ before = SelectObject(dc, bitmap);
        PatBlt(dc, 0, 0, 40, 20, WHITENESS);
        if (!selected)
            SelectObject(dc, before);
    }
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    ~Canvas()
    {
        DeleteDC(dc);
        DeleteObject(bitmap);
    }
    Outcome Drawn(int32_t result)
    {
        StopFailing();
        DeleteDC(dc);
        dc = nullptr;
        return Result(result != 0, BytesOf(Look(bitmap)));
    }
    HDC dc;
    const HBITMAP bitmap;

private:
    static HBITMAP CreateForScreen()
    {
        HDC screen = GetDC(nullptr);
        const HBITMAP made = CreateCompatibleBitmap(screen, 40, 20);
        ReleaseDC(nullptr, screen);
        return made;
    }
};

TiffTextPageSettings Settings(Scene& scene)
{
    TiffTextPageSettings text{};
    std::strcpy(text.path, scene.At("text.txt"));
    std::strcpy(text.faceName, "Arial");
    text.flags = TIFF_TEXT_INCHES;
    text.horizontalDpi = text.verticalDpi = 100;
    text.pageWidth = text.pageHeight = 90;
    text.fontSize = 30;
    return text;
}

// The pages and the error slot. Fewer pages with a code are a part of the result.
Outcome TakePages(uint32_t count, HANDLE* pages, uint32_t error, bool asDibs)
{
    StopFailing();
    Bytes all;
    for (uint32_t page = 0; page < count; ++page) {
        all = all + (asDibs ? TakeBlock(pages[page]) : TakeDrawn(static_cast<HBITMAP>(pages[page]))).value;
    }
    return {count != 0, all, error == TIFF_TEXT_PAGE_LIMIT ? 0 : error};
}

template <class Call>
std::function<Outcome(Scene&)> WithText(Call call)
{
    return [call](Scene& scene) {
        const TiffTextPageSettings settings = Settings(scene);
        scene.Arm();
        return call(scene, settings);
    };
}

template <class Call>
std::function<Outcome(Scene&)> WithBitmap(Call call)
{
    return [call](Scene& scene) {
        const Canvas canvas(false);
        scene.Arm();
        return call(scene, canvas.bitmap);
    };
}

// Presses OK in whatever dialog comes.
template <class Call>
auto Confirm(Call call)
{
    const auto press = [](HWND, UINT, UINT_PTR, DWORD) noexcept {
        char kind[16] = {};
        HWND dialog = GetActiveWindow();
        GetClassNameA(dialog, kind, sizeof(kind));
        if (dialog && std::strcmp(kind, "#32770") == 0)
            SendMessageA(dialog, WM_COMMAND, IDOK, 0);
    };
    const UINT_PTR timer = SetTimer(nullptr, 0, 10, press);
    const auto result = call();
    KillTimer(nullptr, timer);
    return result;
}

HGLOBAL Photograph(Scene& scene)
{
    return scene.Dib({8, 20, 24, {}, Repeat(Hex("10 20 30 40 50 60"), 80)});
}

void PutOnClipboard()
{
    HBITMAP bitmap = CreateBitmap(9, 2, 1, 1, nullptr);
    OpenClipboard(nullptr);
    EmptyClipboard();
    SetClipboardData(CF_BITMAP, bitmap);
    CloseClipboard();
}

const RECT whole = {0, 0, 40, 20};

} // namespace

std::vector<Row> DesktopRows()
{
    const std::vector<const char*> coded = {"coded.tif"}, pages = {"pages.tif"}, text = {"text.txt"},
                                   form = {"text.txt", "palette.tif"};
    const auto onForm = [](auto call) { return WithText(call); };
    std::vector<Row> rows;
    const Adder add{rows};
    add({"LoadTiffFileIntoBitmap", "a palette", {"palette.tif"}, Partial}, [](Scene& scene) {
        scene.Arm();
        return TakeDrawn(LoadTiffFileIntoBitmap(scene.At("palette.tif"), 0, 0));
    });
    add({"LoadTiffChainIntoBitmap", "", {}, Partial}, [](Scene& scene) {
        HGLOBAL file = scene.InMemory("coded.tif");
        scene.Arm();
        return TakeDrawn(LoadTiffChainIntoBitmap(file, 1));
    });
    add({"GetTiffImagePalette", "", {"palette.tif"}, Kept}, [](Scene& scene) {
        scene.Arm();
        HPALETTE palette = GetTiffImagePalette(scene.At("palette.tif"), 0);
        StopFailing();
        const Outcome outcome =
            Result(palette != nullptr, {static_cast<uint8_t>(GetPaletteEntries(palette, 0, 0, nullptr))});
        DeleteObject(palette);
        Forget(palette);
        return outcome;
    });
    add({"LoadTiffFileIntoClipboard", "", coded, Partial | Silent}, [](Scene& scene) {
        PutOnClipboard();
        scene.Arm();
        const int32_t done = LoadTiffFileIntoClipboard(scene.At("coded.tif"), 8, 0);
        return Result(done != 0, StopFailing() && !done ? Bytes() : BytesOf(OnClipboard()));
    });
    add({"SaveBitmapInTiffFile SaveBitmapInTiffFileExt SaveBitmapInTiffFormat", "", pages, InPlace, {34}},
        WithBitmap([](Scene& scene, HBITMAP bitmap) {
            return Answer(SaveBitmapInTiffFile(scene.At("pages.tif"), bitmap, 208, 0));
        }));
    add({"SaveBitmapInTiffFileExt", "in true colour", pages, InPlace, {34}}, [](Scene& scene) {
        const Canvas canvas(false, 24);
        scene.Arm();
        return Answer(SaveBitmapInTiffFileExt(scene.At("pages.tif"), canvas.bitmap, 203, 0, 1));
    });
    add({"SaveBitmapInTiffFile", "as JPEG", pages, InPlace, {34}}, [](Scene& scene) {
        const Canvas canvas(false, 24);
        scene.Arm();
        return Answer(SaveBitmapInTiffFile(scene.At("pages.tif"), canvas.bitmap, 209, 0));
    });
    add({"SaveBitmapInCcittFile", "", {"raw.g3"}, Kept, {34}}, WithBitmap([](Scene& scene, HBITMAP bitmap) {
            return Answer(SaveBitmapInCcittFile(scene.At("raw.g3"), bitmap, 8));
        }));
    add({"SaveTiffFileFromClipboard", "", pages, InPlace, {25, 26, 34}}, [](Scene& scene) {
        PutOnClipboard();
        scene.Arm();
        return Answer(SaveTiffFileFromClipboard(scene.At("pages.tif"), 208, 0));
    });
    add({"CreateBMPFaxPageFromASCII CreateFaxPageFromASCII CreateMultiPageFromASCII",
         "",
         text,
         Partial,
         {3, 4}},
        WithText([](Scene&, const TiffTextPageSettings& settings) {
            HANDLE made[4];
            uint32_t error = 0;
            const uint32_t count = CreateBMPFaxPageFromASCII(&settings, 4, made, &error);
            return TakePages(count, made, error, false);
        }));
    add({"CreateDIBFaxPageFromASCII", "", text, Partial, {3, 4}},
        WithText([](Scene&, const TiffTextPageSettings& settings) {
            HANDLE made[4];
            uint32_t error = 0;
            const uint32_t count = CreateDIBFaxPageFromASCII(&settings, 4, made, &error);
            return TakePages(count, made, error, true);
        }));
    add({"BitmapFormOverlay", "", form, Silent | Partial},
        onForm([](Scene& scene, const TiffTextPageSettings& settings) {
            return TakeDrawn(BitmapFormOverlay(scene.At("palette.tif"), &settings));
        }));
    add({"DIBFormOverlay", "", form, Silent | Partial},
        onForm([](Scene& scene, const TiffTextPageSettings& settings) {
            return TakeBlock(DIBFormOverlay(scene.At("palette.tif"), &settings));
        }));
    add({"DIBFormOverlayExt", "", form, Silent | Fewer},
        onForm([](Scene& scene, const TiffTextPageSettings& settings) {
            HANDLE made[3];
            const uint32_t count = DIBFormOverlayExt(scene.At("palette.tif"), &settings, made, 3, 0);
            return TakePages(count, made, 0, true);
        }));
    add({"BitmapTextOverlay", "", {}, Silent}, WithBitmap([](Scene&, HBITMAP bitmap) {
            return TakeDrawn(BitmapTextOverlay(bitmap, 2, 2, "text\r\nmore", "Arial", 9, 0, 0));
        }));
    add({"DIBTextOverlay", "", {}, Silent}, [](Scene& scene) {
        HGLOBAL dib = Photograph(scene);
        scene.Arm();
        return TakeBlock(DIBTextOverlay(dib, 0, 0, "text", "Arial", 9));
    });
    add({"DrawTiffNotes", "", {}, Kept}, [](Scene& scene) {
        HGLOBAL file = scene.InMemory("notes.tif");
        Canvas canvas(true);
        scene.Arm();
        return canvas.Drawn(DrawTiffNotes(canvas.dc, file, 1, &whole));
    });
    add({"DrawTiffNotesOnDIB", "", {}, Kept}, [](Scene& scene) {
        HGLOBAL file = scene.InMemory("notes.tif"), dib = Photograph(scene);
        scene.Arm();
        return TakeBlock(DrawTiffNotesOnDIB(dib, file, 1));
    });
    add({"DecompressToScreen", "of any format", {"coded.tif"}, Kept, {18, 10}}, [](Scene& scene) {
        Canvas canvas(true, 24);
        scene.Arm();
        return canvas.Drawn(DecompressToScreen(TIFF_FORMAT_ANY, nullptr, canvas.dc, scene.At("coded.tif"), 1,
                                               nullptr, TIFF_FIT | TIFF_TURN_90));
    });
    add({"DecompressCALSToScreen", "", {"page.cal"}, Kept}, [](Scene& scene) {
        Canvas canvas(true);
        scene.Arm();
        return canvas.Drawn(DecompressCALSToScreen(nullptr, canvas.dc, scene.At("page.cal"), nullptr, 0));
    });
    add({"ShowCALSInfo", "", {"page.cal"}, Kept}, [](Scene& scene) {
        scene.Arm();
        return Answer(Confirm([&] { return ShowCALSInfo(nullptr, scene.At("page.cal")); }));
    });
    add({"EditCALSHead", "", {"page.cal"}, Kept}, [](Scene& scene) {
        Bytes header = ReadFileBytes(scene.At("page.cal"));
        scene.Arm();
        const int32_t done =
            Confirm([&] { return EditCALSHead(nullptr, "path", reinterpret_cast<char*>(header.data())); });
        return Result(done == 1, header);
    });
    add({"EditTiffNote", "", {}, Kept}, [](Scene& scene) {
        char room[20] = "note";
        TiffNote note = {TIFF_NOTE_TEXT, 1, 2, 3, 4, 0, 4, room};
        scene.Arm();
        const int32_t done = Confirm([&] { return EditTiffNote(nullptr, &note, room, sizeof(room)); });
        return Result(done == 1, Bytes(room, room + sizeof(room)));
    });
    for (uint32_t page = 0; page < 9; ++page)
        add({"LoadTiffIntoBitmap", "of each compression", coded, Partial, {12}}, [page](Scene& scene) {
            scene.Arm();
            return TakeDrawn(LoadTiffIntoBitmap(scene.At("coded.tif"), page, 0));
        });
    return rows;
}

} // namespace sweeps
