#include "codecs/codec_table.h"

#include "codecs/bytes/lzw_decoder.h"
#include "codecs/bytes/lzw_encoder.h"
#include "codecs/bytes/packbits.h"
#include "codecs/ccitt/decoder.h"
#include "codecs/ccitt/encoder.h"
#include "codecs/jpeg/page_decoder.h"
#include "codecs/jpeg/page_encoder.h"
#include "codecs/old_jpeg.h"
#include "codecs/stored.h"
#include "codecs/strips.h"

#include <algorithm>

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

uint32_t NoVariant(const PageTags&)
{
    return 0;
}

uint32_t AlwaysAligned(const PageTags&)
{
    return ByteAligned;
}

uint32_t OptionsOfGroup3(const PageTags& tags)
{
    return tags.Value(tag::T4Options, 0) << 16;
}

uint32_t PredictorOfLzw(const PageTags& tags)
{
    return tags.Value(tag::Predictor, 1) << 16;
}

bool Never(const PageTags&)
{
    return false;
}

bool Always(const PageTags&)
{
    return true;
}

constexpr PageScheme Striped(uint32_t compression, uint32_t (*variant)(const PageTags&))
{
    return {.compression = compression,
            .variant = variant,
            .isLeft = Never,
            .notDecoded = error::None,
            .notEncoded = error::None,
            .describeDecoding = DescribeStripsToDecode,
            .describeEncoding = DescribeStripsToEncode,
            .defineData = DefineStrips,
            .decodePicture = nullptr,
            .encodePicture = nullptr,
            .countsStrips = true};
}

constexpr PageScheme JpegPages()
{
    PageScheme scheme = Striped(Jpeg, NoVariant);
    scheme.isLeft = Always;
    scheme.notDecoded = error::JpegPage;
    scheme.notEncoded = error::UnknownCompression;
    scheme.describeEncoding = jpeg::DescribeToEncode;
    scheme.decodePicture = jpeg::DecodePage;
    scheme.encodePicture = jpeg::EncodePage;
    return scheme;
}

constexpr PageScheme others = Striped(0, NoVariant);

constexpr PageScheme schemes[] = {
    Striped(ModifiedHuffman, AlwaysAligned),
    Striped(Group3, OptionsOfGroup3),
    Striped(Lzw, PredictorOfLzw),
    {.compression = OldJpeg,
     .variant = NoVariant,
     .isLeft = HasNoTiles,
     .notDecoded = error::OldJpegPage,
     .notEncoded = error::OldJpegPage,
     .describeDecoding = DescribeTilesToDecode,
     .describeEncoding = DescribeTilesToEncode,
     .defineData = DefineTiles,
     .decodePicture = nullptr,
     .encodePicture = nullptr,
     .countsStrips = false},
    JpegPages(),
};

CodecRoutine RoutineFor(uint32_t code, CodecRoutine Codec::*routine)
{
    const auto* found = std::ranges::find(codecs, code, &Codec::code);
    return found != std::end(codecs) ? found->*routine : nullptr;
}

Status Run(CodecCall* call, CodecRoutine routine)
{
    return routine ? routine(call) : Status{error::UnknownCompression};
}

} // namespace

Status Decode(CodecCall* call)
{
    if (call->compression == ModifiedHuffman)
        call->compression |= ByteAligned;
    return Run(call, RoutineFor(call->compression, &Codec::decode));
}

Status Encode(CodecCall* call)
{
    return Run(call, RoutineFor(call->compression, &Codec::encode));
}

bool HasEncoder(uint32_t compression)
{
    return std::ranges::any_of(codecs,
                               [=](const Codec& codec) { return (codec.code & 0xFFFF) == compression; });
}

const PageScheme& SchemeOf(const PageTags& tags)
{
    const uint32_t compression = tags.Value(tag::Compression, Stored);
    const auto* found = std::ranges::find(schemes, compression, &PageScheme::compression);
    return found != std::end(schemes) ? *found : others;
}

uint32_t CompressionCode(const PageTags& tags)
{
    return tags.Value(tag::Compression, Stored) | SchemeOf(tags).variant(tags);
}

} // namespace tiff
