#pragma once

#include <fenestra/dialog.h>
#include <tessel/foundation/platform.h>

/// Error code for a message without an error.
inline constexpr unsigned long MESSAGEBOX_NO_ERROR = 0xFFFFFFFF;

/// Type that leaves the type of the box unchanged.
inline constexpr unsigned int MESSAGEBOX_SAME_TYPE = 0xFFFFFFFF;

/// Shows a modal message box with a caption and a standard set of buttons in the centre of the primary screen.
///
/// The system's text for an error code can be appended to the message. By default this is the system's message box.
/// After SetResources() it is a dialog template of the application, which needs a static control for the message and
/// one button for each id of the set:
/// @code
/// MB_OK               IDOK
/// MB_OKCANCEL         IDOK, IDCANCEL
/// MB_ABORTRETRYIGNORE IDABORT, IDRETRY, IDIGNORE
/// MB_YESNOCANCEL      IDYES, IDNO, IDCANCEL
/// MB_YESNO            IDYES, IDNO
/// MB_RETRYCANCEL      IDRETRY, IDCANCEL
/// @endcode
/// Escape ends such a dialog with IDCANCEL even if its set has no such button.
/// Icons and other flags apply to the system's message box only. String resources and the template are loaded from the
/// executable, not from a DLL.
///
/// Each copy has its own texts. If memory runs out, a text is empty.
/// Threads: only one thread at a time may use an object; each thread may show its own boxes.
class TESSEL_API CMessageBox : public CDialog {
public:
    /// The dialog template of an application.
    struct RESOURCES {
        unsigned long TemplateId;      ///< resource id of the dialog template; 0: the system's message box
        unsigned long TextId;          ///< dialog-item id of the static control for the message
        const unsigned int* ButtonIds; ///< string resource ids of the button texts, one for each position of the set;
                                       ///< the caller keeps the array alive. A missing string, or a null array,
                                       ///< results in "Yes", "No" or "Cancel", by position
    };

    /// Creates an empty box: no texts, no owner, MB_OK.
    CMessageBox();

    /// Creates a box with texts.
    /// @param owner    window that is disabled while the box is shown; null for none
    /// @param text     message, copied; may be null
    /// @param caption  caption, copied; may be null
    /// @param type     MB_ value
    /// @param error    Win32 error whose text follows the message; MESSAGEBOX_NO_ERROR for none
    CMessageBox(HWND owner, const wchar_t* text, const wchar_t* caption, unsigned int type, unsigned long error);

    /// Creates a box with texts from the program's string table; a missing one is replaced by "Message text not found."
    /// or "Caption text not found.".
    /// @param owner      window that is disabled while the box is shown; null for none
    /// @param textId     string resource id of the message, 1023 characters at most
    /// @param captionId  string resource id of the caption, 255 characters at most
    /// @param type       MB_ value
    /// @param error      Win32 error whose text follows the message; MESSAGEBOX_NO_ERROR for none
    CMessageBox(HWND owner, unsigned int textId, unsigned int captionId, unsigned int type, unsigned long error);

    /// Copies everything, the texts included.
    /// @param other  box to copy
    CMessageBox(const CMessageBox& other);

    /// Copies everything, the texts included.
    /// @param other  box to copy
    /// @return this object
    CMessageBox& operator=(const CMessageBox& other);

    /// Releases the texts.
    ~CMessageBox() override;

    /// Selects the system's message box or a dialog template of the application.
    /// @param resources  copied; null selects the system's message box
    void SetResources(const RESOURCES* resources);

    /// Replaces texts and type, then runs the box.
    /// @param text     message, copied, with the error's text appended; null leaves message and error unchanged
    /// @param caption  caption, copied; null leaves it unchanged
    /// @param type     MB_ value; MESSAGEBOX_SAME_TYPE leaves it unchanged
    /// @param error    Win32 error; MESSAGEBOX_NO_ERROR for none
    /// @return as Run()
    int Run(const wchar_t* text, const wchar_t* caption, unsigned int type, unsigned long error);

    /// Replaces the texts with strings from the program's string table, with the limits and the fallback texts of the
    /// constructor, then runs the box.
    /// @param textId     string resource id of the message
    /// @param captionId  string resource id of the caption
    /// @param type       MB_ value; MESSAGEBOX_SAME_TYPE leaves it unchanged
    /// @param error      Win32 error; MESSAGEBOX_NO_ERROR for none
    /// @return as Run()
    int Run(unsigned int textId, unsigned int captionId, unsigned int type, unsigned long error);

    /// Shows the box and waits for a button. A dialog of the application ends with the ids 1 to 7; a type outside 0 to
    /// 5 is reported there, and the buttons keep the template's texts.
    /// @return the id of the button; 0 or, for a dialog of the application, -1: the box could not be shown
    ///         (GetLastError())
    int Run();

private:
    friend struct CMessageBoxLayout;

    void Initialize(HWND owner, const wchar_t* text, const wchar_t* caption, unsigned int type, unsigned long error);
    void SetText(const wchar_t* text, unsigned long error);
    void SetCaption(const wchar_t* caption);
    unsigned long ConvertErrorCode(unsigned long error, wchar_t*& text);
    int RunOwnBox();
    int RunSystemBox();
    static void InstallHook();
    static void ComputeCenterCoords(const RECT& window, int& x, int& y);
    static void MoveToCenter(HWND window);
    static LRESULT CALLBACK SetInCenter(int code, WPARAM wParam, LPARAM lParam);
    bool OnInitDialog(HWND focus) override;
    void InitButtons();
    void PositionInCenter();
    bool OnCommand(unsigned int code, int id, HWND control) override;

    HWND m_hOwner;
    wchar_t* m_pText;
    wchar_t* m_pCaption;
    unsigned int m_uiType;
    RESOURCES m_Resources;
};
