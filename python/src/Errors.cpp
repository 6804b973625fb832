// The exceptions of the module and the translation of the library's C++ exceptions.
//
//   Error                        base of everything the module raises on its own
//   ├── LoadError                a load refused the text (or read only part of it)
//   ├── InputFileParsingError    mat::InputFileParsingException, also a ValueError
//   ├── InvalidDataAccessError   mat::InvalidDataAccess, also a LookupError
//   └── ConnectionError          a graph factory operation failed; .code says how
//       ├── ConnectionNotFoundError, ConnectionNameInUseError,
//       └── ConnectionTypeMismatchError, ConnectionInvalidNodesError
//
// Other C++ exceptions keep pybind11's mapping (std::runtime_error and the rest become
// RuntimeError); every translated exception carries the C++ what() text unchanged.
#include <pybind11/stl.h>

#include "Bindings.h"

namespace matgraph::python {

namespace {

// Classes made once when the module loads; the module's attributes keep them alive.
py::handle errorClass;
py::handle loadErrorClass;
py::handle parsingErrorClass;
py::handle dataAccessErrorClass;
py::handle connectionErrorClass;
py::handle connectionCodeClasses[6];  // by ConnectionResult value; 0 and 3 unused

py::handle newExceptionClass(py::module_& module, const char* name, const char* doc,
                             py::handle bases) {
  const std::string qualified = std::string("matgraph.") + name;
  PyObject* type = PyErr_NewExceptionWithDoc(qualified.c_str(), doc, bases.ptr(), nullptr);
  if (type == nullptr) throw py::error_already_set();
  module.add_object(name, py::handle(type));  // kept, as the module is, for good
  return type;
}

const char* connectionResultName(mat::ConnectionResult code) {
  switch (code) {
    case mat::ConnectionOk:
      return "ConnectionOk";
    case mat::ConnectionNotFound:
      return "ConnectionNotFound";
    case mat::ConnectionNameInUse:
      return "ConnectionNameInUse";
    case mat::ConnectionTypeMismatch:
      return "ConnectionTypeMismatch";
    case mat::ConnectionInvalidNodes:
      return "ConnectionInvalidNodes";
  }
  return "ConnectionResult";
}

[[noreturn]] void raiseInstance(py::handle type, const py::object& instance) {
  PyErr_SetObject(type.ptr(), instance.ptr());
  throw py::error_already_set();
}

py::object optionalItemIndex(const mat::LoadDiagnostic& diagnostic) {
  if (!diagnostic.hasItem) return py::none();
  return py::int_(diagnostic.itemIndex);
}

py::object optionalItemUUID(const mat::LoadDiagnostic& diagnostic) {
  if (!diagnostic.hasItem || diagnostic.itemUUID == mat::UUID{}) return py::none();
  return py::cast(diagnostic.itemUUID);
}

void defineLoadDiagnostic(py::module_& module) {
  py::enum_<mat::LoadDiagnostic::Outcome>(module, "LoadOutcome",
                                          "How a load ended (LoadDiagnostic.outcome).")
      .value("Loaded", mat::LoadDiagnostic::Loaded, "the whole text was read")
      .value("LoadedPartially", mat::LoadDiagnostic::LoadedPartially,
             "a syntax error cut the text short inside the root array")
      .value("NotALibrary", mat::LoadDiagnostic::NotALibrary,
             "the text is not JSON or its root is not an array")
      .value("Refused", mat::LoadDiagnostic::Refused, "malformed content");

  py::class_<mat::LoadDiagnostic>(module, "LoadDiagnostic",
                                  "What a load found and where a problem lies.")
      .def_readonly("outcome", &mat::LoadDiagnostic::outcome)
      .def_property_readonly(
          "message", [](const mat::LoadDiagnostic& d) { return textToPython(d.message.c_str()); },
          "The error text: for Refused exactly the line the C++ loader writes on the "
          "error stream; for LoadedPartially and NotALibrary the parser's description.")
      .def_readonly("line", &mat::LoadDiagnostic::line,
                    "1-based line of a syntax error; 0 when there is none.")
      .def_readonly("column", &mat::LoadDiagnostic::column,
                    "1-based column of a syntax error; 0 when there is none.")
      .def_readonly("header_without_version", &mat::LoadDiagnostic::headerWithoutVersion,
                    "True when the text holds a header without \"fileversion\", so nothing "
                    "was read.")
      .def_property_readonly("item_index", &optionalItemIndex,
                             "For Refused: the index of the content item at fault, or None.")
      .def_property_readonly("item_uuid", &optionalItemUUID,
                             "For Refused: the UUID of the item at fault, or None when it "
                             "has none that could be read.")
      .def_readonly("json_path", &mat::LoadDiagnostic::jsonPath,
                    "For Refused: a JSON pointer to the member at fault, e.g. "
                    "\"/1/12/nodes/3/input/0/from\".")
      .def("__repr__", [](const mat::LoadDiagnostic& d) {
        return py::str("LoadDiagnostic(outcome={}, message={!r}, line={}, column={})")
            .format(py::cast(d.outcome), textToPython(d.message.c_str()), d.line, d.column);
      });
}

}  // namespace

py::object makeLoadDiagnostic(const mat::LoadDiagnostic& diagnostic) {
  return py::cast(diagnostic);
}

void raiseConnectionError(mat::ConnectionResult code, const std::string& message) {
  const int value = static_cast<int>(code);
  py::handle type = connectionErrorClass;
  if (value >= 0 && value < 6 && connectionCodeClasses[value]) type = connectionCodeClasses[value];
  py::object instance = type(textToPython((message + ": " + connectionResultName(code)).c_str()));
  instance.attr("code") = py::cast(code);
  raiseInstance(type, instance);
}

void raiseLoadError(const mat::LoadDiagnostic& diagnostic) {
  py::object instance = loadErrorClass(textToPython(diagnostic.message.c_str()));
  instance.attr("diagnostic") = makeLoadDiagnostic(diagnostic);
  instance.attr("outcome") = py::cast(diagnostic.outcome);
  instance.attr("line") = diagnostic.line;
  instance.attr("column") = diagnostic.column;
  instance.attr("item_index") = optionalItemIndex(diagnostic);
  instance.attr("item_uuid") = optionalItemUUID(diagnostic);
  instance.attr("json_path") = diagnostic.jsonPath;
  raiseInstance(loadErrorClass, instance);
}

void raiseError(const std::string& message) {
  PyErr_SetObject(errorClass.ptr(), textToPython(message.c_str()).ptr());
  throw py::error_already_set();
}

void setPythonError() {
  try {
    throw;
  } catch (py::error_already_set& error) {
    error.restore();
  } catch (const py::builtin_exception& error) {
    error.set_error();
  } catch (const mat::InvalidDataAccess& error) {
    PyErr_SetObject(dataAccessErrorClass.ptr(), textToPython(error.what()).ptr());
  } catch (const mat::InputFileParsingException& error) {
    PyErr_SetObject(parsingErrorClass.ptr(), textToPython(error.what()).ptr());
  } catch (const std::bad_alloc&) {
    PyErr_NoMemory();
  } catch (const std::exception& error) {
    PyErr_SetString(PyExc_RuntimeError, error.what());
  } catch (...) {
    PyErr_SetString(PyExc_RuntimeError, "Unknown C++ exception");
  }
}

void defineErrors(py::module_& module) {
  py::enum_<mat::ConnectionResult>(module, "ConnectionResult",
                                   "Result code of a graph factory operation.")
      .value("ConnectionOk", mat::ConnectionOk)
      .value("ConnectionNotFound", mat::ConnectionNotFound,
             "no input, output, node or index of that name or number")
      .value("ConnectionNameInUse", mat::ConnectionNameInUse, "the name is already taken")
      .value("ConnectionTypeMismatch", mat::ConnectionTypeMismatch, "types or signatures differ")
      .value("ConnectionInvalidNodes", mat::ConnectionInvalidNodes,
             "a node argument is missing or foreign, or source and target are the same node");
  defineLoadDiagnostic(module);

  errorClass =
      newExceptionClass(module, "Error", "Base of the errors matgraph raises.", PyExc_Exception);
  loadErrorClass = newExceptionClass(
      module, "LoadError",
      "A library text could not be loaded. str() is the message; the attributes outcome, "
      "line, column, item_index, item_uuid and json_path (and diagnostic, all of them) "
      "say where the problem lies.",
      errorClass);
  parsingErrorClass =
      newExceptionClass(module, "InputFileParsingError",
                        "Malformed content of a library file (C++ mat::InputFileParsingException).",
                        py::make_tuple(errorClass, py::handle(PyExc_ValueError)));
  dataAccessErrorClass = newExceptionClass(
      module, "InvalidDataAccessError",
      "A bad index, a node that is not in a graph or a path that cannot be followed (C++ "
      "mat::InvalidDataAccess).",
      py::make_tuple(errorClass, py::handle(PyExc_LookupError)));
  connectionErrorClass = newExceptionClass(
      module, "ConnectionError",
      "A graph factory operation failed and changed nothing; .code is its ConnectionResult.",
      errorClass);
  const struct {
    mat::ConnectionResult code;
    const char* name;
    const char* doc;
  } codeClasses[] = {
      {mat::ConnectionNotFound, "ConnectionNotFoundError",
       "No input, output, node or index of that name or number (ConnectionNotFound)."},
      {mat::ConnectionNameInUse, "ConnectionNameInUseError",
       "The name is already taken (ConnectionNameInUse)."},
      {mat::ConnectionTypeMismatch, "ConnectionTypeMismatchError",
       "Types or signatures differ (ConnectionTypeMismatch)."},
      {mat::ConnectionInvalidNodes, "ConnectionInvalidNodesError",
       "A node argument is missing or foreign, or source and target are the same node "
       "(ConnectionInvalidNodes)."},
  };
  for (const auto& codeClass : codeClasses) {
    py::handle type =
        newExceptionClass(module, codeClass.name, codeClass.doc, connectionErrorClass);
    type.attr("code") = py::cast(codeClass.code);
    connectionCodeClasses[codeClass.code] = type;
  }

  py::register_exception_translator([](std::exception_ptr thrown) {
    try {
      if (thrown) std::rethrow_exception(thrown);
    } catch (const mat::InvalidDataAccess& error) {
      PyErr_SetObject(dataAccessErrorClass.ptr(), textToPython(error.what()).ptr());
    } catch (const mat::InputFileParsingException& error) {
      PyErr_SetObject(parsingErrorClass.ptr(), textToPython(error.what()).ptr());
    }
  });
}

}  // namespace matgraph::python
