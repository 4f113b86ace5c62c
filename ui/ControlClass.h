#pragma once

#include <tessel/fieldtype.h>
#include <tessel/platform.h>

#include <span>

namespace tessel {

/// A window class and the kind of control that it is.
struct ControlClass {
    const wchar_t* className;
    FIELD_TYPE type;
};

/// The kind of a control by the exact name of its window class.
/// @param hWnd     the control; null gives FT_UNKNOWN
/// @param classes  the classes that are known, in the order of comparison
/// @return the kind; FT_UNKNOWN for any other class and when it cannot be read
FIELD_TYPE ClassifyControl(HWND hWnd, std::span<const ControlClass> classes);

} // namespace tessel
