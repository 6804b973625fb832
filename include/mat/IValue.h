#pragma once

/// @file
/// IValue: a typed array of elements (a default value of a type, a parameter or a node
/// input, or a value that the host made with one of the createValue functions).

#include <cstddef>
#include <cstdint>

#include "mat/Common.h"

namespace mat {

class ISemantic;

/// A read-only typed array of elements.
///
/// The element accessors check neither the index nor the kind: the caller keeps the
/// index below GetCount() and calls only the accessor that matches GetValueType().
/// A value held by another object (type, parameter, node input) lives as long as its
/// holder; a value made by createValueBool() and its siblings belongs to the host
/// until it is passed to releaseValue().
class IValue {
 public:
  virtual ~IValue() = default;
  /// @return The number of elements; 0 for an empty array.
  virtual size_t GetCount() const = 0;
  /// @return The element kind; never ValueType::None for a value that a holder hands out.
  virtual ValueType GetValueType() const = 0;
  /// @return Element @p index of a ValueType::Float value.
  virtual float GetFloat(size_t index) const = 0;
  /// @return Element @p index of a ValueType::Int value.
  virtual int32_t GetInt(size_t index) const = 0;
  /// @return Element @p index of a ValueType::String value, NUL-terminated, valid
  ///     while the value lives.
  virtual const char* GetString(size_t index) const = 0;
  /// @return Element @p index of a ValueType::Bool value.
  virtual bool GetBool(size_t index) const = 0;
  /// @return Element @p index of a ValueType::UUID value.
  virtual UUID GetUUID(size_t index) const = 0;
  /// @return Element @p index of a ValueType::Semantic value; null when the file named
  ///     a semantic that was found nowhere. The semantic belongs to its library.
  virtual const ISemantic* GetSemantic(size_t index) const = 0;
};

}  // namespace mat
