// A desktop of 96 by 120 dots per inch, so that swapped axes show.
#include "core/desktop.h"
#include "containers/cals_dialogs.h"

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

// The dialogs are answered with Cancel.
namespace tiff::cals {

Status ShowHeader(const DialogRequest&)
{
    return CANCELLED;
}

Status EditHeader(const DialogRequest&)
{
    return CANCELLED;
}

} // namespace tiff::cals
