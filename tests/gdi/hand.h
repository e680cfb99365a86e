// Text drawn by GDI without the library.
#pragma once

#include "gdi/desktop.h"

#include <cstring>
#include <string_view>

inline constexpr char FACE[] = "Arial";

// A page drawn by hand; the font stays selected for measuring.
class Hand {
public:
    Hand(int32_t width, int32_t height, const LOGFONTA* font, const uint8_t* bits = nullptr)
        : dc(CreateCompatibleDC(nullptr)), page(CreateBitmap(width, height, 1, 1, bits)),
          font(font ? CreateFontIndirectA(font) : nullptr)
    {
        oldPage = SelectObject(dc, page);
        if (font)
            oldFont = SelectObject(dc, this->font);
        if (!bits)
            PatBlt(dc, 0, 0, width, height, WHITENESS);
        SetBkMode(dc, TRANSPARENT);
    }
    Hand(const Hand&) = delete;
    Hand& operator=(const Hand&) = delete;
    ~Hand()
    {
        SelectObject(dc, oldPage);
        if (font)
            DeleteObject((SelectObject(dc, oldFont), font));
        DeleteObject(page);
        DeleteDC(dc);
    }
    SIZE Size(std::string_view text) const
    {
        SIZE size{};
        GetTextExtentPoint32A(dc, text.data(), static_cast<int>(text.size()), &size);
        return size;
    }
    int32_t LineHeight() const
    {
        TEXTMETRICA metrics{};
        GetTextMetricsA(dc, &metrics);
        return metrics.tmHeight + metrics.tmExternalLeading;
    }
    Hand& Text(int32_t x, int32_t y, std::string_view text)
    {
        TextOutA(dc, x, y, text.data(), static_cast<int>(text.size()));
        return *this;
    }
    Picture Taken()
    {
        SelectObject(dc, oldPage);
        const Picture picture = Look(page);
        SelectObject(dc, page);
        return picture;
    }

private:
    HDC dc;
    HBITMAP page;
    HFONT font;
    HGDIOBJ oldPage = nullptr, oldFont = nullptr;
};

inline LOGFONTA Font(int32_t height, int32_t weight = 400, bool italic = false)
{
    LOGFONTA font{};
    font.lfHeight = height;
    font.lfWeight = weight;
    font.lfItalic = italic;
    font.lfCharSet = DEFAULT_CHARSET;
    std::strcpy(font.lfFaceName, FACE);
    return font;
}
