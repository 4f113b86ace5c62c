#pragma once

#include <fenestra/window.h>

/// A tree view.
class FENESTRA_API CTreeView : public CWnd {
public:
    /// Stands for an existing control.
    /// @param window         the control; null for none
    /// @param style          window styles to set beside those that it has
    /// @param extendedStyle  tree-view styles (TVS_EX_) to set beside those that it has
    CTreeView(HWND window, unsigned long style, unsigned long extendedStyle);

    /// Handles a notification of the control.
    /// @param header  the notification, valid during the call; null is not handled
    /// @param result  receives what the control is to be told; unchanged when it is not handled
    /// @return true: handled; false: not
    virtual bool OnNotify(NMHDR* header, unsigned long& result);

protected:
    /// What the control is to be told; override it to react to notifications.
    /// @param header  the notification, valid during the call
    /// @return 0: the control does what it does by itself
    virtual unsigned long OnNotification(NMHDR& header);
};
