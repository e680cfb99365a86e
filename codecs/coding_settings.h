// What the calling thread codes with.
#pragma once

#include "core/thread_state.h"

namespace tiff {

inline constexpr uint32_t DEFAULT_K_FACTOR = 2;

struct CodingSettings {
    uint32_t chosenK;  // K factor of Group 3 two-dimensional coding; 0: none was chosen
    uint32_t codeMask; // the bit of its byte that the next CCITT code begins at; 0: none was written
};

inline CodingSettings& ThreadCoding()
{
    return SettingsIn<CodingSettings>(ThreadState().codecs);
}

} // namespace tiff
