#pragma once

/// @file
/// The two exceptions that cross the library's boundary. Both are thrown by value and
/// caught by reference; both keep their own copy of the full text.

#include <exception>
#include <string>

#include "mat/Export.h"

namespace mat {

/// Malformed content of a library file. what() is "InputFileParsingException: "
/// followed by the detail. Readers throw it; loadGraphLibrary() catches it and reports it.
class MAT_API InputFileParsingException : public std::exception {
 public:
  /// Keeps "InputFileParsingException: " followed by @p detail. @pre @p detail is not null.
  explicit InputFileParsingException(const char* detail);
  /// Keeps "InputFileParsingException: " followed by @p detail.
  explicit InputFileParsingException(const std::string& detail);
  ~InputFileParsingException() override;
  /// @return The full text, valid while the exception lives.
  const char* what() const noexcept override;

 private:
  std::string message_;
};

/// A bad index, a node that is not in a graph, or a path that cannot be followed.
/// what() is "Index out of Range: " followed by the detail, whatever the detail says.
class MAT_API InvalidDataAccess : public std::exception {
 public:
  /// Keeps "Index out of Range: " followed by @p detail. @pre @p detail is not null.
  explicit InvalidDataAccess(const char* detail);
  /// Keeps "Index out of Range: " followed by @p detail.
  explicit InvalidDataAccess(const std::string& detail);
  ~InvalidDataAccess() override;
  /// @return The full text, valid while the exception lives.
  const char* what() const noexcept override;

 private:
  std::string message_;
};

}  // namespace mat
