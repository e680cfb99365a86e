"""Made by bindings/make-bindings. The contracts are in the headers and in the reference."""
from ctypes import (CFUNCTYPE, POINTER, Structure, c_char, c_char_p, c_int32, c_int64, c_ssize_t,
                    c_uint8, c_uint16, c_uint32, c_uint64, c_void_p)

TIFF_ANNOTATION_REPLACE = 1
TIFF_ANNOTATION_APPEND = 2
TIFF_SMOOTH = 1
TIFF_DITHER_THRESHOLD = 0
TIFF_DITHER_ORDERED = 1
TIFF_DITHER_DIFFUSION = 2
TIFF_FAX_CLEAN = 0
TIFF_FAX_REGENERATED = 1
TIFF_FAX_UNCLEAN = 2
T_READ = 0
T_APPEND = 2
T_CREAT = 3
TIFF_MAX_PAGES = 100000
TIFF_ALL_PAGES = 32768
TIFF_NOTE_TEXT = 84
TIFF_NOTE_FRAMED = 70
TIFF_PATHS_ANSI = 0
TIFF_PATHS_UTF8 = 65001
TIFF_RAW_FIND_OUT = 0
TIFF_RAW_HUFFMAN = 2
TIFF_RAW_GROUP3 = 3
TIFF_RAW_GROUP4 = 4
TIFF_RAW_GROUP3_TWO_DIMENSIONAL = 65539
TIFF_RAW_GROUP3_WITHOUT_EOLS = 131075
TIFF_RAW_ALIGNED = 1
TIFF_RAW_UNALIGNED = 2
TIFF_FORMAT_ANY = 0
TIFF_FORMAT_TIFF = 1
TIFF_FORMAT_CALS = 2
TIFF_TURN_90 = 1
TIFF_TURN_180 = 2
TIFF_TURN_270 = 3
TIFF_TRUE_SIZE = 4
TIFF_FIT = 8
TIFF_INVERT_SCREEN = 32
TIFF_GREY_SCREEN = 64
STREAM_FAILED = 4294967295
TIFF_TEXT_TAB_STOPS = 16
TIFF_TEXT_DONE = 0
TIFF_TEXT_ARGUMENTS = 1
TIFF_TEXT_PAGE_LIMIT = 2
TIFF_TEXT_NO_FILE = 3
TIFF_TEXT_NO_PAGE = 4
TIFF_TEXT_BITMAP = 10
TIFF_TEXT_DIB = 11
TIFF_TEXT_INCHES = 1
TIFF_TEXT_ITALIC = 2
TIFF_TEXT_BOLD = 4
TIFF_INTEL = 18761
TIFF_MOTOROLA = 19789
TIFF_ERROR_NONE = 0
TIFF_ERROR_MEMORY = 1
TIFF_ERROR_CANNOT_OPEN = 2
TIFF_ERROR_INDEX = 3
TIFF_ERROR_STRIP_INDEX = 4
TIFF_ERROR_END_OF_FILE = 5
TIFF_ERROR_INPUT_OUTPUT = 6
TIFF_ERROR_PATH_TOO_LONG = 7
TIFF_ERROR_NOT_TIFF = 8
TIFF_ERROR_BAD_TAG = 9
TIFF_ERROR_TAGS_MISSING = 10
TIFF_ERROR_COMPRESSION = 11
TIFF_ERROR_BAD_CODE = 12
TIFF_ERROR_TAG_NOT_DEFINED = 13
TIFF_ERROR_BYTE_ORDER = 14
TIFF_ERROR_FILL_ORDER = 15
TIFF_ERROR_COLOUR_FORMAT = 16
TIFF_ERROR_COLOURS = 17
TIFF_ERROR_NOT_CALS = 18
TIFF_ERROR_EOFB_MISSING = 19
TIFF_ERROR_EOFB_EARLY = 20
TIFF_ERROR_WIDTH = 21
TIFF_ERROR_JPEG_LIBRARY = 22
TIFF_ERROR_JPEG_FUNCTION = 23
TIFF_ERROR_CLIPBOARD_FORMAT = 24
TIFF_ERROR_CLIPBOARD_OPEN = 25
TIFF_ERROR_CLIPBOARD_BITMAP = 26
TIFF_ERROR_NOT_LOADED = 27
TIFF_ERROR_DIALOG_LIBRARY = 28
TIFF_ERROR_PARAMETERS = 29
TIFF_ERROR_BAD_DIB = 30
TIFF_ERROR_NOT_PIW = 31
TIFF_ERROR_DEPTH = 32
TIFF_ERROR_BUFFER = 33
TIFF_ERROR_HANDLE = 34
TIFF_ERROR_MIXED_BYTE_ORDERS = 35
TIFF_ERROR_TOO_LARGE = 36
TIFF_ERROR_LAST = 37
TIFF_ERROR_OLD_JPEG_PAGE = 9990
TIFF_ERROR_JPEG_PAGE = 9991
TIFF_SAVE_STORED = 201
TIFF_SAVE_PACKBITS = 202
TIFF_SAVE_LZW = 203
TIFF_SAVE_LZW_DIFFERENCES = 204
TIFF_SAVE_MODIFIED_HUFFMAN = 205
TIFF_SAVE_GROUP3 = 206
TIFF_SAVE_GROUP3_TWO_DIMENSIONAL = 207
TIFF_SAVE_GROUP4 = 208
TIFF_SAVE_JPEG = 209
TIFF_SAVE_OLD_JPEG = 210
TIFF_SAMPLES_GREY_16 = 256
TIFF_SAMPLES_GREY_12 = 512
TIFF_SAMPLES_CMYK = 768
TIFF_SAMPLES_YCBCR = 1024
TIFF_MSB_FIRST = 1
TIFF_LSB_FIRST = 2
TIFF_VERSION_MAJOR = 12
TIFF_VERSION_MINOR = 8
TIFF_VERSION_PATCH = 0
TIFF_VERSION_NUMBER = 120800

