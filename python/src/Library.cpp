// matgraph.Library, loading and saving, and the four read-only sequences of a library.
#include <sstream>

#include "Bindings.h"

namespace matgraph::python {

Library::Library(const mat::IGraphLibrary* library, py::object parent)
    : library(library), parent(std::move(parent)) {}

// The C++ library goes first; the members, and with them the parent, after it.
Library::~Library() { mat::releaseGraphLibrary(library); }

void Library::Borrow(const py::object& other) {
  if (other.is_none() || other.cast<const Library&>().library == library) return;
  for (const py::object& kept : borrowed) {
    if (kept.is(other)) return;
  }
  borrowed.push_back(other);
}

namespace {

const mat::IGraphLibrary* libraryOf(const py::object& owner) {
  return owner.cast<const Library&>().library;
}

// The parent argument: None or a Library.
const mat::IGraphLibrary* parentOf(const py::object& parent) {
  if (parent.is_none()) return nullptr;
  if (!py::isinstance<Library>(parent)) throw py::type_error("parent must be a Library or None");
  return libraryOf(parent);
}

// The C++ object that a Python object of kind Wrapper stands for; null for an object of
// another kind.
template <typename Wrapper>
const void* identityOf(py::handle object);
template <>
const void* identityOf<Type>(py::handle object) {
  return py::isinstance<Type>(object) ? object.cast<const Type&>().type : nullptr;
}
template <>
const void* identityOf<Semantic>(py::handle object) {
  const Semantic* semantic = semanticOf(object);
  return semantic != nullptr ? semantic->semantic : nullptr;
}
template <>
const void* identityOf<NodeClass>(py::handle object) {
  return py::isinstance<NodeClass>(object) ? object.cast<const NodeClass&>().nodeClass.get()
                                           : nullptr;
}
template <>
const void* identityOf<Graph>(py::handle object) {
  return py::isinstance<Graph>(object) ? object.cast<const Graph&>().nodeClass.get() : nullptr;
}

// What each of the four sequences reads from the library. Types have no name index, so
// they are found by name with a scan, the one registered last winning as elsewhere.
struct TypeItems {
  using Wrapper = Type;
  static constexpr const char* name = "Type";
  static constexpr const char* listName = "TypeList";
  static size_t Count(const mat::IGraphLibrary& library) { return library.GetTypeCount(); }
  static py::object At(const mat::IGraphLibrary& library, size_t index, const py::object& owner) {
    return wrapType(library.GetType(index), owner);
  }
  static py::object Find(const mat::IGraphLibrary& library, const mat::UUID& uuid,
                         const py::object& owner) {
    return wrapType(library.FindType(uuid, false), owner);
  }
  static py::object FindByName(const mat::IGraphLibrary& library, const std::string& name,
                               const py::object& owner) {
    for (size_t i = library.GetTypeCount(); i-- > 0;) {
      const mat::IType* type = library.GetType(i);
      if (!name.empty() && name == type->GetName()) return wrapType(type, owner);
    }
    return py::none();
  }
};

struct SemanticItems {
  using Wrapper = Semantic;
  static constexpr const char* name = "Semantic";
  static constexpr const char* listName = "SemanticList";
  static size_t Count(const mat::IGraphLibrary& library) { return library.GetSemanticCount(); }
  static py::object At(const mat::IGraphLibrary& library, size_t index, const py::object& owner) {
    return wrapSemantic(library.GetSemantic(index), owner);
  }
  static py::object Find(const mat::IGraphLibrary& library, const mat::UUID& uuid,
                         const py::object& owner) {
    return wrapSemantic(library.FindSemantic(uuid, false), owner);
  }
  static py::object FindByName(const mat::IGraphLibrary& library, const std::string& name,
                               const py::object& owner) {
    return wrapSemantic(library.FindSemanticByName(name.c_str()), owner);
  }
};

struct NodeClassItems {
  using Wrapper = NodeClass;
  static constexpr const char* name = "NodeClass";
  static constexpr const char* listName = "NodeClassList";
  static size_t Count(const mat::IGraphLibrary& library) { return library.GetNodeClassCount(); }
  static py::object At(const mat::IGraphLibrary& library, size_t index, const py::object& owner) {
    return wrapNodeClass(library.GetNodeClass(index), owner);
  }
  static py::object Find(const mat::IGraphLibrary& library, const mat::UUID& uuid,
                         const py::object& owner) {
    return wrapNodeClass(library.FindNodeClass(uuid, false), owner);
  }
  static py::object FindByName(const mat::IGraphLibrary& library, const std::string& name,
                               const py::object& owner) {
    return wrapNodeClass(library.FindNodeClassByName(name.c_str()), owner);
  }
};

struct GraphItems {
  using Wrapper = Graph;
  static constexpr const char* name = "Graph";
  static constexpr const char* listName = "GraphList";
  static size_t Count(const mat::IGraphLibrary& library) { return library.GetGraphCount(); }
  static py::object At(const mat::IGraphLibrary& library, size_t index, const py::object& owner) {
    return wrapGraph(library.GetGraph(index), owner);
  }
  static py::object Find(const mat::IGraphLibrary& library, const mat::UUID& uuid,
                         const py::object& owner) {
    return wrapGraph(library.FindGraph(uuid, false), owner);
  }
  static py::object FindByName(const mat::IGraphLibrary& library, const std::string& name,
                               const py::object& owner) {
    return wrapGraph(library.FindGraphByName(name.c_str()), owner);
  }
};

// One of the four sequences: a view of the library, never a copy.
template <typename Items>
struct ItemList {
  py::object owner;

