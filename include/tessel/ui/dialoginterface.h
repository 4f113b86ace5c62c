#pragma once

#include <tessel/foundation/platform.h>
#include <tessel/ui/fieldtype.h>

#include <commctrl.h>

namespace tessel {
struct DialogControl;
struct DialogRequest;
} // namespace tessel

/// What DIALOG_INTERFACE::Display() does to a control.
enum DISPLAY_ACTION : int {
    DA_SHOW = 0,           ///< show it
    DA_HIDE = 1,           ///< hide it
    DA_ENABLE = 2,         ///< enable input
    DA_DISABLE = 3,        ///< disable input
    DA_TOP = 4,            ///< show it at the top of the z-order; a topmost window loses that status
    DA_TOPMOST_ASYNC = 5,  ///< make it topmost and show it, without waiting for its thread
    DA_TOPMOST = 6,        ///< as DA_TOPMOST_ASYNC, but leave its owner's place in the z-order
    DA_TOPMOST_HIDE = 7,   ///< make it topmost and hide it
    DA_BOTTOM = 8,         ///< move it to the bottom of the z-order
    DA_REFRESH = 9,        ///< call DIALOG_INTERFACE::RefreshWindow() and repaint at once; always reports failure
    DA_SHOW_IN_PLACE = 10, ///< show it without activating it or changing the z-order
    DA_FOCUS = 11          ///< select an item and give the control the focus
};

/// A control and the text to show in it.
struct CONTROL_STRING {
    int ControlId;         ///< dialog-item identifier of the control
    unsigned int StringId; ///< identifier of the text in the module's string table
};

/// Operates the controls of one dialog by their identifiers, whatever kind of control each one is.
///
/// Every operation determines the kind of control from its window class and sends the messages for that kind. An
/// identifier that the dialog does not have stands for the dialog itself. Of several controls with one identifier, the
/// first in z-order is used, and stays in use for consecutive operations even if the z-order changes. An operation has
/// no effect on a kind of control that it does not apply to. FormatSysMsg is the counterpart for the notifications that
/// controls send.
///
/// Item indices start at 0. Item data is as wide as a pointer. For trackbars, progress bars and scroll bars ("gauges"
/// below), an index is a position.
/// Results: an operation documented to return 0 does so even if the control refuses or there is no target dialog.
///
/// Ownership: the object owns a dialog that it created and an image list that it built. Copies refer to the same
/// dialog, which the first copy to be destroyed destroys; the last copy destroys the image list.
/// Threads: one thread at a time uses an object, normally the dialog's own; destroy it on the thread that created the
/// dialog. Messages to another thread's dialog block until that thread handles them; the items of its list boxes and
/// combo boxes must not change while one is being read. A dialog procedure may call operations of the object during
/// another one, but must not destroy it.
class TESSEL_API DIALOG_INTERFACE {
public:
    /// Wraps an existing dialog without taking ownership.
    /// @param dialog  the target dialog; null for none
    explicit DIALOG_INTERFACE(HWND dialog);

    /// Creates a modeless dialog (CreateDialogParamW), which this object owns and targets. After a failure it has no
    /// target; GetLastError() returns the cause.
    /// @param instance   module that holds the dialog resource
    /// @param dialogId   identifier of the dialog resource
    /// @param parent     owner window of the dialog, or null
    /// @param procedure  dialog procedure
    /// @param initParam  lParam of its WM_INITDIALOG
    DIALOG_INTERFACE(HINSTANCE instance, int dialogId, HWND parent, DLGPROC procedure, LPARAM initParam);

    /// Copies every field; both objects then own the dialog. If memory runs out, the copy has no image list.
    /// @param other  object to copy
    DIALOG_INTERFACE(const DIALOG_INTERFACE& other);

    /// Copies every field. The dialog owned so far is not destroyed. An image list that a list view still shows is left
    /// to that list view, as described at InitIconList().
    /// @param other  object to copy
    /// @return this object
    DIALOG_INTERFACE& operator=(const DIALOG_INTERFACE& other);

    /// Destroys the image list and, if it still exists, the dialog that this object created.
    virtual ~DIALOG_INTERFACE();

    /// Invalidates a whole window without erasing it. Display() calls this to refresh a control.
    /// @param hWnd  the window
    /// @return 0: invalidated; 1: failure
    virtual int RefreshWindow(HWND hWnd);

