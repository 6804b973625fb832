#pragma once

#include <memory>
#include <string>

#include "core/ItemCollection.h"
#include "mat/IGraph.h"
#include "mat/IGraphLibrary.h"
#include "mat/INodeClass.h"
#include "mat/ISemantic.h"
#include "mat/IType.h"

namespace mat {

// The one implementation of IGraphLibrary. The loader fills it through the Add
// operations; afterwards it grows only through AddGraph (a finished graph of a factory).
class GraphLibrary final : public IGraphLibrary {
 public:
  GraphLibrary(const IGraphLibrary* parent, const char* name);
  ~GraphLibrary() override;

  const IType* FindType(const UUID& uuid, bool searchParents) const override;
  const char* GetName() const override;
  size_t GetNodeClassCount() const override;
  size_t GetGraphCount() const override;
  size_t GetSemanticCount() const override;
  size_t GetTypeCount() const override;
  const IType* GetType(size_t index) const override;
  const ISemantic* FindSemantic(const UUID& uuid, bool searchParents) const override;
  const ISemantic* GetSemantic(size_t index) const override;
  const ISemantic* FindSemanticByName(const char* name) const override;
  std::shared_ptr<const INodeClass> FindNodeClass(const UUID& uuid,
                                                  bool searchParents) const override;
  std::shared_ptr<const INodeClass> GetNodeClass(size_t index) const override;
  std::shared_ptr<const INodeClass> FindNodeClassByName(const char* name) const override;
  std::shared_ptr<const IGraph> FindGraph(const UUID& uuid, bool searchParents) const override;
  std::shared_ptr<const IGraph> GetGraph(size_t index) const override;
  std::shared_ptr<const IGraph> FindGraphByName(const char* name) const override;
  std::shared_ptr<const INodeClass> FindAnyNodeClass(const UUID& uuid,
                                                     bool searchParents) const override;

  // Registration: the object takes over the lookups of its UUID and (non-empty) name;
  // an earlier object with either stays countable and reachable by index.
  void AddType(std::shared_ptr<const IType> type);
  void AddSemantic(std::shared_ptr<const ISemantic> semantic);
  void AddNodeClass(std::shared_ptr<const INodeClass> nodeClass);
  void AddGraph(std::shared_ptr<const IGraph> graph);

  // Room for `count` more graphs, so that a loader that has counted them grows the list once.
  void ReserveGraphs(size_t count) { graphs_.Reserve(count); }

 private:
  // Destroyed in reverse order: semantics, graphs, types, node classes, name.
  std::string name_;
  const IGraphLibrary* parent_;
  ItemCollection<const INodeClass> nodeClasses_{"Node class"};
  ItemCollection<const IType> types_{"Type"};
  ItemCollection<const IGraph> graphs_{"Graph"};
  ItemCollection<const ISemantic> semantics_{"Semantic"};
};

// The library `library` refers to as a GraphLibrary that may grow, or null when it is
// another implementation of IGraphLibrary.
GraphLibrary* asGrowableLibrary(const IGraphLibrary* library);

}  // namespace mat
