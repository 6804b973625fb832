#include "support/LibraryText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <sstream>

#include "support/TestSupport.h"

namespace mat::test::files {

LibraryHandle loadLibrary(const std::string& text, const IGraphLibrary* parent, const char* name) {
  return LibraryHandle(loadGraphLibrary(text.c_str(), text.size(), parent, name));
}

std::string saveLibrary(const IGraphLibrary& library) {
  std::ostringstream out;
  saveGraphLibrary(&library, out);
  return out.str();
}

std::string uuidOf(const std::string& token) {
  const char* prefix = "00";
  switch (token.size() > 1 ? token[1] : ' ') {
    case 't':
      prefix = "7e";
      break;
    case 's':
      prefix = "5e";
      break;
    case 'c':
      prefix = "c1";
      break;
    case 'g':
      prefix = "9a";
      break;
    case 'n':
      prefix = "0d";
      break;
    default:
      ADD_FAILURE() << "unknown UUID token " << token;
  }
  const std::string digits = token.substr(2);
  return std::string(prefix) + "000000-0000-0000-0000-" + std::string(12 - digits.size(), '0') +
         digits;
}

std::string withUUIDs(std::string text) {
  for (size_t at = text.find('$'); at != std::string::npos; at = text.find('$', at)) {
    size_t end = at + 2;
    while (end < text.size() && std::isdigit(static_cast<unsigned char>(text[end]))) ++end;
    const std::string uuid = uuidOf(text.substr(at, end - at));
    text.replace(at, end - at, uuid);
    at += uuid.size();
  }
  return text;
}

std::string withTabs(const std::string& text) {
  std::string result;
  bool lineStart = true;
  for (size_t i = 0; i < text.size(); ++i) {
    if (lineStart && text.compare(i, 2, "  ") == 0) {
      result.push_back('\t');
      ++i;
      continue;
    }
    lineStart = text[i] == '\n';
    result.push_back(text[i]);
  }
  return result;
}

const std::string& sampleLibraryText() {
  static const std::string text = withUUIDs(R"([{"datasources":[],"fileversion":1},[
{"content":"type","uuid":"$t1","desc":"float","default":{"component":"float","value":0}},
{"content":"type","uuid":"$t2","desc":"color",
 "default":{"component":"float","value":[0.5,0.25,1]}},
{"content":"type","uuid":"$t3","desc":"count","default":{"component":"int","value":-3}},
{"content":"type","uuid":"$t4","desc":"text",
 "default":{"component":"string","value":"a\tb \"q\" c/d \u0001 \u00e9"}},
{"content":"type","uuid":"$t5","desc":"flag","default":{"component":"bool","value":[true,false]}},
{"content":"type","uuid":"$t6","desc":"id","default":{"component":"uuid","value":"$g1"}},
{"content":"type","uuid":"$t7","desc":"meaning","default":{"component":"semantic","value":"$s1"}},
{"content":"type","uuid":"$t8"},
{"content":"semantic","uuid":"$s1","desc":"albedo","type":"$t2"},
{"content":"semantic","uuid":"$s2","desc":"roughness","type":"$t1"},
{"content":"semantic","uuid":"$s3","desc":"ghost","type":"$t9"},
{"content":"nodeclass","uuid":"$c1","desc":"mix",
 "input":[{"name":"a","type":"$t2"},
          {"name":"b","type":"$t2","default":{"component":"float","value":[1,1,1]}},
          {"name":"amount","type":"$t1","default":{"component":"float","value":0.5}}],
 "output":[{"name":"out","type":"$t2"}]},
{"content":"nodeclass","uuid":"$c2","desc":"constant",
 "input":[{"name":"value","type":"$t1"}],"output":[{"name":"out","type":"$t1"}]},
{"content":"nodeclass","uuid":"$c3","desc":"texture",
 "input":[{"name":"file","type":"$t4","default":{"component":"string","value":"default.png"}},
          {"name":"scale","type":"$t1"}],
 "output":[{"name":"color","type":"$t2"},{"name":"alpha","type":"$t1"}]},
{"content":"nodeclass","uuid":"$c4","desc":"tagged",
 "input":[{"name":"meaning","type":"$t7",
           "default":{"component":"semantic","value":["$s1","$s2"]}}]},
{"content":"graph","uuid":"$g3","desc":"outer",
 "input":[{"name":"tint","type":"$t2","default":{"component":"float","value":[0.1,0.2,0.3]}}],
 "output":[{"name":"color","type":"$t2","from":["$n1","result"]},
           {"name":"alpha","type":"$t1","from":["$n3","alpha"]}],
 "nodes":[
  {"uuid":"$n1","desc":"middle instance","node":"$g2","editorpos":[100,-50.5],
   "input":[{"name":"tint","from":["","tint"]}]},
  {"uuid":"$n3","desc":"wood","node":"$c3",
   "input":[{"name":"file","default":{"component":"string","value":"wood.png"}},
            {"name":"scale","from":["$n4","out"]}]},
  {"uuid":"$n4","desc":"scale","node":"$c2","editorpos":[0.1,0.2],
   "input":[{"name":"value","default":{"component":"float","value":2}}]},
  {"uuid":"$n5","node":"$c4"}]},
{"content":"graph","uuid":"$g2","desc":"middle",
 "input":[{"name":"tint","type":"$t2"}],
 "output":[{"name":"result","type":"$t2","from":["$n1","out"]},
           {"name":"passthrough","type":"$t2","from":["","tint"]}],
 "nodes":[
  {"uuid":"$n1","desc":"inner instance","node":"$g1",
   "input":[{"name":"tint","from":["","tint"]},
            {"name":"amount","default":{"component":"float","value":0.75}}]}]},
{"content":"graph","uuid":"$g1","desc":"inner",
 "input":[{"name":"tint","type":"$t2"},{"name":"amount","type":"$t1"}],
 "output":[{"name":"out","type":"$t2","from":["$n1","out"]},
           {"name":"amount","type":"$t1","from":["","amount"]}],
 "nodes":[
  {"uuid":"$n1","desc":"mix","node":"$c1",
   "input":[{"name":"a","from":["","tint"]},{"name":"b","from":["$n2","color"]},
            {"name":"amount","from":["","amount"],"default":{"component":"float","value":0.25}}]},
  {"uuid":"$n2","desc":"texture","node":"$c3","editorpos":[10.5,-20],
   "input":[{"name":"file","default":{"component":"string","value":"inner.png"}}]}]},
{"content":"graph","uuid":"$g4","desc":"empty"}
]])");
  return text;
}

