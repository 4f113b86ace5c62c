#pragma once

#include <tessel/ui/dialoginterface.h>

#include <memory>
#include <span>

namespace tessel {

/// A control and its kind.
struct DialogControl {
    HWND hWnd = nullptr; ///< null: there is no target dialog
    FIELD_TYPE type = FT_UNKNOWN;

    LRESULT Send(UINT message, LPARAM wParam = 0, LPARAM lParam = 0) const {
        return SendMessageW(hWnd, message, static_cast<WPARAM>(wParam), lParam);
    }
    LRESULT SendData(UINT message, LPARAM wParam, const void* record) const {
        return Send(message, wParam, reinterpret_cast<LPARAM>(record));
    }
};

/// One operation: its arguments, its control, and what it returns besides the result.
struct DialogRequest {
    const wchar_t* text = nullptr; ///< text to set; null for none
    wchar_t* buffer = nullptr;     ///< receives a text; null for none
    int bufferLen = 0;             ///< characters that the buffer holds, terminator included
    int x = 0;                     ///< position, width, lower limit, sub-item or reset flag
    int y = 0;                     ///< position, height, upper limit or item
    int index = 0;                 ///< item or position; receives the one that was meant
    LPARAM data = 0;               ///< item data or count, in and out
    DISPLAY_ACTION action = DA_SHOW;
    COLORREF color = 0;

    // Set by the dispatcher.
    DialogControl control{};
    DIALOG_INTERFACE* dialog = nullptr;
    HIMAGELIST images = nullptr;
    int imageIndex = 0;

    LRESULT Send(UINT message, LPARAM wParam = 0, LPARAM lParam = 0) const {
        return control.Send(message, wParam, lParam);
    }
    LRESULT SendData(UINT message, LPARAM wParam, const void* record) const {
        return control.SendData(message, wParam, record);
    }
};

/// Carries out a command, or its part for one kind of control.
/// @return 0: done; 1: failure
using DialogCommand = int (*)(DialogRequest& request);

/// What a command does for one kind of control.
struct CommandForType {
    FIELD_TYPE type;
    DialogCommand command;
};

/// Carries out a command's part for the control of the request.
/// @param parts      what the command does, by kind
/// @param request    the operation
/// @param otherwise  result for a kind that has no part
int RunForType(std::span<const CommandForType> parts, DialogRequest& request, int otherwise = 0);

/// The commands of DIALOG_INTERFACE.
namespace commands {

int Position(DialogRequest& request);
int Display(DialogRequest& request);
int Set(DialogRequest& request);
int Get(DialogRequest& request);
int Add(DialogRequest& request);
int Delete(DialogRequest& request);
int Reset(DialogRequest& request);
int Size(DialogRequest& request);
int Range(DialogRequest& request);
int GetCount(DialogRequest& request);
int SetEditSelection(DialogRequest& request);
int TextColour(DialogRequest& request);

/// Sets the window text; no text empties it.
int SetText(DialogRequest& request);

} // namespace commands

/// The messages that differ between a list box and a combo box.
struct ListMessages {
    UINT insert, append, clear;
    UINT setData, getData, getText, getTextLength, select;
};

/// The messages of a combo box, if the control is one, else those of a list box.
const ListMessages& MessagesOf(const DialogControl& control);

/// Inserts or appends an item to a list box or combo box and gives it its item data.
/// @param message  the message that inserts or appends
/// @return the item's index; below 0: the control refused
int AddString(const DialogControl& control, UINT message, int index, const wchar_t* text, LPARAM data);

/// The buffer size that the text of a list-box or combo-box item needs, in characters.
/// @return the size, terminator included; 0: no such item
std::size_t TextRoom(const DialogControl& control, int index);

/// Reads the text of an item into a buffer of the size that TextRoom() returned.
/// @return false: no such item
bool ReadText(const DialogControl& control, int index, wchar_t* text, std::size_t room);

/// The whole text of a list-box or combo-box item.
/// @return null: no such item, or no memory
std::unique_ptr<wchar_t[]> ItemText(const DialogControl& control, int index);

/// The position of a trackbar, progress bar or scroll bar.
int ReadGauge(const DialogControl& control);

/// Moves a trackbar, progress bar or scroll bar.
void MoveGauge(const DialogControl& control, int position);

/// A tab item to send to its control; without a text only the item data is meant.
TCITEMW TabItem(const wchar_t* text, LPARAM data);

/// Sets or clears states of a list-view item.
/// @param withSelection  not 0: the selection as well as the focus
/// @param state          the states after the call
/// @return 0: done; 1: the list view refused
int SetListViewState(const DialogControl& control, int index, int withSelection, UINT state);

/// For records of common controls, which take no constant text although they only read it.
inline wchar_t* Writable(const wchar_t* text) {
    return const_cast<wchar_t*>(text);
}

} // namespace tessel
