// The operations that need no desktop.
#include "sweeps/scene.h"

#include "support/target.h"

#include <cstring>

namespace sweeps {

namespace {

template <class Call>
std::function<Outcome(Scene&)> Armed(Call call)
{
    return [call](Scene& scene) {
        scene.Arm();
        return call(scene);
    };
}

// A query of the second of four loaded pages.
template <class Call>
std::function<Outcome(Scene&)> Query(Call call)
{
    return [call](Scene& scene) {
        HGLOBAL file = scene.InMemory("pages.tif");
        scene.Arm();
        return call(file);
    };
}

TiffStream StreamOf(HANDLE file)
{
    return static_cast<TiffStream>(reinterpret_cast<intptr_t>(file));
}

template <class Call>
std::function<Outcome(Scene&)> OnStream(Call call)
{
    return [call](Scene& scene) {
        const TiffStream stream = StreamOf(scene.Stream("raw.g3"));
        scene.Arm();
        return call(stream);
    };
}

HGLOBAL Bilevel(Scene& scene)
{
    return scene.Dib({24, 6, 1, {0xFFFFFF, 0}, Repeat(Hex("00A5C300"), 6)});
}

HGLOBAL Colour(Scene& scene)
{
    return scene.Dib({8, 20, 24, {}, Repeat(Hex("10 20 30 40 50 60"), 80)});
}

// So much code that it is written in pieces.
HGLOBAL Large(Scene& scene)
{
    Bytes noise;
    for (uint32_t at = 0, seed = 1; at < 400 * 60; ++at)
        noise.push_back(static_cast<uint8_t>((seed = seed * 1103515245 + 12345) >> 16));
    return scene.Dib({400, 60, 8, std::vector<uint32_t>(256, 0x102030), noise, {7874, 3937}, 256});
}

template <class Make, class Call>
std::function<Outcome(Scene&)> WithDib(Make make, Call call)
{
    return [make, call](Scene& scene) {
        HGLOBAL dib = make(scene);
        scene.Arm();
        return call(scene, dib);
    };
}

intptr_t FillLine(void* line, uint32_t row, void* rowBytes)
{
    std::memset(line, static_cast<int>(row * 7 + 0x55), reinterpret_cast<uintptr_t>(rowBytes));
    return 0;
}

void* RowBytes(uintptr_t count)
{
    return reinterpret_cast<void*>(count);
}

// A page made tag by tag.
int32_t Encode(HGLOBAL file, uint32_t compression, uint32_t rowBytes, uint32_t rows)
{
    const auto page = static_cast<uint32_t>(DefineTiffImage(file));
    const TiffPageGeometry geometry = {
        0, static_cast<int32_t>(rowBytes * 8), static_cast<int32_t>(rows), rowBytes, 1, 1};
    return page != UINT32_MAX && DefineTiffImageInfo(file, page, 259, 3, compression) &&
           DefineGeneralTags(file, page, &geometry) == 0 && DefineTiffImageInfo(file, page, 278, 3, 20) &&
           DefineTiffImageInfo(file, page, 256, 4, rowBytes * 8) &&
           EncodeTiffImage(file, page, RowBytes(rowBytes), FillLine);
}

TiffNote Note()
{
    return {TIFF_NOTE_FRAMED, 1, 2, 6, 8, 0, 3, "new"};
}

constexpr TiffIocaDescription segment = {1, 255, 2000, 2000, 24, 6, 1, 0, 0};
constexpr TiffCalsInformation calsInformation = {1, {0, 270}, 8, 2, 200};

int32_t Insert(Scene& scene, HGLOBAL dib, int32_t position, int32_t inPlace, int32_t replace)
{
    return InsertTiffImage(scene.At("pages.tif"), dib, 201, 0, 1, position, inPlace, replace);
}

HGLOBAL OneRow(Scene& scene)
{
    return scene.Dib({8, 1, 1, {0xFFFFFF, 0}, Hex("A5000000")});
}

void AddStreams(const Adder& add)
{
    const std::vector<const char*> raw = {"raw.g3"};
    add({"mRead", "", raw, Silent}, OnStream([](TiffStream stream) {
            uint8_t bytes[3] = {};
            const uint32_t count = mRead(stream, bytes, 3);
            return Result(count == 3, Bytes(bytes, bytes + 3));
        }));
    add({"mWrite", "", raw, Silent | Grows}, OnStream([](TiffStream stream) {
            return Result(mSeek(stream, 0, 2) == 3 && mWrite(stream, "abcd", 4) == 4, {});
        }));
    add({"mSeek", "", raw, Silent},
        OnStream([](TiffStream stream) { return Answer(mSeek(stream, 2, 0), STREAM_FAILED); }));
    add({"mTell", "", raw, Silent},
        OnStream([](TiffStream stream) { return Answer(mTell(stream), STREAM_FAILED); }));
    add({"mSize", "", raw, Silent},
        OnStream([](TiffStream stream) { return Answer(mSize(stream), STREAM_FAILED); }));
    add({"LongRead", "", raw, Kept}, OnStream([](TiffStream stream) {
            uint8_t bytes[2] = {};
            return Result(LongRead(stream, 3, 1, bytes, TIFF_MOTOROLA, 2) != 0, Bytes(bytes, bytes + 2));
        }));
    add({"LongWrite", "", raw, Grows, {0}}, OnStream([](TiffStream stream) {
            uint16_t values[200] = {1, 2, 3};
            return Answer(mSeek(stream, 0, 2) == 3 && LongWrite(stream, 3, 200, values, TIFF_MOTOROLA, 1));
        }));
    add({"DecodeCcittImage DecodeCcittImageFrom", "", {"text.txt"}, Kept}, [](Scene& scene) {
        const TiffStream stream = StreamOf(scene.Stream("text.txt"));
        RowCollector rows{4};
        scene.Arm();
        const int32_t first = DecodeCcittImage(stream, 32, 10, 1, &rows, CollectRow);
        return Rows(first && DecodeCcittImageFrom(stream, 8, 32, 10, 1, 2, TIFF_MOTOROLA, &rows, CollectRow),
                    rows);
    });
    add({"ReadIOCAHeader", "", {"segment.ioca"}, Silent}, [](Scene& scene) {
        HANDLE file = scene.Stream("segment.ioca");
        TiffIocaDescription read{};
        mSeek(StreamOf(file), 3, 0);
        scene.Arm();
        const int32_t done = ReadIOCAHeader(file, &read);
        return Result(done != 0, {static_cast<uint8_t>(read.width), static_cast<uint8_t>(read.dataOffset)});
    });
    add({"ReadMODCAHeader", "", {"segment.ioca"}, Silent}, [](Scene& scene) {
        HANDLE file = scene.Stream("segment.ioca");
        TiffIocaDescription read{};
        scene.Arm();
        const int32_t done = ReadMODCAHeader(file, &read);
        return Result(done != 0, {static_cast<uint8_t>(read.width), static_cast<uint8_t>(read.dataOffset)});
    });
    add({"WriteIOCAHeader WriteIOCATail", "", {"empty.tif"}, Silent | Grows}, [](Scene& scene) {
        HANDLE file = scene.Stream("empty.tif");
        scene.Arm();
        return Answer(WriteIOCAHeader(file, &segment) && WriteIOCATail(file));
    });
    add({"WriteMODCAHeader WriteMODCATail", "", {"empty.tif"}, Grows}, [](Scene& scene) {
        HANDLE file = scene.Stream("empty.tif");
        scene.Arm();
        return Answer(WriteMODCAHeader(file, &segment) && WriteMODCATail(file));
    });
    static constexpr struct {
        const char* name;
        uint32_t compression;
    } codes[] = {{"stored", 1},  {"Huffman", 2}, {"Group 3", 3},     {"Group 3 2-D", 0x10003},
                 {"Group 4", 4}, {"LZW", 5},     {"PackBits", 32773}};
    for (const auto& [name, compression] : codes) {
        if (compression != 5)
            add({"EncodeCcittImage EncodeCcittImageTo", name, {"empty.tif"}, Grows},
                [compression = compression](Scene& scene) {
                    const TiffStream stream = StreamOf(scene.Stream("empty.tif"));
                    scene.Arm();
                    return Answer(EncodeCcittImage(stream, 32, 10, compression, RowBytes(4), FillLine) &&
                                  EncodeCcittImageTo(stream, 64, 900, 2, TIFF_MOTOROLA, compression,
                                                     RowBytes(8), FillLine));
                });
        add({"DefineTiffImage DefineTiffImageInfo DefineGeneralTags EncodeTiffImage",
             name,
             {"far.tif"},
             InPlace},
            [compression = compression](Scene& scene) {
                HGLOBAL file = scene.OnDisk("far.tif");
                scene.Arm();
                return Answer(Encode(file, compression, 200, 50));
            });
        add({"EncodeTiffImage", name, {"far.tif"}, InPlace, {6}}, [compression = compression](Scene& scene) {
            HGLOBAL file = scene.InMemory("far.tif");
            scene.Arm();
            return Answer(Encode(file, compression, compression > 2 && compression < 5 ? 30000 : 40000, 3));
        });
    }
    add({"EncodeMMRImage DecodeMMRImage", "", {"empty.tif"}, Grows, {0, 5}}, [](Scene& scene) {
        const TiffStream stream = StreamOf(scene.Stream("empty.tif"));
        RowCollector rows{400};
        scene.Arm();
        const int32_t done =
            EncodeMMRImage(stream, 3200, 60, 4, RowBytes(400), FillLine) && mSeek(stream, 0, 0) == 0 &&
            DecodeMMRImage(stream, 0, 3200, 60, 4, TIFF_MSB_FIRST, TIFF_INTEL, &rows, CollectRow);
        return Rows(done, rows);
    });
    add({"EncodeTiffImage", "to a new file", {}, InPlace}, [](Scene& scene) {
        HGLOBAL file = scene.OnDisk("new.tif", T_CREAT);
        scene.Arm();
        return Answer(Encode(file, 1, 200, 50));
    });
}

void AddOpenFiles(const Adder& add)
{
    const std::vector<const char*> pages = {"pages.tif"};
    add({"OpenTiffFile CloseTiffFile", "", pages, Partial},
        Armed([](Scene& scene) { return TakeFile(OpenTiffFile(scene.At("pages.tif"), T_READ)); }));
    add({"OpenTiffFile", "to append, pages far apart", {"far.tif"}, Kept},
        Armed([](Scene& scene) { return TakeFile(OpenTiffFile(scene.At("far.tif"), T_APPEND)); }));
    add({"OpenTiffInMemory", "", {}, Partial}, [](Scene& scene) {
        HGLOBAL block = GetMemoryTiffHandle(scene.InMemory("pages.tif"));
        scene.Arm();
        return TakeFile(OpenTiffInMemory(block, UINT32_MAX, T_READ));
    });
    add({"GetNumberOfImagesInTiffFile", "", pages, Partial}, Armed([](Scene& scene) {
            return Answer(GetNumberOfImagesInTiffFile(scene.At("pages.tif")), UINT32_MAX);
        }));
    add({"GetTiffImage", "", pages, Kept}, [](Scene& scene) {
        HGLOBAL file = scene.OnDisk("pages.tif");
        DropTiffImage(file, 2);
        scene.Arm();
        const int32_t got = GetTiffImage(file, 2);
        StopFailing();
        // A text that cannot be read is left out.
        HGLOBAL values = nullptr;
        if (got)
            GetTiffImageInfoBuffer(file, 2, 273, &values, nullptr, nullptr);
        return Result(got != 0, TakeBlock(values).value);
    });
    add({"GetTiffImageInfoBuffer", "", {}, Kept}, Query([](HGLOBAL file) {
            HGLOBAL block = nullptr, list = nullptr;
            const int32_t got = GetTiffImageInfoBuffer(file, 1, 270, &block, nullptr, nullptr) &&
                                GetTiffImageInfoBuffer(file, 1, 0, &list, nullptr, nullptr);
            const Bytes values = TakeBlock(block).value + TakeBlock(list).value;
            return Result(got != 0, values);
        }));
    add({"GetTiffImageDPI SetTiffImageDPI", "", {}, Kept, {10}}, Query([](HGLOBAL file) {
            uint32_t dpi = 0;
            const bool done =
                SetTiffImageDPI(file, 1, 98u << 16 | 204) == 0 && GetTiffImageDPI(file, 1, &dpi) == 0;
            return Result(done, {static_cast<uint8_t>(dpi), static_cast<uint8_t>(dpi >> 16)});
        }));
    add({"GetTiffImageInfo GetTiffRowsPerStrip GetTiffStripCount GetTiffDimensions", "", {}, Kept, {10}},
        Query([](HGLOBAL file) {
            BITMAPINFOHEADER header{};
            uint32_t width = 0;
            const bool done = GetTiffImageInfo(file, 1, 256, &width) && GetTiffRowsPerStrip(file, 1) &&
                              GetTiffStripCount(file, 1) && GetTiffDimensions(file, 1, &header) == 0;
            return Result(done, {static_cast<uint8_t>(width), static_cast<uint8_t>(header.biHeight)});
        }));
    add({"IsTiffImageRegistered NumberOfTiffImages GetTiffFileInfo ModiTiffFileInfo DropTiffImage",
         "",
         {},
         Kept},
        Query([](HGLOBAL file) {
            TiffFileInformation info;
            return Answer(IsTiffImageRegistered(file, 1) && NumberOfTiffImages(file, TIFF_ALL_PAGES) &&
                          GetTiffFileInfo(file, &info) && ModiTiffFileInfo(file, nullptr, TIFF_INTEL) &&
                          DropTiffImage(file, 1));
        }));
    add({"GetTiffNoteCount GetTiffNote", "", {}, Kept}, [](Scene& scene) {
        HGLOBAL file = scene.InMemory("notes.tif");
        scene.Arm();
        TiffNote note{};
        char text[64] = {};
        return Answer(GetTiffNoteCount(file, 1) && GetTiffNote(file, 1, 0, &note, text, sizeof(text)));
    });
    add({"GetTiffRGBQuad", "", {}, Kept},
        Query([](HGLOBAL file) { return TakeBlock(GetTiffRGBQuad(file, 1)); }));
    add({"GetTiffColorSpace", "", {"coded.tif"}, Silent},
        Armed([](Scene& scene) { return Answer(GetTiffColorSpace(scene.At("coded.tif"), 0), UINT32_MAX); }));
    add({"DefineTiffImageInfoBuffer DefineSpecialTags", "", {}, Kept}, Query([](HGLOBAL file) {
            const Bytes values(5000, 7);
            return Answer(DefineTiffImageInfoBuffer(file, 1, 700, values.data(), 1, 5000) &&
                          DefineSpecialTags(file, 1, 768) == 0);
        }));
    add({"WriteTiffImageDirectory", "", pages, InPlace}, [](Scene& scene) {
        HGLOBAL file = scene.OnDisk("pages.tif");
        const auto page = static_cast<uint32_t>(DefineTiffImage(file));
        const Bytes values(5000);
        DefineTiffImageInfoBuffer(file, page, 700, values.data(), 1, 5000);
        scene.Arm();
        return Result(WriteTiffImageDirectory(file, page) == 0, {});
    });
    add({"InitDecodeBuffers FillCodeBuffer", "", {"text.txt"}, Kept}, [](Scene& scene) {
        CodecContext context{};
        context.stream = StreamOf(scene.Stream("text.txt"));
        context.lineFormat.biHeight = context.lineFormat.biWidth = 1;
        context.bytesPerLine = context.fillOrder = context.rowsPerStrip = 1;
        context.bufferFilePos = 0xFFFFFF;
        context.dataEnd = 600;
        context.lineCallback = CollectRow;
        scene.Arm();
        const uint32_t status = InitDecodeBuffers(&context);
        StopFailing();
        const uint32_t left = context.codeBytesLeft;
        if (context.bufferBlock) {
            GlobalUnlock(context.bufferBlock);
            GlobalFree(context.bufferBlock);
            Forget(context.bufferBlock);
        }
        return Outcome{status == 0, {static_cast<uint8_t>(status ? 0 : left)}, status};
    });
    add({"InitEncodeBuffers FillDataBuffer FlushCodeBuffer", "", {"empty.tif"}, Kept}, [](Scene& scene) {
        CodecContext context{};
        context.stream = StreamOf(scene.Stream("empty.tif"));
        context.lineFormat.biHeight = context.lineFormat.biWidth = 2;
        context.bytesPerLine = context.fillOrder = context.rowsPerStrip = 1;
        context.lineCallback = FillLine;
        context.userData = RowBytes(1);
        scene.Arm();
        uint32_t status = InitEncodeBuffers(&context);
        if (status == 0) {
            *context.codeCursor++ = 7;
            --context.codeBytesLeft;
            status = FlushCodeBuffer(&context);
        }
        if (status == 0)
            status = FillDataBuffer(&context);
        StopFailing();
        if (context.bufferBlock) {
            GlobalUnlock(context.bufferBlock);
            GlobalFree(context.bufferBlock);
            Forget(context.bufferBlock);
        }
        return Outcome{status == 0, {}, status};
    });
}

void AddPictures(const Adder& add)
{
    for (uint32_t page = 0; page < 9; ++page) {
        add({"LoadTiffIntoDIB", "of each compression", {"coded.tif"}, Partial, {12}},
            Armed(
                [page](Scene& scene) { return TakeBlock(LoadTiffIntoDIB(scene.At("coded.tif"), page, 0)); }));
        const auto make = page < 4 || page == 8 ? Colour : Bilevel;
        add({"SaveDIBInTiffFile SaveDIBInTiffFileExt SaveDIBInTiffFormat",
             "of each compression",
             {"pages.tif"},
             InPlace},
            WithDib(make, [page](Scene& scene, HGLOBAL dib) {
                return Answer(SaveDIBInTiffFile(scene.At("pages.tif"), dib, 201 + page, 0));
            }));
        if (page == 8)
            continue; // JPEG is left to the loaders
        add({"DecodeTiffImage FlushDataBuffer", "of each compression", {}, Kept}, [page](Scene& scene) {
            HGLOBAL file = scene.InMemory("coded.tif");
            RowCollector collected{3};
            scene.Arm();
            return Rows(DecodeTiffImage(file, page, 0, 0, &collected, CollectRow), collected);
        });
    }
    add({"LoadTiffFromMemory", "", {"coded.tif"}, Partial}, [](Scene& scene) {
        const Bytes bytes = ReadFileBytes(scene.At("coded.tif"));
        scene.Arm();
        return TakeBlock(LoadTiffFromMemory(bytes.data(), static_cast<uint32_t>(bytes.size()), 3));
    });
    const auto appendRaw = [](const char* bits, uint32_t scheme) {
        return Armed([bits, scheme](Scene& scene) {
            const Bytes code = Bits(bits);
            TiffRawFax fax = {.width = 8, .scheme = scheme};
            return Answer(AppendRawFaxToTiff(scene.At("pages.tif"), code.data(),
                                             static_cast<uint32_t>(code.size()), &fax));
        });
    };
    add({"AppendRawFaxToTiff", "", {"pages.tif"}, InPlace},
        appendRaw("000000000001 10011 000000000001 10011 000000000001", TIFF_RAW_FIND_OUT));
    add({"AppendRawFaxToTiff", "encoded anew", {"pages.tif"}, InPlace},
        appendRaw("10011 10011 10011 0", TIFF_RAW_GROUP3_WITHOUT_EOLS));
    add({"LoadTiffChainIntoDIB", "", {}, Partial}, [](Scene& scene) {
        HGLOBAL file = scene.InMemory("coded.tif");
        scene.Arm();
        return TakeBlock(LoadTiffChainIntoDIB(file, 3));
    });
    add({"LoadNonRGBTiffIntoDIB", "", {"coded.tif"}, Partial},
        Armed([](Scene& scene) { return TakeBlock(LoadNonRGBTiffIntoDIB(scene.At("coded.tif"), 1)); }));
    add({"LoadTiffIntoDIB", "with old-style JPEG", {"oldjpeg.tif"}, Partial, {23}},
        Armed([](Scene& scene) { return TakeBlock(LoadTiffIntoDIB(scene.At("oldjpeg.tif"), 0, 0)); }));
    add({"LoadTiffIntoDIB", "with the dialog", {"pages.tif"}, Partial | KeepsLibrary},
        Armed([](Scene& scene) { return TakeBlock(LoadTiffIntoDIB(scene.At("pages.tif"), 1, 1)); }));
    add({"SaveDIBInTiffFile", "with the dialog", {"pages.tif"}, InPlace | KeepsLibrary},
        WithDib(Bilevel, [](Scene& scene, HGLOBAL dib) {
            return Answer(SaveDIBInTiffFile(scene.At("pages.tif"), dib, 208, 1));
        }));
    add({"SaveDIBInTiffFile", "as old-style JPEG", {"pages.tif"}, InPlace, {23}},
        WithDib(Colour, [](Scene& scene, HGLOBAL dib) {
            return Answer(SaveDIBInTiffFile(scene.At("pages.tif"), dib, 210, 0));
        }));
    add({"SaveDIBInTiffFile", "in pieces", {"two.tif"}, InPlace},
        WithDib(Large, [](Scene& scene, HGLOBAL dib) {
            return Answer(SaveDIBInTiffFile(scene.At("two.tif"), dib, 203, 0));
        }));
    add({"SaveDIBInTiffFileExt", "to a new file", {}, InPlace},
        WithDib(Bilevel, [](Scene& scene, HGLOBAL dib) {
            return Answer(SaveDIBInTiffFileExt(scene.At("new.tif"), dib, 208, 0, 2));
        }));
    add({"SaveNonRGBDIBInTiffFile", "", {"pages.tif"}, InPlace}, [](Scene& scene) {
        HGLOBAL dib = Colour(scene);
        static_cast<BITMAPINFOHEADER*>(GlobalLock(dib))->biCompression = 10;
        GlobalUnlock(dib);
        scene.Arm();
        return Answer(SaveNonRGBDIBInTiffFile(scene.At("pages.tif"), dib));
    });
    add({"SaveTiffToMemory", "", {}, Kept, {6}}, WithDib(Bilevel, [](Scene&, HGLOBAL dib) {
            return TakeBlock(SaveTiffToMemory(nullptr, dib, 208, 1));
        }));
    add({"SaveDIBInGammaTiffFile", "", {"pages.tif"}, InPlace},
        WithDib(Bilevel, [](Scene& scene, HGLOBAL dib) {
            return Answer(SaveDIBInGammaTiffFile(scene.At("pages.tif"), dib, 206, 0, 1));
        }));
    add({"SaveDIBInBicomTiffFile SaveDIBInNMSTiffFile", "", {"pages.tif"}, InPlace | LacksTags},
        WithDib(Bilevel, [](Scene& scene, HGLOBAL dib) {
            return Answer(SaveDIBInBicomTiffFile(scene.At("pages.tif"), dib));
        }));
    add({"SaveDIBInDialogicTiffFile", "", {"pages.tif"}, InPlace | LacksTags},
        WithDib(Bilevel, [](Scene& scene, HGLOBAL dib) {
            return Answer(SaveDIBInDialogicTiffFile(scene.At("pages.tif"), dib, 208));
        }));
    add({"SaveTiffForCiscoFormat", "", {"pages.tif"}, InPlace | Vanishes | Strands},
        WithDib(OneRow, [](Scene& scene, HGLOBAL dib) {
            return Answer(SaveTiffForCiscoFormat(scene.At("pages.tif"), dib, 201, 0, 1));
        }));
    add({"ConvertTiffToCiscoFormat", "", {"pages.tif"}, Vanishes | Strands},
        Armed([](Scene& scene) { return Answer(ConvertTiffToCiscoFormat(scene.At("pages.tif"))); }));
    add({"CropDIB", "", {}, Kept},
        WithDib(Large, [](Scene&, HGLOBAL dib) { return TakeBlock(CropDIB(dib, 1, 1, 20, 20)); }));
    add({"StretchDIB CropStretchDIB", "", {}, Kept}, WithDib(Large, [](Scene&, HGLOBAL dib) {
            const RECT part = {3, 4, 90, 50};
            return TakeBlock(CropStretchDIB(dib, &part, 33, 77, TIFF_SMOOTH));
        }));
    add({"RotateDIB", "", {}, Kept},
        WithDib(Large, [](Scene&, HGLOBAL dib) { return TakeBlock(RotateDIB(dib, 1)); }));
    add({"DitherDIB", "", {}, Kept}, WithDib(Large, [](Scene&, HGLOBAL dib) {
            return TakeBlock(DitherDIB(dib, TIFF_DITHER_DIFFUSION, 0));
        }));
    add({"FindBlankPage FindBlackPage", "", {"coded.tif"}, Kept, {6}}, Armed([](Scene& scene) {
            const uint8_t white[] = {1, 1, 1};
            const uint32_t found = FindBlankPage(scene.At("coded.tif"), 1000, 0, white);
            return Answer(found, UINT32_MAX);
        }));
    add({"FindBlackPage", "", {"coded.tif"}, Kept, {6}}, Armed([](Scene& scene) {
            const uint8_t dark[] = {9, 9, 9};
            return Answer(FindBlackPage(scene.At("coded.tif"), 100, 0, dark), UINT32_MAX);
        }));
    add({"ReadCALSHead", "", {"page.cal"}, Kept},
        Armed([](Scene& scene) { return TakeBlock(ReadCALSHead(scene.At("page.cal"))); }));
    add({"ReadCALSInfo", "", {"page.cal"}, Kept}, Armed([](Scene& scene) {
            TiffCalsInformation read{};
            const int32_t done = ReadCALSInfo(scene.At("page.cal"), &read);
            return Result(done != 0,
                          {static_cast<uint8_t>(read.pixelsPerLine), static_cast<uint8_t>(read.lines)});
        }));
    add({"ReadCALSNote", "", {"page.cal"}, Kept}, Armed([](Scene& scene) {
            TiffCalsNotes notes{};
            return TakeBlock(ReadCALSNote(scene.At("page.cal"), &notes));
        }));
    add({"DefineCALSHead", "", {}, Kept},
        Armed([](Scene&) { return TakeBlock(DefineCALSHead(&calsInformation, nullptr)); }));
    add({"LoadCALSIntoDIB", "", {"page.cal"}, Partial},
        Armed([](Scene& scene) { return TakeBlock(LoadCALSIntoDIB(scene.At("page.cal"), 0)); }));
    add({"SaveDIBInCALSFormat", "over another", {"page.cal"}, Kept},
        WithDib(Bilevel, [](Scene& scene, HGLOBAL dib) {
            return Answer(SaveDIBInCALSFormat(scene.At("page.cal"), dib, nullptr, nullptr, 0));
        }));
    add({"SaveDIBInCALSFormat", "to a new file", {}, Kept}, WithDib(Bilevel, [](Scene& scene, HGLOBAL dib) {
            return Answer(SaveDIBInCALSFormat(scene.At("new.cal"), dib, nullptr, nullptr, 0));
        }));
}

void AddEditing(const Adder& add)
{
    const std::vector<const char*> pages = {"pages.tif"};
    const auto insert = [&](const char* detail, int32_t position, int32_t inPlace, int32_t replace) {
        add({"InsertTiffImage", detail, pages, inPlace || position == 4 ? InPlace : Kept, {6}},
            WithDib(OneRow, [=](Scene& scene, HGLOBAL dib) {
                return Answer(Insert(scene, dib, position, inPlace, replace));
            }));
    };
    insert("rewritten", 2, 0, 0);
    insert("replaced, rewritten", 0, 0, 1);
    insert("at the end", 4, 0, 0);
    insert("in place", 1, 1, 0);
    insert("replaced in place", 3, 1, 1);
    add({"DeleteTiffImage", "rewritten", pages, Kept},
        Armed([](Scene& scene) { return Answer(DeleteTiffImage(scene.At("pages.tif"), 1, 0)); }));
    add({"DeleteTiffImage", "in place", pages, InPlace},
        Armed([](Scene& scene) { return Answer(DeleteTiffImage(scene.At("pages.tif"), 1, 1)); }));
    add({"DeleteTiffImage", "the only page", {"one.tif"}, Kept},
        Armed([](Scene& scene) { return Answer(DeleteTiffImage(scene.At("one.tif"), 0, 0)); }));
    add({"ReorderTiffFile", "", pages, Kept},
        Armed([](Scene& scene) { return Answer(ReorderTiffFile(scene.At("pages.tif"))); }));
    add({"ReorderTiffFile", "with sub-directories", {"nested.tif"}, Kept},
        Armed([](Scene& scene) { return Answer(ReorderTiffFile(scene.At("nested.tif"))); }));
    add({"MergeTiffFiles", "", {"two.tif", "pages.tif"}, InPlace}, Armed([](Scene& scene) {
            return Answer(MergeTiffFiles(scene.At("two.tif"), scene.At("pages.tif"), nullptr, 0));
        }));
    add({"MergeTiffFiles", "to a new file", pages, InPlace | Grows}, Armed([](Scene& scene) {
            return Answer(MergeTiffFiles(scene.At("new.tif"), scene.At("pages.tif"), nullptr, 0));
        }));
    add({"CopyTiffImage", "", pages, InPlace}, [](Scene& scene) {
        HGLOBAL source = scene.InMemory("nested.tif"), target = scene.OnDisk("pages.tif");
        scene.Arm();
        return Answer(CopyTiffImage(source, 0, target));
    });
    add({"CopyTiffImage", "to memory", pages, InPlace, {6}}, [](Scene& scene) {
        HGLOBAL source = scene.OnDisk("pages.tif", T_READ), target = scene.InMemory("two.tif");
        scene.Arm();
        return Answer(CopyTiffImage(source, 2, target));
    });
    add({"CopyTiffImageInFile", "", {"pages.tif", "two.tif"}, InPlace}, Armed([](Scene& scene) {
            return Answer(CopyTiffImageInFile(scene.At("pages.tif"), 3, scene.At("two.tif"), T_APPEND));
        }));
    add({"CopyTiffImageInFile", "without a length", {"stream.tif", "two.tif"}, InPlace},
        Armed([](Scene& scene) {
            return Answer(CopyTiffImageInFile(scene.At("stream.tif"), 0, scene.At("two.tif"), T_APPEND));
        }));
    add({"SplitTiffFile", "over another file", {"pages.tif", "0002.tif"}, Strands}, Armed([](Scene& scene) {
            return Answer(SplitTiffFile(scene.At("pages.tif"), scene.At("0002.tif"), 2, nullptr, 0));
        }));
    add({"SplitTiffFile", "all of it", pages, Strands}, Armed([](Scene& scene) {
            return Answer(SplitTiffFile(scene.At("pages.tif"), scene.At("new.tif"), 0, nullptr, 0));
        }));
    add({"CutTiffFile", "over another file", {"pages.tif", "0002.tif"}, Strands}, Armed([](Scene& scene) {
            return Answer(CutTiffFile(scene.At("pages.tif"), scene.At(""), 2, nullptr, 0));
        }));
    add({"CutTiffFile", "all of it", {"six.tif"}, Strands}, Armed([](Scene& scene) {
            return Answer(CutTiffFile(scene.At("six.tif"), scene.At("p"), 6, nullptr, 0));
        }));
    add({"AppendCCITTImageFile", "", {"raw.g3", "pages.tif"}, Vanishes | Grows}, Armed([](Scene& scene) {
            return Result(AppendCCITTImageFile(scene.At("raw.g3"), scene.At("pages.tif"), 0, 0) != nullptr,
                          {});
        }));
    add({"UpdatePageNumbers", "", {"many.tif"}, InPlace},
        Armed([](Scene& scene) { return Answer(UpdatePageNumbers(scene.At("many.tif"), 20)); }));
    add({"UpdatePageNumbersInMemory", "", {}, InPlace}, [](Scene& scene) {
        HGLOBAL file = scene.InMemory("many.tif");
        scene.Arm();
        return Answer(UpdatePageNumbersInMemory(file, 3));
    });
    add({"AddTiffTagToImage", "", pages, Strands, {1}}, Armed([](Scene& scene) {
            return Answer(AddTiffTagToImage(scene.At("pages.tif"), 1, 270, 2, "another description", 20));
        }));
    add({"DeleteTiffTagOfImage", "", {"nested.tif"}, Strands, {1}},
        Armed([](Scene& scene) { return Answer(DeleteTiffTagOfImage(scene.At("nested.tif"), 1, 270)); }));
    add({"AddTiffNote", "", {"notes.tif"}, Strands, {1}}, Armed([](Scene& scene) {
            const TiffNote note = Note();
            return Answer(AddTiffNote(scene.At("notes.tif"), 1, &note));
        }));
    add({"ReplaceTiffNote", "", {"notes.tif"}, Strands, {1}}, Armed([](Scene& scene) {
            const TiffNote note = Note();
            return Answer(ReplaceTiffNote(scene.At("notes.tif"), 1, 0, &note));
        }));
    add({"DeleteTiffNote", "", {"notes.tif"}, Strands, {1}},
        Armed([](Scene& scene) { return Answer(DeleteTiffNote(scene.At("notes.tif"), 1, 0)); }));
    add({"LoadAnnotationFromTiff", "", {"nested.tif"}, Silent},
        Armed([](Scene& scene) { return Answer(LoadAnnotationFromTiff(scene.At("nested.tif"), 0)); }));
    add({"SaveAnnotationIntoTiff", "", pages, Silent | Strands},
        Armed([](Scene& scene) { return Answer(SaveAnnotationIntoTiff(scene.At("pages.tif"), 5, 0)); }));
    add({"SaveAnnotationIntoTiffExt", "", {"nested.tif"}, Silent | Strands}, Armed([](Scene& scene) {
            return Answer(
                SaveAnnotationIntoTiffExt(scene.At("nested.tif"), 5, 0, TIFF_ANNOTATION_APPEND, 0, 0));
        }));
}

} // namespace

std::vector<Row> PureRows()
{
    std::vector<Row> rows;
    const Adder add{rows};
    AddStreams(add);
    AddOpenFiles(add);
    AddPictures(add);
    AddEditing(add);
    return rows;
}

} // namespace sweeps
