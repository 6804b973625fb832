// matgraph.GraphFactory: builds a new graph or edits a copy of one.
//
// A node of the graph under construction is handed out as a FactoryNode, which names the
// node by its UUID and finds it again on every use: a node that left the graph (removed or
// replaced) raises ConnectionInvalidNodesError, and any use of a closed factory raises
// Error, instead of reaching freed memory.
//
// Every library whose objects the graph takes in (node classes, types, semantics in
// values, the source of a copy) is kept by the factory's library from that moment on,
// since the finished graph will point into it; objects reached through the factory use
// that library as their owner. A graph built in a library from objects of one of its
// own children makes the two keep each other: they are then never freed, which is the
// safe answer to a dependency that runs both ways.
#include "Bindings.h"

namespace matgraph::python {

namespace {

struct Factory {
  explicit Factory(mat::IGraphFactory* factory, py::object library)
      : factory(factory), library(std::move(library)) {}
  ~Factory() { mat::releaseGraphFactory(factory); }
  Factory(const Factory&) = delete;
  Factory& operator=(const Factory&) = delete;

  mat::IGraphFactory& Active() const {
    if (factory == nullptr) raiseError("The graph factory is closed");
    if (!finished.is_none()) raiseError("The graph factory has finished its graph");
    return *factory;
  }

  void Close() {
    mat::releaseGraphFactory(factory);
    factory = nullptr;
  }

  void Borrow(const py::object& owner) const { library.cast<Library&>().Borrow(owner); }

