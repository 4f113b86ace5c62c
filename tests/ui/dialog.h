#pragma once

// Numbers of the dialogs of dialog.rc and of their controls.
#define DLG_ALL 100
#define CTL_STATIC 101
#define CTL_EDIT 102
#define CTL_RICH 103
#define CTL_TREE 104
#define CTL_CHECK 105
#define CTL_LIST 106
#define CTL_COMBO 107
#define CTL_SLIDER 108
#define CTL_PROGRESS 109
#define CTL_SCROLL 110
#define CTL_TAB 111
#define CTL_LISTVIEW 112
#define CTL_MISSING 199
