// Records: the inputs of a node, NodeKey and Resolution; and port paths.
//
// A node input is a plain tuple (name, source, output, default). Iterating over every input
// of every node of a large library makes one per input, so their cost is the cost of that
// loop: a plain tuple comes from the interpreter's free list and unpacks on its fast path,
// where a tuple with named fields (a struct sequence) costs three times as much to make and
// to unpack. NodeKey and Resolution, made one at a time, are struct sequences.
#include <pybind11/stl.h>

#include <algorithm>
#include <cstdint>
#include <typeinfo>
#include <vector>

#include "Bindings.h"
#include "graph/GraphNode.h"

namespace matgraph::python {

namespace {

PyStructSequence_Field nodeKeyFields[] = {
    {"instance", "Graph instance in the resolver; 0 is the resolver's own graph."},
    {"node", "Index of the node in that instance's graph."},
    {nullptr, nullptr},
};
PyStructSequence_Desc nodeKeyDesc = {
    "matgraph.NodeKey",
    "Names a node of one graph instance inside a Resolver: NodeKey(instance, node). "
    "Meaningful only to the resolver that made it.",
    nodeKeyFields, 2};

PyStructSequence_Field resolutionFields[] = {
    {"source", "The NodeKey of the node whose output feeds the input, or None."},
    {"output", "The index of that output, or None."},
    {"default", "When nothing feeds the input: the default that applies (a list), or None."},
    {nullptr, nullptr},
};
PyStructSequence_Desc resolutionDesc = {
    "matgraph.Resolution",
    "What Resolver.resolve_input() found: Resolution(source, output, default). Either "
    "source and output are set, or the input is not fed and default is the value that "
    "applies (None when there is none).",
    resolutionFields, 3};

PyTypeObject* nodeKeyType = nullptr;
PyTypeObject* resolutionType = nullptr;

PyTypeObject* newRecordType(py::module_& module, PyStructSequence_Desc& desc, const char* name) {
  PyTypeObject* type = PyStructSequence_NewType(&desc);
  if (type == nullptr) throw py::error_already_set();
  module.add_object(name, py::handle(reinterpret_cast<PyObject*>(type)));
  return type;
}

// Fills a new record; steals the references of the items.
py::object newRecord(PyTypeObject* type, std::initializer_list<PyObject*> items) {
  PyObject* record = PyStructSequence_New(type);
  if (record == nullptr) {
    for (PyObject* item : items) Py_XDECREF(item);
    throw py::error_already_set();
  }
  Py_ssize_t position = 0;
  for (PyObject* item : items) PyStructSequence_SetItem(record, position++, item);
  return py::reinterpret_steal<py::object>(record);
}

size_t toSize(py::handle number) {
  const size_t value = PyLong_AsSize_t(number.ptr());
  if (value == static_cast<size_t>(-1) && PyErr_Occurred()) throw py::error_already_set();
  return value;
}

// A port path as Python sees it; turned into an IPortPath wherever one is needed.
struct PortPath {
  std::vector<size_t> nodes;
  std::string port;
  bool isInput = false;
};

py::str portPathRepr(const PortPath& path) {
  py::list nodes;
  for (size_t node : path.nodes) nodes.append(node);
  return py::str("PortPath({}, {}={!r})")
      .format(nodes, path.isInput ? "input" : "output", textToPython(path.port.c_str()));
}

}  // namespace

py::object makeNodeKey(mat::NodeKey key) {
  return newRecord(nodeKeyType, {PyLong_FromSize_t(key.instance), PyLong_FromSize_t(key.node)});
}

mat::NodeKey nodeKeyFromPython(py::handle key) {
  if (PyLong_Check(key.ptr())) return mat::NodeKey{0, toSize(key)};
  if (PyTuple_Check(key.ptr()) && PyTuple_GET_SIZE(key.ptr()) == 2) {
    return mat::NodeKey{toSize(PyTuple_GET_ITEM(key.ptr(), 0)),
                        toSize(PyTuple_GET_ITEM(key.ptr(), 1))};
  }
  throw py::type_error("A node key is a NodeKey, a pair (instance, node) or a node index");
}

py::object makeResolution(py::object source, py::object output, py::object defaultValue) {
  return newRecord(resolutionType,
                   {source.release().ptr(), output.release().ptr(), defaultValue.release().ptr()});
}

namespace {

// The tuple of an input fed from @p sourceNode's output @p sourceOutput when @p connected,
// with @p defaultValue; @p bare is (name, None, None, None), which serves as it is for an
// input with neither a connection nor a default.
PyObject* makeNodeInput(bool connected, size_t sourceNode, size_t sourceOutput,
                        const mat::IValue* defaultValue, PyObject* bare, const py::object& owner) {
  if (!connected && defaultValue == nullptr) return Py_NewRef(bare);
  py::object defaultObject = valueToPython(defaultValue, owner);
  PyObject* source = connected ? PyLong_FromSize_t(sourceNode) : Py_NewRef(Py_None);
  PyObject* output = connected ? PyLong_FromSize_t(sourceOutput) : Py_NewRef(Py_None);
  PyObject* input = PyTuple_New(4);
  if (input == nullptr || source == nullptr || output == nullptr) {
    Py_XDECREF(input);
    Py_XDECREF(source);
    Py_XDECREF(output);
    throw py::error_already_set();
  }
  PyTuple_SET_ITEM(input, 0, Py_NewRef(PyTuple_GET_ITEM(bare, 0)));
  PyTuple_SET_ITEM(input, 1, source);
  PyTuple_SET_ITEM(input, 2, output);
  PyTuple_SET_ITEM(input, 3, defaultObject.release().ptr());
  return input;
}

PyObject* makeNodeInput(const mat::IGraphNode& node, size_t index, PyObject* bare,
                        const py::object& owner) {
  size_t sourceNode = 0;
  size_t sourceOutput = 0;
  const bool connected = node.GetInputConnection(index, &sourceNode, &sourceOutput);
  return makeNodeInput(connected, sourceNode, sourceOutput, node.GetInputDefault(index), bare,
                       owner);
}

py::object bareInput(const char* name) {
  return py::make_tuple(textToPython(name), py::none(), py::none(), py::none());
}

}  // namespace

py::tuple bareInputsOf(const mat::INodeClass& nodeClass) {
  const size_t count = nodeClass.GetInputCount();
  py::tuple bare(count);
  for (size_t i = 0; i < count; ++i) {
    PyTuple_SET_ITEM(bare.ptr(), static_cast<Py_ssize_t>(i),
                     bareInput(nodeClass.GetInput(i)->GetName()).release().ptr());
  }
  return bare;
}

size_t InputNameCache::SlotOf(const mat::INodeClass* nodeClass) const {
  const auto address = reinterpret_cast<uintptr_t>(nodeClass);
  size_t slot = static_cast<size_t>((address >> 4) * 0x9E3779B97F4A7C15ull) & (slots_.size() - 1);
  while (slots_[slot].first != nullptr && slots_[slot].first != nodeClass) {
    slot = (slot + 1) & (slots_.size() - 1);
  }
  return slot;
}

py::handle InputNameCache::Find(const mat::INodeClass* nodeClass) const {
  if (slots_.empty()) return py::handle();
  const auto& slot = slots_[SlotOf(nodeClass)];
  return slot.first == nullptr ? py::handle() : py::handle(slot.second);
}

void InputNameCache::Insert(const mat::INodeClass* nodeClass, py::tuple names) {
  if (2 * (used_ + 1) > slots_.size()) {
    std::vector<std::pair<const mat::INodeClass*, py::tuple>> old(
        std::max<size_t>(64, 2 * slots_.size()));
    old.swap(slots_);
    used_ = 0;
    for (auto& [key, value] : old) {
      if (key != nullptr) Insert(key, std::move(value));
    }
  }
  auto& slot = slots_[SlotOf(nodeClass)];
  if (slot.first == nullptr) ++used_;
  slot = {nodeClass, std::move(names)};
}

py::handle cachedBareInputs(Library& library, const mat::INodeClass& nodeClass) {
  py::handle bare = library.bareInputs.Find(&nodeClass);
  if (!bare) {
    library.bareInputs.Insert(&nodeClass, bareInputsOf(nodeClass));
    bare = library.bareInputs.Find(&nodeClass);
  }
  return bare;
}

py::tuple nodeInputs(const mat::IGraphNode& node, py::handle bare, const py::object& owner) {
  const Py_ssize_t count = PyTuple_GET_SIZE(bare.ptr());
  py::tuple inputs(count);
  // The library's own nodes are read from their records directly, in order: a walk over
  // every input of a large library spends its time here.
  if (typeid(node) == typeid(mat::GraphNode)) {
    const std::vector<mat::NodeInput>& records = static_cast<const mat::GraphNode&>(node).Inputs();
    const Py_ssize_t known = std::min(count, static_cast<Py_ssize_t>(records.size()));
    Py_ssize_t i = 0;
    for (; i < known; ++i) {
      const mat::NodeInput& record = records[static_cast<size_t>(i)];
      PyTuple_SET_ITEM(
          inputs.ptr(), i,
          makeNodeInput(record.connected, record.sourceNode, record.sourceOutput,
                        record.defaultValue.Get(), PyTuple_GET_ITEM(bare.ptr(), i), owner));
    }
    for (; i < count; ++i) {
      PyTuple_SET_ITEM(inputs.ptr(), i, Py_NewRef(PyTuple_GET_ITEM(bare.ptr(), i)));
    }
    return inputs;
  }
  for (Py_ssize_t i = 0; i < count; ++i) {
    PyTuple_SET_ITEM(
        inputs.ptr(), i,
        makeNodeInput(node, static_cast<size_t>(i), PyTuple_GET_ITEM(bare.ptr(), i), owner));
  }
  return inputs;
}

py::object nodeInput(const mat::IGraphNode& node, const mat::INodeClass& nodeClass, py::handle key,
                     const py::object& owner) {
  const size_t count = nodeClass.GetInputCount();
  size_t index = 0;
  if (PyUnicode_Check(key.ptr())) {
    const std::string name = textFromPython(key);
    if (!nodeClass.FindInput(name.c_str(), &index)) {
      throw py::key_error("Node \"" + std::string(node.GetName()) + "\" has no input \"" + name +
                          "\"");
    }
  } else {
    index = positionFromPython(key, count, "Input");
  }
  const py::object bare = bareInput(nodeClass.GetInput(index)->GetName());
  return py::reinterpret_steal<py::object>(makeNodeInput(node, index, bare.ptr(), owner));
}

PortPathHandle::PortPathHandle(py::handle pathObject) : path(mat::createPortPath()) {
  try {
    if (py::isinstance<PortPath>(pathObject)) {
      const PortPath& source = pathObject.cast<const PortPath&>();
      for (size_t node : source.nodes) path->AppendNodeIndex(node);
      if (source.isInput) {
        path->SetInputPort(source.port.c_str());
      } else {
        path->SetOutputPort(source.port.c_str());
      }
      return;
    }
    if (PyUnicode_Check(pathObject.ptr()) || !PySequence_Check(pathObject.ptr())) {
      throw py::type_error("A port path is a PortPath or a sequence of node indices");
    }
    for (py::handle node : py::reinterpret_borrow<py::sequence>(pathObject)) {
      path->AppendNodeIndex(toSize(node));
    }
  } catch (...) {
    mat::releasePortPath(path);
    throw;
  }
}

PortPathHandle::~PortPathHandle() { mat::releasePortPath(path); }

void defineRecords(py::module_& module) {
  nodeKeyType = newRecordType(module, nodeKeyDesc, "NodeKey");
  resolutionType = newRecordType(module, resolutionDesc, "Resolution");

  py::class_<PortPath>(module, "PortPath",
                       "Names an input or output somewhere inside nested graphs: the node "
                       "indices leading down from a graph (outermost first) and the port at "
                       "the end. PortPath([3, 5], input=\"roughness\"); without a port name "
                       "it ends at the output with the empty name.")
      .def(py::init([](const std::vector<size_t>& nodes, py::object input, py::object output) {
             if (!input.is_none() && !output.is_none()) {
               throw py::value_error("A port path ends at an input or an output, not both");
             }
             PortPath path{nodes, "", !input.is_none()};
             if (!input.is_none()) path.port = textFromPython(input);
             if (!output.is_none()) path.port = textFromPython(output);
             return path;
           }),
           py::arg("nodes") = std::vector<size_t>(), py::kw_only(), py::arg("input") = py::none(),
           py::arg("output") = py::none())
      .def_property_readonly("nodes",
                             [](const PortPath& path) {
                               py::tuple nodes(path.nodes.size());
                               for (size_t i = 0; i < path.nodes.size(); ++i) {
                                 nodes[i] = py::int_(path.nodes[i]);
                               }
                               return nodes;
                             })
      .def_property_readonly("port_name",
                             [](const PortPath& path) { return textToPython(path.port.c_str()); })
      .def_property_readonly("is_input", [](const PortPath& path) { return path.isInput; })
      .def_property_readonly("is_output", [](const PortPath& path) { return !path.isInput; })
      .def("__eq__",
           [](const PortPath& a, const PortPath& b) {
             return a.nodes == b.nodes && a.port == b.port && a.isInput == b.isInput;
           })
      .def("__hash__",
           [](const PortPath& path) {
             py::tuple nodes(path.nodes.size());
             for (size_t i = 0; i < path.nodes.size(); ++i) nodes[i] = py::int_(path.nodes[i]);
             return py::hash(py::make_tuple(nodes, path.port, path.isInput));
           })
      .def("__repr__", &portPathRepr);
}

}  // namespace matgraph::python
