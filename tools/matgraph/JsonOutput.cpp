#include "JsonOutput.h"

namespace matgraph {
namespace {

// The length of the well-formed UTF-8 sequence at `text[i]`, or 0 when it is not one.
size_t utf8SequenceLength(const std::string& text, size_t i) {
  const auto byte = [&](size_t k) { return static_cast<unsigned char>(text[k]); };
  const unsigned char lead = byte(i);
  size_t length = 0;
  unsigned char low = 0x80;
  unsigned char high = 0xbf;
  if (lead >= 0xc2 && lead <= 0xdf) {
    length = 2;
  } else if (lead >= 0xe0 && lead <= 0xef) {
    length = 3;
    if (lead == 0xe0) low = 0xa0;
    if (lead == 0xed) high = 0x9f;  // no surrogates
  } else if (lead >= 0xf0 && lead <= 0xf4) {
    length = 4;
    if (lead == 0xf0) low = 0x90;
    if (lead == 0xf4) high = 0x8f;
  } else {
    return 0;
  }
  if (i + length > text.size()) return 0;
  if (byte(i + 1) < low || byte(i + 1) > high) return 0;
  for (size_t k = 2; k < length; ++k) {
    if (byte(i + k) < 0x80 || byte(i + k) > 0xbf) return 0;
  }
  return length;
}

}  // namespace

std::string jsonString(const std::string& text) {
  static const char digits[] = "0123456789abcdef";
  std::string out = "\"";
  for (size_t i = 0; i < text.size();) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (c >= 0x80) {
      const size_t length = utf8SequenceLength(text, i);
      if (length == 0) {
        out += "\\ufffd";
        ++i;
      } else {
        out.append(text, i, length);
        i += length;
      }
      continue;
    }
    switch (c) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\t':
        out += "\\t";
        break;
      default:
        if (c < 0x20 || c == 0x7f) {
          out += "\\u00";
          out += digits[c >> 4];
          out += digits[c & 0xf];
        } else {
          out += static_cast<char>(c);
        }
    }
    ++i;
  }
  return out + "\"";
}

void JsonWriter::NewLine() {
  out_ << '\n';
  for (size_t i = 0; i < levels_.size(); ++i) out_ << "  ";
}

void JsonWriter::BeforeValue() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (levels_.empty()) return;
  if (levels_.back().count++ > 0) out_ << ',';
  NewLine();
}

void JsonWriter::Open(char bracket) {
  BeforeValue();
  out_ << bracket;
  levels_.push_back({});
}

void JsonWriter::Close(char bracket) {
  const bool empty = levels_.back().count == 0;
  levels_.pop_back();
  if (!empty) NewLine();
  out_ << bracket;
}

void JsonWriter::BeginObject() { Open('{'); }
void JsonWriter::EndObject() { Close('}'); }
void JsonWriter::BeginArray() { Open('['); }
void JsonWriter::EndArray() { Close(']'); }

void JsonWriter::Key(const std::string& key) {
  BeforeValue();
  out_ << jsonString(key) << ": ";
  afterKey_ = true;
}

void JsonWriter::String(const std::string& text) {
  BeforeValue();
  out_ << jsonString(text);
}

void JsonWriter::Number(uint64_t number) {
  BeforeValue();
  out_ << number;
}

void JsonWriter::Bool(bool value) {
  BeforeValue();
  out_ << (value ? "true" : "false");
}

void JsonWriter::Finish() { out_ << '\n'; }

}  // namespace matgraph
