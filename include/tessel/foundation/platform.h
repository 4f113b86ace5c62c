#pragma once

// The program decides what of it to include, and whether it defines min and max. To use Winsock 2, define
// WIN32_LEAN_AND_MEAN or include <winsock2.h> before Tessel's headers.
#include <windows.h>

#ifdef TESSEL_BUILD
/// Marks Tessel.dll's interface: exported while the library is built, imported otherwise.
#define TESSEL_API __declspec(dllexport)
#else
#define TESSEL_API __declspec(dllimport)
#endif
