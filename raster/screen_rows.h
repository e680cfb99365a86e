// The rows of a picture as pixels of the screen. A row is cut to the part shown and scaled; finished rows
// gather in a band of up to 64 KB, which is turned and shown at once. Scaled bilevel pixels are set when one
// of the pixels behind them is, or grey by the share of those that are.
#pragma once

#include "core/global_block.h"
#include "core/vocabulary.h"
#include "raster/picture_format.h"
#include "raster/rotate.h"

#include <optional>

namespace tiff {

// Pixels of the screen, from the top left.
struct ScreenBand {
    uint32_t x, y, width, height;
    uint32_t stride;
    const uint8_t* rows;
};

struct ScreenRowsOrder {
    ShownPicture shown;
    Turn turn;
    bool grey;     // bilevel pictures that are reduced
    bool inverted; // complements the colours
};

// Whether BeginScreenRows takes pictures of this format.
bool ShowsOnScreen(const PictureFormat& format);

struct RowKind;

struct ScreenRows {
    void (*show)(void* user, const ScreenBand& band); // to be set by the user, as the next field
    void* user;

    PixelForm form;
    uint32_t colourCount; // of pixels that are bits or bytes
    std::array<RGBQUAD, 256> colours;

    uint32_t bitCount; // of the picture
    Turn turn;
    bool inverted;
    Conversion conversion;
    const RowKind* kind;
    GlobalBlock block;
    std::optional<Locked<uint8_t>> memory;
    std::span<PixelSpan> rows, columns; // behind the device pixels, as the page has them
    uint8_t* collected;                 // from the page rows behind one device row
    uint32_t collectedRows;
    uint8_t* band; // device rows, as the page has them
    uint8_t* turned;
    uint32_t stride, turnedStride, bandRows;
    uint32_t next; // device row
    uint32_t held; // device rows in the band
};

// Chooses form and colours and gets the memory. Fails with 16 for pictures that the screen does not show, and
// with 1.
[[nodiscard]] Status BeginScreenRows(ScreenRows& rows, const PictureFormat& format,
                                     const ScreenRowsOrder& order);

// Rows come in order. The line stays as it is.
void TakeScreenRow(ScreenRows& rows, const uint8_t* line, uint32_t row);

// Shows what is held, the last rows in part when the picture has ended early.
void EndScreenRows(ScreenRows& rows);

} // namespace tiff
