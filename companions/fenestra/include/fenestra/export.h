#pragma once

#include <windows.h>

#ifdef FENESTRA_BUILD
/// Marks what Fenestra.dll offers: exported while it is built, imported by everyone else.
#define FENESTRA_API __declspec(dllexport)
#else
#define FENESTRA_API __declspec(dllimport)
#endif
