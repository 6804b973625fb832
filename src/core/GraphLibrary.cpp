#include "core/GraphLibrary.h"

#include "mat/Functions.h"

namespace mat {

GraphLibrary::GraphLibrary(const IGraphLibrary* parent, const char* name)
    : name_(name != nullptr ? name : ""), parent_(parent) {}

GraphLibrary::~GraphLibrary() = default;

const char* GraphLibrary::GetName() const { return name_.c_str(); }

size_t GraphLibrary::GetNodeClassCount() const { return nodeClasses_.Count(); }
size_t GraphLibrary::GetGraphCount() const { return graphs_.Count(); }
size_t GraphLibrary::GetSemanticCount() const { return semantics_.Count(); }
size_t GraphLibrary::GetTypeCount() const { return types_.Count(); }

const IType* GraphLibrary::GetType(size_t index) const { return types_.At(index).get(); }

const IType* GraphLibrary::FindType(const UUID& uuid, bool searchParents) const {
  if (const auto* found = types_.Find(uuid)) return found->get();
  return searchParents && parent_ != nullptr ? parent_->FindType(uuid, true) : nullptr;
}

const ISemantic* GraphLibrary::FindSemantic(const UUID& uuid, bool searchParents) const {
  if (const auto* found = semantics_.Find(uuid)) return found->get();
  return searchParents && parent_ != nullptr ? parent_->FindSemantic(uuid, true) : nullptr;
}

const ISemantic* GraphLibrary::GetSemantic(size_t index) const {
  return semantics_.At(index).get();
}

const ISemantic* GraphLibrary::FindSemanticByName(const char* name) const {
  const auto* found = semantics_.FindByName(name);
  return found != nullptr ? found->get() : nullptr;
}

std::shared_ptr<const INodeClass> GraphLibrary::FindNodeClass(const UUID& uuid,
                                                              bool searchParents) const {
  if (const auto* found = nodeClasses_.Find(uuid)) return *found;
  if (searchParents && parent_ != nullptr) return parent_->FindNodeClass(uuid, true);
  return nullptr;
}

std::shared_ptr<const INodeClass> GraphLibrary::GetNodeClass(size_t index) const {
  return nodeClasses_.At(index);
}

std::shared_ptr<const INodeClass> GraphLibrary::FindNodeClassByName(const char* name) const {
  const auto* found = nodeClasses_.FindByName(name);
  return found != nullptr ? *found : nullptr;
}

std::shared_ptr<const IGraph> GraphLibrary::FindGraph(const UUID& uuid, bool searchParents) const {
  if (const auto* found = graphs_.Find(uuid)) return *found;
  if (searchParents && parent_ != nullptr) return parent_->FindGraph(uuid, true);
  return nullptr;
}

std::shared_ptr<const IGraph> GraphLibrary::GetGraph(size_t index) const {
  return graphs_.At(index);
}

std::shared_ptr<const IGraph> GraphLibrary::FindGraphByName(const char* name) const {
  const auto* found = graphs_.FindByName(name);
  return found != nullptr ? *found : nullptr;
}

std::shared_ptr<const INodeClass> GraphLibrary::FindAnyNodeClass(const UUID& uuid,
                                                                 bool searchParents) const {
  if (const auto* graph = graphs_.Find(uuid)) return *graph;
  if (const auto* nodeClass = nodeClasses_.Find(uuid)) return *nodeClass;
  if (searchParents && parent_ != nullptr) return parent_->FindAnyNodeClass(uuid, true);
  return nullptr;
}

void GraphLibrary::AddType(std::shared_ptr<const IType> type) {
  const UUID uuid = type->GetUUID();
  types_.Add(std::move(type), uuid, nullptr);
}

void GraphLibrary::AddSemantic(std::shared_ptr<const ISemantic> semantic) {
  const UUID uuid = semantic->GetUUID();
  const char* name = semantic->GetName();  // owned by the object, which the list keeps
  semantics_.Add(std::move(semantic), uuid, name);
}

void GraphLibrary::AddNodeClass(std::shared_ptr<const INodeClass> nodeClass) {
  const UUID uuid = nodeClass->GetUUID();
  const char* name = nodeClass->GetName();
  nodeClasses_.Add(std::move(nodeClass), uuid, name);
}

void GraphLibrary::AddGraph(std::shared_ptr<const IGraph> graph) {
  const UUID uuid = graph->GetUUID();
  const char* name = graph->GetName();
  graphs_.Add(std::move(graph), uuid, name);
}

GraphLibrary* asGrowableLibrary(const IGraphLibrary* library) {
  // Libraries are handed out read-only; only a factory's FinishGraph grows one, and only
  // a library that this implementation made.
  return const_cast<GraphLibrary*>(dynamic_cast<const GraphLibrary*>(library));
}

const IGraphLibrary* createGraphLibrary(const IGraphLibrary* parent, const char* name) {
  return new GraphLibrary(parent, name);
}

void releaseGraphLibrary(const IGraphLibrary* library) { delete library; }

}  // namespace mat
