#include "editing/GraphFactory.h"

#include <string>
#include <vector>

#include "core/GraphLibrary.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "mat/IParameter.h"

namespace mat {
namespace {

const char* nameOrEmpty(const char* name) { return name != nullptr ? name : ""; }

// Names of a connection to make again after a node was replaced.
struct RememberedConnection {
  const IGraphNode* other;  // the source (incoming) or the target (outgoing);
                            // null: the new node
  std::string outputName;
  std::string inputName;
};

}  // namespace

std::shared_ptr<GraphNode> GraphFactory::NewNode(const std::shared_ptr<const INodeClass>& nodeClass,
                                                 const char* name) const {
  auto node = std::make_shared<GraphNode>(
      generateUUID(), nodeClass->IsGraph() ? NestedGraphNode : ClassNode, nodeClass);
  node->SetName(name);
  return node;
}

ConnectionResult GraphFactory::AddNode(const std::shared_ptr<const INodeClass>& nodeClass,
                                       const char* name, const IGraphNode** node) {
  if (node != nullptr) *node = nullptr;
  if (!graph_ || !nodeClass) return ConnectionInvalidNodes;
  auto added = NewNode(nodeClass, name);
  if (node != nullptr) *node = added.get();
  graph_->AppendNode(std::move(added));
  return ConnectionOk;
}

void GraphFactory::SetName(const char* name) {
  if (graph_) graph_->SetName(name);
}

void GraphFactory::SetEditorPosition(const IGraphNode* node, float x, float y) {
  size_t index = 0;
  if (graph_ && graph_->IndexOfNode(node, &index)) {
    graph_->MutableNode(index).SetEditorPosition(x, y);
  }
}

ConnectionResult GraphFactory::AddInput(const IType* type, const char* name,
                                        const IValue* defaultValue) {
  if (!graph_) return ConnectionInvalidNodes;
  if (graph_->Inputs().Find(nameOrEmpty(name), nullptr)) return ConnectionNameInUse;
  Parameter input(nameOrEmpty(name), Reference<IType>(type));
  if (defaultValue != nullptr) input.SetDefault(Value::CopyOf(*defaultValue));
  graph_->Inputs().Append(std::move(input));
  return ConnectionOk;
}

ConnectionResult GraphFactory::AddOutput(const IType* type, const char* name) {
  if (!graph_) return ConnectionInvalidNodes;
  if (graph_->Outputs().Find(nameOrEmpty(name), nullptr)) return ConnectionNameInUse;
  graph_->Outputs().Append(Parameter(nameOrEmpty(name), Reference<IType>(type)));
  return ConnectionOk;
}

ConnectionResult GraphFactory::RemoveInput(const char* name) {
  if (!graph_) return ConnectionInvalidNodes;
  size_t removed = 0;
  if (!graph_->Inputs().Find(name, &removed)) return ConnectionNotFound;
  graph_->Inputs().Erase(removed);
  // The input node's own records (defaults of graph inputs) move down with the
  // inputs.
  auto& inputRecords = graph_->MutableNode(graph_->GetInputNodeIndex()).Inputs();
  if (removed < inputRecords.size()) {
    inputRecords.erase(inputRecords.begin() + static_cast<std::ptrdiff_t>(removed));
  }
  for (size_t m = 0; m < graph_->GetNodeCount(); ++m) {
    if (m == graph_->GetInputNodeIndex()) continue;
    for (NodeInput& record : graph_->MutableNode(m).Inputs()) {
      if (!record.connected || record.sourceNode != graph_->GetInputNodeIndex()) continue;
      if (record.sourceOutput == removed) {
        record.Disconnect();
      } else if (record.sourceOutput > removed) {
        --record.sourceOutput;
      }
    }
  }
  return ConnectionOk;
}

ConnectionResult GraphFactory::RemoveOutput(const char* name) {
  if (!graph_) return ConnectionInvalidNodes;
  size_t removed = 0;
  if (!graph_->Outputs().Find(name, &removed)) return ConnectionNotFound;
  graph_->Outputs().Erase(removed);
  // Record i of the output node feeds graph output i: the records after the
  // removed one move down with their connections and defaults.
  auto& outputRecords = graph_->MutableNode(graph_->GetOutputNodeIndex()).Inputs();
  if (removed < outputRecords.size()) {
    outputRecords.erase(outputRecords.begin() + static_cast<std::ptrdiff_t>(removed));
  }
  return ConnectionOk;
}

void GraphFactory::EraseNodeAndRenumber(size_t index) {
  graph_->EraseNode(index);
  for (size_t m = 0; m < graph_->GetNodeCount(); ++m) {
    for (NodeInput& record : graph_->MutableNode(m).Inputs()) {
      if (!record.connected) continue;
      if (record.sourceNode == index) {
        record.Disconnect();
      } else if (record.sourceNode > index) {
        --record.sourceNode;
      }
    }
  }
}

ConnectionResult GraphFactory::RemoveNode(size_t index) {
  if (!graph_) return ConnectionInvalidNodes;
  if (index < 2 || index >= graph_->GetNodeCount()) return ConnectionNotFound;
  const auto removed = graph_->Nodes()[index];  // alive until the renumbering is done
  EraseNodeAndRenumber(index);
  return ConnectionOk;
}

ConnectionResult GraphFactory::ReplaceNode(size_t index,
                                           const std::shared_ptr<const INodeClass>& nodeClass,
                                           bool allowSignatureChange, const char* name,
                                           const IGraphNode** node) {
  if (node != nullptr) *node = nullptr;
  if (!graph_) return ConnectionInvalidNodes;
  if (index < 2 || index >= graph_->GetNodeCount()) return ConnectionNotFound;
  if (!nodeClass) return ConnectionInvalidNodes;
  const auto old = graph_->Nodes()[index];
  const bool sameSignature = identicalSignatures(old->GetNodeClass().get(), nodeClass.get());
  if (!sameSignature && !allowSignatureChange) return ConnectionTypeMismatch;

  auto replacement = NewNode(nodeClass, name);
  if (node != nullptr) *node = replacement.get();
  if (sameSignature) {
    replacement->CopyInputsFrom(*old);
    graph_->ReplaceNodeAt(index, std::move(replacement));
  } else {
    ReplaceWithSignatureChange(index, replacement);
  }
  return ConnectionOk;
}

// The old node goes, the new one is appended last, and every connection into
// and out of the old node is made again by names where the new class still has
// them with the same types. A connection of the old node to itself becomes one
// of the new node to itself.
void GraphFactory::ReplaceWithSignatureChange(size_t index,
                                              const std::shared_ptr<GraphNode>& replacement) {
  const auto old = graph_->Nodes()[index];
  const auto& oldClass = *old->GetNodeClass();
  auto outputName = [&](size_t sourceNode, size_t output) {
    return std::string(
        graph_->GetGraphNode(sourceNode).GetNodeClass()->GetOutput(output)->GetName());
  };

  std::vector<RememberedConnection> incoming;
  const auto& oldRecords = old->Inputs();
  for (size_t i = 0; i < oldRecords.size() && i < oldClass.GetInputCount(); ++i) {
    if (!oldRecords[i].connected) continue;
    const size_t source = oldRecords[i].sourceNode;
    incoming.push_back({source == index ? nullptr : graph_->GetNode(source),
                        outputName(source, oldRecords[i].sourceOutput),
                        oldClass.GetInput(i)->GetName()});
  }
  std::vector<RememberedConnection> outgoing;
  for (size_t m = 0; m < graph_->GetNodeCount(); ++m) {
    if (m == index) continue;
    const GraphNode& target = graph_->GetGraphNode(m);
    const auto& targetClass = *target.GetNodeClass();
    const auto& records = target.Inputs();
    for (size_t j = 0; j < records.size() && j < targetClass.GetInputCount(); ++j) {
      if (!records[j].connected || records[j].sourceNode != index) continue;
      outgoing.push_back({&target, oldClass.GetOutput(records[j].sourceOutput)->GetName(),
                          targetClass.GetInput(j)->GetName()});
    }
  }

  EraseNodeAndRenumber(index);
  graph_->AppendNode(replacement);
  for (const RememberedConnection& connection : incoming) {
    const IGraphNode& source = connection.other != nullptr ? *connection.other : *replacement;
    replacement->Connect(connection.inputName.c_str(), source, connection.outputName.c_str(),
                         *graph_);
  }
  for (const RememberedConnection& connection : outgoing) {
    size_t target = 0;
    if (!graph_->IndexOfNode(connection.other, &target)) continue;
    graph_->MutableNode(target).Connect(connection.inputName.c_str(), *replacement,
                                        connection.outputName.c_str(), *graph_);
  }
}

ConnectionResult GraphFactory::GetNode(size_t index, const IGraphNode** node) {
  if (node != nullptr) *node = nullptr;
  if (!graph_) return ConnectionInvalidNodes;
  if (index >= graph_->GetNodeCount()) return ConnectionNotFound;
  if (node != nullptr) *node = graph_->GetNode(index);
  return ConnectionOk;
}

size_t GraphFactory::GetNodeCount() { return graph_ ? graph_->GetNodeCount() : 0; }

const IGraphNode* GraphFactory::GetInputNode() {
  return graph_ ? graph_->GetNode(graph_->GetInputNodeIndex()) : nullptr;
}

const IGraphNode* GraphFactory::GetOutputNode() {
  return graph_ ? graph_->GetNode(graph_->GetOutputNodeIndex()) : nullptr;
}

ConnectionResult GraphFactory::Connect(const IGraphNode* source, const char* sourceOutput,
                                       const IGraphNode* target, const char* targetInput) {
  if (!graph_ || source == nullptr || target == nullptr || source == target) {
    return ConnectionInvalidNodes;
  }
  size_t targetIndex = 0;
  size_t sourceIndex = 0;
  if (!graph_->IndexOfNode(target, &targetIndex)) return ConnectionInvalidNodes;
  if (!graph_->IndexOfNode(source, &sourceIndex)) throw InvalidDataAccess("Node not present");
  // A file names the source of a connection by its node's UUID, and the output node is
  // never written: a connection from it would make a graph that saves but does not load.
  if (sourceIndex == graph_->GetOutputNodeIndex()) return ConnectionInvalidNodes;
  if (sourceOutput == nullptr || targetInput == nullptr) return ConnectionNotFound;
  return graph_->MutableNode(targetIndex).Connect(targetInput, *source, sourceOutput, *graph_);
}

std::shared_ptr<const IGraph> GraphFactory::FinishGraph() {
  if (!graph_) return nullptr;
  graph_->MutableNode(graph_->GetInputNodeIndex()).ResizeInputs();
  graph_->MutableNode(graph_->GetOutputNodeIndex()).ResizeInputs();
  std::shared_ptr<const IGraph> finished = std::move(graph_);
  if (GraphLibrary* library = asGrowableLibrary(library_)) library->AddGraph(finished);
  return finished;
}

void GraphFactory::SetInputDefault(const IGraphNode* node, size_t index, const IValue* value) {
  size_t nodeIndex = 0;
  if (!graph_ || !graph_->IndexOfNode(node, &nodeIndex)) return;
  GraphNode& target = graph_->MutableNode(nodeIndex);
  if (index >= target.GetNodeClass()->GetInputCount()) return;
  if (target.Inputs().size() <= index) target.ResizeInputs();
  target.SetInputDefault(index, value != nullptr ? Value::CopyOf(*value) : Value());
}

IGraphFactory* createNewGraphFactory(const IGraphLibrary* library, const char* name, UUID uuid) {
  return new GraphFactory(std::make_shared<Graph>(name, uuid, library), library);
}

IGraphFactory* cloneNewGraphFactory(const IGraphLibrary* library,
                                    const std::shared_ptr<const IGraph>& graph) {
  const auto* source = dynamic_cast<const Graph*>(graph.get());
  if (source == nullptr) return nullptr;
  return new GraphFactory(std::make_shared<Graph>(*source), library);
}

void releaseGraphFactory(IGraphFactory* factory) { delete factory; }

}  // namespace mat
