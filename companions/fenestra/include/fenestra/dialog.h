#pragma once

#include <fenestra/window.h>

/// A dialog that is run from a template resource. Derive from it and override what it is to react to.
///
/// One object runs one dialog at a time, and stays alive until that has ended: destroying the object destroys the
/// dialog. A copy stands for the same window but gets none of its messages.
/// Threads: a dialog belongs to the thread that runs it.
class FENESTRA_API CDialog : public CWnd {
public:
    /// Makes an object without a dialog.
    CDialog() = default;

    /// Stands for the same window.
    CDialog(const CDialog&) = default;

    /// Stands for the same window, unless a dialog of its own is still there: then it keeps that.
    /// @param other  the dialog to stand for
    /// @return this object
    CDialog& operator=(const CDialog& other);

    /// Destroys the dialog if it is still there.
    ~CDialog() override;

    /// Shows the dialog and returns when it has ended; its owner is disabled meanwhile.
    /// @param module      module with the template
    /// @param templateId  the template's resource id
    /// @param owner       window in front of which it stays; null for none
    /// @return what was given to End(); -1: the dialog could not be made, 0: the owner is no window
    ///         (GetLastError() in both cases)
    INT_PTR RunModal(HINSTANCE module, unsigned int templateId, HWND owner);

    /// Makes the dialog and returns at once; the thread's message loop calls IsDialogMessageW() for it.
    /// @param module      module with the template
    /// @param templateId  the template's resource id
    /// @param owner       window in front of which it stays; null for none
    /// @return the dialog; null: it could not be made (GetLastError())
    HWND RunModeless(HINSTANCE module, unsigned int templateId, HWND owner);

    /// Ends the dialog: a modal one when the message under way has been handled, a modeless one at once.
    /// @param result  result of RunModal()
    /// @return true: done; false: there is no dialog
    bool End(int result);

protected:
    /// The dialog has been made and is about to be shown.
    /// @param focus  control that is to get the keyboard focus
    /// @return true: it shall get it; false: the focus was set otherwise
    virtual bool OnInitDialog(HWND focus);

    /// A control or a menu sent a command.
    /// @param code     notification code; 0 for a menu, 1 for an accelerator
    /// @param id       dialog-item or menu id
    /// @param control  the control; null for menus and accelerators
    /// @return true: handled; false: not
    virtual bool OnCommand(unsigned int code, int id, HWND control);

    /// A common control sent a notification.
    /// @param id      dialog-item id
    /// @param header  the notification; valid during the call
    /// @param result  receives what the control is to be told; 0 at the start
    /// @return true: handled; false: not
    virtual bool OnNotify(int id, NMHDR* header, unsigned long& result);

private:
    static INT_PTR CALLBACK DialogProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    INT_PTR Handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    bool HasDialog() const;

    int m_iModal = 0;
};
