#pragma once

/// Kinds of control that the dialog interface and the notification records distinguish.
enum FIELD_TYPE : int {
    FT_UNKNOWN = 0,     ///< any other window
    FT_TAB = 2,         ///< tab control
    FT_LISTBOX = 3,     ///< list box
    FT_COMBOBOX = 4,    ///< combo box
    FT_BUTTON = 5,      ///< button
    FT_EDIT = 6,        ///< edit control
    FT_STATIC = 7,      ///< static control
    FT_SLIDER = 8,      ///< trackbar
    FT_PROGRESSBAR = 9, ///< progress bar
    FT_SCROLLBAR = 10,  ///< scroll bar
    FT_TREEVIEW = 14,   ///< tree view
    FT_LISTVIEW = 15,   ///< list view
    FT_RICHEDIT = 16,   ///< rich edit control
    FT_HEADER = 17      ///< header control
};
