#pragma once

#include <picojson.h>

#include <string>
#include <variant>
#include <vector>

#include "mat/IValue.h"
#include "model/Reference.h"

namespace mat {

class IGraphLibrary;
class ISemantic;

// The one implementation of IValue: a typed array of elements. The variant's index is
// the ValueType, so a value of kind None holds no elements and no storage.
class Value final : public IValue {
 public:
  using SemanticElement = Reference<ISemantic>;
  using Storage =
      std::variant<std::monostate, std::vector<bool>, std::vector<int32_t>, std::vector<float>,
                   std::vector<UUID>, std::vector<std::string>, std::vector<SemanticElement>>;

  Value() = default;
  explicit Value(Storage storage) : storage_(std::move(storage)) {}
  // Reads a value object of a library file (see Read).
  Value(const picojson::object& object, const IGraphLibrary* library);

  // Replaces the content with what a value object holds ("component" and "value").
  // Semantic elements are looked up in `library` and its parents; one found nowhere is a
  // null element. Throws InputFileParsingException; the value is then of kind None.
  void Read(const picojson::object& object, const IGraphLibrary* library);
  // A copy of any implementation of IValue.
  static Value CopyOf(const IValue& value);
  void Clear() { storage_ = std::monostate{}; }
  bool IsNone() const { return storage_.index() == 0; }
  const Storage& GetStorage() const { return storage_; }

  size_t GetCount() const override;
  ValueType GetValueType() const override { return static_cast<ValueType>(storage_.index()); }
  float GetFloat(size_t index) const override;
  int32_t GetInt(size_t index) const override;
  const char* GetString(size_t index) const override;
  bool GetBool(size_t index) const override;
  UUID GetUUID(size_t index) const override;
  const ISemantic* GetSemantic(size_t index) const override;

 private:
  template <typename Element>
  const std::vector<Element>& Elements(ValueType expected, size_t index) const;

  Storage storage_;
};

class JsonTextWriter;

// Writes the JSON object of a value: "component" and "value" (one element itself, several as
// an array, none left out). A semantic element that was not found is written as the
// UUID that was read, or as the empty text when none is known.
// Throws InvalidDataAccess "Float value is not a number" for a NaN element; an infinite
// float is written as a number beyond the float range, which reads back as the same
// infinity.
void writeValue(JsonTextWriter& writer, const IValue& value);

// The JSON object that writeValue writes.
picojson::object saveValue(const IValue& value);

// A JSON number as a float: the nearest float, and beyond the float range an infinity of
// the same sign.
float roundToFloat(double number);

// A float as a JSON number: an infinity as a number beyond the float range (which reads
// back as the same infinity). Throws InvalidDataAccess "Float value is not a number" for NaN.
double floatToJsonNumber(float number);

}  // namespace mat
