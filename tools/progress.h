/* What a user sees of long work. */
#ifndef TOOLS_PROGRESS_H
#define TOOLS_PROGRESS_H

#include <cstdint>
#include <functional>
#include <string>

namespace tifftool {

// A bar on the standard error, drawn anew with each step; nothing for work of a few steps. Fits the
// library's progress callbacks and never stops the work.
int32_t DrawProgress(uint32_t total, uint32_t done, uint64_t user);

// Leaves the line that a bar stands in, so that a line of another kind can be printed.
void EndProgress();

// Does work that reports no steps, and says every second how long it has taken; nothing when it is
// short. The work prints nothing itself. Returns its result.
int32_t WithClock(const std::string& what, const std::function<int32_t()>& work);

} // namespace tifftool

#endif