    /// Changes the dialog that all operations address. Ownership does not change.
    /// @param dialog  the new target; null for none
    /// @return 0
    int SetTargetDialog(HWND dialog);

    /// Resizes a control.
    /// @param id      control
    /// @param width   pixels
    /// @param height  pixels
    /// @return 0
    int Size(int id, int width, int height);

    /// Moves a control.
    /// @param id  control
    /// @param x   pixels from the left edge of the dialog's client area
    /// @param y   pixels from its top edge
    /// @return 0
    int Position(int id, int x, int y);

    /// Sets an item's text to a decimal number and its item data to 0, as Set() with a text does.
    /// @param id     control
    /// @param index  item
    /// @param value  number to show
    /// @return 0
    int Set(int id, int index, int value);

    /// Sets an item, or the control's own text or value.
    ///
    /// - static, edit, rich edit, unknown: sets the text
    /// - button: checks it unless the index is 0, and sets the text
    /// - tab: sets the item's text and data and selects it
    /// - list box: from index 0, sets the item's data and selects it; below 0, selects the first item that starts with
    ///   the text, or none
    /// - combo box: from index 0 like a list box; -1 and -2 set the text; lower indices select the item with exactly
    ///   that text
    /// - gauge: moves it to the position @p index
    /// - list view: sets the item's text only
    /// @param id     control
    /// @param index  item
    /// @param text   the text; null leaves it unchanged
    /// @param data   item data
    /// @return 0
    int Set(int id, int index, const wchar_t* text, LPARAM data);

    /// Sets the text of a list-view sub-item; for other kinds, the same as Set() with item data 0.
    /// @param id       control
    /// @param index    item
    /// @param subItem  column
    /// @param text     the text; null leaves it unchanged
    /// @return 0
    int Set(int id, int index, int subItem, const wchar_t* text);

    /// Sets the control's own text to a decimal number: Set() with index -1. This moves a gauge to position -1.
    /// @param id     control
    /// @param value  number to show
    /// @return 0
    int Set(int id, int value);

    /// Reads an item, or the control's own text or value.
    ///
    /// - static, edit, rich edit, unknown: the text, and the window's user data as item data
    /// - button: the same, and the check state as the index
    /// - tab, list box, list view: the item's text and data; an index below 0 means the selected item. A list box
    ///   without a selection returns its window text, and its item count as item data
    /// - combo box: the item's text and data; index -1 means the selected item, if any, and -2 the window text
    /// - gauge: the position as the index
    ///
    /// If a list box or combo box does not have the item, the item data is -1.
    /// @param id         control
    /// @param index      item; receives the item that was read (-1: none), the check state or the position
    /// @param buffer     receives the text, truncated to fit; empty if there is none
    /// @param bufferLen  size of @p buffer in characters, including the terminator
    /// @param data       receives the item data; 0 if there is none
    /// @return 0
    int Get(int id, int& index, wchar_t* buffer, int bufferLen, LPARAM& data);

    /// Reads the text of a list-view sub-item and the item's data; for other kinds, the same as Get() of the index.
    /// @param id         control
    /// @param index      item; below 0: the selected one
    /// @param subItem    column
    /// @param buffer     receives the text, truncated to fit; empty if there is none
    /// @param bufferLen  size of @p buffer in characters, including the terminator
    /// @param data       receives the item data; 0 if there is none
    /// @return 0
    int Get(int id, int index, int subItem, wchar_t* buffer, int bufferLen, LPARAM& data);

    /// Reads an item without its data.
    /// @param id         control
    /// @param index      item; receives the item that was read, the check state or the position
    /// @param buffer     receives the text, truncated to fit; empty if there is none
    /// @param bufferLen  size of @p buffer in characters, including the terminator
    /// @return 0
    int Get(int id, int& index, wchar_t* buffer, int bufferLen);

    /// Reads the control's own text or that of its selected item: Get() with index -1.
    /// @param id         control
    /// @param buffer     receives the text, truncated to fit; empty if there is none
    /// @param bufferLen  size of @p buffer in characters, including the terminator
    /// @return 0
    int Get(int id, wchar_t* buffer, int bufferLen);

    /// Reads the number at the start of the control's own text, or of that of its selected item.
    /// @param id     control
    /// @param value  receives the number; 0 if there is none, and for gauges
    /// @return 0
    int Get(int id, int& value);

