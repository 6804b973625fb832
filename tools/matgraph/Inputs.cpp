#include "Inputs.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <vector>

namespace matgraph {

std::string readLibraryFile(const std::string& path) {
  namespace fs = std::filesystem;
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (error || !fs::exists(status)) {
    throw ToolError("MG302", path, "cannot read: no such file");
  }
  if (fs::is_directory(status)) throw ToolError("MG302", path, "cannot read: it is a directory");
  const auto tooLarge = [&path](const std::string& size) {
    return ToolError("MG303", path,
                     "too large: " + size + " bytes, the limit is " +
                         std::to_string(maxLibraryFileSize) + " bytes");
  };
  // A regular file tells its size up front; a pipe (as from <(...)) or a device is read
  // until its end or the limit, whichever comes first.
  size_t expected = 0;
  if (fs::is_regular_file(status)) {
    const uintmax_t size = fs::file_size(path, error);
    if (!error && size > maxLibraryFileSize) throw tooLarge(std::to_string(size));
    if (!error) expected = static_cast<size_t>(size);
  }
  std::ifstream in(path, std::ios::binary);
  if (!in.is_open()) {
    throw ToolError("MG302", path, std::string("cannot read: ") + std::strerror(errno));
  }
  std::string text;
  text.reserve(expected);
  std::vector<char> buffer(size_t{1} << 16);
  while (in.read(buffer.data(), static_cast<std::streamsize>(buffer.size())) || in.gcount() > 0) {
    text.append(buffer.data(), static_cast<size_t>(in.gcount()));
    if (text.size() > maxLibraryFileSize)
      throw tooLarge("more than " + std::to_string(text.size()));
  }
  if (in.bad()) throw ToolError("MG302", path, "cannot read: a read error occurred");
  return text;
}

mat::CheckResult checkFile(const std::string& path, const std::string& text,
                           const std::vector<const mat::IGraphLibrary*>& parents) {
  return mat::checkLibrary(text.c_str(), text.size(), parents, path.c_str());
}

const mat::Finding* firstError(const mat::CheckResult& result) {
  for (const mat::Finding& finding : result.findings) {
    if (finding.severity == mat::Severity::Error) return &finding;
  }
  return nullptr;
}

ParentChain::ParentChain(const std::vector<std::string>& paths) {
  try {
    for (const std::string& path : paths) {
      const std::string text = readLibraryFile(path);
      mat::CheckResult result = checkFile(path, text, libraries_);
      const mat::Finding* error = firstError(result);
      if (error != nullptr || !result.library) {
        const std::string reason = error != nullptr ? error->code + " " + error->message : "";
        throw ToolError("MG304", path, "the parent library does not load: " + reason);
      }
      owned_.push_back(result.library);
      libraries_.push_back(result.library.get());
    }
  } catch (...) {
    ReleaseInReverse();
    throw;
  }
}

ParentChain::~ParentChain() { ReleaseInReverse(); }

void ParentChain::ReleaseInReverse() {
  libraries_.clear();
  while (!owned_.empty()) owned_.pop_back();
}

void printError(const std::string& code, const std::string& file, const std::string& message) {
  std::cerr << "matgraph: ";
  if (!file.empty()) std::cerr << file << ": ";
  std::cerr << code << ' ' << message << '\n';
}

}  // namespace matgraph
