/* PNG: chunks around deflated, filtered rows. Every chunk's check sum must be right. */
#include "deflate.h"
#include "raster_files.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace tifftool {

namespace {

constexpr uint8_t signature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr size_t CHUNK_FRAME = 12; // length, name and check sum
constexpr uint32_t GREY = 0, TRUE_COLOUR = 2, PALETTE = 3, GREY_ALPHA = 4, TRUE_COLOUR_ALPHA = 6;
constexpr uint64_t MOST_RATIO = 1100; // deflate cannot do better

uint32_t Big(const uint8_t* bytes)
{
    return uint32_t{bytes[0]} << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
}

void PutBig(std::vector<uint8_t>& bytes, uint32_t number)
{
    for (int shift = 24; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<uint8_t>(number >> shift));
    }
}

struct PngParts {
    uint32_t bits = 0, kind = 0;
    bool interlaced = false, ended = false;
    std::vector<uint8_t> deflated, alphas;
};

void ReadChunk(const std::string& name, std::span<const uint8_t> data, PngParts& parts,
               RasterPicture& picture)
{
    if (name == "IHDR" && data.size() == 13) {
        picture.width = Big(&data[0]);
        picture.height = Big(&data[4]);
        parts.bits = data[8];
        parts.kind = data[9];
        parts.interlaced = data[12] != 0;
    } else if (name == "PLTE") {
        for (size_t at = 0; at + 3 <= data.size() && picture.colours.size() < 256; at += 3) {
            picture.colours.push_back({data[at], data[at + 1], data[at + 2]});
        }
    } else if (name == "tRNS") {
        parts.alphas.assign(data.begin(), data.end());
    } else if (name == "pHYs" && data.size() == 9 && data[8] == 1) {
        picture.dotsAcross = Big(&data[0]);
        picture.dotsDown = Big(&data[4]);
    } else if (name == "IDAT") {
        parts.deflated.insert(parts.deflated.end(), data.begin(), data.end());
    }
    parts.ended = name == "IEND";
}

std::string ReadChunks(std::span<const uint8_t> bytes, PngParts& parts, RasterPicture& picture)
{
    for (size_t at = sizeof signature; !parts.ended;) {
        if (bytes.size() - at < CHUNK_FRAME || bytes.size() - at - CHUNK_FRAME < Big(&bytes[at])) {
            return "this is a PNG picture that is cut off";
        }
        const size_t count = Big(&bytes[at]);
        if (Crc32(bytes.subspan(at + 4, count + 4)) != Big(&bytes[at + 8 + count])) {
            return "this is a PNG picture that is damaged";
        }
        ReadChunk(std::string(reinterpret_cast<const char*>(&bytes[at + 4]), 4), bytes.subspan(at + 8, count),
                  parts, picture);
        at += count + CHUNK_FRAME;
    }
    return "";
}

uint8_t Paeth(int left, int above, int corner)
{
    const int all = left + above - corner;
    const int toLeft = std::abs(all - left), toAbove = std::abs(all - above),
              toCorner = std::abs(all - corner);
    return static_cast<uint8_t>(toLeft <= toAbove && toLeft <= toCorner ? left
                                : toAbove <= toCorner                   ? above
                                                                        : corner);
}

// False for a filter that does not exist.
bool Unfilter(uint8_t filter, std::span<uint8_t> row, std::span<const uint8_t> above, size_t step)
{
    for (size_t at = 0; at < row.size(); ++at) {
        const uint8_t left = at >= step ? row[at - step] : 0, corner = at >= step ? above[at - step] : 0;
        const int guess = filter == 1   ? left
                          : filter == 2 ? above[at]
                          : filter == 3 ? (left + above[at]) / 2
                          : filter == 4 ? Paeth(left, above[at], corner)
                                        : 0;
        row[at] = static_cast<uint8_t>(row[at] + guess);
    }
    return filter <= 4;
}

// A sample of a row, of 16 bits the upper ones.
uint8_t SampleAt(std::span<const uint8_t> row, size_t index, uint32_t bits)
{
    if (bits >= 8) {
        return row[index * bits / 8];
    }
    const size_t at = index * bits;
    return static_cast<uint8_t>(row[at / 8] >> (8 - bits - at % 8) & ((1u << bits) - 1));
}

// What is transparent lies on white paper.
uint8_t OnPaper(uint8_t value, uint8_t alpha)
{
    return static_cast<uint8_t>((value * alpha + 255 * (255 - alpha) + 127) / 255);
}

// Every column and row from the first on with this step.
struct Pass {
    uint32_t left, top, across, down;
};

