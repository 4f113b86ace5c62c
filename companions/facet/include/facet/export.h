#pragma once

#include <windows.h>

#ifdef FACET_BUILD
/// Marks the exports of Facet.dll: exported while it is built, imported by programs.
#define FACET_API __declspec(dllexport)
#else
#define FACET_API __declspec(dllimport)
#endif
