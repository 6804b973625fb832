// Loading: a base library, a library of graphs under it, and a file that is refused.
//
//   matgraph_guide_load examples/base.matlib examples/materials.matlib
#include <mat/mat.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

static std::string readFile(const char* path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string baseText = readFile(argv[1]);
  const std::string materialsText = readFile(argv[2]);

  // The parent first: the graphs name its types and node classes by UUID.
  const mat::IGraphLibrary* base =
      mat::loadGraphLibrary(baseText.c_str(), baseText.size(), nullptr, "base");
  if (base == nullptr) return 1;  // the reason is already on std::wcerr, as one line
  const mat::IGraphLibrary* materials =
      mat::loadGraphLibrary(materialsText.c_str(), materialsText.size(), base, "materials");
  if (materials == nullptr) {
    mat::releaseGraphLibrary(base);
    return 1;
  }
  std::printf("%s: %zu types, %zu semantics, %zu node classes\n", base->GetName(),
              base->GetTypeCount(), base->GetSemanticCount(), base->GetNodeClassCount());
  std::printf("%s: %zu graphs\n", materials->GetName(), materials->GetGraphCount());

  // The same loader, telling the host instead of std::wcerr why a file is refused.
  const char* broken = R"([{"fileversion" : 1}, [{"content" : "Type", "uuid" : ""}]])";
  mat::LoadDiagnostic diagnostic;
  const mat::IGraphLibrary* refused =
      mat::loadGraphLibraryWithDiagnostic(broken, std::strlen(broken), base, "broken", diagnostic);
  std::printf("refused: %s (item %zu, at %s)\n", diagnostic.message.c_str(), diagnostic.itemIndex,
              diagnostic.jsonPath.c_str());
  const bool ok =
      refused == nullptr && diagnostic.outcome == mat::LoadDiagnostic::Refused &&
      diagnostic.message == "InputFileParsingException: Object with unknown type encountered" &&
      diagnostic.jsonPath == "/1/0/content";

  // Children before their parent: a parent must outlive every library under it.
  mat::releaseGraphLibrary(materials);
  mat::releaseGraphLibrary(base);
  return ok ? 0 : 1;
}
