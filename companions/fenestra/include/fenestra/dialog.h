#pragma once

#include <fenestra/window.h>

/// A dialog created from a template resource. Derive from it and override the handlers of the events you need.
///
/// One object runs one dialog at a time and must outlive it: destroying the object destroys the dialog. A copy refers
/// to the same window but gets none of its messages. Threads: a dialog belongs to the thread that runs it.
class FENESTRA_API CDialog : public CWnd {
public:
    /// Creates an object without a dialog.
    CDialog() = default;

    /// Refers to the same window.
    CDialog(const CDialog&) = default;

    /// Refers to the same window, unless the object's own dialog still exists: then nothing changes.
    /// @param other  the dialog to refer to
    /// @return this object
    CDialog& operator=(const CDialog& other);

    /// Destroys the dialog if it still exists.
    ~CDialog() override;

    /// Shows the dialog and returns when it has ended; its owner is disabled meanwhile.
    /// @param module      module with the template
    /// @param templateId  the template's resource id
    /// @param owner       window in front of which it stays; null for none
    /// @return the argument of End(); -1: the dialog could not be created; 0: the owner is not a window
    ///         (GetLastError() in both cases)
    INT_PTR RunModal(HINSTANCE module, unsigned int templateId, HWND owner);

    /// Creates the dialog and returns at once; the thread's message loop must call IsDialogMessageW() for it.
    /// @param module      module with the template
    /// @param templateId  the template's resource id
    /// @param owner       window in front of which it stays; null for none
    /// @return the dialog; null: it could not be created (GetLastError())
    HWND RunModeless(HINSTANCE module, unsigned int templateId, HWND owner);

    /// Ends the dialog: a modal one after the current message, a modeless one at once.
    /// @param result  result of RunModal()
    /// @return true: done; false: there is no dialog
    bool End(int result);

protected:
    /// Called when the dialog has been created and is about to be shown.
    /// @param focus  control that is to get the keyboard focus
    /// @return true: let it have the focus; false: the handler has set the focus
    virtual bool OnInitDialog(HWND focus);

    /// Called when a control or a menu sends a command.
    /// @param code     notification code; 0 for a menu, 1 for an accelerator
    /// @param id       dialog-item or menu id
    /// @param control  the control; null for menus and accelerators
    /// @return true: handled; false: not
    virtual bool OnCommand(unsigned int code, int id, HWND control);

    /// Called when a common control sends a notification.
    /// @param id      dialog-item id
    /// @param header  the notification; valid during the call
    /// @param result  receives the result for the control; initially 0
    /// @return true: handled; false: not
    virtual bool OnNotify(int id, NMHDR* header, unsigned long& result);

private:
    static INT_PTR CALLBACK DialogProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    INT_PTR Handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    bool HasDialog() const;

    int m_iModal = 0;
};
