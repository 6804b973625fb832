// The extension module matgraph._matgraph; the package matgraph re-exports all of it.
#include "Bindings.h"

namespace matgraph::python {
namespace {

const mat::INodeClass& signatureArgument(py::handle nodeClass) {
  if (!py::isinstance<NodeClass>(nodeClass)) {
    throw py::type_error("identical_signatures() compares NodeClass or Graph objects");
  }
  return *nodeClass.cast<const NodeClass&>().nodeClass;
}

}  // namespace
}  // namespace matgraph::python

PYBIND11_MODULE(_matgraph, module) {
  using namespace matgraph::python;
  module.doc() =
      "Node graphs and their library files: load libraries, query their types, semantics, "
      "node classes and graphs, build and edit graphs, resolve inputs through nested graphs "
      "and save libraries as the C++ library does.";
  defineErrors(module);
  defineUUID(module);
  defineRecords(module);
  defineLibrary(module);
  defineItems(module);
  defineNode(module);
  defineFactory(module);
  defineResolver(module);
  module.def(
      "identical_signatures",
      [](py::handle a, py::handle b) {
        return mat::identicalSignatures(&signatureArgument(a), &signatureArgument(b));
      },
      py::arg("a"), py::arg("b"),
      "True when both have the same inputs and outputs in the same order, with the same "
      "names and the same Type objects; defaults and the classes' names do not count.");

  // Everything shows as matgraph.X, where the package re-exports it.
  for (py::handle name : module.attr("__dict__").attr("keys")()) {
    py::object value = module.attr(name);
    if (PyType_Check(value.ptr()) &&
        py::str(value.attr("__module__")).cast<std::string>() == "matgraph._matgraph") {
      value.attr("__module__") = "matgraph";
    }
  }
}
