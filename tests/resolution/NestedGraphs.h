#pragma once

// Graphs nested three levels deep for the resolver tests, loaded from a library file:
//
//   outer (root):  0 inputs [amount, tint]    1 outputs [color <- 4.out, amount <- 2.amount]
//                  2 middleA: middle   tint <- input tint, amount <- 5.out
//                  3 middleB: middle   tint <- 2.passthrough, amount unconnected
//                  4 mix               a <- 3.result, b <- 2.passthrough, amount unconnected
//                  5 constant          value unconnected
//                  6 bare              x unconnected
//                  7 bare              x <- 6.y
//   middle:        0 inputs [tint, amount = 0.375]
//                  1 outputs [result <- 2.out, passthrough <- input tint, amount <- 3.amount]
//                  2 innerA: inner     tint <- input tint, amount <- input amount
//                  3 innerB: inner     tint <- 2.out, amount unconnected, default 0.75
//   inner:         0 inputs [tint, amount = 0.25]
//                  1 outputs [out <- 2.out, amount <- input amount]
//                  2 mix               a <- input tint, b unconnected, amount <- input amount
//                  3 constant          value unconnected, default 2
//
// inner's input node also holds defaults for its inputs, as a graph factory stores them:
// tint 0.625, amount 0.875. middle's input node holds none, as in any loaded graph.
//
// The base library: types float (default 0.125), color (default [0.5, 0.5, 0.5]) and
// bare (no default); node classes mix (a: color; b: color = [1, 1, 1]; amount: float =
// 0.5 -> out: color), constant (value: float -> out: float) and bare (x: bare -> y: bare).

#include <memory>
#include <ostream>
#include <string>

#include "mat/Functions.h"
#include "mat/IGraph.h"
#include "mat/IGraphLibrary.h"
#include "mat/IGraphResolver.h"
#include "mat/IValue.h"

namespace mat {

// Lets test failures print keys as the resolver's messages do.
inline std::ostream& operator<<(std::ostream& out, const NodeKey& key) {
  return out << "{" << key.instance << ", " << key.node << "}";
}

}  // namespace mat

namespace mat::test::resolver {

struct LibraryReleaser {
  void operator()(const IGraphLibrary* library) const { releaseGraphLibrary(library); }
};
using OwnedLibrary = std::unique_ptr<const IGraphLibrary, LibraryReleaser>;

struct ResolverReleaser {
  void operator()(const IGraphResolver* resolver) const { releaseGraphResolver(resolver); }
};
using OwnedResolver = std::unique_ptr<IGraphResolver, ResolverReleaser>;

struct ValueReleaser {
  void operator()(const IValue* value) const { releaseValue(value); }
};
using OwnedValue = std::unique_ptr<const IValue, ValueReleaser>;

OwnedValue floatValue(float value);

// Replaces each "$" followed by hexadecimal digits by the UUID that ends in those digits
// ("$c1" is 00000000-0000-0000-0000-0000000000c1), so that test files stay readable.
std::string withUUIDs(const std::string& text);

// loadGraphLibrary() of `text`; fails the test when it refuses it.
OwnedLibrary loadLibraryText(const std::string& text, const IGraphLibrary* parent);

// The base library; its types are $a1 float, $a2 color, $a3 bare, its node classes
// $c1 mix, $c2 constant, $c3 bare.
const IGraphLibrary& baseLibrary();

struct NestedGraphs {
  OwnedLibrary library;  // under baseLibrary()
  std::shared_ptr<const IGraph> outer;
  std::shared_ptr<const IGraph> middle;
  std::shared_ptr<const IGraph> inner;
  // The default stored on inner's input node for its input "amount".
  const IValue* innerAmountRecord = nullptr;
};

NestedGraphs makeNestedGraphs();

}  // namespace mat::test::resolver
