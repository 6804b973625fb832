// matgraph.UUID, a RecordType: defaults of UUID values make one per element, and lookups
// by UUID take one. pybind11 converts mat::UUID to and from it (see Bindings.h).
#include <cstring>

#include "Bindings.h"
#include "RecordType.h"

namespace matgraph::python {

namespace {

using UUIDType = RecordType<mat::UUID>;

const mat::UUID& uuidRecord(PyObject* self) { return UUIDType::Get(self); }

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

std::string typeName(py::handle object) {
  return py::str(py::type::handle_of(object).attr("__name__"));
}

// UUID(), UUID(text) or UUID(uuid), the argument given by position or by name.
PyObject* newUUID(PyTypeObject*, PyObject* arguments, PyObject* keywords) {
  return guarded([&] {
    const Py_ssize_t positional = PyTuple_GET_SIZE(arguments);
    const Py_ssize_t named = keywords != nullptr ? PyDict_GET_SIZE(keywords) : 0;
    if (positional + named > 1) {
      throw py::type_error("UUID() takes at most one argument (" +
                           std::to_string(positional + named) + " given)");
    }
    py::handle source;
    if (positional == 1) {
      source = PyTuple_GET_ITEM(arguments, 0);
    } else if (named == 1) {
      PyObject* key = nullptr;
      PyObject* value = nullptr;
      Py_ssize_t position = 0;
      PyDict_Next(keywords, &position, &key, &value);
      const std::string name = textFromPython(key);
      if (name != "text" && name != "uuid") {
        throw py::type_error("UUID() got an unexpected keyword argument '" + name + "'");
      }
      source = value;
    }
    if (!source) return UUIDType::Make();
    if (const mat::UUID* uuid = UUIDType::Of(source)) return UUIDType::Make(*uuid);
    if (!PyUnicode_Check(source.ptr())) {
      throw py::type_error("UUID() takes a str or a UUID, not " + typeName(source));
    }
    return UUIDType::Make(parseUUID(textFromPython(source)));
  });
}

PyObject* generate(PyObject*, PyObject*) {
  return guarded([] { return UUIDType::Make(mat::generateUUID()); });
}

PyObject* fromBytes(PyObject*, PyObject* data) {
  return guarded([&] {
    if (!PyBytes_Check(data))
      throw py::type_error("from_bytes() takes bytes, not " + typeName(data));
    if (PyBytes_GET_SIZE(data) != 16) {
      throw py::value_error("A UUID is 16 bytes, not " + std::to_string(PyBytes_GET_SIZE(data)));
    }
    mat::UUID uuid{};
    std::memcpy(uuid.bytes, PyBytes_AS_STRING(data), 16);
    return UUIDType::Make(uuid);
  });
}

PyObject* reduce(PyObject* self, PyObject*) {
  return guarded([&] {
    return py::object(py::make_tuple(py::handle(reinterpret_cast<PyObject*>(UUIDType::Type())),
                                     py::make_tuple(uuidText(uuidRecord(self)))));
  });
}

PyObject* getBytes(PyObject* self, void*) {
  return PyBytes_FromStringAndSize(reinterpret_cast<const char*>(uuidRecord(self).bytes), 16);
}

PyObject* getIsNil(PyObject* self, void*) {
  return PyBool_FromLong(uuidRecord(self) == mat::UUID{});
}

int isNotNil(PyObject* self) { return uuidRecord(self) != mat::UUID{}; }

PyObject* compare(PyObject* self, PyObject* other, int operation) {
  const mat::UUID* that = UUIDType::Of(other);
  if (that == nullptr) Py_RETURN_NOTIMPLEMENTED;
  const mat::UUID& a = uuidRecord(self);
  const mat::UUID& b = *that;
  bool result = false;
  switch (operation) {
    case Py_EQ:
      result = a == b;
      break;
    case Py_NE:
      result = a != b;
      break;
    case Py_LT:
      result = a < b;
      break;
    case Py_LE:
      result = !(b < a);
      break;
    case Py_GT:
      result = b < a;
      break;
    case Py_GE:
      result = !(a < b);
      break;
    default:
      Py_RETURN_NOTIMPLEMENTED;
  }
  return PyBool_FromLong(result);
}

Py_hash_t hash(PyObject* self) {
  const mat::UUID& uuid = uuidRecord(self);
  uint64_t high = 0;
  uint64_t low = 0;
  std::memcpy(&high, uuid.bytes, 8);
  std::memcpy(&low, uuid.bytes + 8, 8);
  const auto value = static_cast<Py_hash_t>(high ^ (low * 0x9E3779B97F4A7C15ull));
  return value == -1 ? -2 : value;
}

PyObject* toText(PyObject* self) {
  return guarded([&] { return py::object(py::str(uuidText(uuidRecord(self)))); });
}

PyObject* represent(PyObject* self) {
  return guarded(
      [&] { return py::object(py::str("matgraph.UUID('" + uuidText(uuidRecord(self)) + "')")); });
}

PyMethodDef uuidMethods[] = {
    {"generate", generate, METH_NOARGS | METH_STATIC,
     "generate()\n--\n\nA new random (version 4) UUID."},
    {"from_bytes", fromBytes, METH_O | METH_STATIC,
     "from_bytes(data)\n--\n\nThe UUID whose 16 bytes, in text order, are data."},
    {"__reduce__", reduce, METH_NOARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyGetSetDef uuidProperties[] = {
    {"bytes", getBytes, nullptr, "The 16 bytes in text order.", nullptr},
    {"is_nil", getIsNil, nullptr, "True for the nil UUID.", nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyType_Slot uuidSlots[] = {
    {Py_tp_new, reinterpret_cast<void*>(newUUID)},
    {Py_tp_dealloc, reinterpret_cast<void*>(UUIDType::Deallocate)},
    {Py_tp_methods, uuidMethods},
    {Py_tp_getset, uuidProperties},
    {Py_tp_richcompare, reinterpret_cast<void*>(compare)},
    {Py_tp_hash, reinterpret_cast<void*>(hash)},
    {Py_tp_str, reinterpret_cast<void*>(toText)},
    {Py_tp_repr, reinterpret_cast<void*>(represent)},
    {Py_nb_bool, reinterpret_cast<void*>(isNotNil)},
    {Py_tp_doc,
     const_cast<char*>("UUID(text='')\n--\n\n"
                       "A 128-bit identifier. UUID() and UUID('') are the nil UUID, which "
                       "stands for \"none\"; UUID(text) parses 8-4-4-4-12 hexadecimal digits "
                       "of either case and raises ValueError for any other text; UUID(uuid) "
                       "copies a UUID. Hashable, "
                       "ordered as the library orders its indexes (the order of the lower-case "
                       "texts), printed in lower case.")},
    {0, nullptr},
};

PyType_Spec uuidSpec = {"matgraph.UUID", sizeof(UUIDType::Object), 0, Py_TPFLAGS_DEFAULT,
                        uuidSlots};

}  // namespace

py::object makeUUIDObject(const mat::UUID& uuid) { return UUIDType::Make(uuid); }

const mat::UUID* uuidOf(py::handle object) { return UUIDType::Of(object); }

mat::UUID uuidFromPython(py::handle uuid) {
  if (const mat::UUID* value = UUIDType::Of(uuid)) return *value;
  if (PyUnicode_Check(uuid.ptr())) return parseUUID(textFromPython(uuid));
  throw py::type_error("expected UUID or str, got " + typeName(uuid));
}

void defineUUID(py::module_& module) { UUIDType::Define(module, "UUID", uuidSpec); }

}  // namespace matgraph::python
