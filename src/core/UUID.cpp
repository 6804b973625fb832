#include <array>
#include <cstring>

#include "core/UUIDText.h"
#include "mat/Functions.h"
#include "platform/Random.h"

namespace mat {
namespace {

constexpr char hexDigits[] = "0123456789abcdef";
constexpr size_t textLength = 36;

// Positions of the dashes in the text form; every other position holds a digit.
constexpr bool isDashPosition(size_t position) {
  return position == 8 || position == 13 || position == 18 || position == 23;
}

// The value of each hexadecimal digit, -1 for every other byte.
constexpr std::array<int8_t, 256> hexValues = [] {
  std::array<int8_t, 256> values{};
  for (auto& value : values) value = -1;
  for (int digit = 0; digit < 10; ++digit) values['0' + digit] = static_cast<int8_t>(digit);
  for (int digit = 0; digit < 6; ++digit) {
    values['a' + digit] = static_cast<int8_t>(10 + digit);
    values['A' + digit] = static_cast<int8_t>(10 + digit);
  }
  return values;
}();

int hexValue(char c) { return hexValues[static_cast<unsigned char>(c)]; }

void writeText(const UUID& uuid, char* buffer) {
  size_t position = 0;
  for (size_t i = 0; i < 16; ++i) {
    if (isDashPosition(position)) buffer[position++] = '-';
    buffer[position++] = hexDigits[uuid.bytes[i] >> 4];
    buffer[position++] = hexDigits[uuid.bytes[i] & 0x0F];
  }
  buffer[textLength] = '\0';
}

}  // namespace

bool parseUUIDText(const char* text, UUID& out) {
  UUID result{};
  size_t byteIndex = 0;
  for (size_t position = 0; position < textLength; ++position) {
    const char c = text[position];
    if (isDashPosition(position)) {
      if (c != '-') return false;
      continue;
    }
    const int high = hexValue(c);
    if (high < 0) return false;
    const int low = hexValue(text[++position]);
    if (low < 0 || isDashPosition(position)) return false;
    result.bytes[byteIndex++] = static_cast<uint8_t>(high << 4 | low);
  }
  if (text[textLength] != '\0') return false;
  out = result;
  return true;
}

std::string uuidText(const UUID& uuid) {
  char buffer[textLength + 1];
  writeText(uuid, buffer);
  return std::string(buffer, textLength);
}

UUID generateUUID() {
  UUID uuid;
  platform::fillRandomBytes(uuid.bytes, sizeof uuid.bytes);
  uuid.bytes[6] = static_cast<uint8_t>((uuid.bytes[6] & 0x0F) | 0x40);  // version 4
  uuid.bytes[8] = static_cast<uint8_t>((uuid.bytes[8] & 0x3F) | 0x80);  // variant 1
  return uuid;
}

UUID makeUUID(const char* text) {
  UUID uuid{};
  makeUUID(text, uuid);
  return uuid;
}

bool makeUUID(const char* text, UUID& out) {
  out = UUID{};
  if (text[0] == '\0') return true;
  return parseUUIDText(text, out);
}

void UUIDToString(const UUID& uuid, char* buffer) { writeText(uuid, buffer); }

uint64_t hashUUID(const UUID& uuid) {
  const int64_t firstByte = static_cast<int8_t>(uuid.bytes[0]);
  return static_cast<uint64_t>(firstByte) ^ 0x3E;
}

}  // namespace mat
