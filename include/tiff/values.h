/* The numbers that functions take and give, by name. */
#ifndef TIFF_VALUES_H
#define TIFF_VALUES_H

/* Error codes, as TiffError returns them. */
enum TiffErrorCode {
    TIFF_ERROR_NONE = 0,
    TIFF_ERROR_MEMORY = 1,
    TIFF_ERROR_CANNOT_OPEN = 2,
    TIFF_ERROR_INDEX = 3,
    TIFF_ERROR_STRIP_INDEX = 4,
    TIFF_ERROR_END_OF_FILE = 5,
    TIFF_ERROR_INPUT_OUTPUT = 6,
    TIFF_ERROR_PATH_TOO_LONG = 7,
    TIFF_ERROR_NOT_TIFF = 8,
    TIFF_ERROR_BAD_TAG = 9,
    TIFF_ERROR_TAGS_MISSING = 10,
    TIFF_ERROR_COMPRESSION = 11,
    TIFF_ERROR_BAD_CODE = 12,
    TIFF_ERROR_TAG_NOT_DEFINED = 13,
    TIFF_ERROR_BYTE_ORDER = 14,
    TIFF_ERROR_FILL_ORDER = 15,
    TIFF_ERROR_COLOUR_FORMAT = 16,
    TIFF_ERROR_COLOURS = 17,
    TIFF_ERROR_NOT_CALS = 18,
    TIFF_ERROR_EOFB_MISSING = 19,
    TIFF_ERROR_EOFB_EARLY = 20,
    TIFF_ERROR_WIDTH = 21,
    TIFF_ERROR_JPEG_LIBRARY = 22,
    TIFF_ERROR_JPEG_FUNCTION = 23,
    TIFF_ERROR_CLIPBOARD_FORMAT = 24,
    TIFF_ERROR_CLIPBOARD_OPEN = 25,
    TIFF_ERROR_CLIPBOARD_BITMAP = 26,
    TIFF_ERROR_NOT_LOADED = 27,
    TIFF_ERROR_DIALOG_LIBRARY = 28,
    TIFF_ERROR_PARAMETERS = 29,
    TIFF_ERROR_BAD_DIB = 30,
    TIFF_ERROR_NOT_PIW = 31,
    TIFF_ERROR_DEPTH = 32,
    TIFF_ERROR_BUFFER = 33,
    TIFF_ERROR_HANDLE = 34,
    TIFF_ERROR_MIXED_BYTE_ORDERS = 35,
    TIFF_ERROR_TOO_LARGE = 36,
    TIFF_ERROR_LAST = 37,
    /* Pages that DecodeTiffImage leaves to the loaders. */
    TIFF_ERROR_OLD_JPEG_PAGE = 9990,
    TIFF_ERROR_JPEG_PAGE = 9991
};

/* Compression selectors of the savers. */
enum TiffSaveCompression {
    TIFF_SAVE_STORED = 201,
    TIFF_SAVE_PACKBITS = 202,
    TIFF_SAVE_LZW = 203,
    TIFF_SAVE_LZW_DIFFERENCES = 204,
    TIFF_SAVE_MODIFIED_HUFFMAN = 205,
    TIFF_SAVE_GROUP3 = 206,
    TIFF_SAVE_GROUP3_TWO_DIMENSIONAL = 207,
    TIFF_SAVE_GROUP4 = 208,
    TIFF_SAVE_JPEG = 209,
    TIFF_SAVE_OLD_JPEG = 210
};

/* Sample kinds: added to a selector up to 204, and an argument of DefineSpecialTags. */
enum TiffSampleKind {
    TIFF_SAMPLES_GREY_16 = 256, /* shifted left by 8 */
    TIFF_SAMPLES_GREY_12 = 512, /* shifted left by 4 */
    TIFF_SAMPLES_CMYK = 768,
    TIFF_SAMPLES_YCBCR = 1024
};

/* Fill orders: which bit of a byte comes first in the picture. */
enum TiffFillOrder { TIFF_MSB_FIRST = 1, TIFF_LSB_FIRST = 2 };

/* Byte orders, as the marks that files begin with. */
#define TIFF_INTEL 0x4949u    /* "II", little-endian */
#define TIFF_MOTOROLA 0x4D4Du /* "MM", big-endian */

#endif
