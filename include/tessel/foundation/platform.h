#pragma once

// Which parts of it there are, and whether it defines min and max, is up to the program: define WIN32_LEAN_AND_MEAN or
// include <winsock2.h> before Tessel's headers to use Winsock 2.
#include <windows.h>

#ifdef TESSEL_BUILD
/// Marks what Tessel.dll offers: exported while it is built, imported by everyone else.
#define TESSEL_API __declspec(dllexport)
#else
#define TESSEL_API __declspec(dllimport)
#endif
