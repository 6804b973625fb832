#pragma once

// Declarations shared by the files of the Python extension module matgraph._matgraph.
//
// Lifetimes. C++ objects inside a library hold plain pointers to their library, to the
// types they use and to their parent libraries, so a Python object that stands for one of
// them must keep all of those alive. The rule that does it: every such Python object holds
// `owner`, the Python Library through which it was reached, and a Library holds its parent
// and every library whose objects the graphs finished into it borrow. Holding one Library
// therefore keeps alive everything an object reached through it can point at. Objects that
// live inside a graph (nodes, the classes of the special nodes) also hold the graph.

#include <pybind11/pybind11.h>

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "mat/mat.h"

namespace matgraph::python {

namespace py = pybind11;

/// @name Text
/// Names and texts cross the C++ boundary as UTF-8 bytes. Bytes that are not UTF-8 become
/// lone surrogates in Python and turn back into the same bytes, so nothing is lost.
/// @{
py::str textToPython(const char* text);
/// @throws TypeError when @p text is not a str.
std::string textFromPython(py::handle text);
/// @}

/// The position that the int @p index names among @p count objects, negative ones
/// counted from the end. @throws IndexError naming @p what when there is none, TypeError
/// when @p index is not an int.
size_t positionFromPython(py::handle index, size_t count, const char* what);

/// @name UUIDs
/// matgraph.UUID is a type of its own rather than a pybind11 class; the type caster at the
/// end of this file lets pybind11 functions take and return mat::UUID all the same.
/// @{
/// A new matgraph.UUID.
py::object makeUUIDObject(const mat::UUID& uuid);
/// The UUID held by a matgraph.UUID, or null for any other object.
const mat::UUID* uuidOf(py::handle object);
/// A UUID or its text. @throws ValueError for a text that is not a UUID, TypeError for
/// anything else.
mat::UUID uuidFromPython(py::handle uuid);
/// @}

/// Tuples by the addresses of node classes (see cachedBareInputs()): an open-addressing
/// table, since a walk over every node looks one up per node.
class InputNameCache {
 public:
  /// @return The names kept for @p nodeClass, or a null handle.
  py::handle Find(const mat::INodeClass* nodeClass) const;
  void Insert(const mat::INodeClass* nodeClass, py::tuple names);

 private:
  size_t SlotOf(const mat::INodeClass* nodeClass) const;

  std::vector<std::pair<const mat::INodeClass*, py::tuple>> slots_;  // a power of two, or empty
  size_t used_ = 0;
};

/// A library, made by load(), loads() or Library(). Releases the C++ library when the last
/// Python reference goes, before it lets go of the parent.
struct Library {
  Library(const mat::IGraphLibrary* library, py::object parent);
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  /// Keeps @p other alive as long as this library: a graph finished here uses its objects.
  /// Neither this library itself nor one already kept is added twice.
  void Borrow(const py::object& other);

  const mat::IGraphLibrary* library;
  py::object parent;  // a Library or None
  std::vector<py::object> borrowed;
  std::optional<mat::LoadDiagnostic> diagnostic;  // set by load() and loads()
  InputNameCache bareInputs;                      // cachedBareInputs()
};

struct Type {
  const mat::IType* type;
  py::object owner;
};

struct Semantic {
  const mat::ISemantic* semantic;
  py::object owner;
};

struct NodeClass {
  std::shared_ptr<const mat::INodeClass> nodeClass;
  // The graph of a special node's class, which points at its graph without owning it.
  std::shared_ptr<const void> keeper;
  py::object owner;
};

struct Graph : NodeClass {
  std::shared_ptr<const mat::IGraph> graph;
  py::object nodes;  // the NodeList, made on first use (a finished graph never changes)
};

/// One input or output of a node class, found again by position on every use.
struct Parameter {
  const mat::IParameter& Get() const;

