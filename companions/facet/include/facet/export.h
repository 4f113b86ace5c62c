#pragma once

#include <windows.h>

#ifdef FACET_BUILD
/// Marks what Facet.dll offers: exported while it is built, imported by everyone else.
#define FACET_API __declspec(dllexport)
#else
#define FACET_API __declspec(dllimport)
#endif