  const mat::IGraphLibrary& Library() const { return *libraryOf(owner); }

  // The object for an index, a UUID or a name, or None when a UUID or name finds nothing.
  py::object Lookup(py::handle key) const {
    if (const mat::UUID* uuid = uuidOf(key)) return Items::Find(Library(), *uuid, owner);
    if (PyUnicode_Check(key.ptr())) return Items::FindByName(Library(), textFromPython(key), owner);
    if (PyLong_Check(key.ptr())) {
      return Items::At(Library(), positionFromPython(key, Items::Count(Library()), Items::name),
                       owner);
    }
    throw py::type_error(std::string(Items::listName) +
                         " indices are int, UUID (this library only) or str (a name)");
  }

  py::object GetItem(py::handle key) const {
    if (PySlice_Check(key.ptr())) {
      py::list items;
      size_t start = 0, stop = 0, step = 0, length = 0;
      if (!py::reinterpret_borrow<py::slice>(key).compute(Items::Count(Library()), &start, &stop,
                                                          &step, &length)) {
        throw py::error_already_set();
      }
      for (size_t i = 0; i < length; ++i, start += step) {
        items.append(Items::At(Library(), start, owner));
      }
      return items;
    }
    py::object found = Lookup(key);
    if (found.is_none()) {
      throw py::key_error(std::string("No ") + Items::name + " " + std::string(py::str(key)) +
                          " in this library");
    }
    return found;
  }

  bool Contains(py::handle item) const {
    if (const void* identity = identityOf<typename Items::Wrapper>(item)) {
      const size_t count = Items::Count(Library());
      for (size_t i = 0; i < count; ++i) {
        if (identityOf<typename Items::Wrapper>(Items::At(Library(), i, owner)) == identity) {
          return true;
        }
      }
      return false;
    }
    if (uuidOf(item) != nullptr || PyUnicode_Check(item.ptr())) {
      return !Lookup(item).is_none();
    }
    return false;
  }
};

// Makes the objects of a sequence one at a time: a loop over every graph then holds one
// graph (and its nodes) at a time, and the node objects of the last graph serve the next.
// The count is read once, as a tuple would have been.
template <typename Items>
struct ItemIterator {
  py::object owner;
  size_t next;
  size_t count;

