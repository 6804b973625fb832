// matgraph.Resolver: follows node inputs upstream, through nested graphs or one level.
#include <deque>
#include <set>
#include <utility>

#include "Bindings.h"

namespace matgraph::python {

namespace {

struct Resolver {
  Resolver(py::object graphObject, bool flatten)
      : graphObject(std::move(graphObject)), flatten(flatten) {
    resolver = mat::createGraphResolver(Target().graph.get(), flatten);
  }
  ~Resolver() { mat::releaseGraphResolver(resolver); }
  Resolver(const Resolver&) = delete;
  Resolver& operator=(const Resolver&) = delete;

  const Graph& Target() const { return graphObject.cast<const Graph&>(); }

  py::object NodeAt(mat::NodeKey key) const {
    const mat::IGraphNode* node = resolver->GetNode(key);
    const Graph& graph = Target();
    return wrapNode(keepGraph(graph.graph), key.instance == 0 ? graph.graph.get() : nullptr, node,
                    key.node, graph.owner);
  }

  // The position of input @p input (an index or a name) of the node @p key names.
  size_t InputIndex(mat::NodeKey key, py::handle input) const {
    const std::shared_ptr<const mat::INodeClass> nodeClass = resolver->GetNodeClass(key);
    if (PyUnicode_Check(input.ptr())) {
      const std::string name = textFromPython(input);
      size_t index = 0;
      if (!nodeClass->FindInput(name.c_str(), &index)) {
        throw py::key_error("No input '" + name + "' in " + nodeClass->GetName());
      }
      return index;
    }
    return positionFromPython(input, nodeClass->GetInputCount(), "Input");
  }

  py::object Resolve(mat::NodeKey key, size_t input) {
    mat::NodeKey sourceKey{};
    size_t sourceOutput = 0;
    const mat::IValue* defaultValue = nullptr;
    if (resolver->ResolveInput(key, input, &sourceKey, &sourceOutput, &defaultValue)) {
      return makeResolution(makeNodeKey(sourceKey), py::int_(sourceOutput), py::none());
    }
    return makeResolution(py::none(), py::none(), valueToPython(defaultValue, Target().owner));
  }

  mat::IGraphResolver* resolver;
  py::object graphObject;
  bool flatten;
};

struct KeyOrder {
  bool operator()(const mat::NodeKey& a, const mat::NodeKey& b) const {
    return std::make_pair(a.instance, a.node) < std::make_pair(b.instance, b.node);
  }
};

// Walks upstream from one node, breadth first: each input of each node reached is resolved
// once, and each node whose output feeds one of them is visited once.
struct Upstream {
  py::object resolverObject;
  std::deque<std::pair<mat::NodeKey, size_t>> pending;  // inputs to resolve
  std::set<mat::NodeKey, KeyOrder> visited;

  void Visit(Resolver& resolver, mat::NodeKey key) {
    if (!visited.insert(key).second) return;
    const size_t count = resolver.resolver->GetNodeClass(key)->GetInputCount();
    for (size_t i = 0; i < count; ++i) pending.emplace_back(key, i);
  }

