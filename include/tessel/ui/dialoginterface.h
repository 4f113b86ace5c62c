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
    DA_ENABLE = 2,         ///< let it take input
    DA_DISABLE = 3,        ///< let it take no input
    DA_TOP = 4,            ///< show it in front; a topmost window becomes an ordinary one
    DA_TOPMOST_ASYNC = 5,  ///< show it above all ordinary windows, without waiting for its thread
    DA_TOPMOST = 6,        ///< the same and leave its owner where it is
    DA_TOPMOST_HIDE = 7,   ///< place it above all ordinary windows and hide it
    DA_BOTTOM = 8,         ///< place it behind all others
    DA_REFRESH = 9,        ///< DIALOG_INTERFACE::RefreshWindow() and paint at once; always reported as failed
    DA_SHOW_IN_PLACE = 10, ///< show it where it is in the order of windows, without activating it
    DA_FOCUS = 11          ///< select an item and give the control the keyboard
};

/// One control and the text that it is to show.
struct CONTROL_STRING {
    int ControlId;         ///< dialog-item identifier of the control
    unsigned int StringId; ///< number of the text in the module's string table
};

/// Drives the controls of one dialog by their dialog-item identifiers, without knowing what kind each one is.
///
/// Every operation finds out the kind of control by its window class and does what fits it. An identifier that
/// the dialog does not have stands for the dialog itself. A kind that an operation does not fit is left alone.
/// FormatSysMsg is the counterpart for the events that controls send.
///
/// An item index counts from 0. Item data is as wide as a pointer. On trackbars, progress bars and scroll bars,
/// "gauges" below, an index is a position.
/// Results: where an operation says "0", it is 0 whatever the control answered, also without a target dialog.
///
/// Ownership: a dialog that the object created and an image list that it built go with it. Copies name the same
/// dialog: the first of them to be destroyed takes it away from the others. The image list goes with the last.
/// Threads: one object is used by one thread at a time, normally the dialog's own; it must be destroyed on the
/// thread that created the dialog. Messages to another thread's dialog wait until that thread handles them; while an
/// item of its list boxes or combo boxes is got, nobody may change their items. A dialog procedure may use the object
/// while that is at work, but not destroy it.
class TESSEL_API DIALOG_INTERFACE {
public:
    /// Wraps an existing dialog, which stays the caller's.
    /// @param dialog  the target dialog; null for none
    explicit DIALOG_INTERFACE(HWND dialog);

    /// Creates a modeless dialog (CreateDialogParamW), which is owned by this object and its target. After a
    /// failure there is no target and the cause is in GetLastError().
    /// @param instance   module that holds the dialog resource
    /// @param dialogId   number of the dialog resource
    /// @param parent     window that owns the dialog, or null
    /// @param procedure  dialog procedure
    /// @param initParam  lParam of its WM_INITDIALOG
    DIALOG_INTERFACE(HINSTANCE instance, int dialogId, HWND parent, DLGPROC procedure, LPARAM initParam);

    /// Copies every field; both objects then own the dialog. Without memory the copy has no image list.
    /// @param other  object to copy
    DIALOG_INTERFACE(const DIALOG_INTERFACE& other);

    /// Copies every field. The dialog held before is not destroyed; nor is the image list while a list view shows it,
    /// which frees it then as with InitIconList().
    /// @param other  object to copy
    /// @return this object
    DIALOG_INTERFACE& operator=(const DIALOG_INTERFACE& other);

    /// Destroys the image list and, if it is still a window, the dialog that this object created.
    virtual ~DIALOG_INTERFACE();

    /// Invalidates a whole window without erasing it; what Display() calls to refresh a control.
    /// @param hWnd  the window
    /// @return 0: invalidated; 1: failure
    virtual int RefreshWindow(HWND hWnd);

    /// Changes the dialog that all operations address; what the object owns stays owned.
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

    /// Sets an item's text to a decimal number, as Set() with a text does; its item data becomes 0.
    /// @param id     control
    /// @param index  item
    /// @param value  number to show
    /// @return 0
    int Set(int id, int index, int value);

    /// Sets an item, or the control's own text or value.
    ///
    /// Static, edit, rich edit and unknown: the text. Button: checked unless the index is 0, and the text. Tab: the
    /// item's text and data, and it is selected. List box: from 0 on, the item's data, and it is selected; below 0,
    /// the first item that starts with the text is selected, or none. Combo box: from 0 on as a list box; -1 and -2,
    /// the text; further below, the item with exactly that text is selected. Gauge: the position becomes the index.
    /// List view: the item's text only.
    /// @param id     control
    /// @param index  item
    /// @param text   the text; null leaves it
    /// @param data   item data
    /// @return 0
    int Set(int id, int index, const wchar_t* text, LPARAM data);

