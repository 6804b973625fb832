#include "resolution/GraphResolver.h"

#include <limits>
#include <stdexcept>
#include <string>

#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "mat/IGraphNode.h"
#include "mat/IParameter.h"
#include "mat/IPortPath.h"
#include "mat/IType.h"

namespace mat {
namespace {

constexpr size_t noInstance = std::numeric_limits<size_t>::max();

std::string keyText(NodeKey key) {
  return "{" + std::to_string(key.instance) + ", " + std::to_string(key.node) + "}";
}

[[noreturn]] void throwKeyOutOfRange(NodeKey key) {
  throw InvalidDataAccess("Node key " + keyText(key) + " out of range");
}

void checkPathIndex(const IGraph& graph, size_t position, size_t index) {
  if (index >= graph.GetNodeCount()) {
    throw InvalidDataAccess("Path position " + std::to_string(position) + ": node index " +
                            std::to_string(index) + " out of range (count " +
                            std::to_string(graph.GetNodeCount()) + ")");
  }
}

// The default that applies to the unconnected input `input` of `node`: the
// node's own, else its class's, else that of the input's type. May be null.
const IValue* fallbackDefault(const IGraphNode& node, size_t input) {
  if (const IValue* own = node.GetInputDefault(input)) return own;
  const IParameter* parameter = node.GetNodeClass()->GetInput(input);
  if (const IValue* declared = parameter->GetDefault()) return declared;
  const IType* type = parameter->GetType();
  return type != nullptr ? type->GetDefault() : nullptr;
}

// Detects that a walk from state to state has entered a ring, in O(1) per step
// and with no allocation (Brent's method): a remembered state is compared with
// every later one, and replaced after 1, 2, 4, 8 ... steps.
class RingDetector {
 public:
  RingDetector(NodeKey key, size_t input) : saved_(key), savedInput_(input) {}
  bool Step(NodeKey key, size_t input) {
    if (key == saved_ && input == savedInput_) return true;
    if (++steps_ == limit_) {
      saved_ = key;
      savedInput_ = input;
      limit_ *= 2;
      steps_ = 0;
    }
    return false;
  }

 private:
  NodeKey saved_;
  size_t savedInput_;
  size_t steps_ = 0;
  size_t limit_ = 1;
};

}  // namespace

GraphResolver::GraphResolver(const IGraph& graph)
    : instances_{{&graph, 0, 0, 0}}, enteredInstances_(graph.GetNodeCount(), noInstance) {}

const GraphResolver::GraphInstance& GraphResolver::InstanceOf(NodeKey key) const {
  if (key.instance >= instances_.size() ||
      key.node >= instances_[key.instance].graph->GetNodeCount()) {
    throwKeyOutOfRange(key);
  }
  return instances_[key.instance];
}

const IGraphNode* GraphResolver::GetNode(NodeKey key) const {
  return InstanceOf(key).graph->GetNode(key.node);
}

size_t GraphResolver::GetFlatIndex(NodeKey key) const {
  return InstanceOf(key).firstFlatIndex + key.node;
}

size_t GraphResolver::Enter(NodeKey key) {
  const size_t flatIndex = instances_[key.instance].firstFlatIndex + key.node;
  if (enteredInstances_[flatIndex] != noInstance) return enteredInstances_[flatIndex];
  const std::shared_ptr<const IGraph> nested = GetNode(key)->GetNodeClass()->AsGraph();
  if (!nested) {
    throw InvalidDataAccess("Node key " + keyText(key) + " does not hold a graph");
  }
  const size_t instance = instances_.size();
  instances_.push_back({nested.get(), key.instance, key.node, enteredInstances_.size()});
  enteredInstances_.resize(enteredInstances_.size() + nested->GetNodeCount(), noInstance);
  enteredInstances_[flatIndex] = instance;
  return instance;
}

NodeKey GraphResolver::GetKeyFromPath(const IPortPath& path) {
  NodeKey key{0, 0};
  for (size_t position = 0; position < path.GetNodeIndexCount(); ++position) {
    const size_t index = path.GetNodeIndex(position);
    if (position > 0) {
      if (!GetNodeClass(key)->IsGraph())
        throw std::runtime_error("Can't drill into non-graph node!");
      key.instance = Enter(key);
    }
    checkPathIndex(*instances_[key.instance].graph, position, index);
    key.node = index;
  }
  return key;
}

// Follows the connection of one input upstream until it reaches an output of an
// ordinary node or an input of the resolver's own graph: out of a nested graph
// through its input node, into a nested graph through its output node, and on
// through a graph's output node to whatever feeds that output.
bool GraphResolver::ResolveInput(NodeKey key, size_t input, NodeKey* sourceKey,
                                 size_t* sourceOutput, const IValue** defaultValue) {
  *defaultValue = nullptr;
  const IGraphNode* node = GetNode(key);
  RingDetector ring(key, input);
  size_t sourceNode = 0;
  size_t output = 0;
  while (node->GetInputConnection(input, &sourceNode, &output)) {
    *defaultValue = nullptr;
    const GraphInstance& instance = instances_[key.instance];
    const IGraphNode* source = instance.graph->GetNode(sourceNode);
    switch (source->GetNodeKind()) {
      case ClassNode:
        *sourceKey = {key.instance, sourceNode};
        *sourceOutput = output;
        return true;
      case GraphInputNode:
        if (key.instance == 0) {
          *sourceKey = {0, sourceNode};
          *sourceOutput = output;
          return true;
        }
        *defaultValue = source->GetInputDefault(output);
        key = {instance.parentInstance, instance.parentNode};
        break;
      case GraphOutputNode:
        key.node = sourceNode;
        break;
      case NestedGraphNode: {
        const size_t nested = Enter({key.instance, sourceNode});
        key = {nested, instances_[nested].graph->GetOutputNodeIndex()};
        break;
      }
    }
    input = output;
    node = instances_[key.instance].graph->GetNode(key.node);
    if (ring.Step(key, input)) {
      throw std::runtime_error("Connection cycle at node key " + keyText(key));
    }
  }
  if (*defaultValue == nullptr) *defaultValue = fallbackDefault(*node, input);
  return false;
}

const IGraphNode* SingleGraphResolver::GetNode(NodeKey key) const {
  if (key.node >= graph_.GetNodeCount()) throwKeyOutOfRange(key);
  return graph_.GetNode(key.node);
}

size_t SingleGraphResolver::GetFlatIndex(NodeKey key) const {
  if (key.node >= graph_.GetNodeCount()) throwKeyOutOfRange(key);
  return key.node;
}

NodeKey SingleGraphResolver::GetKeyFromPath(const IPortPath&) {
  throw std::runtime_error("GetKeyFromPath not implemented for non-flattened graphs!");
}

bool SingleGraphResolver::ResolveInput(NodeKey key, size_t input, NodeKey* sourceKey,
                                       size_t* sourceOutput, const IValue** defaultValue) {
  *defaultValue = nullptr;
  const IGraphNode* node = GetNode(key);
  size_t sourceNode = 0;
  size_t output = 0;
  if (node->GetInputConnection(input, &sourceNode, &output)) {
    if (sourceKey != nullptr) *sourceKey = {0, sourceNode};
    if (sourceOutput != nullptr) *sourceOutput = output;
    return true;
  }
  *defaultValue = fallbackDefault(*node, input);
  return false;
}

IGraphResolver* createGraphResolver(const IGraph* graph, bool flatten) {
  if (flatten) return new GraphResolver(*graph);
  return new SingleGraphResolver(*graph);
}

void releaseGraphResolver(const IGraphResolver* resolver) { delete resolver; }

}  // namespace mat
