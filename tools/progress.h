/* Shows the progress of long work. */
#ifndef TOOLS_PROGRESS_H
#define TOOLS_PROGRESS_H

#include <cstdint>
#include <functional>
#include <string>

namespace tifftool {

// Draws a bar on the standard error with each step: none for work of few steps, and none unless that is a
// terminal. Serves as the library's progress callback, and stops its work when the user wants to.
int32_t DrawProgress(uint32_t total, uint32_t done, uint64_t user);

// Ends the line of a bar, so that another line can be printed.
void EndProgress();

// Does work that reports no steps, and prints the seconds it has taken; prints nothing for short work. The
// work itself must not print. Returns its result.
int32_t WithClock(const std::string& what, const std::function<int32_t()>& work);

} // namespace tifftool

#endif
