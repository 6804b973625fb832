#pragma once

/// @file
/// IGraphFactory: builds a new graph or edits a copy of an existing one.

#include <cstddef>
#include <memory>

#include "mat/Common.h"

namespace mat {

class IGraph;
class IGraphNode;
class INodeClass;
class IType;
class IValue;

/// Owns one graph under construction until FinishGraph() hands it to a library.
/// Made by createNewGraphFactory() or cloneNewGraphFactory(), released by
/// releaseGraphFactory().
///
/// Every operation is all or nothing: one that reports a failure leaves the graph
/// exactly as it was. Node handles point at nodes of this factory's graph and stay
/// valid until the node leaves the graph or the factory is released. After
/// FinishGraph() every operation reports ConnectionInvalidNodes (or does nothing).
/// A factory is used by one thread at a time. n below is the node count, c the number
/// of connections in the graph.
class IGraphFactory {
 public:
  virtual ~IGraphFactory() = default;
  /// Appends a node of @p nodeClass named @p name (null: the empty name).
  /// @param nodeClass A node class or a graph; the node shares its ownership.
  /// @param name The node's name, copied.
  /// @param node Receives the new node, or null on failure.
  /// @return ConnectionOk; ConnectionInvalidNodes for an empty @p nodeClass.
  ///     Cost: O(log n).
  virtual ConnectionResult AddNode(const std::shared_ptr<const INodeClass>& nodeClass,
                                   const char* name, const IGraphNode** node) = 0;
  /// Renames the graph (null: the empty name).
  virtual void SetName(const char* name) = 0;
  /// Moves @p node in the editor; a null or foreign handle is ignored.
  virtual void SetEditorPosition(const IGraphNode* node, float x, float y) = 0;
  /// Appends a graph input, with a copy of @p defaultValue (may be null) as its default.
  /// @return ConnectionNameInUse when an input of that name exists. Cost: O(1).
  virtual ConnectionResult AddInput(const IType* type, const char* name,
                                    const IValue* defaultValue) = 0;
  /// Appends a graph output.
  /// @return ConnectionNameInUse when an output of that name exists. Cost: O(1).
  virtual ConnectionResult AddOutput(const IType* type, const char* name) = 0;
  /// Removes a graph input: connections from it go, those from later inputs move down.
  /// @return ConnectionNotFound when there is no input @p name. Cost: O(c).
  virtual ConnectionResult RemoveInput(const char* name) = 0;
  /// Removes a graph output with its connection and default; later outputs move down
  /// with theirs.
  /// @return ConnectionNotFound when there is no output @p name. Cost: O(number of outputs).
  virtual ConnectionResult RemoveOutput(const char* name) = 0;
  /// Removes node @p index (2 or more); connections from it go, later nodes and the
  /// connections from them move down by one.
  /// @return ConnectionNotFound for the special nodes or an index >= n. Cost: O(n + c).
  virtual ConnectionResult RemoveNode(size_t index) = 0;
  /// Puts a new node of @p nodeClass named @p name in place of node @p index.
  /// With an identical signature the new node takes the index, connections and defaults
  /// of the old one. Otherwise, when @p allowSignatureChange, the old node is removed,
  /// the new one appended last, and every connection into and out of the old node whose
  /// names and types still fit is made again (defaults are not carried over).
  /// @param index The node to replace.
  /// @param nodeClass The new node's class; the node shares its ownership.
  /// @param allowSignatureChange Whether a class with another signature may take the place.
  /// @param name The new node's name, copied (null: the empty name).
  /// @param node Receives the new node, or null on failure.
  /// @return ConnectionNotFound for the special nodes or an index >= n;
  ///     ConnectionTypeMismatch when the signatures differ and no change is allowed;
  ///     ConnectionInvalidNodes for an empty @p nodeClass. Cost: O(n + c).
  virtual ConnectionResult ReplaceNode(size_t index,
                                       const std::shared_ptr<const INodeClass>& nodeClass,
                                       bool allowSignatureChange, const char* name,
                                       const IGraphNode** node) = 0;
  /// Looks up a node of the graph under construction.
  /// @param index The node's index: 0 the input node, 1 the output node, then the others.
  /// @param node Receives the node at @p index, or null.
  /// @return ConnectionNotFound when @p index >= n. Cost: O(1).
  virtual ConnectionResult GetNode(size_t index, const IGraphNode** node) = 0;
  /// @return The graph's node count, or 0 after FinishGraph().
  virtual size_t GetNodeCount() = 0;
  /// @return The input node (index 0), or null after FinishGraph().
  virtual const IGraphNode* GetInputNode() = 0;
  /// @return The output node (index 1), or null after FinishGraph().
  virtual const IGraphNode* GetOutputNode() = 0;
  /// Feeds input @p targetInput of @p target from output @p sourceOutput of @p source,
  /// replacing any earlier connection of that input. A graph input is the output of
  /// GetInputNode() of its name; a graph output is the input of GetOutputNode().
  /// @return ConnectionInvalidNodes for a null node, a target of another graph,
  ///     source == target, or the output node as the source (its outputs are the graph's
  ///     outputs, which cannot feed a node of the same graph);
  ///     ConnectionNotFound for a missing input or output name;
  ///     ConnectionTypeMismatch when the two types are not the same object.
  ///     Cost: O(log n).
  /// @throws InvalidDataAccess "Index out of Range: Node not present" for a source of
  ///     another graph, before anything changes.
  virtual ConnectionResult Connect(const IGraphNode* source, const char* sourceOutput,
                                   const IGraphNode* target, const char* targetInput) = 0;
  /// Registers the graph in the factory's library (it then takes over the lookups of
  /// its UUID and name) and hands it out; the factory is empty afterwards.
  /// @return The finished graph, shared with the library; empty when called twice.
  virtual std::shared_ptr<const IGraph> FinishGraph() = 0;
  /// Gives input @p index of @p node a copy of @p value as its default; a null
  /// @p value removes the default. A null or foreign node or an index beyond the
  /// class's inputs is ignored.
  virtual void SetInputDefault(const IGraphNode* node, size_t index, const IValue* value) = 0;
};

}  // namespace mat
