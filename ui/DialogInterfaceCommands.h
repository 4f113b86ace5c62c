#pragma once

#include <tessel/ui/dialoginterface.h>

#include <memory>
#include <span>
#include <tuple>

/// What each command does; every operation that takes an item works on the dialog's selected control.
struct DIALOG_INTERFACE::Commands {
    /// One command, or its part for one kind of control. The text is what is to be set, or the caller's buffer.
    using Handler = int (*)(DIALOG_INTERFACE& dialog, wchar_t* text);
    /// A kind of control and what a command does to it.
    struct ForType {
        FIELD_TYPE type;
        Handler handler;
    };
    /// The messages that differ between a list box and a combo box.
    struct ListMessages {
        UINT insert, append, erase, clear, count;
        UINT setData, getData, getText, getTextLength, select, getSelected;
    };
    class Kept;

    static const ListMessages kListBox;
    static const ListMessages kComboBox;
    static const ListMessages& Messages(const DIALOG_INTERFACE& dialog);

    static int Position(DIALOG_INTERFACE& dialog, wchar_t* text);
    static int Display(DIALOG_INTERFACE& dialog, wchar_t* text);
    static int Set(DIALOG_INTERFACE& dialog, wchar_t* text);
    static int Get(DIALOG_INTERFACE& dialog, wchar_t* text);
    static int Add(DIALOG_INTERFACE& dialog, wchar_t* text);
    static int Delete(DIALOG_INTERFACE& dialog, wchar_t* text);
    static int Reset(DIALOG_INTERFACE& dialog, wchar_t* text);
    static int Size(DIALOG_INTERFACE& dialog, wchar_t* text);
    static int Range(DIALOG_INTERFACE& dialog, wchar_t* text);
    static int GetCount(DIALOG_INTERFACE& dialog, wchar_t* text);
    static int SetEditSelection(DIALOG_INTERFACE& dialog, wchar_t* text);
    static int TextColour(DIALOG_INTERFACE& dialog, wchar_t* text);

    /// Does a command's part for the selected control.
    /// @return what it reports; @p otherwise for a kind that is not in the table
    static int Run(std::span<const ForType> table, DIALOG_INTERFACE& dialog, wchar_t* text, int otherwise = 0);

    /// Sets the window text; null empties it.
    static int SetText(DIALOG_INTERFACE& dialog, wchar_t* text);
    /// Inserts an item into a list box (append below 0) or adds it, and gives it the item data.
    static int AddString(DIALOG_INTERFACE& dialog, UINT message, int index, const wchar_t* text);

    /// The position of a trackbar, progress bar or scroll bar.
    static int ReadGauge(DIALOG_INTERFACE& dialog);
    static void MoveGauge(DIALOG_INTERFACE& dialog, int position);

    /// Characters that the text of a list-box or combo-box item needs, terminator included. @return 0: no such item
    static std::size_t TextRoom(DIALOG_INTERFACE& dialog, int index);
    /// Reads the text into a buffer with that much room. @return false: no such item
    static bool ReadText(DIALOG_INTERFACE& dialog, int index, wchar_t* text, std::size_t room);
    /// The whole text of a list-box or combo-box item, however long. @return null: no such item, or no memory
    static std::unique_ptr<wchar_t[]> ItemText(DIALOG_INTERFACE& dialog, int index);

    struct Setting;
    struct Getting;
    struct Items;
    struct Resetting;
    struct Ranging;
    struct Showing;
};

/// Keeps the fields of the operation under way for a scope in which a control may tell the dialog something.
// GUARD-220: an operation that the dialog's procedure asks for then sets them too; this one would go on with another
// control, index and buffer length.
class DIALOG_INTERFACE::Commands::Kept {
    using Values = std::tuple<HWND, int, FIELD_TYPE, COMMAND, DISPLAY_ACTION, int, int, int, int, LPARAM>;

    static auto FieldsOf(DIALOG_INTERFACE& dialog) {
        return std::tie(dialog.hCtrl, dialog.CtrlId, dialog.CtrlType, dialog.Command, dialog.Action, dialog.X, dialog.Y,
                        dialog.Index, dialog.BufferLen, dialog.Data);
    }

public:
    explicit Kept(DIALOG_INTERFACE& dialog) : m_dialog(dialog), m_values(FieldsOf(dialog)) {}
    ~Kept() { FieldsOf(m_dialog) = m_values; }
    Kept(const Kept&) = delete;
    Kept& operator=(const Kept&) = delete;

private:
    DIALOG_INTERFACE& m_dialog;
    Values m_values;
};