TiffAnnoCreateOnLoad = CFUNCTYPE(c_uint32, c_void_p, c_uint32)
TiffAnnoGetSaveCount = CFUNCTYPE(c_uint32, c_uint32)
TiffAnnoGetSaveData = CFUNCTYPE(c_int32, c_uint32, c_void_p, c_uint32)
TiffAnnoGetSaveCountOnPage = CFUNCTYPE(c_uint32, c_uint32, c_int32)
TiffAnnoGetSaveDataExt = CFUNCTYPE(c_int32, c_uint32, c_void_p, c_uint32, c_int32, c_int32)
TiffLineCallback = CFUNCTYPE(c_ssize_t, c_void_p, c_uint32, c_void_p)
TiffProgress = CFUNCTYPE(c_int32, c_uint32, c_uint32, c_uint64)


class BITMAPINFOHEADER(Structure):
    _pack_ = 8
    _fields_ = [
        ("biSize", c_uint32),
        ("biWidth", c_int32),
        ("biHeight", c_int32),
        ("biPlanes", c_uint16),
        ("biBitCount", c_uint16),
        ("biCompression", c_uint32),
        ("biSizeImage", c_uint32),
        ("biXPelsPerMeter", c_int32),
        ("biYPelsPerMeter", c_int32),
        ("biClrUsed", c_uint32),
        ("biClrImportant", c_uint32),
    ]


class RECT(Structure):
    _pack_ = 8
    _fields_ = [
        ("left", c_int32),
        ("top", c_int32),
        ("right", c_int32),
        ("bottom", c_int32),
    ]


class TiffCalsInformation(Structure):
    _pack_ = 8
    _fields_ = [
        ("rasterType", c_uint32),
        ("orientation", c_uint32 * 2),
        ("pixelsPerLine", c_uint32),
        ("lines", c_uint32),
        ("dotsPerInch", c_uint32),
    ]


