// A host that sees only the public headers and the shared library. It fails (non-zero
// exit) when an exported function does not behave as a host expects.
#include <mat/mat.h>

#include <cstdio>
#include <cstring>
#include <memory>

namespace {

int failures = 0;

void check(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "FAILED: %s\n", what);
    ++failures;
  }
}

}  // namespace

int main() {
  char text[37];
  mat::UUID uuid;
  check(mat::makeUUID("00112233-4455-6677-8899-AABBCCDDEEFF", uuid), "makeUUID accepts text");
  mat::UUIDToString(uuid, text);
  check(std::strcmp(text, "00112233-4455-6677-8899-aabbccddeeff") == 0, "UUIDToString");
  check(mat::hashUUID(uuid) == 0x3E, "hashUUID");
  check(mat::generateUUID() != mat::generateUUID(), "generateUUID gives new identifiers");

  const mat::IGraphLibrary* parent = mat::createGraphLibrary(nullptr, "parent");
  const mat::IGraphLibrary* child = mat::createGraphLibrary(parent, nullptr);
  check(std::strcmp(child->GetName(), "") == 0, "null name is the empty name");
  check(child->FindNodeClass(uuid, true) == nullptr, "empty library finds nothing");
  try {
    child->GetType(0);
    check(false, "GetType(0) of an empty library throws");
  } catch (const mat::InvalidDataAccess& error) {
    check(std::strcmp(error.what(), "Index out of Range: Type index 0 out of range (count 0)") == 0,
          "InvalidDataAccess crosses the boundary with its message");
  }
  mat::releaseGraphLibrary(child);
  mat::releaseGraphLibrary(parent);
  mat::releaseGraphLibrary(nullptr);

  mat::IPortPath* path = mat::createPortPath();
  path->AppendNodeIndex(3);
  path->SetInputPort("base");
  check(path->IsInputPort() && path->GetNodeIndexCount() == 1, "port path");
  mat::releasePortPath(path);

  if (failures == 0) std::printf("host program: all checks passed\n");
  return failures == 0 ? 0 : 1;
}
