// Pictures as black and white: each row becomes greys, then bits. All sums are of whole numbers, so a picture
// gives the same dots everywhere.
#include "core/byte_order.h"
#include "core/errors.h"
#include "raster/dib.h"
#include "tiff/crop.h"

#include <array>
#include <bit>
#include <cstring>

namespace tiff {

namespace {

constexpr uint32_t GREYS = 256, WHITE = 255, MIDDLE = 128;

// Grey as people see it. The shares are of 65536.
constexpr uint8_t Luma(uint32_t blue, uint32_t green, uint32_t red)
{
    return static_cast<uint8_t>((7471 * blue + 38470 * green + 19595 * red + 32768) >> 16);
}

static_assert(Luma(255, 255, 255) == 255 && Luma(77, 77, 77) == 77);

using Greys = std::array<uint8_t, GREYS>;

// The grey of every index. Indexes without a colour are black.
Greys GreysOf(const DibView& view)
{
    Greys greys{};
    for (uint32_t index = 0; view.bitCount <= 8 && index < view.ColourCount(); ++index) {
        const uint8_t* colour = &view.colours[size_t{index} * view.colourBytes];
        greys[index] = Luma(colour[0], colour[1], colour[2]);
    }
    return greys;
}

bool IsRamp(const Greys& greys)
{
    for (uint32_t level = 0; level < GREYS; ++level)
        if (greys[level] != level)
            return false;
    return true;
}

// Five bits of a channel as eight.
constexpr uint32_t Widened(uint32_t pixel, uint32_t shift)
{
    const uint32_t five = pixel >> shift & 31;
    return five << 3 | five >> 2;
}

void ReadGreys(const DibView& view, const Greys& greys, const uint8_t* row, uint8_t* target)
{
    const uint32_t width = view.width, step = view.bitCount / 8;
    switch (view.bitCount) {
    case 1:
        for (uint32_t x = 0; x < width; ++x)
            target[x] = greys[BitAt(row, x)];
        break;
    case 4:
        for (uint32_t x = 0; x < width; ++x)
            target[x] = greys[NibbleAt(row, x)];
        break;
    case 8:
        for (uint32_t x = 0; x < width; ++x)
            target[x] = greys[row[x]];
        break;
    case 16:
        for (uint32_t x = 0; x < width; ++x, row += step) {
            const uint32_t pixel = row[0] | uint32_t{row[1]} << 8;
            target[x] = Luma(Widened(pixel, 0), Widened(pixel, 5), Widened(pixel, 10));
        }
        break;
    default:
        for (uint32_t x = 0; x < width; ++x, row += step)
            target[x] = Luma(row[0], row[1], row[2]);
    }
}

// The least greys that are white, of eight pixels side by side.
using Limits = std::array<uint8_t, 8>;

uint64_t EightBytes(const uint8_t* bytes)
{
    uint64_t word;
    std::memcpy(&word, bytes, sizeof(word));
    return std::endian::native == std::endian::big ? Swap64(word) : word;
}

// A bit for each grey below its limit, the first in the highest bit. A byte of the difference borrows where
// that is so; the product brings the eight borrows together.
uint8_t DarkOfEight(uint64_t greys, uint64_t limits)
{
    constexpr uint64_t HIGH = 0x8080808080808080u, GATHER = 0x8040201008040201u;
    const uint64_t difference = ((greys | HIGH) - (limits & ~HIGH)) ^ ((greys ^ ~limits) & HIGH);
    const uint64_t borrows = ((~greys & limits) | (~(greys ^ limits) & difference)) & HIGH;
    return static_cast<uint8_t>((borrows >> 7) * GATHER >> 56);
}

// Two sets of limits take turns. Behind the last pixel the bits are 0.
void PackDark(const uint8_t* greys, uint32_t width, const Limits (&limits)[2], uint8_t* target)
{
    const uint64_t turns[] = {EightBytes(limits[0].data()), EightBytes(limits[1].data())};
    uint32_t x = 0;
    for (; width - x >= 8; x += 8)
        *target++ = DarkOfEight(EightBytes(greys + x), turns[x / 8 % 2]);
    if (x < width) {
        Limits last;
        last.fill(WHITE);
        std::memcpy(last.data(), greys + x, width - x);
        *target = DarkOfEight(EightBytes(last.data()), turns[x / 8 % 2]);
    }
}

constexpr uint32_t SIDE = 16;

// The limits of an ordered square, spread as far apart as can be: every grey has as many white pixels in it
// as its share of 255 asks for. Between two places, the lowest bits of their numbers weigh most.
constexpr auto orderedLimits = [] {
    std::array<std::array<Limits, 2>, SIDE> limits{};
    for (uint32_t y = 0; y < SIDE; ++y)
        for (uint32_t x = 0; x < SIDE; ++x) {
            uint32_t place = 0;
            for (uint32_t bit = 0; bit < 4; ++bit)
                place |= ((x ^ y) >> bit & 1) << (7 - 2 * bit) | (y >> bit & 1) << (6 - 2 * bit);
            limits[y][x / 8][x % 8] = static_cast<uint8_t>(1 + place * 254 / 255);
        }
    return limits;
}();

// The greys of a row become black or white. A pixel's error goes on in sixteenths: 7 to the next pixel, 3, 5
// and 1 to the row below. Shares that would leave the picture at its sides stay at the row's end. In the last
// row the next pixel gets all of it, so that pictures of few rows keep their mean, too.
template <int32_t STEP, bool LAST>
void DiffuseRow(const uint8_t* greys, uint32_t width, int32_t* pending, uint8_t* target)
{
    const ptrdiff_t first = STEP > 0 ? 0 : ptrdiff_t{width} - 1, behind = first + STEP * ptrdiff_t{width};
    int32_t forward = 0, below = 0, corner = 0;
    for (ptrdiff_t x = first; x != behind; x += STEP) {
        const int32_t level = greys[x] + pending[x] + forward;
        const int32_t dot = (static_cast<int32_t>(MIDDLE) - 1 - level) >> 31 & static_cast<int32_t>(WHITE);
        target[x] = static_cast<uint8_t>(dot);
        const int32_t error = level - dot;
        const int32_t back = LAST ? 0 : error * 3 >> 4, down = LAST ? 0 : error * 5 >> 4;
        forward = LAST ? error : (error * 7 + 8) >> 4;
        pending[x - STEP] = below + back;
        below = corner + down;
        corner = error - forward - back - down;
    }
    pending[behind - STEP] = below + corner + forward;
    pending[first] += pending[first - STEP];
}

struct Job {
    const DibView& view;
    uint32_t method;
    Limits limits; // of the plain threshold
    Greys greys;
    bool areGreys;    // the rows are greys as they lie
    uint8_t* room;    // a row of greys
    int32_t* pending; // errors for the next row, with a cell before the first and one behind the last
};

const uint8_t* GreyRow(const Job& job, uint32_t row)
{
    const uint8_t* stored = job.view.Row(row);
    if (job.areGreys)
        return stored;
    ReadGreys(job.view, job.greys, stored, job.room);
    return job.room;
}

// A row that alternates from a black pixel on has one run more than pixels when it is coded for a fax: the
// white one of no length before it. Readers with room for as many runs as pixels, rounded to 32, would lose
// the page from there. The first two pixels change places.
void BreakAlternation(uint8_t* row, uint32_t width)
{
    constexpr uint8_t ALTERNATING = 0xAA, BROKEN = 0x6A;
    const size_t bytes = width / 8;
    if (width % 32 == 0 && row[0] == ALTERNATING && std::memcmp(row, row + 1, bytes - 1) == 0)
        row[0] = BROKEN;
}

void DitherRow(const Job& job, uint32_t row, uint8_t* target)
{
    const uint32_t width = job.view.width;
    const uint8_t* greys = GreyRow(job, row);
    const Limits plain[2] = {job.limits, job.limits};
    if (job.method == TIFF_DITHER_ORDERED) {
        const auto& square = orderedLimits[row % SIDE];
        const Limits ordered[2] = {square[0], square[1]};
        PackDark(greys, width, ordered, target);
        return BreakAlternation(target, width);
    }
    if (job.method == TIFF_DITHER_DIFFUSION) {
        // Rows go to and fro, so that dots form no slanted lines.
        const bool last = row + 1 == job.view.height;
        const auto there = last ? DiffuseRow<1, true> : DiffuseRow<1, false>;
        const auto back = last ? DiffuseRow<-1, true> : DiffuseRow<-1, false>;
        (row % 2 ? back : there)(greys, width, job.pending, job.room);
        greys = job.room;
    }
    PackDark(greys, width, plain, target);
    if (job.method == TIFF_DITHER_DIFFUSION)
        BreakAlternation(target, width);
}

HGLOBAL Dither(const LockedDib& dib, uint32_t method, uint32_t threshold, Status& status)
{
    const DibView& view = dib.view;
    status = dib.status;
    if (status != error::None)
        return nullptr;
    if (view.compression != 0)
        status = error::ColourFormat;
    else if (method > TIFF_DITHER_DIFFUSION || threshold > WHITE)
        status = error::InvalidParameters;
    if (status != error::None)
        return nullptr;
    BITMAPINFOHEADER header = DibHeader(view.width, view.height, 1, 2);
    header.biXPelsPerMeter = view.dotsPerMetreX;
    header.biYPelsPerMeter = view.dotsPerMetreY;
    FreshDib result(header);
    const uint64_t cells = uint64_t{view.width} + 2;
    const GlobalBlock roomBlock(cells * sizeof(int32_t) + view.width);
    const Locked<int32_t> room(roomBlock.Get());
    if (!result.made || !room) {
        status = error::NotEnoughMemory;
        return nullptr;
    }
    Job job{.view = view,
            .method = method,
            .limits = {},
            .greys = GreysOf(view),
            .areGreys = false,
            .room = reinterpret_cast<uint8_t*>(room.Get() + cells),
            .pending = room.Get() + 1};
    job.limits.fill(static_cast<uint8_t>(threshold && method == TIFF_DITHER_THRESHOLD ? threshold : MIDDLE));
    job.areGreys = view.bitCount == 8 && IsRamp(job.greys);
    result.colours[0] = {WHITE, WHITE, WHITE, 0};
    result.colours[1] = {};
    const size_t used = (size_t{view.width} + 7) / 8;
    for (uint32_t row = 0; row < view.height; ++row) {
        uint8_t* const target = result.rows + result.stride * (view.height - 1 - row);
        DitherRow(job, row, target);
        std::memset(target + used, 0, result.stride - used);
    }
    return result.Release();
}

} // namespace

} // namespace tiff

using namespace tiff;

extern "C" HGLOBAL DitherDIB(HGLOBAL dib, uint32_t method, uint32_t threshold) noexcept
{
    Status status;
    HGLOBAL result = Dither(LockedDib(dib), method, threshold, status);
    StoreLastError(status);
    return result;
}
