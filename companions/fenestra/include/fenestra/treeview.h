#pragma once

#include <fenestra/window.h>

/// A tree view.
class FENESTRA_API CTreeView : public CWnd {
public:
    /// Wraps an existing control.
    /// @param window         the control; null for none
    /// @param style          window styles to add
    /// @param extendedStyle  tree-view styles (TVS_EX_) to add
    CTreeView(HWND window, unsigned long style, unsigned long extendedStyle);

    /// Handles a notification of the control.
    /// @param header  the notification, valid during the call; null is not handled
    /// @param result  receives the result for the control; unchanged if not handled
    /// @return true: handled; false: not
    virtual bool OnNotify(NMHDR* header, unsigned long& result);

protected:
    /// Override it to react to notifications.
    /// @param header  the notification, valid during the call
    /// @return the result for the control; 0 keeps its default behaviour
    virtual unsigned long OnNotification(NMHDR& header);
};
