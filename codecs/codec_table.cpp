#include "codecs/codec_table.h"

#include "codecs/ccitt/decoder.h"
#include "codecs/ccitt/encoder.h"
#include "codecs/jpeg_bridge.h"
#include "codecs/bytes/lzw_decoder.h"
#include "codecs/bytes/lzw_encoder.h"
#include "codecs/bytes/packbits.h"
#include "codecs/stored.h"

namespace tiff {

namespace {

using namespace compression;

struct Codec {
    uint32_t code;
    CodecRoutine decode, encode;
};

constexpr Codec codecs[] = {
    {Stored, DecodeStored, EncodeStored},
    {ModifiedHuffman, DecodeModifiedHuffman, EncodeModifiedHuffman},
    {ModifiedHuffman | ByteAligned, DecodeModifiedHuffman, EncodeModifiedHuffman},
    {Group3, DecodeGroup3, EncodeGroup3},
    {Group3 | ByteAligned, DecodeGroup3, EncodeGroup3},
    {Group3 | TwoDimensional, DecodeGroup3TwoDimensional, EncodeGroup3TwoDimensional},
    {Group3 | TwoDimensional | ByteAligned, DecodeGroup3TwoDimensional, EncodeGroup3TwoDimensional},
    {Group4, DecodeGroup4, EncodeGroup4},
    {Lzw | NoPredictor, DecodeLzw, EncodeLzw},
    {Lzw | HorizontalDifferencing, DecodeLzw, EncodeLzw},
    {OldJpeg, DecodeOldJpeg, EncodeOldJpeg},
    {PackBits, DecodePackBits, EncodePackBits},
};

} // namespace

Status Decode(CodecContext* context)
{
    if (context->compression == ModifiedHuffman)
        context->compression |= ByteAligned;
    for (const Codec& codec : codecs)
        if (codec.code == context->compression)
            return codec.decode(context);
    return error::UnknownCompression;
}

Status Encode(CodecContext* context)
{
    for (const Codec& codec : codecs)
        if (codec.code == context->compression)
            return codec.encode(context);
    return error::UnknownCompression;
}

} // namespace tiff
