#include "core/GraphLibrary.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "mat/Functions.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

// Minimal objects of the four kinds: a UUID and a name, nothing else.
class FakeType final : public IType {
 public:
  FakeType(const UUID& uuid, const char* name) : uuid_(uuid), name_(name) {}
  const UUID& GetUUID() const override { return uuid_; }
  const char* GetName() const override { return name_.c_str(); }
  const IValue* GetDefault() const override { return nullptr; }

 private:
  UUID uuid_;
  std::string name_;
};

class FakeSemantic final : public ISemantic {
 public:
  FakeSemantic(const UUID& uuid, const char* name) : uuid_(uuid), name_(name) {}
  const UUID& GetUUID() const override { return uuid_; }
  const char* GetName() const override { return name_.c_str(); }
  const IType* GetType() const override { return nullptr; }

 private:
  UUID uuid_;
  std::string name_;
};

// The INodeClass side shared by the fake node class and the fake graph: no library, no
// inputs, no outputs.
template <typename Interface>
class FakeClassBase : public Interface {
 public:
  FakeClassBase(const UUID& uuid, const char* name) : uuid_(uuid), name_(name) {}
  const IGraphLibrary* GetLibrary() const override { return nullptr; }
  const UUID& GetUUID() const override { return uuid_; }
  const char* GetName() const override { return name_.c_str(); }
  size_t GetInputCount() const override { return 0; }
  const IParameter* GetInput(size_t) const override { return nullptr; }
  bool FindInput(const char*, size_t*) const override { return false; }
  size_t GetOutputCount() const override { return 0; }
  const IParameter* GetOutput(size_t) const override { return nullptr; }
  bool FindOutput(const char*, size_t*) const override { return false; }

 private:
  UUID uuid_;
  std::string name_;
};

class FakeNodeClass final : public FakeClassBase<INodeClass> {
 public:
  using FakeClassBase::FakeClassBase;
  bool IsGraph() const override { return false; }
  std::shared_ptr<const IGraph> AsGraph() const override { return nullptr; }
};

class FakeGraph final : public FakeClassBase<IGraph> {
 public:
  using FakeClassBase::FakeClassBase;
  bool IsGraph() const override { return true; }
  std::shared_ptr<const IGraph> AsGraph() const override {
    return std::static_pointer_cast<const IGraph>(shared_from_this());
  }
  size_t GetNodeCount() const override { return 2; }
  const IGraphNode* GetNode(size_t) const override { return nullptr; }
  size_t GetInputNodeIndex() const override { return 0; }
  size_t GetOutputNodeIndex() const override { return 1; }
  const IParameter* GetParameterFromPath(const IPortPath&, const IGraphNode**) const override {
    return nullptr;
  }
};

// One row per kind of library object, so that every rule of registration and lookup is
// checked for all four. Objects are compared by the address of their interface.
struct Kind {
  const char* name;
  std::function<const void*(GraphLibrary&, const UUID&, const char*)> add;
  std::function<size_t(const IGraphLibrary&)> count;
  std::function<const void*(const IGraphLibrary&, size_t)> at;
  std::function<const void*(const IGraphLibrary&, const UUID&, bool)> find;
  // Empty for types, which are never looked up by name.
  std::function<const void*(const IGraphLibrary&, const char*)> findByName;
  const char* outOfRangeMessage;  // of at(7) with a count of 3
};

