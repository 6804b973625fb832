#pragma once

/// @file
/// The exported free functions of matgraph. Every object that a create or load function
/// returns is the host's until it passes it to the matching release function, which
/// destroys it and ignores null.

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>

#include "mat/Common.h"
#include "mat/Export.h"
#include "mat/LoadDiagnostic.h"

namespace mat {

class IGraph;
class IGraphFactory;
class IGraphLibrary;
class IGraphResolver;
class INodeClass;
class IPortPath;
class ISemantic;
class IValue;

/// @name Identifiers
/// @{

/// @return A new random (version 4) identifier. Safe to call from many threads at once.
MAT_API UUID generateUUID();
/// Parses 36 characters 8-4-4-4-12 of hexadecimal digits of either case.
/// @return The identifier; the nil UUID for the empty text and for a text that does not
///     parse. @pre @p text is not null.
MAT_API UUID makeUUID(const char* text);
/// As makeUUID(const char*), with a failure signal.
/// @return True for the empty text (@p out becomes nil) and for a valid text; false for
///     any other text, leaving @p out nil. @pre @p text is not null.
MAT_API bool makeUUID(const char* text, UUID& out);
/// Writes the 36-character lower-case text form and a NUL into @p buffer.
/// @pre @p buffer holds at least 37 bytes.
MAT_API void UUIDToString(const UUID& uuid, char* buffer);
/// @return A hash of @p uuid for a host's hash tables. Only the first byte enters it.
MAT_API uint64_t hashUUID(const UUID& uuid);
/// @}

/// @name Libraries
/// @{

/// @return A new empty library under @p parent (may be null; must outlive the new
///     library) named @p name (null: the empty name). Release with releaseGraphLibrary().
MAT_API const IGraphLibrary* createGraphLibrary(const IGraphLibrary* parent, const char* name);
/// Destroys a library made by createGraphLibrary() or loadGraphLibrary(); null is ignored.
MAT_API void releaseGraphLibrary(const IGraphLibrary* library);
/// Reads a library file from @p text, which ends at its first NUL byte (@p size is not
/// used), under @p parent (may be null) with the name @p name (null: the empty name).
///
/// Malformed content never escapes: on failure the function writes one line on
/// std::wcerr (the exception's text) and returns null. A text that is not JSON, or whose
/// root is not an array, gives null and writes nothing. A syntax error inside the root
/// array loads what was read before it.
///
/// Several loads may run at the same time on different threads (each under a parent
/// that nobody changes meanwhile); the error lines then interleave as std::wcerr does.
///
/// Writing on std::wcerr gives the C stream stderr a wide orientation, after which
/// narrow output to stderr (std::cerr, fprintf) is lost. A host that also writes narrow
/// text there should use loadGraphLibraryWithDiagnostic(), which writes nothing.
/// @return The library, owned by the caller (release with releaseGraphLibrary()), or null.
/// @pre @p text is not null.
MAT_API const IGraphLibrary* loadGraphLibrary(const char* text, size_t size,
                                              const IGraphLibrary* parent, const char* name);
/// Loads as loadGraphLibrary() does, but writes nothing on std::wcerr: @p diagnostic
/// receives the outcome, the message and where the problem lies.
/// @return The library, owned by the caller, or null (see LoadDiagnostic::Outcome).
MAT_API const IGraphLibrary* loadGraphLibraryWithDiagnostic(const char* text, size_t size,
                                                            const IGraphLibrary* parent,
                                                            const char* name,
                                                            LoadDiagnostic& diagnostic);
/// Writes the library's own objects (nothing of its parents) as a library file on @p out,
/// in one piece, and flushes. The text is canonical: saving a loaded file gives the same
/// bytes. Nothing is written when an exception is thrown.
/// @throws InvalidDataAccess "Float value is not a number" for a NaN float element.
/// @pre @p library is not null.
MAT_API void saveGraphLibrary(const IGraphLibrary* library, std::ostream& out);
/// @}

/// @name Values
/// Each creation function copies @p count elements from the caller's array (which may be
/// null when @p count is 0) into a new value, owned by the caller until releaseValue().
/// With @p count 0 the value is an empty array of its kind, not ValueType::None.
/// @{

/// @return A new ValueType::Bool value of @p count elements.
MAT_API const IValue* createValueBool(const bool* values, size_t count);
/// @return A new ValueType::Int value of @p count elements.
MAT_API const IValue* createValueInt(const int* values, size_t count);
/// @return A new ValueType::Float value of @p count elements.
MAT_API const IValue* createValueFloat(const float* values, size_t count);
/// @return A new ValueType::UUID value of @p count elements.
MAT_API const IValue* createValueUUID(const UUID* values, size_t count);
/// @return A new ValueType::Semantic value of @p count elements. The pointers are copied,
///     not the semantics; each must outlive the value or be null.
MAT_API const IValue* createValueSemantic(const ISemantic* const* values, size_t count);
/// Destroys a value made by one of the functions above; null is ignored. Never pass a
/// value that another object holds.
MAT_API void releaseValue(const IValue* value);
/// @}

/// @name Signatures
/// @{

/// @return True when both have the same inputs and outputs in the same order, with the
///     same names and the same type objects. Defaults and the classes' names are not
///     compared. False when either argument is null.
MAT_API bool identicalSignatures(const INodeClass* a, const INodeClass* b);
/// @}

/// @name Graph factories
/// @{

/// @return A factory over a new empty graph named @p name (null: empty) with @p uuid
///     (nil: a random one), to be registered in @p library, which must be a library
///     made by this library and outlive the factory. Release with releaseGraphFactory().
MAT_API IGraphFactory* createNewGraphFactory(const IGraphLibrary* library, const char* name,
                                             UUID uuid);
/// @return A factory over a copy of @p graph (new UUIDs for the graph and its nodes,
///     the same classes, connections and defaults), to be registered in @p library.
///     The source never changes. Null when @p graph is empty or not a graph of this library.
MAT_API IGraphFactory* cloneNewGraphFactory(const IGraphLibrary* library,
                                            const std::shared_ptr<const IGraph>& graph);
/// Destroys a factory and its unfinished graph; null is ignored.
MAT_API void releaseGraphFactory(IGraphFactory* factory);
/// @}

/// @name Port paths
/// @{

/// @return A new empty path that ends at an output with the empty name. Release with
///     releasePortPath().
MAT_API IPortPath* createPortPath();
/// Destroys a path; null is ignored.
MAT_API void releasePortPath(const IPortPath* path);
/// @}

/// @name Resolvers
/// @{

/// @return A flattening resolver (@p flatten) or a one-level resolver over @p graph.
///     Release with releaseGraphResolver().
/// @pre @p graph is not null; it and every graph nested in it outlive the resolver.
MAT_API IGraphResolver* createGraphResolver(const IGraph* graph, bool flatten);
/// Destroys a resolver; null is ignored.
MAT_API void releaseGraphResolver(const IGraphResolver* resolver);
/// @}

}  // namespace mat
