// A desktop of 96 by 120 dots per inch, so that swapped axes show.
#include "core/desktop.h"

namespace tiff {

DotsPerInch ScreenResolution()
{
    return {96, 120};
}

void ShowErrorBox(const char*)
{
}

BusyCursor::BusyCursor() : previous(nullptr)
{
}

BusyCursor::~BusyCursor()
{
    previous = nullptr;
}

} // namespace tiff
