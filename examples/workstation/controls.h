#pragma once

// The dialog and its controls, for the resource compiler and the sources.
#define IDD_WORKSTATION 100
#define IDC_IMAGE 101
#define IDC_MANAGERS 102
#define IDC_MANAGERS_TITLE 103
#define IDC_POST_TITLE 104
#define IDC_POST 105
#define IDC_POOL 106
#define IDC_IMAGES_TITLE 107
#define IDC_IMAGES 108
#define IDC_START 109
#define IDC_STOP 110
#define IDC_EXIT 111
