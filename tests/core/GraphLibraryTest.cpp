#include "core/GraphLibrary.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "mat/Functions.h"
#include "support/LibraryText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

// Minimal objects of the four kinds: a UUID and a name, nothing else.
template <typename Interface>
class Named : public Interface {
 public:
  Named(const UUID& uuid, const char* name) : uuid_(uuid), name_(name) {}
  const UUID& GetUUID() const override { return uuid_; }
  const char* GetName() const override { return name_.c_str(); }

 private:
  UUID uuid_;
  std::string name_;
};

class FakeType final : public Named<IType> {
 public:
  using Named::Named;
  const IValue* GetDefault() const override { return nullptr; }
};

class FakeSemantic final : public Named<ISemantic> {
 public:
  using Named::Named;
  const IType* GetType() const override { return nullptr; }
};

// The INodeClass side shared by the fake node class and the fake graph: no library, no
// inputs, no outputs.
template <typename Interface>
class FakeClassBase : public Named<Interface> {
 public:
  using Named<Interface>::Named;
  const IGraphLibrary* GetLibrary() const override { return nullptr; }
  size_t GetInputCount() const override { return 0; }
  const IParameter* GetInput(size_t) const override { return nullptr; }
  bool FindInput(const char*, size_t*) const override { return false; }
  size_t GetOutputCount() const override { return 0; }
  const IParameter* GetOutput(size_t) const override { return nullptr; }
  bool FindOutput(const char*, size_t*) const override { return false; }
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

// The address of what an accessor returns, as a raw or a shared pointer.
template <typename Object>
const void* address(const Object* object) {
  return object;
}
template <typename Object>
const void* address(const std::shared_ptr<Object>& object) {
  return object.get();
}

template <auto Accessor, typename... Arguments>
const void* call(const IGraphLibrary& library, Arguments... arguments) {
  return address((library.*Accessor)(arguments...));
}

template <typename Fake, typename Interface, auto Add>
const void* add(GraphLibrary& library, const UUID& uuid, const char* name) {
  auto object = std::make_shared<Fake>(uuid, name);
  (library.*Add)(object);
  return static_cast<const Interface*>(object.get());
}

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
  using Library = IGraphLibrary;
  static const std::vector<Kind> all = {
      {"type", add<FakeType, IType, &GraphLibrary::AddType>, &Library::GetTypeCount,
       call<&Library::GetType, size_t>, call<&Library::FindType, const UUID&, bool>, nullptr,
       "Index out of Range: Type index 7 out of range (count 3)"},
      {"semantic", add<FakeSemantic, ISemantic, &GraphLibrary::AddSemantic>,
       &Library::GetSemanticCount, call<&Library::GetSemantic, size_t>,
       call<&Library::FindSemantic, const UUID&, bool>,
       call<&Library::FindSemanticByName, const char*>,
       "Index out of Range: Semantic index 7 out of range (count 3)"},
      {"node class", add<FakeNodeClass, INodeClass, &GraphLibrary::AddNodeClass>,
       &Library::GetNodeClassCount, call<&Library::GetNodeClass, size_t>,
       call<&Library::FindNodeClass, const UUID&, bool>,
       call<&Library::FindNodeClassByName, const char*>,
       "Index out of Range: Node class index 7 out of range (count 3)"},
      {"graph", add<FakeGraph, IGraph, &GraphLibrary::AddGraph>, &Library::GetGraphCount,
       call<&Library::GetGraph, size_t>, call<&Library::FindGraph, const UUID&, bool>,
       call<&Library::FindGraphByName, const char*>,
       "Index out of Range: Graph index 7 out of range (count 3)"},
  };
  return all;
}

using test::files::LibraryHandle;

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
