#pragma once

// Python types written against the C API for the small immutable objects that a walk over a
// library makes by the thousand: nodes, semantics and UUIDs. A pybind11 instance costs a type
// lookup and an entry in pybind11's instance registry each time it is made, which was most of
// such a walk; an object of a RecordType is an allocation from a free list and the cost of
// its record's members.

#include <new>
#include <utility>

#include "Bindings.h"

namespace matgraph::python {

/// Runs @p body, which returns a py::object, for a slot of a C API type, and turns a C++
/// exception into the Python error it stands for.
template <typename Body>
PyObject* guarded(Body body) {
  try {
    return body().release().ptr();
  } catch (...) {
    setPythonError();
    return nullptr;
  }
}

/// The Python type whose objects each hold one @p Record. One type per record type; the
/// interpreter lock guards its free list.
template <typename Record>
class RecordType {
 public:
  struct Object {
    PyObject_HEAD Record record;
  };

  /// Makes the type from @p definition, whose basic size is sizeof(Object) and whose slots name
  /// Deallocate as the deallocator, and adds it to @p module under @p name.
  static void Define(py::module_& module, const char* name, PyType_Spec& definition) {
    PyObject* type = PyType_FromSpec(&definition);
    if (type == nullptr) throw py::error_already_set();
    type_ = reinterpret_cast<PyTypeObject*>(type);
    module.add_object(name, py::handle(type));
  }

  static PyTypeObject* Type() { return type_; }

  /// A new object holding the record made from @p arguments.
  template <typename... Arguments>
  static py::object Make(Arguments&&... arguments) {
    PyObject* object =
        freeCount_ > 0 ? PyObject_Init(freeList_[--freeCount_], type_) : type_->tp_alloc(type_, 0);
    if (object == nullptr) throw py::error_already_set();
    try {
      new (&reinterpret_cast<Object*>(object)->record)
          Record{std::forward<Arguments>(arguments)...};
    } catch (...) {
      PyTypeObject* type = Py_TYPE(object);
      type->tp_free(object);
      Py_DECREF(type);
      throw;
    }
    return py::reinterpret_steal<py::object>(object);
  }

  /// The record of an object of this type, or null for any other object.
  static const Record* Of(py::handle object) {
    return object && Py_TYPE(object.ptr()) == type_ ? &Get(object.ptr()) : nullptr;
  }

  /// The record of @p self, which is an object of this type.
  static const Record& Get(PyObject* self) { return reinterpret_cast<Object*>(self)->record; }

  /// The deallocator: keeps the memory for the next object while the free list has room.
  static void Deallocate(PyObject* self) {
    PyTypeObject* type = Py_TYPE(self);
    reinterpret_cast<Object*>(self)->record.~Record();
    if (freeCount_ < freeListCapacity) {
      freeList_[freeCount_++] = self;
    } else {
      type->tp_free(self);
    }
    Py_DECREF(type);
  }

 private:
  // A walk frees objects as fast as it makes them; the nodes of one graph are alive together.
  static constexpr size_t freeListCapacity = 1024;

  static inline PyTypeObject* type_ = nullptr;
  static inline PyObject* freeList_[freeListCapacity] = {};
  static inline size_t freeCount_ = 0;
};

/// The flags of a type whose objects only the module makes: calling the type raises
/// TypeError, and it cannot be subclassed.
inline constexpr unsigned int madeByTheModuleFlags =
    Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION;

}  // namespace matgraph::python
