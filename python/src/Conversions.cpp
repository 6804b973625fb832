// Conversions that every part of the module uses: texts and positions.
#include <cstring>

#include "Bindings.h"

namespace matgraph::python {

py::str textToPython(const char* text) {
  PyObject* result =
      PyUnicode_DecodeUTF8(text, static_cast<Py_ssize_t>(std::strlen(text)), "surrogateescape");
  if (result == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(result);
}

std::string textFromPython(py::handle text) {
  if (!PyUnicode_Check(text.ptr())) {
    throw py::type_error("expected str, got " +
                         std::string(py::str(py::type::handle_of(text).attr("__name__"))));
  }
  PyObject* bytes = PyUnicode_AsEncodedString(text.ptr(), "utf-8", "surrogateescape");
  if (bytes == nullptr) throw py::error_already_set();
  std::string result(PyBytes_AS_STRING(bytes), static_cast<size_t>(PyBytes_GET_SIZE(bytes)));
  Py_DECREF(bytes);
  return result;
}

size_t positionFromPython(py::handle index, size_t count, const char* what) {
  if (!PyLong_Check(index.ptr())) {
    throw py::type_error(std::string(what) + " indices are int, not " +
                         std::string(py::str(py::type::handle_of(index).attr("__name__"))));
  }
  const Py_ssize_t position = PyLong_AsSsize_t(index.ptr());
  if (position == -1 && PyErr_Occurred()) throw py::error_already_set();
  const Py_ssize_t signedCount = static_cast<Py_ssize_t>(count);
  if (position >= signedCount || position < -signedCount) {
    throw py::index_error(std::string(what) + " index " + std::to_string(position) +
                          " out of range (count " + std::to_string(count) + ")");
  }
  return static_cast<size_t>(position < 0 ? position + signedCount : position);
}

}  // namespace matgraph::python
