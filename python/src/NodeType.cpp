// matgraph.Node, a RecordType: a walk over a large library makes one per node of every
// graph. Making one is an allocation and a few reference counts (none of them atomic: the
// nodes of one graph share one keepGraph() object).
#include <functional>
#include <memory>
#include <typeinfo>

#include "Bindings.h"
#include "RecordType.h"
#include "graph/GraphNode.h"

namespace matgraph::python {

namespace {

using NodeType = RecordType<Node>;

const Node& record(PyObject* self) { return NodeType::Get(self); }

PyObject* getUUID(PyObject* self, void*) {
  return guarded([&] { return py::cast(record(self).node->GetUUID()); });
}

PyObject* getName(PyObject* self, void*) {
  return guarded([&] { return py::object(textToPython(record(self).node->GetName())); });
}

PyObject* getKind(PyObject* self, void*) {
  return guarded([&] { return py::cast(record(self).node->GetNodeKind()); });
}

PyObject* getIndex(PyObject* self, void*) { return PyLong_FromSize_t(record(self).index); }

PyObject* getNodeClass(PyObject* self, void*) {
  return guarded([&] {
    const Node& node = record(self);
    return wrapNodeClass(node.node->GetNodeClass(), node.owner, keptGraph(node.keeper));
  });
}

PyObject* getGraph(PyObject* self, void*) {
  return guarded([&] {
    const Node& node = record(self);
    return node.graph ? wrapGraph(node.graph->AsGraph(), node.owner) : py::none();
  });
}

PyObject* getEditorPosition(PyObject* self, void*) {
  return guarded([&] {
    float x = 0;
    float y = 0;
    record(self).node->GetEditorPosition(&x, &y);
    return py::object(py::make_tuple(x, y));
  });
}

PyObject* getInputs(PyObject* self, void*) {
  return guarded([&] {
    const Node& node = record(self);
    return py::object(nodeInputs(*node.node, node.bareInputs, node.owner));
  });
}

PyObject* input(PyObject* self, PyObject* key) {
  return guarded([&] {
    const Node& node = record(self);
    return nodeInput(*node.node, *node.nodeClass, key, node.owner);
  });
}

PyObject* compare(PyObject* self, PyObject* other, int operation) {
  if (NodeType::Of(other) == nullptr || (operation != Py_EQ && operation != Py_NE)) {
    Py_RETURN_NOTIMPLEMENTED;
  }
  const bool same = record(self).node == record(other).node;
  return PyBool_FromLong(operation == Py_EQ ? same : !same);
}

Py_hash_t hash(PyObject* self) {
  const Py_hash_t value = static_cast<Py_hash_t>(std::hash<const void*>()(record(self).node));
  return value == -1 ? -2 : value;
}

PyObject* represent(PyObject* self) {
  return guarded([&] {
    const Node& node = record(self);
    return py::object(py::str("<matgraph.Node {} {}: {}>")
                          .format(node.index, py::repr(textToPython(node.node->GetName())),
                                  py::repr(textToPython(node.nodeClass->GetName()))));
  });
}

PyGetSetDef nodeProperties[] = {
    {"uuid", getUUID, nullptr, "The node's UUID.", nullptr},
    {"name", getName, nullptr, "The node's name.", nullptr},
    {"kind", getKind, nullptr, "What the node is (a NodeKind).", nullptr},
    {"index", getIndex, nullptr, "The node's position in its graph.", nullptr},
    {"node_class", getNodeClass, nullptr,
     "The NodeClass, or the Graph for a nested-graph node. The special nodes' classes present "
     "the graph's inputs (outputs) as both inputs and outputs.",
     nullptr},
    {"graph", getGraph, nullptr,
     "The Graph that holds the node; None for a node that a Resolver reached inside a nested "
     "graph instance.",
     nullptr},
    {"editor_position", getEditorPosition, nullptr, "(x, y)", nullptr},
    {"inputs", getInputs, nullptr,
     "One tuple (name, source, output, default) per input of the node's class: source and "
     "output are the indices of the node and output that feed the input (None when nothing "
     "does), default the node's own default (a list) or None.",
     nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyMethodDef nodeMethods[] = {
    {"input", input, METH_O,
     "input(key)\n--\n\nThe (name, source, output, default) of one input, by position or by name. "
     "Raises IndexError or KeyError."},
    {nullptr, nullptr, 0, nullptr},
};

PyType_Slot nodeSlots[] = {
    {Py_tp_dealloc, reinterpret_cast<void*>(NodeType::Deallocate)},
    {Py_tp_getset, nodeProperties},
    {Py_tp_methods, nodeMethods},
    {Py_tp_richcompare, reinterpret_cast<void*>(compare)},
    {Py_tp_hash, reinterpret_cast<void*>(hash)},
    {Py_tp_repr, reinterpret_cast<void*>(represent)},
    {Py_tp_doc, const_cast<char*>("A node of a graph: a class, one record per input of that class "
                                  "(a connection and a default), a name, a UUID and an editor "
                                  "position. Made by the library, not by calling Node.")},
    {0, nullptr},
};

PyType_Spec nodeSpec = {"matgraph.Node", sizeof(NodeType::Object), 0, madeByTheModuleFlags,
                        nodeSlots};

}  // namespace

py::object keepGraph(std::shared_ptr<const void> graph) {
  return py::capsule(new std::shared_ptr<const void>(std::move(graph)),
                     [](void* kept) { delete static_cast<std::shared_ptr<const void>*>(kept); });
}

const std::shared_ptr<const void>& keptGraph(py::handle keeper) {
  return *static_cast<const std::shared_ptr<const void>*>(
      py::reinterpret_borrow<py::capsule>(keeper).get_pointer());
}

py::object wrapNode(const py::object& keeper, const mat::IGraph* graph, const mat::IGraphNode* node,
                    size_t index, const py::object& owner, Library& library) {
  if (node == nullptr) return py::none();
  // The node holds its class, and the graph holds the node.
  const mat::INodeClass* nodeClass = typeid(*node) == typeid(mat::GraphNode)
                                         ? static_cast<const mat::GraphNode*>(node)->NodeClass()
                                         : node->GetNodeClass().get();
  py::handle bareInputs = cachedBareInputs(library, *nodeClass);
  return NodeType::Make(keeper, graph, node, nodeClass, index, owner, bareInputs);
}

py::object wrapNode(const py::object& keeper, const mat::IGraph* graph, const mat::IGraphNode* node,
                    size_t index, const py::object& owner) {
  return wrapNode(keeper, graph, node, index, owner, owner.cast<Library&>());
}

const Node* nodeOf(py::handle object) { return NodeType::Of(object); }

void defineNode(py::module_& module) {
  py::enum_<mat::NodeKind>(module, "NodeKind", "What a node of a graph is.")
      .value("GraphInputNode", mat::GraphInputNode, "the graph's input node, index 0")
      .value("GraphOutputNode", mat::GraphOutputNode, "the graph's output node, index 1")
      .value("NestedGraphNode", mat::NestedGraphNode, "a node whose class is a graph")
      .value("ClassNode", mat::ClassNode, "a node whose class is an ordinary node class");

  NodeType::Define(module, "Node", nodeSpec);
}

}  // namespace matgraph::python
