#include "raster/screen_lines.h"

#include "raster/save_settings.h"
#include "tiff/screen.h"

#include <utility>

namespace tiff {

namespace {

enum class Depth { Mono, Palette, TrueColour };

constexpr Depth DepthOf(uint32_t bitCount)
{
    return bitCount == 1 ? Depth::Mono : bitCount == 24 ? Depth::TrueColour : Depth::Palette;
}

// The record may be any address: it counts only as the drawing that the thread knows.
template <Depth DEPTH, Turn TURN>
intptr_t FlushLineToScreen(const void* line, uint32_t row, const void* context)
{
    ScreenRows* rows = ThreadRaster().drawing;
    if (rows && rows == context && DepthOf(rows->bitCount) == DEPTH && rows->turn == TURN)
        TakeScreenRow(*rows, static_cast<const uint8_t*>(line), row);
    return 0;
}

// By depth and turn.
constexpr TiffLineCallback routines[3][4] = {
    {FlushMonoLineToScreen, FlushMonoRotLineToScreen, FlushMonoRot18LineToScreen, FlushMonoRot27LineToScreen},
    {FlushRGBLineToScreen, FlushRGBRotLineToScreen, FlushRGBRot18LineToScreen, FlushRGBRot27LineToScreen},
    {FlushRGB24LineToScreen, FlushRGB24RotLineToScreen, FlushRGB24Rot18LineToScreen,
     FlushRGB24Rot27LineToScreen},
};

} // namespace

TiffLineCallback ScreenRoutine(uint32_t bitCount, Turn turn)
{
    return routines[static_cast<size_t>(DepthOf(bitCount))][static_cast<size_t>(turn)];
}

ThreadDrawing::ThreadDrawing(ScreenRows& rows) : before(std::exchange(ThreadRaster().drawing, &rows))
{
}

ThreadDrawing::~ThreadDrawing()
{
    ThreadRaster().drawing = before;
}

} // namespace tiff

using namespace tiff;

extern "C" intptr_t FlushMonoLineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushLineToScreen<Depth::Mono, Turn::None>(line, row, context);
}

extern "C" intptr_t FlushMonoRotLineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushLineToScreen<Depth::Mono, Turn::Quarter>(line, row, context);
}

extern "C" intptr_t FlushMonoRot18LineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushLineToScreen<Depth::Mono, Turn::Half>(line, row, context);
}

extern "C" intptr_t FlushMonoRot27LineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushLineToScreen<Depth::Mono, Turn::ThreeQuarters>(line, row, context);
}

extern "C" intptr_t FlushRGBLineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushLineToScreen<Depth::Palette, Turn::None>(line, row, context);
}

extern "C" intptr_t FlushRGBRotLineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushLineToScreen<Depth::Palette, Turn::Quarter>(line, row, context);
}

extern "C" intptr_t FlushRGBRot18LineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushLineToScreen<Depth::Palette, Turn::Half>(line, row, context);
}

extern "C" intptr_t FlushRGBRot27LineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushLineToScreen<Depth::Palette, Turn::ThreeQuarters>(line, row, context);
}

extern "C" intptr_t FlushRGB24LineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushLineToScreen<Depth::TrueColour, Turn::None>(line, row, context);
}

extern "C" intptr_t FlushRGB24RotLineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushLineToScreen<Depth::TrueColour, Turn::Quarter>(line, row, context);
}

extern "C" intptr_t FlushRGB24Rot18LineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushLineToScreen<Depth::TrueColour, Turn::Half>(line, row, context);
}

extern "C" intptr_t FlushRGB24Rot27LineToScreen(void* line, uint32_t row, void* context) noexcept
{
    return FlushLineToScreen<Depth::TrueColour, Turn::ThreeQuarters>(line, row, context);
}
