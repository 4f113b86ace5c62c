#pragma once

#include <fenestra/window.h>

/// Adds styles to a control. Without a control nothing happens.
/// @param control          the control; may be null
/// @param style            styles to add
/// @param extendedMessage  message that sets the control's extended styles
/// @param extendedStyle    extended styles to add
inline void AddStyles(HWND control, unsigned long style, UINT extendedMessage, unsigned long extendedStyle) {
    if (control == nullptr) return;
    if (style != 0) {
        const LONG former = GetWindowLongW(control, GWL_STYLE);
        (void)SetWindowLongW(control, GWL_STYLE,
                             former | static_cast<LONG>(style)); // fails only if the control no longer exists
    }
    if (extendedStyle != 0) {
        (void)SendMessageW(control, extendedMessage, extendedStyle,
                           static_cast<LPARAM>(extendedStyle)); // returns the previous style
    }
}
