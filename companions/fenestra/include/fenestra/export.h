#pragma once

#include <windows.h>

#ifdef FENESTRA_BUILD
/// Marks the exports of Fenestra.dll: exported while it is built, imported by programs.
#define FENESTRA_API __declspec(dllexport)
#else
#define FENESTRA_API __declspec(dllimport)
#endif
