#pragma once

// The program decides which parts are declared, and whether min and max are defined: to use Winsock 2, define
// WIN32_LEAN_AND_MEAN or include <winsock2.h> before Tessel's headers.
#include <windows.h>

#ifdef TESSEL_BUILD
/// Marks the exports of Tessel.dll: exported while it is built, imported by programs.
#define TESSEL_API __declspec(dllexport)
#else
#define TESSEL_API __declspec(dllimport)
#endif
