#include "peer_decoder.h"

#include <tiffio.h>

#include <algorithm>
#include <cstring>

namespace fuzz {

namespace {

bool hasSpoken = false;

void Listen(const char*, const char*, va_list)
{
    hasSpoken = true;
}

struct File {
    std::span<const uint8_t> bytes;
    size_t at = 0;
    std::vector<uint8_t> written = {};
};

tmsize_t Read(thandle_t handle, void* target, tmsize_t size)
{
    File& file = *static_cast<File*>(handle);
    const size_t left = file.bytes.size() - std::min(file.at, file.bytes.size());
    const size_t count = std::min(left, static_cast<size_t>(size));
    if (count > 0)
        std::memcpy(target, &file.bytes[file.at], count);
    file.at += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t Write(thandle_t handle, void* bytes, tmsize_t size)
{
    File& file = *static_cast<File*>(handle);
    const size_t end = file.at + static_cast<size_t>(size);
    file.written.resize(std::max(end, file.written.size()));
    std::memcpy(&file.written[file.at], bytes, static_cast<size_t>(size));
    file.bytes = file.written;
    file.at = end;
    return size;
}

toff_t Seek(thandle_t handle, toff_t offset, int origin)
{
    File& file = *static_cast<File*>(handle);
    const toff_t from = origin == SEEK_CUR ? file.at : origin == SEEK_END ? file.bytes.size() : 0;
    file.at = static_cast<size_t>(from + offset);
    return file.at;
}

int Close(thandle_t)
{
    return 0;
}

toff_t Size(thandle_t handle)
{
    return static_cast<File*>(handle)->bytes.size();
}

} // namespace

bool DecodeByPeer(std::span<const uint8_t> bytes, uint32_t page, std::vector<uint8_t>& rows)
{
    TIFFSetErrorHandler(Listen);
    TIFFSetWarningHandler(Listen);
    hasSpoken = false;
    File file = {bytes};
    TIFF* const tiff = TIFFClientOpen("input", "rm", &file, Read, Write, Seek, Close, Size, nullptr, nullptr);
    if (!tiff)
        return false;
    rows.clear();
    if (TIFFSetDirectory(tiff, static_cast<tdir_t>(page))) {
        const tmsize_t lineBytes = TIFFScanlineSize(tiff), stripBytes = TIFFStripSize(tiff);
        constexpr tmsize_t MOST_BYTES = 1 << 20;
        uint32_t length = 0;
        TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &length);
        hasSpoken |= lineBytes <= 0 || stripBytes > MOST_BYTES || length > MOST_BYTES;
        for (uint32_t strip = 0; !hasSpoken && strip < TIFFNumberOfStrips(tiff); ++strip) {
            const size_t at = rows.size();
            rows.resize(at + static_cast<size_t>(stripBytes));
            const tmsize_t got = TIFFReadEncodedStrip(tiff, strip, &rows[at], stripBytes);
            hasSpoken |= got < 0;
            rows.resize(at + static_cast<size_t>(std::max<tmsize_t>(got, 0)));
        }
        hasSpoken |= rows.size() != static_cast<size_t>(lineBytes) * length;
    } else {
        hasSpoken = true;
    }
    TIFFClose(tiff);
    return !hasSpoken;
}

std::vector<uint8_t> EncodeByPeer(std::span<const uint8_t> rows, uint32_t width, uint32_t height,
                                  uint32_t bits, const PeerScheme& scheme)
{
    File file;
    TIFF* const tiff =
        TIFFClientOpen("output", "wl", &file, Read, Write, Seek, Close, Size, nullptr, nullptr);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits == 24 ? 8 : bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, bits == 24 ? 3 : 1);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, scheme.compression);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
                 bits == 1    ? PHOTOMETRIC_MINISWHITE
                 : bits == 24 ? PHOTOMETRIC_RGB
                              : PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_FILLORDER, scheme.fillOrder);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, scheme.rowsPerStrip);
    if (scheme.compression == COMPRESSION_CCITTFAX3)
        TIFFSetField(tiff, TIFFTAG_GROUP3OPTIONS, scheme.options);
    if (scheme.compression == COMPRESSION_LZW)
        TIFFSetField(tiff, TIFFTAG_PREDICTOR, scheme.predictor);
    std::vector<uint8_t> copy(rows.begin(), rows.end()); // it may be changed
    const size_t lineBytes = copy.size() / height;
    for (uint32_t row = 0, strip = 0; row < height; row += scheme.rowsPerStrip, ++strip) {
        const uint32_t count = std::min(scheme.rowsPerStrip, height - row);
        TIFFWriteEncodedStrip(tiff, strip, &copy[row * lineBytes], static_cast<tmsize_t>(count * lineBytes));
    }
    TIFFClose(tiff);
    return file.written;
}

} // namespace fuzz
