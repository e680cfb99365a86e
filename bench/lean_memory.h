// What the timing programs ask of their memory.
#pragma once

#include <cstddef>

// Large blocks come fresh from the system each time, as they do on Windows, instead of being
// kept and used again: then filling one pays for each of its pages.
void TakeLargeBlocksFromSystem(bool take);

size_t LiveBytes();
size_t PeakBytes();
void ResetPeakBytes();