    /// Counts the items of a list box, combo box or list view, or the characters of an edit.
    /// @param id     control
    /// @param count  receives the number; 0 for other kinds and after an error
    /// @return 0; 1: no target dialog
    int GetCount(int id, int& count);

    /// Selects text in the edit part of a combo box, or in an edit. Both positions are packed into one message
    /// parameter, 16 bits each; an edit interprets the whole parameter as the end of a selection that starts at 0.
    /// @param id     control
    /// @param start  first character
    /// @param end    position after the last character
    /// @return 0; 1: no target dialog, or the combo box refuses
    int SetEditSelection(int id, int start, int end);

    /// Adds an item to a tab, list box, combo box or list view. List boxes and combo boxes insert at an index other
    /// than 0; at 0 they append the item, or sort it in. Static, button, edit, rich edit, unknown: sets the text.
    /// Gauge: moves the position by the index.
    /// @param id     control
    /// @param index  position of the new item, or distance to move
    /// @param text   the text; null for none
    /// @param data   item data
    /// @return the new item's index, negative if the control refused; the new position of a trackbar or scroll bar;
    ///         for other kinds, and without a target dialog, @p index
    int Add(int id, int index, const wchar_t* text, LPARAM data);

    /// Adds a list-view item with an image. Without a preceding InitIconList() it has none.
    /// @param id          control
    /// @param index       position of the new item
    /// @param text        the text; null for none
    /// @param data        item data
    /// @param imageIndex  image in the list that InitIconList() built; later calls of Add() use it, too
    /// @return as Add()
    int LVAdd(int id, int index, const wchar_t* text, LPARAM data, int imageIndex);

    /// Removes all items of a list view and keeps its columns; for other kinds, the same as Reset() without a text.
    /// @param id  control
    /// @return 0
    int LVDeleteAllItems(int id);

    /// Clears a control and refills it. Static, button, edit, rich edit, unknown: sets the whole text. Tab, list box,
    /// combo box: adds one item for each part of the text; the data of a tab item is its position. List view: adds one
    /// column for each part, 100 pixels wide. Gauge: moves it to position 0.
    /// @param id    control
    /// @param text  parts separated by commas; empty parts are skipped; null for none
    /// @return 0
    int Reset(int id, const wchar_t* text);

    /// Sets the range of a gauge. A trackbar uses the position argument as its page size and tick spacing and moves to
    /// 0; a progress bar gets a step of 1. Trackbars and progress bars keep 16 bits of each limit.
    /// @param id        control
    /// @param low       lowest position
    /// @param high      highest position
    /// @param position  position after the call
    /// @return 0
    int Range(int id, int low, int high, int position);

    /// Shows, hides, enables, reorders, refreshes or focuses a control. An unknown action is reported.
    /// @param id      control
    /// @param action  what to do
    /// @param item    for DA_FOCUS: the tab, list-box, combo-box or list-view item to select
    /// @return 0: done; 1: failure, no target dialog or unknown action, and always for DA_REFRESH
    int Display(int id, DISPLAY_ACTION action, int item);

    /// Deletes an item of a tab, list box, combo box or list view; moves a trackbar or scroll bar back.
    /// @param id     control
    /// @param index  item, or distance to move
    /// @return 0
    int Delete(int id, int index);

    /// Sets the text colour of the control's device context. The colour lasts until the control repaints.
    /// @param id     control
    /// @param red    0 to 255
    /// @param green  0 to 255
    /// @param blue   0 to 255
    /// @return 0
    int ColorStaticText(int id, int red, int green, int blue);

    /// Returns the window of a control.
    /// @param id  control
    /// @return its handle; null if the dialog has no such control
    HWND GetHandle(int id);

    /// Returns the target dialog.
    /// @return its handle; null for none
    HWND GetHandle();

    /// Fills an area of a control with a colour. The colour lasts until the control repaints.
    /// @param id      control
    /// @param colour  the colour
    /// @param area    part of the client area; null for all of it
    /// @return not 0: filled; 0: failure, or no such control
    int FillCtrlRect(int id, COLORREF colour, const RECT* area);

    /// Validates the whole client area of a control, so that it is not repainted.
    /// @param id  control
    /// @return not 0: done; 0: failure, or no target dialog
    int ValidateCtrl(int id);

    /// Reads the window rectangle of a control, or of the dialog if it has no such control.
    /// @param id    control
    /// @param area  receives screen coordinates in pixels; unchanged after a failure
    /// @return 1: success; 0: failure
    int GetCoordinates(int id, RECT& area);

