#pragma once

/// @file
/// Synthetic library files of a chosen size, for benchmarks, fuzz seeds and tests.
///
/// A synthetic pair is a base library (types, semantics, node classes) and a library of
/// graphs loaded under it. Both texts are canonical: they are what saveGraphLibrary()
/// writes, so saving them after a load gives the same bytes. The same options give the
/// same bytes on every machine: the generator draws from std::mt19937_64, whose sequence
/// the standard fixes, and never from the library's random UUIDs.
///
/// The graph library exercises what real files hold: nodes of base node classes and of
/// earlier graphs (nested several levels deep), connections between outputs and inputs of
/// the same type, connections from the graph's input node, graph outputs fed through
/// "from", defaults on node inputs, names and editor positions. Connections only run from
/// earlier nodes to later ones, so no graph holds a ring.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace mat::bench {

/// What to generate. The defaults are the base library of the load and save benchmarks.
struct SyntheticOptions {
  size_t graphCount = 100;  ///< graphs in the graph library
  uint64_t seed = 1;        ///< the same seed gives the same texts
  size_t typeCount = 100;
  size_t semanticCount = 50;
  size_t nodeClassCount = 500;
  size_t minNodesPerGraph = 20;   ///< nodes of a graph, the two special ones not counted
  size_t maxNodesPerGraph = 200;  ///< inclusive
  /// Levels of graphs nested in one another: a graph of level L (0-based) holds at least
  /// one node of a graph of level L - 1 and at most maxNestedNodesPerGraph nodes of graphs
  /// of lower levels. The first graphs form a chain through every level, so the deepest
  /// nesting is reached at any graphCount larger than maxNestingLevel.
  unsigned maxNestingLevel = 4;
  unsigned maxNestedNodesPerGraph = 2;
};

/// Counts of what the graph library holds, for reports and for sizing other benchmarks.
struct SyntheticStats {
  size_t graphs = 0;
  size_t nodes = 0;                  ///< nodes of every graph, special nodes not counted
  size_t nestedNodes = 0;            ///< nodes whose class is a graph
  size_t connections = 0;            ///< node inputs and graph outputs fed through "from"
  size_t graphInputConnections = 0;  ///< of those, fed from a graph's input node
  size_t nodeInputDefaults = 0;
  /// Per graph in index order: its level, 0 for a graph that nests none.
  std::vector<unsigned> graphLevels;
};

/// A generated pair of library files.
struct SyntheticLibrary {
  std::string baseText;   ///< the base library; load it with a null parent
  std::string graphText;  ///< the graph library; load it under the loaded base library
  SyntheticStats stats;
};

/// Generates the pair for @p options and brings both texts to their canonical form by
/// loading and saving them. Cost: linear in the size of the text (about 55 kB per graph
/// with the default options).
/// @throws std::runtime_error when the library refuses a generated text (a fault of the
///     library or of the generator), naming which of the two.
SyntheticLibrary makeSyntheticLibrary(const SyntheticOptions& options);

}  // namespace mat::bench
