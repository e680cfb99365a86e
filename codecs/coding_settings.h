// The calling thread's settings for coding.
#pragma once

#include "core/thread_state.h"
#include "tiff/fax_quality.h"

namespace tiff {

inline constexpr uint32_t DEFAULT_K_FACTOR = 2;

struct CodingSettings {
    uint32_t chosenK;     // K factor of Group 3 two-dimensional coding; 0 when none was chosen
    uint32_t codeMask;    // the bit of its byte where the next CCITT code begins; 0 when none was written
    uint32_t jpegQuality; // 0 when none was chosen
    TiffDecodeQuality quality;
};

inline CodingSettings& ThreadCoding()
{
    return SettingsIn<CodingSettings>(ThreadState().codecs);
}

} // namespace tiff