    /// The same as GetCoordinates().
    /// @param id    control
    /// @param area  receives screen coordinates in pixels; unchanged after a failure
    /// @return 1: success; 0: failure
    int GetScreenCoordinates(int id, RECT& area);

    /// Reads the client rectangle of a control, or of the dialog if it has no such control.
    /// @param id    control
    /// @param area  receives client coordinates in pixels; unchanged after a failure
    /// @return 1: success; 0: failure
    int GetClientCoordinates(int id, RECT& area);

    /// Reads the size of the window rectangle of a control, or of the dialog if it has no such control.
    /// @param id      control
    /// @param width   receives pixels; 0 after a failure
    /// @param height  receives pixels; 0 after a failure
    /// @return 1: success; 0: failure
    int GetSize(int id, int& width, int& height);

    /// Reads the size of the client area of a control, or of the dialog if it has no such control.
    /// @param id      control
    /// @param width   receives pixels; 0 after a failure
    /// @param height  receives pixels; 0 after a failure
    /// @return 1: success; 0: failure
    int GetClientSize(int id, int& width, int& height);

    /// Reads the position of a control relative to the dialog's window rectangle; without such a control, the position
    /// of the dialog on the screen.
    /// @param id  control
    /// @param x   receives pixels; 0 without a dialog
    /// @param y   receives pixels; 0 without a dialog
    /// @return 1: success; 0: failure
    int GetPosition(int id, int& x, int& y);

    /// Tags a control, or the dialog if it has no such control, with a colour of the display palette and a brush. The
    /// tag replaces the window's user data.
    /// @param id           control
    /// @param colourIndex  index in the palette, 0 to 255
    /// @param flag         index of a brush in CBrush, 0 to 254; -1 for none
    /// @return 0: tagged; 1: no target dialog, or a brush index beyond 254, which the tag cannot hold
    int SetColor(int id, int colourIndex, int flag);

    /// Reads the tag that SetColor() set.
    /// @param hWnd         the window
    /// @param colourIndex  receives the palette index; unchanged without a tag
    /// @param flag         receives the brush index or -1; unchanged without a tag
    /// @return 0: found; 1: the window has no tag
    static int GetColor(HWND hWnd, int& colourIndex, int& flag);

    /// Sets the picture of a button.
    /// @param id      control
    /// @param bitmap  the picture; the caller keeps it and must not delete it while it is in use
    /// @return 1: the control exists; 0: it does not
    int SetButtonImage(int id, HBITMAP bitmap);

    /// Builds the small image list of a list view, with images of 6 by 14 pixels.
    ///
    /// First it sends the control WM_DESTROY, which resets it, even if there is no list of bitmaps. If the dialog has
    /// no such control, the dialog itself receives the message; its procedure must not destroy this object then.
    /// Loading ends at the first bitmap that is missing.
    ///
    /// The object owns the image list. The one that an earlier call built is destroyed, unless a list view still shows
    /// it; that list view then destroys it, provided that it has no other image lists. An image list for another
    /// thread's dialog is never freed.
    /// @param bitmapIds  identifiers of bitmap resources, terminated by 0; null for none
    /// @param instance   module that holds them
    /// @param id         control
    /// @return 1: built, or @p bitmapIds is null; 0: no image list could be created
    int InitIconList(const unsigned int* bitmapIds, HINSTANCE instance, int id);

    /// Gives a list-view item the focus within its list view.
    /// @param id     control
    /// @param index  item
    /// @param flag   not 0: select it, too
    /// @return 0: done; 1: refused, or not a list view
    int SetLVFocus(int id, int index, int flag);

    /// Removes the focus from a list-view item.
    /// @param id     control
    /// @param index  item
    /// @param flag   not 0: deselect it, too
    /// @return 0: done; 1: refused, or not a list view
    int ClearLVFocus(int id, int index, int flag);

    /// Stores a selection for the caller. No control is affected.
    /// @param value  the selection
    /// @param slot   0 to 3
    /// @return the previous value, initially 0; -1: no such slot
    int SetLVSelected(int value, int slot);

    /// Returns the selection that SetLVSelected() stored.
    /// @param slot  0 to 3
    /// @return the value, initially 0; -1: no such slot
    int GetLVSelected(int slot);