  std::shared_ptr<const mat::INodeClass> nodeClass;
  std::shared_ptr<const void> keeper;
  bool isInput;
  size_t index;
  py::object owner;
};

/// A node of a finished graph (the Python type Node is written against the C API). Every
/// member is filled when the node object is made, so that reading its inputs is cheap.
struct Node {
  py::object keeper;         // made by keepGraph(): keeps the node's graph alive
  const mat::IGraph* graph;  // null when not known (nested instances of a resolver)
  const mat::IGraphNode* node;
  const mat::INodeClass* nodeClass;  // the node's class, which the node keeps alive
  size_t index;
  py::object owner;
  py::handle bareInputs;  // the class's bareInputsOf(), kept by the owner's cache
};

/// An object that keeps @p graph alive, shared by the Node objects of one graph.
py::object keepGraph(std::shared_ptr<const void> graph);
/// The graph that a keepGraph() object keeps.
const std::shared_ptr<const void>& keptGraph(py::handle keeper);

/// @name Wrapping
/// Each gives None for a null pointer.
/// @{
py::object wrapType(const mat::IType* type, const py::object& owner);
py::object wrapSemantic(const mat::ISemantic* semantic, const py::object& owner);
/// A Graph for a graph, otherwise a NodeClass.
py::object wrapNodeClass(std::shared_ptr<const mat::INodeClass> nodeClass, const py::object& owner,
                         std::shared_ptr<const void> keeper = {});
py::object wrapGraph(std::shared_ptr<const mat::IGraph> graph, const py::object& owner);
/// A Node of a finished graph; @p keeper comes from keepGraph().
py::object wrapNode(const py::object& keeper, const mat::IGraph* graph, const mat::IGraphNode* node,
                    size_t index, const py::object& owner);
/// As above, with the owner's record already at hand.
py::object wrapNode(const py::object& keeper, const mat::IGraph* graph, const mat::IGraphNode* node,
                    size_t index, const py::object& owner, Library& library);
/// The Node record of a Node object, or null for any other object.
const Node* nodeOf(py::handle object);
/// The Semantic record of a Semantic object, or null for any other object.
const Semantic* semanticOf(py::handle object);
/// @}

/// One tuple (name, None, None, None) per input of @p nodeClass: what an input with neither
/// a connection nor a default reads as, and where the others take their names from.
py::tuple bareInputsOf(const mat::INodeClass& nodeClass);
/// bareInputsOf(), made once per class and kept by @p library. Only for the classes of
/// finished graphs' nodes: every such class lives as long as the library, so its address
/// is not reused meanwhile, and its inputs never change.
py::handle cachedBareInputs(Library& library, const mat::INodeClass& nodeClass);
/// One tuple (name, source node, source output, default) per input of @p node's class.
/// @p bare is the bareInputsOf() of the class.
py::tuple nodeInputs(const mat::IGraphNode& node, py::handle bare, const py::object& owner);
/// The tuple of input @p key (an index, negative from the end, or a name).
/// @throws IndexError, KeyError when there is no such input.
py::object nodeInput(const mat::IGraphNode& node, const mat::INodeClass& nodeClass, py::handle key,
                     const py::object& owner);

/// @name Values
/// @{
/// A list of bool, int, float, str, UUID or Semantic (None for a semantic found nowhere);
/// None for a null value.
py::object valueToPython(const mat::IValue* value, const py::object& owner);
/// The element kind named by a file keyword ("bool", "int", "float", "uuid", "string",
/// "semantic"). @throws ValueError for any other text.
mat::ValueType valueTypeFromKeyword(const std::string& keyword);
/// A value made from a Python element or a list or tuple of elements. The kind is @p kind
/// when given, else @p fallback when given (the kind of a type's default), else what the
/// elements are (bool, int, float with ints allowed, str, UUID or Semantic).
/// @param libraries Receives the owners of the Semantic elements.
/// @throws TypeError, OverflowError, ValueError for elements that do not fit.
std::unique_ptr<const mat::IValue> valueFromPython(py::handle elements,
                                                   std::optional<mat::ValueType> kind,
                                                   std::optional<mat::ValueType> fallback,
                                                   std::vector<py::object>* libraries);
/// @}

/// @name Records
/// Small immutable tuples with named fields (struct sequences): fast to make and to read.
/// @{
py::object makeNodeKey(mat::NodeKey key);
/// @p key is a NodeKey, a pair (instance, node), or an int: node of the root graph.
mat::NodeKey nodeKeyFromPython(py::handle key);
py::object makeResolution(py::object source, py::object output, py::object defaultValue);
/// @}

/// A port path given from Python: a PortPath, or a sequence of node indices (which names
/// an output with the empty name).
struct PortPathHandle {
  explicit PortPathHandle(py::handle path);
  ~PortPathHandle();
  PortPathHandle(const PortPathHandle&) = delete;
  PortPathHandle& operator=(const PortPathHandle&) = delete;
  mat::IPortPath* path;
};

/// @name Errors
/// @{
[[noreturn]] void raiseConnectionError(mat::ConnectionResult code, const std::string& message);
[[noreturn]] void raiseLoadError(const mat::LoadDiagnostic& diagnostic);
[[noreturn]] void raiseError(const std::string& message);  // matgraph.Error
/// Sets the Python error for the C++ exception being handled; for code called from Python
/// without pybind11 in between. Call only inside a catch block.
void setPythonError();
py::object makeLoadDiagnostic(const mat::LoadDiagnostic& diagnostic);
/// @}

/// @name Parts of the module, in the order the module defines them
/// @{
void defineErrors(py::module_& module);
void defineUUID(py::module_& module);
void defineRecords(py::module_& module);
void defineLibrary(py::module_& module);
void defineItems(py::module_& module);
void defineNode(py::module_& module);
void defineFactory(py::module_& module);
void defineResolver(py::module_& module);
/// @}

}  // namespace matgraph::python

namespace pybind11::detail {

// mat::UUID as an argument or a result of a pybind11 function: a matgraph.UUID.
template <>
struct type_caster<mat::UUID> {
  PYBIND11_TYPE_CASTER(mat::UUID, const_name("UUID"));

  bool load(handle source, bool) {
    const mat::UUID* uuid = matgraph::python::uuidOf(source);
    if (uuid == nullptr) return false;
    value = *uuid;
    return true;
  }

  static handle cast(const mat::UUID& uuid, return_value_policy, handle) {
    return matgraph::python::makeUUIDObject(uuid).release();
  }
};

}  // namespace pybind11::detail
