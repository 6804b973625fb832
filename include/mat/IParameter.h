#pragma once

/// @file
/// IParameter: one input or one output of a node class or graph.

namespace mat {

class IAnnotation;
class IType;
class IValue;

/// One named, typed input or output. Parameters are held by their node class or graph;
/// the pointers they hand out stay valid while that owner lives and, for a graph under
/// construction, until its inputs or outputs change.
class IParameter {
 public:
  virtual ~IParameter() = default;
  /// @return The parameter's name, NUL-terminated.
  virtual const char* GetName() const = 0;
  /// @return The parameter's type, or null when the file named a type found nowhere.
  virtual const IType* GetType() const = 0;
  /// @return The parameter's default value, or null when it has none.
  virtual const IValue* GetDefault() const = 0;
  /// @return The parameter's annotation, which the host may change (parameters of a
  ///     loaded library included). Not safe while another thread reads the same
  ///     parameter.
  virtual IAnnotation* GetAnnotation() const = 0;
};

}  // namespace mat
