#include "bench/peer.h"

#include <tiffio.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

// A file in memory that grows as it is written.
struct MemoryFile {
    std::vector<uint8_t>* bytes;
    size_t position = 0;
};

MemoryFile* FileOf(thandle_t handle)
{
    return static_cast<MemoryFile*>(handle);
}

tsize_t ReadBytes(thandle_t handle, tdata_t buffer, tsize_t count)
{
    MemoryFile* file = FileOf(handle);
    const size_t left = file->bytes->size() - std::min(file->position, file->bytes->size());
    const size_t bytes = std::min(static_cast<size_t>(count), left);
    std::memcpy(buffer, file->bytes->data() + file->position, bytes);
    file->position += bytes;
    return static_cast<tsize_t>(bytes);
}

tsize_t WriteBytes(thandle_t handle, tdata_t buffer, tsize_t count)
{
    MemoryFile* file = FileOf(handle);
    const size_t end = file->position + static_cast<size_t>(count);
    if (end > file->bytes->size())
        file->bytes->resize(end);
    std::memcpy(file->bytes->data() + file->position, buffer, static_cast<size_t>(count));
    file->position = end;
    return count;
}

toff_t SeekBytes(thandle_t handle, toff_t offset, int origin)
{
    MemoryFile* file = FileOf(handle);
    const toff_t from = origin == SEEK_CUR ? file->position : origin == SEEK_END ? file->bytes->size() : 0;
    file->position = static_cast<size_t>(from + offset);
    return file->position;
}

int CloseBytes(thandle_t handle)
{
    delete FileOf(handle);
    return 0;
}

toff_t SizeOfBytes(thandle_t handle)
{
    return FileOf(handle)->bytes->size();
}

int MapBytes(thandle_t handle, tdata_t* base, toff_t* size)
{
    *base = FileOf(handle)->bytes->data();
    *size = FileOf(handle)->bytes->size();
    return 1;
}

void UnmapBytes(thandle_t, tdata_t, toff_t)
{
}

TIFF* Open(std::vector<uint8_t>& bytes, const char* mode)
{
    return TIFFClientOpen("memory", mode, new MemoryFile{&bytes}, ReadBytes, WriteBytes, SeekBytes,
                          CloseBytes, SizeOfBytes, MapBytes, UnmapBytes);
}

void Demand(bool done, const char* what)
{
    if (!done) {
        std::fprintf(stderr, "libtiff: %s failed\n", what);
        std::exit(1);
    }
}

PeerFile* Opened(TIFF* tiff)
{
    Demand(tiff, "opening");
    return reinterpret_cast<PeerFile*>(tiff);
}

TIFF* TiffOf(PeerFile* file)
{
    return reinterpret_cast<TIFF*>(file);
}

} // namespace

bool Suits(const Scheme& scheme, const Picture& picture)
{
    return scheme.predictor || IsLossy(scheme) ? picture.bits >= 8 : !scheme.bilevel || picture.bits == 1;
}

uint32_t RowsPerStrip(const Scheme& scheme, const Picture& picture)
{
    constexpr size_t STRIP_BYTES = 8192;
    const auto rows = static_cast<uint32_t>(STRIP_BYTES / picture.RowBytes());
    return scheme.bilevel || IsLossy(scheme) ? picture.height : std::clamp(rows, 1u, picture.height);
}

PeerFile* CreatePeerFile(const std::string& path)
{
    return Opened(TIFFOpen(path.c_str(), "wl"));
}

PeerFile* CreateBytes(std::vector<uint8_t>& bytes)
{
    bytes.clear();
    return Opened(Open(bytes, "wl"));
}

PeerFile* OpenPeerFile(const std::string& path)
{
    return Opened(TIFFOpen(path.c_str(), "r"));
}

PeerFile* OpenBytes(std::vector<uint8_t>& bytes)
{
    return Opened(Open(bytes, "r"));
}

void Close(PeerFile* file)
{
    TIFFClose(TiffOf(file));
}

