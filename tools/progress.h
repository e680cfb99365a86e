/* What a user sees of long work. */
#ifndef TOOLS_PROGRESS_H
#define TOOLS_PROGRESS_H

#include <cstdint>

namespace tifftool {

// A bar on the standard error, drawn anew with each step; nothing for work of a few steps. Fits the
// library's progress callbacks and never stops the work.
int32_t DrawProgress(uint32_t total, uint32_t done, uint64_t user);

} // namespace tifftool

#endif
