// matgraph check FILE [--json] [--strict]: every problem the check of a file finds, as
// lines for a person or as one JSON document for a CI job or an editor.
#include <iostream>
#include <memory>

#include "Commands.h"
#include "Inputs.h"
#include "JsonOutput.h"
#include "Text.h"

namespace matgraph {
namespace {

struct CheckOptions {
  std::string file;
  std::vector<std::string> parents;
  bool json = false;
  bool strict = false;
};

const char* severityName(mat::Severity severity) {
  return severity == mat::Severity::Error ? "error" : "warning";
}

std::string plural(size_t count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

void printFindingLines(const std::string& file, const mat::Finding& finding) {
  std::cout << file;
  if (finding.line != 0) std::cout << ':' << finding.line << ':' << finding.column;
  std::cout << ": " << severityName(finding.severity) << ' ' << finding.code << ": "
            << finding.message << '\n';
  if (finding.jsonPath.empty() && !finding.hasItem) return;
  std::cout << "    at " << (finding.jsonPath.empty() ? "/" : finding.jsonPath);
  if (finding.hasItem) {
    std::cout << " in item " << finding.itemIndex;
    if (!finding.itemName.empty() || finding.itemUUID != mat::UUID{}) {
      std::cout << ' ' << quotedName(finding.itemName.c_str(), finding.itemUUID);
    }
  }
  std::cout << '\n';
}

void writeFinding(JsonWriter& json, const mat::Finding& finding) {
  json.BeginObject();
  json.Member("code", finding.code);
  json.Member("severity", severityName(finding.severity));
  json.Member("message", finding.message);
  json.Member("path", finding.jsonPath);
  if (finding.line != 0) {
    json.Member("line", finding.line);
    json.Member("column", finding.column);
  }
  if (finding.hasItem) {
    json.Key("item");
    json.BeginObject();
    json.Member("index", finding.itemIndex);
    json.Member("uuid", uuidString(finding.itemUUID));
    json.Member("name", finding.itemName);
    json.EndObject();
  }
  if (!finding.reference.empty()) json.Member("reference", finding.reference);
  json.EndObject();
}

void writeDocument(const CheckOptions& options, const std::vector<mat::Finding>& findings,
                   size_t errors, size_t warnings, const ToolError* failure) {
  JsonWriter json(std::cout);
  json.BeginObject();
  json.Member("file", options.file);
  json.Key("parents");
  json.BeginArray();
  for (const std::string& parent : options.parents) json.String(parent);
  json.EndArray();
  json.Member("errors", errors);
  json.Member("warnings", warnings);
  json.Key("findings");
  json.BeginArray();
  if (failure != nullptr) {  // the file could not be checked at all
    json.BeginObject();
    json.Member("code", failure->Code());
    json.Member("severity", "error");
    json.Member("message", failure->what());
    json.Member("path", "");
    json.Member("file", failure->File());
    json.EndObject();
  }
  for (const mat::Finding& finding : findings) writeFinding(json, finding);
  json.EndArray();
  json.EndObject();
  json.Finish();
}

int runCheck(const CheckOptions& options) {
  std::unique_ptr<ParentChain> parents;
  std::string text;
  try {
    parents = std::make_unique<ParentChain>(options.parents);
    text = readLibraryFile(options.file);
  } catch (const ToolError& failure) {
    if (!options.json) throw;
    writeDocument(options, {}, 1, 0, &failure);
    return failure.ExitStatus();
  }
  const mat::CheckResult result = checkFile(options.file, text, parents->Libraries());
  const size_t errors = result.CountOf(mat::Severity::Error);
  const size_t warnings = result.CountOf(mat::Severity::Warning);
  if (options.json) {
    writeDocument(options, result.findings, errors, warnings, nullptr);
  } else {
    for (const mat::Finding& finding : result.findings) printFindingLines(options.file, finding);
    std::cout << options.file << ": " << plural(errors, "error") << ", "
              << plural(warnings, "warning") << '\n';
  }
  if (errors > 0 || (options.strict && warnings > 0)) return exitFindings;
  return exitClean;
}

}  // namespace

Command addCheckCommand(CLI::App& app) {
  auto options = std::make_shared<CheckOptions>();
  CLI::App* command = app.add_subcommand(
      "check",
      "Report every problem of a library file with a stable code (docs/diagnostics.md). "
      "Exit 0 when clean, 1 when there are errors (or warnings with --strict), 2 when the "
      "file cannot be read");
  command->add_option("file", options->file, "The library file")->required();
  command->add_flag("--json", options->json, "Print one JSON document");
  command->add_flag("--strict", options->strict, "Exit 1 for warnings too");
  addParentOption(*command, options->parents);
  return {command, [options] { return runCheck(*options); }};
}

}  // namespace matgraph
