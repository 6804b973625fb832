// Values between C++ and Python: an IValue is a Python list of its elements.
//
// Values going in are built as the library's own Value class (linked in statically),
// since the exported functions cannot make a string value.
#include <climits>
#include <type_traits>
#include <typeinfo>
#include <variant>

#include "Bindings.h"
#include "model/Value.h"

namespace matgraph::python {

namespace {

struct KindKeyword {
  mat::ValueType kind;
  const char* keyword;
};

const KindKeyword kindKeywords[] = {
    {mat::ValueType::Bool, "bool"},     {mat::ValueType::Int, "int"},
    {mat::ValueType::Float, "float"},   {mat::ValueType::UUID, "uuid"},
    {mat::ValueType::String, "string"}, {mat::ValueType::Semantic, "semantic"},
};

const char* keywordOf(mat::ValueType kind) {
  for (const KindKeyword& entry : kindKeywords) {
    if (entry.kind == kind) return entry.keyword;
  }
  return "none";
}

// The elements of a Value, read from its storage rather than one virtual call per element:
// defaults are most of what a walk over node inputs converts.
struct StorageToPython {
  const py::object& owner;

  PyObject* operator()(bool element) const { return Py_NewRef(element ? Py_True : Py_False); }
  PyObject* operator()(int32_t element) const { return PyLong_FromLong(element); }
  PyObject* operator()(float element) const {
    return PyFloat_FromDouble(static_cast<double>(element));
  }
  PyObject* operator()(const mat::UUID& element) const {
    return makeUUIDObject(element).release().ptr();
  }
  PyObject* operator()(const std::string& element) const {
    return textToPython(element.c_str()).release().ptr();
  }
  PyObject* operator()(const mat::Value::SemanticElement& element) const {
    return wrapSemantic(element.object, owner).release().ptr();
  }
};

py::object storageToPython(const mat::Value::Storage& storage, const py::object& owner) {
  return std::visit(
      [&](const auto& elements) -> py::object {
        if constexpr (std::is_same_v<std::decay_t<decltype(elements)>, std::monostate>) {
          return py::list();
        } else {
          const StorageToPython convert{owner};
          py::list list(elements.size());
          Py_ssize_t position = 0;
          for (const auto& element : elements) {
            PyObject* item = convert(element);
            if (item == nullptr) throw py::error_already_set();
            PyList_SET_ITEM(list.ptr(), position++, item);
          }
          return list;
        }
      },
      storage);
}

bool isBool(py::handle item) { return PyBool_Check(item.ptr()); }
bool isInt(py::handle item) { return PyLong_Check(item.ptr()) && !PyBool_Check(item.ptr()); }
bool isNumber(py::handle item) { return isInt(item) || PyFloat_Check(item.ptr()); }
bool isText(py::handle item) { return PyUnicode_Check(item.ptr()); }
bool isUUID(py::handle item) { return uuidOf(item) != nullptr; }
bool isSemantic(py::handle item) { return item.is_none() || semanticOf(item) != nullptr; }

template <typename Test>
bool all(const std::vector<py::handle>& items, Test test) {
  for (py::handle item : items) {
    if (!test(item)) return false;
  }
  return true;
}

mat::ValueType inferKind(const std::vector<py::handle>& items) {
  if (items.empty()) {
    throw py::type_error("The kind of an empty value is not known; give kind= (\"float\", ...)");
  }
  if (all(items, isBool)) return mat::ValueType::Bool;
  if (all(items, isInt)) return mat::ValueType::Int;
  if (all(items, isNumber)) return mat::ValueType::Float;
  if (all(items, isText)) return mat::ValueType::String;
  if (all(items, isUUID)) return mat::ValueType::UUID;
  if (all(items, isSemantic)) return mat::ValueType::Semantic;
  throw py::type_error(
      "The elements of a value are all bool, all int or float, all str, all UUID or all "
      "Semantic");
}

[[noreturn]] void wrongElement(mat::ValueType kind, size_t index, py::handle item) {
  throw py::type_error("Element " + std::to_string(index) + " of a value of kind " +
                       keywordOf(kind) + " cannot be " +
                       std::string(py::str(py::type::handle_of(item).attr("__name__"))));
}

template <typename Element, typename Convert>
std::vector<Element> convertAll(const std::vector<py::handle>& items, Convert convert) {
  std::vector<Element> elements;
  elements.reserve(items.size());
  for (size_t i = 0; i < items.size(); ++i) elements.push_back(convert(i, items[i]));
  return elements;
}

mat::Value::Storage convert(mat::ValueType kind, const std::vector<py::handle>& items,
                            std::vector<py::object>* libraries) {
  switch (kind) {
    case mat::ValueType::Bool:
      return convertAll<bool>(items, [&](size_t i, py::handle item) {
        if (!isBool(item)) wrongElement(kind, i, item);
        return item.ptr() == Py_True;
      });
    case mat::ValueType::Int:
      return convertAll<int32_t>(items, [&](size_t i, py::handle item) {
        if (!isInt(item)) wrongElement(kind, i, item);
        const long long number = PyLong_AsLongLong(item.ptr());
        if (PyErr_Occurred()) throw py::error_already_set();
        if (number < INT32_MIN || number > INT32_MAX) {
          throw py::value_error("Element " + std::to_string(i) +
                                " is beyond the range of a 32-bit int");
        }
        return static_cast<int32_t>(number);
      });
    case mat::ValueType::Float:
      return convertAll<float>(items, [&](size_t i, py::handle item) {
        if (!isNumber(item)) wrongElement(kind, i, item);
        const double number = PyFloat_AsDouble(item.ptr());
        if (PyErr_Occurred()) throw py::error_already_set();
        return mat::roundToFloat(number);
      });
    case mat::ValueType::UUID:
      return convertAll<mat::UUID>(items, [&](size_t i, py::handle item) {
        if (!isText(item) && !isUUID(item)) wrongElement(kind, i, item);
        return uuidFromPython(item);
      });
    case mat::ValueType::String:
      return convertAll<std::string>(items, [&](size_t i, py::handle item) {
        if (!isText(item)) wrongElement(kind, i, item);
        return textFromPython(item);
      });
    case mat::ValueType::Semantic:
      return convertAll<mat::Value::SemanticElement>(items, [&](size_t i, py::handle item) {
        if (!isSemantic(item)) wrongElement(kind, i, item);
        if (item.is_none()) return mat::Value::SemanticElement();
        const Semantic& semantic = *semanticOf(item);
        if (libraries != nullptr) libraries->push_back(semantic.owner);
        return mat::Value::SemanticElement(semantic.semantic);
      });
    case mat::ValueType::None:
      break;
  }
  throw py::value_error("A value needs an element kind");
}

}  // namespace

py::object valueToPython(const mat::IValue* value, const py::object& owner) {
  if (value == nullptr) return py::none();
  // Every value this module reaches is the library's own Value; any other is copied into one.
  if (typeid(*value) == typeid(mat::Value)) {
    return storageToPython(static_cast<const mat::Value*>(value)->GetStorage(), owner);
  }
  return storageToPython(mat::Value::CopyOf(*value).GetStorage(), owner);
}

mat::ValueType valueTypeFromKeyword(const std::string& keyword) {
  for (const KindKeyword& entry : kindKeywords) {
    if (keyword == entry.keyword) return entry.kind;
  }
  throw py::value_error("Unknown value kind \"" + keyword +
                        "\" (bool, int, float, uuid, string or semantic)");
}

std::unique_ptr<const mat::IValue> valueFromPython(py::handle elements,
                                                   std::optional<mat::ValueType> kind,
                                                   std::optional<mat::ValueType> fallback,
                                                   std::vector<py::object>* libraries) {
  std::vector<py::handle> items;
  if (PyList_Check(elements.ptr()) || PyTuple_Check(elements.ptr())) {
    for (py::handle item : py::reinterpret_borrow<py::sequence>(elements)) items.push_back(item);
  } else {
    items.push_back(elements);
  }
  mat::ValueType chosen = kind ? *kind : fallback ? *fallback : inferKind(items);
  return std::make_unique<mat::Value>(convert(chosen, items, libraries));
}

}  // namespace matgraph::python
