#pragma once

// The part of a library check that looks at the text as a whole: whether it is JSON at
// all, where a syntax error cut it short, and what follows the root array.

#include <picojson.h>

#include <string>
#include <vector>

#include "files/LibraryCheck.h"
#include "mat/LoadDiagnostic.h"

namespace mat {

// The text as the loader sees it, parsed once more for the checks that need the JSON.
struct ParsedText {
  const char* begin = nullptr;
  const char* end = nullptr;  // the first NUL
  picojson::value root;       // as far as the parser got
  bool syntaxError = false;
  bool numberOverflow = false;    // picojson throws for a number beyond the double range
  const char* errorAt = nullptr;  // the byte a syntax error was found at
  const char* stop = nullptr;     // where the root value ends, when it parsed
};

// Parses `text` up to its first NUL.
ParsedText parseText(const char* text);

// MG101 (no library), MG102 (a syntax error cut the text short) and MG211 (text after the
// root array), judged with the load's `diagnostic`.
void addTextFindings(const ParsedText& parsed, const LoadDiagnostic& diagnostic,
                     std::vector<Finding>& findings);

// A finding about the whole text, with no item and no path.
Finding textFinding(const char* code, Severity severity, std::string message);

}  // namespace mat
