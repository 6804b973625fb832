#include "core/JsonTextWriter.h"

#include <charconv>
#include <cmath>

namespace mat {
namespace {

// The escape of a byte, or null for a byte that is copied unchanged.
const char* escapeOf(unsigned char byte) {
  switch (byte) {
    case '"':
      return "\\\"";
    case '\\':
      return "\\\\";
    case '/':
      return "\\/";
    case '\b':
      return "\\b";
    case '\f':
      return "\\f";
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      return nullptr;
  }
}

bool isPlain(unsigned char byte) {
  return byte >= 0x20 && byte != 0x7F && byte != '"' && byte != '\\' && byte != '/';
}

}  // namespace

JsonTextWriter::JsonTextWriter(std::string& out, int level)
    : out_(out), baseLevel_(level > 0 ? static_cast<size_t>(level) : 0) {
  scopes_.reserve(16);
}

void JsonTextWriter::NewLine(size_t depth) {
  out_.push_back('\n');
  out_.append(baseLevel_ + depth, '\t');
}

void JsonTextWriter::BeginObject() {
  out_.push_back('{');
  scopes_.push_back({true, true});
}

void JsonTextWriter::Key(std::string_view key) {
  Scope& scope = scopes_.back();
  if (!scope.first) out_.push_back(',');
  scope.first = false;
  NewLine(scopes_.size());
  String(key);
  out_.append(" : ");
}

void JsonTextWriter::EndObject() {
  scopes_.pop_back();
  NewLine(scopes_.size());
  out_.push_back('}');
}

void JsonTextWriter::BeginArray(bool multiLine) {
  out_.push_back('[');
  scopes_.push_back({multiLine, true});
}

void JsonTextWriter::NextElement() {
  Scope& scope = scopes_.back();
  if (!scope.first) out_.push_back(',');
  scope.first = false;
  if (scope.multiLine) NewLine(scopes_.size());
}

void JsonTextWriter::EndArray() {
  const Scope scope = scopes_.back();
  scopes_.pop_back();
  if (scope.multiLine && !scope.first) NewLine(scopes_.size());
  out_.push_back(']');
}

void JsonTextWriter::String(std::string_view text) {
  static constexpr char hexDigits[] = "0123456789abcdef";
  out_.push_back('"');
  size_t runStart = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (isPlain(byte)) continue;
    out_.append(text.substr(runStart, i - runStart));
    runStart = i + 1;
    if (const char* escape = escapeOf(byte)) {
      out_.append(escape);
    } else {
      const char unicode[] = {'\\', 'u', '0', '0', hexDigits[byte >> 4], hexDigits[byte & 0x0F]};
      out_.append(unicode, sizeof unicode);
    }
  }
  out_.append(text.substr(runStart));
  out_.push_back('"');
}

void JsonTextWriter::Number(double number) {
  char buffer[64];
  constexpr double twoToThe53 = 9007199254740992.0;
  const bool integral = std::fabs(number) < twoToThe53 && number == std::trunc(number);
  const auto result =
      integral
          ? std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::fixed, 0)
          : std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::general, 17);
  out_.append(buffer, result.ptr);
}

void JsonTextWriter::Bool(bool value) { out_.append(value ? "true" : "false"); }

void JsonTextWriter::Null() { out_.append("null"); }

picojson::value writtenValue(const std::function<void(JsonTextWriter&)>& write) {
  std::string text;
  JsonTextWriter writer(text);
  write(writer);
  picojson::value document;
  picojson::parse(document, text.begin(), text.end(), nullptr);
  return document;
}

picojson::object writtenObject(const std::function<void(JsonTextWriter&)>& write) {
  picojson::value document = writtenValue(write);
  return document.is<picojson::object>() ? std::move(document.get<picojson::object>())
                                         : picojson::object();
}

}  // namespace mat
