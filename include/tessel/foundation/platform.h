#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#ifdef TESSEL_BUILD
/// Marks what Tessel.dll offers: exported while it is built, imported by everyone else.
#define TESSEL_API __declspec(dllexport)
#else
#define TESSEL_API __declspec(dllimport)
#endif
