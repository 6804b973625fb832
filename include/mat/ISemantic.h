#pragma once

/// @file
/// ISemantic: a named meaning given to a type.

#include "mat/Common.h"

namespace mat {

class IType;

/// A semantic of a library; lives as long as its library.
class ISemantic {
 public:
  virtual ~ISemantic() = default;
  /// @return The semantic's identity.
  virtual const UUID& GetUUID() const = 0;
  /// @return The semantic's name; the empty text when it has none.
  virtual const char* GetName() const = 0;
  /// @return The type the semantic gives a meaning to, or null when the file named no
  ///     type or one that was found nowhere when the semantic was read.
  virtual const IType* GetType() const = 0;
};

}  // namespace mat
