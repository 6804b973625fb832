#include <ostream>
#include <string>

#include "core/JsonTextWriter.h"
#include "graph/Graph.h"
#include "mat/Functions.h"
#include "mat/IGraphLibrary.h"
#include "model/NodeClass.h"
#include "model/Semantic.h"
#include "model/Type.h"

namespace mat {
namespace {

void writeHeader(JsonTextWriter& writer) {
  writer.BeginObject();
  writer.Key("datasources");
  writer.BeginArray(false);
  writer.EndArray();
  writer.Key("fileversion");
  writer.Number(1.0);
  writer.EndObject();
}

// Every type, then every semantic, node class and graph, each kind in index order.
void writeContent(JsonTextWriter& writer, const IGraphLibrary& library) {
  writer.BeginArray(true);
  for (size_t i = 0; i < library.GetTypeCount(); ++i) {
    writer.NextElement();
    writeType(writer, library.GetType(i));
  }
  for (size_t i = 0; i < library.GetSemanticCount(); ++i) {
    writer.NextElement();
    writeSemantic(writer, library.GetSemantic(i));
  }
  for (size_t i = 0; i < library.GetNodeClassCount(); ++i) {
    writer.NextElement();
    writeNodeClass(writer, library.GetNodeClass(i).get());
  }
  for (size_t i = 0; i < library.GetGraphCount(); ++i) {
    writer.NextElement();
    writeGraph(writer, library.GetGraph(i).get());
  }
  writer.EndArray();
}

// A first guess at the size of the text, so that the string grows rarely.
size_t estimatedSize(const IGraphLibrary& library) {
  size_t nodes = 0;
  for (size_t i = 0; i < library.GetGraphCount(); ++i) {
    nodes += library.GetGraph(i)->GetNodeCount();
  }
  return 4096 + 256 * (library.GetTypeCount() + library.GetSemanticCount()) +
         1024 * library.GetNodeClassCount() + 512 * nodes;
}

}  // namespace

// The text is written straight from the library's objects, with each object's members in
// ascending key order, into one string that goes out in one piece once it is complete.
void saveGraphLibrary(const IGraphLibrary* library, std::ostream& out) {
  std::string text;
  text.reserve(estimatedSize(*library));
  JsonTextWriter writer(text);
  writer.BeginArray(true);
  writer.NextElement();
  writeHeader(writer);
  writer.NextElement();
  writeContent(writer, *library);
  writer.EndArray();
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.flush();
}

}  // namespace mat
