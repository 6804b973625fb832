#pragma once

/// @file
/// The version of matgraph that these headers belong to. The shared library's SONAME
/// carries the major number: libmatgraph.so.MAJOR.

/// Incremented when a change breaks hosts built against an earlier version.
#define MATGRAPH_VERSION_MAJOR 0
/// Incremented when features are added.
#define MATGRAPH_VERSION_MINOR 1
/// Incremented for fixes that change no interface.
#define MATGRAPH_VERSION_PATCH 0

/// The version as one number for comparisons in the preprocessor:
/// MAJOR * 10000 + MINOR * 100 + PATCH, so 0.1.0 is 100 and 1.2.3 is 10203.
#define MATGRAPH_VERSION \
  (MATGRAPH_VERSION_MAJOR * 10000 + MATGRAPH_VERSION_MINOR * 100 + MATGRAPH_VERSION_PATCH)

/// The version as text, "MAJOR.MINOR.PATCH".
#define MATGRAPH_VERSION_STRING "0.1.0"