    /// Sets the text of a list view's sub-item; on other kinds it is Set() with item data 0.
    /// @param id       control
    /// @param index    item
    /// @param subItem  column
    /// @param text     the text; null leaves it
    /// @return 0
    int Set(int id, int index, int subItem, const wchar_t* text);

    /// Sets the control's own text to a decimal number: Set() of index -1. A gauge is moved to -1 by it.
    /// @param id     control
    /// @param value  number to show
    /// @return 0
    int Set(int id, int value);

    /// Gets an item, or the control's own text or value.
    ///
    /// Static, edit, rich edit and unknown: text, and the window's user data. Button: the same, and its check state as
    /// the index. Tab, list box, list view: the item's text and data; below 0 the selected item's. A list box without a
    /// selection gives its window text, and its item count as data. Combo box: the same for an item; -1 the selected
    /// one's, if there is one; -2 the window text. Gauge: the position as the index. For an item that a list box or
    /// combo box does not have, the data is -1.
    /// @param id         control
    /// @param index      item; receives the one that was meant (-1: there is none), the check state or the position
    /// @param buffer     receives the text, truncated to fit; empty when there is none
    /// @param bufferLen  size of @p buffer in characters, including the terminator
    /// @param data       receives the item data; 0 when there is none
    /// @return 0
    int Get(int id, int& index, wchar_t* buffer, int bufferLen, LPARAM& data);

    /// Gets text of a list view's sub-item and the item's data; on other kinds it is Get() of the index.
    /// @param id         control
    /// @param index      item; below 0 the selected one
    /// @param subItem    column
    /// @param buffer     receives the text, truncated to fit; empty when there is none
    /// @param bufferLen  size of @p buffer in characters, including the terminator
    /// @param data       receives the item data; 0 when there is none
    /// @return 0
    int Get(int id, int index, int subItem, wchar_t* buffer, int bufferLen, LPARAM& data);

    /// Gets an item without its data.
    /// @param id         control
    /// @param index      item; receives the one that was meant, the check state or the position
    /// @param buffer     receives the text, truncated to fit; empty when there is none
    /// @param bufferLen  size of @p buffer in characters, including the terminator
    /// @return 0
    int Get(int id, int& index, wchar_t* buffer, int bufferLen);

    /// Gets the control's own text or that of its selected item: Get() of index -1.
    /// @param id         control
    /// @param buffer     receives the text, truncated to fit; empty when there is none
    /// @param bufferLen  size of @p buffer in characters, including the terminator
    /// @return 0
    int Get(int id, wchar_t* buffer, int bufferLen);

    /// Gets the number that the control's own text, or that of its selected item, starts with.
    /// @param id     control
    /// @param value  receives the number; 0 when there is none, and for gauges
    /// @return 0
    int Get(int id, int& value);

    /// Counts the items of a list box, combo box or list view, or the characters of an edit.
    /// @param id     control
    /// @param count  receives the number; 0 for other kinds and when the control answers with an error
    /// @return 0; 1: no target dialog
    int GetCount(int id, int& count);

    /// Selects text in the edit part of a combo box, or in an edit. Both positions go into one message parameter of
    /// 16 bits each; an edit takes that as the end of the selection, which starts at 0.
    /// @param id     control
    /// @param start  first character
    /// @param end    character behind the last
    /// @return 0; 1: no target dialog, or the combo box refuses
    int SetEditSelection(int id, int start, int end);

    /// Adds an item. Static, button, edit, rich edit, unknown: sets the text instead. Trackbar, progress bar and
    /// scroll bar: moves the position by the index. List boxes and combo boxes insert at an index other than 0; with 0
    /// they append, or sort the item in.
    /// @param id     control
    /// @param index  where, or by how much
    /// @param text   the text; null for none
    /// @param data   item data
    /// @return the new item's index; a negative number: the control refused; for trackbars and scroll bars the new
    ///         position; for other kinds, and without a target dialog, the index as it was given
    int Add(int id, int index, const wchar_t* text, LPARAM data);

    /// Adds a list-view item with an image; without InitIconList() it gets none.
    /// @param id          control
    /// @param index       where
    /// @param text        the text; null for none
    /// @param data        item data
    /// @param imageIndex  image of the list that InitIconList() built; later calls of Add() use it too
    /// @return as Add()
    int LVAdd(int id, int index, const wchar_t* text, LPARAM data, int imageIndex);

    /// Removes all items of a list view and keeps its columns; other kinds are emptied as by Reset() without a text.
    /// @param id  control
    /// @return 0
    int LVDeleteAllItems(int id);

