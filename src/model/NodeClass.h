#pragma once

#include <picojson.h>

#include <string>

#include "mat/INodeClass.h"
#include "model/Parameter.h"

namespace mat {

// A node class read from a library file: a name and a signature, never changed after.
class NodeClass final : public INodeClass {
 public:
  // Reads a node class item: "desc", "input" and "output" (arrays of entries), visited in
  // that order. Throws InputFileParsingException "Invalid type for desc",
  // "Invalid type for inputs", "Invalid type for output", or a message of an entry.
  NodeClass(const UUID& uuid, const picojson::object& item, const IGraphLibrary* library);

  const IGraphLibrary* GetLibrary() const override { return library_; }
  const UUID& GetUUID() const override { return uuid_; }
  const char* GetName() const override { return name_.c_str(); }
  size_t GetInputCount() const override { return inputs_.items.size(); }
  const IParameter* GetInput(size_t index) const override;
  bool FindInput(const char* name, size_t* index) const override {
    return inputs_.Find(name, index);
  }
  size_t GetOutputCount() const override { return outputs_.items.size(); }
  const IParameter* GetOutput(size_t index) const override;
  bool FindOutput(const char* name, size_t* index) const override {
    return outputs_.Find(name, index);
  }
  bool IsGraph() const override { return false; }
  std::shared_ptr<const IGraph> AsGraph() const override { return nullptr; }

 private:
  const IGraphLibrary* library_;
  UUID uuid_;
  std::string name_;
  ParameterList inputs_;
  ParameterList outputs_;
};

// The parameter at `index` of `list`, or InvalidDataAccess with `message`.
const IParameter* parameterAt(const ParameterList& list, size_t index, const char* message);

class JsonTextWriter;

// Writes the JSON object of a node class item: "content", "desc", "input", "output" and
// "uuid"; an empty side is left out.
void writeNodeClass(JsonTextWriter& writer, const INodeClass* nodeClass);
picojson::object saveNodeClass(const INodeClass* nodeClass);

// Writes "input" and "output" of a signature, each only when it is not empty.
void writeSignature(JsonTextWriter& writer, const INodeClass* nodeClass);

}  // namespace mat