const std::vector<Kind>& kinds() {
  static const std::vector<Kind> all = {
      {"type",
       [](GraphLibrary& library, const UUID& uuid, const char* name) -> const void* {
         auto type = std::make_shared<FakeType>(uuid, name);
         library.AddType(type);
         return static_cast<const IType*>(type.get());
       },
       [](const IGraphLibrary& library) { return library.GetTypeCount(); },
       [](const IGraphLibrary& library, size_t index) -> const void* {
         return library.GetType(index);
       },
       [](const IGraphLibrary& library, const UUID& uuid, bool parents) -> const void* {
         return library.FindType(uuid, parents);
       },
       nullptr, "Index out of Range: Type index 7 out of range (count 3)"},
      {"semantic",
       [](GraphLibrary& library, const UUID& uuid, const char* name) -> const void* {
         auto semantic = std::make_shared<FakeSemantic>(uuid, name);
         library.AddSemantic(semantic);
         return static_cast<const ISemantic*>(semantic.get());
       },
       [](const IGraphLibrary& library) { return library.GetSemanticCount(); },
       [](const IGraphLibrary& library, size_t index) -> const void* {
         return library.GetSemantic(index);
       },
       [](const IGraphLibrary& library, const UUID& uuid, bool parents) -> const void* {
         return library.FindSemantic(uuid, parents);
       },
       [](const IGraphLibrary& library, const char* name) -> const void* {
         return library.FindSemanticByName(name);
       },
       "Index out of Range: Semantic index 7 out of range (count 3)"},
      {"node class",
       [](GraphLibrary& library, const UUID& uuid, const char* name) -> const void* {
         auto nodeClass = std::make_shared<FakeNodeClass>(uuid, name);
         library.AddNodeClass(nodeClass);
         return static_cast<const INodeClass*>(nodeClass.get());
       },
       [](const IGraphLibrary& library) { return library.GetNodeClassCount(); },
       [](const IGraphLibrary& library, size_t index) -> const void* {
         return library.GetNodeClass(index).get();
       },
       [](const IGraphLibrary& library, const UUID& uuid, bool parents) -> const void* {
         return library.FindNodeClass(uuid, parents).get();
       },
       [](const IGraphLibrary& library, const char* name) -> const void* {
         return library.FindNodeClassByName(name).get();
       },
       "Index out of Range: Node class index 7 out of range (count 3)"},
      {"graph",
       [](GraphLibrary& library, const UUID& uuid, const char* name) -> const void* {
         auto graph = std::make_shared<FakeGraph>(uuid, name);
         library.AddGraph(graph);
         return static_cast<const IGraph*>(graph.get());
       },
       [](const IGraphLibrary& library) { return library.GetGraphCount(); },
       [](const IGraphLibrary& library, size_t index) -> const void* {
         return library.GetGraph(index).get();
       },
       [](const IGraphLibrary& library, const UUID& uuid, bool parents) -> const void* {
         return library.FindGraph(uuid, parents).get();
       },
       [](const IGraphLibrary& library, const char* name) -> const void* {
         return library.FindGraphByName(name).get();
       },
       "Index out of Range: Graph index 7 out of range (count 3)"},
  };
  return all;
}

struct LibraryReleaser {
  void operator()(const IGraphLibrary* library) const { releaseGraphLibrary(library); }
};
using LibraryHandle = std::unique_ptr<const IGraphLibrary, LibraryReleaser>;

TEST(GraphLibrary, NewLibraryIsEmptyAndFindsNothing) {
  LibraryHandle parent(createGraphLibrary(nullptr, nullptr));
  EXPECT_STREQ(parent->GetName(), "");
  std::string name = "child";
  LibraryHandle child(createGraphLibrary(parent.get(), name.c_str()));
  name = "changed";
  EXPECT_STREQ(child->GetName(), "child") << "the name is copied";

  const UUID uuid = generateUUID();
  for (const Kind& kind : kinds()) {
    SCOPED_TRACE(kind.name);
    EXPECT_EQ(kind.count(*child), 0u);
    EXPECT_EQ(kind.find(*child, uuid, true), nullptr);
    EXPECT_EQ(kind.find(*child, uuid, false), nullptr);
    EXPECT_EQ(kind.find(*child, UUID{}, true), nullptr);
    if (kind.findByName) {
      EXPECT_EQ(kind.findByName(*child, "child"), nullptr);
    }
  }
  EXPECT_EQ(child->FindAnyNodeClass(uuid, true), nullptr);
  EXPECT_EQ(child->FindAnyNodeClass(UUID{}, false), nullptr);
}

