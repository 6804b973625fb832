#include "files/LibraryCheckText.h"

#include <cstring>
#include <stdexcept>
#include <utility>

namespace mat {
namespace {

struct TextPlace {
  size_t line;
  size_t column;
};

TextPlace placeOf(const char* text, const char* position) {
  TextPlace place{1, 1};
  const char* lineStart = text;
  for (const char* c = text; c < position; ++c) {
    if (*c == '\n') {
      ++place.line;
      lineStart = c + 1;
    }
  }
  place.column = static_cast<size_t>(position - lineStart) + 1;
  return place;
}

// Up to 16 bytes from `position`, quoted, with bytes outside printable ASCII as \xNN, so
// that binary junk stays readable and short.
std::string snippetAt(const char* position, const char* end) {
  std::string snippet = "\"";
  for (int count = 0; position < end && count < 16; ++position, ++count) {
    const unsigned char c = static_cast<unsigned char>(*position);
    if (c == '\n') break;
    if (c < 0x20 || c >= 0x7f || c == '"' || c == '\\') {
      static const char digits[] = "0123456789abcdef";
      snippet += "\\x";
      snippet += digits[c >> 4];
      snippet += digits[c & 0xf];
    } else {
      snippet += static_cast<char>(c);
    }
  }
  return snippet + "\"";
}

const char* jsonKindName(const picojson::value& value) {
  if (value.is<picojson::object>()) return "an object";
  if (value.is<picojson::array>()) return "an array";
  if (value.is<std::string>()) return "a string";
  if (value.is<double>()) return "a number";
  if (value.is<bool>()) return "a boolean";
  return "null";
}

bool onlyBlanks(const char* begin, const char* end) {
  for (; begin < end; ++begin) {
    if (std::strchr(" \t\r\n", *begin) == nullptr) return false;
  }
  return true;
}

// picojson's input, with the place of a syntax error: the byte the parser stopped at.
// (picojson::parse() itself returns the place after the rest of that line, which it reads
// for its message.)
class PlacedInput : public picojson::input<const char*> {
 public:
  using picojson::input<const char*>::input;
  const char* Place() const { return cur_; }
};

// MG101 and MG102: the text is no library, or a syntax error cut it short.
void addSyntaxFindings(const ParsedText& parsed, const LoadDiagnostic& diagnostic,
                       std::vector<Finding>& findings) {
  std::string error = "syntax error";
  TextPlace place{0, 0};
  if (parsed.errorAt != nullptr) {
    place = placeOf(parsed.begin, parsed.errorAt);
    const bool atEnd = parsed.errorAt >= parsed.end;
    error += std::string(atEnd ? " at the end of the text, line " : " at line ") +
             std::to_string(place.line) + ", column " + std::to_string(place.column);
    if (!atEnd) error += " near " + snippetAt(parsed.errorAt, parsed.end);
  } else if (parsed.numberOverflow) {
    error += ": a number beyond the range of a double";
  }
  std::string message;
  const char* code = "MG101";
  if (diagnostic.outcome == LoadDiagnostic::NotALibrary) {
    if (onlyBlanks(parsed.begin, parsed.end)) {
      message = "The text is empty; a library file is a JSON array";
      place = TextPlace{0, 0};
    } else if (parsed.syntaxError) {
      message = "The text is not JSON: " + error;
    } else {
      message = std::string("The root of the text is ") + jsonKindName(parsed.root) +
                "; a library file is a JSON array";
    }
  } else if (parsed.syntaxError) {
    code = "MG102";
    message = "The text breaks off with a " + error + "; only the part before it was read";
  } else {
    return;
  }
  Finding finding = textFinding(code, Severity::Error, std::move(message));
  finding.line = place.line;
  finding.column = place.column;
  findings.push_back(std::move(finding));
}

// MG211: whatever follows the root value is never read.
void addTrailingTextFinding(const ParsedText& parsed, std::vector<Finding>& findings) {
  if (parsed.syntaxError || parsed.stop == nullptr || onlyBlanks(parsed.stop, parsed.end)) return;
  const char* trailing = parsed.stop;
  while (std::strchr(" \t\r\n", *trailing) != nullptr) ++trailing;
  const TextPlace place = placeOf(parsed.begin, trailing);
  Finding finding = textFinding("MG211", Severity::Warning,
                                "Text after the root array, at line " + std::to_string(place.line) +
                                    ", column " + std::to_string(place.column) + " near " +
                                    snippetAt(trailing, parsed.end) + ", is not read");
  finding.line = place.line;
  finding.column = place.column;
  findings.push_back(std::move(finding));
}

}  // namespace

ParsedText parseText(const char* text) {
  ParsedText parsed;
  parsed.begin = text;
  parsed.end = text + std::strlen(text);
  PlacedInput input(parsed.begin, parsed.end);
  // The loader refuses a text nested deeper than it parses before the check gets here, so
  // this bound, above the loader's, never cuts a text short that the loader read whole.
  picojson::default_parse_context context(&parsed.root, 1024);
  try {
    if (picojson::_parse(context, input)) {
      parsed.stop = input.cur();
    } else {
      parsed.syntaxError = true;
      parsed.errorAt = input.Place();
    }
  } catch (const std::overflow_error&) {
    parsed.syntaxError = true;
    parsed.numberOverflow = true;
  }
  return parsed;
}

Finding textFinding(const char* code, Severity severity, std::string message) {
  Finding finding;
  finding.code = code;
  finding.severity = severity;
  finding.message = std::move(message);
  return finding;
}

void addTextFindings(const ParsedText& parsed, const LoadDiagnostic& diagnostic,
                     std::vector<Finding>& findings) {
  addSyntaxFindings(parsed, diagnostic, findings);
  addTrailingTextFinding(parsed, findings);
}

}  // namespace mat
