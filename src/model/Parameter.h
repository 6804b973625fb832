#pragma once

#include <picojson.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "mat/IParameter.h"
#include "mat/IType.h"
#include "model/Annotation.h"
#include "model/Reference.h"
#include "model/Value.h"

namespace mat {

class IGraph;
class IGraphLibrary;
class INodeClass;

// One input or output: a name, a type, a default and the host's annotation.
class Parameter final : public IParameter {
 public:
  Parameter(std::string name, Reference<IType> type) : name_(std::move(name)), type_(type) {}

  const char* GetName() const override { return name_.c_str(); }
  const IType* GetType() const override { return type_.object; }
  const IValue* GetDefault() const override {
    return defaultValue_.IsNone() ? nullptr : &defaultValue_;
  }
  IAnnotation* GetAnnotation() const override { return &annotation_; }

  // The UUID the file named for the type, also when no type was found for it.
  const UUID& GetTypeUUID() const { return type_.uuid; }
  void SetDefault(Value value) { defaultValue_ = std::move(value); }

 private:
  mutable Annotation annotation_;  // the host's notes, not part of the signature
  std::string name_;
  Reference<IType> type_;
  Value defaultValue_;
};

// An ordered list of parameters with an index by name; with repeated names the index
// points at the last parameter of that name.
struct ParameterList {
  std::vector<Parameter> items;
  std::unordered_map<std::string, size_t> positions;

  void Append(Parameter parameter);
  // The position of `name`, when there is a parameter of that name.
  bool Find(const char* name, size_t* position) const;
  // Erases the parameter at `position` and renumbers the index.
  void Erase(size_t position);
};

enum class ParameterSide { Input, Output };

// Appends the entries of a JSON array of input or output entries ("name", "type",
// "default") to `list`. Types are looked up in `library` and its parents; one found
// nowhere gives a null type. `member` ("input" or "output") names the array in messages.
// Throws InputFileParsingException.
void readParameters(ParameterList& list, const picojson::array& entries,
                    const IGraphLibrary* library, const char* member);

class JsonTextWriter;

// Writes the JSON object of one entry of a signature: "default", "from" (only for an
// output of a graph whose output node has that input connected), "name" and "type".
void writeParameter(JsonTextWriter& writer, const INodeClass* nodeClass, size_t index,
                    ParameterSide side);
picojson::object saveParameter(const INodeClass* nodeClass, size_t index, ParameterSide side);

// Writes the array of the entries of one side of a signature, in index order.
void writeParameters(JsonTextWriter& writer, const INodeClass* nodeClass, ParameterSide side);
picojson::array saveParameters(const INodeClass* nodeClass, ParameterSide side);

// Writes the "from" pair of a connection from output `sourceOutput` of node `sourceNode`
// of `graph`: the source node's UUID text (the empty text for the graph's input node) and
// the output's name.
void writeConnectionSource(JsonTextWriter& writer, const IGraph& graph, size_t sourceNode,
                           size_t sourceOutput);

}  // namespace mat
