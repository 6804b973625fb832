#pragma once

/// @file
/// IAnnotation: text key/value pairs that a host attaches to a parameter.

#include <cstddef>
#include <cstdint>

namespace mat {

/// An ordered list of key/value pairs with unique keys. The library never reads or
/// fills annotations and never writes them to files; they are the host's own notes.
///
/// Not safe to change while another thread reads the same annotation.
class IAnnotation {
 public:
  virtual ~IAnnotation() = default;
  /// Appends the pair unless HasKey(@p key) is true, in which case nothing changes.
  /// @pre Both texts are non-null and NUL-terminated. Cost: linear in the entry count.
  virtual void AddEntry(const char* key, const char* value) = 0;
  /// @return True when a key equals @p key byte for byte. Cost: linear.
  virtual bool HasKey(const char* key) const = 0;
  /// @return The number of pairs.
  virtual size_t GetEntryCount() const = 0;
  /// @return The key at @p index, or null when @p index is negative or not below the
  ///     count. Valid while the annotation lives.
  virtual const char* GetKey(int32_t index) const = 0;
  /// @return The value at @p index, or null when @p index is negative or not below
  ///     the count.
  virtual const char* GetValue(int32_t index) const = 0;
};

}  // namespace mat
