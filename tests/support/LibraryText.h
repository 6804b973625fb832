#pragma once

// Library files for tests: loading and saving through the exported functions, short
// UUID tokens for readable JSON, and a valid library that uses every part of the format.

#include <memory>
#include <string>
#include <vector>

#include "mat/Functions.h"
#include "mat/IGraphLibrary.h"

// The names live in their own namespace: other test helpers have their own loadLibrary().
namespace mat::test::files {

struct LibraryRelease {
  void operator()(const IGraphLibrary* library) const { releaseGraphLibrary(library); }
};
using LibraryHandle = std::unique_ptr<const IGraphLibrary, LibraryRelease>;

// loadGraphLibrary() of `text` up to its first NUL.
LibraryHandle loadLibrary(const std::string& text, const IGraphLibrary* parent = nullptr,
                          const char* name = "test");

// The text that saveGraphLibrary() writes for `library`.
std::string saveLibrary(const IGraphLibrary& library);

// Replaces each token "$" letter digits by a fixed UUID, so that test JSON stays short:
// "$t1" is 7e000000-0000-0000-0000-000000000001; the letter picks the first two digits
// (t type 7e, s semantic 5e, c node class c1, g graph 9a, n node 0d) and the digits end it.
std::string withUUIDs(std::string text);

// The text form of a token of withUUIDs(), e.g. uuidOf("$n2").
std::string uuidOf(const std::string& token);

// Turns each pair of blanks at the start of a line into a tab, so that the expected text
// of a saved file can be written indented.
std::string withTabs(const std::string& text);

// A valid library file in the versioned form (not in saved layout): types with defaults
// of every kind, semantics, node classes and three graphs nested three deep, each using a
// graph that stands later in the file, with defaults, connections from graph inputs and
// from later nodes, graph outputs fed by nodes and straight from graph inputs.
const std::string& sampleLibraryText();

// Loads `text`, saves the library, loads the saved text and saves again. Returns what is
// wrong, or the empty string when the outcome is what every text must give: null with at
// most one line on std::wcerr, or a library that writes nothing, saves, reloads silently
// and saves the same bytes again. One saved text does not load again and is accepted: one
// holding a value of no elements, which is written without "value" and read back as
// "Value has no value setting!".
std::string roundTripProblem(const std::string& text, const IGraphLibrary* parent = nullptr);

// The files of the examples folder (sourcePath("examples"), "*.matlib"), each with the
// library it loads under: files that load on their own are parents of those that do not.
// Empty when there are none; the libraries live until the program ends.
struct ExampleFile {
  std::string name;
  std::string text;
  const IGraphLibrary* parent;
};
const std::vector<ExampleFile>& exampleFiles();

}  // namespace mat::test::files
