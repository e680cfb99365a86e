// The control of the timing programs over their memory.
#pragma once

#include <cstddef>

// Takes large blocks fresh from the system each time, as Windows does, instead of using old ones again:
// filling a block then includes the cost of each of its memory pages.
void TakeLargeBlocksFromSystem(bool take);

size_t LiveBytes();
size_t PeakBytes();
void ResetPeakBytes();
