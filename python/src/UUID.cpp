// matgraph.UUID.
#include <cstring>

#include "Bindings.h"

namespace matgraph::python {

namespace {

mat::UUID parseUUID(const std::string& text) {
  mat::UUID uuid{};
  if (text.find('\0') != std::string::npos || !mat::makeUUID(text.c_str(), uuid)) {
    throw py::value_error("Invalid UUID text: '" + text + "'");
  }
  return uuid;
}

std::string uuidText(const mat::UUID& uuid) {
  char buffer[37];
  mat::UUIDToString(uuid, buffer);
  return buffer;
}

}  // namespace

mat::UUID uuidFromPython(py::handle uuid) {
  if (py::isinstance<mat::UUID>(uuid)) return uuid.cast<mat::UUID>();
  if (PyUnicode_Check(uuid.ptr())) return parseUUID(textFromPython(uuid));
  throw py::type_error("expected UUID or str, got " +
                       std::string(py::str(py::type::handle_of(uuid).attr("__name__"))));
}

void defineUUID(py::module_& module) {
  py::class_<mat::UUID>(module, "UUID",
                        "A 128-bit identifier. UUID() and UUID('') are the nil UUID, which "
                        "stands for \"none\"; UUID(text) parses 8-4-4-4-12 hexadecimal digits "
                        "of either case. Hashable, ordered as the library orders its indexes "
                        "(the order of the lower-case texts), printed in lower case.")
      .def(py::init([](const std::string& text) { return parseUUID(text); }), py::arg("text") = "",
           "Raises ValueError when the text is not a UUID.")
      .def(py::init([](const mat::UUID& other) { return other; }), py::arg("uuid"))
      .def_static("generate", &mat::generateUUID, "A new random (version 4) UUID.")
      .def_static(
          "from_bytes",
          [](const py::bytes& bytes) {
            const std::string raw = bytes;
            if (raw.size() != 16)
              throw py::value_error("A UUID is 16 bytes, not " + std::to_string(raw.size()));
            mat::UUID uuid{};
            std::memcpy(uuid.bytes, raw.data(), 16);
            return uuid;
          },
          py::arg("data"), "The UUID whose 16 bytes, in text order, are data.")
      .def_property_readonly(
          "bytes",
          [](const mat::UUID& uuid) {
            return py::bytes(reinterpret_cast<const char*>(uuid.bytes), 16);
          },
          "The 16 bytes in text order.")
      .def_property_readonly(
          "is_nil", [](const mat::UUID& uuid) { return uuid == mat::UUID{}; },
          "True for the nil UUID.")
      .def("__bool__", [](const mat::UUID& uuid) { return uuid != mat::UUID{}; })
      .def("__str__", &uuidText)
      .def("__repr__",
           [](const mat::UUID& uuid) { return "matgraph.UUID('" + uuidText(uuid) + "')"; })
      .def("__hash__",
           [](const mat::UUID& uuid) {
             uint64_t high = 0;
             uint64_t low = 0;
             std::memcpy(&high, uuid.bytes, 8);
             std::memcpy(&low, uuid.bytes + 8, 8);
             return static_cast<size_t>(high ^ (low * 0x9E3779B97F4A7C15ull));
           })
      .def(
          "__eq__", [](const mat::UUID& a, const mat::UUID& b) { return a == b; },
          py::is_operator())
      .def(
          "__ne__", [](const mat::UUID& a, const mat::UUID& b) { return a != b; },
          py::is_operator())
      .def(
          "__lt__", [](const mat::UUID& a, const mat::UUID& b) { return a < b; }, py::is_operator())
      .def(
          "__le__", [](const mat::UUID& a, const mat::UUID& b) { return !(b < a); },
          py::is_operator())
      .def(
          "__gt__", [](const mat::UUID& a, const mat::UUID& b) { return b < a; }, py::is_operator())
      .def(
          "__ge__", [](const mat::UUID& a, const mat::UUID& b) { return !(a < b); },
          py::is_operator())
      .def(py::pickle(
          [](const mat::UUID& uuid) { return py::make_tuple(uuidText(uuid)); },
          [](const py::tuple& state) { return parseUUID(state[0].cast<std::string>()); }));
}

}  // namespace matgraph::python