  py::object Next() {
    if (pending.empty()) throw py::stop_iteration();
    Resolver& resolver = resolverObject.cast<Resolver&>();
    const auto [key, input] = pending.front();
    pending.pop_front();
    py::object resolution = resolver.Resolve(key, input);
    // An input of the resolver's own graph ends the chain: its input node is no source.
    py::object source = resolution.attr("source");
    if (!source.is_none()) {
      const mat::NodeKey sourceKey = nodeKeyFromPython(source);
      if (resolver.resolver->GetNodeKind(sourceKey) != mat::GraphInputNode) {
        Visit(resolver, sourceKey);
      }
    }
    return py::make_tuple(makeNodeKey(key), input, resolution);
  }
};

py::object upstream(const py::object& self, py::handle keyObject, py::handle input) {
  Resolver& resolver = self.cast<Resolver&>();
  const mat::NodeKey key = nodeKeyFromPython(keyObject);
  Upstream walk{self, {}, {}};
  if (input.is_none()) {
    walk.Visit(resolver, key);
  } else {
    walk.visited.insert(key);
    walk.pending.emplace_back(key, resolver.InputIndex(key, input));
  }
  return py::cast(std::move(walk));
}

}  // namespace

void defineResolver(py::module_& module) {
  py::class_<Upstream>(module, "UpstreamWalk",
                       "Iterator made by Resolver.upstream(): (key, input, Resolution) for each "
                       "input it resolves.")
      .def("__iter__", [](const py::object& self) { return self; })
      .def("__next__", &Upstream::Next);

  py::class_<Resolver>(
      module, "Resolver",
      "Answers questions about the nodes of one graph. A flattening resolver (flatten=True) "
      "treats every nested graph as expanded in place: each instance of a nested graph gets "
      "its number the first time an operation reaches it. A one-level resolver treats a "
      "nested-graph node like any other node and uses instance 0 only.\n\n"
      "Nodes are named by NodeKey(instance, node); wherever a key is expected, a pair or a "
      "node index of the resolver's own graph will do. The resolver keeps its graph alive.")
      .def(py::init([](const py::object& graph, bool flatten) {
             if (!py::isinstance<Graph>(graph)) throw py::type_error("graph must be a Graph");
             return std::make_unique<Resolver>(graph, flatten);
           }),
           py::arg("graph"), py::arg("flatten") = true)
      .def_property_readonly("graph", [](const Resolver& self) { return self.graphObject; })
      .def_property_readonly("flatten", [](const Resolver& self) { return self.flatten; })
      .def(
          "key",
          [](const Resolver& self, size_t node) {
            return makeNodeKey(self.resolver->GetKeyFromNodeIndex(node));
          },
          py::arg("node"), "NodeKey(0, node): a node of the resolver's own graph.")
      .def(
          "key_from_path",
          [](const Resolver& self, py::handle path) {
            PortPathHandle handle(path);
            return makeNodeKey(self.resolver->GetKeyFromPath(*handle.path));
          },
          py::arg("path"),
          "The key of the last node of a PortPath (or a sequence of node indices); its port "
          "is ignored, and a path without nodes gives NodeKey(0, 0). Raises RuntimeError "
          "\"Can't drill into non-graph node!\" when a position after the first follows a "
          "node that is not a graph, and on a one-level resolver.")
      .def(
          "flat_index",
          [](const Resolver& self, py::handle key) {
            return self.resolver->GetFlatIndex(nodeKeyFromPython(key));
          },
          py::arg("key"), "The node's number in the flattened view.")
      .def(
          "node",
          [](const Resolver& self, py::handle key) { return self.NodeAt(nodeKeyFromPython(key)); },
          py::arg("key"), "The Node that key names.")
      .def(
          "is_in_root_graph",
          [](const Resolver& self, py::handle key) {
            return self.resolver->IsInRootGraph(nodeKeyFromPython(key));
          },
          py::arg("key"))
      .def(
          "node_kind",
          [](const Resolver& self, py::handle key) {
            return self.resolver->GetNodeKind(nodeKeyFromPython(key));
          },
          py::arg("key"))
      .def(
          "node_class",
          [](const Resolver& self, py::handle key) {
            return wrapNodeClass(self.resolver->GetNodeClass(nodeKeyFromPython(key)),
                                 self.Target().owner, self.Target().graph);
          },
          py::arg("key"))
      .def(
          "resolve_input",
          [](Resolver& self, py::handle keyObject, py::handle input) {
            const mat::NodeKey key = nodeKeyFromPython(keyObject);
            return self.Resolve(key, self.InputIndex(key, input));
          },
          py::arg("key"), py::arg("input"),
          "Follows input (a position or a name) of the node key upstream until it reaches an "
          "output of an ordinary node (one-level: of any node) or an input of the resolver's "
          "own graph. Returns Resolution(source, output, default): the source key and output "
          "index, or, when the chain ends at an unconnected input, the default that applies.")
      .def(
          "resolve_output",
          [](Resolver& self, py::handle output) {
            const mat::NodeKey key =
                self.resolver->GetKeyFromNodeIndex(self.Target().graph->GetOutputNodeIndex());
            return self.Resolve(key, self.InputIndex(key, output));
          },
          py::arg("output"),
          "resolve_input() of the output node: what feeds a graph output (position or name).")
      .def("upstream", &upstream, py::arg("key"), py::arg("input") = py::none(),
           "Walks upstream from the node key, breadth first: yields (key, input, Resolution) "
           "for every input of that node (or only for input, a position or a name) and then "
           "for every input of each node found as a source, each node once. A source that "
           "is an input of the resolver's own graph ends its chain.");
}

}  // namespace matgraph::python
