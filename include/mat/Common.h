#pragma once

/// @file
/// Small value types shared by every interface: identifiers, element kinds, node kinds,
/// the result codes of editing and the keys of resolvers.

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace mat {

/// A 128-bit identifier, held in text order: bytes[i] is the i-th pair of hexadecimal
/// digits of its text form (dashes skipped). All zero is the nil UUID, which stands for
/// "none". Value-initialise (`UUID id{};`) to get the nil UUID.
struct UUID {
  uint8_t bytes[16];  ///< the identifier, first byte first as in the text form
};

/// Byte-wise equality.
inline bool operator==(const UUID& a, const UUID& b) {
  return std::memcmp(a.bytes, b.bytes, sizeof a.bytes) == 0;
}
/// Byte-wise inequality.
inline bool operator!=(const UUID& a, const UUID& b) { return !(a == b); }
/// The order of every UUID index of the library: bytes compared as unsigned values from
/// the first. It is the order of the lower-case text forms.
inline bool operator<(const UUID& a, const UUID& b) {
  return std::memcmp(a.bytes, b.bytes, sizeof a.bytes) < 0;
}

/// Element kind of a value; the numbers are part of the interface.
enum class ValueType : int32_t {
  None = 0,      ///< no elements: holders report such a value as a null pointer
  Bool = 1,      ///< bool elements ("bool" in files)
  Int = 2,       ///< 32-bit signed integers ("int")
  Float = 3,     ///< 32-bit IEEE floats ("float")
  UUID = 4,      ///< identifiers ("uuid")
  String = 5,    ///< NUL-terminated texts owned by the value ("string")
  Semantic = 6,  ///< pointers to semantics owned by a library ("semantic")
};

/// What a node of a graph is.
enum NodeKind : uint32_t {
  GraphInputNode = 0,   ///< the graph's input node, always at index 0
  GraphOutputNode = 1,  ///< the graph's output node, always at index 1
  NestedGraphNode = 2,  ///< a node whose class is a graph
  ClassNode = 3,        ///< a node whose class is an ordinary node class
};

/// Result of connecting an input and of the fallible operations of a graph factory.
/// The value 3 is not used.
enum ConnectionResult : int32_t {
  ConnectionOk = 0,            ///< done
  ConnectionNotFound = 1,      ///< no input, output, node or index of that name or number
  ConnectionNameInUse = 2,     ///< the name is already taken
  ConnectionTypeMismatch = 4,  ///< types or signatures differ
  ConnectionInvalidNodes = 5,  ///< a node argument is null, foreign, or source and target agree
};

/// Names a node of one graph instance inside a resolver. Meaningful only to the
/// resolver that made it.
struct NodeKey {
  size_t instance;  ///< graph instance; 0 is the resolver's own graph
  size_t node;      ///< index of the node in that instance's graph
};

/// True when both name the same node of the same instance.
inline bool operator==(const NodeKey& a, const NodeKey& b) {
  return a.instance == b.instance && a.node == b.node;
}
/// True when the keys differ in their instance or their node.
inline bool operator!=(const NodeKey& a, const NodeKey& b) { return !(a == b); }

}  // namespace mat
