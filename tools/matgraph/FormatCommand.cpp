// matgraph format FILE... [--check] [--in-place]: the canonical text of library files,
// the text that saveGraphLibrary writes. A file is only rewritten when saving is stable
// (the saved text loads and saves to the same bytes) and nothing of the file would be
// lost: a file with errors, a header without "fileversion", text after the root array or
// a NUL byte is left alone.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>

#include "Commands.h"
#include "Inputs.h"
#include "mat/Functions.h"

namespace matgraph {
namespace {

struct FormatOptions {
  std::vector<std::string> files;
  std::vector<std::string> parents;
  bool check = false;
  bool inPlace = false;
};

std::string saveText(const mat::IGraphLibrary& library) {
  std::ostringstream out;
  mat::saveGraphLibrary(&library, out);
  return out.str();
}

// Codes after which saving would lose part of the file.
bool losesContent(const mat::Finding& finding) {
  return finding.severity == mat::Severity::Error || finding.code == "MG210" ||
         finding.code == "MG211" || finding.code == "MG213";
}

// The canonical text of `path`; throws ToolError (exit 1) when the file must stay as it is.
std::string canonicalText(const std::string& path, const std::string& text,
                          const ParentChain& parents) {
  const mat::CheckResult result = checkFile(path, text, parents.Libraries());
  for (const mat::Finding& finding : result.findings) {
    if (losesContent(finding)) {
      throw ToolError(finding.code, path, "not formatted: " + finding.message, exitFindings);
    }
  }
  const std::string saved = saveText(*result.library);
  const mat::CheckResult reloaded = checkFile(path, saved, parents.Libraries());
  if (!reloaded.library || saveText(*reloaded.library) != saved) {
    throw ToolError("MG308", path, "not formatted: the saved text does not load back the same",
                    exitFindings);
  }
  return saved;
}

// Writes `text` beside `path` and renames it over `path`, so that a failure leaves the old
// file whole.
void replaceFile(const std::string& path, const std::string& text) {
  const std::string temporary = path + ".matgraph-format";
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    out << text;
    if (!out.flush()) {
      std::remove(temporary.c_str());
      throw ToolError("MG305", path, "cannot write " + temporary);
    }
  }
  std::error_code error;
  std::filesystem::rename(temporary, path, error);
  if (error) {
    std::remove(temporary.c_str());
    throw ToolError("MG305", path, "cannot replace the file: " + error.message());
  }
}

// The exit status for one file.
int formatFile(const FormatOptions& options, const ParentChain& parents, const std::string& path) {
  const std::string text = readLibraryFile(path);
  const std::string canonical = canonicalText(path, text, parents);
  if (options.check) {
    if (canonical == text) return exitClean;
    std::cout << path << ": would be reformatted\n";
    return exitFindings;
  }
  if (options.inPlace) {
    if (canonical != text) {
      replaceFile(path, canonical);
      std::cout << path << ": reformatted\n";
    }
    return exitClean;
  }
  std::cout << canonical;
  return exitClean;
}

int runFormat(const FormatOptions& options) {
  if (!options.check && !options.inPlace && options.files.size() > 1) {
    throw ToolError("MG301", "", "several files need --check or --in-place");
  }
  const ParentChain parents(options.parents);
  int status = exitClean;
  for (const std::string& path : options.files) {
    try {
      status = std::max(status, formatFile(options, parents, path));
    } catch (const ToolError& error) {
      printError(error.Code(), error.File(), error.what());
      status = std::max(status, error.ExitStatus());
    }
  }
  return status;
}

}  // namespace

Command addFormatCommand(CLI::App& app) {
  auto options = std::make_shared<FormatOptions>();
  CLI::App* command = app.add_subcommand(
      "format",
      "Write library files in their canonical text: to standard output (one file), in place "
      "(--in-place), or only tell which would change (--check, exit 1 when any would)");
  command->add_option("files", options->files, "The library files")->required();
  auto* check = command->add_flag("--check", options->check,
                                  "Change nothing; name the files that would change, exit 1");
  command->add_flag("--in-place", options->inPlace, "Rewrite the files that are not canonical")
      ->excludes(check);
  addParentOption(*command, options->parents);
  return {command, [options] { return runFormat(*options); }};
}

}  // namespace matgraph