TEST(GraphLibrary, LookupsByUUIDClimbTheParentChainNearestFirst) {
  for (const Kind& kind : kinds()) {
    SCOPED_TRACE(kind.name);
    GraphLibrary root(nullptr, "root");
    GraphLibrary middle(&root, "middle");
    GraphLibrary youngest(&middle, "youngest");
    const UUID uuid = generateUUID();
    const void* inRoot = kind.add(root, uuid, "shared name");

    EXPECT_EQ(kind.find(youngest, uuid, true), inRoot);
    EXPECT_EQ(kind.find(youngest, uuid, false), nullptr);
    EXPECT_EQ(kind.find(middle, uuid, false), nullptr);
    if (kind.findByName) {
      EXPECT_EQ(kind.findByName(youngest, "shared name"), nullptr) << "names never climb";
    }

    const void* inMiddle = kind.add(middle, uuid, "shared name");
    EXPECT_EQ(kind.find(youngest, uuid, true), inMiddle);
    EXPECT_EQ(kind.find(root, uuid, true), inRoot);
    EXPECT_EQ(kind.find(youngest, generateUUID(), true), nullptr);
  }
}

TEST(GraphLibrary, LaterObjectTakesOverItsUUIDAndNameWhileBothStayCounted) {
  for (const Kind& kind : kinds()) {
    SCOPED_TRACE(kind.name);
    GraphLibrary library(nullptr, "library");
    const UUID shared = generateUUID();
    const UUID other = generateUUID();
    const UUID third = generateUUID();
    const void* first = kind.add(library, shared, "name");
    const void* second = kind.add(library, shared, "name");
    const void* unrelated = kind.add(library, other, "other");

    ASSERT_EQ(kind.count(library), 3u);
    EXPECT_EQ(kind.at(library, 0), first);
    EXPECT_EQ(kind.at(library, 1), second);
    EXPECT_EQ(kind.at(library, 2), unrelated);
    EXPECT_EQ(kind.find(library, shared, false), second);
    EXPECT_EQ(kind.find(library, other, false), unrelated);
    if (!kind.findByName) continue;
    EXPECT_EQ(kind.findByName(library, "name"), second);
    EXPECT_EQ(kind.findByName(library, "other"), unrelated);

    // A new UUID under a known name takes the name only.
    const void* renamed = kind.add(library, third, "name");
    EXPECT_EQ(kind.findByName(library, "name"), renamed);
    EXPECT_EQ(kind.find(library, shared, false), second);
    EXPECT_EQ(kind.find(library, third, false), renamed);
  }
}

TEST(GraphLibrary, NamesAreMatchedExactlyAndEmptyOrNullNamesFindNothing) {
  for (const Kind& kind : kinds()) {
    if (!kind.findByName) continue;
    SCOPED_TRACE(kind.name);
    GraphLibrary library(nullptr, "library");
    kind.add(library, generateUUID(), "");
    const void* color = kind.add(library, generateUUID(), "Color");

    EXPECT_EQ(kind.findByName(library, ""), nullptr);
    EXPECT_EQ(kind.findByName(library, nullptr), nullptr);
    EXPECT_EQ(kind.findByName(library, "color"), nullptr);
    EXPECT_EQ(kind.findByName(library, "Colo"), nullptr);
    EXPECT_EQ(kind.findByName(library, "Color "), nullptr);
    EXPECT_EQ(kind.findByName(library, "Color"), color);
  }
}

TEST(GraphLibrary, IndexAtOrBeyondTheCountThrowsNamingKindIndexAndCount) {
  for (const Kind& kind : kinds()) {
    SCOPED_TRACE(kind.name);
    GraphLibrary library(nullptr, "library");
    for (int i = 0; i < 3; ++i) kind.add(library, generateUUID(), "");

    EXPECT_NE(kind.at(library, 2), nullptr);
    EXPECT_THROW_MSG(kind.at(library, 7), InvalidDataAccess, kind.outOfRangeMessage);
    EXPECT_THROW(kind.at(library, 3), InvalidDataAccess);
    EXPECT_THROW(kind.at(library, SIZE_MAX), InvalidDataAccess);
  }
  GraphLibrary empty(nullptr, nullptr);
  EXPECT_THROW_MSG(empty.GetNodeClass(0), InvalidDataAccess,
                   "Index out of Range: Node class index 0 out of range (count 0)");
}

