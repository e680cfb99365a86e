// Shows a picture of any rows in a window of any size, turn and zoom: every band must lie in the window, and
// each pixel of it comes once.
#include "raster/screen_rows.h"
#include "scaffold.h"

namespace {

struct Shown {
    uint32_t width, height;
    uint64_t pixels = 0;
    uint32_t sum = 0; // so that the bytes are read
};

void TakeBand(void* user, const tiff::ScreenBand& band)
{
    auto& shown = *static_cast<Shown*>(user);
    fuzz::Demand(band.x + band.width <= shown.width && band.y + band.height <= shown.height);
    shown.pixels += uint64_t{band.width} * band.height;
    for (size_t at = 0; at < size_t{band.stride} * band.height; ++at)
        shown.sum += band.rows[at];
}

struct Order {
    uint16_t width, height, roomX, roomY;
    uint8_t bits, flags, dpiX, dpiY, zoomX, zoomY, positionX, positionY;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Order order;
    if (size < sizeof(order))
        return 0;
    const fuzz::Run run(64u << 20);
    std::memcpy(&order, data, sizeof(order));
    constexpr uint32_t depths[] = {1, 4, 8, 24};
    tiff::PictureFormat format =
        tiff::BilevelFormat(1u + order.width % 2000u, 1u + order.height % 300u, 0, 0);
    format.stored.biBitCount = static_cast<WORD>(depths[order.bits % 4]);
    const auto axis = [](uint32_t pixels, uint32_t room, uint8_t dpi, uint8_t zoom, uint8_t position) {
        return tiff::ScreenAxis{pixels, static_cast<double>(dpi), 96, (1.0 + zoom) / 16, room % 700,
                                17,     {0, 200, position}};
    };
    const auto turn = static_cast<tiff::Turn>(order.flags & 3);
    auto x = static_cast<uint32_t>(format.stored.biWidth), y = static_cast<uint32_t>(format.stored.biHeight);
    if (tiff::AxesOf(turn).rowsAreColumns)
        std::swap(x, y);
    tiff::ScreenRowsOrder rowsOrder{
        .turn = turn, .grey = (order.flags & 4) != 0, .inverted = (order.flags & 8) != 0};
    rowsOrder.shown = tiff::PlaceOnScreen(static_cast<tiff::Placement>((order.flags >> 4) % 3u),
                                          axis(x, order.roomX, order.dpiX, order.zoomX, order.positionX),
                                          axis(y, order.roomY, order.dpiY, order.zoomY, order.positionY));
    Shown shown{rowsOrder.shown.x.shown, rowsOrder.shown.y.shown};
    tiff::ScreenRows rows{TakeBand, &shown};
    if (tiff::BeginScreenRows(rows, format, rowsOrder) != 0)
        return 0;
    std::vector<uint8_t> line((static_cast<size_t>(format.stored.biWidth) * format.stored.biBitCount + 7) /
                              8);
    for (uint32_t row = 0; row < static_cast<uint32_t>(format.stored.biHeight); ++row) {
        for (size_t at = 0; at < line.size(); ++at)
            line[at] = data[(at + row * 7) % size];
        tiff::TakeScreenRow(rows, line.data(), row);
    }
    tiff::EndScreenRows(rows);
    fuzz::Demand(shown.pixels == uint64_t{shown.width} * shown.height);
    return static_cast<int>(shown.sum & 0);
}
