#pragma once

/// @file
/// IType: a kind of data that flows through inputs and outputs.

#include "mat/Common.h"

namespace mat {

class IValue;

/// A type of a library. Types are compared by identity (the same object), never by
/// UUID. A type lives as long as its library; pointers to it are plain and not owned.
class IType {
 public:
  virtual ~IType() = default;
  /// @return The type's identity.
  virtual const UUID& GetUUID() const = 0;
  /// @return The type's name ("desc" in files); the empty text when it has none.
  virtual const char* GetName() const = 0;
  /// @return The type's default value, or null when it has none. Owned by the type.
  virtual const IValue* GetDefault() const = 0;
};

}  // namespace mat
