#pragma once

// Builds library items from JSON text and registers them as the loader's first pass
// does: each item is read with the library being loaded, then added to it.

#include <memory>
#include <string>

#include "core/GraphLibrary.h"
#include "mat/Functions.h"
#include "model/NodeClass.h"
#include "model/Semantic.h"
#include "model/Type.h"
#include "support/JsonText.h"

namespace mat::test {

inline const Type* addType(GraphLibrary& library, const char* uuid, const std::string& item) {
  auto type = std::make_shared<Type>(makeUUID(uuid), parseObject(item), &library);
  library.AddType(type);
  return type.get();
}

inline const Semantic* addSemantic(GraphLibrary& library, const char* uuid,
                                   const std::string& item) {
  auto semantic = std::make_shared<Semantic>(makeUUID(uuid), parseObject(item), &library);
  library.AddSemantic(semantic);
  return semantic.get();
}

inline std::shared_ptr<const NodeClass> addNodeClass(GraphLibrary& library, const char* uuid,
                                                     const std::string& item) {
  auto nodeClass = std::make_shared<NodeClass>(makeUUID(uuid), parseObject(item), &library);
  library.AddNodeClass(nodeClass);
  return nodeClass;
}

}  // namespace mat::test
