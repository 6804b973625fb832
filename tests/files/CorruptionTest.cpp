// Damaged copies of valid library files. Whatever the damage, a load gives null with at
// most one line on std::wcerr, or a library that saves, reloads and saves the same bytes;
// never a crash or an escaped exception.

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "mat/Functions.h"
#include "mat/IGraphLibrary.h"
#include "support/LibraryText.h"
#include "support/TestSupport.h"

namespace mat {
namespace {

using test::files::exampleFiles;
using test::files::LibraryHandle;
using test::files::loadLibrary;
using test::files::roundTripProblem;
using test::files::saveLibrary;

struct Document {
  std::string name;
  std::string text;  // in saved layout, so members read "key" : value
  const IGraphLibrary* parent;
};

// The sample library as saved, and every example file.
std::vector<Document> documents() {
  std::vector<Document> result;
  const LibraryHandle sample = loadLibrary(test::files::sampleLibraryText());
  EXPECT_NE(sample, nullptr);
  if (sample) result.push_back({"sample", saveLibrary(*sample), nullptr});
  for (const auto& file : exampleFiles()) result.push_back({file.name, file.text, file.parent});
  return result;
}

// Checks one damaged copy; stops reporting after a few failures of one test.
class DamageChecker {
 public:
  void Check(const Document& document, const std::string& copy, const std::string& damage) {
    ++checked_;
    const std::string problem = roundTripProblem(copy, document.parent);
    if (problem.empty() || ++failures_ > 10) return;
    ADD_FAILURE() << document.name << ", " << damage << ": " << problem;
  }
  size_t Checked() const { return checked_; }

 private:
  size_t checked_ = 0;
  size_t failures_ = 0;
};

TEST(Corruption, TruncatedAtEverySeventhByte) {
  DamageChecker checker;
  for (const Document& document : documents()) {
    for (size_t length = 0; length < document.text.size(); length += 7) {
      checker.Check(document, document.text.substr(0, length), "cut at " + std::to_string(length));
    }
  }
  EXPECT_GT(checker.Checked(), 100u);
}

TEST(Corruption, ByteWithItsTopBitFlipped) {
  DamageChecker checker;
  for (const Document& document : documents()) {
    // About 1000 copies of each document, every byte of the smaller ones.
    const size_t stride = std::max<size_t>(1, document.text.size() / 1000);
    for (size_t at = stride / 2; at < document.text.size(); at += stride) {
      std::string copy = document.text;
      copy[at] = static_cast<char>(copy[at] ^ 0x80);
      checker.Check(document, copy, "byte " + std::to_string(at) + " flipped");
    }
  }
  EXPECT_GT(checker.Checked(), 500u);
}

// The end of the JSON value that starts at `begin` in well-formed text.
size_t valueEnd(const std::string& text, size_t begin) {
  size_t depth = 0;
  for (size_t i = begin; i < text.size(); ++i) {
    switch (text[i]) {
      case '"':
        for (++i; i < text.size() && text[i] != '"'; ++i) {
          if (text[i] == '\\') ++i;
        }
        if (depth == 0) return i + 1;
        break;
      case '[':
      case '{':
        ++depth;
        break;
      case ']':
      case '}':
        if (depth == 0) return i;
        if (--depth == 0) return i + 1;
        break;
      case ',':
      case '\n':
        if (depth == 0) return i;
        break;
      default:
        break;
    }
  }
  return text.size();
}

TEST(Corruption, MemberValueReplacedByAnotherJsonType) {
  const char* const members[] = {"uuid",      "nodes",     "from", "input",  "output",
                                 "default",   "node",      "desc", "type",   "value",
                                 "component", "editorpos", "name", "content"};
  const char* const replacements[] = {"5", "null", "{}", "[]", "\"\""};
  DamageChecker checker;
  for (const Document& document : documents()) {
    for (const char* member : members) {
      const std::string key = std::string("\"") + member + "\" : ";
      for (size_t at = document.text.find(key); at != std::string::npos;
           at = document.text.find(key, at + 1)) {
        const size_t begin = at + key.size();
        const size_t end = valueEnd(document.text, begin);
        for (const char* replacement : replacements) {
          std::string copy = document.text;
          copy.replace(begin, end - begin, replacement);
          checker.Check(
              document, copy,
              std::string(member) + " at byte " + std::to_string(at) + " = " + replacement);
        }
      }
    }
  }
  EXPECT_GT(checker.Checked(), 500u);
}

TEST(Corruption, ValueScannerFindsTheWholeValue) {
  const std::string text = "{\"a\" : [1,{\"b\" : \"x\\\"]\"}],\n\"c\" : -2.5\n}";
  EXPECT_EQ(valueEnd(text, 7), text.find(",\n"));
  EXPECT_EQ(valueEnd(text, text.find("-2.5")), text.rfind('\n'));
  EXPECT_EQ(valueEnd(text, text.find("\"x")), text.find("}]"));
}

}  // namespace
}  // namespace mat
