#pragma once

// Numbers of the resources in BoxResources.rc.

#define IDB_BASE 201
#define IDB_ICON 202
#define IDD_BOX 203
#define IDC_MESSAGE 1000
#define IDC_LIST 1001
#define IDS_MESSAGE 301
#define IDS_SECOND 302
#define IDS_MISSING 399
