#include "model/NodeClass.h"

#include <cstring>

#include "core/JsonMembers.h"
#include "core/JsonTextWriter.h"
#include "core/LoadTrail.h"
#include "mat/Exceptions.h"
#include "mat/Functions.h"
#include "model/Type.h"

namespace mat {

const IParameter* parameterAt(const ParameterList& list, size_t index, const char* message) {
  if (index >= list.items.size()) throw InvalidDataAccess(message);
  return &list.items[index];
}

NodeClass::NodeClass(const UUID& uuid, const picojson::object& item, const IGraphLibrary* library)
    : library_(library), uuid_(uuid) {
  for (const auto& [key, value] : item) {
    TrailStep step(key);
    if (key == "desc") {
      name_ = readDesc(value);
    } else if (key == "input") {
      if (!value.is<picojson::array>()) throw InputFileParsingException("Invalid type for inputs");
      readParameters(inputs_, value.get<picojson::array>(), library, "input");
    } else if (key == "output") {
      if (!value.is<picojson::array>()) throw InputFileParsingException("Invalid type for output");
      readParameters(outputs_, value.get<picojson::array>(), library, "output");
    }
  }
}

const IParameter* NodeClass::GetInput(size_t index) const {
  return parameterAt(inputs_, index, "Input Index out of range");
}

const IParameter* NodeClass::GetOutput(size_t index) const {
  return parameterAt(outputs_, index, "Output Index out of range");
}

void writeSignature(JsonTextWriter& writer, const INodeClass* nodeClass) {
  if (nodeClass->GetInputCount() > 0) {
    writer.Key("input");
    writeParameters(writer, nodeClass, ParameterSide::Input);
  }
  if (nodeClass->GetOutputCount() > 0) {
    writer.Key("output");
    writeParameters(writer, nodeClass, ParameterSide::Output);
  }
}

void writeNodeClass(JsonTextWriter& writer, const INodeClass* nodeClass) {
  writer.BeginObject();
  writer.Key("content");
  writer.String("nodeclass");
  writeDesc(writer, nodeClass->GetName());
  writeSignature(writer, nodeClass);
  writer.Key("uuid");
  writer.String(uuidText(nodeClass->GetUUID()));
  writer.EndObject();
}

picojson::object saveNodeClass(const INodeClass* nodeClass) {
  return writtenObject([&](JsonTextWriter& writer) { writeNodeClass(writer, nodeClass); });
}

namespace {

bool sameParameters(const INodeClass& a, const INodeClass& b, ParameterSide side) {
  const bool inputs = side == ParameterSide::Input;
  const size_t count = inputs ? a.GetInputCount() : a.GetOutputCount();
  for (size_t i = 0; i < count; ++i) {
    const IParameter* first = inputs ? a.GetInput(i) : a.GetOutput(i);
    const IParameter* second = inputs ? b.GetInput(i) : b.GetOutput(i);
    if (first->GetType() != second->GetType()) return false;
    if (std::strcmp(first->GetName(), second->GetName()) != 0) return false;
  }
  return true;
}

}  // namespace

bool identicalSignatures(const INodeClass* a, const INodeClass* b) {
  if (a == nullptr || b == nullptr) return false;
  if (a->GetInputCount() != b->GetInputCount()) return false;
  if (a->GetOutputCount() != b->GetOutputCount()) return false;
  return sameParameters(*a, *b, ParameterSide::Input) &&
         sameParameters(*a, *b, ParameterSide::Output);
}

}  // namespace mat