    /// Empties a control and fills it anew. Static, button, edit, rich edit, unknown: sets the whole text. Tab,
    /// list box, combo box: one item for each part of the text, tab items with their position as data. List view:
    /// the parts become its columns, 100 pixels wide. Trackbar, progress bar, scroll bar: position 0.
    /// @param id    control
    /// @param text  parts separated by commas, empty ones being skipped; null for none
    /// @return 0
    int Reset(int id, const wchar_t* text);

    /// Sets the range of a gauge. A trackbar takes the position as its page size and the distance of its ticks, and
    /// stands at 0 then; a progress bar gets a step of 1. Trackbar and progress bar hold 16 bits of each limit.
    /// @param id        control
    /// @param low       least position
    /// @param high      greatest position
    /// @param position  where it stands then
    /// @return 0
    int Range(int id, int low, int high, int position);

    /// Shows, hides, enables, orders, refreshes or focuses a control. An unknown action is reported.
    /// @param id      control
    /// @param action  what to do
    /// @param item    for DA_FOCUS: the tab, list-box, combo-box or list-view item to select
    /// @return 0: done; 1: failure, no target dialog, unknown action, and always for DA_REFRESH
    int Display(int id, DISPLAY_ACTION action, int item);

    /// Deletes an item of a tab, list box, combo box or list view; moves a trackbar or scroll bar back.
    /// @param id     control
    /// @param index  item, or by how much
    /// @return 0
    int Delete(int id, int index);

    /// Sets the text colour of the control's device context, for as long as the control does not repaint.
    /// @param id     control
    /// @param red    0 to 255
    /// @param green  0 to 255
    /// @param blue   0 to 255
    /// @return 0
    int ColorStaticText(int id, int red, int green, int blue);

    /// The window of a control.
    /// @param id  control
    /// @return its handle; null when the dialog has none of that identifier
    HWND GetHandle(int id);

    /// The target dialog.
    /// @return its handle; null for none
    HWND GetHandle();

    /// Fills a part of a control with a colour, until it repaints.
    /// @param id      control
    /// @param colour  the colour
    /// @param area    part of its client area; null for all of it
    /// @return not 0: filled; 0: failure, or no such control
    int FillCtrlRect(int id, COLORREF colour, const RECT* area);

    /// Marks a whole control as painted.
    /// @param id  control
    /// @return not 0: done; 0: failure, or no target dialog
    int ValidateCtrl(int id);

    /// The window rectangle of a control, or of the dialog when it has no such control.
    /// @param id    control
    /// @param area  receives screen coordinates in pixels; unchanged after a failure
    /// @return 1: success; 0: failure
    int GetCoordinates(int id, RECT& area);

    /// The same as GetCoordinates().
    /// @param id    control
    /// @param area  receives screen coordinates in pixels; unchanged after a failure
    /// @return 1: success; 0: failure
    int GetScreenCoordinates(int id, RECT& area);

    /// The client rectangle of a control, or of the dialog when it has no such control.
    /// @param id    control
    /// @param area  receives pixels, from 0, 0; unchanged after a failure
    /// @return 1: success; 0: failure
    int GetClientCoordinates(int id, RECT& area);

    /// The size of the window rectangle of a control or, when there is none, of the dialog.
    /// @param id      control
    /// @param width   receives pixels; 0 after a failure
    /// @param height  receives pixels; 0 after a failure
    /// @return 1: success; 0: failure
    int GetSize(int id, int& width, int& height);

    /// The size of the client area of a control or, when there is none, of the dialog.
    /// @param id      control
    /// @param width   receives pixels; 0 after a failure
    /// @param height  receives pixels; 0 after a failure
    /// @return 1: success; 0: failure
    int GetClientSize(int id, int& width, int& height);

    /// Where a control is, from the corner of the dialog's window rectangle; without such a control, where the
    /// dialog is on the screen.
    /// @param id  control
    /// @param x   receives pixels; 0 without a dialog
    /// @param y   receives pixels; 0 without a dialog
    /// @return 1: success; 0: failure
    int GetPosition(int id, int& x, int& y);

    /// Tags a control, or the dialog when it has no such control, with a colour of the display palette; the tag takes
    /// the place of the window's user data.
    /// @param id           control
    /// @param colourIndex  index in the palette, 0 to 255
    /// @param flag         index of a brush in CBrush, 0 to 254; -1 for none
    /// @return 0: tagged; 1: no target dialog, or a brush index beyond 254, which the tag cannot hold
    int SetColor(int id, int colourIndex, int flag);

