// Rewrites a library file in the canonical text that saveGraphLibrary writes.
//
//   matgraph_canonicalize [--parent FILE]... FILE
//
// The parents form a chain, base first: each is loaded under the one before it, and FILE
// under the last, so that its references resolve as they will for a host. FILE is then
// saved, the saved text loaded and saved once more; only when both saves agree does the
// text replace FILE. Exit status: 0 done, 1 a file did not load or the text is not
// stable, 2 bad arguments or a file that cannot be read or written.
//
// Messages go to std::wcerr, where the loader writes its reasons: once a wide stream has
// written to stderr, narrow writes to it are lost.
#include <mat/mat.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

namespace {

bool readFile(const char* path, std::string& text) {
  std::ifstream in(path, std::ios::binary);
  text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return !in.bad() && in.is_open();
}

const mat::IGraphLibrary* load(const std::string& text, const mat::IGraphLibrary* parent,
                               const char* name) {
  return mat::loadGraphLibrary(text.c_str(), text.size(), parent, name);
}

std::string save(const mat::IGraphLibrary* library) {
  std::ostringstream out;
  mat::saveGraphLibrary(library, out);
  return out.str();
}

// Loads, saves, loads the saved text and saves again. Empty when a load fails (the
// loader has then written the reason on std::wcerr) or the two saves differ.
std::string canonicalText(const std::string& text, const mat::IGraphLibrary* parent,
                          const char* name) {
  const mat::IGraphLibrary* first = load(text, parent, name);
  if (first == nullptr) return std::string();
  const std::string saved = save(first);
  mat::releaseGraphLibrary(first);
  const mat::IGraphLibrary* second = load(saved, parent, name);
  if (second == nullptr) return std::string();
  const std::string savedAgain = save(second);
  mat::releaseGraphLibrary(second);
  if (savedAgain != saved) {
    std::wcerr << name << L": saving is not stable\n";
    return std::string();
  }
  return saved;
}

int canonicalize(const std::vector<const char*>& parents, const char* path) {
  std::vector<const mat::IGraphLibrary*> chain;
  auto releaseChain = [&chain] {
    for (auto library = chain.rbegin(); library != chain.rend(); ++library) {
      mat::releaseGraphLibrary(*library);
    }
  };
  for (const char* parentPath : parents) {
    std::string text;
    if (!readFile(parentPath, text)) {
      std::wcerr << parentPath << L": cannot read\n";
      releaseChain();
      return 2;
    }
    const mat::IGraphLibrary* parent =
        load(text, chain.empty() ? nullptr : chain.back(), parentPath);
    if (parent == nullptr) {
      std::wcerr << parentPath << L": does not load\n";
      releaseChain();
      return 1;
    }
    chain.push_back(parent);
  }

  std::string text;
  if (!readFile(path, text)) {
    std::wcerr << path << L": cannot read\n";
    releaseChain();
    return 2;
  }
  const std::string canonical = canonicalText(text, chain.empty() ? nullptr : chain.back(), path);
  releaseChain();
  if (canonical.empty()) {
    std::wcerr << path << L": left unchanged\n";
    return 1;
  }
  if (canonical == text) {
    std::printf("%s: already canonical\n", path);
    return 0;
  }
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << canonical;
  if (!out.flush()) {
    std::wcerr << path << L": cannot write\n";
    return 2;
  }
  std::printf("%s: rewritten\n", path);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<const char*> parents;
  const char* path = nullptr;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--parent") == 0 && i + 1 < argc) {
      parents.push_back(argv[++i]);
    } else if (path == nullptr && argv[i][0] != '-') {
      path = argv[i];
    } else {
      path = nullptr;
      break;
    }
  }
  if (path == nullptr) {
    std::wcerr << L"usage: matgraph_canonicalize [--parent FILE]... FILE\n";
    return 2;
  }
  return canonicalize(parents, path);
}
