#pragma once

#include <tessel/foundation/platform.h>
#include <tessel/ui/fieldtype.h>

namespace tessel {

/// Determines the kind of a control from the exact name of its window class.
/// @param hWnd  the control; may be null
/// @return the kind; FT_UNKNOWN for any other class and without a window
FIELD_TYPE ClassifyControl(HWND hWnd);

} // namespace tessel
