// Text pages beside the same lines drawn by hand.
#pragma once

#include <string>

// The text is written into the folder.
void TimeText(const std::string& folder);
