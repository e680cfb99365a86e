// What each way of saving does differently from the others.
#pragma once

#include "core/vocabulary.h"

namespace tiff {

struct SaveVariant {
    uint32_t fixedSelector = 0;    // 0: the caller's
    bool sampleKinds = false;      // the selector's high byte is heeded
    bool identityTags = false;     // DateTime, Software, ImageDescription and Artist are written
    bool keepsColourSpace = false; // the header's compression field is the photometric to write
    bool unknownIsStored = false;  // an unknown compression means none
};

inline constexpr SaveVariant plainSave = {.sampleKinds = true, .identityTags = true};
inline constexpr SaveVariant colourSpaceSave = {
    .fixedSelector = 204, .sampleKinds = true, .identityTags = true, .keepsColourSpace = true};
inline constexpr SaveVariant bitmapSave = {.identityTags = true};
inline constexpr SaveVariant memorySave = {
    .sampleKinds = true, .identityTags = true, .unknownIsStored = true};

} // namespace tiff
