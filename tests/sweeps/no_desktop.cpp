#include "sweeps/scene.h"

std::vector<sweeps::Row> sweeps::DesktopRows()
{
    return {};
}