    /// Reads the tag that SetColor() left.
    /// @param hWnd         the window
    /// @param colourIndex  receives the index; unchanged without a tag
    /// @param flag         receives the flag; unchanged without a tag
    /// @return 0: found; 1: the window carries no tag
    static int GetColor(HWND hWnd, int& colourIndex, int& flag);

    /// Gives a button its picture.
    /// @param id      control
    /// @param bitmap  the picture, which stays the caller's and must outlive its use
    /// @return 1: the control exists; 0: it does not
    int SetButtonImage(int id, HBITMAP bitmap);

    /// Builds the small image list of a list view, of 6 by 14 pixels an image. First of all the control is sent
    /// WM_DESTROY, also without a list of bitmaps, so that it starts anew; where there is no such control the dialog
    /// itself gets it, whose procedure must not destroy this object then. Loading ends at the first bitmap that is not
    /// there. The image list is this object's; one that an earlier call built is destroyed, unless a list view still
    /// shows it: that one frees it then, as long as it has no other image lists. Built for another thread's
    /// dialog it stays for good.
    /// @param bitmapIds  numbers of bitmap resources, the last followed by a 0; null for none
    /// @param instance   module that holds them
    /// @param id         control
    /// @return 1: built, or null was given, which changes nothing more; 0: no image list could be created
    int InitIconList(const unsigned int* bitmapIds, HINSTANCE instance, int id);

    /// Gives a list-view item the focus within its list view.
    /// @param id     control
    /// @param index  item
    /// @param flag   not 0: select it too
    /// @return 0: done; 1: refused, or not a list view
    int SetLVFocus(int id, int index, int flag);

    /// Takes the focus from a list-view item.
    /// @param id     control
    /// @param index  item
    /// @param flag   not 0: the selection too
    /// @return 0: done; 1: refused, or not a list view
    int ClearLVFocus(int id, int index, int flag);

    /// Remembers a selection for the caller; no control is touched.
    /// @param value  what to remember
    /// @param slot   0 to 3
    /// @return what was remembered there before, 0 at first; -1: no such slot
    int SetLVSelected(int value, int slot);

    /// What SetLVSelected() remembered.
    /// @param slot  0 to 3
    /// @return the value, 0 at first; -1: no such slot
    int GetLVSelected(int slot);

    /// Sets the width of a list-view column.
    /// @param id      control
    /// @param column  column
    /// @param width   pixels, at most 32,767; -1 (LVSCW_AUTOSIZE) or -2 (LVSCW_AUTOSIZE_USEHEADER)
    /// @return 1: set; 0: refused, as every other negative width is without asking the control
    int LVSetColumnWidth(int id, int column, int width);

    /// Gives a control, or the dialog when it has no such control, a font and lets it redraw.
    /// @param id    control
    /// @param font  the font, which stays the caller's and must outlive its use; null for the system font
    /// @return 0
    int SetFont(int id, HFONT font);

    /// Opens or closes the list of a combo box.
    /// @param id    control
    /// @param show  not 0: open
    /// @return 1: done; 0: not a combo box
    int ShowDropDown(int id, int show);

    /// Finds the combo-box item with exactly this text, upper and lower case being alike.
    /// @param id     control
    /// @param text   text to find
    /// @param index  receives the item; -1 when there is none
    /// @return 1: found; 0: not found, or not a combo box
    int FindExactMatch(int id, const wchar_t* text, int& index);

    /// Inserts a combo-box item.
    /// @param id     control
    /// @param index  where; -1 at the end
    /// @param text   the text; null for an empty one
    /// @param data   item data
    /// @return 1: inserted; 0: refused, or not a combo box
    int Insert(int id, int index, const wchar_t* text, LPARAM data);

    /// Moves the pointer to the centre of a control or, when there is none, of the dialog.
    /// @param id  control
    /// @return not 0: moved; 0: failure
    int MoveFocus(int id);

    /// The size of a list-box item's text in the font that the control's device context starts with.
    /// @param id      control
    /// @param index   item
    /// @param width   receives pixels; 0 after a failure
    /// @param height  receives pixels; 0 after a failure
    /// @return 1: success; 0: no such item, or not a list box
    int GetLBItemSize(int id, int index, int& width, int& height);

    /// Limits what the user can type into a combo box or an edit.
    /// @param id     control
    /// @param limit  characters; 0 for the system's own limit
    /// @return 1: applied; 0: another kind of control
    int SetTextLimit(int id, int limit);

    /// Lets an edit take no typing, or take it again.
    /// @param id    control
    /// @param flag  not 0: read-only
    /// @return 1: applied; 0: failure, or not an edit
    int SetReadOnly(int id, int flag);

    /// Loads texts of up to 511 characters and sets each as the text of its control. A text that cannot be loaded
    /// leaves its control as it is; so does a button's caption its check mark.
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
