#pragma once

#include <tessel/foundation/platform.h>
#include <tessel/ui/fieldtype.h>

namespace tessel {

/// The kind of a control by the exact name of its window class.
/// @param hWnd  the control; null gives FT_UNKNOWN
/// @return the kind; FT_UNKNOWN for any other class and when it cannot be read
FIELD_TYPE ClassifyControl(HWND hWnd);

} // namespace tessel
