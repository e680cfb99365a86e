// The numbers that TIFF files and callers of the library use, by name.
#pragma once

#include "tiff/values.h"

#include <cstdint>

namespace tiff {

using Status = uint32_t; // 0 is success, anything else an error code

namespace tag {
inline constexpr uint16_t NewSubfileType = 254;
inline constexpr uint16_t SubfileType = 255;
inline constexpr uint16_t ImageWidth = 256;
inline constexpr uint16_t ImageLength = 257;
inline constexpr uint16_t BitsPerSample = 258;
inline constexpr uint16_t Compression = 259;
inline constexpr uint16_t PhotometricInterpretation = 262;
inline constexpr uint16_t FillOrder = 266;
inline constexpr uint16_t ImageDescription = 270;
inline constexpr uint16_t StripOffsets = 273;
inline constexpr uint16_t Orientation = 274;
inline constexpr uint16_t SamplesPerPixel = 277;
inline constexpr uint16_t RowsPerStrip = 278;
inline constexpr uint16_t StripByteCounts = 279;
inline constexpr uint16_t MinSampleValue = 280;
inline constexpr uint16_t MaxSampleValue = 281;
inline constexpr uint16_t XResolution = 282;
inline constexpr uint16_t YResolution = 283;
inline constexpr uint16_t PlanarConfiguration = 284;
inline constexpr uint16_t T4Options = 292;
inline constexpr uint16_t T6Options = 293;
inline constexpr uint16_t ResolutionUnit = 296;
inline constexpr uint16_t PageNumber = 297;
inline constexpr uint16_t Software = 305;
inline constexpr uint16_t DateTime = 306;
inline constexpr uint16_t Artist = 315;
inline constexpr uint16_t Predictor = 317;
inline constexpr uint16_t ColorMap = 320;
inline constexpr uint16_t TileWidth = 322;
inline constexpr uint16_t TileLength = 323;
inline constexpr uint16_t TileOffsets = 324;
inline constexpr uint16_t TileByteCounts = 325;
inline constexpr uint16_t BadFaxLines = 326;
inline constexpr uint16_t CleanFaxData = 327;
inline constexpr uint16_t ConsecutiveBadFaxLines = 328;
inline constexpr uint16_t SubIfds = 330;
inline constexpr uint16_t JpegTables = 347;
inline constexpr uint16_t JpegProc = 512;
inline constexpr uint16_t JpegStream = 513; // JPEGInterchangeFormat: a complete JPEG stream
inline constexpr uint16_t JpegStreamLength = 514;
inline constexpr uint16_t JpegRestartInterval = 515;
inline constexpr uint16_t JpegQTables = 519;
inline constexpr uint16_t JpegDcTables = 520;
inline constexpr uint16_t JpegAcTables = 521;
inline constexpr uint16_t YCbCrSubSampling = 530;
inline constexpr uint16_t ReferenceBlackWhite = 532;
inline constexpr uint16_t ExifIfd = 34665;
inline constexpr uint16_t GpsIfd = 34853;
inline constexpr uint16_t InteroperabilityIfd = 40965;
} // namespace tag

namespace fieldtype {
inline constexpr uint16_t Byte = 1;
inline constexpr uint16_t Ascii = 2;
inline constexpr uint16_t Short = 3;
inline constexpr uint16_t Long = 4;
inline constexpr uint16_t Rational = 5;
inline constexpr uint16_t SByte = 6;
inline constexpr uint16_t Undefined = 7;
inline constexpr uint16_t SShort = 8;
inline constexpr uint16_t SLong = 9;
inline constexpr uint16_t Ifd = 13;
inline constexpr uint16_t Long8 = 16;
inline constexpr uint16_t SLong8 = 17;
inline constexpr uint16_t Ifd8 = 18;
} // namespace fieldtype

// The public error codes, with names that read well inside the library.
namespace error {
inline constexpr uint32_t None = TIFF_ERROR_NONE;
inline constexpr uint32_t NotEnoughMemory = TIFF_ERROR_MEMORY;
inline constexpr uint32_t CannotOpen = TIFF_ERROR_CANNOT_OPEN;
inline constexpr uint32_t IndexOutOfRange = TIFF_ERROR_INDEX;
inline constexpr uint32_t UnexpectedEndOfFile = TIFF_ERROR_END_OF_FILE;
inline constexpr uint32_t InputOutput = TIFF_ERROR_INPUT_OUTPUT;
inline constexpr uint32_t PathTooLong = TIFF_ERROR_PATH_TOO_LONG;
inline constexpr uint32_t NotTiff = TIFF_ERROR_NOT_TIFF;
inline constexpr uint32_t BadTag = TIFF_ERROR_BAD_TAG;
inline constexpr uint32_t TagsMissing = TIFF_ERROR_TAGS_MISSING;
inline constexpr uint32_t UnknownCompression = TIFF_ERROR_COMPRESSION;
inline constexpr uint32_t BadCode = TIFF_ERROR_BAD_CODE;
inline constexpr uint32_t TagNotDefined = TIFF_ERROR_TAG_NOT_DEFINED;
inline constexpr uint32_t BadByteOrder = TIFF_ERROR_BYTE_ORDER;
inline constexpr uint32_t BadBitOrder = TIFF_ERROR_FILL_ORDER;
inline constexpr uint32_t ColourFormat = TIFF_ERROR_COLOUR_FORMAT;
inline constexpr uint32_t NotCals = TIFF_ERROR_NOT_CALS;
inline constexpr uint32_t EofbMissing = TIFF_ERROR_EOFB_MISSING;
inline constexpr uint32_t EofbUnexpected = TIFF_ERROR_EOFB_EARLY;
inline constexpr uint32_t JpegLibraryMissing = TIFF_ERROR_JPEG_LIBRARY;
inline constexpr uint32_t JpegFunctionMissing = TIFF_ERROR_JPEG_FUNCTION;
inline constexpr uint32_t ClipboardNotBitmap = TIFF_ERROR_CLIPBOARD_FORMAT;
inline constexpr uint32_t ClipboardNotOpened = TIFF_ERROR_CLIPBOARD_OPEN;
inline constexpr uint32_t ClipboardNoBitmap = TIFF_ERROR_CLIPBOARD_BITMAP;
inline constexpr uint32_t NotRegistered = TIFF_ERROR_NOT_LOADED;
inline constexpr uint32_t DialogLibraryMissing = TIFF_ERROR_DIALOG_LIBRARY;
inline constexpr uint32_t InvalidParameters = TIFF_ERROR_PARAMETERS;
inline constexpr uint32_t BadDib = TIFF_ERROR_BAD_DIB;
inline constexpr uint32_t InvalidHandle = TIFF_ERROR_HANDLE;
inline constexpr uint32_t MixedByteOrders = TIFF_ERROR_MIXED_BYTE_ORDERS;
inline constexpr uint32_t TooLarge = TIFF_ERROR_TOO_LARGE;
inline constexpr uint32_t LastCode = TIFF_ERROR_LAST;
inline constexpr uint32_t OldJpegPage = TIFF_ERROR_OLD_JPEG_PAGE;
inline constexpr uint32_t JpegPage = TIFF_ERROR_JPEG_PAGE;
} // namespace error

// The result of FlushDataBuffer after the last row; it never leaves a codec.
inline constexpr Status ALL_ROWS_DONE = 3;

// The user or a callback stopped the work; the last error is 0 then.
inline constexpr Status CANCELLED = UINT32_MAX;

namespace compression {
inline constexpr uint32_t Stored = 1;
inline constexpr uint32_t ModifiedHuffman = 2;
inline constexpr uint32_t Group3 = 3;
inline constexpr uint32_t Group4 = 4;
inline constexpr uint32_t Lzw = 5;
inline constexpr uint32_t OldJpeg = 6;
inline constexpr uint32_t Jpeg = 7;
inline constexpr uint32_t PackBits = 32773;
inline constexpr uint32_t TwoDimensional = 0x10000; // variants in the high 16 bits
inline constexpr uint32_t ByteAligned = 0x40000;
inline constexpr uint32_t NoPredictor = 0x10000;
inline constexpr uint32_t HorizontalDifferencing = 0x20000;
} // namespace compression

namespace unit { // of resolutions
inline constexpr uint32_t Inch = 2;
inline constexpr uint32_t Centimetre = 3;
} // namespace unit

inline constexpr double INCHES_PER_METRE = 39.37;

namespace photometric {
inline constexpr uint32_t WhiteIsZero = 0;
inline constexpr uint32_t BlackIsZero = 1;
inline constexpr uint32_t Rgb = 2;
inline constexpr uint32_t Palette = 3;
inline constexpr uint32_t Mask = 4;
inline constexpr uint32_t Separated = 5;
inline constexpr uint32_t YCbCr = 6;
inline constexpr uint32_t FirstColourSpace = 7; // given to callers unconverted
inline constexpr uint32_t LastColourSpace = 17;
} // namespace photometric

// ReferenceBlackWhite of the full range, colour differences around 128: six RATIONALs.
inline constexpr uint32_t fullRangeReference[12] = {0, 1, 255, 1, 128, 1, 255, 1, 128, 1, 255, 1};

inline constexpr uint32_t ORIENTATION_BOTTOM_LEFT = 4;
inline constexpr uint32_t MAX_PATH_BYTES = 260; // with the terminating zero

} // namespace tiff
