#pragma once

/// @file
/// LoadDiagnostic: what a load found, for hosts and tools that want more than the one
/// error line that loadGraphLibrary() writes.

#include <cstddef>
#include <cstdint>
#include <string>

#include "mat/Common.h"

namespace mat {

/// The outcome of loadGraphLibraryWithDiagnostic() and where a problem lies.
struct LoadDiagnostic {
  /// How the load ended.
  enum Outcome : int32_t {
    Loaded = 0,           ///< the whole text was read; a library was returned
    LoadedPartially = 1,  ///< a syntax error cut the text short inside the root array; the
                          ///< part before it was read and a library was returned
    NotALibrary = 2,      ///< the text is not JSON or its root is not an array; null returned
    Refused = 3,          ///< malformed content; null returned, @ref message says why
  };

  /// How the load ended.
  Outcome outcome = Loaded;
  /// The error text: for Refused, exactly the line loadGraphLibrary() writes (without
  /// the end of line); for LoadedPartially and NotALibrary, the parser's description.
  std::string message;
  /// 1-based line of a syntax error; 0 when there is none.
  size_t line = 0;
  /// 1-based column (in bytes) of a syntax error; 0 when there is none.
  size_t column = 0;
  /// True when the text holds a header without "fileversion", so nothing was read.
  bool headerWithoutVersion = false;
  /// For Refused: whether the problem lies inside an item of the content array.
  bool hasItem = false;
  /// For Refused when @ref hasItem is true, the item's index in the content array.
  size_t itemIndex = 0;
  /// For Refused when @ref hasItem is true, the item's "uuid"; nil when it has none that
  /// could be read.
  UUID itemUUID{};
  /// For Refused: a JSON pointer to the member at fault as far as the reader got, from
  /// the root of the text, e.g. "/1/12/nodes/3/input/0/from".
  std::string jsonPath;
};

}  // namespace mat
