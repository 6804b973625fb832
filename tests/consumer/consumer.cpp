// A host built against the installed package: it sees only <mat/mat.h> and the shared
// library. It loads a small library file under a parent, saves it, and checks that the
// version macros agree with what the package says about itself.
#include <mat/mat.h>

#include <cstdio>
#include <cstring>
#include <sstream>
#include <string>

#ifndef MATGRAPH_VERSION
#error "mat/mat.h does not define MATGRAPH_VERSION"
#endif
static_assert(MATGRAPH_VERSION == MATGRAPH_VERSION_MAJOR * 10000 + MATGRAPH_VERSION_MINOR * 100 +
                                      MATGRAPH_VERSION_PATCH,
              "MATGRAPH_VERSION is made of its parts");

namespace {

const char* const baseText = R"([{"datasources":[],"fileversion":1},[
  {"content":"type","desc":"float","uuid":"6448c681-b973-4f28-bd17-0518157028ec"},
  {"content":"nodeclass","desc":"Sine","uuid":"bd3e11c1-0000-4000-8000-000000000001",
   "input":[{"name":"value","type":"6448c681-b973-4f28-bd17-0518157028ec"}],
   "output":[{"name":"result","type":"6448c681-b973-4f28-bd17-0518157028ec"}]}]])";

const char* const graphText = R"([{"datasources":[],"fileversion":1},[
  {"content":"graph","desc":"Wave","uuid":"2debc7d4-a247-439e-b70b-cbc267dfb6b9",
   "input":[{"name":"phase","type":"6448c681-b973-4f28-bd17-0518157028ec"}],
   "output":[{"name":"wave","type":"6448c681-b973-4f28-bd17-0518157028ec",
              "from":["1230e816-9771-4b31-9240-9ab76a92560e","result"]}],
   "nodes":[{"uuid":"1230e816-9771-4b31-9240-9ab76a92560e",
             "node":"bd3e11c1-0000-4000-8000-000000000001",
             "input":[{"name":"value","from":["","phase"]}]}]}]])";

}  // namespace

int main() {
  std::printf("matgraph %s\n", MATGRAPH_VERSION_STRING);
  const mat::IGraphLibrary* base =
      mat::loadGraphLibrary(baseText, std::strlen(baseText), nullptr, "base");
  if (base == nullptr) return 1;
  const mat::IGraphLibrary* graphs =
      mat::loadGraphLibrary(graphText, std::strlen(graphText), base, "graphs");
  if (graphs == nullptr) {
    mat::releaseGraphLibrary(base);
    return 1;
  }
  bool ok = graphs->GetGraphCount() == 1 && graphs->FindGraphByName("Wave") != nullptr;

  // Resolving the graph output leads through the Sine node to the graph input.
  const std::shared_ptr<const mat::IGraph> wave = graphs->GetGraph(0);
  mat::IGraphResolver* resolver = mat::createGraphResolver(wave.get(), true);
  mat::NodeKey source{};
  size_t output = 0;
  const mat::IValue* fallback = nullptr;
  ok = ok && resolver->ResolveInput(resolver->GetKeyFromNodeIndex(wave->GetOutputNodeIndex()), 0,
                                    &source, &output, &fallback);
  ok = ok && std::strcmp(resolver->GetNode(source)->GetName(), "") == 0 && output == 0;
  mat::releaseGraphResolver(resolver);

  std::ostringstream saved;
  mat::saveGraphLibrary(graphs, saved);
  ok = ok && saved.str().find("\"desc\" : \"Wave\"") != std::string::npos;

  mat::releaseGraphLibrary(graphs);
  mat::releaseGraphLibrary(base);
  std::printf("consumer: %s\n", ok ? "ok" : "FAILED");
  return ok ? 0 : 1;
}
