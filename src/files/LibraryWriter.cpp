#include <ostream>
#include <string>

#include "files/JsonWriter.h"
#include "graph/Graph.h"
#include "mat/Functions.h"
#include "mat/IGraphLibrary.h"
#include "model/NodeClass.h"
#include "model/Semantic.h"
#include "model/Type.h"

namespace mat {
namespace {

picojson::object fileHeader() {
  picojson::object header;
  header["datasources"] = picojson::value(picojson::array());
  header["fileversion"] = picojson::value(1.0);
  return header;
}

// Every type, then every semantic, node class and graph, each kind in index order.
picojson::array libraryContent(const IGraphLibrary& library) {
  picojson::array content;
  content.reserve(library.GetTypeCount() + library.GetSemanticCount() +
                  library.GetNodeClassCount() + library.GetGraphCount());
  for (size_t i = 0; i < library.GetTypeCount(); ++i) {
    content.emplace_back(saveType(library.GetType(i)));
  }
  for (size_t i = 0; i < library.GetSemanticCount(); ++i) {
    content.emplace_back(saveSemantic(library.GetSemantic(i)));
  }
  for (size_t i = 0; i < library.GetNodeClassCount(); ++i) {
    content.emplace_back(saveNodeClass(library.GetNodeClass(i).get()));
  }
  for (size_t i = 0; i < library.GetGraphCount(); ++i) {
    content.emplace_back(saveGraph(library.GetGraph(i).get()));
  }
  return content;
}

}  // namespace

void saveGraphLibrary(const IGraphLibrary* library, std::ostream& out) {
  const picojson::value document(
      picojson::array{picojson::value(fileHeader()), picojson::value(libraryContent(*library))});
  std::string text;
  serializeValue(document, 0, text);
  out.write(text.data(), static_cast<std::streamsize>(text.size()));
  out.flush();
}

}  // namespace mat
