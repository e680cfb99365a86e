// Pictures that an input describes, and the DIBs of them.
#pragma once

#include "scaffold.h"

namespace fuzz {

struct Picture {
    uint32_t width, height, bits;
    Bytes rows; // bytes of the rows from the top, the bits behind the last pixel 0

    size_t RowBytes() const
    {
        return (size_t{width} * bits + 7) / 8;
    }
    size_t Stride() const
    {
        return (RowBytes() + 3) / 4 * 4;
    }
};

// Rows repeat each other with changes, as those of real pictures do.
inline Picture PictureOf(Choices& choices)
{
    static constexpr uint32_t depths[] = {1, 1, 1, 4, 8, 24};
    Picture picture{1u + choices.Number(2) % 3000u, 1u + choices.Below(24), choices.OneOf(depths), {}};
    if (picture.bits > 1)
        picture.width = 1 + picture.width % 300;
    const size_t bytes = picture.RowBytes();
    const uint32_t step = 1u + choices.Byte(); // bytes from change to change
    const bool fromLeft = choices.Byte() & 1;
    picture.rows.resize(bytes * picture.height);
    for (size_t at = 0; at < picture.rows.size(); ++at) {
        const uint8_t above = at >= bytes ? picture.rows[at - bytes] : 0;
        const uint8_t before = at % bytes ? picture.rows[at - 1] : 0;
        picture.rows[at] = at % step == 0 && !choices.left.empty() ? choices.Byte()
                           : fromLeft                              ? before
                                                                   : above;
    }
    if (const uint32_t rest = picture.width * picture.bits % 8)
        for (size_t row = 0; row < picture.height; ++row)
            picture.rows[row * bytes + bytes - 1] &= static_cast<uint8_t>(0xFF00 >> rest);
    return picture;
}

// Black is 1 in bilevel rows, and the first colour in such a DIB.
inline Bytes DibOf(const Picture& picture)
{
    const uint32_t colours = picture.bits <= 8 ? 1u << picture.bits : 0;
    BITMAPINFOHEADER header{};
    header.biSize = sizeof(header);
    header.biWidth = static_cast<LONG>(picture.width);
    header.biHeight = static_cast<LONG>(picture.height);
    header.biPlanes = 1;
    header.biBitCount = static_cast<WORD>(picture.bits);
    Bytes dib(sizeof(header) + colours * 4);
    std::memcpy(dib.data(), &header, sizeof(header));
    for (uint32_t colour = 0; colour < colours; ++colour)
        std::memset(&dib[sizeof(header) + colour * 4], static_cast<int>(colour * 255 / (colours - 1)), 3);
    for (uint32_t row = picture.height; row-- > 0;) {
        const auto from = picture.rows.begin() + static_cast<ptrdiff_t>(row * picture.RowBytes());
        dib.insert(dib.end(), from, from + static_cast<ptrdiff_t>(picture.RowBytes()));
        dib.resize(dib.size() + picture.Stride() - picture.RowBytes());
    }
    return dib;
}

// The sample of each pixel, red first; of pixels of up to 8 bits the grey of their colour.
inline Bytes SamplesOf(const Picture& picture, Input rows, size_t stride, bool fromBottom, Input colours)
{
    Bytes samples;
    for (uint32_t row = 0; row < picture.height; ++row) {
        const Input bytes = rows.subspan(stride * (fromBottom ? picture.height - 1 - row : row));
        const uint32_t perByte = picture.bits < 8 ? 8 / picture.bits : 1;
        for (uint32_t at = 0; at < picture.width * (picture.bits == 24 ? 3 : 1); ++at) {
            const uint32_t shift = picture.bits < 8 ? 8 - picture.bits * (1 + at % perByte) : 0;
            const uint32_t sample = bytes[at / perByte] >> shift & ((1u << std::min(picture.bits, 8u)) - 1);
            samples.push_back(picture.bits == 24 ? bytes[at] : colours[sample * 4]);
        }
    }
    return samples;
}

inline Bytes SamplesOf(const Picture& picture, const Bytes& dib)
{
    BITMAPINFOHEADER header;
    Demand(dib.size() >= sizeof(header));
    std::memcpy(&header, dib.data(), sizeof(header));
    Demand(header.biWidth == static_cast<LONG>(picture.width) && header.biBitCount == picture.bits &&
           header.biHeight == static_cast<LONG>(picture.height));
    const Input rest = Input(dib).subspan(sizeof(header));
    const size_t colours = picture.bits == 24 ? 0 : header.biClrUsed ? header.biClrUsed : 1u << picture.bits;
    return SamplesOf(picture, rest.subspan(colours * 4), picture.Stride(), true, rest.first(colours * 4));
}

} // namespace fuzz
