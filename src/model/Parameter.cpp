#include "model/Parameter.h"

#include "core/JsonMembers.h"
#include "core/JsonTextWriter.h"
#include "core/LoadTrail.h"
#include "mat/Exceptions.h"
#include "mat/IGraph.h"
#include "mat/IGraphLibrary.h"
#include "mat/IGraphNode.h"
#include "model/Type.h"

namespace mat {

void ParameterList::Append(Parameter parameter) {
  positions[parameter.GetName()] = items.size();
  items.push_back(std::move(parameter));
}

bool ParameterList::Find(const char* name, size_t* position) const {
  if (name == nullptr) return false;
  const auto found = positions.find(name);
  if (found == positions.end()) return false;
  if (position != nullptr) *position = found->second;
  return true;
}

void ParameterList::Erase(size_t position) {
  items.erase(items.begin() + static_cast<std::ptrdiff_t>(position));
  positions.clear();
  for (size_t i = 0; i < items.size(); ++i) positions[items[i].GetName()] = i;
}

void readParameters(ParameterList& list, const picojson::array& entries,
                    const IGraphLibrary* library, const char* member) {
  list.items.reserve(list.items.size() + entries.size());
  for (size_t position = 0; position < entries.size(); ++position) {
    TrailStep step(position);
    const picojson::object& fields = objectMember(entries[position], member);
    const std::string& name = getStringMember(fields, "name");
    const UUID typeUUID = getUUIDMember(fields, "type");
    const IType* type = library != nullptr ? library->FindType(typeUUID, true) : nullptr;
    Parameter parameter(name, Reference<IType>(type, typeUUID));
    const auto defaultValue = fields.find("default");
    if (defaultValue != fields.end()) {
      TrailStep defaultStep(defaultValue->first);
      parameter.SetDefault(Value(objectMember(defaultValue->second, "default"), library));
    }
    list.Append(std::move(parameter));
  }
}

void writeConnectionSource(JsonTextWriter& writer, const IGraph& graph, size_t sourceNode,
                           size_t sourceOutput) {
  const IGraphNode* source = graph.GetNode(sourceNode);
  const auto sourceClass = source->GetNodeClass();
  writer.BeginArray(false);
  writer.NextElement();
  writer.String(sourceNode == graph.GetInputNodeIndex() ? std::string()
                                                        : uuidText(source->GetUUID()));
  writer.NextElement();
  writer.String(sourceClass->GetOutput(sourceOutput)->GetName());
  writer.EndArray();
}

void writeParameter(JsonTextWriter& writer, const INodeClass* nodeClass, size_t index,
                    ParameterSide side) {
  const bool isOutput = side == ParameterSide::Output;
  const IParameter* parameter = isOutput ? nodeClass->GetOutput(index) : nodeClass->GetInput(index);
  const auto* ours = dynamic_cast<const Parameter*>(parameter);

  writer.BeginObject();
  if (const IValue* defaultValue = parameter->GetDefault()) {
    writer.Key("default");
    writeValue(writer, *defaultValue);
  }
  if (isOutput && nodeClass->IsGraph()) {
    const auto& graph = dynamic_cast<const IGraph&>(*nodeClass);
    size_t sourceNode = 0;
    size_t sourceOutput = 0;
    if (graph.GetNode(graph.GetOutputNodeIndex())
            ->GetInputConnection(index, &sourceNode, &sourceOutput)) {
      writer.Key("from");
      writeConnectionSource(writer, graph, sourceNode, sourceOutput);
    }
  }
  writer.Key("name");
  writer.String(parameter->GetName());
  writer.Key("type");
  writer.String(referenceText(parameter->GetType(), ours ? ours->GetTypeUUID() : UUID{}));
  writer.EndObject();
}

picojson::object saveParameter(const INodeClass* nodeClass, size_t index, ParameterSide side) {
  return writtenObject(
      [&](JsonTextWriter& writer) { writeParameter(writer, nodeClass, index, side); });
}

void writeParameters(JsonTextWriter& writer, const INodeClass* nodeClass, ParameterSide side) {
  const size_t count =
      side == ParameterSide::Output ? nodeClass->GetOutputCount() : nodeClass->GetInputCount();
  writer.BeginArray(true);
  for (size_t i = 0; i < count; ++i) {
    writer.NextElement();
    writeParameter(writer, nodeClass, i, side);
  }
  writer.EndArray();
}

picojson::array saveParameters(const INodeClass* nodeClass, ParameterSide side) {
  picojson::value entries =
      writtenValue([&](JsonTextWriter& writer) { writeParameters(writer, nodeClass, side); });
  return entries.is<picojson::array>() ? std::move(entries.get<picojson::array>())
                                       : picojson::array();
}

}  // namespace mat
