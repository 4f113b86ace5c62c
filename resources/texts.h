#pragma once

// Numbers of the texts in the library's string table; also included by the resource script.

#define IDS_LIBRARY_NAME 1

// Texts of dates: the first number of each language, and what is added to it for the first text of each kind.

#define IDS_ENGLISH 1024
#define IDS_GERMAN 1056
#define IDS_FRENCH 1088
#define IDS_ITALIAN 1120
#define IDS_PORTUGUESE 1152
#define IDS_SPANISH 1184
#define IDS_SWEDISH 1216

#define IDS_MONTHS 0
#define IDS_DAYS 12
#define IDS_BRIEF_DAYS 19
#define IDS_MERIDIANS 26