    /// Sets the width of a list-view column.
    /// @param id      control
    /// @param column  column
    /// @param width   pixels, at most 32,767; -1 (LVSCW_AUTOSIZE) or -2 (LVSCW_AUTOSIZE_USEHEADER)
    /// @return 1: set; 0: refused; other negative widths are rejected without a message to the control
    int LVSetColumnWidth(int id, int column, int width);

    /// Sets the font of a control, or of the dialog if it has no such control, and redraws it.
    /// @param id    control
    /// @param font  the font; the caller keeps it and must not delete it while it is in use; null for the system font
    /// @return 0
    int SetFont(int id, HFONT font);

    /// Opens or closes the list of a combo box.
    /// @param id    control
    /// @param show  not 0: open
    /// @return 1: done; 0: not a combo box
    int ShowDropDown(int id, int show);

    /// Finds the combo-box item with exactly this text, ignoring case.
    /// @param id     control
    /// @param text   text to find
    /// @param index  receives the item; -1 if there is none
    /// @return 1: found; 0: not found, or not a combo box
    int FindExactMatch(int id, const wchar_t* text, int& index);

    /// Inserts a combo-box item.
    /// @param id     control
    /// @param index  position of the new item; -1 for the end
    /// @param text   the text; null for an empty one
    /// @param data   item data
    /// @return 1: inserted; 0: refused, or not a combo box
    int Insert(int id, int index, const wchar_t* text, LPARAM data);

    /// Moves the pointer to the centre of a control, or of the dialog if it has no such control.
    /// @param id  control
    /// @return not 0: moved; 0: failure
    int MoveFocus(int id);

    /// Measures the text of a list-box item in the default font of the control's device context.
    /// @param id      control
    /// @param index   item
    /// @param width   receives pixels; 0 after a failure
    /// @param height  receives pixels; 0 after a failure
    /// @return 1: success; 0: no such item, or not a list box
    int GetLBItemSize(int id, int index, int& width, int& height);

    /// Limits the length of the text that the user can type into a combo box or an edit.
    /// @param id     control
    /// @param limit  characters; 0 for the system's limit
    /// @return 1: applied; 0: another kind of control
    int SetTextLimit(int id, int limit);

    /// Makes an edit read-only or writable.
    /// @param id    control
    /// @param flag  not 0: read-only
    /// @return 1: applied; 0: failure, or not an edit
    int SetReadOnly(int id, int flag);

    /// Loads texts of up to 511 characters and sets each as the text of its control. A control whose text cannot be
    /// loaded is left unchanged. The check mark of a button does not change.
    /// @param instance  module that holds the string table
    /// @param table     the controls and their texts
    /// @param count     entries in @p table
    /// @return 0
    int LoadControlString(HINSTANCE instance, const CONTROL_STRING* table, int count);

private:
    friend struct DialogInterfaceLayout;

    enum COMMAND : int {
        CMD_POSITION = 0,
        CMD_DISPLAY = 1,
        CMD_SET = 2,
        CMD_GET = 3,
        CMD_ADD = 4,
        CMD_DELETE = 5,
        CMD_RESET = 6,
        CMD_SIZE = 7,
        CMD_RANGE = 8,
        CMD_GETCOUNT = 9,
        CMD_EDITSELECTION = 10,
        CMD_TEXTCOLOUR = 11
    };

    static FIELD_TYPE ControlType(HWND hWnd);
    static long PackLong(unsigned char b1, unsigned char b2, unsigned char b3, unsigned char b4);
    int ProcessMessage(int id, COMMAND command, tessel::DialogRequest& request);
    int Run(int id, COMMAND command, tessel::DialogRequest request);
    void StoreArguments(COMMAND command, const tessel::DialogRequest& request);
    bool IsSelected(int id) const;
    tessel::DialogControl Select(int id);
    void Fetch(int id, tessel::DialogRequest& request, wchar_t* buffer, int bufferLen);
    void ShareFields(const DIALOG_INTERFACE& other);

    HWND hOwnDialog;
    HWND hDialog;
    HWND hCtrl;
    int CtrlId;
    FIELD_TYPE CtrlType;
    COMMAND Command;
    DISPLAY_ACTION Action;
    int X;
    int Y;
    int Index;
    int BufferLen;
    LPARAM Data;
    COLORREF Color;
    HIMAGELIST hImageList;
    int ImageIndex;
    int LVSelected[4];
};