class TiffCalsNotes(Structure):
    _pack_ = 8
    _fields_ = [
        ("srcdocid", c_char_p),
        ("dstdocis", c_char_p),
        ("txtfileid", c_char_p),
        ("figid", c_char_p),
        ("scrgph", c_char_p),
        ("doccls", c_char_p),
        ("notes", c_char_p),
    ]


class CodecContext(Structure):
    _pack_ = 8
    _fields_ = [
        ("codeCursor", POINTER(c_uint8)),
        ("lineCursor", POINTER(c_uint8)),
        ("codeBytesLeft", c_uint32),
        ("lineBytes", c_uint32),
        ("linePixels", c_uint32),
        ("userData", c_void_p),
        ("lastLineOfStrip", c_uint32),
        ("lineFormat", BITMAPINFOHEADER),
        ("bytesPerLine", c_uint32),
        ("compression", c_uint32),
        ("row", c_uint32),
        ("bufferBlock", c_void_p),
        ("stream", c_int64),
        ("fillOrder", c_uint32),
        ("byteOrder", c_uint32),
        ("bufferFilePos", c_uint32),
        ("codeBufferSize", c_uint32),
        ("dataEnd", c_uint32),
        ("strip", c_uint32),
        ("stripPos", c_uint32),
        ("stripCount", c_uint32),
        ("rowsPerStrip", c_uint32),
        ("stripLastRow", c_uint32),
        ("stripOffsets", c_void_p),
        ("stripOffsetsType", c_uint32),
        ("stripByteCounts", c_void_p),
        ("lineCallback", TiffLineCallback),
        ("lineBuffer", POINTER(c_uint8)),
        ("lineBufferSize", c_uint32),
        ("bitsPerSample", c_uint32),
        ("jpegProcess", c_uint32),
        ("tileWidth", c_uint32),
        ("tileLength", c_uint32),
        ("tilesAcross", c_uint32),
        ("tilesDown", c_uint32),
        ("planarConfiguration", c_uint32),
        ("restartInterval", c_uint32),
        ("quantisationTables", c_void_p),
        ("acTables", c_void_p),
        ("dcTables", c_void_p),
        ("subSampling", c_uint32 * 2),
        ("referenceBlackWhite", c_uint32 * 12),
    ]


class TiffPageGeometry(Structure):
    _pack_ = 8
    _fields_ = [
        ("kind", c_int32),
        ("width", c_int32),
        ("height", c_int32),
        ("rowBytes", c_uint32),
        ("planes", c_uint16),
        ("bitsPerPlane", c_uint16),
    ]


class TiffDecodeQuality(Structure):
    _pack_ = 8
    _fields_ = [
        ("isCounted", c_uint32),
        ("rows", c_uint32),
        ("decodedRows", c_uint32),
        ("badRows", c_uint32),
        ("longestBadRun", c_uint32),
    ]


class TiffFaxQuality(Structure):
    _pack_ = 8
    _fields_ = [
        ("badRows", c_uint32),
        ("longestBadRun", c_uint32),
        ("cleanFaxData", c_uint32),
    ]


class TiffFileInformation(Structure):
    _pack_ = 1
    _fields_ = [
        ("path", c_char * 260),
        ("byteOrder", c_uint16),
        ("pageCount", c_uint32),
        ("firstDirectoryOffset", c_uint32),
    ]


class TiffIocaDescription(Structure):
    _pack_ = 2
    _fields_ = [
        ("segmentName", c_uint32),
        ("objectType", c_uint16),
        ("horizontalResolution", c_uint16),
        ("verticalResolution", c_uint16),
        ("width", c_uint16),
        ("height", c_uint16),
        ("encoding", c_uint16),
        ("dataLength", c_uint16),
        ("dataOffset", c_uint32),
    ]


class TiffDecodeLineContext(Structure):
    _pack_ = 8
    _fields_ = [
        ("deviceContext", c_void_p),
        ("bitmap", c_void_p),
        ("dib", c_void_p),
        ("pixelBits", POINTER(c_uint8)),
        ("height", c_uint32),
        ("lineBytes", c_uint32),
        ("strideOrColourUse", c_uint32),
        ("sampleShift", c_uint32),
        ("orientation", c_uint32),
    ]


