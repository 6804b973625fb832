#pragma once

// What a check of a library file finds: the reason a load is refused, and what loads but
// is probably wrong (references found nowhere, connections the loader drops, graph
// outputs fed by nothing, duplicates, items that shadow the parent chain). Each finding
// carries a stable code that the matgraph tool prints and docs/diagnostics.md explains.

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "mat/Common.h"
#include "mat/IGraphLibrary.h"

namespace mat {

enum class Severity { Error, Warning };

struct Finding {
  std::string code;  // "MG101" ... "MG1xx" for refusals and syntax, "MG2xx" for warnings
  Severity severity = Severity::Error;
  std::string message;
  // The item of the content array that the finding is about, when there is one.
  bool hasItem = false;
  size_t itemIndex = 0;
  UUID itemUUID{};
  std::string itemName;  // its "desc"
  // A JSON pointer from the root of the text to the member at fault; empty for the
  // whole text.
  std::string jsonPath;
  // 1-based place of a syntax error; 0 when the finding has none.
  size_t line = 0;
  size_t column = 0;
  // For an unresolved reference: the UUID text that was found nowhere, and what it should
  // have named ("type" or "semantic").
  std::string reference;
  std::string referenceKind;
};

struct CheckResult {
  // In the order of the text: problems of the whole text first, then by item.
  std::vector<Finding> findings;
  // The library as loaded (also after a syntax error cut the text short), or null when
  // the load was refused or the text is no library. Released with releaseGraphLibrary().
  std::shared_ptr<const IGraphLibrary> library;

  size_t CountOf(Severity severity) const;
};

// Loads `size` bytes of `text` (the loader reads up to the first NUL, and so does the
// check) under the last library of `parents`, which form a chain, base first: each was
// loaded under the one before it. `name` names the loaded library. Never throws for bad
// content: every problem becomes a finding. `text[size]` must be a NUL byte.
CheckResult checkLibrary(const char* text, size_t size,
                         const std::vector<const IGraphLibrary*>& parents, const char* name);

// The refusal code for the message of a refused load (LoadDiagnostic::message), e.g.
// "MG107" for a node class found nowhere; "MG199" for a message of no known kind.
const char* refusalCode(const std::string& message);

}  // namespace mat
