#pragma once

// Two small library files for the factory tests, loaded from text, and a rendering of a
// graph through the public interfaces only, so that a graph under construction (which
// cannot be saved before FinishGraph) can be compared before and after an edit.

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "mat/mat.h"

namespace mat::test {

struct LibraryRelease {
  void operator()(const IGraphLibrary* library) const { releaseGraphLibrary(library); }
};
using LibraryPtr = std::unique_ptr<const IGraphLibrary, LibraryRelease>;

struct FactoryRelease {
  void operator()(IGraphFactory* factory) const { releaseGraphFactory(factory); }
};
using FactoryPtr = std::unique_ptr<IGraphFactory, FactoryRelease>;

struct ValueRelease {
  void operator()(const IValue* value) const { releaseValue(value); }
};
using ValuePtr = std::unique_ptr<const IValue, ValueRelease>;

// The base library: types "float", "int" and "color"; node classes
//   add, multiply   (a: float, b: float) -> out: float   identical signatures
//   mix             (a: float, b: float, t: float) -> out: float
//   offset          (a: int, b: float) -> out: float
//   round           (a: float) -> out: int
extern const char* const baseLibraryText;

// The graphs library, under the base library:
//   doubler  (x: float = 1) -> y: float        node 2 "sum": add, a and b from x; y from 2.out
//   material (base: float = 0.25, gain: float) -> result: float from 3.out, raw: float from 2.y
//     node 2 "twice":  doubler, x from base
//     node 3 "gained": multiply, a from 2.y, b from gain and default 2, at 10, 20
//     node 4 "loop":   add, a from itself (4.out), b default 3
//     node 5 "steps":  round, a from gain
extern const char* const graphLibraryText;

namespace uuids {
extern const char* const floatType;
extern const char* const intType;
extern const char* const colorType;
extern const char* const add;
extern const char* const multiply;
extern const char* const mix;
extern const char* const offset;
extern const char* const round;
extern const char* const doubler;
extern const char* const material;
}  // namespace uuids

// Loads `text` under `parent`; fails the test when it does not load.
LibraryPtr loadLibrary(const std::string& text, const IGraphLibrary* parent, const char* name);

// The library file text that saveGraphLibrary writes.
std::string saveLibrary(const IGraphLibrary& library);

// The base and graphs libraries with their classes and types at hand.
struct TestLibraries {
  TestLibraries();
  const IType* Type(const char* uuid) const;
  std::shared_ptr<const INodeClass> Class(const char* uuid) const;
  std::shared_ptr<const IGraph> Graph(const char* uuid) const;

  LibraryPtr base;
  LibraryPtr graphs;
};

// The node at `index` of the factory's graph; fails the test when there is none.
const IGraphNode* nodeAt(IGraphFactory& factory, size_t index);

// A new one-element float value, owned by the caller.
ValuePtr floatValue(float element);

// "n.o" for an input fed by output o of node n; "-" for one that is not connected.
std::string connectionText(const IGraphNode* node, size_t input);

// The JSON text of the default of a node's input, or "-" when it has none.
std::string defaultText(const IGraphNode* node, size_t input);

// The JSON text of a value, or "-" for null.
std::string valueText(const IValue* value);

// Every observable fact of a graph, one line per node: its inputs and outputs (name,
// type name, default), then for each node its index, UUID (with `nodeUUIDs`; never for the
// special nodes, whose UUIDs are new in every copy and every load), name, kind, class name,
// editor position and, per input of its class, connection and default.
std::string describe(IGraphFactory& factory, bool nodeUUIDs = true);
// As above, for a finished graph, with its name first.
std::string describe(const IGraph& graph, bool nodeUUIDs = true);

// The text form of a UUID.
std::string uuidString(const UUID& uuid);

// `text` with every occurrence of `from` replaced by `to`.
std::string replaceAll(std::string text, const std::string& from, const std::string& to);

// Loads the two libraries and makes an empty library "edits" under the graphs library,
// where the tests finish their graphs so that the loaded libraries stay as they were read.
class FactoryTest : public ::testing::Test {
 protected:
  FactoryTest() : edits(createGraphLibrary(libraries.graphs.get(), "edits")) {}

  FactoryPtr NewFactory(const char* name = "new graph") {
    return FactoryPtr(createNewGraphFactory(edits.get(), name, UUID{}));
  }
  FactoryPtr CloneOf(const char* graphUUID) {
    return FactoryPtr(cloneNewGraphFactory(edits.get(), libraries.Graph(graphUUID)));
  }
  const IType* Float() const { return libraries.Type(uuids::floatType); }
  const IType* Int() const { return libraries.Type(uuids::intType); }
  std::shared_ptr<const INodeClass> Class(const char* uuid) const { return libraries.Class(uuid); }

  TestLibraries libraries;
  LibraryPtr edits;
};

}  // namespace mat::test
