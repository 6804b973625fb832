#pragma once

/// @file
/// The one export macro. Everything of matgraph that a host can link against carries
/// MAT_API; the shared library is built with hidden visibility, so nothing else is seen.

/// @def MAT_API
/// Marks a function or class that the shared library exports. A host does nothing with
/// it: it gives default visibility where symbols are hidden by default, and imports from
/// the DLL on Windows.

#if defined(_WIN32)
#if defined(MAT_BUILDING_LIBRARY)
#define MAT_API __declspec(dllexport)
#else
#define MAT_API __declspec(dllimport)
#endif
#else
#define MAT_API __attribute__((visibility("default")))
#endif