  py::object Next() {
    if (next >= count) throw py::stop_iteration();
    return Items::At(*libraryOf(owner), next++, owner);
  }
};

template <typename Items>
void defineItemList(py::module_& module, const char* doc) {
  using List = ItemList<Items>;
  py::class_<List>(module, Items::listName, doc)
      .def("__len__", [](const List& list) { return Items::Count(list.Library()); })
      .def("__getitem__", &List::GetItem, py::arg("key"),
           "By position (negative from the end), slice, UUID (this library only, the object "
           "registered last) or name. Raises IndexError or KeyError when nothing is found.")
      .def(
          "get",
          [](const List& list, py::handle key, py::object otherwise) {
            py::object found = list.Lookup(key);
            return found.is_none() ? otherwise : found;
          },
          py::arg("key"), py::arg("default") = py::none(),
          "As [key] for a UUID or a name, but default when nothing is found.")
      .def("__contains__", &List::Contains, py::arg("item"))
      .def("__iter__",
           [](const List& list) {
             return ItemIterator<Items>{list.owner, 0, Items::Count(list.Library())};
           })
      .def("__repr__", [](const List& list) {
        return py::str("<matgraph.{} of {} in {!r}>")
            .format(Items::listName, Items::Count(list.Library()), list.owner);
      });
  using Iterator = ItemIterator<Items>;
  py::class_<Iterator>(module, (std::string(Items::listName) + "Iterator").c_str(),
                       "An iterator over the items of a library, made one at a time.")
      .def("__iter__", [](py::object self) { return self; })
      .def("__next__", &Iterator::Next);
}

// Reads a file named by a str or an os.PathLike (not by a file descriptor, as open() would).
std::string readFile(py::handle path) {
  py::object name = py::module_::import("os").attr("fspath")(path);
  py::object file = py::module_::import("builtins").attr("open")(name, "rb");
  py::bytes content = file.attr("read")();
  file.attr("close")();
  return content;
}

std::string textOf(py::handle text) {
  if (PyBytes_Check(text.ptr()) || PyByteArray_Check(text.ptr())) {
    return py::bytes(py::reinterpret_borrow<py::object>(text));
  }
  return textFromPython(text);
}

// Text for a str that starts like JSON (or holds nothing but white space); a path otherwise.
bool looksLikeText(py::handle pathOrText) {
  if (PyBytes_Check(pathOrText.ptr()) || PyByteArray_Check(pathOrText.ptr())) return true;
  if (!PyUnicode_Check(pathOrText.ptr())) return false;
  const std::string text = textFromPython(pathOrText);
  const size_t first = text.find_first_not_of(" \t\r\n");
  return first == std::string::npos || text[first] == '[' || text[first] == '{';
}

py::object loadText(const std::string& text, const py::object& parent, const std::string& name,
                    bool allowPartial) {
  const mat::IGraphLibrary* parentLibrary = parentOf(parent);
  mat::LoadDiagnostic diagnostic;
  const mat::IGraphLibrary* library = mat::loadGraphLibraryWithDiagnostic(
      text.c_str(), text.size(), parentLibrary, name.c_str(), diagnostic);
  if (library == nullptr) raiseLoadError(diagnostic);
  auto owned = std::make_unique<Library>(library, parent);
  if (diagnostic.outcome == mat::LoadDiagnostic::LoadedPartially && !allowPartial) {
    raiseLoadError(diagnostic);  // the partial library is released on the way out
  }
  owned->diagnostic = diagnostic;
  return py::cast(std::move(owned));
}

std::string saveText(const Library& library) {
  std::ostringstream out;
  mat::saveGraphLibrary(library.library, out);
  return std::move(out).str();
}

template <typename Find>
auto finder(Find find) {
  return [find](const py::object& self, py::handle uuid, bool searchParents) {
    return find(*libraryOf(self), uuidFromPython(uuid), searchParents, self);
  };
}

const char* const loadDoc =
    "Loads a library from a file or from text.\n\n"
    "path_or_text: a path (str or os.PathLike), or the text itself: bytes, or a str that "
    "starts with '[' or '{' (after white space). The text ends at its first NUL.\n"
    "parent: the Library whose types, semantics and node classes the text may use; the "
    "new library keeps it alive.\n"
    "name: the library's name.\n"
    "allow_partial: when a syntax error cuts the text short inside its root array, return "
    "what was read before it (load_diagnostic says where it stopped) instead of raising.\n\n"
    "Raises LoadError when the text is not a library, its content is malformed, or (unless "
    "allow_partial) it is cut short; OSError when the file cannot be read.";

}  // namespace

void defineLibrary(py::module_& module) {
  py::class_<Library>(module, "Library",
                      "A library of types, semantics, node classes and graphs, each kept in "
                      "registration order. Lookups by UUID may fall back along the parent "
                      "chain, nearest library first; when two objects of one kind share a "
                      "UUID or a name, the one registered last answers the lookups.\n\n"
                      "Every object reached through a library keeps it alive, and a library "
                      "keeps its parent alive.")
      .def(py::init([](py::object parent, py::handle name) {
             const mat::IGraphLibrary* parentLibrary = parentOf(parent);
             const std::string nameText = textFromPython(name);
             return std::make_unique<Library>(
                 mat::createGraphLibrary(parentLibrary, nameText.c_str()), parent);
           }),
           py::arg("parent") = py::none(), py::arg("name") = "",
           "A new empty library under parent (a Library or None).")
      .def_property_readonly(
          "name", [](const Library& library) { return textToPython(library.library->GetName()); })
      .def_property_readonly(
          "parent", [](const Library& library) { return library.parent; },
          "The parent Library, or None.")
      .def_property_readonly(
          "load_diagnostic",
          [](const Library& library) -> py::object {
            if (!library.diagnostic) return py::none();
            return makeLoadDiagnostic(*library.diagnostic);
          },
          "What the load found (a LoadDiagnostic), or None for a library made empty.")
      .def_property_readonly(
          "types", [](const py::object& self) { return ItemList<TypeItems>{self}; },
          "The library's own types (not its parents').")
      .def_property_readonly(
          "semantics", [](const py::object& self) { return ItemList<SemanticItems>{self}; },
          "The library's own semantics.")
      .def_property_readonly(
          "node_classes", [](const py::object& self) { return ItemList<NodeClassItems>{self}; },
          "The library's own node classes read from files (graphs are separate).")
      .def_property_readonly(
          "graphs", [](const py::object& self) { return ItemList<GraphItems>{self}; },
          "The library's own graphs, read from files or finished by a GraphFactory.")
      .def("find_type",
           finder([](const mat::IGraphLibrary& library, const mat::UUID& uuid, bool searchParents,
                     const py::object& self) {
             return wrapType(library.FindType(uuid, searchParents), self);
           }),
           py::arg("uuid"), py::arg("search_parents") = true,
           "The type registered last under uuid (a UUID or its text), or None. With "
           "search_parents, a library that lacks it asks its parent chain.")
      .def("find_semantic",
           finder([](const mat::IGraphLibrary& library, const mat::UUID& uuid, bool searchParents,
                     const py::object& self) {
             return wrapSemantic(library.FindSemantic(uuid, searchParents), self);
           }),
           py::arg("uuid"), py::arg("search_parents") = true, "As find_type(), for semantics.")
      .def("find_node_class",
           finder([](const mat::IGraphLibrary& library, const mat::UUID& uuid, bool searchParents,
                     const py::object& self) {
             return wrapNodeClass(library.FindNodeClass(uuid, searchParents), self);
           }),
           py::arg("uuid"), py::arg("search_parents") = true,
           "As find_type(), for node classes read from files.")
      .def("find_graph",
           finder([](const mat::IGraphLibrary& library, const mat::UUID& uuid, bool searchParents,
                     const py::object& self) {
             return wrapGraph(library.FindGraph(uuid, searchParents), self);
           }),
           py::arg("uuid"), py::arg("search_parents") = true, "As find_type(), for graphs.")
      .def("find_any_node_class",
           finder([](const mat::IGraphLibrary& library, const mat::UUID& uuid, bool searchParents,
                     const py::object& self) {
             return wrapNodeClass(library.FindAnyNodeClass(uuid, searchParents), self);
           }),
           py::arg("uuid"), py::arg("search_parents") = true,
           "Anything that can be the class of a node: in each library asked, a graph before "
           "a node class. A Graph or a NodeClass, or None.")
      .def(
          "dumps",
          [](const Library& library) {
            const std::string text = saveText(library);
            return textToPython(text.c_str());
          },
          "The library's own objects as library file text, exactly as the C++ library "
          "saves them. Raises InvalidDataAccessError for a NaN float.")
      .def(
          "save",
          [](const Library& library, py::handle path) {
            py::object name = py::module_::import("os").attr("fspath")(path);
            const std::string text = saveText(library);
            py::object file = py::module_::import("builtins").attr("open")(name, "wb");
            file.attr("write")(py::bytes(text));
            file.attr("close")();
          },
          py::arg("path"),
          "Writes dumps() to path byte for byte. Nothing is written when saving fails.")
      .def("__repr__", [](const Library& library) {
        return py::str(
                   "<matgraph.Library {!r}: {} types, {} semantics, {} node classes, "
                   "{} graphs>")
            .format(textToPython(library.library->GetName()), library.library->GetTypeCount(),
                    library.library->GetSemanticCount(), library.library->GetNodeClassCount(),
                    library.library->GetGraphCount());
      });

  defineItemList<TypeItems>(module, "The types of a library: a read-only sequence.");
  defineItemList<SemanticItems>(module, "The semantics of a library: a read-only sequence.");
  defineItemList<NodeClassItems>(module, "The node classes of a library: a read-only sequence.");
  defineItemList<GraphItems>(module, "The graphs of a library: a read-only sequence.");

  module.def(
      "load",
      [](py::handle pathOrText, py::object parent, py::handle name, bool allowPartial) {
        const std::string text =
            looksLikeText(pathOrText) ? textOf(pathOrText) : readFile(pathOrText);
        return loadText(text, parent, textFromPython(name), allowPartial);
      },
      py::arg("path_or_text"), py::arg("parent") = py::none(), py::arg("name") = "", py::kw_only(),
      py::arg("allow_partial") = false, loadDoc);
  module.def(
      "loads",
      [](py::handle text, py::object parent, py::handle name, bool allowPartial) {
        return loadText(textOf(text), parent, textFromPython(name), allowPartial);
      },
      py::arg("text"), py::arg("parent") = py::none(), py::arg("name") = "", py::kw_only(),
      py::arg("allow_partial") = false,
      "As load(), always from text (str or bytes), whatever it starts with.");
}

}  // namespace matgraph::python