void PutPage(PeerFile* file, const Picture& picture, const Scheme& scheme, uint32_t rowsPerStrip)
{
    TIFF* tiff = TiffOf(file);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, picture.bits == 1 ? 1 : 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, picture.bits == 24 ? 3 : 1);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, scheme.compression);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
                 picture.bits == 1   ? PHOTOMETRIC_MINISWHITE
                 : picture.bits == 8 ? PHOTOMETRIC_MINISBLACK
                 : IsLossy(scheme)   ? PHOTOMETRIC_YCBCR
                                     : PHOTOMETRIC_RGB);
    if (IsLossy(scheme)) {
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
        TIFFSetField(tiff, TIFFTAG_JPEGQUALITY, scheme.quality);
        if (picture.bits == 24)
            TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, scheme.chroma, scheme.chroma);
    }
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, rowsPerStrip);
    if (scheme.predictor)
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, scheme.predictor);
    if (scheme.compression == COMPRESSION_CCITTFAX3)
        TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, scheme.group3Options);
    const size_t stripBytes = picture.RowBytes() * rowsPerStrip;
    // libtiff writes to its source only when bytes or bits must be swapped.
    auto* rows = const_cast<uint8_t*>(picture.rows.data());
    for (size_t at = 0, number = 0; at < picture.rows.size(); at += stripBytes, ++number) {
        const size_t bytes = std::min(stripBytes, picture.rows.size() - at);
        const tmsize_t written = TIFFWriteEncodedStrip(tiff, static_cast<uint32_t>(number), rows + at,
                                                       static_cast<tmsize_t>(bytes));
        Demand(written >= 0, "writing");
    }
}

void EndPage(PeerFile* file)
{
    Demand(TIFFWriteDirectory(TiffOf(file)), "writing a directory");
}

void ReadStrips(PeerFile* file, uint8_t* target, size_t bytes)
{
    TIFF* tiff = TiffOf(file);
    uint16_t compression = 0;
    TIFFGetField(tiff, TIFFTAG_COMPRESSION, &compression);
    if (compression == COMPRESSION_JPEG)
        TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    const uint32_t strips = TIFFNumberOfStrips(tiff);
    for (uint32_t strip = 0; strip < strips; ++strip) {
        const tmsize_t got = TIFFReadEncodedStrip(tiff, strip, target, static_cast<tmsize_t>(bytes));
        Demand(got > 0, "reading");
        target += got;
        bytes -= static_cast<size_t>(got);
    }
}

uint32_t CountPages(PeerFile* file)
{
    return TIFFNumberOfDirectories(TiffOf(file));
}

uint32_t ReadDirectories(PeerFile* file)
{
    uint32_t pages = 1;
    while (TIFFReadDirectory(TiffOf(file)))
        ++pages;
    return pages;
}

// The fields of a bilevel page with one value each.
static void CopyFields(TIFF* source, TIFF* target)
{
    for (const uint32_t field : {TIFFTAG_BITSPERSAMPLE, TIFFTAG_COMPRESSION, TIFFTAG_PHOTOMETRIC,
                                 TIFFTAG_SAMPLESPERPIXEL, TIFFTAG_RESOLUTIONUNIT}) {
        uint16_t value;
        if (TIFFGetField(source, field, &value))
            TIFFSetField(target, field, value);
    }
    for (const uint32_t field :
         {TIFFTAG_SUBFILETYPE, TIFFTAG_IMAGEWIDTH, TIFFTAG_IMAGELENGTH, TIFFTAG_ROWSPERSTRIP}) {
        uint32_t value;
        if (TIFFGetField(source, field, &value))
            TIFFSetField(target, field, value);
    }
    for (const uint32_t field : {TIFFTAG_XRESOLUTION, TIFFTAG_YRESOLUTION}) {
        float value;
        if (TIFFGetField(source, field, &value))
            TIFFSetField(target, field, double{value});
    }
}

void CopyPages(PeerFile* from, uint32_t count, PeerFile* to)
{
    TIFF *source = TiffOf(from), *target = TiffOf(to);
    std::vector<uint8_t> strip;
    for (uint32_t page = 0; page < count; ++page) {
        CopyFields(source, target);
        for (uint32_t number = 0; number < TIFFNumberOfStrips(source); ++number) {
            strip.resize(TIFFGetStrileByteCount(source, number));
            const auto bytes = static_cast<tmsize_t>(strip.size());
            Demand(TIFFReadRawStrip(source, number, strip.data(), bytes) == bytes &&
                       TIFFWriteRawStrip(target, number, strip.data(), bytes) == bytes,
                   "copying a strip");
        }
        EndPage(to);
        SkipPage(from);
    }
}

void SkipPage(PeerFile* source)
{
    if (!TIFFLastDirectory(TiffOf(source)))
        Demand(TIFFReadDirectory(TiffOf(source)), "reading a directory");
}

std::vector<uint8_t> WriteTiff(const Picture& picture, const Scheme& scheme, uint32_t rowsPerStrip)
{
    std::vector<uint8_t> bytes;
    PeerFile* file = CreateBytes(bytes);
    PutPage(file, picture, scheme, rowsPerStrip);
    Close(file);
    return bytes;
}
