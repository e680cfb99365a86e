// Guards for GDI and USER objects. Each releases its object at the end of its scope.
#pragma once

#include "core/win32.h"

#include <utility>

namespace tiff {

// A null window means the screen.
class WindowDc {
public:
    explicit WindowDc(HWND window) : window(window), dc(GetDC(window))
    {
    }
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;
    ~WindowDc()
    {
        if (dc)
            ReleaseDC(window, dc);
    }

    explicit operator bool() const
    {
        return dc != nullptr;
    }
    HDC Get() const
    {
        return dc;
    }

private:
    HWND window;
    HDC dc;
};

// A memory device context like the screen.
class MemoryDc {
public:
    MemoryDc() : dc(CreateCompatibleDC(nullptr))
    {
    }
    MemoryDc(const MemoryDc&) = delete;
    MemoryDc& operator=(const MemoryDc&) = delete;
    ~MemoryDc()
    {
        if (dc)
            DeleteDC(dc);
    }

    explicit operator bool() const
    {
        return dc != nullptr;
    }
    HDC Get() const
    {
        return dc;
    }

private:
    HDC dc;
};

// A bitmap or font, selected; null changes nothing. False when it cannot be selected.
class Selected {
public:
    Selected(HDC dc, HGDIOBJ object) : dc(dc), previous(object ? SelectObject(dc, object) : nullptr)
    {
    }
    Selected(const Selected&) = delete;
    Selected& operator=(const Selected&) = delete;
    ~Selected()
    {
        if (previous)
            SelectObject(dc, previous);
    }

    explicit operator bool() const
    {
        return previous != nullptr;
    }

private:
    HDC dc;
    HGDIOBJ previous;
};

// A device context in device pixels from the upper left, for a scope; false when it cannot be.
class DevicePixels {
public:
    explicit DevicePixels(HDC dc) : dc(dc), saved(SaveDC(dc))
    {
        if (!saved)
            return;
        SetMapMode(dc, MM_TEXT);
        SetWindowOrgEx(dc, 0, 0, nullptr);
        SetViewportOrgEx(dc, 0, 0, nullptr);
        // The plain mode has no transform.
        plain = ModifyWorldTransform(dc, nullptr, MWT_IDENTITY) || GetGraphicsMode(dc) == GM_COMPATIBLE;
    }
    DevicePixels(const DevicePixels&) = delete;
    DevicePixels& operator=(const DevicePixels&) = delete;
    ~DevicePixels()
    {
        if (saved)
            RestoreDC(dc, saved);
    }

    explicit operator bool() const
    {
        return plain;
    }

private:
    HDC dc;
    int saved;
    bool plain = false;
};

template <class Handle>
class GdiObject {
public:
    GdiObject() = default;
    explicit GdiObject(Handle object) : object(object)
    {
    }
    GdiObject(const GdiObject&) = delete;
    GdiObject& operator=(const GdiObject&) = delete;
    ~GdiObject()
    {
        Adopt(nullptr);
    }

    explicit operator bool() const
    {
        return object != nullptr;
    }
    Handle Get() const
    {
        return object;
    }
    Handle Release()
    {
        return std::exchange(object, nullptr);
    }
    void Adopt(Handle other)
    {
        if (object)
            DeleteObject(object);
        object = other;
    }

private:
    Handle object = nullptr;
};

// A foreground palette, selected and realised; null changes nothing.
class SelectedPalette {
public:
    SelectedPalette(HDC dc, HPALETTE palette)
        : dc(dc), previous(palette ? SelectPalette(dc, palette, FALSE) : nullptr)
    {
        if (previous)
            RealizePalette(dc);
    }
    SelectedPalette(const SelectedPalette&) = delete;
    SelectedPalette& operator=(const SelectedPalette&) = delete;
    ~SelectedPalette()
    {
        if (previous)
            SelectPalette(dc, previous, FALSE);
    }

private:
    HDC dc;
    HPALETTE previous;
};

class OpenedClipboard {
public:
    OpenedClipboard() : opened(OpenClipboard(nullptr))
    {
    }
    OpenedClipboard(const OpenedClipboard&) = delete;
    OpenedClipboard& operator=(const OpenedClipboard&) = delete;
    ~OpenedClipboard()
    {
        if (opened)
            CloseClipboard();
    }

    explicit operator bool() const
    {
        return opened;
    }

private:
    BOOL opened;
};

} // namespace tiff
