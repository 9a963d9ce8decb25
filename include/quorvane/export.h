#pragma once

// QUORVANE_API marks what the shared library exports. A user of the static library on Windows
// defines QUORVANE_STATIC; the CMake target Quorvane::quorvane_static does so.

#if defined(_WIN32) && !defined(QUORVANE_STATIC)
#if defined(QUORVANE_BUILDING)
#define QUORVANE_API __declspec(dllexport)
#else
#define QUORVANE_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define QUORVANE_API __attribute__((visibility("default")))
#else
#define QUORVANE_API
#endif
