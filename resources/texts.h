#pragma once

// Numbers of the texts in the library's string table; included by the resource script too.

#define IDS_LIBRARY_NAME 1
