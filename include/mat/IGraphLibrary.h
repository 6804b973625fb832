#pragma once

/// @file
/// IGraphLibrary: the container of types, semantics, node classes and graphs.

#include <cstddef>
#include <memory>

#include "mat/Common.h"

namespace mat {

class IGraph;
class INodeClass;
class ISemantic;
class IType;

/// A library of types, semantics, node classes and graphs, each kept in registration
/// order (an object's position is its index and never changes). A library may have a
/// parent, which must outlive it; lookups by UUID can fall back along the parent chain,
/// nearest library first.
///
/// When two objects of one kind share a UUID or a name, both stay countable and
/// reachable by index, and the one registered last answers the lookups.
///
/// Ownership: types and semantics are handed out as plain pointers, valid while the
/// library lives. Node classes and graphs are handed out as shared pointers and stay
/// alive while the host holds them, but their GetLibrary() and the types they use do not.
///
/// A library never changes while it is read, except through a graph factory's
/// FinishGraph(); reading one library from several threads at once is safe as long as
/// no factory finishes a graph into it meanwhile.
class IGraphLibrary {
 public:
  virtual ~IGraphLibrary() = default;
  /// @return The type registered last under @p uuid, or null when none is found. With
  ///     @p searchParents, a library that lacks it asks its parent chain.
  ///     Cost: O(log n) in each library asked.
  virtual const IType* FindType(const UUID& uuid, bool searchParents) const = 0;
  /// @return The library's name, never null; valid while the library lives.
  virtual const char* GetName() const = 0;

  /// @name Counts
  /// Objects of each kind in this library alone (not its parents), duplicates included.
  /// @{

  /// @return The number of node classes; graphs are counted apart.
  virtual size_t GetNodeClassCount() const = 0;
  /// @return The number of graphs.
  virtual size_t GetGraphCount() const = 0;
  /// @return The number of semantics.
  virtual size_t GetSemanticCount() const = 0;
  /// @return The number of types.
  virtual size_t GetTypeCount() const = 0;
  /// @}

  /// @return The type at @p index, in registration order.
  /// @throws InvalidDataAccess when @p index >= GetTypeCount(), naming both.
  virtual const IType* GetType(size_t index) const = 0;

  /// @name Semantics
  /// @{

  /// @return As FindType(), for semantics.
  virtual const ISemantic* FindSemantic(const UUID& uuid, bool searchParents) const = 0;
  /// @return The semantic at @p index.
  /// @throws InvalidDataAccess when @p index >= GetSemanticCount(), naming both.
  virtual const ISemantic* GetSemantic(size_t index) const = 0;
  /// @return The semantic registered last under the non-empty @p name in this library
  ///     (parents are not asked), or null; null for a null or empty name.
  virtual const ISemantic* FindSemanticByName(const char* name) const = 0;
  /// @}

  /// @name Node classes (those read from files; graphs are separate)
  /// @{

  /// @return As FindType(), for node classes; an empty pointer when none is found.
  virtual std::shared_ptr<const INodeClass> FindNodeClass(const UUID& uuid,
                                                          bool searchParents) const = 0;
  /// @return The node class at @p index.
  /// @throws InvalidDataAccess when @p index >= GetNodeClassCount(), naming both.
  virtual std::shared_ptr<const INodeClass> GetNodeClass(size_t index) const = 0;
  /// @return As FindSemanticByName(), for node classes; an empty pointer when none.
  virtual std::shared_ptr<const INodeClass> FindNodeClassByName(const char* name) const = 0;
  /// @}

  /// @name Graphs
  /// @{

  /// @return As FindType(), for graphs; an empty pointer when none is found.
  virtual std::shared_ptr<const IGraph> FindGraph(const UUID& uuid, bool searchParents) const = 0;
  /// @return The graph at @p index.
  /// @throws InvalidDataAccess when @p index >= GetGraphCount(), naming both.
  virtual std::shared_ptr<const IGraph> GetGraph(size_t index) const = 0;
  /// @return As FindSemanticByName(), for graphs; an empty pointer when none.
  virtual std::shared_ptr<const IGraph> FindGraphByName(const char* name) const = 0;
  /// @}

  /// Finds anything that can be the class of a node: in this library first the graphs,
  /// then the node classes; then, with @p searchParents, the parent chain the same way.
  /// @return The class, or an empty pointer when none is found.
  virtual std::shared_ptr<const INodeClass> FindAnyNodeClass(const UUID& uuid,
                                                             bool searchParents) const = 0;
};

}  // namespace mat