  mat::IGraphFactory* factory;  // null once closed
  py::object library;           // where finish() registers the graph
  py::object finished = py::none();
};

struct FactoryNode {
  py::object factory;
  mat::UUID uuid;
  size_t index;  // where the node was last seen; checked against the UUID on every use
};

struct LocatedNode {
  const mat::IGraphNode* node;
  size_t index;
};

std::string uuidText(const mat::UUID& uuid) {
  char buffer[37];
  mat::UUIDToString(uuid, buffer);
  return buffer;
}

LocatedNode locate(const py::object& self, FactoryNode& handle) {
  if (!handle.factory.is(self)) {
    raiseConnectionError(mat::ConnectionInvalidNodes,
                         "The node " + uuidText(handle.uuid) + " belongs to another GraphFactory");
  }
  mat::IGraphFactory& factory = self.cast<const Factory&>().Active();
  const mat::IGraphNode* node = nullptr;
  if (factory.GetNode(handle.index, &node) == mat::ConnectionOk && node->GetUUID() == handle.uuid) {
    return {node, handle.index};
  }
  const size_t count = factory.GetNodeCount();
  for (size_t i = 0; i < count; ++i) {
    factory.GetNode(i, &node);
    if (node->GetUUID() == handle.uuid) {
      handle.index = i;
      return {node, i};
    }
  }
  raiseConnectionError(mat::ConnectionInvalidNodes, "The node " + uuidText(handle.uuid) +
                                                        " is no longer in the factory's graph");
}

// A node argument: a FactoryNode of this factory, or a node index (negative from the end).
LocatedNode locate(const py::object& self, py::handle node) {
  if (py::isinstance<FactoryNode>(node)) return locate(self, node.cast<FactoryNode&>());
  if (!PyLong_Check(node.ptr())) throw py::type_error("A node is a FactoryNode or a node index");
  mat::IGraphFactory& factory = self.cast<const Factory&>().Active();
  Py_ssize_t index = PyLong_AsSsize_t(node.ptr());
  if (index == -1 && PyErr_Occurred()) throw py::error_already_set();
  const Py_ssize_t count = static_cast<Py_ssize_t>(factory.GetNodeCount());
  if (index < 0) index += count;
  const mat::IGraphNode* found = nullptr;
  if (index < 0 || factory.GetNode(static_cast<size_t>(index), &found) != mat::ConnectionOk) {
    raiseConnectionError(mat::ConnectionNotFound, "Node index " + std::string(py::str(node)) +
                                                      " out of range (count " +
                                                      std::to_string(count) + ")");
  }
  return {found, static_cast<size_t>(index)};
}

py::object handleFor(const py::object& self, const mat::IGraphNode* node, size_t index) {
  return py::cast(FactoryNode{self, node->GetUUID(), index});
}

std::string describe(const LocatedNode& node) {
  return "node " + std::to_string(node.index) + " '" + node.node->GetName() + "'";
}

void check(mat::ConnectionResult result, const std::string& operation) {
  if (result != mat::ConnectionOk) raiseConnectionError(result, operation);
}

// The kind of the default of @p type, the natural kind for a value given for it.
std::optional<mat::ValueType> kindOf(const mat::IType* type) {
  if (type == nullptr || type->GetDefault() == nullptr) return std::nullopt;
  return type->GetDefault()->GetValueType();
}

std::optional<mat::ValueType> kindArgument(const py::object& kind) {
  if (kind.is_none()) return std::nullopt;
  return valueTypeFromKeyword(textFromPython(kind));
}

const NodeClass& nodeClassArgument(py::handle nodeClass) {
  if (!py::isinstance<NodeClass>(nodeClass)) {
    throw py::type_error("node_class must be a NodeClass or a Graph");
  }
  return nodeClass.cast<const NodeClass&>();
}

const Type& typeArgument(py::handle type) {
  if (!py::isinstance<Type>(type)) throw py::type_error("type must be a Type");
  return type.cast<const Type&>();
}

size_t inputIndex(const mat::INodeClass& nodeClass, py::handle input) {
  if (PyUnicode_Check(input.ptr())) {
    size_t index = 0;
    const std::string name = textFromPython(input);
    if (!nodeClass.FindInput(name.c_str(), &index)) {
      throw py::key_error("No input '" + name + "' in " + nodeClass.GetName());
    }
    return index;
  }
  return positionFromPython(input, nodeClass.GetInputCount(), "Input");
}

std::unique_ptr<Factory> newFactory(const py::object& library, py::handle name, py::handle uuid) {
  if (!py::isinstance<Library>(library)) throw py::type_error("library must be a Library");
  const std::string nameText = textFromPython(name);
  const mat::UUID uuidValue = uuid.is_none() ? mat::UUID{} : uuidFromPython(uuid);
  mat::IGraphFactory* factory = mat::createNewGraphFactory(library.cast<const Library&>().library,
                                                           nameText.c_str(), uuidValue);
  return std::make_unique<Factory>(factory, library);
}

py::object cloneFactory(py::handle graph, const py::object& library) {
  if (!py::isinstance<Graph>(graph)) throw py::type_error("graph must be a Graph");
  if (!py::isinstance<Library>(library)) throw py::type_error("library must be a Library");
  const Graph& source = graph.cast<const Graph&>();
  mat::IGraphFactory* factory =
      mat::cloneNewGraphFactory(library.cast<const Library&>().library, source.graph);
  if (factory == nullptr) throw py::value_error("The graph cannot be copied");
  auto wrapper = std::make_unique<Factory>(factory, library);
  wrapper->Borrow(source.owner);
  return py::cast(std::move(wrapper));
}

py::object addNode(const py::object& self, py::handle nodeClassObject, py::handle name) {
  Factory& factory = self.cast<Factory&>();
  const NodeClass& nodeClass = nodeClassArgument(nodeClassObject);
  const std::string nameText = textFromPython(name);
  const mat::IGraphNode* node = nullptr;
  check(factory.Active().AddNode(nodeClass.nodeClass, nameText.c_str(), &node),
        "add_node('" + nameText + "')");
  factory.Borrow(nodeClass.owner);
  return handleFor(self, node, factory.factory->GetNodeCount() - 1);
}

void addInput(Factory& factory, py::handle typeObject, py::handle name, py::handle defaultValue,
              const py::object& kind) {
  const Type& type = typeArgument(typeObject);
  const std::string nameText = textFromPython(name);
  std::vector<py::object> libraries{type.owner};
  std::unique_ptr<const mat::IValue> value;
  if (!defaultValue.is_none()) {
    value = valueFromPython(defaultValue, kindArgument(kind), kindOf(type.type), &libraries);
  }
  check(factory.Active().AddInput(type.type, nameText.c_str(), value.get()),
        "add_input('" + nameText + "')");
  for (const py::object& library : libraries) factory.Borrow(library);
}

void addOutput(Factory& factory, py::handle typeObject, py::handle name) {
  const Type& type = typeArgument(typeObject);
  const std::string nameText = textFromPython(name);
  check(factory.Active().AddOutput(type.type, nameText.c_str()), "add_output('" + nameText + "')");
  factory.Borrow(type.owner);
}

py::object replaceNode(const py::object& self, py::handle nodeObject, py::handle nodeClassObject,
                       py::handle name, bool allowSignatureChange) {
  Factory& factory = self.cast<Factory&>();
  const LocatedNode old = locate(self, nodeObject);
  const NodeClass& nodeClass = nodeClassArgument(nodeClassObject);
  const std::string nameText = textFromPython(name);
  const mat::IGraphNode* node = nullptr;
  check(factory.Active().ReplaceNode(old.index, nodeClass.nodeClass, allowSignatureChange,
                                     nameText.c_str(), &node),
        "replace_node(" + describe(old) + ")");
  factory.Borrow(nodeClass.owner);
  const size_t count = factory.factory->GetNodeCount();
  for (size_t i = 0; i < count; ++i) {
    const mat::IGraphNode* candidate = nullptr;
    factory.factory->GetNode(i, &candidate);
    if (candidate == node) return handleFor(self, node, i);
  }
  return handleFor(self, node, old.index);
}

void connect(const py::object& self, py::handle source, py::handle sourceOutput, py::handle target,
             py::handle targetInput) {
  const LocatedNode from = locate(self, source);
  const LocatedNode to = locate(self, target);
  const std::string output = textFromPython(sourceOutput);
  const std::string input = textFromPython(targetInput);
  check(self.cast<const Factory&>().Active().Connect(from.node, output.c_str(), to.node,
                                                     input.c_str()),
        "connect(" + describe(from) + " output '" + output + "', " + describe(to) + " input '" +
            input + "')");
}

void setInputDefault(const py::object& self, py::handle nodeObject, py::handle input,
                     py::handle value, const py::object& kind) {
  Factory& factory = self.cast<Factory&>();
  const LocatedNode node = locate(self, nodeObject);
  const std::shared_ptr<const mat::INodeClass> nodeClass = node.node->GetNodeClass();
  const size_t index = inputIndex(*nodeClass, input);
  std::vector<py::object> libraries;
  std::unique_ptr<const mat::IValue> converted;
  if (!value.is_none()) {
    converted = valueFromPython(value, kindArgument(kind),
                                kindOf(nodeClass->GetInput(index)->GetType()), &libraries);
  }
  factory.Active().SetInputDefault(node.node, index, converted.get());
  for (const py::object& library : libraries) factory.Borrow(library);
}

py::object finish(const py::object& self) {
  Factory& factory = self.cast<Factory&>();
  std::shared_ptr<const mat::IGraph> graph = factory.Active().FinishGraph();
  factory.finished = wrapGraph(std::move(graph), factory.library);
  return factory.finished;
}

py::tuple outputNames(const mat::INodeClass& nodeClass) {
  py::tuple names(nodeClass.GetOutputCount());
  for (size_t i = 0; i < nodeClass.GetOutputCount(); ++i) {
    names[i] = textToPython(nodeClass.GetOutput(i)->GetName());
  }
  return names;
}

void defineFactoryNode(py::module_& module) {
  py::class_<FactoryNode>(
      module, "FactoryNode",
      "A node of a graph under construction. It follows its node as other nodes come and "
      "go; using it after its node left the graph, or after the factory finished or "
      "closed, raises Error.")
      .def_property_readonly("uuid", [](const FactoryNode& self) { return self.uuid; })
      .def_property_readonly(
          "index", [](FactoryNode& self) { return locate(self.factory, self).index; },
          "The node's current position in the graph.")
      .def_property_readonly("name",
                             [](FactoryNode& self) {
                               return textToPython(locate(self.factory, self).node->GetName());
                             })
      .def_property_readonly(
          "kind", [](FactoryNode& self) { return locate(self.factory, self).node->GetNodeKind(); })
      .def_property_readonly(
          "node_class",
          [](FactoryNode& self) -> py::object {
            const mat::IGraphNode* node = locate(self.factory, self).node;
            const mat::NodeKind kind = node->GetNodeKind();
            if (kind == mat::GraphInputNode || kind == mat::GraphOutputNode) return py::none();
            const Factory& factory = self.factory.cast<const Factory&>();
            return wrapNodeClass(node->GetNodeClass(), factory.library,
                                 std::shared_ptr<const void>());
          },
          "The NodeClass or Graph of the node; None for the input and output nodes, whose "
          "classes change with the graph under construction.")
      .def_property_readonly("editor_position",
                             [](FactoryNode& self) {
                               float x = 0;
                               float y = 0;
                               locate(self.factory, self).node->GetEditorPosition(&x, &y);
                               return py::make_tuple(x, y);
                             })
      .def_property_readonly(
          "inputs",
          [](FactoryNode& self) {
            const mat::IGraphNode* node = locate(self.factory, self).node;
            const Factory& factory = self.factory.cast<const Factory&>();
            return nodeInputs(*node, bareInputsOf(*node->GetNodeClass()), factory.library);
          },
          "A snapshot: one tuple (name, source, output, default) per input, as Node.inputs.")
      .def_property_readonly(
          "output_names",
          [](FactoryNode& self) {
            return outputNames(*locate(self.factory, self).node->GetNodeClass());
          },
          "The names of the node's outputs (for the input node: the graph's inputs).")
      .def("__eq__",
           [](const FactoryNode& a, const FactoryNode& b) {
             return a.factory.is(b.factory) && a.uuid == b.uuid;
           })
      .def("__hash__", [](const FactoryNode& self) { return py::hash(py::cast(self.uuid)); })
      .def("__repr__", [](const FactoryNode& self) {
        return "<matgraph.FactoryNode " + uuidText(self.uuid) + ">";
      });
}

}  // namespace

void defineFactory(py::module_& module) {
  defineFactoryNode(module);
  py::class_<Factory>(
      module, "GraphFactory",
      "Builds a new graph, or edits a copy of one (GraphFactory.clone), until finish() "
      "registers it in the library. Use it in a with block: leaving the block closes the "
      "factory and discards a graph that was not finished.\n\n"
      "Operations that fail change nothing and raise a ConnectionError subclass whose code "
      "is the ConnectionResult. Nodes are FactoryNode objects or node indices.")
      .def(py::init(&newFactory), py::arg("library"), py::arg("name") = "",
           py::arg("uuid") = py::none(),
           "A factory over a new empty graph named name, with uuid (None: a random one), to "
           "be registered in library.")
      .def_static("clone", &cloneFactory, py::arg("graph"), py::arg("library"),
                  "A factory over a copy of graph (new UUIDs for the graph and its nodes, the "
                  "same classes, connections and defaults), to be registered in library. The "
                  "source never changes.")
      .def("__enter__", [](const py::object& self) { return self; })
      .def("__exit__",
           [](Factory& self, py::args) {
             self.Close();
             return false;
           })
      .def("close", &Factory::Close,
           "Releases the factory and a graph it did not finish. Further use raises Error.")
      .def_property_readonly("closed", [](const Factory& self) { return self.factory == nullptr; })
      .def_property_readonly(
          "graph", [](const Factory& self) { return self.finished; },
          "The Graph that finish() returned, or None.")
      .def_property_readonly(
          "library", [](const Factory& self) { return self.library; },
          "The Library in which finish() registers the graph.")
      .def(
          "set_name",
          [](const Factory& self, py::handle name) {
            self.Active().SetName(textFromPython(name).c_str());
          },
          py::arg("name"))
      .def("add_node", &addNode, py::arg("node_class"), py::arg("name") = "",
           "Appends a node of node_class (a NodeClass or a Graph). Returns its FactoryNode.")
      .def("add_input", &addInput, py::arg("type"), py::arg("name"),
           py::arg("default") = py::none(), py::kw_only(), py::arg("kind") = py::none(),
           "Appends a graph input. default: an element or a list; its kind is kind (\"bool\", "
           "\"int\", \"float\", \"uuid\", \"string\", \"semantic\") when given, else the kind "
           "of the type's default, else what the elements are. Raises "
           "ConnectionNameInUseError.")
      .def("add_output", &addOutput, py::arg("type"), py::arg("name"),
           "Appends a graph output. Raises ConnectionNameInUseError.")
      .def(
          "remove_input",
          [](const Factory& self, py::handle name) {
            const std::string text = textFromPython(name);
            check(self.Active().RemoveInput(text.c_str()), "remove_input('" + text + "')");
          },
          py::arg("name"),
          "Removes a graph input and the connections from it. Raises ConnectionNotFoundError.")
      .def(
          "remove_output",
          [](const Factory& self, py::handle name) {
            const std::string text = textFromPython(name);
            check(self.Active().RemoveOutput(text.c_str()), "remove_output('" + text + "')");
          },
          py::arg("name"), "Removes a graph output. Raises ConnectionNotFoundError.")
      .def(
          "remove_node",
          [](const py::object& self, py::handle node) {
            const LocatedNode located = locate(self, node);
            check(self.cast<const Factory&>().Active().RemoveNode(located.index),
                  "remove_node(" + describe(located) + ")");
          },
          py::arg("node"),
          "Removes a node and the connections from it; later nodes move down by one. Raises "
          "ConnectionNotFoundError for the input and output nodes.")
      .def("replace_node", &replaceNode, py::arg("node"), py::arg("node_class"),
           py::arg("name") = "", py::kw_only(), py::arg("allow_signature_change") = false,
           "Puts a new node of node_class in place of node and returns it. With an identical "
           "signature it takes the old node's index, connections and defaults; otherwise, "
           "with allow_signature_change, it is appended last and the connections that still "
           "fit are made again. Raises ConnectionTypeMismatchError when the signatures differ "
           "and no change is allowed, ConnectionNotFoundError for the special nodes.")
      .def(
          "node",
          [](const py::object& self, py::handle index) {
            const LocatedNode located = locate(self, index);
            return handleFor(self, located.node, located.index);
          },
          py::arg("index"),
          "The node at index (negative from the end). Raises ConnectionNotFoundError.")
      .def_property_readonly(
          "nodes",
          [](const py::object& self) {
            mat::IGraphFactory& factory = self.cast<const Factory&>().Active();
            py::list nodes;
            for (size_t i = 0; i < factory.GetNodeCount(); ++i) {
              const mat::IGraphNode* node = nullptr;
              factory.GetNode(i, &node);
              nodes.append(handleFor(self, node, i));
            }
            return nodes;
          },
          "The nodes now in the graph, as a new list of FactoryNode.")
      .def("__len__", [](const Factory& self) { return self.Active().GetNodeCount(); })
      .def_property_readonly("input_node",
                             [](const py::object& self) {
                               return handleFor(
                                   self, self.cast<const Factory&>().Active().GetInputNode(), 0);
                             })
      .def_property_readonly("output_node",
                             [](const py::object& self) {
                               return handleFor(
                                   self, self.cast<const Factory&>().Active().GetOutputNode(), 1);
                             })
      .def("connect", &connect, py::arg("source"), py::arg("source_output"), py::arg("target"),
           py::arg("target_input"),
           "Feeds input target_input of target from output source_output of source. A graph "
           "input is an output of input_node; a graph output is an input of output_node. "
           "Raises ConnectionNotFoundError, ConnectionTypeMismatchError or "
           "ConnectionInvalidNodesError (source and target are the same node).")
      .def("set_input_default", &setInputDefault, py::arg("node"), py::arg("input"),
           py::arg("value"), py::kw_only(), py::arg("kind") = py::none(),
           "Gives an input (a position or a name) of node a default; None removes it. The "
           "kind is chosen as for add_input().")
      .def(
          "set_editor_position",
          [](const py::object& self, py::handle node, float x, float y) {
            const LocatedNode located = locate(self, node);
            self.cast<const Factory&>().Active().SetEditorPosition(located.node, x, y);
          },
          py::arg("node"), py::arg("x"), py::arg("y"))
      .def("finish", &finish,
           "Registers the graph in the library (it then answers the lookups of its UUID and "
           "name) and returns it as a Graph. The factory can do nothing more.");
}

}  // namespace matgraph::python
