#pragma once

#include <memory>

#include "graph/Graph.h"
#include "mat/IGraphFactory.h"

namespace mat {

// The one implementation of IGraphFactory. Every operation checks everything it
// needs first and then makes its changes, so one that reports a failure leaves
// the graph as it was.
class GraphFactory final : public IGraphFactory {
 public:
  GraphFactory(std::shared_ptr<Graph> graph, const IGraphLibrary* library)
      : graph_(std::move(graph)), library_(library) {}

  ConnectionResult AddNode(const std::shared_ptr<const INodeClass>& nodeClass, const char* name,
                           const IGraphNode** node) override;
  void SetName(const char* name) override;
  void SetEditorPosition(const IGraphNode* node, float x, float y) override;
  ConnectionResult AddInput(const IType* type, const char* name,
                            const IValue* defaultValue) override;
  ConnectionResult AddOutput(const IType* type, const char* name) override;
  ConnectionResult RemoveInput(const char* name) override;
  ConnectionResult RemoveOutput(const char* name) override;
  ConnectionResult RemoveNode(size_t index) override;
  ConnectionResult ReplaceNode(size_t index, const std::shared_ptr<const INodeClass>& nodeClass,
                               bool allowSignatureChange, const char* name,
                               const IGraphNode** node) override;
  ConnectionResult GetNode(size_t index, const IGraphNode** node) override;
  size_t GetNodeCount() override;
  const IGraphNode* GetInputNode() override;
  const IGraphNode* GetOutputNode() override;
  ConnectionResult Connect(const IGraphNode* source, const char* sourceOutput,
                           const IGraphNode* target, const char* targetInput) override;
  std::shared_ptr<const IGraph> FinishGraph() override;
  void SetInputDefault(const IGraphNode* node, size_t index, const IValue* value) override;

 private:
  std::shared_ptr<GraphNode> NewNode(const std::shared_ptr<const INodeClass>& nodeClass,
                                     const char* name) const;
  void EraseNodeAndRenumber(size_t index);
  void ReplaceWithSignatureChange(size_t index, const std::shared_ptr<GraphNode>& replacement);

  std::shared_ptr<Graph> graph_;  // empty once the graph is finished
  const IGraphLibrary* library_;
};

}  // namespace mat
