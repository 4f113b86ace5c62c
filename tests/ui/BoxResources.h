#pragma once

// Numbers of the resources in BoxResources.rc.

#define IDB_BASE 201
#define IDB_ICON 202
