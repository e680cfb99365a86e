// The differences between the savers.
#pragma once

#include "core/vocabulary.h"
#include "raster/save_selector.h"

namespace tiff {

enum class Resolution {
    Dib, // the DIB's, or the screen's
    Fax, // 204 by 98 or 196 dots per inch
};

// How a Group 3 page is marked for fill bits, which let every EOL end on a byte.
enum class FillBits { NotSaid, Always, Never, NeverThenAlways };

struct SaveVariant {
    uint32_t fixedSelector = 0;    // 0: the caller's
    uint32_t fixedFillOrder = 0;   // 0: the caller's
    bool sampleKinds = false;      // the selector's high byte counts
    bool identityTags = false;     // DateTime, Software, ImageDescription and Artist are written
    bool keepsColourSpace = false; // the header's compression field is the photometric value
    bool unknownIsStored = false;  // an unknown compression means none
    bool bilevelStart = false;     // a picture of any depth begins as black and white
    bool faxBoard = false;         // colours and rows as the boards want them
    bool jpeg = false;             // pages may be JPEG
    bool pageTags = false;         // NewSubfileType 2 and PageNumber
    bool followsColours = true;    // bilevel and grey pages follow the first colour
    Resolution resolution = Resolution::Dib;
    FillBits fillBits = FillBits::NotSaid;
};

inline constexpr SaveVariant plainSave = {.sampleKinds = true, .identityTags = true, .jpeg = true};
inline constexpr SaveVariant colourSpaceSave = {.fixedSelector = TIFF_SAVE_LZW_DIFFERENCES,
                                                .sampleKinds = true,
                                                .identityTags = true,
                                                .keepsColourSpace = true};
inline constexpr SaveVariant bitmapSave = {.identityTags = true, .jpeg = true, .followsColours = false};
inline constexpr SaveVariant memorySave = {
    .sampleKinds = true, .identityTags = true, .unknownIsStored = true, .jpeg = true};

// Boards that accept pages of one narrow form only.
inline constexpr SaveVariant gammaSave = {
    .faxBoard = true, .resolution = Resolution::Fax, .fillBits = FillBits::Never};
inline constexpr SaveVariant bicomSave = {.fixedSelector = TIFF_SAVE_GROUP3,
                                          .fixedFillOrder = 1,
                                          .bilevelStart = true,
                                          .faxBoard = true,
                                          .pageTags = true,
                                          .resolution = Resolution::Fax,
                                          .fillBits = FillBits::Always};
inline constexpr SaveVariant dialogicSave = {.fixedFillOrder = 2,
                                             .bilevelStart = true,
                                             .faxBoard = true,
                                             .pageTags = true,
                                             .resolution = Resolution::Fax,
                                             .fillBits = FillBits::NeverThenAlways};

} // namespace tiff
