// Streams of baseline JPEG to rows of pixels, a row of MCUs at a time.
#pragma once

#include "codecs/jpeg/colour.h"
#include "codecs/jpeg/scan.h"
#include "core/global_block.h"

#include <optional>

namespace tiff::jpeg {

// What a stream must hold: a strip of a page.
struct StripForm {
    uint32_t width, rows;
    uint32_t samples;
    Colours colours;
    bool asksAdobe; // whether its inks are YCCK when the stream says so
};

// Takes rows of pixels, as many bytes each as there are samples. For YCbCr these are B, G, R.
struct RowTaker {
    uint8_t* (*place)(void* record); // where the next row goes
    Status (*take)(void* record);    // the row is there
    void* record;
};

// The state of decoding a page. It lies in zeroed memory.
struct Decoder {
    TableSet pageTables;
    Header header; // of the stream in work
    Component components[MOST_COMPONENTS];
    Scan scans[MOST_COMPONENTS];
    ByteSource sources[MOST_COMPONENTS]; // one for each scan; the first also reads the headers
    uint32_t scanCount;
    uint32_t mostHorizontal, mostVertical; // factors
    uint32_t mcusAcross, mcuRows;
    bool mixesLines; // a row may need the lines of the next row of MCUs
};

// Memory that depends on the frame.
struct DecoderLines {
    GlobalBlock block;
    std::optional<Locked<uint8_t>> locked;
    uint64_t bytes = 0;
    uint8_t* widened[MOST_COMPONENTS] = {};
    int16_t *scratch = nullptr, *secondScratch = nullptr;
};

// Decodes the part of the stream that the first source stands at. Fails with 5 after all rows of MCUs that
// are whole, and with 1, 6, 11, 12 and 16; `taken` counts the rows.
[[nodiscard]] Status DecodeStream(Decoder& decoder, DecoderLines& lines, const StripForm& form,
                                  const RowTaker& taker, uint32_t& taken);

} // namespace tiff::jpeg