class TiffEncodeLineContext(Structure):
    _pack_ = 8
    _fields_ = [
        ("deviceContext", c_void_p),
        ("bitmap", c_void_p),
        ("unused", c_void_p),
        ("bitmapInfo", c_void_p),
        ("pixelBits", POINTER(c_uint8)),
        ("height", c_uint32),
        ("lineBytes", c_uint32),
        ("strideOrColourUse", c_uint32),
        ("sampleShift", c_uint32),
        ("invert", c_uint32),
    ]


class TiffLoadDialogRequest(Structure):
    _pack_ = 8
    _fields_ = [
        ("file", c_void_p),
        ("page", c_uint32),
    ]


class TiffNote(Structure):
    _pack_ = 8
    _fields_ = [
        ("kind", c_uint32),
        ("left", c_int32),
        ("top", c_int32),
        ("right", c_int32),
        ("bottom", c_int32),
        ("letterHeight", c_int32),
        ("textBytes", c_uint32),
        ("text", c_char_p),
    ]


class TiffRawFax(Structure):
    _pack_ = 8
    _fields_ = [
        ("width", c_uint32),
        ("scheme", c_uint32),
        ("fillOrder", c_uint32),
        ("alignment", c_uint32),
        ("horizontalDpi", c_uint32),
        ("verticalDpi", c_uint32),
        ("rows", c_uint32),
        ("badRows", c_uint32),
        ("longestBadRun", c_uint32),
    ]


class TiffSavePicture(Structure):
    _pack_ = 8
    _fields_ = [
        ("geometry", TiffPageGeometry),
        ("bits", c_void_p),
    ]


class TiffSaveDialogOptions(Structure):
    _pack_ = 8
    _fields_ = [
        ("description", c_char * 100),
        ("artist", c_char * 100),
        ("selector", c_uint32),
        ("fillOrder", c_uint32),
        ("photometric", c_uint32),
        ("colourCount", c_uint32),
    ]


class TiffTextPageSettings(Structure):
    _pack_ = 8
    _fields_ = [
        ("path", c_char * 256),
        ("pageWidth", c_uint32),
        ("pageHeight", c_uint32),
        ("leftMargin", c_uint32),
        ("topMargin", c_uint32),
        ("faceName", c_char * 128),
        ("fontSize", c_uint32),
        ("horizontalDpi", c_uint32),
        ("verticalDpi", c_uint32),
        ("lineSpacing", c_uint32),
        ("tabStops", c_uint32 * 16),
        ("flags", c_uint32),
        ("font", c_void_p),
    ]


