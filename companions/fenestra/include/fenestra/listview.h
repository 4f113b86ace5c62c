#pragma once

#include <fenestra/window.h>

/// A list view in a dialog or another parent window.
class FENESTRA_API CListView : public CWnd {
public:
    /// Wraps an existing control.
    /// @param id             its dialog-item id; -1 for none
    /// @param parent         its parent; null for none
    /// @param style          window styles to add
    /// @param extendedStyle  list-view styles (LVS_EX_) to add
    CListView(int id, HWND parent, unsigned long style, unsigned long extendedStyle);

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
