#include "files/JsonWriter.h"

#include <charconv>
#include <cmath>

namespace mat {
namespace {

void appendIndent(int level, std::string& out) {
  out.push_back('\n');
  if (level > 0) out.append(static_cast<size_t>(level), '\t');
}

void appendNumber(double number, std::string& out) {
  char buffer[64];
  constexpr double twoToThe53 = 9007199254740992.0;
  const bool integral = std::fabs(number) < twoToThe53 && number == std::trunc(number);
  const auto result =
      integral
          ? std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::fixed, 0)
          : std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::general, 17);
  out.append(buffer, result.ptr);
}

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

void appendString(const std::string& text, std::string& out) {
  static constexpr char hexDigits[] = "0123456789abcdef";
  out.push_back('"');
  size_t runStart = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const bool plain = byte >= 0x20 && byte != 0x7F && byte != '"' && byte != '\\' && byte != '/';
    if (plain) continue;
    out.append(text, runStart, i - runStart);
    runStart = i + 1;
    if (const char* escape = escapeOf(byte)) {
      out.append(escape);
    } else {
      const char unicode[] = {'\\', 'u', '0', '0', hexDigits[byte >> 4], hexDigits[byte & 0x0F]};
      out.append(unicode, sizeof unicode);
    }
  }
  out.append(text, runStart, text.size() - runStart);
  out.push_back('"');
}

bool isContainer(const picojson::value& value) {
  return value.is<picojson::array>() || value.is<picojson::object>();
}

void appendArray(const picojson::array& array, int level, std::string& out) {
  bool multiLine = false;
  for (const picojson::value& element : array) multiLine = multiLine || isContainer(element);
  out.push_back('[');
  bool first = true;
  for (const picojson::value& element : array) {
    if (!first) out.push_back(',');
    first = false;
    if (multiLine) appendIndent(level + 1, out);
    serializeValue(element, level + 1, out);
  }
  if (multiLine) appendIndent(level, out);
  out.push_back(']');
}

void appendObject(const picojson::object& object, int level, std::string& out) {
  out.push_back('{');
  bool first = true;
  for (const auto& [key, member] : object) {
    if (!first) out.push_back(',');
    first = false;
    appendIndent(level + 1, out);
    appendString(key, out);
    out.append(" : ");
    serializeValue(member, level + 1, out);
  }
  appendIndent(level, out);
  out.push_back('}');
}

}  // namespace

void serializeValue(const picojson::value& value, int level, std::string& out) {
  if (value.is<picojson::null>()) {
    out.append("null");
  } else if (value.is<bool>()) {
    out.append(value.get<bool>() ? "true" : "false");
  } else if (value.is<double>()) {
    appendNumber(value.get<double>(), out);
  } else if (value.is<std::string>()) {
    appendString(value.get<std::string>(), out);
  } else if (value.is<picojson::array>()) {
    appendArray(value.get<picojson::array>(), level, out);
  } else {
    appendObject(value.get<picojson::object>(), level, out);
  }
}

}  // namespace mat