constexpr Pass wholePicture[] = {{0, 0, 1, 1}};
constexpr Pass interlaced[] = {{0, 0, 8, 8}, {4, 0, 8, 8}, {0, 4, 4, 8}, {2, 0, 4, 4},
                               {0, 2, 2, 4}, {1, 0, 2, 2}, {0, 1, 1, 2}};

uint32_t PixelsOf(uint32_t size, uint32_t first, uint32_t step)
{
    return size > first ? (size - first - 1) / step + 1 : 0;
}

// The rows of a picture, coarse ones first when it is interlaced.
struct PngRows {
    uint32_t width, height, pixelBits;
    std::span<const Pass> passes;

    size_t RowBytes(const Pass& pass) const
    {
        return static_cast<size_t>((uint64_t{PixelsOf(width, pass.left, pass.across)} * pixelBits + 7) / 8);
    }
    // With a byte for each row's filter. A pass without columns has no rows.
    uint64_t Bytes() const
    {
        uint64_t all = 0;
        for (const Pass& pass : passes) {
            const size_t row = RowBytes(pass);
            all += row ? (uint64_t{row} + 1) * PixelsOf(height, pass.top, pass.down) : 0;
        }
        return all;
    }
};

// Puts a row of a pass between the pixels of the others.
void Spread(const PngRows& rows, const Pass& pass, std::span<const uint8_t> from, uint8_t* target)
{
    if (pass.across == 1) {
        memcpy(target, from.data(), from.size());
        return;
    }
    const uint32_t bits = rows.pixelBits, count = PixelsOf(rows.width, pass.left, pass.across);
    for (uint32_t index = 0; index < count; ++index) {
        const size_t at = size_t{pass.left} + size_t{index} * pass.across;
        if (bits >= 8) {
            memcpy(target + at * bits / 8, &from[size_t{index} * bits / 8], bits / 8);
            continue;
        }
        const size_t bit = size_t{index} * bits;
        const unsigned value = from[bit / 8] >> (8 - bits - bit % 8) & ((1u << bits) - 1);
        target[at * bits / 8] |= static_cast<uint8_t>(value << (8 - bits - at * bits % 8));
    }
}

// The picture's rows without filters; empty for a filter that does not exist.
std::vector<uint8_t> UnfilteredRows(const PngRows& rows, std::span<uint8_t> filtered)
{
    const size_t whole = rows.RowBytes(wholePicture[0]);
    std::vector<uint8_t> picture(whole * rows.height);
    size_t at = 0;
    for (const Pass& pass : rows.passes) {
        const size_t bytes = rows.RowBytes(pass);
        const std::vector<uint8_t> white(bytes);
        std::span<const uint8_t> above = white;
        for (uint64_t row = pass.top; bytes != 0 && row < rows.height; row += pass.down) {
            const std::span<uint8_t> line = filtered.subspan(at + 1, bytes);
            if (!Unfilter(filtered[at], line, above, std::max(1u, rows.pixelBits / 8))) {
                return {};
            }
            Spread(rows, pass, line, &picture[static_cast<size_t>(row) * whole]);
            above = line;
            at += bytes + 1;
        }
    }
    return picture;
}

void AppendRow(RasterPicture& picture, const PngParts& parts, std::span<const uint8_t> row, size_t samples)
{
    if (picture.depth == 1) {
        picture.rows.insert(picture.rows.end(), row.begin(), row.end());
        return;
    }
    const bool hasAlpha = parts.kind == GREY_ALPHA || parts.kind == TRUE_COLOUR_ALPHA;
    const size_t colours = hasAlpha ? samples - 1 : samples;
    const uint32_t scale = parts.kind == GREY && parts.bits < 8 ? 255 / ((1u << parts.bits) - 1) : 1;
    for (uint32_t column = 0; column < picture.width; ++column) {
        const uint8_t alpha = hasAlpha ? SampleAt(row, column * samples + colours, parts.bits) : 255;
        for (size_t colour = 0; colour < colours; ++colour) {
            const uint8_t value = SampleAt(row, column * samples + colour, parts.bits);
            picture.rows.push_back(
                OnPaper(static_cast<uint8_t>(value * scale), parts.kind == PALETTE ? 255 : alpha));
        }
    }
}

