#pragma once

// A small writer of JSON documents for the --json output: objects and arrays one member
// or element per line, indented by two blanks. Strings are written as valid UTF-8 even
// when the text they come from is not (such bytes become U+FFFD).

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace matgraph {

class JsonWriter {
 public:
  explicit JsonWriter(std::ostream& out) : out_(out) {}

  void BeginObject();
  void EndObject();
  void BeginArray();
  void EndArray();
  // The key of the next member of the object being written.
  void Key(const std::string& key);
  void String(const std::string& text);
  void Number(uint64_t number);
  void Bool(bool value);

  void Member(const std::string& key, const std::string& text) {
    Key(key);
    String(text);
  }
  void Member(const std::string& key, uint64_t number) {
    Key(key);
    Number(number);
  }

  // Ends the document with a line feed; every object and array must be closed.
  void Finish();

 private:
  void BeforeValue();
  void Open(char bracket);
  void Close(char bracket);
  void NewLine();

  struct Level {
    size_t count = 0;
  };
  std::ostream& out_;
  std::vector<Level> levels_;
  bool afterKey_ = false;
};

// `text` as a JSON string literal, quotes included.
std::string jsonString(const std::string& text);

}  // namespace matgraph
