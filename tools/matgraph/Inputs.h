#pragma once

// What every subcommand does first: read library files and load the parent chain. A
// failure here is a ToolError, which main() prints as one line and turns into the exit
// status.

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "files/LibraryCheck.h"
#include "mat/IGraphLibrary.h"

namespace matgraph {

// Exit statuses of the command.
constexpr int exitClean = 0;
constexpr int exitFindings = 1;  // errors in a file, or what --strict, --check and diff flag
constexpr int exitUsage = 2;     // bad arguments, or a file that cannot be read or written

// Files larger than this are refused before they are read.
constexpr size_t maxLibraryFileSize = size_t{256} << 20;

// A failure that ends a subcommand: a code of docs/diagnostics.md, the file it concerns
// (may be empty) and the exit status.
class ToolError : public std::runtime_error {
 public:
  ToolError(std::string code, std::string file, const std::string& message,
            int exitStatus = exitUsage)
      : std::runtime_error(message),
        code_(std::move(code)),
        file_(std::move(file)),
        exitStatus_(exitStatus) {}
  const std::string& Code() const { return code_; }
  const std::string& File() const { return file_; }
  int ExitStatus() const { return exitStatus_; }

 private:
  std::string code_;
  std::string file_;
  int exitStatus_;
};

// The bytes of the file at `path`.
// Throws ToolError MG302 when it is missing, unreadable or no regular file, and MG303 when
// it is larger than maxLibraryFileSize.
std::string readLibraryFile(const std::string& path);

// Checks the text of `path` under `parents` (a chain, base first); the library is named
// after the path.
mat::CheckResult checkFile(const std::string& path, const std::string& text,
                           const std::vector<const mat::IGraphLibrary*>& parents);

// The libraries of --parent, each loaded under the one before it. Released in reverse
// order, children before their parents.
class ParentChain {
 public:
  // Throws ToolError MG302 or MG303 for a file that cannot be read, MG304 for one that
  // does not load cleanly (a refusal or a syntax error).
  explicit ParentChain(const std::vector<std::string>& paths);
  ~ParentChain();
  ParentChain(const ParentChain&) = delete;
  ParentChain& operator=(const ParentChain&) = delete;

  // Base first; empty without --parent.
  const std::vector<const mat::IGraphLibrary*>& Libraries() const { return libraries_; }
  // The nearest parent, or null.
  const mat::IGraphLibrary* Nearest() const {
    return libraries_.empty() ? nullptr : libraries_.back();
  }

 private:
  void ReleaseInReverse();

  std::vector<std::shared_ptr<const mat::IGraphLibrary>> owned_;
  std::vector<const mat::IGraphLibrary*> libraries_;
};

// One line on standard error: "matgraph: FILE: CODE message".
void printError(const std::string& code, const std::string& file, const std::string& message);

// The first error of `result`, for a message about a file that does not load.
const mat::Finding* firstError(const mat::CheckResult& result);

}  // namespace matgraph
