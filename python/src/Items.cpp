// The objects of a library as Python sees them: Type, Semantic, NodeClass, Graph,
// Parameter and Node, with the sequences of parameters and nodes.
#include <pybind11/stl.h>

#include <algorithm>
#include <functional>

#include "Bindings.h"
#include "RecordType.h"

namespace matgraph::python {

const mat::IParameter& Parameter::Get() const {
  return *(isInput ? nodeClass->GetInput(index) : nodeClass->GetOutput(index));
}

py::object wrapType(const mat::IType* type, const py::object& owner) {
  if (type == nullptr) return py::none();
  return py::cast(Type{type, owner});
}

namespace {

// matgraph.Semantic, a RecordType: defaults of semantic values make one per element.
using SemanticType = RecordType<Semantic>;

const Semantic& semanticRecord(PyObject* self) { return SemanticType::Get(self); }

PyObject* semanticUUID(PyObject* self, void*) {
  return guarded([&] { return py::cast(semanticRecord(self).semantic->GetUUID()); });
}

PyObject* semanticName(PyObject* self, void*) {
  return guarded(
      [&] { return py::object(textToPython(semanticRecord(self).semantic->GetName())); });
}

PyObject* semanticType(PyObject* self, void*) {
  return guarded([&] {
    const Semantic& semantic = semanticRecord(self);
    return wrapType(semantic.semantic->GetType(), semantic.owner);
  });
}

PyObject* compareSemantics(PyObject* self, PyObject* other, int operation) {
  const Semantic* that = SemanticType::Of(other);
  if (that == nullptr || (operation != Py_EQ && operation != Py_NE)) Py_RETURN_NOTIMPLEMENTED;
  const bool same = semanticRecord(self).semantic == that->semantic;
  return PyBool_FromLong(operation == Py_EQ ? same : !same);
}

Py_hash_t hashSemantic(PyObject* self) {
  const auto value =
      static_cast<Py_hash_t>(std::hash<const void*>()(semanticRecord(self).semantic));
  return value == -1 ? -2 : value;
}

PyObject* representSemantic(PyObject* self) {
  return guarded([&] {
    const mat::ISemantic& semantic = *semanticRecord(self).semantic;
    return py::object(py::str("<matgraph.Semantic {} {}>")
                          .format(py::repr(textToPython(semantic.GetName())),
                                  py::str(py::cast(semantic.GetUUID()))));
  });
}

PyGetSetDef semanticProperties[] = {
    {"uuid", semanticUUID, nullptr, "The semantic's UUID.", nullptr},
    {"name", semanticName, nullptr, "The semantic's name.", nullptr},
    {"type", semanticType, nullptr,
     "The type it gives a meaning to, or None when the file named none that was found.", nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyType_Slot semanticSlots[] = {
    {Py_tp_dealloc, reinterpret_cast<void*>(SemanticType::Deallocate)},
    {Py_tp_getset, semanticProperties},
    {Py_tp_richcompare, reinterpret_cast<void*>(compareSemantics)},
    {Py_tp_hash, reinterpret_cast<void*>(hashSemantic)},
    {Py_tp_repr, reinterpret_cast<void*>(representSemantic)},
    {Py_tp_doc, const_cast<char*>("A named meaning given to a type.")},
    {0, nullptr},
};

PyType_Spec semanticSpec = {"matgraph.Semantic", sizeof(SemanticType::Object), 0,
                            madeByTheModuleFlags, semanticSlots};

}  // namespace

py::object wrapSemantic(const mat::ISemantic* semantic, const py::object& owner) {
  if (semantic == nullptr) return py::none();
  return SemanticType::Make(semantic, owner);
}

const Semantic* semanticOf(py::handle object) { return SemanticType::Of(object); }

py::object wrapNodeClass(std::shared_ptr<const mat::INodeClass> nodeClass, const py::object& owner,
                         std::shared_ptr<const void> keeper) {
  if (!nodeClass) return py::none();
  if (nodeClass->IsGraph()) return wrapGraph(nodeClass->AsGraph(), owner);
  return py::cast(NodeClass{std::move(nodeClass), std::move(keeper), owner});
}

py::object wrapGraph(std::shared_ptr<const mat::IGraph> graph, const py::object& owner) {
  if (!graph) return py::none();
  Graph wrapper;
  wrapper.nodeClass = graph;
  wrapper.graph = std::move(graph);
  wrapper.owner = owner;
  return py::cast(std::move(wrapper));
}

namespace {

// The Library object that holds @p library: @p start, its parents or the libraries they
// borrow from; None when none does.
py::object findLibraryObject(const py::object& start, const mat::IGraphLibrary* library) {
  std::vector<py::object> pending{start};
  std::vector<const void*> seen;
  while (!pending.empty()) {
    py::object candidate = pending.back();
    pending.pop_back();
    if (candidate.is_none()) continue;
    const Library& wrapper = candidate.cast<const Library&>();
    if (wrapper.library == library) return candidate;
    if (std::find(seen.begin(), seen.end(), wrapper.library) != seen.end()) continue;
    seen.push_back(wrapper.library);
    pending.push_back(wrapper.parent);
    pending.insert(pending.end(), wrapper.borrowed.begin(), wrapper.borrowed.end());
  }
  return py::none();
}

py::str quoted(const char* name) { return py::repr(textToPython(name)); }

// The inputs or the outputs of a node class, found again by position on every use.
struct ParameterList {
  std::shared_ptr<const mat::INodeClass> nodeClass;
  std::shared_ptr<const void> keeper;
  bool isInput;
  py::object owner;

  size_t Count() const {
    return isInput ? nodeClass->GetInputCount() : nodeClass->GetOutputCount();
  }
  py::object At(size_t index) const {
    return py::cast(Parameter{nodeClass, keeper, isInput, index, owner});
  }
  bool Find(const std::string& name, size_t* index) const {
    return isInput ? nodeClass->FindInput(name.c_str(), index)
                   : nodeClass->FindOutput(name.c_str(), index);
  }
  py::object Lookup(py::handle key) const {
    if (PyUnicode_Check(key.ptr())) {
      size_t index = 0;
      return Find(textFromPython(key), &index) ? At(index) : py::none();
    }
    return At(positionFromPython(key, Count(), isInput ? "Input" : "Output"));
  }
};

py::object parameterListGetItem(const ParameterList& list, py::handle key) {
  py::object found = list.Lookup(key);
  if (found.is_none()) {
    throw py::key_error(std::string(list.nodeClass->GetName()) + " has no " +
                        (list.isInput ? "input " : "output ") + std::string(py::str(key)));
  }
  return found;
}

// The nodes of a finished graph, made once: iterating is iterating over a tuple.
struct NodeList {
  py::tuple nodes;
  const mat::IGraph* graph;

  py::object Lookup(py::handle key) const {
    if (const mat::UUID* uuid = uuidOf(key)) {
      for (size_t i = 0; i < graph->GetNodeCount(); ++i) {
        if (graph->GetNode(i)->GetUUID() == *uuid) return nodes[i];
      }
      return py::none();
    }
    if (PyUnicode_Check(key.ptr())) {
      const std::string name = textFromPython(key);
      for (size_t i = 0; i < graph->GetNodeCount(); ++i) {
        if (name == graph->GetNode(i)->GetName()) return nodes[i];
      }
      return py::none();
    }
    return nodes[positionFromPython(key, nodes.size(), "Node")];
  }
};

const py::object& nodeListOf(Graph& graph) {
  if (!graph.nodes) {
    Library& library = graph.owner.cast<Library&>();
    const py::object keeper = keepGraph(graph.graph);
    const size_t count = graph.graph->GetNodeCount();
    py::tuple nodes(count);
    for (size_t i = 0; i < count; ++i) {
      PyTuple_SET_ITEM(
          nodes.ptr(), static_cast<Py_ssize_t>(i),
          wrapNode(keeper, graph.graph.get(), graph.graph->GetNode(i), i, graph.owner, library)
              .release()
              .ptr());
    }
    graph.nodes = py::cast(NodeList{std::move(nodes), graph.graph.get()});
  }
  return graph.nodes;
}

py::object parameterFromPath(const Graph& graph, py::handle pathObject) {
  PortPathHandle handle(pathObject);
  const mat::IPortPath& path = *handle.path;
  const mat::IGraphNode* node = nullptr;
  graph.graph->GetParameterFromPath(path, &node);
  // The path is valid now; walk it again for the graph that holds its last node and the
  // class whose parameter it names.
  const mat::IGraph* holder = graph.graph.get();
  std::shared_ptr<const mat::INodeClass> nodeClass = graph.graph;
  const size_t depth = path.GetNodeIndexCount();
  for (size_t k = 0; k < depth; ++k) {
    if (k > 0) holder = nodeClass->AsGraph().get();
    nodeClass = holder->GetNode(path.GetNodeIndex(k))->GetNodeClass();
  }
  size_t index = 0;
  const bool isInput = path.IsInputPort();
  if (isInput) {
    nodeClass->FindInput(path.GetPortName(), &index);
  } else {
    nodeClass->FindOutput(path.GetPortName(), &index);
  }
  py::object parameter = py::cast(Parameter{nodeClass, graph.graph, isInput, index, graph.owner});
  py::object nodeObject = depth == 0 ? py::none()
                                     : wrapNode(keepGraph(graph.graph), holder, node,
                                                path.GetNodeIndex(depth - 1), graph.owner);
  return py::make_tuple(nodeObject, parameter);
}

py::object findParameter(const mat::INodeClass& nodeClass, const std::string& name, bool isInput) {
  size_t index = 0;
  const bool found = isInput ? nodeClass.FindInput(name.c_str(), &index)
                             : nodeClass.FindOutput(name.c_str(), &index);
  if (!found) return py::none();
  return py::int_(index);
}

void defineTypeAndSemantic(py::module_& module) {
  py::class_<Type>(module, "Type",
                   "A kind of data that flows through inputs and outputs. Types are compared "
                   "by identity (the same object of the same library), never by UUID.")
      .def_property_readonly("uuid", [](const Type& type) { return type.type->GetUUID(); })
      .def_property_readonly("name",
                             [](const Type& type) { return textToPython(type.type->GetName()); })
      .def_property_readonly(
          "default",
          [](const Type& type) { return valueToPython(type.type->GetDefault(), type.owner); },
          "The default value (a list), or None.")
      .def("__eq__", [](const Type& a, const Type& b) { return a.type == b.type; })
      .def("__hash__", [](const Type& type) { return std::hash<const void*>()(type.type); })
      .def("__repr__", [](const Type& type) {
        return py::str("<matgraph.Type {} {}>")
            .format(quoted(type.type->GetName()), py::str(py::cast(type.type->GetUUID())));
      });

  SemanticType::Define(module, "Semantic", semanticSpec);
}

void defineParameters(py::module_& module) {
  py::class_<Parameter>(module, "Parameter", "One named, typed input or output of a node class.")
      .def_property_readonly(
          "name",
          [](const Parameter& parameter) { return textToPython(parameter.Get().GetName()); })
      .def_property_readonly(
          "type",
          [](const Parameter& parameter) {
            return wrapType(parameter.Get().GetType(), parameter.owner);
          },
          "The Type, or None when the file named a type found nowhere.")
      .def_property_readonly(
          "default",
          [](const Parameter& parameter) {
            return valueToPython(parameter.Get().GetDefault(), parameter.owner);
          },
          "The default value (a list), or None.")
      .def_property_readonly("index", [](const Parameter& parameter) { return parameter.index; })
      .def_property_readonly("is_input",
                             [](const Parameter& parameter) { return parameter.isInput; })
      .def_property_readonly(
          "annotation",
          [](const Parameter& parameter) {
            const mat::IAnnotation& annotation = *parameter.Get().GetAnnotation();
            py::dict entries;
            const auto count = static_cast<int32_t>(annotation.GetEntryCount());
            for (int32_t i = 0; i < count; ++i) {
              entries[textToPython(annotation.GetKey(i))] = textToPython(annotation.GetValue(i));
            }
            return entries;
          },
          "The host's notes on the parameter, as a new dict in entry order. Never saved.")
      .def(
          "annotate",
          [](const Parameter& parameter, py::handle key, py::handle value) {
            const std::string keyText = textFromPython(key);
            const std::string valueText = textFromPython(value);
            mat::IAnnotation& annotation = *parameter.Get().GetAnnotation();
            const bool added = !annotation.HasKey(keyText.c_str());
            annotation.AddEntry(keyText.c_str(), valueText.c_str());
            return added;
          },
          py::arg("key"), py::arg("value"),
          "Adds a note unless the key is there already. Returns whether it was added.")
      .def("__eq__", [](const Parameter& a, const Parameter& b) { return &a.Get() == &b.Get(); })
      .def("__hash__",
           [](const Parameter& parameter) { return std::hash<const void*>()(&parameter.Get()); })
      .def("__repr__", [](const Parameter& parameter) {
        const mat::IType* type = parameter.Get().GetType();
        return py::str("<matgraph.Parameter {} {}: {}>")
            .format(parameter.isInput ? "input" : "output", quoted(parameter.Get().GetName()),
                    type ? quoted(type->GetName()) : py::str("None"));
      });

  py::class_<ParameterList>(module, "ParameterList",
                            "The inputs or the outputs of a node class: a read-only sequence, "
                            "also indexed by name.")
      .def("__len__", &ParameterList::Count)
      .def("__getitem__", &parameterListGetItem, py::arg("key"),
           "By position (negative from the end) or by name (the last of that name).")
      .def(
          "get",
          [](const ParameterList& list, py::handle key, py::object otherwise) {
            py::object found = list.Lookup(key);
            return found.is_none() ? otherwise : found;
          },
          py::arg("key"), py::arg("default") = py::none())
      .def("__contains__",
           [](const ParameterList& list, py::handle name) {
             size_t index = 0;
             return PyUnicode_Check(name.ptr()) && list.Find(textFromPython(name), &index);
           })
      .def("__iter__",
           [](const ParameterList& list) {
             py::tuple items(list.Count());
             for (size_t i = 0; i < list.Count(); ++i) items[i] = list.At(i);
             return py::iter(items);
           })
      .def("__repr__", [](const ParameterList& list) {
        py::list names;
        for (size_t i = 0; i < list.Count(); ++i) {
          names.append(list.At(i).attr("name"));
        }
        return py::str("<matgraph.ParameterList {}>").format(names);
      });
}

template <typename Class>
Class& defineNodeClassMembers(Class& nodeClass) {
  nodeClass
      .def_property_readonly("uuid",
                             [](const NodeClass& self) { return self.nodeClass->GetUUID(); })
      .def_property_readonly(
          "name", [](const NodeClass& self) { return textToPython(self.nodeClass->GetName()); })
      .def_property_readonly("inputs",
                             [](const NodeClass& self) {
                               return ParameterList{self.nodeClass, self.keeper, true, self.owner};
                             })
      .def_property_readonly("outputs",
                             [](const NodeClass& self) {
                               return ParameterList{self.nodeClass, self.keeper, false, self.owner};
                             })
      .def_property_readonly("is_graph",
                             [](const NodeClass& self) { return self.nodeClass->IsGraph(); })
      .def_property_readonly(
          "library",
          [](const NodeClass& self) {
            return findLibraryObject(self.owner, self.nodeClass->GetLibrary());
          },
          "The Library the class belongs to.")
      .def(
          "find_input",
          [](const NodeClass& self, py::handle name) {
            return findParameter(*self.nodeClass, textFromPython(name), true);
          },
          py::arg("name"), "The position of the input named name (the last one), or None.")
      .def(
          "find_output",
          [](const NodeClass& self, py::handle name) {
            return findParameter(*self.nodeClass, textFromPython(name), false);
          },
          py::arg("name"), "The position of the output named name, or None.")
      .def("__eq__",
           [](const NodeClass& a, const NodeClass& b) { return a.nodeClass == b.nodeClass; })
      .def("__hash__",
           [](const NodeClass& self) { return std::hash<const void*>()(self.nodeClass.get()); });
  return nodeClass;
}

void defineNodeClassAndGraph(py::module_& module) {
  py::class_<NodeClass> nodeClass(
      module, "NodeClass",
      "The signature of a kind of node: ordered, named, typed inputs and outputs. Graphs are "
      "node classes too (Graph derives from NodeClass).");
  defineNodeClassMembers(nodeClass).def("__repr__", [](const NodeClass& self) {
    return py::str("<matgraph.NodeClass {} {}>")
        .format(quoted(self.nodeClass->GetName()), py::str(py::cast(self.nodeClass->GetUUID())));
  });

  py::class_<Graph, NodeClass>(
      module, "Graph",
      "A node class whose inner working is a set of connected nodes. Node 0 is the input "
      "node (its outputs are the graph's inputs), node 1 the output node (its inputs are "
      "the graph's outputs). A finished graph never changes.")
      .def_property_readonly(
          "nodes", [](Graph& self) { return nodeListOf(self); },
          "The nodes, the two special ones first.")
      .def_property_readonly("input_node",
                             [](Graph& self) -> py::object {
                               return nodeListOf(self).cast<const NodeList&>().nodes[0];
                             })
      .def_property_readonly("output_node",
                             [](Graph& self) -> py::object {
                               return nodeListOf(self).cast<const NodeList&>().nodes[1];
                             })
      .def("parameter_from_path", &parameterFromPath, py::arg("path"),
           "Follows a PortPath (or a sequence of node indices) down through nested graphs. "
           "Returns (node, parameter): the last node of the path (None for a path without "
           "nodes) and the input or output named. Raises InvalidDataAccessError when the "
           "path cannot be followed.")
      .def("__repr__", [](const Graph& self) {
        return py::str("<matgraph.Graph {} {}: {} nodes>")
            .format(quoted(self.graph->GetName()), py::str(py::cast(self.graph->GetUUID())),
                    self.graph->GetNodeCount());
      });

  py::class_<NodeList>(module, "NodeList",
                       "The nodes of a graph: a read-only sequence, also searched by UUID and "
                       "by name (the first node of that name).")
      .def("__len__", [](const NodeList& list) { return list.nodes.size(); })
      .def(
          "__getitem__",
          [](const NodeList& list, py::handle key) -> py::object {
            if (PySlice_Check(key.ptr())) return list.nodes[py::reinterpret_borrow<py::slice>(key)];
            py::object found = list.Lookup(key);
            if (found.is_none()) {
              throw py::key_error("No node " + std::string(py::str(key)) + " in this graph");
            }
            return found;
          },
          py::arg("key"))
      .def(
          "get",
          [](const NodeList& list, py::handle key, py::object otherwise) {
            py::object found = list.Lookup(key);
            return found.is_none() ? otherwise : found;
          },
          py::arg("key"), py::arg("default") = py::none())
      .def("__contains__",
           [](const NodeList& list, py::handle item) {
             if (const Node* record = nodeOf(item)) {
               const mat::IGraphNode* node = record->node;
               for (size_t i = 0; i < list.graph->GetNodeCount(); ++i) {
                 if (list.graph->GetNode(i) == node) return true;
               }
               return false;
             }
             return (uuidOf(item) != nullptr || PyUnicode_Check(item.ptr())) &&
                    !list.Lookup(item).is_none();
           })
      .def("__iter__", [](const NodeList& list) { return py::iter(list.nodes); })
      .def("__repr__", [](const NodeList& list) {
        return py::str("<matgraph.NodeList of {} in {}>")
            .format(list.nodes.size(), quoted(list.graph->GetName()));
      });
}

}  // namespace

void defineItems(py::module_& module) {
  defineTypeAndSemantic(module);
  defineParameters(module);
  defineNodeClassAndGraph(module);
}

}  // namespace matgraph::python
