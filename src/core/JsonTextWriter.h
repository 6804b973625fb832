#pragma once

#include <picojson.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace mat {

// Writes JSON text in the layout of library files, straight from the caller's objects:
// each object member on a line of its own, indented by tabs, with " : " between key and
// value; arrays on one line unless they hold arrays or objects; integers below 2^53
// without a fraction and other numbers with 17 significant digits, whatever the process
// locale. The caller gives the members of an object in ascending key order.
class JsonTextWriter {
 public:
  // Appends to `out`, starting at nesting `level` (a count of tabs).
  explicit JsonTextWriter(std::string& out, int level = 0);

  void BeginObject();
  // Starts the member `key`; its value follows.
  void Key(std::string_view key);
  void EndObject();
  // An array that holds arrays or objects puts each element on a line of its own.
  void BeginArray(bool multiLine);
  // Starts the next element of the current array.
  void NextElement();
  void EndArray();

  void String(std::string_view text);
  void Number(double number);
  void Bool(bool value);
  void Null();

 private:
  struct Scope {
    bool multiLine;
    bool first;
  };

  void NewLine(size_t depth);

  std::string& out_;
  size_t baseLevel_;
  std::vector<Scope> scopes_;
};

// The JSON value that `write` writes, as a document: the same members and values that
// the text holds. For the writers' callers that want a document rather than text.
picojson::value writtenValue(const std::function<void(JsonTextWriter&)>& write);
picojson::object writtenObject(const std::function<void(JsonTextWriter&)>& write);

}  // namespace mat
