#pragma once

#include <windows.h>

#include <algorithm>
#include <utility>

// If the system does not count objects (0), the table entry that new ones get takes the place of the count: entries of
// released objects are reused first, so leaks make both grow.

/// The highest entry that a hundred objects get.
template <class Handle> long HighestEntry(Handle (*create)(), BOOL(WINAPI* destroy)(Handle)) {
    Handle handles[100];
    long highest = 0;
    for (Handle& handle : handles) {
        handle = create();
        highest = std::max(highest, static_cast<long>(LOWORD(reinterpret_cast<ULONG_PTR>(handle))));
    }
    for (const Handle handle : handles) destroy(handle);
    return highest;
}

/// Number of the process's kernel handles.
inline long KernelHandles() {
    DWORD count = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &count) && count != 0) return static_cast<long>(count);
    const auto createEvent = [] { return CreateEventW(nullptr, FALSE, FALSE, nullptr); };
    return HighestEntry<HANDLE>(createEvent, CloseHandle) / 4; // each entry is four numbers
}

/// Number of the process's GDI and USER objects.
inline std::pair<long, long> GuiObjects() {
    const DWORD gdi = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    const DWORD user = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS);
    if (gdi + user != 0) return {gdi, user};
    const auto createBrush = [] { return static_cast<HGDIOBJ>(CreateSolidBrush(RGB(1, 2, 3))); };
    const auto createMenu = [] { return CreateMenu(); };
    return {HighestEntry<HGDIOBJ>(createBrush, DeleteObject), HighestEntry<HMENU>(createMenu, DestroyMenu)};
}