TEST(GraphLibrary, FindAnyNodeClassPrefersGraphsThenOwnLibraryThenParents) {
  GraphLibrary root(nullptr, "root");
  GraphLibrary parent(&root, "parent");
  GraphLibrary child(&parent, "child");

  const UUID both = generateUUID();
  auto graph = std::make_shared<FakeGraph>(both, "graph");
  auto nodeClass = std::make_shared<FakeNodeClass>(both, "node class");
  child.AddNodeClass(nodeClass);
  child.AddGraph(graph);
  EXPECT_EQ(child.FindAnyNodeClass(both, false).get(), graph.get());
  EXPECT_EQ(child.FindNodeClass(both, false).get(), nodeClass.get());
  EXPECT_EQ(child.FindGraph(both, false).get(), graph.get());

  // A node class of the library itself wins over a graph of its parent.
  const UUID shadowed = generateUUID();
  auto parentGraph = std::make_shared<FakeGraph>(shadowed, "parent graph");
  auto childClass = std::make_shared<FakeNodeClass>(shadowed, "child class");
  parent.AddGraph(parentGraph);
  child.AddNodeClass(childClass);
  EXPECT_EQ(child.FindAnyNodeClass(shadowed, true).get(), childClass.get());
  EXPECT_EQ(parent.FindAnyNodeClass(shadowed, true).get(), parentGraph.get());

  // Two levels up, as a node class and as a graph.
  const UUID rootClassUUID = generateUUID();
  const UUID rootGraphUUID = generateUUID();
  auto rootClass = std::make_shared<FakeNodeClass>(rootClassUUID, "");
  auto rootGraph = std::make_shared<FakeGraph>(rootGraphUUID, "");
  root.AddNodeClass(rootClass);
  root.AddGraph(rootGraph);
  EXPECT_EQ(child.FindAnyNodeClass(rootClassUUID, true).get(), rootClass.get());
  EXPECT_EQ(child.FindAnyNodeClass(rootGraphUUID, true).get(), rootGraph.get());
  EXPECT_EQ(child.FindAnyNodeClass(rootClassUUID, false), nullptr);
  EXPECT_EQ(child.FindAnyNodeClass(rootGraphUUID, false), nullptr);
  EXPECT_EQ(child.FindAnyNodeClass(generateUUID(), true), nullptr);
}

TEST(GraphLibrary, GraphsOutliveTheirLibraryWhileHeldAndTypesDoNot) {
  LibraryHandle library(createGraphLibrary(nullptr, "library"));
  GraphLibrary* growable = asGrowableLibrary(library.get());
  ASSERT_EQ(growable, library.get());

  const UUID graphUUID = generateUUID();
  std::weak_ptr<FakeType> type;
  {
    auto newType = std::make_shared<FakeType>(generateUUID(), "");
    type = newType;
    growable->AddType(std::move(newType));
    growable->AddGraph(std::make_shared<FakeGraph>(graphUUID, "kept"));
  }
  std::shared_ptr<const IGraph> graph = library->GetGraph(0);
  std::shared_ptr<const INodeClass> asClass = library->FindAnyNodeClass(graphUUID, false);
  ASSERT_FALSE(type.expired());

  library.reset();
  EXPECT_TRUE(type.expired()) << "a type dies with its library";
  ASSERT_NE(graph, nullptr);
  EXPECT_EQ(graph->GetUUID(), graphUUID);
  EXPECT_STREQ(graph->GetName(), "kept");
  EXPECT_EQ(graph->AsGraph(), graph);
  EXPECT_EQ(asClass.get(), graph.get());

  releaseGraphLibrary(nullptr);
  EXPECT_EQ(asGrowableLibrary(nullptr), nullptr);
}

}  // namespace
}  // namespace mat
