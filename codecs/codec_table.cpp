#include "codecs/codec_table.h"

#include "codecs/ccitt_decoder.h"
#include "codecs/jpeg_bridge.h"
#include "codecs/lzw_decoder.h"
#include "codecs/packbits.h"
#include "codecs/stored.h"

namespace tiff {

namespace {

using namespace compression;

struct Codec {
    uint32_t code;
    CodecRoutine decode;
};

constexpr Codec codecs[] = {
    {Stored, DecodeStored},
    {ModifiedHuffman, DecodeModifiedHuffman},
    {ModifiedHuffman | ByteAligned, DecodeModifiedHuffman},
    {Group3, DecodeGroup3},
    {Group3 | ByteAligned, DecodeGroup3},
    {Group3 | TwoDimensional, DecodeGroup3TwoDimensional},
    {Group3 | TwoDimensional | ByteAligned, DecodeGroup3TwoDimensional},
    {Group4, DecodeGroup4},
    {Lzw | NoPredictor, DecodeLzw},
    {Lzw | HorizontalDifferencing, DecodeLzw},
    {OldJpeg, DecodeOldJpeg},
    {PackBits, DecodePackBits},
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

} // namespace tiff