void FinishColours(RasterPicture& picture, const PngParts& parts)
{
    if (parts.kind == PALETTE) {
        for (size_t index = 0; index < std::min(parts.alphas.size(), picture.colours.size()); ++index) {
            for (uint8_t& value : picture.colours[index]) {
                value = OnPaper(value, parts.alphas[index]);
            }
        }
        picture.colours.resize(size_t{1} << picture.depth);
        return;
    }
    picture.colours.clear();
    for (uint32_t level = 0; picture.depth < 24 && level < 1u << picture.depth; ++level) {
        const auto grey = static_cast<uint8_t>(picture.depth == 1 ? level * 255 : level);
        picture.colours.push_back({grey, grey, grey});
    }
}

void Chunk(std::vector<uint8_t>& png, const char* name, std::span<const uint8_t> data)
{
    PutBig(png, static_cast<uint32_t>(data.size()));
    const size_t at = png.size();
    png.insert(png.end(), name, name + 4);
    png.insert(png.end(), data.begin(), data.end());
    PutBig(png, Crc32({&png[at], png.size() - at}));
}

} // namespace

RasterPicture DecodePng(std::span<const uint8_t> bytes)
{
    RasterPicture picture;
    PngParts parts;
    picture.fault = ReadChunks(bytes, parts, picture);
    constexpr size_t samplesOf[] = {1, 0, 3, 1, 2, 0, 4};
    const size_t samples = parts.kind < std::size(samplesOf) ? samplesOf[parts.kind] : 0;
    const bool goodBits = parts.bits == 8 || (parts.bits == 16 && parts.kind != PALETTE) ||
                          ((parts.bits == 1 || parts.bits == 2 || parts.bits == 4) && samples == 1);
    if (!picture.fault.empty()) {
        return picture;
    }
    const PngRows form = {picture.width, picture.height, static_cast<uint32_t>(samples) * parts.bits,
                          parts.interlaced ? std::span<const Pass>(interlaced) : wholePicture};
    const size_t rowBytes = form.RowBytes(wholePicture[0]);
    const uint64_t all = form.Bytes();
    if (samples == 0 || !goodBits || picture.width == 0 || picture.height == 0 ||
        (parts.kind == PALETTE && picture.colours.empty()) || picture.width > INT32_MAX / 32 ||
        picture.height > INT32_MAX || all > MOST_RASTER_BYTES ||
        all > (parts.deflated.size() + 64) * MOST_RATIO) {
        picture.fault = "this is a PNG picture whose header makes no sense";
        return picture;
    }
    std::vector<uint8_t> rows = Inflate(parts.deflated, static_cast<size_t>(all));
    if (rows.empty() || (rows = UnfilteredRows(form, rows)).empty()) {
        picture.fault = "this is a PNG picture that is damaged";
        return picture;
    }
    picture.depth = samples > 2 ? 24 : parts.bits == 1 ? 1 : 8;
    for (size_t at = 0; at < rows.size(); at += rowBytes) {
        AppendRow(picture, parts, {&rows[at], rowBytes}, samples);
    }
    FinishColours(picture, parts);
    return picture;
}

// Pictures of few colours keep them; grey ones of 8 bits need none.
std::vector<uint8_t> EncodePng(const Pixels& pixels)
{
    std::vector<uint8_t> png(std::begin(signature), std::end(signature)), head, palette, dots;
    const bool indexed = pixels.depth <= 8;
    PutBig(head, pixels.width);
    PutBig(head, pixels.height);
    head.insert(head.end(), {static_cast<uint8_t>(indexed ? pixels.depth : 8),
                             static_cast<uint8_t>(indexed ? PALETTE : TRUE_COLOUR), 0, 0, 0});
    Chunk(png, "IHDR", head);
    if (pixels.dotsAcross && pixels.dotsDown) {
        PutBig(dots, pixels.dotsAcross);
        PutBig(dots, pixels.dotsDown);
        dots.push_back(1);
        Chunk(png, "pHYs", dots);
    }
    for (const Rgb& colour : pixels.colours) {
        palette.insert(palette.end(), colour.begin(), colour.end());
    }
    if (indexed) {
        Chunk(png, "PLTE", palette);
    }
    const size_t stored = (size_t{pixels.width} * pixels.depth + 7) / 8;
    std::vector<Rgb> row(pixels.width);
    std::vector<uint8_t> line(1 + (indexed ? stored : row.size() * 3));
    Deflater deflater;
    for (uint32_t index = 0; index < pixels.height; ++index) {
        if (indexed) {
            memcpy(&line[1], StoredRow(pixels, index).data(), stored);
        } else {
            ReadRow(pixels, index, row);
            memcpy(&line[1], row.data(), row.size() * 3);
        }
        Add(deflater, line);
    }
    Chunk(png, "IDAT", Finish(deflater));
    Chunk(png, "IEND", {});
    return png;
}

} // namespace tifftool
