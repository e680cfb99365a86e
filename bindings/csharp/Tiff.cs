// Made by bindings/make-bindings. The contracts are in the headers and in the reference.
// Call Tiff.SetTiffPathCodePage(65001) first on each thread: strings cross as UTF-8.
using System;
using System.Runtime.InteropServices;

namespace TiffDll {

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct BITMAPINFOHEADER {
    public uint biSize;
    public int biWidth;
    public int biHeight;
    public ushort biPlanes;
    public ushort biBitCount;
    public uint biCompression;
    public uint biSizeImage;
    public int biXPelsPerMeter;
    public int biYPelsPerMeter;
    public uint biClrUsed;
    public uint biClrImportant;
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct RECT {
    public int left;
    public int top;
    public int right;
    public int bottom;
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct TiffCalsInformation {
    public uint rasterType;
    public fixed uint orientation[2];
    public uint pixelsPerLine;
    public uint lines;
    public uint dotsPerInch;
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct TiffCalsNotes {
    public byte* srcdocid;
    public byte* dstdocis;
    public byte* txtfileid;
    public byte* figid;
    public byte* scrgph;
    public byte* doccls;
    public byte* notes;
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct CodecContext {
    public byte* codeCursor;
    public byte* lineCursor;
    public uint codeBytesLeft;
    public uint lineBytes;
    public uint linePixels;
    public byte* userData;
    public uint lastLineOfStrip;
    public BITMAPINFOHEADER lineFormat;
    public uint bytesPerLine;
    public uint compression;
    public uint row;
    public IntPtr bufferBlock;
    public long stream;
    public uint fillOrder;
    public uint byteOrder;
    public uint bufferFilePos;
    public uint codeBufferSize;
    public uint dataEnd;
    public uint strip;
    public uint stripPos;
    public uint stripCount;
    public uint rowsPerStrip;
    public uint stripLastRow;
    public IntPtr stripOffsets;
    public uint stripOffsetsType;
    public IntPtr stripByteCounts;
    public IntPtr lineCallback;
    public byte* lineBuffer;
    public uint lineBufferSize;
    public uint bitsPerSample;
    public uint jpegProcess;
    public uint tileWidth;
    public uint tileLength;
    public uint tilesAcross;
    public uint tilesDown;
    public uint planarConfiguration;
    public uint restartInterval;
    public IntPtr quantisationTables;
    public IntPtr acTables;
    public IntPtr dcTables;
    public fixed uint subSampling[2];
    public fixed uint referenceBlackWhite[12];
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct TiffPageGeometry {
    public int kind;
    public int width;
    public int height;
    public uint rowBytes;
    public ushort planes;
    public ushort bitsPerPlane;
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct TiffDecodeQuality {
    public uint isCounted;
    public uint rows;
    public uint decodedRows;
    public uint badRows;
    public uint longestBadRun;
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct TiffFaxQuality {
    public uint badRows;
    public uint longestBadRun;
    public uint cleanFaxData;
}

[StructLayout(LayoutKind.Sequential, Pack = 1)]
public unsafe struct TiffFileInformation {
    public fixed byte path[260];
    public ushort byteOrder;
    public uint pageCount;
    public uint firstDirectoryOffset;
}

[StructLayout(LayoutKind.Sequential, Pack = 2)]
public unsafe struct TiffIocaDescription {
    public uint segmentName;
    public ushort objectType;
    public ushort horizontalResolution;
    public ushort verticalResolution;
    public ushort width;
    public ushort height;
    public ushort encoding;
    public ushort dataLength;
    public uint dataOffset;
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct TiffDecodeLineContext {
    public IntPtr deviceContext;
    public IntPtr bitmap;
    public IntPtr dib;
    public byte* pixelBits;
    public uint height;
    public uint lineBytes;
    public uint strideOrColourUse;
    public uint sampleShift;
    public uint orientation;
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct TiffEncodeLineContext {
    public IntPtr deviceContext;
    public IntPtr bitmap;
    public byte* unused;
    public byte* bitmapInfo;
    public byte* pixelBits;
    public uint height;
    public uint lineBytes;
    public uint strideOrColourUse;
    public uint sampleShift;
    public uint invert;
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct TiffLoadDialogRequest {
    public IntPtr file;
    public uint page;
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct TiffNote {
    public uint kind;
    public int left;
    public int top;
    public int right;
    public int bottom;
    public int letterHeight;
    public uint textBytes;
    public byte* text;
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct TiffRawFax {
    public uint width;
    public uint scheme;
    public uint fillOrder;
    public uint alignment;
    public uint horizontalDpi;
    public uint verticalDpi;
    public uint rows;
    public uint badRows;
    public uint longestBadRun;
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct TiffSavePicture {
    public TiffPageGeometry geometry;
    public byte* bits;
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct TiffSaveDialogOptions {
    public fixed byte description[100];
    public fixed byte artist[100];
    public uint selector;
    public uint fillOrder;
    public uint photometric;
    public uint colourCount;
}

[StructLayout(LayoutKind.Sequential, Pack = 8)]
public unsafe struct TiffTextPageSettings {
    public fixed byte path[256];
    public uint pageWidth;
    public uint pageHeight;
    public uint leftMargin;
    public uint topMargin;
    public fixed byte faceName[128];
    public uint fontSize;
    public uint horizontalDpi;
    public uint verticalDpi;
    public uint lineSpacing;
    public fixed uint tabStops[16];
    public uint flags;
    public byte* font;
}

[UnmanagedFunctionPointer(CallingConvention.Cdecl)]
public unsafe delegate uint TiffAnnoCreateOnLoad(byte* bytes, uint count);

[UnmanagedFunctionPointer(CallingConvention.Cdecl)]
public unsafe delegate uint TiffAnnoGetSaveCount(uint annotation);

[UnmanagedFunctionPointer(CallingConvention.Cdecl)]
public unsafe delegate int TiffAnnoGetSaveData(uint annotation, byte* buffer, uint count);

[UnmanagedFunctionPointer(CallingConvention.Cdecl)]
public unsafe delegate uint TiffAnnoGetSaveCountOnPage(uint annotation, int annotationPage);

[UnmanagedFunctionPointer(CallingConvention.Cdecl)]
public unsafe delegate int TiffAnnoGetSaveDataExt(uint annotation, byte* buffer, uint count, int annotationPage, int filePage);

[UnmanagedFunctionPointer(CallingConvention.Cdecl)]
public unsafe delegate IntPtr TiffLineCallback(byte* line, uint row, byte* userData);

[UnmanagedFunctionPointer(CallingConvention.Cdecl)]
public unsafe delegate int TiffProgress(uint total, uint done, ulong user);

public static unsafe class Tiff {
    const string LIBRARY = "TIFF.DLL";
    const UnmanagedType UTF8 = (UnmanagedType)48;

    public const uint TIFF_ANNOTATION_REPLACE = 1;
    public const uint TIFF_ANNOTATION_APPEND = 2;
    public const uint TIFF_SMOOTH = 1;
    public const uint TIFF_DITHER_THRESHOLD = 0;
    public const uint TIFF_DITHER_ORDERED = 1;
    public const uint TIFF_DITHER_DIFFUSION = 2;
    public const uint TIFF_FAX_CLEAN = 0;
    public const uint TIFF_FAX_REGENERATED = 1;
    public const uint TIFF_FAX_UNCLEAN = 2;
    public const uint T_READ = 0;
    public const uint T_APPEND = 2;
    public const uint T_CREAT = 3;
    public const uint TIFF_MAX_PAGES = 100000;
    public const uint TIFF_ALL_PAGES = 32768;
    public const uint TIFF_NOTE_TEXT = 84;
    public const uint TIFF_NOTE_FRAMED = 70;
    public const uint TIFF_PATHS_ANSI = 0;
    public const uint TIFF_PATHS_UTF8 = 65001;
    public const uint TIFF_RAW_FIND_OUT = 0;
    public const uint TIFF_RAW_HUFFMAN = 2;
    public const uint TIFF_RAW_GROUP3 = 3;
    public const uint TIFF_RAW_GROUP4 = 4;
    public const uint TIFF_RAW_GROUP3_TWO_DIMENSIONAL = 65539;
    public const uint TIFF_RAW_GROUP3_WITHOUT_EOLS = 131075;
    public const uint TIFF_RAW_ALIGNED = 1;
    public const uint TIFF_RAW_UNALIGNED = 2;
    public const uint TIFF_FORMAT_ANY = 0;
    public const uint TIFF_FORMAT_TIFF = 1;
    public const uint TIFF_FORMAT_CALS = 2;
    public const uint TIFF_TURN_90 = 1;
    public const uint TIFF_TURN_180 = 2;
    public const uint TIFF_TURN_270 = 3;
    public const uint TIFF_TRUE_SIZE = 4;
    public const uint TIFF_FIT = 8;
    public const uint TIFF_INVERT_SCREEN = 32;
    public const uint TIFF_GREY_SCREEN = 64;
    public const uint STREAM_FAILED = 4294967295;
    public const uint TIFF_TEXT_TAB_STOPS = 16;
    public const uint TIFF_TEXT_DONE = 0;
    public const uint TIFF_TEXT_ARGUMENTS = 1;
    public const uint TIFF_TEXT_PAGE_LIMIT = 2;
    public const uint TIFF_TEXT_NO_FILE = 3;
    public const uint TIFF_TEXT_NO_PAGE = 4;
    public const uint TIFF_TEXT_BITMAP = 10;
    public const uint TIFF_TEXT_DIB = 11;
    public const uint TIFF_TEXT_INCHES = 1;
    public const uint TIFF_TEXT_ITALIC = 2;
    public const uint TIFF_TEXT_BOLD = 4;
    public const uint TIFF_INTEL = 18761;
    public const uint TIFF_MOTOROLA = 19789;
    public const uint TIFF_ERROR_NONE = 0;
    public const uint TIFF_ERROR_MEMORY = 1;
    public const uint TIFF_ERROR_CANNOT_OPEN = 2;
    public const uint TIFF_ERROR_INDEX = 3;
    public const uint TIFF_ERROR_STRIP_INDEX = 4;
    public const uint TIFF_ERROR_END_OF_FILE = 5;
    public const uint TIFF_ERROR_INPUT_OUTPUT = 6;
    public const uint TIFF_ERROR_PATH_TOO_LONG = 7;
    public const uint TIFF_ERROR_NOT_TIFF = 8;
    public const uint TIFF_ERROR_BAD_TAG = 9;
    public const uint TIFF_ERROR_TAGS_MISSING = 10;
    public const uint TIFF_ERROR_COMPRESSION = 11;
    public const uint TIFF_ERROR_BAD_CODE = 12;
    public const uint TIFF_ERROR_TAG_NOT_DEFINED = 13;
    public const uint TIFF_ERROR_BYTE_ORDER = 14;
    public const uint TIFF_ERROR_FILL_ORDER = 15;
    public const uint TIFF_ERROR_COLOUR_FORMAT = 16;
    public const uint TIFF_ERROR_COLOURS = 17;
    public const uint TIFF_ERROR_NOT_CALS = 18;
    public const uint TIFF_ERROR_EOFB_MISSING = 19;
    public const uint TIFF_ERROR_EOFB_EARLY = 20;
    public const uint TIFF_ERROR_WIDTH = 21;
    public const uint TIFF_ERROR_JPEG_LIBRARY = 22;
    public const uint TIFF_ERROR_JPEG_FUNCTION = 23;
    public const uint TIFF_ERROR_CLIPBOARD_FORMAT = 24;
    public const uint TIFF_ERROR_CLIPBOARD_OPEN = 25;
    public const uint TIFF_ERROR_CLIPBOARD_BITMAP = 26;
    public const uint TIFF_ERROR_NOT_LOADED = 27;
    public const uint TIFF_ERROR_DIALOG_LIBRARY = 28;
    public const uint TIFF_ERROR_PARAMETERS = 29;
    public const uint TIFF_ERROR_BAD_DIB = 30;
    public const uint TIFF_ERROR_NOT_PIW = 31;
    public const uint TIFF_ERROR_DEPTH = 32;
    public const uint TIFF_ERROR_BUFFER = 33;
    public const uint TIFF_ERROR_HANDLE = 34;
    public const uint TIFF_ERROR_MIXED_BYTE_ORDERS = 35;
    public const uint TIFF_ERROR_TOO_LARGE = 36;
    public const uint TIFF_ERROR_LAST = 37;
    public const uint TIFF_ERROR_OLD_JPEG_PAGE = 9990;
    public const uint TIFF_ERROR_JPEG_PAGE = 9991;
    public const uint TIFF_SAVE_STORED = 201;
    public const uint TIFF_SAVE_PACKBITS = 202;
    public const uint TIFF_SAVE_LZW = 203;
    public const uint TIFF_SAVE_LZW_DIFFERENCES = 204;
    public const uint TIFF_SAVE_MODIFIED_HUFFMAN = 205;
    public const uint TIFF_SAVE_GROUP3 = 206;
    public const uint TIFF_SAVE_GROUP3_TWO_DIMENSIONAL = 207;
    public const uint TIFF_SAVE_GROUP4 = 208;
    public const uint TIFF_SAVE_JPEG = 209;
    public const uint TIFF_SAVE_OLD_JPEG = 210;
    public const uint TIFF_SAMPLES_GREY_16 = 256;
    public const uint TIFF_SAMPLES_GREY_12 = 512;
    public const uint TIFF_SAMPLES_CMYK = 768;
    public const uint TIFF_SAMPLES_YCBCR = 1024;
    public const uint TIFF_MSB_FIRST = 1;
    public const uint TIFF_LSB_FIRST = 2;
    public const uint TIFF_VERSION_MAJOR = 12;
    public const uint TIFF_VERSION_MINOR = 8;
    public const uint TIFF_VERSION_PATCH = 0;
    public const uint TIFF_VERSION_NUMBER = 120800;

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int LongRead(long stream, uint type, uint count, byte* buffer, uint byteOrder, uint fillOrder);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int LongWrite(long stream, uint type, uint count, byte* buffer, uint byteOrder, uint fillOrder);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint SetTiffDllFileHandle(uint count);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint mClose(long stream);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint mRead(long stream, byte* buffer, uint count);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint mSeek(long stream, uint offset, int origin);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint mSize(long stream);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint mTell(long stream);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint mWrite(long stream, byte* buffer, uint count);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint SetTiffError(uint code);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint TiffError();

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint TiffErrorDetail(byte* buffer, uint size);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern byte* TiffErrorString(byte* buffer, int code);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int CloseTiffFile(IntPtr file);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int DropTiffImage(IntPtr file, uint page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr GetMemoryTiffHandle(IntPtr file);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint GetNumberOfImagesInTiffFile([MarshalAs(UTF8)] string path);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int GetTiffFileInfo(IntPtr file, TiffFileInformation* info);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint GetTiffPathCodePage();

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern void GetTiffVersion(byte* buffer, int size);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint GetTiffVersionNumber();

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int IsTiffImageRegistered(IntPtr file, uint page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int ModiTiffFileInfo(IntPtr file, [MarshalAs(UTF8)] string path, uint byteOrder);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint NumberOfTiffImages(IntPtr file, uint kind);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr OpenTiffFile([MarshalAs(UTF8)] string path, uint mode);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr OpenTiffInMemory(IntPtr block, uint size, uint mode);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SetTiffPathCodePage(uint codePage);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint GetTiffColorSpace([MarshalAs(UTF8)] string path, int page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint GetTiffDimensions(IntPtr file, uint page, BITMAPINFOHEADER* header);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int GetTiffImage(IntPtr file, uint page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint GetTiffImageDPI(IntPtr file, uint page, uint* @out);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int GetTiffImageInfo(IntPtr file, uint page, uint tag, byte* @out);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int GetTiffImageInfoBuffer(IntPtr file, uint page, uint tag, IntPtr* outBlock, uint* outType, uint* outCount);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr GetTiffImagePalette([MarshalAs(UTF8)] string path, uint page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr GetTiffRGBQuad(IntPtr file, uint page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint GetTiffRowsPerStrip(IntPtr file, uint page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint GetTiffStripCount(IntPtr file, uint page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int IsRequiredTag(uint tag);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint DefineGeneralTags(IntPtr file, uint page, TiffPageGeometry* geometry);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint DefineSpecialTags(IntPtr file, uint page, uint kind);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int DefineTiffImage(IntPtr file);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int DefineTiffImageInfo(IntPtr file, uint page, uint tag, uint type, ulong value);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int DefineTiffImageInfoBuffer(IntPtr file, uint page, uint tag, byte* values, uint type, uint count);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint SetTiffImageDPI(IntPtr file, uint page, uint dpi);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint WriteTiffImageDirectory(IntPtr file, uint page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int DecodeTiffImage(IntPtr file, uint page, uint firstStrip, uint rowCount, byte* userData, TiffLineCallback lineCallback);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int EncodeTiffImage(IntPtr file, uint page, byte* userData, TiffLineCallback lineCallback);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint FillCodeBuffer(CodecContext* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint FillDataBuffer(CodecContext* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint FlushCodeBuffer(CodecContext* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint FlushDataBuffer(CodecContext* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint InitDecodeBuffers(CodecContext* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint InitEncodeBuffers(CodecContext* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int DecodeCcittImage(long stream, uint width, uint rows, uint compression, byte* userData, TiffLineCallback lineCallback);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int DecodeCcittImageFrom(long stream, uint offset, uint width, uint rows, uint compression, uint fillOrder, uint byteOrder, byte* userData, TiffLineCallback lineCallback);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int DecodeMMRImage(long stream, uint offset, uint width, uint rows, uint compression, uint fillOrder, uint byteOrder, byte* userData, TiffLineCallback lineCallback);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int EncodeCcittImage(long stream, uint width, uint rows, uint compression, byte* userData, TiffLineCallback lineCallback);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int EncodeCcittImageTo(long stream, uint width, uint rows, uint fillOrder, uint byteOrder, uint compression, byte* userData, TiffLineCallback lineCallback);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int EncodeMMRImage(long stream, uint width, uint rows, uint compression, byte* userData, TiffLineCallback lineCallback);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SetKfactor(int k);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DllFillCcittLine(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DllFillMonoTiffLine(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DllFillTiffLine(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DllFillTiffLineBitmap24Bit(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DllFillTiffLineDIB(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DllFillTiffLineDIB24Bit(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DllFlushTiffLine(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DllFlushTiffLine24(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DllFlushTiffLine24DIB(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DllFlushTiffLineDIB(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr LoadNonRGBTiffIntoDIB([MarshalAs(UTF8)] string path, uint page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr LoadTiffChainIntoBitmap(IntPtr file, uint page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr LoadTiffChainIntoDIB(IntPtr file, uint page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr LoadTiffFileIntoBitmap([MarshalAs(UTF8)] string path, uint page, int dialog);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int LoadTiffFileIntoClipboard([MarshalAs(UTF8)] string path, uint page, int dialog);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr LoadTiffFromMemory(byte* bytes, uint size, uint page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr LoadTiffIntoBitmap([MarshalAs(UTF8)] string path, uint page, int dialog);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr LoadTiffIntoDIB([MarshalAs(UTF8)] string path, uint page, int dialog);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int AppendRawFaxToTiff([MarshalAs(UTF8)] string path, byte* bytes, uint size, TiffRawFax* fax);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int GetTiffDecodeQuality(TiffDecodeQuality* quality);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SetTiffFaxQuality(TiffFaxQuality* quality);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint FindBlackPage([MarshalAs(UTF8)] string path, int threshold, int firstPage, byte* colour);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint FindBlankPage([MarshalAs(UTF8)] string path, int threshold, int firstPage, byte* colour);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint GetTiffJpegQuality();

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveBitmapInCcittFile([MarshalAs(UTF8)] string path, IntPtr bitmap, uint type);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveBitmapInTiffFile([MarshalAs(UTF8)] string path, IntPtr bitmap, uint selector, int dialog);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveBitmapInTiffFileExt([MarshalAs(UTF8)] string path, IntPtr bitmap, uint selector, int dialog, uint fillOrder);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveBitmapInTiffFormat([MarshalAs(UTF8)] string path, IntPtr bitmap, uint selector, int dialog);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveDIBInTiffFile([MarshalAs(UTF8)] string path, IntPtr dib, uint selector, int dialog);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveDIBInTiffFileExt([MarshalAs(UTF8)] string path, IntPtr dib, uint selector, int dialog, uint fillOrder);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveDIBInTiffFormat([MarshalAs(UTF8)] string path, IntPtr dib, uint selector, int dialog);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveNonRGBDIBInTiffFile([MarshalAs(UTF8)] string path, IntPtr dib);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveTiffFileFromClipboard([MarshalAs(UTF8)] string path, uint selector, int dialog);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr SaveTiffToMemory(IntPtr memory, IntPtr dib, uint selector, uint fillOrder);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SetTiffJpegQuality(uint quality);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int AddTiffTagToImage([MarshalAs(UTF8)] string path, int page, uint tag, uint type, byte* values, uint count);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern byte* AppendCCITTImageFile([MarshalAs(UTF8)] string rawPath, [MarshalAs(UTF8)] string tiffPath, uint page, int offset);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int CopyTiffImage(IntPtr source, uint page, IntPtr destination);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int CopyTiffImageInFile([MarshalAs(UTF8)] string sourcePath, uint page, [MarshalAs(UTF8)] string destinationPath, uint mode);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int CutTiffFile([MarshalAs(UTF8)] string sourcePath, [MarshalAs(UTF8)] string nameBase, int pageCount, TiffProgress callback, ulong user);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int DeleteTiffImage([MarshalAs(UTF8)] string path, int page, int inPlace);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int DeleteTiffTagOfImage([MarshalAs(UTF8)] string path, int page, uint tag);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int InsertTiffImage([MarshalAs(UTF8)] string path, IntPtr dib, uint selector, int dialog, uint fillOrder, int position, int inPlace, int replace);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int MergeTiffFiles([MarshalAs(UTF8)] string destinationPath, [MarshalAs(UTF8)] string sourcePath, TiffProgress callback, ulong user);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int ReorderTiffFile([MarshalAs(UTF8)] string path);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SplitTiffFile([MarshalAs(UTF8)] string sourcePath, [MarshalAs(UTF8)] string destinationPath, int firstPage, TiffProgress callback, ulong user);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int UpdatePageNumbers([MarshalAs(UTF8)] string path, uint total);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int UpdatePageNumbersInMemory(IntPtr file, uint total);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int ConvertTiffToCiscoFormat([MarshalAs(UTF8)] string path);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveDIBInBicomTiffFile([MarshalAs(UTF8)] string path, IntPtr dib);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveDIBInDialogicTiffFile([MarshalAs(UTF8)] string path, IntPtr dib, uint selector);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveDIBInGammaTiffFile([MarshalAs(UTF8)] string path, IntPtr dib, uint selector, int dialog, uint fillOrder);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveDIBInNMSTiffFile([MarshalAs(UTF8)] string path, IntPtr dib);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveTiffForCiscoFormat([MarshalAs(UTF8)] string path, IntPtr dib, uint selector, int dialog, uint fillOrder);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DefineCALSHead(TiffCalsInformation* information, TiffCalsNotes* notes);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DllFillCALSLineDIB(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DllFlushCALSLineDIB(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern byte* FindCALSRecord([MarshalAs(UTF8)] string header, [MarshalAs(UTF8)] string keyword);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr LoadCALSIntoDIB([MarshalAs(UTF8)] string path, int showInformation);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr ReadCALSHead([MarshalAs(UTF8)] string path);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int ReadCALSInfo([MarshalAs(UTF8)] string path, TiffCalsInformation* information);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr ReadCALSNote([MarshalAs(UTF8)] string path, TiffCalsNotes* notes);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveDIBInCALSFormat([MarshalAs(UTF8)] string path, IntPtr dib, TiffCalsNotes* notes, uint* orientation, int edit);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int EditCALSHead(IntPtr parent, [MarshalAs(UTF8)] string path, byte* header);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int ShowCALSInfo(IntPtr parent, [MarshalAs(UTF8)] string path);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int DecompressCALSToScreen(IntPtr window, IntPtr dc, [MarshalAs(UTF8)] string path, int* zoom, uint flags);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int DecompressToScreen(uint format, IntPtr window, IntPtr dc, [MarshalAs(UTF8)] string path, uint page, int* zoom, uint flags);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushCALS180LineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushCALS270LineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushCALS90LineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushCALSLineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushMonoLineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushMonoRot18LineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushMonoRot27LineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushMonoRotLineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushRGB24LineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushRGB24Rot18LineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushRGB24Rot27LineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushRGB24RotLineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushRGBLineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushRGBRot18LineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushRGBRot27LineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr FlushRGBRotLineToScreen(byte* line, uint row, byte* context);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int ReadIOCAHeader(IntPtr file, TiffIocaDescription* description);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int ReadMODCAHeader(IntPtr file, TiffIocaDescription* description);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int WriteIOCAHeader(IntPtr file, TiffIocaDescription* description);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int WriteIOCATail(IntPtr file);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int WriteMODCAHeader(IntPtr file, TiffIocaDescription* description);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int WriteMODCATail(IntPtr file);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr CropDIB(IntPtr dib, int left, int top, int width, int height);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr CropStretchDIB(IntPtr dib, RECT* part, int width, int height, uint flags);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr StretchDIB(IntPtr dib, int width, int height, uint flags);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr RotateDIB(IntPtr dib, int quarters);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DitherDIB(IntPtr dib, uint method, uint threshold);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr BitmapFormOverlay([MarshalAs(UTF8)] string formPath, TiffTextPageSettings* settings);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr BitmapTextOverlay(IntPtr bitmap, int x, int y, [MarshalAs(UTF8)] string text, [MarshalAs(UTF8)] string faceName, uint fontSize, uint horizontalDpi, uint verticalDpi);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint CreateBMPFaxPageFromASCII(TiffTextPageSettings* settings, uint pageLimit, IntPtr* pages, uint* error);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint CreateDIBFaxPageFromASCII(TiffTextPageSettings* settings, uint pageLimit, IntPtr* pages, uint* error);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint CreateFaxPageFromASCII(TiffTextPageSettings* settings, uint pageLimit, IntPtr* pages, uint kind, IntPtr bitmap, uint* error);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint CreateMultiPageFromASCII(TiffTextPageSettings* settings, uint pageLimit, IntPtr* pages, uint kind, IntPtr bitmap, uint startY, uint* error);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DIBFormOverlay([MarshalAs(UTF8)] string formPath, TiffTextPageSettings* settings);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint DIBFormOverlayExt([MarshalAs(UTF8)] string formPath, TiffTextPageSettings* settings, IntPtr* pages, uint pageLimit, uint startY);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DIBTextOverlay(IntPtr dib, int x, int y, [MarshalAs(UTF8)] string text, [MarshalAs(UTF8)] string faceName, uint fontSize);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern uint LoadAnnotationFromTiff([MarshalAs(UTF8)] string path, uint tag);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveAnnotationIntoTiff([MarshalAs(UTF8)] string path, uint annotation, uint tag);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int SaveAnnotationIntoTiffExt([MarshalAs(UTF8)] string path, uint annotation, uint tag, int mode, int annotationPage, int filePage);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int AddTiffNote([MarshalAs(UTF8)] string path, uint page, TiffNote* note);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int DeleteTiffNote([MarshalAs(UTF8)] string path, uint page, uint index);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int DrawTiffNotes(IntPtr deviceContext, IntPtr file, uint page, RECT* picture);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern IntPtr DrawTiffNotesOnDIB(IntPtr dib, IntPtr file, uint page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int EditTiffNote(IntPtr window, TiffNote* note, byte* text, uint textSize);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int GetTiffNote(IntPtr file, uint page, uint index, TiffNote* note, byte* text, uint textSize);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int GetTiffNoteCount(IntPtr file, uint page);

    [DllImport(LIBRARY, CallingConvention = CallingConvention.Cdecl, ExactSpelling = true)]
    public static extern int ReplaceTiffNote([MarshalAs(UTF8)] string path, uint page, uint index, TiffNote* note);

    [DllImport("kernel32.dll")]
    public static extern IntPtr GlobalAlloc(uint flags, ulong bytes);

    [DllImport("kernel32.dll")]
    public static extern byte* GlobalLock(IntPtr block);

    [DllImport("kernel32.dll")]
    public static extern int GlobalUnlock(IntPtr block);

    [DllImport("kernel32.dll")]
    public static extern ulong GlobalSize(IntPtr block);

    [DllImport("kernel32.dll")]
    public static extern IntPtr GlobalFree(IntPtr block);
}

}
