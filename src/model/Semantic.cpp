#include "model/Semantic.h"

#include "core/JsonMembers.h"
#include "core/JsonTextWriter.h"
#include "core/LoadTrail.h"
#include "mat/Exceptions.h"
#include "mat/IGraphLibrary.h"
#include "model/Type.h"

namespace mat {

Semantic::Semantic(const UUID& uuid, const picojson::object& item, const IGraphLibrary* library)
    : uuid_(uuid) {
  for (const auto& [key, value] : item) {
    TrailStep step(key);
    if (key == "desc") {
      name_ = readDesc(value);
    } else if (key == "type") {
      if (!value.is<std::string>()) throw InputFileParsingException("Invalid type for type");
      const UUID typeUUID = uuidFromText(value.get<std::string>());
      type_ = Reference<IType>(library != nullptr ? library->FindType(typeUUID, true) : nullptr,
                               typeUUID);
    }
  }
}

void writeSemantic(JsonTextWriter& writer, const ISemantic* semantic) {
  const auto* ours = dynamic_cast<const Semantic*>(semantic);
  const UUID unresolved = ours != nullptr ? ours->GetTypeUUID() : UUID{};
  writer.BeginObject();
  writer.Key("content");
  writer.String("semantic");
  writeDesc(writer, semantic->GetName());
  writer.Key("type");
  writer.String(referenceText(semantic->GetType(), unresolved));
  writer.Key("uuid");
  writer.String(uuidText(semantic->GetUUID()));
  writer.EndObject();
}

picojson::object saveSemantic(const ISemantic* semantic) {
  return writtenObject([&](JsonTextWriter& writer) { writeSemantic(writer, semantic); });
}

}  // namespace mat