namespace {

// What happened to one text: load, save, load the saved text and save again.
struct RoundTrip {
  bool loaded = false;
  std::wstring loadErrors;    // what the first load wrote on std::wcerr
  std::string firstSave;      // empty when the text did not load
  bool reloaded = false;      // the saved text loaded again
  std::wstring reloadErrors;  // what loading the saved text wrote
  std::string secondSave;
};

RoundTrip roundTrip(const std::string& text, const IGraphLibrary* parent) {
  RoundTrip result;
  {
    WideErrorCapture errors;
    const LibraryHandle library = loadLibrary(text, parent);
    result.loadErrors = errors.text();
    if (!library) return result;
    result.loaded = true;
    result.firstSave = saveLibrary(*library);
  }
  WideErrorCapture errors;
  const LibraryHandle reloaded = loadLibrary(result.firstSave, parent);
  result.reloadErrors = errors.text();
  if (!reloaded) return result;
  result.reloaded = true;
  result.secondSave = saveLibrary(*reloaded);
  return result;
}

// Whether a saved text holds a value object of no elements: one whose "component" is its
// last member, so that its line ends without a comma.
bool holdsEmptyValue(const std::string& saved) {
  const std::string key = "\"component\" : \"";
  for (size_t at = saved.find(key); at != std::string::npos; at = saved.find(key, at + 1)) {
    const size_t lineEnd = saved.find('\n', at);
    if (lineEnd != std::string::npos && saved[lineEnd - 1] != ',') return true;
  }
  return false;
}

}  // namespace

std::string roundTripProblem(const std::string& text, const IGraphLibrary* parent) {
  const RoundTrip result = roundTrip(text, parent);
  if (!result.loaded) {
    const size_t lineEnd = result.loadErrors.find(L'\n');
    const bool atMostOneLine = result.loadErrors.empty() || lineEnd == result.loadErrors.size() - 1;
    return atMostOneLine ? "" : "more than one line on std::wcerr";
  }
  if (!result.loadErrors.empty()) return "a library came back and a line was written";
  if (!result.reloaded) {
    if (holdsEmptyValue(result.firstSave) &&
        result.reloadErrors == L"InputFileParsingException: Value has no value setting!\n") {
      return "";  // a value of no elements is written without "value", which reads back as
                  // an error: the one saved text that does not load again
    }
    return "the saved text does not load again: " +
           std::string(result.reloadErrors.begin(), result.reloadErrors.end());
  }
  if (!result.reloadErrors.empty()) return "loading the saved text wrote a line";
  if (result.secondSave != result.firstSave) {
    const size_t common = std::min(result.firstSave.size(), result.secondSave.size());
    size_t at = 0;
    while (at < common && result.firstSave[at] == result.secondSave[at]) ++at;
    const size_t from = at > 80 ? at - 80 : 0;
    return "the second save differs from the first at byte " + std::to_string(at) + ":\n" +
           result.firstSave.substr(from, 160) + "\n---\n" + result.secondSave.substr(from, 160);
  }
  return "";
}

const std::vector<ExampleFile>& exampleFiles() {
  static const std::vector<ExampleFile> files = [] {
    namespace fs = std::filesystem;
    static std::vector<LibraryHandle> loaded;  // parents for the files that need one
    std::vector<ExampleFile> found;
    const fs::path folder = sourcePath("examples");
    std::error_code error;
    if (!fs::is_directory(folder, error)) return found;
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(folder, error)) {
      if (entry.path().extension() == ".matlib") paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    // Files that load on their own first, then each other file under the first library
    // it loads under, until nothing more loads.
    std::vector<std::pair<std::string, std::string>> rest;
    for (const fs::path& path : paths)
      rest.emplace_back(path.filename().string(), readFile(path.string()));
    for (bool progress = true; progress && !rest.empty();) {
      progress = false;
      for (auto file = rest.begin(); file != rest.end();) {
        const IGraphLibrary* parent = nullptr;
        bool ok = false;
        for (size_t p = 0; p <= loaded.size() && !ok; ++p) {
          parent = p == 0 ? nullptr : loaded[p - 1].get();
          WideErrorCapture quiet;
          LibraryHandle library = loadLibrary(file->second, parent, file->first.c_str());
          if (library) {
            loaded.push_back(std::move(library));
            ok = true;
          }
        }
        if (ok) {
          found.push_back({file->first, file->second, parent});
          file = rest.erase(file);
          progress = true;
        } else {
          ++file;
        }
      }
    }
    for (const auto& file : rest) ADD_FAILURE() << "example " << file.first << " does not load";
    return found;
  }();
  return files;
}

}  // namespace mat::test::files