FUNCTIONS = {
    "LongRead": (c_int32, (c_int64, c_uint32, c_uint32, c_void_p, c_uint32, c_uint32)),
    "LongWrite": (c_int32, (c_int64, c_uint32, c_uint32, c_void_p, c_uint32, c_uint32)),
    "SetTiffDllFileHandle": (c_uint32, (c_uint32,)),
    "mClose": (c_uint32, (c_int64,)),
    "mRead": (c_uint32, (c_int64, c_void_p, c_uint32)),
    "mSeek": (c_uint32, (c_int64, c_uint32, c_int32)),
    "mSize": (c_uint32, (c_int64,)),
    "mTell": (c_uint32, (c_int64,)),
    "mWrite": (c_uint32, (c_int64, c_void_p, c_uint32)),
    "SetTiffError": (c_uint32, (c_uint32,)),
    "TiffError": (c_uint32, ()),
    "TiffErrorDetail": (c_uint32, (c_char_p, c_uint32)),
    "TiffErrorString": (c_char_p, (c_char_p, c_int32)),
    "CloseTiffFile": (c_int32, (c_void_p,)),
    "DropTiffImage": (c_int32, (c_void_p, c_uint32)),
    "GetMemoryTiffHandle": (c_void_p, (c_void_p,)),
    "GetNumberOfImagesInTiffFile": (c_uint32, (c_char_p,)),
    "GetTiffFileInfo": (c_int32, (c_void_p, POINTER(TiffFileInformation))),
    "GetTiffPathCodePage": (c_uint32, ()),
    "GetTiffVersion": (None, (c_char_p, c_int32)),
    "GetTiffVersionNumber": (c_uint32, ()),
    "IsTiffImageRegistered": (c_int32, (c_void_p, c_uint32)),
    "ModiTiffFileInfo": (c_int32, (c_void_p, c_char_p, c_uint32)),
    "NumberOfTiffImages": (c_uint32, (c_void_p, c_uint32)),
    "OpenTiffFile": (c_void_p, (c_char_p, c_uint32)),
    "OpenTiffInMemory": (c_void_p, (c_void_p, c_uint32, c_uint32)),
    "SetTiffPathCodePage": (c_int32, (c_uint32,)),
    "GetTiffColorSpace": (c_uint32, (c_char_p, c_int32)),
    "GetTiffDimensions": (c_uint32, (c_void_p, c_uint32, POINTER(BITMAPINFOHEADER))),
    "GetTiffImage": (c_int32, (c_void_p, c_uint32)),
    "GetTiffImageDPI": (c_uint32, (c_void_p, c_uint32, POINTER(c_uint32))),
    "GetTiffImageInfo": (c_int32, (c_void_p, c_uint32, c_uint32, c_void_p)),
    "GetTiffImageInfoBuffer": (c_int32, (c_void_p, c_uint32, c_uint32, POINTER(c_void_p), POINTER(c_uint32), POINTER(c_uint32))),
    "GetTiffImagePalette": (c_void_p, (c_char_p, c_uint32)),
    "GetTiffRGBQuad": (c_void_p, (c_void_p, c_uint32)),
    "GetTiffRowsPerStrip": (c_uint32, (c_void_p, c_uint32)),
    "GetTiffStripCount": (c_uint32, (c_void_p, c_uint32)),
    "IsRequiredTag": (c_int32, (c_uint32,)),
    "DefineGeneralTags": (c_uint32, (c_void_p, c_uint32, POINTER(TiffPageGeometry))),
    "DefineSpecialTags": (c_uint32, (c_void_p, c_uint32, c_uint32)),
    "DefineTiffImage": (c_int32, (c_void_p,)),
    "DefineTiffImageInfo": (c_int32, (c_void_p, c_uint32, c_uint32, c_uint32, c_uint64)),
    "DefineTiffImageInfoBuffer": (c_int32, (c_void_p, c_uint32, c_uint32, c_void_p, c_uint32, c_uint32)),
    "SetTiffImageDPI": (c_uint32, (c_void_p, c_uint32, c_uint32)),
    "WriteTiffImageDirectory": (c_uint32, (c_void_p, c_uint32)),
    "DecodeTiffImage": (c_int32, (c_void_p, c_uint32, c_uint32, c_uint32, c_void_p, TiffLineCallback)),
    "EncodeTiffImage": (c_int32, (c_void_p, c_uint32, c_void_p, TiffLineCallback)),
    "FillCodeBuffer": (c_uint32, (POINTER(CodecContext),)),
    "FillDataBuffer": (c_uint32, (POINTER(CodecContext),)),
    "FlushCodeBuffer": (c_uint32, (POINTER(CodecContext),)),
    "FlushDataBuffer": (c_uint32, (POINTER(CodecContext),)),
    "InitDecodeBuffers": (c_uint32, (POINTER(CodecContext),)),
    "InitEncodeBuffers": (c_uint32, (POINTER(CodecContext),)),
    "DecodeCcittImage": (c_int32, (c_int64, c_uint32, c_uint32, c_uint32, c_void_p, TiffLineCallback)),
    "DecodeCcittImageFrom": (c_int32, (c_int64, c_uint32, c_uint32, c_uint32, c_uint32, c_uint32, c_uint32, c_void_p, TiffLineCallback)),
    "DecodeMMRImage": (c_int32, (c_int64, c_uint32, c_uint32, c_uint32, c_uint32, c_uint32, c_uint32, c_void_p, TiffLineCallback)),
    "EncodeCcittImage": (c_int32, (c_int64, c_uint32, c_uint32, c_uint32, c_void_p, TiffLineCallback)),
    "EncodeCcittImageTo": (c_int32, (c_int64, c_uint32, c_uint32, c_uint32, c_uint32, c_uint32, c_void_p, TiffLineCallback)),
    "EncodeMMRImage": (c_int32, (c_int64, c_uint32, c_uint32, c_uint32, c_void_p, TiffLineCallback)),
    "SetKfactor": (c_int32, (c_int32,)),
    "DllFillCcittLine": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "DllFillMonoTiffLine": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "DllFillTiffLine": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "DllFillTiffLineBitmap24Bit": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "DllFillTiffLineDIB": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "DllFillTiffLineDIB24Bit": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "DllFlushTiffLine": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "DllFlushTiffLine24": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "DllFlushTiffLine24DIB": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "DllFlushTiffLineDIB": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "LoadNonRGBTiffIntoDIB": (c_void_p, (c_char_p, c_uint32)),
    "LoadTiffChainIntoBitmap": (c_void_p, (c_void_p, c_uint32)),
    "LoadTiffChainIntoDIB": (c_void_p, (c_void_p, c_uint32)),
    "LoadTiffFileIntoBitmap": (c_void_p, (c_char_p, c_uint32, c_int32)),
    "LoadTiffFileIntoClipboard": (c_int32, (c_char_p, c_uint32, c_int32)),
    "LoadTiffFromMemory": (c_void_p, (c_void_p, c_uint32, c_uint32)),
    "LoadTiffIntoBitmap": (c_void_p, (c_char_p, c_uint32, c_int32)),
    "LoadTiffIntoDIB": (c_void_p, (c_char_p, c_uint32, c_int32)),
    "AppendRawFaxToTiff": (c_int32, (c_char_p, c_void_p, c_uint32, POINTER(TiffRawFax))),
    "GetTiffDecodeQuality": (c_int32, (POINTER(TiffDecodeQuality),)),
    "SetTiffFaxQuality": (c_int32, (POINTER(TiffFaxQuality),)),
    "FindBlackPage": (c_uint32, (c_char_p, c_int32, c_int32, POINTER(c_uint8))),
    "FindBlankPage": (c_uint32, (c_char_p, c_int32, c_int32, POINTER(c_uint8))),
    "GetTiffJpegQuality": (c_uint32, ()),
    "SaveBitmapInCcittFile": (c_int32, (c_char_p, c_void_p, c_uint32)),
    "SaveBitmapInTiffFile": (c_int32, (c_char_p, c_void_p, c_uint32, c_int32)),
    "SaveBitmapInTiffFileExt": (c_int32, (c_char_p, c_void_p, c_uint32, c_int32, c_uint32)),
    "SaveBitmapInTiffFormat": (c_int32, (c_char_p, c_void_p, c_uint32, c_int32)),
    "SaveDIBInTiffFile": (c_int32, (c_char_p, c_void_p, c_uint32, c_int32)),
    "SaveDIBInTiffFileExt": (c_int32, (c_char_p, c_void_p, c_uint32, c_int32, c_uint32)),
    "SaveDIBInTiffFormat": (c_int32, (c_char_p, c_void_p, c_uint32, c_int32)),
    "SaveNonRGBDIBInTiffFile": (c_int32, (c_char_p, c_void_p)),
    "SaveTiffFileFromClipboard": (c_int32, (c_char_p, c_uint32, c_int32)),
    "SaveTiffToMemory": (c_void_p, (c_void_p, c_void_p, c_uint32, c_uint32)),
    "SetTiffJpegQuality": (c_int32, (c_uint32,)),
    "AddTiffTagToImage": (c_int32, (c_char_p, c_int32, c_uint32, c_uint32, c_void_p, c_uint32)),
    "AppendCCITTImageFile": (c_char_p, (c_char_p, c_char_p, c_uint32, c_int32)),
    "CopyTiffImage": (c_int32, (c_void_p, c_uint32, c_void_p)),
    "CopyTiffImageInFile": (c_int32, (c_char_p, c_uint32, c_char_p, c_uint32)),
    "CutTiffFile": (c_int32, (c_char_p, c_char_p, c_int32, TiffProgress, c_uint64)),
    "DeleteTiffImage": (c_int32, (c_char_p, c_int32, c_int32)),
    "DeleteTiffTagOfImage": (c_int32, (c_char_p, c_int32, c_uint32)),
    "InsertTiffImage": (c_int32, (c_char_p, c_void_p, c_uint32, c_int32, c_uint32, c_int32, c_int32, c_int32)),
    "MergeTiffFiles": (c_int32, (c_char_p, c_char_p, TiffProgress, c_uint64)),
    "ReorderTiffFile": (c_int32, (c_char_p,)),
    "SplitTiffFile": (c_int32, (c_char_p, c_char_p, c_int32, TiffProgress, c_uint64)),
    "UpdatePageNumbers": (c_int32, (c_char_p, c_uint32)),
    "UpdatePageNumbersInMemory": (c_int32, (c_void_p, c_uint32)),
    "ConvertTiffToCiscoFormat": (c_int32, (c_char_p,)),
    "SaveDIBInBicomTiffFile": (c_int32, (c_char_p, c_void_p)),
    "SaveDIBInDialogicTiffFile": (c_int32, (c_char_p, c_void_p, c_uint32)),
    "SaveDIBInGammaTiffFile": (c_int32, (c_char_p, c_void_p, c_uint32, c_int32, c_uint32)),
    "SaveDIBInNMSTiffFile": (c_int32, (c_char_p, c_void_p)),
    "SaveTiffForCiscoFormat": (c_int32, (c_char_p, c_void_p, c_uint32, c_int32, c_uint32)),
    "DefineCALSHead": (c_void_p, (POINTER(TiffCalsInformation), POINTER(TiffCalsNotes))),
    "DllFillCALSLineDIB": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "DllFlushCALSLineDIB": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FindCALSRecord": (c_char_p, (c_char_p, c_char_p)),
    "LoadCALSIntoDIB": (c_void_p, (c_char_p, c_int32)),
    "ReadCALSHead": (c_void_p, (c_char_p,)),
    "ReadCALSInfo": (c_int32, (c_char_p, POINTER(TiffCalsInformation))),
    "ReadCALSNote": (c_void_p, (c_char_p, POINTER(TiffCalsNotes))),
    "SaveDIBInCALSFormat": (c_int32, (c_char_p, c_void_p, POINTER(TiffCalsNotes), POINTER(c_uint32), c_int32)),
    "EditCALSHead": (c_int32, (c_void_p, c_char_p, c_char_p)),
    "ShowCALSInfo": (c_int32, (c_void_p, c_char_p)),
    "DecompressCALSToScreen": (c_int32, (c_void_p, c_void_p, c_char_p, POINTER(c_int32), c_uint32)),
    "DecompressToScreen": (c_int32, (c_uint32, c_void_p, c_void_p, c_char_p, c_uint32, POINTER(c_int32), c_uint32)),
    "FlushCALS180LineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushCALS270LineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushCALS90LineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushCALSLineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushMonoLineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushMonoRot18LineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushMonoRot27LineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushMonoRotLineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushRGB24LineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushRGB24Rot18LineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushRGB24Rot27LineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushRGB24RotLineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushRGBLineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushRGBRot18LineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushRGBRot27LineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "FlushRGBRotLineToScreen": (c_ssize_t, (c_void_p, c_uint32, c_void_p)),
    "ReadIOCAHeader": (c_int32, (c_void_p, POINTER(TiffIocaDescription))),
    "ReadMODCAHeader": (c_int32, (c_void_p, POINTER(TiffIocaDescription))),
    "WriteIOCAHeader": (c_int32, (c_void_p, POINTER(TiffIocaDescription))),
    "WriteIOCATail": (c_int32, (c_void_p,)),
    "WriteMODCAHeader": (c_int32, (c_void_p, POINTER(TiffIocaDescription))),
    "WriteMODCATail": (c_int32, (c_void_p,)),
    "CropDIB": (c_void_p, (c_void_p, c_int32, c_int32, c_int32, c_int32)),
    "CropStretchDIB": (c_void_p, (c_void_p, POINTER(RECT), c_int32, c_int32, c_uint32)),
    "StretchDIB": (c_void_p, (c_void_p, c_int32, c_int32, c_uint32)),
    "RotateDIB": (c_void_p, (c_void_p, c_int32)),
    "DitherDIB": (c_void_p, (c_void_p, c_uint32, c_uint32)),
    "BitmapFormOverlay": (c_void_p, (c_char_p, POINTER(TiffTextPageSettings))),
    "BitmapTextOverlay": (c_void_p, (c_void_p, c_int32, c_int32, c_char_p, c_char_p, c_uint32, c_uint32, c_uint32)),
    "CreateBMPFaxPageFromASCII": (c_uint32, (POINTER(TiffTextPageSettings), c_uint32, POINTER(c_void_p), POINTER(c_uint32))),
    "CreateDIBFaxPageFromASCII": (c_uint32, (POINTER(TiffTextPageSettings), c_uint32, POINTER(c_void_p), POINTER(c_uint32))),
    "CreateFaxPageFromASCII": (c_uint32, (POINTER(TiffTextPageSettings), c_uint32, POINTER(c_void_p), c_uint32, c_void_p, POINTER(c_uint32))),
    "CreateMultiPageFromASCII": (c_uint32, (POINTER(TiffTextPageSettings), c_uint32, POINTER(c_void_p), c_uint32, c_void_p, c_uint32, POINTER(c_uint32))),
    "DIBFormOverlay": (c_void_p, (c_char_p, POINTER(TiffTextPageSettings))),
    "DIBFormOverlayExt": (c_uint32, (c_char_p, POINTER(TiffTextPageSettings), POINTER(c_void_p), c_uint32, c_uint32)),
    "DIBTextOverlay": (c_void_p, (c_void_p, c_int32, c_int32, c_char_p, c_char_p, c_uint32)),
    "LoadAnnotationFromTiff": (c_uint32, (c_char_p, c_uint32)),
    "SaveAnnotationIntoTiff": (c_int32, (c_char_p, c_uint32, c_uint32)),
    "SaveAnnotationIntoTiffExt": (c_int32, (c_char_p, c_uint32, c_uint32, c_int32, c_int32, c_int32)),
    "AddTiffNote": (c_int32, (c_char_p, c_uint32, POINTER(TiffNote))),
    "DeleteTiffNote": (c_int32, (c_char_p, c_uint32, c_uint32)),
    "DrawTiffNotes": (c_int32, (c_void_p, c_void_p, c_uint32, POINTER(RECT))),
    "DrawTiffNotesOnDIB": (c_void_p, (c_void_p, c_void_p, c_uint32)),
    "EditTiffNote": (c_int32, (c_void_p, POINTER(TiffNote), c_char_p, c_uint32)),
    "GetTiffNote": (c_int32, (c_void_p, c_uint32, c_uint32, POINTER(TiffNote), c_char_p, c_uint32)),
    "GetTiffNoteCount": (c_int32, (c_void_p, c_uint32)),
    "ReplaceTiffNote": (c_int32, (c_char_p, c_uint32, c_uint32, POINTER(TiffNote))),
}


def declare(library):
    """Gives the functions of a loaded library their types, and returns them by name."""
    for name, (result, arguments) in FUNCTIONS.items():
        function = getattr(library, name)
        function.restype, function.argtypes = result, arguments
    return {name: getattr(library, name) for name in FUNCTIONS}
