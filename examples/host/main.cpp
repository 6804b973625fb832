// A small host program: makes and prints identifiers and builds an empty library under
// a parent.
#include <mat/mat.h>

#include <cstdio>

int main() {
  char text[37];
  for (int i = 0; i < 3; ++i) {
    mat::UUIDToString(mat::generateUUID(), text);
    std::printf("new identifier: %s\n", text);
  }

  mat::UUID parsed;
  if (mat::makeUUID("00112233-4455-6677-8899-AABBCCDDEEFF", parsed)) {
    mat::UUIDToString(parsed, text);
    std::printf("parsed: %s (hash %llu)\n", text,
                static_cast<unsigned long long>(mat::hashUUID(parsed)));
  }

  const mat::IGraphLibrary* base = mat::createGraphLibrary(nullptr, "base");
  const mat::IGraphLibrary* child = mat::createGraphLibrary(base, "child");
  std::printf(
      "library \"%s\" under \"%s\": %zu types, %zu semantics, %zu node classes, %zu graphs\n",
      child->GetName(), base->GetName(), child->GetTypeCount(), child->GetSemanticCount(),
      child->GetNodeClassCount(), child->GetGraphCount());
  std::printf("type %s found through the parent chain: %s\n", text,
              child->FindType(parsed, true) != nullptr ? "yes" : "no");
  mat::releaseGraphLibrary(child);
  mat::releaseGraphLibrary(base);
  return 0;
}
