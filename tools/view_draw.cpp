#include "view_draw.h"

namespace tiffview {

void DrawSentence(HWND window, HDC dc, const std::string& sentence, bool overPage)
{
    RECT client;
    GetClientRect(window, &client);
    if (overPage) {
        client.bottom = 24;
    }
    FillRect(dc, &client, GetSysColorBrush(overPage ? COLOR_INFOBK : COLOR_WINDOW));
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, GetSysColor(overPage ? COLOR_INFOTEXT : COLOR_WINDOWTEXT));
    HGDIOBJ before = SelectObject(dc, GetStockObject(DEFAULT_GUI_FONT));
    DrawTextA(dc, sentence.c_str(), -1, &client, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_END_ELLIPSIS);
    SelectObject(dc, before);
}

uint32_t DrawPage(HWND window, HDC dc, const Document& document, const View& view, const Layout& layout)
{
    // The library divides the true size by a ratio.
    const double ratio = 1 / layout.scale;
    const int32_t parts = ratio < 1000 ? 1'000'000 : 1;
    const auto divided = static_cast<int32_t>(ratio * parts + 0.5);
    const int32_t zooms[] = {parts, divided, parts, divided};
    uint32_t flags = view.turn;
    flags |= view.mode == Mode::Pixels ? 0u : uint32_t{TIFF_TRUE_SIZE};
    flags |= view.inverted ? uint32_t{TIFF_INVERT_SCREEN} : 0u;
    flags |= view.grey ? uint32_t{TIFF_GREY_SCREEN} : 0u;
    return DecompressToScreen(document.format, window, dc, document.path.c_str(), document.page, zooms, flags)
               ? 0
               : TiffError();
}

} // namespace tiffview
