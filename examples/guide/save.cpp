// Saving: a loaded library saves back to the very bytes of its file; a library made in
// memory saves to a file that loads again under the same parent.
//
//   matgraph_guide_save examples/base.matlib examples/materials.matlib
#include <mat/mat.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>

static std::string readFile(const char* path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string baseText = readFile(argv[1]);
  const std::string materialsText = readFile(argv[2]);
  const mat::IGraphLibrary* base =
      mat::loadGraphLibrary(baseText.c_str(), baseText.size(), nullptr, "base");
  if (base == nullptr) return 1;
  const mat::IGraphLibrary* materials =
      mat::loadGraphLibrary(materialsText.c_str(), materialsText.size(), base, "materials");
  if (materials == nullptr) {
    mat::releaseGraphLibrary(base);
    return 1;
  }

  // Only the library's own objects are written, never its parent's. The text is
  // canonical, so a file that was saved by matgraph comes back byte for byte.
  std::ostringstream saved;
  mat::saveGraphLibrary(materials, saved);
  bool ok = saved.str() == materialsText;

  // A new, empty library under the same parent, with one graph made by a factory.
  const mat::IGraphLibrary* mine = mat::createGraphLibrary(base, "mine");
  mat::IGraphFactory* factory = mat::createNewGraphFactory(mine, "Empty", mat::UUID{});
  const std::shared_ptr<const mat::IGraph> empty = factory->FinishGraph();
  mat::releaseGraphFactory(factory);

  // Write it to a file in binary mode, so that the bytes are what the library wrote.
  const char* path = "guide-save-mine.matlib";
  {
    std::ofstream out(path, std::ios::binary);
    mat::saveGraphLibrary(mine, out);
    ok = ok && out.good();
  }
  const std::string mineText = readFile(path);
  std::remove(path);
  const mat::IGraphLibrary* again =
      mat::loadGraphLibrary(mineText.c_str(), mineText.size(), base, "mine again");
  ok = ok && again != nullptr && again->GetGraphCount() == 1 &&
       again->FindGraph(empty->GetUUID(), false) != nullptr;
  std::printf("%s\n", mineText.c_str());

  mat::releaseGraphLibrary(again);
  mat::releaseGraphLibrary(mine);
  mat::releaseGraphLibrary(materials);
  mat::releaseGraphLibrary(base);
  return ok ? 0 : 1;
}
